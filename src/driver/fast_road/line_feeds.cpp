#include "driver/fast_road/line_feeds.h"

#include <algorithm>

#include "driver/loop/form_steps.h"
#include "input/byte_block.h"
#include "job/control_bytes.h"

namespace rlx {

LineFeeds::LineFeeds(LoopState& loop)
    : loop_(loop), plain_(!form_moves_paper(loop) && !lines_are_counted(loop)) {
  insertion_.length = 1;
  insertion_.skip = 1;
}

void LineFeeds::set_pitch(const PitchCommand& pitch) {
  static_assert(sizeof(pitch.bytes) <= sizeof(insertion_.bytes));
  insertion_.bytes[0] = kLineFeed;
  std::copy_n(pitch.bytes.begin(), pitch.bytes.size() - 1, insertion_.bytes.begin() + 1);
  insertion_.length = 1 + static_cast<std::size_t>(pitch.length);
}

/// Prepares the lines of the form that have the pitch of the next one.
void LineFeeds::find_form_lines() {
  // Looking far ahead would cost a page of few lines more than it gains.
  constexpr std::ptrdiff_t kMostLines = 16;
  const FcbTable& form = *loop_.current_store;
  const auto next = form.lpi.begin() + form.cur_line + 1;
  const auto end = next + std::min(kMostLines, form.lpi.end() - next);
  const auto other = std::find_if(next, end, [next](auto lpi) { return lpi == 0 || lpi != *next; });
  prepared_ = static_cast<std::size_t>(other - next);
  set_pitch(line_pitch_command(line_pitch_72nds(*next)));
}

/// Prepares all lines but the last of the page.
void LineFeeds::find_counted_lines() {
  const std::int64_t lines = loop_.command_line.lines_per_page;
  const std::int64_t left = lines - 1 - loop_.line_counter;
  // A negative -L is never reached.
  prepared_ = lines < 0 ? kBlockBytes : static_cast<std::size_t>(left);
  set_pitch(counted_line_pitch(loop_));
}

void LineFeeds::find_lines() {
  if (form_moves_paper(loop_)) {
    find_form_lines();
  } else {
    find_counted_lines();
  }
}

void LineFeeds::take(std::size_t count) {
  prepared_ -= count;
  if (form_moves_paper(loop_)) {
    loop_.current_store->cur_line += static_cast<std::int32_t>(count);
  } else {
    loop_.line_counter += static_cast<std::int64_t>(count);
  }
}

}  // namespace rlx
