// The reader of the G1 range file, against a plain model of it.
//
// Input: the file.

#include <optional>

#include "fonts/g1_gaiji_file.h"
#include "fresh_filter.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {
namespace {

constexpr std::uint64_t kTooLarge = ~std::uint64_t{0};

int digit_value(char character) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const char lower =
      character >= 'A' && character <= 'F' ? static_cast<char>(character + 0x20) : character;
  const std::size_t value = kDigits.find(lower);
  return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

/// Takes a hexadecimal number off the front, as the C library reads one. @return false without.
bool take_number(std::string_view& text, std::uint64_t& value) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool negative = text.starts_with('-');
  text.remove_prefix(negative || text.starts_with('+') ? 1 : 0);
  const bool prefixed = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
                        digit_value(text[2]) >= 0;
  text.remove_prefix(prefixed ? 2 : 0);
  value = 0;
  bool too_large = false;
  std::size_t digits = 0;
  for (; digits < text.size() && digit_value(text[digits]) >= 0; ++digits) {
    too_large = too_large || value >> 60 != 0;
    value = value << 4 | static_cast<std::uint64_t>(digit_value(text[digits]));
  }
  text.remove_prefix(digits);
  value = too_large ? kTooLarge : negative ? std::uint64_t{0} - value : value;
  return digits > 0;
}

bool is_code(std::uint64_t code) {
  return code >= 0xF4A7 && code <= 0xFEFE && (code & 0xff) >= 0xA1 && (code & 0xff) <= 0xFE;
}

/// The range that a line declares; none when it is malformed.
std::optional<std::pair<std::uint64_t, std::uint64_t>> range_of(std::string_view line) {
  std::pair<std::uint64_t, std::uint64_t> range;
  if (!take_number(line, range.first) || !line.starts_with('-')) {
    return std::nullopt;
  }
  line.remove_prefix(1);
  if (!take_number(line, range.second) || !line.starts_with('\n')) {
    return std::nullopt;
  }
  const bool accepted =
      is_code(range.first) && is_code(range.second) && range.first <= range.second;
  return accepted ? std::optional(range) : std::nullopt;
}

/// What the reader sees of the file: its first line, 511 bytes at most, up to a NUL.
std::string_view first_line(std::string_view file) {
  file = file.substr(0, 511);
  file = file.substr(0, file.find('\n') == file.npos ? file.npos : file.find('\n') + 1);
  return file.substr(0, file.find('\0'));
}

void check_file(std::string_view bytes, const MemoryFile& file) {
  file.set(bytes);
  const auto expected = range_of(first_line(bytes));
  const Messages messages;
  G1GaijiRange range{2, {}, {}};
  const Status status = g1gaiji_load(the_filter().messages, range);
  const bool accepted = bytes.empty() || expected.has_value();
  require(status == (accepted ? 0 : 1), "status of the range file");
  require(messages.text() == (accepted ? "" : "filter: g1gaiji code error\n"), "its message");
  require(range.valid == (expected ? 1 : 0), "whether there is a range");
  if (expected) {
    require(range.first[0] * 256U + range.first[1] == expected->first, "first code");
    require(range.last[0] * 256U + range.last[1] == expected->second, "last code");
  }
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  static const MemoryFile file;
  static const Scratch scratch;
  static const bool linked = (scratch.link("sandbox/etc/lp/g1gaiji", file), true);
  require(linked, "no place for the range file");
  rlx::testing::the_filter().messages.program_name = "filter";
  const InsideScratch inside(scratch);
  check_file(text_of(data, size), file);
  return 0;
}
