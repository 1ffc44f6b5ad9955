#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace rlx {

/// Which user-defined character: all four values make the difference.
struct GaijiCharacter {
  std::int32_t code_set;  ///< kCodeSetG1 or kCodeSetG3
  std::int32_t typeface;  ///< 0 mincho, 1 gothic
  std::uint8_t c1;
  std::uint8_t c2;

  friend bool operator==(const GaijiCharacter&, const GaijiCharacter&) = default;
};

/// The two-byte code under which a pattern is loaded into the printer and then printed.
using DownloadCode = std::array<std::uint8_t, 2>;
inline constexpr DownloadCode kFirstDownloadCode{'u', '!'};

/// Characters of one size that the printer holds at a time: those of two rows of codes, "u!" to
/// "u~" and "v!" to "v~".
inline constexpr std::size_t kGaijiCacheEntries = 188;

struct GaijiCacheEntry {
  GaijiCharacter character;
  DownloadCode code;
};

/// The characters of one size that the printer holds. A ring: when all entries are in use, the
/// oldest one's code is given to the next new character.
struct GaijiCache {
  /// Only the first `count` mean anything.
  std::array<GaijiCacheEntry, kGaijiCacheEntries> entries;
  std::size_t count = 0;                        ///< entries in use
  std::size_t next = 0;                         ///< where the next new character goes
  DownloadCode next_code = kFirstDownloadCode;  ///< the next code that nobody had yet
};

/// The entry of a character; null when the printer does not hold it.
const GaijiCacheEntry* gaiji_cache_find(const GaijiCache& cache, const GaijiCharacter& character);

/// Enters a new character.
/// @return the code under which its pattern has to be downloaded
DownloadCode gaiji_cache_add(GaijiCache& cache, const GaijiCharacter& character);

/// Forgets all characters; the codes start again.
void gaiji_cache_clear(GaijiCache& cache);

}  // namespace rlx
