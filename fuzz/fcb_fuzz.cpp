// The reader of form files, and the way through a form that was accepted.
//
// Input: a byte of switches (stream variant, rounding, page started), the form file.

#include "forms/fcb.h"
#include "fresh_filter.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {
namespace {

constexpr std::int32_t kStartLine = 77;
/// Longest pitch command with its LF.
constexpr std::int32_t kLongestLine = 17;

FcbTable load(const std::string& path, Status& status) {
  FcbTable form;
  form.cur_line = kStartLine;
  form.lpi.fill(5);
  const Messages messages;
  status = fcb_load(the_filter().forms, path.c_str(), form, the_filter().directories);
  require(form.cur_line == kStartLine, "the current line was touched");
  const std::string expected = status == 0 ? "" : "filter: FCB data error\n";
  require(messages.text() == expected, "messages of the form reader");
  require(status == ST_OK || status == ST_FAILED, "status of the form reader");
  return form;
}

/// Reads the form again, for the report: a fault exactly when it is refused, on a line of the file.
void check_report(const std::string& path, std::string_view text, Status expected,
                  const FcbTable& loaded) {
  FcbTable form;
  FcbReport report;
  const Status status = fcb_read(the_filter().forms, path.c_str(), form, report);
  require(status == expected, "both readings of a form agree");
  const FcbFault& fault = report.fault;
  require((fault.wrong == FcbWrong::nothing) == (status == ST_OK), "a fault is a failure");
  require(fault.wrong != FcbWrong::file, "a file in memory can be read");
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) +
                     (text.empty() || text.back() == '\n' ? 0U : 1U);
  require(fault.line <= lines && (status == ST_OK) == (fault.line == 0), "the line of a fault");
  require(report.print_line <= lines, "the line of the first line");
  require(loaded.lpi == form.lpi && loaded.top_line == form.top_line &&
              loaded.form_halfinch == form.form_halfinch,
          "both readings give the same form");
}

std::size_t line_count(const FcbTable& form) {
  return static_cast<std::size_t>(std::find(form.lpi.begin(), form.lpi.end(), 0U) -
                                  form.lpi.begin());
}

void check_form(const FcbTable& form) {
  const std::size_t lines = line_count(form);
  const bool short_forms = the_filter().command_line.stream_variant == kShortFormStream;
  require(form.form_halfinch >= (short_forms ? 7 : 2), "a form is too short");
  require(form.form_halfinch <= 40, "a form is too long");
  require(form.top_line >= 1 && static_cast<std::size_t>(form.top_line) <= lines, "top line");
  require(lines <= kMaxFormLines, "too many lines");
  std::uint32_t height = 0;
  for (std::size_t i = 0; i < form.lpi.size(); ++i) {
    const std::uint32_t lpi = form.lpi[i];
    const bool known = lpi == 3 || lpi == 4 || lpi == 6 || lpi == 8 || lpi == 12;
    require(i < lines ? known : lpi == 0, "lines per inch");
    height += i < lines ? 7200 / lpi : 0;
  }
  // Rounding down to the half inch may make the form shorter than its lines.
  const auto room = static_cast<std::uint32_t>(form.form_halfinch) * 3600 + 3599;
  require(height <= room, "the lines are taller than the form");
}

void check_movement(const OutputBuffer& pending, const FcbTable& form) {
  require(pending.length >= 0 && pending.length <= 1 + kLongestLine * form.top_line,
          "length of a movement");
  const auto* const end = pending.bytes.begin() + pending.length;
  require(std::count(pending.bytes.begin(), end, 0x0a) == form.top_line - 1, "lines of a movement");
  require(form.cur_line == form.top_line - 1, "the line behind a movement");
}

/// Walks through two forms, line by line.
void walk(FcbTable& form) {
  static OutputBuffer pending;
  static CommandRecord record;
  pending.length = 0;
  top_of_form(the_filter().spacing, form, pending);
  check_movement(pending, form);
  const std::size_t lines = line_count(form);
  for (std::size_t i = 0; i < 2 * lines; ++i) {
    pending.length = 0;
    record.code = CMD_LF;
    record.bytes[0] = 0x0a;
    record.length = 1;
    const std::int32_t before = form.cur_line;
    next_line(the_filter().spacing, record, form, pending);
    if (static_cast<std::size_t>(before) + 1 < lines) {
      require(form.cur_line == before + 1 && pending.length == 0, "a line inside the form");
      require(record.length > 1 && record.length <= kLongestLine, "a pitch behind LF");
    } else {
      require(record.length == 0, "a LF over the end of the form is left");
      check_movement(pending, form);
    }
  }
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  static const MemoryFile file;
  static const std::string path = file.path();
  Choices choices(data, size);
  const std::uint8_t switches = choices.byte();
  rlx::testing::restart_settings();
  rlx::testing::the_filter().messages.program_name = "filter";
  rlx::testing::the_filter().command_line.stream_variant = rlx::kPlainStream + switches % 3;
  rlx::testing::the_filter().job.page_started = (switches & 8) != 0 ? 1 : 0;
  rlx::testing::the_filter().environment = {1, (switches & 16) != 0 ? 1 : 0};
  const std::string_view text = choices.rest();
  file.set(text);
  rlx::Status status = rlx::ST_OK;
  rlx::FcbTable form = load(path, status);
  check_report(path, text, status, form);
  if (status == 0) {
    check_form(form);
    walk(form);
  }
  return 0;
}
