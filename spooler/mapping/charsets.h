#pragma once

#include <string>
#include <string_view>

namespace rlx::spooler {

/// True when iconv can turn an encoding of this name into UTF-8. A name with "/" is none: what
/// iconv puts behind a slash changes how it treats faults.
bool is_known_charset(const std::string& name);

/// True for the names of UTF-8, which need no conversion, and of ASCII.
bool is_utf_8(std::string_view name);

}  // namespace rlx::spooler
