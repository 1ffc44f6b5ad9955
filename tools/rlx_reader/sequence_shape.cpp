#include "rlx_reader/sequence_shape.h"

#include <algorithm>

namespace rlx::reader {

namespace {

constexpr std::uint8_t kEsc = 0x1b;
constexpr std::uint8_t kDel = 0x7f;

/// Up to the first byte from `low` to `high` behind the two front bytes.
std::size_t length_to(Bytes bytes, std::uint8_t low, std::uint8_t high) {
  const Bytes front = bytes.first(std::min(bytes.size(), kMostSequence));
  const auto parameters = front.subspan(2);
  const auto final = std::find_if(parameters.begin(), parameters.end(),
                                  [=](std::uint8_t byte) { return byte >= low && byte <= high; });
  return final == parameters.end() ? 0 : static_cast<std::size_t>(final - parameters.begin()) + 3;
}

/// ESC "Q" ...: a DEL is final when "!" stands before it and no other DEL came first.
std::size_t q_length(Bytes bytes) {
  const std::size_t length = length_to(bytes, 0x40, kDel);
  const bool parameter = length > 2 && bytes[length - 1] == kDel && bytes[length - 2] != '!';
  return parameter ? length_to(bytes, 0x40, 0x7e) : length;
}

/// A sequence whose length is known from its front.
std::size_t fixed_length(Bytes bytes, std::size_t length) {
  return bytes.size() < length ? 0 : length;
}

std::size_t escape_length(Bytes bytes) {
  switch (bytes[1]) {
    case '$':
    case '(':
      return fixed_length(bytes, 3);
    case kDel:
      return fixed_length(bytes, 6);
    case '[':
      return length_to(bytes, 0x40, 0x7e);
    case 'Q':
      return q_length(bytes);
    default:
      return 2;
  }
}

std::size_t field_length(Bytes bytes) {
  switch (bytes[1]) {
    case '"':
    case '$':
    case '%':
    case '&':
    case '(':
    case '*':
    case '0':
      return length_to(bytes, 'p', 'y');
    default:
      return 2;
  }
}

}  // namespace

std::size_t sequence_length(Bytes bytes) {
  if (bytes.size() < 2) {
    return 0;
  }
  return bytes[0] == kEsc ? escape_length(bytes) : field_length(bytes);
}

std::size_t pass_through_length(Bytes bytes) {
  if (bytes.size() < 2 || bytes[0] != kEsc || bytes[1] != 'Q') {
    return 0;
  }
  const std::size_t length = q_length(bytes);
  return length > 3 && bytes[length - 1] == '`' && bytes[length - 2] == '/' ? length : 0;
}

}  // namespace rlx::reader
