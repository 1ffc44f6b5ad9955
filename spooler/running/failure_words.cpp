#include "running/failure_words.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string_view>

#include "mapping/words.h"
#include "running/child_process.h"
#include "running/descriptor.h"

namespace rlx::spooler {

namespace {

/// What the filter says, and what is to be done. The first row whose words occur counts.
struct Remedy {
  std::string_view words;
  Problem problem;
  std::string_view remedy;
};

constexpr std::array<Remedy, 9> kRemedies{{
    {"FCB data error", Problem::form_wrong,
     "a form, or the print-condition command that names it, cannot be used: check the form with "
     "fcbcheck, and the command in the job"},
    {"FCB name error", Problem::form_wrong,
     "the job's print-condition command names a form with other characters than letters and "
     "digits"},
    {"g1gaiji file error", Problem::job,
     "/etc/lp/g1gaiji is there and cannot be read: make it a readable file, or remove it"},
    {"g1gaiji code error", Problem::job,
     "/etc/lp/g1gaiji has to hold one line with a range, such as F5A1-FEFE"},
    {"write error", Problem::output, "the output was not taken to its end"},
    {"illegal option", Problem::wrong_option, "the queue gives the filter an option it has not"},
    {"invalid option", Problem::wrong_option, "the queue gives the filter an option it has not"},
    {"requires an argument", Problem::wrong_option,
     "the queue gives the filter an option without its value"},
    {"undefgaiji pattern error", Problem::wrong_option, "rlx-undefined has to be space or ubar"},
}};

/// Statuses that come without a word.
struct StatusMeaning {
  int status;
  Problem problem;
  std::string_view meaning;
};

constexpr std::array<StatusMeaning, 4> kStatuses{{
    {1, Problem::system, "there may be too little memory"},
    {127, Problem::job, "the font library failed while fonts were opened"},
    {129, Problem::system, "the job could not be read"},
    {255, Problem::job,
     "the fonts do not go with the resolution: the queue is set to 400 dots per inch and the "
     "printer or its capabilities say 240"},
}};

/// Lines as one line.
std::string joined_lines(const std::string& words) {
  std::string line;
  for (const std::string& piece : divide(words, '\n')) {
    line += (line.empty() ? "" : "; ") + piece;
  }
  return line;
}

std::string first_line(const std::string& words) {
  const auto lines = divide(words, '\n');
  return lines.empty() ? std::string() : lines.front();
}

/// What a program says on standard output and error together; empty when it cannot be run.
std::string words_of(const std::string& program, const std::vector<std::string>& arguments) {
  std::string words;
  try {
    ChildProcess child(program, arguments);
    child.input().reset();
    std::array<std::uint8_t, 4096> portion{};
    for (const int descriptor : {child.output().number(), child.messages().number()}) {
      for (std::size_t count = read_some(descriptor, portion, program); count > 0;
           count = read_some(descriptor, portion, program)) {
        words.append(portion.begin(), portion.begin() + static_cast<std::ptrdiff_t>(count));
      }
    }
    child.wait();
  } catch (const std::exception&) {
    words.clear();
  }
  return words;
}

/// What the form checker says of the job's form; empty when it finds nothing.
std::string form_fault(const PrintJob& job) {
  if (job.settings.form.empty() || job.form_checker.empty()) {
    return {};
  }
  std::vector<std::string> arguments;
  if (job.queue.emulation_mode == 3 || job.queue.emulation_mode == 7) {
    arguments.emplace_back(job.queue.emulation_mode == 3 ? "-E" : "-R");
  }
  for (const std::string& place : form_places(job.queue, job.settings.form)) {
    std::error_code error;
    if (std::filesystem::exists(place, error)) {
      arguments.insert(arguments.end(), {"--", place});
      return first_line(words_of(job.form_checker, arguments));
    }
  }
  return {};
}

Failure of_words(const PrintJob& job, const RunReport& report) {
  const std::string said = joined_lines(report.words);
  const auto* const row = std::find_if(
      kRemedies.begin(), kRemedies.end(),
      [&said](const Remedy& remedy) { return said.find(remedy.words) != std::string::npos; });
  if (row == kRemedies.end()) {
    return {Problem::job, said + ": the manual page zqeuctorlx(8) lists the messages"};
  }
  const std::string fault = row->problem == Problem::form_wrong ? form_fault(job) : std::string();
  if (!fault.empty()) {
    return {row->problem, "form " + job.settings.form + ": " + fault + " (" + said +
                              "); mend the form, then let the job print again"};
  }
  return {row->problem, said + ": " + std::string(row->remedy)};
}

Failure of_status(int status) {
  const std::string ended = "the filter ended with status " + std::to_string(status);
  for (const StatusMeaning& row : kStatuses) {
    if (row.status == status) {
      return {row.problem, ended + ": " + std::string(row.meaning)};
    }
  }
  return {Problem::job, ended};
}

/// True for a word that a shell takes as it is.
bool is_plain(const std::string& word) {
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_./:=,+@%";
  return !word.empty() && word.find_first_not_of(kPlain) == std::string::npos;
}

std::string quoted(const std::string& word) {
  if (is_plain(word)) {
    return word;
  }
  std::string text = "'";
  for (const char byte : word) {
    text += byte == '\'' ? std::string("'\\''") : std::string(1, byte);
  }
  return text + "'";
}

}  // namespace

Failure explain_failure(const PrintJob& job, const RunReport& report) {
  if (report.output_error != 0) {
    return {Problem::output, std::string("the output was not taken to its end: ") +
                                 std::strerror(report.output_error)};
  }
  if (!report.job_error.empty()) {
    return {Problem::system, report.job_error};
  }
  if (!joined_lines(report.words).empty()) {
    return of_words(job, report);
  }
  if (report.end.signal != 0) {
    return {Problem::system, "the filter was ended by signal " + std::to_string(report.end.signal) +
                                 " (" + strsignal(report.end.signal) + ")"};
  }
  if (report.end.status == ProcessEnd::kUnknownStatus) {
    return {Problem::system, "nobody knows how the filter ended"};
  }
  return of_status(report.end.status);
}

std::string command_line(const FilterCommand& command) {
  std::string line = quoted(command.program);
  for (const std::string& argument : command.arguments) {
    line += ' ' + quoted(argument);
  }
  return line;
}

}  // namespace rlx::spooler
