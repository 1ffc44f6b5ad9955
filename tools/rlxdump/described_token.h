#pragma once

#include <string>

#include "rlx_reader/page_data.h"

namespace rlx::dump {

/// A token, as the dump and the differences show it.
struct DescribedToken {
  std::string name;     ///< such as "line pitch"
  std::string spelled;  ///< its bytes, such as FS "%!\" p"; long ones not all
  std::string meaning;  ///< the parameters; empty without any
};

/// Names a token and says what it holds.
DescribedToken describe_token(const reader::Token& token);

/// "text", "double-byte text", "control" and so on.
std::string_view name_of(reader::TokenKind kind);

/// "LF" and so on, or two hexadecimal digits. @param bytes  one byte.
std::string name_of_control(reader::Bytes byte);

}  // namespace rlx::dump
