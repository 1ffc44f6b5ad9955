#include "driver/routing.h"

#include <array>
#include <bit>

#include "driver/code_set.h"
#include "driver/condition_steps.h"
#include "driver/form_steps.h"
#include "driver/loop_step.h"
#include "driver/output_steps.h"
#include "driver/pass_through.h"
#include "input/framed_transfer.h"
#include "job/settings.h"

namespace rlx {

namespace {

struct Step {
  Next (*take)(LoopState& loop);
  CodeSet codes;
  /// Nothing comes of the step on a page that has started and has content, while nothing is held.
  bool idle_on_started_page = false;
};

constexpr bool kIdleOnStartedPage = true;

/// What puts something on the page: text, drawing and positioning.
constexpr CodeSet kContent{267, 301, 425, 426, 427, 434, 435, 436, 456, 468, 469,  470,  471,
                           472, 473, 475, 481, 485, 499, 501, 512, 767, 768, 1024, 1280, 3840};
/// What starts a new state of the page.
constexpr CodeSet kNewState{262, 298, 302, 355, 418, 419, 445, 446, 447, 453, 476, 478,
                            479, 486, 491, 495, 502, 503, 505, 506, 507, 508, 509, 523};
constexpr CodeSet kStartsPage{258, 259, 260, 261, 263, 385, 512, 768, 1024, 1280};
constexpr CodeSet kPrintConditions{482, 483};
constexpr CodeSet kLeavesPage{262, 482, 483};
/// Before these the pending conditions are not sent; 479 decides for itself.
constexpr CodeSet kHoldsConditionsBack{446, 478, 482, 483, 500};
/// What releases the vertical movements that the form holds back.
constexpr CodeSet kReleasesMovement{258, 259, 261, 263, 385, 512, 768, 1024, 1280};
constexpr CodeSet kText{264, 265, 512, 768, 1024, 3840};
constexpr CodeSet kWrittenAsText{264, 265, 512, 768, 1024, 1280, 3840};

Next note_content(LoopState& loop) {
  loop.content_since_conditions = true;
  job_settings.page_has_content = 1;
  return Next::step;
}

Next note_new_state(LoopState& loop) {
  loop.content_since_conditions = false;
  return Next::step;
}

Next pass_rest_through(LoopState& loop) {
  loop.passed_through = true;
  loop.status = pass_through(loop.record, loop.copy_failed);
  return Next::end;
}

/// Without bytes there is nothing to route; but when the input frame is used up the step that
/// writes has to see even such a record, because it makes the output frame leave.
Next skip_empty_record(LoopState& loop) {
  if (loop.record.length != 0 && !loop.record_cut) {
    return Next::step;
  }
  const bool frame_used_up = job_settings.framed_output != 0 && frame_left() == 0;
  return frame_used_up ? Next::step : Next::record;
}

Next note_settings_change(LoopState& /*loop*/) {
  job_settings.settings_changed = 1;
  return Next::step;
}

Next note_page_start(LoopState& /*loop*/) {
  job_settings.page_started = 1;
  return Next::step;
}

Next note_page_left(LoopState& /*loop*/) {
  job_settings.page_started = 0;
  return Next::step;
}

/// The road of a command. The order is the printer's: conditions before what they govern, vertical
/// movement before the text that it moves to, the command's own bytes last.
constexpr std::array kSteps{
    Step{note_content, kContent, kIdleOnStartedPage},
    Step{note_new_state, kNewState},
    Step{pass_rest_through, {CMD_Q_BQ_SL}},
    Step{skip_empty_record, CodeSet::all()},
    Step{take_condition_record, kPrintConditions},
    Step{judge_spacing_reset, {479}},
    Step{reset_line_unit, {478, 479}},
    Step{take_form_parameter, {500}},
    Step{take_resolution_switch, {489}},
    Step{note_settings_change, {333}},
    Step{send_due_conditions, CodeSet::all_but(kHoldsConditionsBack)},
    Step{take_named_form, {482}},
    Step{drop_record_bytes, kPrintConditions},
    Step{note_page_start, kStartsPage, kIdleOnStartedPage},
    Step{note_page_left, kLeavesPage},
    Step{begin_form, kLeavesPage},
    Step{release_movement, kReleasesMovement, kIdleOnStartedPage},
    Step{advance_form_line, {260}},
    Step{convert_text, kText},
    Step{convert_gaiji, {1280}},
    Step{take_command_492, {492}},
    Step{forget_held_command, {334, 335, 487}},
    Step{write_held_command, CodeSet::all()},
    Step{write_text, kWrittenAsText},
    Step{hold_command, {488}},
    Step{leave_double_byte_set, {481}},
    Step{count_line, {260}},
    Step{make_plain_form_feed, {262}},
    Step{write_command, CodeSet::all()},
    Step{copy_pending_data, CodeSet::all()},
    Step{copy_download_data, {499}},
    Step{send_form_line_pitch, {397, 421}},
    Step{send_conditions_of_492, {492}},
};
static_assert(kSteps.size() <= 64, "a step is a bit of StepMask");

using StepMask = std::uint64_t;

/// For each code the steps that it takes part in, one bit each.
constexpr auto kStepMasks = [] {
  std::array<StepMask, kHighestCommandCode + 1> masks{};
  for (std::size_t step = 0; step < kSteps.size(); ++step) {
    kSteps[step].codes.for_each(
        [&masks, step](std::uint32_t code) { masks[code] |= StepMask{1} << step; });
  }
  return masks;
}();

/// The steps that every command takes part in.
constexpr StepMask kCommonSteps = kStepMasks[CMD_NONE];

/// The steps that are idle on a started page.
constexpr StepMask kStartedPageSteps = [] {
  StepMask mask = 0;
  for (std::size_t step = 0; step < kSteps.size(); ++step) {
    mask |= kSteps[step].idle_on_started_page ? StepMask{1} << step : 0;
  }
  return mask;
}();

StepMask steps_of(std::uint32_t code) {
  return code <= kHighestCommandCode ? kStepMasks[code] : kCommonSteps;
}

/// True for a command that needs nothing but to be written: no step is for it but the common ones,
/// nothing waits to go before it and no data follows it.
bool is_ordinary(const LoopState& loop) {
  const CommandRecord& record = loop.record;
  return is_only_written(record.code) && record.length != 0 && !loop.record_cut &&
         record.pending == 0 && !conditions_due(loop) && loop.held_command.length == 0;
}

}  // namespace

const std::array<OnlyWritten, kHighestCommandCode + 1> only_written = [] {
  std::array<OnlyWritten, kHighestCommandCode + 1> only{};
  for (std::size_t code = 0; code < only.size(); ++code) {
    only[code].always = kStepMasks[code] == kCommonSteps;
    only[code].on_started_page = (kStepMasks[code] & ~kStartedPageSteps) == kCommonSteps;
  }
  return only;
}();

bool route_record(LoopState& loop) {
  if (loop.fast_road && is_ordinary(loop)) {
    return write_command(loop) == Next::step;
  }
  for (StepMask mask = steps_of(loop.record.code); mask != 0; mask &= mask - 1) {
    const Next next = kSteps[static_cast<std::size_t>(std::countr_zero(mask))].take(loop);
    if (next != Next::step) {
      return next == Next::record;
    }
  }
  return true;
}

}  // namespace rlx
