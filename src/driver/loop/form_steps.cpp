#include "driver/loop/form_steps.h"

#include <array>
#include <cstdio>

#include "driver/loop/driver_output.h"
#include "forms/fcb_name.h"
#include "job/control_bytes.h"
#include "job/units.h"
#include "support/number.h"

namespace rlx {

namespace {

void leave_named_form(LoopState& loop) {
  loop.fcb_active = loop.initial_fcb_exists;
  if (loop.initial_fcb_exists) {
    loop.current_store = &loop.initial_store;
  }
}

Status enter_named_form(LoopState& loop, const char* name) {
  const Status status = fcb_load(loop.forms, name, loop.second_store, loop.directories);
  if (status == ST_OK) {
    loop.current_store = &loop.second_store;
    loop.fcb_active = true;
  }
  return status;
}

void write_held_movement(LoopState& loop) {
  const Bytes movement = loop.pending_vertical_bytes.gathered();
  loop.pending_vertical_bytes.length = 0;
  if (!movement.empty()) {
    write_piece(loop, movement);
  }
}

void append_form_feed(CommandRecord& record) {
  record.bytes[static_cast<std::size_t>(record.length++)] = kFormFeed;
}

}  // namespace

Next take_named_form(LoopState& loop) {
  FcbName name;
  const Status status = fcb_name_from_command(loop.messages, loop.record, name);
  if (status != ST_OK) {
    return go_on_if_ok(loop, status);
  }
  if (name[0] == '\0') {
    leave_named_form(loop);
    return Next::step;
  }
  return go_on_if_ok(loop, enter_named_form(loop, name.data()));
}

Next begin_form(LoopState& loop) {
  if (!form_moves_paper(loop)) {
    return Next::step;
  }
  loop.pending_vertical_bytes.length = 0;
  top_of_form(loop.spacing, *loop.current_store, loop.pending_vertical_bytes);
  return Next::step;
}

Next release_movement(LoopState& loop) {
  if (form_moves_paper(loop)) {
    write_held_movement(loop);
  }
  return Next::step;
}

Next advance_form_line(LoopState& loop) {
  if (!form_moves_paper(loop)) {
    return Next::step;
  }
  const Status more = peek_input(loop.source);
  if (more == ST_EOF) {
    loop.end_marker = ST_EOF;
    return Next::step;
  }
  if (more != ST_OK) {
    return go_on_if_ok(loop, more);
  }
  write_held_movement(loop);
  next_line(loop.spacing, loop.record, *loop.current_store, loop.pending_vertical_bytes);
  return Next::step;
}

Next count_line(LoopState& loop) {
  if (!lines_are_counted(loop)) {
    return Next::step;
  }
  append_command(loop.record, counted_line_pitch(loop));
  ++loop.line_counter;
  if (loop.line_counter == loop.command_line.lines_per_page) {
    append_form_feed(loop.record);
    loop.line_counter = 0;
  }
  return Next::step;
}

PitchCommand counted_line_pitch(const LoopState& loop) {
  if (loop.settings.line_pitch_source != kFromCommandLine) {
    return {};
  }
  const std::int32_t lines_per_inch = decimal_value(loop.settings.line_pitch_text);
  if (lines_per_inch != 3 && lines_per_inch != 4 && lines_per_inch != 6) {
    return {};
  }
  return numeric_command('%', static_cast<std::uint32_t>(kUnitsPerInch / lines_per_inch));
}

Next make_plain_form_feed(LoopState& loop) {
  loop.record.bytes[0] = kFormFeed;
  loop.record.length = 1;
  loop.line_counter = 0;
  return Next::step;
}

Next send_form_line_pitch(LoopState& loop) {
  if (!loop.fcb_active) {
    return Next::step;
  }
  const FcbTable& form = *loop.current_store;
  std::array<char, 12> digits{};
  std::snprintf(digits.data(), digits.size(), "%u",
                form.lpi[static_cast<std::size_t>(form.cur_line)]);
  line_pitch_sequence(loop.conditions_output, digits.data(), 1);
  return Next::step;
}

}  // namespace rlx
