#include "support/hex_dump.h"

namespace rlx {

namespace {

constexpr std::int32_t kRowBytes = 16;
constexpr std::int32_t kGroupBytes = 4;

/// What follows the byte at an offset.
const char* gap_after(std::int32_t offset) {
  if (offset % kRowBytes == kRowBytes - 1) {
    return "\n";
  }
  return offset % kGroupBytes == kGroupBytes - 1 ? " " : "";
}

}  // namespace

void hex_dump(std::FILE* stream, std::int32_t length, const std::uint8_t* bytes) {
  std::FILE* const out = stream != nullptr ? stream : stdout;
  for (std::int32_t offset = 0; offset < length; ++offset) {
    if (offset % kRowBytes == 0) {
      std::fprintf(out, "%.8x  ", static_cast<unsigned>(offset));
    }
    std::fprintf(out, "%.2x%s", static_cast<unsigned>(bytes[offset]), gap_after(offset));
  }
  std::fputs("\n", out);
}

}  // namespace rlx
