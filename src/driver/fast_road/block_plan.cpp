#include "driver/fast_road/block_plan.h"

namespace rlx {

std::size_t BlockPlan::output_length(std::size_t count, const LineFeeds& line_feeds) const {
  const ByteMask front = bits_below(count);
  const ByteMask switches = border & front;
  return count + detail::kSwitchBytes * count_bits(switches) -
         kSizeSequenceBytes * count_bits(switches & text.invalid) -
         count_bits(text.prefix & front) +
         (line_feeds.insertion().length - 1) * count_bits(line_feed & front);
}

std::size_t BlockPlan::fitting(std::size_t room, const LineFeeds& line_feeds) const {
  std::size_t count = length();
  while (output_length(count, line_feeds) > room) {
    count = last_bit(~text.inside & bits_below(count));
  }
  return count;
}

}  // namespace rlx
