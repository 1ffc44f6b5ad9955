#pragma once

#include <string>

#include "rlx_reader/byte_input.h"

namespace rlx::dump {

/// Text between quotes. Characters that are UTF-8 and can be seen stand as they are; a quote and a
/// backslash have a backslash in front of them; all other bytes are \xHH. So nothing of a job gets
/// at the terminal.
std::string quoted(reader::Bytes text);

/// The same without the quotes, and without a backslash in front of quotes and backslashes.
std::string shown(reader::Bytes text);

/// Bytes as two hexadecimal digits each, with blanks between them.
std::string hexadecimal(reader::Bytes bytes);

}  // namespace rlx::dump
