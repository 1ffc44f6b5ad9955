#include "driver/condition_steps.h"

#include "driver/command_parameters.h"
#include "driver/driver_output.h"
#include "driver/print_condition_record.h"
#include "fonts/font_sets.h"
#include "fonts/gaiji.h"
#include "job/control_bytes.h"
#include "job/settings.h"
#include "output/print_conditions_out.h"

namespace rlx {

namespace {

constexpr std::uint32_t kCommand479 = 479;
constexpr std::uint32_t kCommand492 = 492;

/// Form data may end in a FF, and ends the page then.
bool form_data_ends_page(const SettingsRecord& record) {
  const auto length = static_cast<std::size_t>(record.form_data_length);
  return length > 0 && record.form_data[length - 1] == kFormFeed;
}

int send_conditions(LoopState& loop, std::uint32_t command) {
  if (form_data_ends_page(job_settings.record)) {
    gaiji_reset_size();
  }
  return emit_print_conditions(static_cast<int>(command), job_settings.capability_F,
                               job_settings.line_unit, &loop.spacing_index, &job_settings.line_unit,
                               &loop.conditions_written, job_settings.record);
}

int reload_fonts() {
  fonts_close();
  const int status = fonts_open(job_settings.font_variant, job_settings.high_resolution_fonts, 1,
                                job_settings.capability_g);
  gaiji_reset_cache();
  job_settings.fonts_reloaded = 1;
  return status;
}

/// Opens the fonts of the job's resolution when the ones in use are of the other.
int check_fonts() {
  const bool too_fine = job_settings.resolution == 240 && job_settings.high_resolution_fonts == 1;
  const bool too_coarse = job_settings.resolution == 400 && job_settings.high_resolution_fonts == 0;
  if (!too_fine && !too_coarse) {
    return ST_OK;
  }
  job_settings.high_resolution_fonts = too_coarse ? 1 : 0;
  return reload_fonts();
}

void await_conditions(LoopState& loop) {
  loop.held_command.length = 0;
  loop.conditions_pending = true;
}

/// A record belongs to the pages behind it: a page that has content ends first.
int end_page_with_content(LoopState& loop) {
  if (!loop.content_since_conditions) {
    return ST_OK;
  }
  loop.content_since_conditions = false;
  return write_form_feed();
}

void parse_condition_record(LoopState& loop) {
  if (loop.record.code == CMD_Q_NL_SP) {
    // A record without a data length has cleared the conditions and has been reported; the job ends
    // with it only when its form name is looked for.
    parse_print_condition_record(loop.record);
  } else {
    loop.form_name = parse_form_name(loop.record);
  }
  gaiji_reset_size();
}

bool resets_spacing(const LoopState& loop) {
  if (loop.record.code == kCommand479) {
    return loop.spacing_reset;
  }
  const int mode = job_settings.emulation_mode;
  return mode < 2 || mode > 4;
}

}  // namespace

Next take_condition_record(LoopState& loop) {
  int status = end_page_with_content(loop);
  if (status != ST_OK) {
    return go_on_if_ok(loop, status);
  }
  parse_condition_record(loop);
  if (conditions_due(loop)) {
    status = send_conditions(loop, loop.last_condition_code);
    if (status != ST_OK) {
      return go_on_if_ok(loop, status);
    }
  }
  loop.last_condition_code = loop.record.code;
  job_settings.settings_changed = 1;
  status = check_fonts();
  await_conditions(loop);
  return go_on_if_ok(loop, status);
}

Next judge_spacing_reset(LoopState& loop) {
  switch (job_settings.emulation_mode) {
    case 1:
      loop.spacing_reset = true;
      break;
    case 6:
    case 7:
      loop.spacing_reset = resets_line_unit(parameter_text(loop.record));
      break;
    default:
      break;
  }
  return Next::step;
}

Next reset_line_unit(LoopState& loop) {
  if (!resets_spacing(loop)) {
    return Next::step;
  }
  job_settings.line_unit = kDefaultLineUnit;
  job_settings.settings_changed = 1;
  const int status = check_fonts();
  await_conditions(loop);
  loop.last_condition_code = loop.record.code;
  return go_on_if_ok(loop, status);
}

Next take_form_parameter(LoopState& loop) {
  if (parse_form_parameter(loop.record, job_settings.record)) {
    loop.last_condition_code = loop.record.code;
    loop.conditions_pending = true;
  }
  loop.record.length = 0;
  return Next::step;
}

Next take_resolution_switch(LoopState& loop) {
  if (job_settings.printer_class != kPrinterClassF1) {
    return Next::step;
  }
  job_settings.settings_changed = 1;
  const bool changed = switch_resolution(parameter_text(loop.record));
  return go_on_if_ok(loop, changed ? reload_fonts() : ST_OK);
}

Next send_due_conditions(LoopState& loop) {
  if (!conditions_due(loop) || (loop.record.code == kCommand479 && loop.spacing_reset)) {
    return Next::step;
  }
  loop.conditions_pending = false;
  return go_on_if_ok(loop, send_conditions(loop, loop.last_condition_code));
}

Next drop_record_bytes(LoopState& loop) {
  loop.record.length = 0;
  return Next::step;
}

Next take_command_492(LoopState& loop) {
  if (job_settings.capability_F == 0) {
    return Next::step;
  }
  loop.command_492_result = parse_command_492(parameter_text(loop.record), loop.command_492_state);
  if (job_settings.printer_class == kPrinterClassF1 && loop.command_492_result == 1) {
    job_settings.fonts_reloaded = 1;
    job_settings.settings_changed = 1;
  }
  return Next::step;
}

Next send_conditions_of_492(LoopState& loop) {
  if (job_settings.capability_F == 0 || job_settings.print_conditions_enabled == 0 ||
      job_settings.framed_output != 0 || loop.command_492_result == -1 ||
      loop.command_492_state != 0) {
    return Next::step;
  }
  return go_on_if_ok(loop, send_conditions(loop, kCommand492));
}

}  // namespace rlx
