#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace rlx::proof {

/// Divides a text into words at blanks, tabs and line ends, as a shell does: '...' keeps all as it
/// is, in "..." a backslash takes the meaning from " \ $ and the grave accent, elsewhere from any
/// character. Nothing is replaced.
/// @return nothing when a quote is not closed, or a backslash stands last.
std::optional<std::vector<std::string>> split_words(std::string_view text);

}  // namespace rlx::proof
