#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rlx::spooler {

/// True when two words differ in nothing but the case of ASCII letters.
bool same_word(std::string_view left, std::string_view right);

/// Divides at a separator. Empty pieces are left out.
std::vector<std::string> divide(std::string_view text, char separator);

/// A text of nothing but decimal digits as a number. @return nothing for any other text, and for a
/// number above `most`.
std::optional<unsigned> whole_number(std::string_view text, unsigned most);

/// A text as one line that does nothing to a terminal: line ends become blanks; other control
/// characters, and bytes that are no UTF-8, become "?". Words of a job's options come from anybody.
std::string in_one_line(std::string text);

}  // namespace rlx::spooler
