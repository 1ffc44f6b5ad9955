#include "driver/driver_output.h"

#include "fonts/gaiji.h"
#include "job/control_bytes.h"
#include "output/out_piece.h"

namespace rlx {

int write_piece(std::int32_t count, const std::uint8_t* bytes) {
  if (count > 0 && bytes[count - 1] == kFormFeed) {
    gaiji_reset_size();
  }
  return out_piece(count, bytes);
}

int write_form_feed() {
  return write_piece(1, &kFormFeed);
}

}  // namespace rlx
