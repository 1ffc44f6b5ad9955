#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace rlx::proof {

/// Pages from a first to a last one, both within it.
struct PageRange {
  std::uint64_t first = 1;
  std::uint64_t last = std::numeric_limits<std::uint64_t>::max();

  bool contains(std::uint64_t page) const { return page >= first && page <= last; }
};

/// Reads "3-7", "5", "3-" or "-4".
/// @return nothing for other texts, for page 0, and when the last page stands before the first.
std::optional<PageRange> parse_page_range(std::string_view text);

}  // namespace rlx::proof
