#pragma once

#include <cstdint>

namespace rlx {

// Sizes and the results of write() are 64 bits wide; the filter keeps them in 32-bit fields. Every
// such narrowing goes through a guard, and a value that does not fit leaves a line in a log file
// that all filter processes of the machine share (support/error_log.h).

/// As a guard's substitute: return the low 32 bits of the value.
inline constexpr std::int32_t kKeepTruncated = 99;

// The guards. A value that fits comes back unchanged. For one that does not, the log gets
//
//     Sun Nov 15 10:50:29 2026:ERROR:<module>:<function>:<process id> lost bit (<value in hex>)
//
// (local time; cut to 255 bytes) and the result is `substitute`, or the low 32 bits of the value
// when the substitute is kKeepTruncated. Guards never fail: trouble with the log is ignored. errno
// is the same afterwards as before, so the result of a failed system call can be guarded first and
// its errno looked at then.

/// Fits: value <= 0xffffffff.
std::uint32_t narrow_ulong_to_uint(std::uint64_t value, const char* module, const char* function,
                                   std::int32_t substitute);

/// For sizes. Fits: value <= 0x7fffffff.
std::int32_t narrow_ulong_to_int(std::uint64_t value, const char* module, const char* function,
                                 std::int32_t substitute);

/// Fits: value <= 0xffffffff when taken as unsigned, so no negative value does.
std::uint32_t narrow_long_to_uint(std::int64_t value, const char* module, const char* function,
                                  std::int32_t substitute);

/// For byte counts that may be -1. Fits: -2147483648 <= value <= 2147483647.
std::int32_t narrow_long_to_int(std::int64_t value, const char* module, const char* function,
                                std::int32_t substitute);

}  // namespace rlx
