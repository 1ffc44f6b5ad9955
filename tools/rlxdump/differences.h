#pragma once

#include <string>
#include <vector>

namespace rlx::dump {

/// A step from one list to another.
struct Step {
  enum class Kind : unsigned char { same, removed, added };
  Kind kind = Kind::same;
  std::size_t from = 0;  ///< position in the first list, unless added
  std::size_t to = 0;    ///< position in the second list, unless removed
};

/// The shortest way from one list to another. Lists that have very little in common are taken as
/// having nothing in common between their common front and end.
std::vector<Step> shortest_way(const std::vector<std::string>& from,
                               const std::vector<std::string>& to);

}  // namespace rlx::dump
