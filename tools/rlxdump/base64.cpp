#include "rlxdump/base64.h"

#include <algorithm>
#include <cstdint>

namespace rlx::dump {

namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string base64(reader::Bytes bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      group = group << 8U | (i < count ? bytes[at + i] : 0U);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      text += i <= count ? kDigits[group >> (18 - 6 * i) & 0x3fU] : '=';
    }
  }
  return text;
}

std::optional<std::string> from_base64(std::string_view text) {
  const std::size_t padding = text.size() - std::min(text.find_last_not_of('=') + 1, text.size());
  if (text.size() % 4 != 0 || padding > 2) {
    return std::nullopt;
  }
  std::string bytes;
  std::uint32_t group = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool padded = at >= text.size() - padding;
    const std::size_t digit = padded ? 0 : kDigits.find(text[at]);
    if (digit == std::string_view::npos) {
      return std::nullopt;
    }
    group = group << 6U | static_cast<std::uint32_t>(digit);
    if (at % 4 == 3) {
      bytes += {static_cast<char>(group >> 16U), static_cast<char>(group >> 8U),
                static_cast<char>(group)};
      group = 0;
    }
  }
  bytes.resize(bytes.size() - padding);
  return bytes;
}

}  // namespace rlx::dump
