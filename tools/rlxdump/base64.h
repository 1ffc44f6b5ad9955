#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "rlx_reader/byte_input.h"

namespace rlx::dump {

/// Bytes in base64, with "=" at the end where they do not fill it.
std::string base64(reader::Bytes bytes);

/// The bytes that a text in base64 stands for; nothing when it is malformed.
std::optional<std::string> from_base64(std::string_view text);

}  // namespace rlx::dump
