#include "driver/loop/driver_output.h"

#include "job/control_bytes.h"

namespace rlx {

void write_piece(LoopState& loop, std::int32_t count, const std::uint8_t* bytes) {
  if (count > 0 && bytes[count - 1] == kFormFeed) {
    gaiji_reset_size(loop.gaiji);
  }
  out_piece(loop.output, count, bytes);
}

void write_form_feed(LoopState& loop) {
  write_piece(loop, 1, &kFormFeed);
}

}  // namespace rlx
