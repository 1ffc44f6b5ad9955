#include "support/hex_dump.h"

#include <cstddef>

namespace rlx {

namespace {

constexpr std::size_t kRowBytes = 16;
constexpr std::size_t kGroupBytes = 4;

/// What follows the byte at an offset.
const char* gap_after(std::size_t offset) {
  if (offset % kRowBytes == kRowBytes - 1) {
    return "\n";
  }
  return offset % kGroupBytes == kGroupBytes - 1 ? " " : "";
}

}  // namespace

void hex_dump(std::FILE* stream, Bytes bytes) {
  std::FILE* const out = stream != nullptr ? stream : stdout;
  for (std::size_t offset = 0; offset < bytes.size(); ++offset) {
    if (offset % kRowBytes == 0) {
      std::fprintf(out, "%.8x  ", static_cast<unsigned>(offset));
    }
    std::fprintf(out, "%.2x%s", static_cast<unsigned>(bytes[offset]), gap_after(offset));
  }
  std::fputs("\n", out);
}

}  // namespace rlx
