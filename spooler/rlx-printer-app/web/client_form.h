#pragma once

#include <pappl/pappl.h>

#include <string>

namespace rlx::printer_app {

/// Reads the body of a POST, at most `most` bytes of it.
/// @return false when it is longer, or was cut off. Of one that is far longer the rest is not read.
bool read_body(http_t* http, std::size_t most, std::string& body);

}  // namespace rlx::printer_app
