#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "rlx_reader/byte_input.h"

namespace rlx::reader {

/// A number in the numeric form of the FS sequences: each digit d is the byte 20 + d, the last one
/// 70 + d. @return nothing when the bytes are not such a number.
std::optional<std::uint64_t> numeric_form(Bytes bytes);

/// A number in decimal digits, at most 18. @return nothing when the bytes are not such a number.
std::optional<std::uint64_t> decimal_number(Bytes bytes);

/// Bytes of counted data that follow a sequence: 0 to 9999999. A malformed count is 0.
/// @param sequence  whole, up to its final byte.
std::uint64_t counted_data(Bytes sequence);

/// The decimal fields of an ESC "Q" sequence, between ";". An empty or malformed one is nothing.
std::vector<std::optional<std::uint64_t>> q_fields(Bytes sequence);

/// A parameter of a sequence, as people read it.
struct Parameter {
  std::string name;   ///< such as "pitch"
  std::string value;  ///< such as "1200/7200 in = 12/72 in, 6 lines per inch"
  /// The number in the sequence, such as 1200; nothing when there is none, or the value is a word.
  std::optional<std::uint64_t> number = std::nullopt;
};

/// What a sequence is, as people read it.
struct SequenceInfo {
  std::string spelled;  ///< such as ESC "Q1 y"
  std::string name;     ///< such as "character size"; "passed on" when its meaning is not known
  std::vector<Parameter> parameters;
};

/// Names a sequence and decodes its parameters. For any bytes that begin with ESC or FS.
SequenceInfo describe_sequence(Bytes sequence);

/// Bytes as they are written in docs/rlx.md: ESC, FS, LF ... by name, text in quotes, others as two
/// hexadecimal digits.
std::string spell(Bytes bytes);

}  // namespace rlx::reader
