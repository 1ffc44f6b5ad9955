#pragma once

#include "driver/loop/loop_step.h"

namespace rlx {

// Steps of the main loop that keep the print conditions: what changes them, and when they are sent.

/// Commands 482 and 483: ends the page that has content, parses the command, sends conditions
/// that were still pending, chooses the fonts again; the new conditions are pending then.
Next take_condition_command(LoopState& loop);

/// Command 479: decides from the parameter whether it resets the line unit, in emulation modes
/// kMode6 and kMode7; always in kStandardMode; other modes keep the last decision.
Next judge_spacing_reset(LoopState& loop);

/// Commands 478 (not in emulation modes kFineMode, kFormLengthMode and kExtendedMode) and 479 (when
/// it resets): back to the default line unit.
Next reset_line_unit(LoopState& loop);

/// Command 500: its form data becomes part of the print conditions. Its bytes never reach the
/// output.
Next take_form_parameter(LoopState& loop);

/// Command 489, on printers of class f1: switches between the 240-dpi and the 400-dpi fonts.
Next take_resolution_switch(LoopState& loop);

/// Sends pending print conditions before what they govern.
Next send_due_conditions(LoopState& loop);

/// Commands 482 and 483: drops the command's bytes, which never reach the output.
Next drop_record_bytes(LoopState& loop);

/// Command 492, on printers with capability F: takes its on/off state.
Next take_command_492(LoopState& loop);

/// Command 492, when it switched off: sends the conditions that go with it.
Next send_conditions_of_492(LoopState& loop);

}  // namespace rlx
