#include "support/narrowing.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <limits>
#include <string_view>

#include "support/error_log.h"

namespace rlx {

namespace {

constexpr std::size_t kLogLineBytes = 256;
constexpr std::size_t kTimeBytes = 32;

/// The local time without the newline that ctime ends it with.
std::array<char, kTimeBytes> time_text() {
  std::array<char, kTimeBytes> text{};
  const std::time_t now = std::time(nullptr);
  if (const char* const line = std::ctime(&now); line != nullptr) {
    const std::string_view stamp(line);
    stamp.substr(0, stamp.size() - 1).copy(text.data(), text.size() - 1);
  }
  return text;
}

void log_lost_bits(std::uint64_t value, const char* module, const char* function) {
  const std::array<char, kTimeBytes> time = time_text();
  std::array<char, kLogLineBytes> line{};
  static_cast<void>(std::snprintf(line.data(), line.size(),
                                  "%s:ERROR:%s:%s:%d lost bit (%" PRIx64 ")", time.data(), module,
                                  function, static_cast<int>(getpid()), value));
  static_cast<void>(log_append(line.data()));
}

/// What a value that does not fit becomes.
std::uint32_t replace_lost(std::uint64_t value, const char* module, const char* function,
                           std::int32_t substitute) {
  const int saved_errno = errno;
  log_lost_bits(value, module, function);
  errno = saved_errno;
  return substitute == kKeepTruncated ? static_cast<std::uint32_t>(value)
                                      : static_cast<std::uint32_t>(substitute);
}

}  // namespace

std::uint32_t narrow_ulong_to_uint(std::uint64_t value, const char* module, const char* function,
                                   std::int32_t substitute) {
  return value <= std::numeric_limits<std::uint32_t>::max()
             ? static_cast<std::uint32_t>(value)
             : replace_lost(value, module, function, substitute);
}

std::int32_t narrow_ulong_to_int(std::uint64_t value, const char* module, const char* function,
                                 std::int32_t substitute) {
  return static_cast<std::int32_t>(value <= std::numeric_limits<std::int32_t>::max()
                                       ? static_cast<std::uint32_t>(value)
                                       : replace_lost(value, module, function, substitute));
}

std::uint32_t narrow_long_to_uint(std::int64_t value, const char* module, const char* function,
                                  std::int32_t substitute) {
  return narrow_ulong_to_uint(static_cast<std::uint64_t>(value), module, function, substitute);
}

std::int32_t narrow_long_to_int(std::int64_t value, const char* module, const char* function,
                                std::int32_t substitute) {
  if (value >= std::numeric_limits<std::int32_t>::min() &&
      value <= std::numeric_limits<std::int32_t>::max()) {
    return static_cast<std::int32_t>(value);
  }
  return static_cast<std::int32_t>(
      replace_lost(static_cast<std::uint64_t>(value), module, function, substitute));
}

}  // namespace rlx
