#pragma once

#include <cstdint>
#include <span>

namespace rlx {

/// Bytes that somebody else owns, to be read.
using Bytes = std::span<const std::uint8_t>;

}  // namespace rlx
