#include "driver/loop/driver_output.h"

#include "job/control_bytes.h"

namespace rlx {

void write_piece(LoopState& loop, Bytes piece) {
  if (!piece.empty() && piece.back() == kFormFeed) {
    gaiji_reset_size(loop.gaiji);
  }
  out_piece(loop.output, piece);
}

void write_form_feed(LoopState& loop) {
  write_piece(loop, Bytes(&kFormFeed, 1));
}

}  // namespace rlx
