#include "rlx-printer-app/journal.h"

#include <cups/cups.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "mapping/words.h"
#include "running/descriptor.h"

namespace rlx::printer_app {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr int kPending = 3;
constexpr int kHeld = 4;
constexpr int kCanceled = 7;

/// A file of this name beside a note: the job's document is complete.
constexpr const char* kMark = ".complete";

json to_json(const JournalEntry& entry) {
  return {{"printer", entry.printer_id}, {"job", entry.job_id},        {"name", entry.name},
          {"user", entry.user},          {"format", entry.format},     {"created", entry.created},
          {"complete", entry.complete},  {"document", entry.document}, {"ended", entry.ended},
          {"held", entry.held}};
}

JournalEntry from_json(const json& note) {
  JournalEntry entry;
  entry.printer_id = note.at("printer");
  entry.job_id = note.at("job");
  entry.name = note.at("name");
  entry.user = note.at("user");
  entry.format = note.at("format");
  entry.created = note.at("created");
  entry.complete = note.at("complete");
  entry.document = note.at("document");
  entry.ended = note.at("ended");
  entry.held = note.value("held", false);
  return entry;
}

/// @return nothing when it is no note.
std::vector<JournalEntry> read_note(const fs::path& path) {
  std::ifstream file(path);
  const json note = json::parse(file, nullptr, false);
  try {
    return {from_json(note)};
  } catch (const json::exception&) {
    return {};
  }
}

}  // namespace

bool put_in_place(const std::string& path, const std::string& text) {
  const std::string aside = path + ".new";
  spooler::Descriptor file(open(aside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  if (!file.is_open()) {
    return false;
  }
  if (const int error = spooler::write_all(file.number(), {bytes, text.size()}); error != 0) {
    errno = error;
    return false;
  }
  return fdatasync(file.number()) == 0 && rename(aside.c_str(), path.c_str()) == 0;
}

namespace {

/// A value as PAPPL reads it back: within one line.
std::string quoted(const std::string& value) {
  std::string text = "\"";
  for (const char byte : value) {
    if (byte == '"' || byte == '\\') {
      text += '\\';
    }
    text += static_cast<unsigned char>(byte) < ' ' ? ' ' : byte;
  }
  return text + '"';
}

using Options = std::vector<std::pair<std::string, std::string>>;

Options parse_options(const std::string& text) {
  cups_option_t* options = nullptr;
  const int count = cupsParseOptions(text.c_str(), 0, &options);
  Options all;
  for (int i = 0; i < count; ++i) {
    all.emplace_back(options[i].name, options[i].value);
  }
  cupsFreeOptions(count, options);
  return all;
}

/// 0 for what is no number.
int number_of(const std::string& text) {
  constexpr unsigned kMost = std::numeric_limits<int>::max();
  return static_cast<int>(spooler::whole_number(text, kMost).value_or(0));
}

int number_of(const Options& options, const std::string& name) {
  for (const auto& [key, value] : options) {
    if (key == name) {
      return number_of(value);
    }
  }
  return 0;
}

std::string line_of(const JournalEntry& entry, int state) {
  std::string line = "Job id=" + quoted(std::to_string(entry.job_id)) +
                     " name=" + quoted(entry.name) + " username=" + quoted(entry.user) +
                     " format=" + quoted(entry.format);
  if (!entry.document.empty()) {
    line += " filename=" + quoted(entry.document);
  }
  const std::string time = std::to_string(entry.created);
  line += " state=" + quoted(std::to_string(state)) + " created=" + quoted(time);
  return state >= kCanceled ? line + " completed=" + quoted(time) : line;
}

/// Goes through the lines of a state file and writes them anew.
class StateWriter {
 public:
  explicit StateWriter(const std::vector<JournalEntry>& entries) : entries_(entries) {}

  void take(const std::string& line) {
    if (line.starts_with("<Printer ")) {
      printer_id_ = number_of(parse_options(line.substr(9, line.size() - 10)), "id");
      next_job_id_ = 1;
      done_.clear();
      text_ += line + '\n';
    } else if (line.starts_with("Job ")) {
      take_job(line);
    } else if (line.starts_with("NextJobId ")) {
      next_job_id_ = std::max(next_job_id_, number_of(line.substr(10)));
    } else if (line == "</Printer>") {
      end_printer();
    } else {
      text_ += line + '\n';
    }
  }

  const std::string& text() const { return text_; }

 private:
  /// Jobs of the history stay; what has not ended is written by its note.
  void take_job(const std::string& line) {
    const Options options = parse_options(line.substr(4));
    const int id = number_of(options, "id");
    next_job_id_ = std::max(next_job_id_, id + 1);
    if (number_of(options, "state") >= kCanceled) {
      done_.push_back(id);
      text_ += line + '\n';
    }
  }

  void end_printer() {
    for (const JournalEntry& entry : entries_) {
      if (entry.printer_id == printer_id_ &&
          std::find(done_.begin(), done_.end(), entry.job_id) == done_.end()) {
        next_job_id_ = std::max(next_job_id_, entry.job_id + 1);
        add(entry);
      }
    }
    text_ += "NextJobId " + std::to_string(next_job_id_) + "\n</Printer>\n";
  }

  void add(const JournalEntry& entry) {
    if (entry.ended != 0) {
      text_ += line_of(entry, entry.ended) + '\n';
    } else if (access(entry.document.c_str(), R_OK) == 0) {
      // PAPPL removes the document of an upload that broke.
      text_ += line_of(entry, entry.complete && !entry.held ? kPending : kHeld) + '\n';
    }
  }

  const std::vector<JournalEntry>& entries_;
  std::string text_;
  int printer_id_ = 0;
  int next_job_id_ = 1;
  std::vector<int> done_;
};

}  // namespace

Journal::Journal(std::string folder) : folder_(std::move(folder)) {
  std::error_code error;
  fs::create_directories(folder_, error);
  if (error || access(folder_.c_str(), W_OK | X_OK) != 0) {
    throw std::runtime_error("the folder " + folder_ + " cannot be written");
  }
}

std::string Journal::path_of(int printer_id, int job_id, const char* extension) const {
  std::array<char, 32> name{};
  std::snprintf(name.data(), name.size(), "%05d-%09d%s", printer_id, job_id, extension);
  return folder_ + '/' + name.data();
}

std::string Journal::attributes_path(int printer_id, int job_id) const {
  return path_of(printer_id, job_id, ".ipp");
}

bool Journal::note(const JournalEntry& entry) const {
  // Names come as clients send them, which may be no UTF-8.
  const std::string text = to_json(entry).dump(-1, ' ', false, json::error_handler_t::replace);
  return put_in_place(path_of(entry.printer_id, entry.job_id), text);
}

template <typename Change>
bool Journal::change(int printer_id, int job_id, Change apply) const {
  const std::lock_guard lock(changing_);
  bool good = true;
  for (JournalEntry entry : read_note(path_of(printer_id, job_id))) {
    if (apply(entry)) {
      good = note(entry);
    }
  }
  return good;
}

bool Journal::mark_complete(int printer_id, int job_id) const {
  const spooler::Descriptor mark(
      open(path_of(printer_id, job_id, kMark).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  return mark.is_open();
}

bool Journal::note_complete(int printer_id, int job_id, const std::string& document) const {
  const bool good = change(printer_id, job_id, [&](JournalEntry& entry) {
    entry.complete = true;
    entry.document = document;
    return entry.ended == 0;
  });
  if (good) {
    unlink(path_of(printer_id, job_id, kMark).c_str());
  }
  return good;
}

bool Journal::note_held(int printer_id, int job_id, bool held) const {
  return change(printer_id, job_id, [held](JournalEntry& entry) {
    return std::exchange(entry.held, held) != held && entry.ended == 0;
  });
}

bool Journal::note_ended(int printer_id, int job_id, int state) const {
  return change(printer_id, job_id, [state](JournalEntry& entry) {
    return std::exchange(entry.ended, state) != state;
  });
}

std::vector<JournalEntry> Journal::entries() const {
  std::vector<fs::path> paths;
  // Without the folder there are none; a note that cannot be written is told when it is.
  std::error_code error;
  for (const auto& file : fs::directory_iterator(folder_, error)) {
    if (file.path().extension() == ".json") {
      paths.push_back(file.path());
    }
  }
  std::sort(paths.begin(), paths.end());
  std::vector<JournalEntry> all;
  for (const fs::path& path : paths) {
    for (JournalEntry& entry : read_note(path)) {
      entry.complete = entry.complete || fs::exists(fs::path(path).replace_extension(kMark));
      all.push_back(std::move(entry));
    }
  }
  return all;
}

void Journal::forget_ended(const std::vector<JournalEntry>& ended) const {
  for (const JournalEntry& entry : ended) {
    if (entry.ended != 0) {
      unlink(path_of(entry.printer_id, entry.job_id).c_str());
      unlink(attributes_path(entry.printer_id, entry.job_id).c_str());
      unlink(path_of(entry.printer_id, entry.job_id, kMark).c_str());
    }
  }
}

void Journal::forget_printer(int printer_id) const {
  std::vector<JournalEntry> all = entries();
  std::erase_if(all, [printer_id](const JournalEntry& e) { return e.printer_id != printer_id; });
  for (JournalEntry& entry : all) {
    entry.ended = kCanceled;
  }
  forget_ended(all);
}

void restore_attributes(const Journal& journal, const std::vector<JournalEntry>& entries) {
  for (const JournalEntry& entry : entries) {
    std::ifstream file(journal.attributes_path(entry.printer_id, entry.job_id), std::ios::binary);
    if (file && entry.ended == 0 && !entry.document.empty()) {
      std::ostringstream attributes;
      attributes << file.rdbuf();
      put_in_place(fs::path(entry.document).replace_extension(".ipp"), attributes.str());
    }
  }
}

std::string restorable_state(const std::string& state, const std::vector<JournalEntry>& entries) {
  StateWriter writer(entries);
  std::istringstream lines(state);
  for (std::string line; std::getline(lines, line);) {
    writer.take(line);
  }
  return writer.text();
}

}  // namespace rlx::printer_app
