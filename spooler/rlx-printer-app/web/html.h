#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace rlx::printer_app {

/// A text for HTML, between tags or in a quoted attribute. Bytes that are no UTF-8, and control
/// characters other than TAB and line ends, become U+FFFD.
std::string escaped(std::string_view text);

/// True for UTF-8 without control characters other than TAB and line ends.
bool is_plain_text(std::string_view text);

/// A value for a query, such as "a%20b".
std::string url_encoded(std::string_view text);

/// Puts values in place of {0}, {1} and so on. What a value holds is not looked at again.
std::string filled(std::string_view pattern, std::initializer_list<std::string> values);

/// Line ends as forms and line-printer text have them: CR LF becomes LF.
std::string with_line_feeds(std::string_view text);

}  // namespace rlx::printer_app
