// Everything that is read out of one command record: print conditions, form names, form parameters
// and the parameter texts. What stands in the record behind its length must make no difference.
//
// Input: a byte of switches, the bytes of the record.

#include <array>
#include <tuple>

#include "driver/loop/command_parameters.h"
#include "driver/loop/print_condition_command.h"
#include "forms/fcb_name.h"
#include "fresh_filter.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {
namespace {

/// All that a record gave.
struct Outcome {
  Status conditions_status = ST_OK;
  std::string conditions;
  Status name_status = ST_OK;
  std::string fcb_name;
  FormName form_name;
  std::string parameter;
  bool resets = false;
  int state_492 = 0;
  int result_492 = 0;
  bool switched = false;
  int high_resolution_fonts = 0;
  bool form_accepted = false;
  std::string form;
  std::string messages;

  auto all() const {
    return std::tie(conditions_status, conditions, name_status, fcb_name, form_name.as_given,
                    form_name.letters_and_digits, parameter, resets, state_492, result_492,
                    switched, high_resolution_fonts, form_accepted, form, messages);
  }
};

/// A text field; nothing stands behind its NUL, and it holds letters and digits alone.
template <std::size_t Room>
std::string field(const std::array<char, Room>& text) {
  const auto* const end = std::find(text.begin(), text.end(), '\0');
  require(end != text.end(), "a text without an end");
  require(std::all_of(end, text.end(), [](char byte) { return byte == '\0'; }),
          "bytes behind a text");
  require(std::all_of(text.begin(), end,
                      [](char byte) {
                        return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                               (byte >= 'a' && byte <= 'z');
                      }),
          "another character than a letter or a digit");
  return std::string(text.begin(), end) + ';';
}

std::string number(std::int32_t value) {
  return std::to_string(value) + ';';
}

std::string shown_conditions() {
  const PrintConditions& all = the_filter().conditions;
  return field(all.form_overlay) + number(all.overlay_count) + number(all.copies) +
         field(all.form_code) + field(all.orientation) + field(all.binding_edge) +
         field(all.binding_mode) + number(all.first_offset) + number(all.second_offset) +
         field(all.paper_size) + field(all.tray) + field(all.duplex) + number(all.binding_margin);
}

void read_conditions(const CommandRecord& record, Outcome& outcome) {
  outcome.conditions_status =
      parse_print_condition_command(the_filter().messages, record, the_filter().conditions);
  require(outcome.conditions_status == 0 || outcome.conditions_status == 1, "conditions' status");
  outcome.conditions = shown_conditions();
  FcbName name{"-"};
  outcome.name_status = fcb_name_from_command(the_filter().messages, record, name);
  require(outcome.name_status == 0 || outcome.name_status == 1, "status of a form name");
  outcome.fcb_name = name.data();
  require(outcome.fcb_name.size() <= 4, "a form name is too long");
  outcome.form_name = parse_form_name(record);
  field(outcome.form_name.letters_and_digits);
  require(outcome.form_name.as_given[8] == '\0', "a form name without an end");
}

void read_parameters(const CommandRecord& record, Outcome& outcome) {
  const std::string_view parameter = parameter_text(record);
  outcome.parameter = parameter;
  outcome.resets = resets_line_unit(parameter);
  outcome.state_492 = the_filter().job.high_resolution_fonts;
  outcome.result_492 = parse_command_492(parameter, outcome.state_492);
  require(outcome.result_492 >= -1 && outcome.result_492 <= 1, "result of command 492");
  require(outcome.state_492 == 0 || outcome.state_492 == 1, "state of command 492");
  const int before = the_filter().job.high_resolution_fonts;
  outcome.switched =
      switch_resolution(parameter, the_filter().command_line.resolution, the_filter().job);
  outcome.high_resolution_fonts = the_filter().job.high_resolution_fonts;
  require(outcome.switched == (before != outcome.high_resolution_fonts), "resolution switch");
}

void read_form_parameter(const CommandRecord& record, Outcome& outcome) {
  SettingsRecord settings;
  outcome.form_accepted =
      parse_form_parameter(record, the_filter().command_line.capability_g, settings);
  require(settings.form_data_length >= 0 && settings.form_data_length <= kMaxFormData,
          "length of form data");
  require(settings.form_source <= kFromFormKind3, "source of form data");
  outcome.form =
      number(settings.form_source) + number(settings.spacing_index) + number(settings.form_flag);
  outcome.form +=
      text_of(settings.form_data.data(), static_cast<std::size_t>(settings.form_data_length));
}

Outcome read_record(const CommandRecord& record, std::uint8_t switches) {
  the_filter().conditions = {};
  the_filter().messages.program_name = "filter";
  the_filter().job.high_resolution_fonts = switches & 1;
  the_filter().command_line.resolution = (switches & 2) != 0 ? 400 : 240;
  the_filter().command_line.capability_g = (switches & 4) != 0 ? 1 : 0;
  const Messages messages;
  Outcome outcome;
  read_conditions(record, outcome);
  read_parameters(record, outcome);
  read_form_parameter(record, outcome);
  outcome.messages = messages.text();
  return outcome;
}

void fill(CommandRecord& record, std::string_view bytes, std::uint8_t tail) {
  record.length = static_cast<std::int32_t>(bytes.size());
  record.bytes.fill(tail);
  std::copy(bytes.begin(), bytes.end(), record.bytes.begin());
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  static rlx::CommandRecord record;
  Choices choices(data, size);
  const std::uint8_t switches = choices.byte();
  const std::string_view bytes = choices.bytes(record.bytes.size());
  fill(record, bytes, 0xff);
  const Outcome reference = read_record(record, switches);
  for (const std::uint8_t tail : std::array<std::uint8_t, 3>{0, '0', ' '}) {
    fill(record, bytes, tail);
    require(read_record(record, switches).all() == reference.all(), "bytes behind the record");
  }
  return 0;
}
