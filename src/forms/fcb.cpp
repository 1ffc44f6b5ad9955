#include "forms/fcb.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "job/status.h"
#include "job/units.h"
#include "support/number.h"
#include "support/text_file.h"

namespace rlx {

namespace {

constexpr std::string_view kFormFolder = "/fcbe/";
constexpr std::size_t kPathBytes = kMaxNameBytes + kFormFolder.size() + kMaxNameBytes + 1;

constexpr std::int32_t kInch = kUnitsPerInch;
constexpr std::int32_t kHalfInch = kUnitsPerHalfInch;
constexpr std::int32_t kDefaultHeight = 11 * kInch;
constexpr std::int32_t kMaxHeight = 20 * kInch;
constexpr std::int32_t kMinTopLine = 1;
constexpr std::int32_t kMaxTopLine = 255;
constexpr std::int32_t kMaxRunLines = 255;

/// Form lengths of kShortFormStream.
constexpr std::int32_t kShortFormMinHeight = 7 * kHalfInch;
constexpr std::int32_t kShortFormMaxHeight = 14 * kInch;

constexpr std::int32_t kLargestPitch = kLinePitches.front().height;
static_assert(std::ranges::all_of(kLinePitches, [](const LinePitch& pitch) {
  return pitch.height <= kLargestPitch &&
         pitch.lines_per_inch == static_cast<std::uint32_t>(kInch / pitch.height);
}));

/// Of a form without `lpi` lines.
constexpr std::int32_t kDefaultLinesPerHalfInch = 3;
static_assert(kMaxHeight / kHalfInch * kDefaultLinesPerHalfInch <= kMaxFormLines);

constexpr std::int32_t kNotANumber = -1;

/// One line of a form file; a word that is not there is empty.
struct FormLine {
  std::string_view keyword;
  std::string_view first;
  std::string_view second;
};

/// A form that is being read.
struct FormReader {
  const FormReading& with;
  FcbTable& table;
  FcbReport* report;                          ///< null when nobody wants to know
  std::size_t line = 0;                       ///< of the file, from 1
  bool in_rest_of_line = false;               ///< what is read is no line's beginning
  std::size_t print_line = 0;                 ///< 0 before it was seen
  std::int32_t lines = 0;                     ///< entries of table.lpi in use
  std::int32_t lines_height = 0;              ///< what the `lpi` lines take, 1/7200 inch
  std::int32_t form_height = kDefaultHeight;  ///< 1/7200 inch, not rounded
};

/// True when there is something at a path, whatever it is. When the system cannot tell, it counts
/// as there and will turn out to be unreadable: the next directory's form of that name could be
/// another one.
bool exists(const char* path) {
  struct stat attributes {};
  if (stat(path, &attributes) == 0) {
    return true;
  }
  constexpr std::array kNothingThere{ENOENT, ENOTDIR, EACCES, ELOOP, ENAMETOOLONG};
  return std::ranges::find(kNothingThere, errno) == kNothingThere.end();
}

using FormPath = std::array<char, kPathBytes>;

/// Looks a form name up. @return whether there is such a form; its path is in `path` then.
bool find_form(const char* name, const ResourceDirectories& directories, FormPath& path) {
  for (std::size_t i = 0; i < kMaxSearchedDirectories; ++i) {
    const char* const directory = directories.entries[i].data();
    if (*directory == '\0') {
      break;
    }
    const int length =
        std::snprintf(path.data(), path.size(), "%s%s%s", directory, kFormFolder.data(), name);
    if (length < 0 || static_cast<std::size_t>(length) >= path.size()) {
      continue;  // a name that no file system knows
    }
    if (exists(path.data())) {
      return true;
    }
  }
  return false;
}

/// Takes the next word off a line. A comment behind it ends the line.
std::string_view next_word(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
  const std::string_view word = rest.substr(0, rest.find_first_of(" \t\n#"));
  rest.remove_prefix(word.size());
  if (rest.starts_with('#')) {
    rest = {};
  }
  return word;
}

FormLine split_line(std::string_view line) {
  FormLine words;
  words.keyword = next_word(line);
  words.first = next_word(line);
  words.second = next_word(line);
  return words;
}

bool is_decimal(char byte) {
  return is_digit(static_cast<std::uint8_t>(byte));
}

/// The number that a word consists of; kNotANumber when the word is empty, holds anything but
/// digits, or the number is above the limit. Leading zeros are allowed.
std::int32_t bounded_number(std::string_view word, std::int32_t limit) {
  if (word.empty()) {
    return kNotANumber;
  }
  std::int32_t value = 0;
  for (const char byte : word) {
    if (!is_decimal(byte)) {
      return kNotANumber;
    }
    value = value * 10 + (byte - '0');
    if (value > limit) {
      return kNotANumber;
    }
  }
  return value;
}

/// The form length that a word gives, cut to the ceiling; kNotANumber when a character is no
/// digit. Deliberate: the ceiling ends the reading, whatever follows the digit that passes it.
std::int32_t length_up_to(std::string_view word, std::int32_t ceiling) {
  std::int32_t value = 0;
  for (const char byte : word) {
    if (!is_decimal(byte)) {
      return kNotANumber;
    }
    value = value * 10 + (byte - '0');
    if (value > ceiling) {
      return ceiling;
    }
  }
  return value;
}

void keep_word(std::string_view word, FcbWord& kept) {
  kept[word.copy(kept.data(), kept.size() - 1)] = '\0';
}

/// What a fault tells besides its kind.
struct FaultDetails {
  std::string_view word{};
  std::int64_t value = 0;
  std::int64_t limit = 0;
  int error_number = 0;
};

/// Notes why the form is refused, if anybody wants to know. @return the status of a refused form.
Status refuse(const FormReader& reader, FcbWrong wrong, const FaultDetails& details) {
  if (reader.report != nullptr) {
    FcbFault& fault = reader.report->fault;
    fault.wrong = wrong;
    fault.line = wrong == FcbWrong::file ? 0 : reader.line;
    fault.in_rest_of_line = reader.in_rest_of_line;
    keep_word(details.word, fault.word);
    fault.value = details.value;
    fault.limit = details.limit;
    fault.error_number = details.error_number;
  }
  return ST_FAILED;
}

/// What is said of a word that is no number up to a limit.
struct NumberFaults {
  FcbWrong missing;
  FcbWrong no_number;
  FcbWrong above;
};

constexpr NumberFaults kCountFaults{FcbWrong::count_missing, FcbWrong::count_no_number,
                                    FcbWrong::count_above};
constexpr NumberFaults kFirstLineFaults{FcbWrong::first_line_missing,
                                        FcbWrong::first_line_no_number, FcbWrong::first_line_above};

Status refuse_number(const FormReader& reader, const NumberFaults& faults, std::string_view word,
                     std::int32_t limit) {
  if (word.empty()) {
    return refuse(reader, faults.missing, {});
  }
  const FcbWrong wrong = std::ranges::all_of(word, is_decimal) ? faults.above : faults.no_number;
  return refuse(reader, wrong, {.word = word, .limit = limit});
}

bool rounds_to_half_inch(EnvironmentFile& environment) {
  static_cast<void>(tqdxgetenv(environment));
  return environment.fcbprint_halfinch != 0;
}

/// Form length in half inches of a height.
std::int32_t rounded_halfinch(EnvironmentFile& environment, std::int32_t height) {
  if (height % kInch == 0) {
    return 2 * height / kInch;
  }
  return rounds_to_half_inch(environment) ? height / kHalfInch : 2 * (height / kInch) + 2;
}

Status take_length(FormReader& reader, std::string_view word) {
  const bool short_forms = reader.with.command_line.stream_variant == kShortFormStream;
  const std::int32_t length = length_up_to(word, short_forms ? kShortFormMaxHeight : kMaxHeight);
  if (length == kNotANumber) {
    return refuse(reader, FcbWrong::length_no_number, {.word = word});
  }
  if (reader.report != nullptr) {
    keep_word(word, reader.report->given_length);
  }
  reader.form_height = std::max(length, short_forms ? kShortFormMinHeight : kInch);
  return ST_OK;
}

Status take_print(FormReader& reader, const FormLine& line) {
  if (reader.print_line != 0) {
    const auto first = static_cast<std::int64_t>(reader.print_line);
    return refuse(reader, FcbWrong::second_print, {.value = first});
  }
  const std::int32_t top_line = bounded_number(line.first, kMaxTopLine);
  if (top_line == kNotANumber) {
    return refuse_number(reader, kFirstLineFaults, line.first, kMaxTopLine);
  }
  if (top_line < kMinTopLine) {
    return refuse(reader, FcbWrong::first_line_below, {.word = line.first, .limit = kMinTopLine});
  }
  reader.print_line = reader.line;
  reader.table.top_line = top_line;
  return line.second.empty() ? ST_OK : take_length(reader, line.second);
}

Status append_lines(FormReader& reader, std::int32_t count, std::uint32_t lines_per_inch) {
  const std::int32_t lines = reader.lines + count;
  if (lines > kMaxFormLines) {
    return refuse(reader, FcbWrong::too_many_lines, {.value = lines, .limit = kMaxFormLines});
  }
  while (reader.lines < lines) {
    reader.table.lpi[static_cast<std::size_t>(reader.lines++)] = lines_per_inch;
  }
  return ST_OK;
}

Status take_lpi(FormReader& reader, const FormLine& line) {
  const auto* const pitch = std::ranges::find(
      kLinePitches, bounded_number(line.first, kLargestPitch), &LinePitch::height);
  if (pitch == kLinePitches.end()) {
    const FcbWrong wrong = line.first.empty() ? FcbWrong::pitch_missing : FcbWrong::pitch;
    return refuse(reader, wrong, {.word = line.first});
  }
  const std::int32_t count = bounded_number(line.second, kMaxRunLines);
  if (count == kNotANumber) {
    return refuse_number(reader, kCountFaults, line.second, kMaxRunLines);
  }
  reader.lines_height += count * pitch->height;
  return append_lines(reader, count, pitch->lines_per_inch);
}

Status skip_blank(FormReader&, const FormLine&) {
  return ST_OK;
}

struct Keyword {
  std::string_view word;
  Status (*take)(FormReader&, const FormLine&);
};

constexpr std::array<Keyword, 3> kKeywords{{
    {"", skip_blank},
    {"lpi", take_lpi},
    {"print", take_print},
}};

Status take_line(FormReader& reader, std::string_view text) {
  const FormLine line = split_line(text);
  const auto* const keyword = std::ranges::find(kKeywords, line.keyword, &Keyword::word);
  return keyword == kKeywords.end() ? refuse(reader, FcbWrong::keyword, {.word = line.keyword})
                                    : keyword->take(reader, line);
}

/// The rest of the reading. The file has been closed before, because the environment file, which
/// the rounding asks for, may need the descriptor that the form had.
Status finish_form(FormReader& reader) {
  reader.table.form_halfinch = rounded_halfinch(reader.with.environment, reader.form_height);
  if (reader.form_height < reader.lines_height) {
    return refuse(reader, FcbWrong::lines_too_tall,
                  {.value = reader.lines_height, .limit = reader.form_height});
  }
  if (reader.lines == 0) {
    const Status status = append_lines(
        reader, reader.table.form_halfinch * kDefaultLinesPerHalfInch, kDefaultLinesPerInch);
    if (status != ST_OK) {
      return status;
    }
  }
  if (reader.lines < reader.table.top_line) {
    return refuse(reader, FcbWrong::too_few_lines,
                  {.value = reader.lines, .limit = reader.table.top_line});
  }
  return ST_OK;
}

Status read_lines(const char* path, FormReader& reader) {
  TextFile file(path);
  if (!file.is_open()) {
    return refuse(reader, FcbWrong::file, {.error_number = file.error_number()});
  }
  std::array<char, kFcbLineBytes> buffer;
  while (file.read_line(buffer)) {
    reader.in_rest_of_line = reader.line == file.line_number();
    reader.line = file.line_number();
    if (const Status status = take_line(reader, buffer.data()); status != ST_OK) {
      return status;
    }
  }
  reader.in_rest_of_line = false;
  return file.failed() ? refuse(reader, FcbWrong::file, {.error_number = file.error_number()})
                       : ST_OK;
}

/// @param report  null when nobody wants to know.
Status read_form(const FormReading& with, const char* path, FcbTable& table, FcbReport* report) {
  FormReader reader{.with = with, .table = table, .report = report};
  const Status status = read_lines(path, reader);
  if (report != nullptr) {
    report->print_line = reader.print_line;
    report->length = reader.form_height;
  }
  return status != ST_OK ? status : finish_form(reader);
}

void clear_form(FcbTable& table) {
  const std::int32_t cur_line = table.cur_line;
  table = FcbTable{};
  table.cur_line = cur_line;
}

Status find_and_read(const FormReading& with, const char* name, FcbTable& table,
                     const ResourceDirectories& directories) {
  if (std::strchr(name, '/') != nullptr) {
    return read_form(with, name, table, nullptr);
  }
  FormPath path;
  return find_form(name, directories, path) ? read_form(with, path.data(), table, nullptr)
                                            : ST_FAILED;
}

}  // namespace

Status fcb_load(const FormReading& reading, const char* name, FcbTable& table,
                const ResourceDirectories& directories) {
  clear_form(table);
  const Status status = find_and_read(reading, name, table, directories);
  if (status != ST_OK) {
    report(reading.messages, "FCB data error");
  }
  return status;
}

Status fcb_read(const FormReading& reading, const char* path, FcbTable& table, FcbReport& report) {
  clear_form(table);
  report = {};
  return read_form(reading, path, table, &report);
}

}  // namespace rlx
