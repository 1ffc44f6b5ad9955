#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "job/bytes.h"

namespace rlx {

/// Assembles a short sequence of bytes in place. Whoever uses one chooses a capacity that holds the
/// longest sequence possible; what would not fit all the same is left out, never written past the
/// end.
template <std::size_t Capacity>
class ByteBuilder {
 public:
  void append(std::string_view text) {
    if (text.size() <= Capacity - length_) {
      std::memcpy(bytes_.data() + length_, text.data(), text.size());
      length_ += text.size();
    }
  }

  void append(char character) { append(std::string_view(&character, 1)); }

  /// The number in decimal, with leading zeros up to `width` characters (the sign counts). `width`
  /// is below 24.
  void append_decimal(std::int32_t value, int width = 1) {
    std::array<char, 24> digits{};
    const int count = std::snprintf(digits.data(), digits.size(), "%0*d", width, value);
    append(std::string_view(digits.data(), static_cast<std::size_t>(count)));
  }

  bool empty() const { return length_ == 0; }
  std::size_t size() const { return length_; }
  /// What is assembled.
  Bytes bytes() const { return Bytes(bytes_).first(length_); }
  /// What is assembled, as text.
  std::string_view text() const { return {reinterpret_cast<const char*>(bytes_.data()), length_}; }

 private:
  std::array<std::uint8_t, Capacity> bytes_;
  std::size_t length_ = 0;
};

}  // namespace rlx
