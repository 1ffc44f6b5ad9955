#include "fonts/g1_gaiji_file.h"

#include <cstdint>
#include <cstdlib>

#include "job/fixed_paths.h"
#include "job/status.h"
#include "support/text_file.h"

namespace rlx {

namespace {

/// Room for the bytes of the line that are looked at, 511, and a NUL.
constexpr std::size_t kLineRoom = 512;
using Line = std::array<char, kLineRoom>;

constexpr std::uint64_t kLowestCode = 0xF4A7;
constexpr std::uint64_t kHighestCode = 0xFEFE;
constexpr std::uint64_t kLowestLowByte = 0xA1;
constexpr std::uint64_t kHighestLowByte = 0xFE;

Status error(const Messages& messages, const char* text) {
  report(messages, text);
  return ST_FAILED;
}

enum class LineStatus { kRead, kNoFile, kFailed };

/// Reads the first line of the file. An empty file counts as no file.
LineStatus read_first_line(Line& line) {
  TextFile file(fixed_paths::kG1GaijiFile);
  if (!file.is_open()) {
    return file.is_missing() ? LineStatus::kNoFile : LineStatus::kFailed;
  }
  if (file.read_line(line)) {
    return LineStatus::kRead;
  }
  return file.failed() ? LineStatus::kFailed : LineStatus::kNoFile;
}

bool is_acceptable(std::uint64_t code) {
  const std::uint64_t low_byte = code & 0xFF;
  return code >= kLowestCode && code <= kHighestCode && low_byte >= kLowestLowByte &&
         low_byte <= kHighestLowByte;
}

/// Takes one number and the byte that must follow it. strtoull says which numbers are allowed, so
/// a minus sign is read too; the negated value, of 64 bits on every machine, is acceptable only if
/// it wraps around to a code.
bool take_code(const char*& text, char follower, std::uint64_t& code) {
  char* end = nullptr;
  code = std::strtoull(text, &end, 16);
  if (*end != follower) {
    return false;
  }
  text = end + 1;
  return is_acceptable(code);
}

std::array<std::uint8_t, 2> code_bytes(std::uint64_t code) {
  return {static_cast<std::uint8_t>(code >> 8), static_cast<std::uint8_t>(code & 0xFF)};
}

}  // namespace

Status g1gaiji_load(const Messages& messages, G1GaijiRange& range) {
  range.valid = 0;
  Line line;
  switch (read_first_line(line)) {
    case LineStatus::kNoFile:
      return ST_OK;
    case LineStatus::kFailed:
      return error(messages, "g1gaiji file error");
    case LineStatus::kRead:
      break;
  }
  const char* text = line.data();
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  if (!take_code(text, '-', first) || !take_code(text, '\n', last) || first > last) {
    return error(messages, "g1gaiji code error");
  }
  range.first = code_bytes(first);
  range.last = code_bytes(last);
  range.valid = 1;
  return ST_OK;
}

}  // namespace rlx
