#include "driver/loop/condition_steps.h"

#include "driver/loop/command_parameters.h"
#include "driver/loop/driver_output.h"
#include "driver/loop/print_condition_command.h"
#include "job/control_bytes.h"

namespace rlx {

namespace {

/// Form data may end in a FF, and ends the page then.
bool form_data_ends_page(const SettingsRecord& settings) {
  const auto length = static_cast<std::size_t>(settings.form_data_length);
  return length > 0 && settings.form_data[length - 1] == kFormFeed;
}

void send_conditions(LoopState& loop, std::uint32_t command) {
  if (form_data_ends_page(loop.settings)) {
    gaiji_reset_size(loop.gaiji);
  }
  emit_print_conditions(loop.conditions_output, command, loop.command_line.capability_F,
                        loop.job.line_unit, nullptr, &loop.job.line_unit, nullptr, loop.settings);
}

Status reload_fonts(LoopState& loop) {
  fonts_close(loop.fonts);
  const Status status =
      fonts_open(loop.fonts, loop.command_line.font_variant, loop.job.high_resolution_fonts, 1,
                 loop.command_line.capability_g);
  gaiji_reset_cache(loop.gaiji);
  loop.job.fonts_reloaded = 1;
  return status;
}

/// Opens the fonts of the job's resolution when the ones in use are of the other.
Status check_fonts(LoopState& loop) {
  const bool too_fine =
      loop.command_line.resolution == kLowResolution && loop.job.high_resolution_fonts == 1;
  const bool too_coarse =
      loop.command_line.resolution == kHighResolution && loop.job.high_resolution_fonts == 0;
  if (!too_fine && !too_coarse) {
    return ST_OK;
  }
  loop.job.high_resolution_fonts = too_coarse ? 1 : 0;
  return reload_fonts(loop);
}

void await_conditions(LoopState& loop) {
  loop.held_command.length = 0;
  loop.conditions_pending = true;
}

/// A print-condition command governs the pages behind it, so a page that has content ends first.
void end_page_with_content(LoopState& loop) {
  if (loop.content_since_conditions) {
    loop.content_since_conditions = false;
    write_form_feed(loop);
  }
}

void parse_condition_command(LoopState& loop) {
  if (loop.record.code == CMD_Q_NL_SP) {
    // A command without a data length has cleared the conditions and has been reported; the job
    // ends with it only when its form name is looked for.
    static_cast<void>(parse_print_condition_command(loop.messages, loop.record, loop.conditions));
  } else {
    loop.form_name = parse_form_name(loop.record);
  }
  gaiji_reset_size(loop.gaiji);
}

bool resets_spacing(const LoopState& loop) {
  if (loop.record.code == CMD_LINE_UNIT_479) {
    return loop.spacing_reset;
  }
  const int mode = loop.command_line.emulation_mode;
  return mode < kFineMode || mode > kExtendedMode;
}

}  // namespace

Next take_condition_command(LoopState& loop) {
  end_page_with_content(loop);
  parse_condition_command(loop);
  if (conditions_due(loop)) {
    send_conditions(loop, loop.last_condition_code);
  }
  loop.last_condition_code = loop.record.code;
  loop.job.settings_changed = 1;
  const Status status = check_fonts(loop);
  await_conditions(loop);
  return go_on_if_ok(loop, status);
}

Next judge_spacing_reset(LoopState& loop) {
  switch (loop.command_line.emulation_mode) {
    case kStandardMode:
      loop.spacing_reset = true;
      break;
    case kMode6:
    case kMode7:
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
  loop.job.line_unit = kDefaultLineUnit;
  loop.job.settings_changed = 1;
  const Status status = check_fonts(loop);
  await_conditions(loop);
  loop.last_condition_code = loop.record.code;
  return go_on_if_ok(loop, status);
}

Next take_form_parameter(LoopState& loop) {
  if (parse_form_parameter(loop.record, loop.command_line.capability_g, loop.settings)) {
    loop.last_condition_code = loop.record.code;
    loop.conditions_pending = true;
  }
  loop.record.length = 0;
  return Next::step;
}

Next take_resolution_switch(LoopState& loop) {
  if (loop.command_line.printer_class != kPrinterClassF1) {
    return Next::step;
  }
  loop.job.settings_changed = 1;
  const bool changed =
      switch_resolution(parameter_text(loop.record), loop.command_line.resolution, loop.job);
  return go_on_if_ok(loop, changed ? reload_fonts(loop) : ST_OK);
}

Next send_due_conditions(LoopState& loop) {
  if (!conditions_due(loop) || (loop.record.code == CMD_LINE_UNIT_479 && loop.spacing_reset)) {
    return Next::step;
  }
  loop.conditions_pending = false;
  send_conditions(loop, loop.last_condition_code);
  return Next::step;
}

Next drop_record_bytes(LoopState& loop) {
  loop.record.length = 0;
  return Next::step;
}

Next take_command_492(LoopState& loop) {
  if (loop.command_line.capability_F == 0) {
    return Next::step;
  }
  loop.command_492_result = parse_command_492(parameter_text(loop.record), loop.command_492_state);
  if (loop.command_line.printer_class == kPrinterClassF1 && loop.command_492_result == 1) {
    loop.job.fonts_reloaded = 1;
    loop.job.settings_changed = 1;
  }
  return Next::step;
}

Next send_conditions_of_492(LoopState& loop) {
  if (loop.command_line.capability_F == 0 || loop.command_line.print_conditions_enabled == 0 ||
      loop.command_line.framed_output != 0 || loop.command_492_result == -1 ||
      loop.command_492_state != 0) {
    return Next::step;
  }
  send_conditions(loop, CMD_SECOND_VARIANT_492);
  return Next::step;
}

}  // namespace rlx
