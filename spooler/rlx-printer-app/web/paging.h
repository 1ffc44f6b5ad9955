#pragma once

#include <cstddef>
#include <string>

namespace rlx::printer_app {

/// A part of a long list, as a page shows it.
struct Portion {
  std::size_t first = 0;     ///< index of its first entry
  std::size_t end = 0;       ///< behind its last entry
  std::size_t number = 1;    ///< from 1
  std::size_t portions = 1;  ///< at least 1
};

/// @param wanted  which one, from 1; what is beyond the list is the nearest one.
Portion portion_of(std::size_t entries, std::size_t at_once, std::size_t wanted);

/// Links to the other portions, as HTML; empty when there are none.
/// @param link  a path that ends where the portion's number goes.
std::string portion_links(const Portion& portion, const std::string& link);

}  // namespace rlx::printer_app
