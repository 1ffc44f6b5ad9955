#include "fonts/gaiji_cache.h"

#include <algorithm>

namespace rlx {

namespace {

/// "u~" is followed by "v!"; "v~" is the last code of a full cache and needs no follower.
void advance(DownloadCode& code) {
  if (code == DownloadCode{'u', '~'}) {
    code = {'v', '!'};
  } else {
    ++code[1];
  }
}

}  // namespace

const GaijiCacheEntry* gaiji_cache_find(const GaijiCache& cache, const GaijiCharacter& character) {
  const auto* const begin = cache.entries.data();
  const auto* const end = begin + cache.count;
  const auto* const found = std::find_if(
      begin, end, [&](const GaijiCacheEntry& entry) { return entry.character == character; });
  return found == end ? nullptr : found;
}

DownloadCode gaiji_cache_add(GaijiCache& cache, const GaijiCharacter& character) {
  GaijiCacheEntry& entry = cache.entries[cache.next];
  entry.character = character;
  if (cache.count < kGaijiCacheEntries) {
    entry.code = cache.next_code;
    advance(cache.next_code);
    ++cache.count;
  }
  cache.next = (cache.next + 1) % kGaijiCacheEntries;
  return entry.code;
}

void gaiji_cache_clear(GaijiCache& cache) {
  cache.count = 0;
  cache.next = 0;
  cache.next_code = kFirstDownloadCode;
}

}  // namespace rlx
