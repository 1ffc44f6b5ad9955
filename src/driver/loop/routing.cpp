#include "driver/loop/routing.h"

#include <array>
#include <bit>

#include "driver/loop/code_set.h"
#include "driver/loop/condition_steps.h"
#include "driver/loop/form_steps.h"
#include "driver/loop/loop_step.h"
#include "driver/loop/output_steps.h"
#include "driver/loop/pass_through.h"

namespace rlx {

namespace {

using StepFunction = Next (*)(LoopState& loop);

/// What a step does while nothing waits to go before the command, as far as CommandEffects can say.
enum class Effect : std::uint8_t { other, none, content, new_state, page_start };

struct Step {
  StepFunction take;
  CodeSet codes;
  Effect effect = Effect::other;
};

/// What puts something on the page: text, drawing and positioning.
constexpr CodeSet kContent{
    CMD_DC1,         CMD_CONTENT_301,     CMD_CONTENT_425, CMD_CONTENT_426,  CMD_CONTENT_427,
    CMD_CONTENT_434, CMD_CONTENT_435,     CMD_CONTENT_436, CMD_Q_AL_EX,      CMD_Q_XL_EX,
    CMD_Q_YL_EX,     CMD_Q_ZL_EX,         CMD_CONTENT_471, CMD_CONTENT_472,  CMD_CONTENT_473,
    CMD_Q_DEL_EX,    CMD_SINGLE_BYTE_481, CMD_Q_TILDE_SL,  CMD_DOWNLOAD_499, CMD_CONTENT_501,
    CMD_TEXT_ASCII,  CMD_TEXT_RAW,        CMD_TEXT_MB,     CMD_TEXT_SS2,     CMD_TEXT_GAIJI,
    CMD_TEXT_BAD};
/// What starts a new state of the page.
constexpr CodeSet kNewState{
    CMD_FF,        CMD_ESC_C,     CMD_ESC_DEL4,      CMD_STATE_355,  CMD_STATE_418,
    CMD_STATE_419, CMD_Q_AT_EX,   CMD_Q_A_EX,        CMD_STATE_447,  CMD_Q_H_EX,
    CMD_Q_F_EX,    CMD_Q_I_EX,    CMD_LINE_UNIT_479, CMD_Q_W_EX,     CMD_STATE_491,
    CMD_Q_BSL_EX,  CMD_STATE_502, CMD_STATE_503,     CMD_STATE_505,  CMD_Q_RBR_EX,
    CMD_STATE_507, CMD_STATE_508, CMD_Q_BAR_SL,      CMD_Q_RBRACE_SL};
constexpr CodeSet kStartsPage{CMD_BS,       CMD_HT,        CMD_LF,         CMD_VT,
                              CMD_CR,       CMD_CSI_BQ,    CMD_TEXT_ASCII, CMD_TEXT_MB,
                              CMD_TEXT_SS2, CMD_TEXT_GAIJI};
constexpr CodeSet kPrintConditions{CMD_Q_NL_SP, CMD_Q_NL_SP2};
constexpr CodeSet kLeavesPage{CMD_FF, CMD_Q_NL_SP, CMD_Q_NL_SP2};
/// Before these the pending conditions are not sent; CMD_LINE_UNIT_479 decides for itself.
constexpr CodeSet kHoldsConditionsBack{CMD_Q_A_EX, CMD_Q_I_EX, CMD_Q_NL_SP, CMD_Q_NL_SP2,
                                       CMD_Q_OL_SP};
/// What releases the vertical movements that the form holds back.
constexpr CodeSet kReleasesMovement{CMD_BS,      CMD_HT,       CMD_VT,
                                    CMD_CR,      CMD_CSI_BQ,   CMD_TEXT_ASCII,
                                    CMD_TEXT_MB, CMD_TEXT_SS2, CMD_TEXT_GAIJI};
constexpr CodeSet kText{CMD_SO, CMD_SI, CMD_TEXT_ASCII, CMD_TEXT_MB, CMD_TEXT_SS2, CMD_TEXT_BAD};
constexpr CodeSet kWrittenAsText{CMD_SO,       CMD_SI,         CMD_TEXT_ASCII, CMD_TEXT_MB,
                                 CMD_TEXT_SS2, CMD_TEXT_GAIJI, CMD_TEXT_BAD};

Next note_content(LoopState& loop) {
  loop.content_since_conditions = true;
  loop.job.page_has_content = 1;
  return Next::step;
}

Next note_new_state(LoopState& loop) {
  loop.content_since_conditions = false;
  return Next::step;
}

Next pass_rest_through(LoopState& loop) {
  loop.passed_through = true;
  pass_through(loop);
  return Next::end;
}

/// Without bytes there is nothing to route; but when the input frame is used up the step that
/// writes has to see even such a record, because it makes the output frame leave.
Next skip_empty_record(LoopState& loop) {
  if (loop.record.length != 0 && !loop.record_cut) {
    return Next::step;
  }
  const bool frame_used_up = loop.output.framed() && frame_left(loop.source.frames) == 0;
  return frame_used_up ? Next::step : Next::record;
}

Next note_settings_change(LoopState& loop) {
  loop.job.settings_changed = 1;
  return Next::step;
}

Next note_page_start(LoopState& loop) {
  loop.job.page_started = 1;
  return Next::step;
}

Next note_page_left(LoopState& loop) {
  loop.job.page_started = 0;
  return Next::step;
}

/// The steps of a command, in order. The order is the printer's: conditions before what they
/// govern, vertical movement before the text that it moves to, the command's own bytes last. Only
/// the compiler reads it; the program has the tables below.
constexpr auto kSteps = std::to_array<Step>({
    Step{note_content, kContent, Effect::content},
    Step{note_new_state, kNewState, Effect::new_state},
    Step{pass_rest_through, {CMD_Q_BQ_SL}},
    Step{skip_empty_record, CodeSet::all()},
    Step{take_condition_command, kPrintConditions},
    Step{judge_spacing_reset, {CMD_LINE_UNIT_479}},
    Step{reset_line_unit, {CMD_Q_I_EX, CMD_LINE_UNIT_479}},
    Step{take_form_parameter, {CMD_Q_OL_SP}},
    Step{take_resolution_switch, {CMD_RESOLUTION_489}},
    Step{note_settings_change, {CMD_SETTINGS_333}},
    Step{send_due_conditions, CodeSet::all_but(kHoldsConditionsBack), Effect::none},
    Step{take_named_form, {CMD_Q_NL_SP}},
    Step{drop_record_bytes, kPrintConditions},
    Step{note_page_start, kStartsPage, Effect::page_start},
    Step{note_page_left, kLeavesPage},
    Step{begin_form, kLeavesPage},
    Step{release_movement, kReleasesMovement, Effect::none},
    Step{advance_form_line, {CMD_LF}},
    Step{convert_text, kText},
    Step{convert_gaiji, {CMD_TEXT_GAIJI}},
    Step{take_command_492, {CMD_SECOND_VARIANT_492}},
    Step{forget_held_command, {CMD_DROP_HELD_334, CMD_DROP_HELD_335, CMD_DROP_HELD_487}},
    Step{write_held_command, CodeSet::all()},
    Step{write_text, kWrittenAsText},
    Step{hold_command, {CMD_HOLD_488}},
    Step{leave_double_byte_set, {CMD_SINGLE_BYTE_481}},
    Step{count_line, {CMD_LF}},
    Step{make_plain_form_feed, {CMD_FF}},
    Step{write_command, CodeSet::all()},
    Step{copy_pending_data, CodeSet::all()},
    Step{copy_download_data, {CMD_DOWNLOAD_499}},
    Step{send_form_line_pitch, {CMD_FORM_PITCH_397, CMD_FORM_PITCH_421}},
    Step{send_conditions_of_492, {CMD_SECOND_VARIANT_492}},
});
static_assert(kSteps.size() <= 64, "a step is a bit of StepMask");

/// What each step does.
constexpr auto kStepFunctions = [] {
  std::array<StepFunction, kSteps.size()> functions{};
  for (std::size_t step = 0; step != kSteps.size(); ++step) {
    functions[step] = kSteps[step].take;
  }
  return functions;
}();

using StepMask = std::uint64_t;

/// For each code the steps that it takes part in, one bit each.
constexpr auto kStepMasks = [] {
  std::array<StepMask, kHighestCommandCode + 1> masks{};
  for (std::size_t step = 0; step != kSteps.size(); ++step) {
    kSteps[step].codes.for_each(
        [&masks, step](std::uint32_t code) { masks[code] |= StepMask{1} << step; });
  }
  return masks;
}();

/// The steps that every command takes part in.
constexpr StepMask kCommonSteps = kStepMasks[CMD_NONE];

/// The steps with an effect.
constexpr StepMask steps_with(Effect effect) {
  StepMask mask = 0;
  for (std::size_t step = 0; step != kSteps.size(); ++step) {
    mask |= kSteps[step].effect == effect ? StepMask{1} << step : 0;
  }
  return mask;
}

constexpr CommandEffects effects_of(StepMask steps) {
  constexpr StepMask kNothing = steps_with(Effect::none);
  constexpr StepMask kContentSteps = steps_with(Effect::content);
  constexpr StepMask kNewStateSteps = steps_with(Effect::new_state);
  constexpr StepMask kPageStartSteps = steps_with(Effect::page_start);
  constexpr StepMask kTold = kNothing | kContentSteps | kNewStateSteps | kPageStartSteps;
  return {(steps & ~kTold) == (kCommonSteps & ~kTold), (steps & kContentSteps) != 0,
          (steps & kNewStateSteps) != 0, (steps & kPageStartSteps) != 0};
}

StepMask steps_of(std::uint32_t code) {
  return code <= kHighestCommandCode ? kStepMasks[code] : kCommonSteps;
}

}  // namespace

const std::array<CommandEffects, kHighestCommandCode + 1> command_effects = [] {
  std::array<CommandEffects, kHighestCommandCode + 1> effects{};
  for (std::size_t code = 0; code != effects.size(); ++code) {
    effects[code] = effects_of(kStepMasks[code]);
  }
  effects[CMD_IGNORE].only_written = false;
  return effects;
}();

bool route_record(LoopState& loop) {
  for (StepMask mask = steps_of(loop.record.code); mask != 0; mask &= mask - 1) {
    const Next next = kStepFunctions[static_cast<std::size_t>(std::countr_zero(mask))](loop);
    if (next != Next::step) {
      return next == Next::record;
    }
  }
  return true;
}

}  // namespace rlx
