#pragma once

#include <cstdint>

namespace rlx {

// Control bytes that the stream and the printer language share.

inline constexpr std::uint8_t kLineFeed = 0x0a;
inline constexpr std::uint8_t kFormFeed = 0x0c;
inline constexpr std::uint8_t kCarriageReturn = 0x0d;
inline constexpr std::uint8_t kEsc = 0x1b;
inline constexpr std::uint8_t kFs = 0x1c;
inline constexpr std::uint8_t kDel = 0x7f;

}  // namespace rlx
