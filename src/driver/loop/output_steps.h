#pragma once

#include "driver/loop/loop_step.h"

namespace rlx {

// Steps of the main loop that make and write output.

/// Text: makes the text output from the command.
Next convert_text(LoopState& loop);

/// User-defined character: makes the text output from it, a glyph download included.
Next convert_gaiji(LoopState& loop);

/// Commands 334, 335 and 487: a held command is dropped.
Next forget_held_command(LoopState& loop);

/// Writes a held command before the output of the command behind it.
Next write_held_command(LoopState& loop);

/// Text and user-defined characters: writes the text output; the command's own bytes are
/// not written.
Next write_text(LoopState& loop);

/// Command 488, on printers of class f1: keeps it back until the next command.
Next hold_command(LoopState& loop);

/// Command 481: selects the single-byte set first.
Next leave_double_byte_set(LoopState& loop);

/// Writes the command's own bytes and then, unframed, keeps them if its code is one that is
/// carried.
Next write_command(LoopState& loop);

/// Copies the data of a command that did not fit in its record, each byte a piece of its own.
Next copy_pending_data(LoopState& loop);

/// Command 499: copies the download data behind it: a byte N and N x 64 + 4 bytes, repeated until N
/// is 0. Each byte is a piece of its own.
Next copy_download_data(LoopState& loop);

}  // namespace rlx
