#pragma once

#include <cstdint>
#include <string_view>

namespace rlx {

// Control bytes that the stream and the printer language share.

inline constexpr std::uint8_t kLineFeed = 0x0a;
inline constexpr std::uint8_t kFormFeed = 0x0c;
inline constexpr std::uint8_t kCarriageReturn = 0x0d;
inline constexpr std::uint8_t kEsc = 0x1b;
inline constexpr std::uint8_t kFs = 0x1c;
inline constexpr std::uint8_t kDel = 0x7f;

/// ESC "Q", which most sequences begin with, as text.
inline constexpr std::string_view kEscQText = "\x1bQ";
static_assert(kEscQText.front() == kEsc);

}  // namespace rlx
