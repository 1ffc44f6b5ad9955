#include "rlx-printer-app/job_record.h"

#include <unistd.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "rlx-printer-app/journal.h"

namespace rlx::printer_app {

namespace {

using nlohmann::json;
using spooler::JobSettings;

json settings_to_json(const JobSettings& job) {
  return {{"form", job.form},
          {"lines-per-page", job.lines_per_page},
          {"lines-per-inch", job.lines_per_inch},
          {"characters-per-inch", job.characters_per_inch},
          {"undefined", static_cast<unsigned>(job.undefined_characters)},
          {"extended", job.extended_parameters},
          {"charset", job.charset},
          {"paper", static_cast<unsigned>(job.paper)},
          {"tray", static_cast<unsigned>(job.tray)},
          {"orientation", static_cast<unsigned>(job.orientation)},
          {"sides", static_cast<unsigned>(job.sides)},
          {"copies", job.copies},
          {"page-offset-x", job.page_offset_x},
          {"page-offset-y", job.page_offset_y}};
}

template <typename Value>
Value named(const json& note, const char* name, Value last) {
  const unsigned number = note.at(name);
  return number <= static_cast<unsigned>(last) ? static_cast<Value>(number) : Value::unset;
}

JobSettings settings_from_json(const json& note) {
  JobSettings job;
  job.form = note.at("form");
  job.lines_per_page = note.at("lines-per-page");
  job.lines_per_inch = note.at("lines-per-inch");
  job.characters_per_inch = note.at("characters-per-inch");
  job.undefined_characters = named(note, "undefined", spooler::UndefinedCharacters::ubar);
  job.extended_parameters = note.at("extended");
  job.charset = note.at("charset");
  job.paper = named(note, "paper", spooler::Paper::letter);
  job.tray = named(note, "tray", spooler::Tray::tray_4);
  job.orientation = named(note, "orientation", spooler::Orientation::landscape);
  job.sides = named(note, "sides", spooler::Sides::two_short_edge);
  job.copies = note.at("copies");
  job.page_offset_x = note.at("page-offset-x");
  job.page_offset_y = note.at("page-offset-y");
  return job;
}

}  // namespace

std::string to_text(const JobRecord& record) {
  const json note{{"kind", record.kind},         {"resolution", record.resolution},
                  {"format", record.format},     {"settings", settings_to_json(record.settings)},
                  {"commands", record.commands}, {"words", record.words},
                  {"pages", record.pages},       {"impressions", record.impressions},
                  {"bytes", record.bytes}};
  // What a program has said may be no UTF-8.
  return note.dump(-1, ' ', false, json::error_handler_t::replace);
}

bool from_text(const std::string& text, JobRecord& record) {
  const json note = json::parse(text, nullptr, false);
  try {
    JobRecord read;
    read.kind = note.at("kind");
    read.resolution = note.at("resolution");
    read.format = note.at("format");
    read.settings = settings_from_json(note.at("settings"));
    read.commands = note.at("commands").get<std::vector<std::string>>();
    read.words = note.at("words");
    read.pages = note.at("pages");
    read.impressions = note.at("impressions");
    read.bytes = note.at("bytes");
    record = std::move(read);
    return true;
  } catch (const json::exception&) {
    return false;
  }
}

std::string JobRecords::path_of(int printer_id, int job_id) const {
  return folder_ + '/' + std::to_string(printer_id) + '-' + std::to_string(job_id) + ".json";
}

bool JobRecords::keep(int printer_id, int job_id, const JobRecord& record) const {
  unlink(path_of(printer_id, job_id - kKept).c_str());
  return put_in_place(path_of(printer_id, job_id), to_text(record));
}

bool JobRecords::find(int printer_id, int job_id, JobRecord& record) const {
  std::ifstream file(path_of(printer_id, job_id));
  std::ostringstream text;
  text << file.rdbuf();
  return file.is_open() && from_text(text.str(), record);
}

}  // namespace rlx::printer_app
