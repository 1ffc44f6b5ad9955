#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "output/byte_writer.h"
#include "support/descriptors.h"
#include "support/the_filter.h"

namespace rlx::testing {

// Blocks of the printer language as the tests spell them, made without the code under test.

inline const std::string kUnit = "\x1bQ1;7200!C";
inline const std::string kJobStart = bytes("\x1bQ9;0000000018/a\x1b\x7f\x00\x00\x01\x06");
inline const std::string kFinalFormFeed = bytes("\x1bQ0;0000000013/a\x0c");
inline const std::string kJobEnd = bytes("\x1bQ0;0000000020/a\x1b\x63\x1b\x7f\x00\x00\x01\x00");

/// What the first page of a job without conditions begins with, by its parts.
inline const std::string kFirstParameters =
    "\x1bQ0;0000000043/`%%%=Pji,0101,UNIC\nEMU=RLX\nDCH=240\nMAK=UNIX\n";
inline const std::string kFirstDensity = "\x1bQ8;0000000019/a\x1bQ240!A";
/// What every page without conditions begins with.
inline const std::string kNextHeader = "\x1bQ9;0000000022/a\x1bQ1;7200!C";
inline const std::string kFirstHeader = kFirstParameters + kJobStart + kFirstDensity + kNextHeader;

/// A number in ten digits.
inline std::string ten_digits(std::size_t number) {
  const std::string digits = std::to_string(number);
  return std::string(10 - digits.size(), '0') + digits;
}

/// A block that ends its header in "/a".
inline std::string block(char kind, std::string_view payload) {
  return std::string("\x1bQ") + kind + ';' + ten_digits(payload.size() + 12) + "/a" +
         std::string(payload);
}

/// The job parameter block with these lines between those that it always has.
inline std::string parameter_block(std::string_view lines) {
  const std::string text = "%%%=Pji,0101,UNIC\nEMU=RLX\n" + std::string(lines) + "MAK=UNIX\n";
  return "\x1bQ0;" + ten_digits(text.size()) + "/`" + text;
}

/// A text for the functions that take bytes.
inline Bytes bytes_of(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
/// Its pointer and its length.
inline const std::uint8_t* raw(std::string_view text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}
inline std::int32_t count_of(std::string_view text) {
  return static_cast<std::int32_t>(text.size());
}

/// All that an action puts on standard output.
template <typename Action>
std::string output_of(Action action) {
  const CaptureDescriptor output(1);
  action();
  flush_output(the_filter().writer);
  return output.text();
}

}  // namespace rlx::testing
