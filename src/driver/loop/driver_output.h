#pragma once

#include "driver/loop/loop_state.h"
#include "job/bytes.h"

namespace rlx {

/// Writes one piece of output for the main loop: onto the page, or into a frame with option -d. A
/// piece that ends the page also makes the glyph download forget the size that it selected.
void write_piece(LoopState& loop, Bytes piece);

/// Writes a form feed of its own.
void write_form_feed(LoopState& loop);

}  // namespace rlx
