#include "rlx-lpd/job_options.h"

#include <algorithm>
#include <charconv>

#include "mapping/words.h"

namespace rlx::lpd {

namespace {

constexpr char kFileSeparator = 1;
constexpr char kFieldSeparator = 2;
constexpr std::string_view kFiles = "hfdatafiles=";
constexpr std::string_view kName = "dftransfername=";
constexpr std::string_view kCopies = "copies=0x";

bool continues_media(const std::vector<spooler::JobOption>& options, const std::string& word) {
  return !options.empty() && options.back().name == "media" &&
         word.find('=') == std::string::npos && !spooler::is_job_option(word);
}

/// Copies of one file of a ticket; 0 when it is another one.
unsigned copies_of(const std::string& file, std::string_view name) {
  unsigned copies = 1;
  bool is_it = false;
  for (const std::string& field : spooler::divide(file, kFieldSeparator)) {
    is_it = is_it || (field.starts_with(kName) && field.substr(kName.size()) == name);
    if (field.starts_with(kCopies)) {
      std::from_chars(field.data() + kCopies.size(), field.data() + field.size(), copies, 16);
    }
  }
  // LPRng takes no copies for one.
  return is_it ? std::max(copies, 1U) : 0;
}

}  // namespace

std::vector<spooler::JobOption> divide_options(std::string_view text) {
  std::string blanks(text);
  std::replace(blanks.begin(), blanks.end(), ' ', ',');
  std::vector<spooler::JobOption> options;
  for (const std::string& word : spooler::divide(blanks, ',')) {
    if (continues_media(options, word)) {
      options.back().value += ',' + word;
      continue;
    }
    const std::size_t equals = std::min(word.find('='), word.size());
    const std::size_t value = std::min(equals + 1, word.size());
    options.push_back({word.substr(0, equals), word.substr(value)});
  }
  return options;
}

std::string read_options(const std::vector<spooler::JobOption>& options, unsigned copies_sent,
                         spooler::JobSettings& settings) {
  for (const spooler::JobOption& option : options) {
    if (!spooler::is_job_option(option.name)) {
      return "there is no option " + option.name + "; rlx-lpd(8) lists them";
    }
  }
  const auto faults = spooler::read_job_options(options, settings);
  if (!faults.empty()) {
    return spooler::text_of(faults.front());
  }
  if (copies_sent > 1 && settings.copies > 1) {
    return "option copies=" + std::to_string(settings.copies) + " and lpr -K " +
           std::to_string(copies_sent) + " ask for copies of copies: use one of them";
  }
  return {};
}

unsigned copies_sent(std::string_view ticket, std::string_view data_file) {
  unsigned copies = 0;
  for (const std::string& line : spooler::divide(ticket, '\n')) {
    if (line.starts_with(kFiles)) {
      for (const std::string& file : spooler::divide(line.substr(kFiles.size()), kFileSeparator)) {
        copies += copies_of(file, data_file);
      }
    }
  }
  return std::max(copies, 1U);
}

}  // namespace rlx::lpd
