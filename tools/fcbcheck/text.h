#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace rlx::fcbcheck {

/// A length of 1/7200 inch in inches: "11", "3.5", "0.17". Two decimals, but three for eighths of
/// an inch, "0.125", and four where two would read as whole half inches that it is not, "11.0001".
std::string inches(std::int32_t units);

/// "1 line", "72 lines".
std::string counted(std::int64_t count, const std::string& noun);

/// A word of a form as it can be shown: bytes other than '!' to '~' as \r or \xHH, and what is
/// behind the 40th byte as "...".
std::string shown_word(std::string_view word);

/// A file's name as it can be shown in a line: control bytes as ?.
std::string shown_name(std::string_view name);

/// A text as it can stand in XML: UTF-8 without control characters, with entities. What is no UTF-8
/// becomes ?, a text of more than `max_characters` is cut and ends in an ellipsis.
std::string xml_text(std::string_view text, std::size_t max_characters);

}  // namespace rlx::fcbcheck
