#include "rlx-printer-app/web/proof_store.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <system_error>
#include <thread>
#include <tuple>

#include "mapping/condition_command.h"
#include "mapping/words.h"
#include "rlx-printer-app/web/program_run.h"

namespace rlx::printer_app {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr const char* kJob = "/job.rlx";
constexpr const char* kAbout = "/about.json";

std::optional<std::string> read_all(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) {
    return std::nullopt;
  }
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

/// A folder of its own beside a place.
std::string make_folder_for(const std::string& place) {
  std::string name = place + ".XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  return name;
}

class Commands : public spooler::PrintListener {
 public:
  explicit Commands(std::vector<std::string>& all) : all_(all) {}
  void command_line(const std::string& words) override { all_.push_back(words); }

 private:
  std::vector<std::string>& all_;
};

/// Takes the filter's output into a file, at most so much of it.
class BoundedFile {
 public:
  BoundedFile(spooler::Descriptor from, const std::string& path, spooler::Cancellation& enough)
      : from_(std::move(from)),
        to_(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)),
        thread_([this, &enough] { take(enough); }) {}

  /// Waits for the end of the output. @return false when there was more, or no room for it.
  bool finish() {
    thread_.join();
    return !is_cut_;
  }

 private:
  void take(spooler::Cancellation& enough) {
    std::vector<std::uint8_t> portion(65536);
    std::size_t bytes = 0;
    for (std::size_t count = 0;
         (count = spooler::read_some(from_.number(), portion, "the filter's output")) > 0;) {
      const std::size_t taken = std::min(count, ProofStore::kMostBytes - bytes);
      bytes += taken;
      if (spooler::write_all(to_.number(), std::span(portion).first(taken)) != 0 || taken < count) {
        is_cut_ = true;
        enough.ask();
      }
    }
  }

  spooler::Descriptor from_;
  spooler::Descriptor to_;
  bool is_cut_ = false;
  std::jthread thread_;
};

/// Ends a run that takes too long.
class TimeLimit {
 public:
  TimeLimit(int seconds, spooler::Cancellation& enough)
      : thread_([this, seconds, &enough] {
          if (done_.pause(seconds * 1000)) {
            is_over_ = true;
            enough.ask();
          }
        }) {}
  /// @return true when the time was over.
  bool finish() {
    done_.ask();
    thread_.join();
    return is_over_;
  }

 private:
  spooler::Cancellation done_;
  bool is_over_ = false;
  std::jthread thread_;
};

Proof run(spooler::PrintJob& job, const std::string& folder) {
  Proof proof;
  proof.folder = folder;
  spooler::Cancellation enough;
  spooler::Pipe pipe = spooler::make_pipe();
  BoundedFile file(std::move(pipe.read_end), folder + kJob, enough);
  TimeLimit limit(ProofStore::kMostSeconds, enough);
  job.output = pipe.write_end.number();
  Commands listener(proof.commands);
  const spooler::PrintResult result = print_job(job, listener, enough);
  pipe.write_end.reset();
  const bool took_too_long = limit.finish();
  proof.is_cut = !file.finish() || took_too_long;
  proof.pages = static_cast<unsigned>(result.count.pages);
  proof.words = proof.is_cut ? "" : result.words;
  return proof;
}

std::vector<Sheet> drawn_sheets(const std::string& folder) {
  std::vector<Sheet> all;
  std::error_code error;
  for (const auto& file : fs::directory_iterator(folder, error)) {
    Sheet sheet;
    if (read_picture_name(file.path().filename(), sheet)) {
      all.push_back(sheet);
    }
  }
  std::sort(all.begin(), all.end(), [](const Sheet& left, const Sheet& right) {
    return std::tie(left.page, left.sheet) < std::tie(right.page, right.sheet);
  });
  return all;
}

std::string picture_path(const std::string& folder, const Sheet& sheet) {
  std::array<char, 48> name{};
  std::snprintf(name.data(), name.size(), "/page-%03u-%u.png", sheet.page, sheet.sheet);
  return folder + name.data();
}

std::vector<Sheet> sheets_of(const std::vector<Sheet>& all, unsigned first, unsigned last) {
  std::vector<Sheet> wanted;
  std::copy_if(
      all.begin(), all.end(), std::back_inserter(wanted),
      [first, last](const Sheet& sheet) { return sheet.page >= first && sheet.page <= last; });
  return wanted;
}

bool has_all(const std::vector<Sheet>& sheets, unsigned first, unsigned last) {
  for (unsigned page = first; page <= last; ++page) {
    if (std::none_of(sheets.begin(), sheets.end(),
                     [page](const Sheet& sheet) { return sheet.page == page; })) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool read_picture_name(const std::string& name, Sheet& sheet) {
  constexpr unsigned kMost = 999999999;
  constexpr std::string_view kBegin = "page-";
  constexpr std::string_view kEnd = ".png";
  std::string_view text(name);
  if (!text.starts_with(kBegin) || !text.ends_with(kEnd) ||
      text.size() < kBegin.size() + kEnd.size()) {
    return false;
  }
  text = text.substr(kBegin.size(), text.size() - kBegin.size() - kEnd.size());
  const std::size_t middle = std::min(text.find('-'), text.size());
  const auto page = spooler::whole_number(text.substr(0, middle), kMost);
  const auto number = spooler::whole_number(text.substr(std::min(middle + 1, text.size())), kMost);
  sheet.page = page.value_or(0);
  sheet.sheet = number.value_or(0);
  return page && number;
}

ProofStore::ProofStore(std::string folder, std::string painter, std::string dumper)
    : folder_(std::move(folder)), painter_(std::move(painter)), dumper_(std::move(dumper)) {
  fs::remove_all(folder_);
  fs::create_directories(folder_);
  fs::permissions(folder_, fs::perms::owner_all);
}

std::optional<Proof> ProofStore::find(const std::string& key) const {
  const std::string folder = folder_ + '/' + key;
  const auto text = read_all(folder + kAbout);
  const json about = json::parse(text.value_or(""), nullptr, false);
  if (about.is_discarded()) {
    return std::nullopt;
  }
  Proof proof;
  proof.folder = folder;
  proof.pages = about.at("pages");
  proof.is_cut = about.at("cut");
  proof.words = about.at("words");
  proof.commands = about.at("commands").get<std::vector<std::string>>();
  proof.text = about.at("text");
  return proof;
}

Proof ProofStore::make(const std::string& key, spooler::PrintJob job, const std::string& text) {
  const std::string place = folder_ + '/' + key;
  const std::string aside = make_folder_for(place);
  // A job that is sent several times would be drawn as often.
  if (job.in_printer_language || job.settings.copies > spooler::kMostCommandCopies) {
    job.settings.copies = 1;
  }
  Proof proof = run(job, aside);
  proof.text = text;
  std::ofstream(aside + kAbout) << json{
      {"pages", proof.pages},
      {"cut", proof.is_cut},
      {"words", proof.words},
      {"commands", proof.commands},
      {"text", text}}.dump(-1, ' ', false, json::error_handler_t::replace);
  const std::lock_guard lock(changing_);
  std::error_code error;
  fs::rename(aside, place, error);
  if (error) {
    // Another request was quicker.
    fs::remove_all(aside, error);
  }
  proof.folder = place;
  drop_old();
  return proof;
}

void ProofStore::drop_old() const {
  std::vector<std::pair<fs::file_time_type, fs::path>> all;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder_, error)) {
    all.emplace_back(entry.last_write_time(error), entry.path());
  }
  std::sort(all.begin(), all.end());
  for (std::size_t i = 0; i + kMostProofs < all.size(); ++i) {
    fs::remove_all(all[i].second, error);
  }
}

std::vector<Sheet> ProofStore::draw(const Proof& proof, unsigned first, unsigned last,
                                    std::string& words) const {
  const auto before = drawn_sheets(proof.folder);
  if (first > last || has_all(before, first, last)) {
    return sheets_of(before, first, last);
  }
  if (painter_.empty()) {
    words = "rlxproof is not installed";
    return {};
  }
  std::error_code error;
  if (before.size() > kMostPictures) {
    for (const Sheet& sheet : before) {
      fs::remove(picture_path(proof.folder, sheet), error);
    }
  }
  const std::string aside = make_folder_for(proof.folder + "/new");
  const ProgramResult result =
      run_program(painter_,
                  {"--png", aside, "--pages", std::to_string(first) + '-' + std::to_string(last),
                   proof.folder + kJob},
                  {});
  for (const Sheet& sheet : drawn_sheets(aside)) {
    fs::rename(picture_path(aside, sheet), picture_path(proof.folder, sheet), error);
  }
  fs::remove_all(aside, error);
  words = result.timed_out ? "the pictures took too long" : result.messages;
  return sheets_of(drawn_sheets(proof.folder), first, last);
}

std::optional<std::string> ProofStore::picture(const Proof& proof, const Sheet& sheet) {
  return read_all(picture_path(proof.folder, sheet));
}

std::string ProofStore::dump(const Proof& proof, bool& is_cut) const {
  if (dumper_.empty()) {
    return "rlxdump is not installed";
  }
  ProgramLimits limits;
  limits.output_bytes = kMostDumpBytes;
  const ProgramResult result = run_program(dumper_, {proof.folder + kJob}, {}, limits);
  is_cut = result.cut || result.timed_out;
  return result.output;
}

}  // namespace rlx::printer_app
