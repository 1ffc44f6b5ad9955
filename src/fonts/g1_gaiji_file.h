#pragma once

#include <array>
#include <cstdint>

#include "job/status.h"
#include "support/messages.h"

namespace rlx {

/// The range of user-defined characters of the G1 code set that the system administrator declares.
///
/// It stands in the first line of a file (fixed_paths::kG1GaijiFile): two hexadecimal numbers
/// joined by '-' and ended by LF, for example F5A1-FEFE. Blanks, a sign and "0x" are allowed before
/// each number and nothing else anywhere. Further lines are ignored. A code is 0xF4A7 to 0xFEFE
/// with a low byte of 0xA1 to 0xFE; the first is not above the last.
struct G1GaijiRange {
  std::int32_t valid = 0;               ///< 1 when a range was read
  std::array<std::uint8_t, 2> first{};  ///< first code of the range, high byte first
  std::array<std::uint8_t, 2> last{};   ///< last code of the range, high byte first
};

/// Reads the range. No file, or an empty one, declares no range.
/// @return ST_OK when the range was read or none is declared; ST_FAILED after an error, which has
/// been reported ("g1gaiji file error" or "g1gaiji code error"). `range.valid` is 1 only after a
/// range was read.
Status g1gaiji_load(const Messages& messages, G1GaijiRange& range);

}  // namespace rlx
