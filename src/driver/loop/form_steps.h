#pragma once

#include "driver/loop/loop_step.h"

namespace rlx {

// Steps of the main loop that move the paper: forms, and page-length emulation without one.

/// Command 482: puts the form in force that it names; without a name the form of -n, or none.
Next take_named_form(LoopState& loop);

/// FF, commands 482 and 483: moves to the top of the form in force; the movements are held.
Next begin_form(LoopState& loop);

/// Writes movements that are held, before what they move to.
Next release_movement(LoopState& loop);

/// LF: gives it the pitch of the form's next line, or moves to the next form. The last LF of the
/// input is left as it is.
Next advance_form_line(LoopState& loop);

/// LF, with -L and without a form: counts lines; gives the LF the pitch of -l and, on the page's
/// last line, a FF.
Next count_line(LoopState& loop);

/// FF: makes the record one plain FF and begins to count lines again.
Next make_plain_form_feed(LoopState& loop);

/// Commands 397 and 421: sends the pitch of the form's current line.
Next send_form_line_pitch(LoopState& loop);

/// True when LFs are counted: with -L and without a form (framed jobs have no lines).
inline bool lines_are_counted(const LoopState& loop) {
  return loop.command_line.lines_per_page != 0 && !loop.fcb_active &&
         loop.command_line.framed_output == 0;
}

/// What a LF that is counted gets behind it: the pitch of -l; nothing without it, or with a pitch
/// that is not 3, 4 or 6 lines per inch.
PitchCommand counted_line_pitch(const LoopState& loop);

}  // namespace rlx
