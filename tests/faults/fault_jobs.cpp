#include "faults/fault_jobs.h"

#include <string_view>

#include "job/fixed_paths.h"
#include "support/descriptors.h"
#include "support/input_stream.h"
#include "support/record_builder.h"
#include "support/standin_font_library.h"

namespace rlx::testing {

namespace {

/// 5.69 inches: 5.5 with the environment file, 6 without.
constexpr std::string_view kOddForm =
    "# a label\n"
    "print 2 41000\n"
    "lpi 1200 10  # the address\n"
    "lpi 900 8\n";

constexpr std::string_view kHalfInches =
    "*OTHER\n"
    "FCBPRINT:1\n"
    "*COMMON\n"
    "FCBPRINT : 2  # half inches\n";

const std::string kCommand520 = "\x1bQ0;0000000004/`";
const std::string kCommandData = "abc\n";

void lay_nothing() {}

void lay_environment() {
  write_file(fixed_paths::kEnvironmentFile, kHalfInches);
}

/// A form, and all that a job looks at besides it.
void lay_form_files() {
  write_file(kFormPlace, kOddForm);
  lay_environment();
  write_file(fixed_paths::kG1GaijiFile, "F5A1-FEFE\n");
  install_font_library();
  describe_fonts("every-font\n");
}

void lay_record_files() {
  write_file(kRecordFormPlace, kOddForm);
  lay_environment();
}

std::string repeated(std::string_view text, std::size_t times) {
  std::string all;
  all.reserve(text.size() * times);
  while (times-- > 0) {
    all += text;
  }
  return all;
}

std::string plain_page(int number) {
  return "Page " + std::to_string(number) +
         "\nsome words \xe3\x81\x82\xe3\x82\xa2 more\r\n\n last line\n\f";
}

/// Sequences of every shape, with counted data and with data that is downloaded.
std::string sequence_page() {
  return bytes(
      "A\x1b[10`B\x1b[5e C\x1c$!p\x1b(H\x1bQ1;5!aab\fde\x1bQ1;3!\x7f\x00\x1b\xff"
      "\x1c%!( pD\x1bQ7!R\x1b\x7f\x00\x00\x01\x06\n\f");
}

/// Frames that cut text, a character and a sequence.
std::string framed_page() {
  return cnt_frame("A\n\xe3\x81") + cnt_frame("\x82 text\x1bQ1") + cnt_frame("2!C and\f") +
         cnt_frame("");
}

std::string named_form_record() {
  return condition_sequence(ConditionColumns{.fcb_name = "LABL"});
}

Job pass_through_job(std::string input, const std::string& rest) {
  input += kCommand520 + kCommandData + rest;
  return {JobKind::pass_through,
          "pass_through",
          {},
          input,
          lay_nothing,
          kCommandData.size() + rest.size()};
}

std::vector<Job> make_small_jobs() {
  const std::string record = named_form_record();
  return {
      {JobKind::plain, "plain", {}, plain_page(1) + plain_page(2) + "the end", lay_nothing},
      {JobKind::form,
       "form",
       {"-R", "-p", "forms", "-n", "LABEL"},
       "Name\nStreet\n\nTown\n\fName\n\f",
       lay_form_files},
      {JobKind::framed, "framed", {"-d"}, framed_page() + end_frame("last\f"), lay_nothing},
      {JobKind::sequences, "sequences", {}, sequence_page() + sequence_page(), lay_nothing},
      {JobKind::conditions,
       "conditions",
       {"-R"},
       "A\n\f" + ("B" + record) + "Label\n\n\f" + record + "C\f",
       lay_record_files},
      pass_through_job("A\f", bytes("\x00\xff rest of it\x1b")),
  };
}

std::vector<Job> make_large_jobs() {
  const std::string large_frame = cnt_frame(std::string(9000, 'x'));
  return {
      {JobKind::plain, "plain", {}, repeated(plain_page(1), 6000), lay_nothing},
      {JobKind::framed,
       "framed",
       {"-d"},
       repeated(framed_page() + large_frame, 10) + end_frame("last\f"),
       lay_nothing},
      {JobKind::sequences, "sequences", {}, repeated(sequence_page(), 3000), lay_nothing},
      pass_through_job(repeated(plain_page(1), 2000), std::string(300000, 'r')),
  };
}

}  // namespace

const std::vector<Job>& small_jobs() {
  static const std::vector<Job> jobs = make_small_jobs();
  return jobs;
}

const std::vector<Job>& large_jobs() {
  static const std::vector<Job> jobs = make_large_jobs();
  return jobs;
}

const Job& small_job(JobKind kind) {
  return small_jobs()[static_cast<std::size_t>(kind)];
}

}  // namespace rlx::testing
