#include "driver/fast_road/text_run.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "driver/fast_road/text_run_state.h"
#include "driver/loop/routing.h"
#include "input/ready_sequence.h"
#include "job/control_bytes.h"
#include "output/text_out.h"

namespace rlx {

namespace {

/// A block of fewer bytes shows that the text is not as it should be. What stands there is then
/// described character by character, for a stretch that grows while that goes on: to find it out
/// anew costs a block each time.
constexpr std::size_t kShortBlock = 48;
constexpr std::size_t kShortStretch = 16;

/// True when the next byte of text needs nothing but to be written.
bool road_is_free(const LoopState& loop) {
  return loop.fast_road && !conditions_due(loop) && loop.held_command.length == 0 &&
         loop.end_marker == ST_OK &&
         !(form_moves_paper(loop) && loop.pending_vertical_bytes.length > 0);
}

bool bit_at(ByteMask mask, std::size_t at) {
  return (mask >> at & 1) != 0;
}

/// Bytes that may be more than a piece of one byte while the single-byte set is selected.
ByteMask no_single_bytes(const ByteBlock& block) {
  return block.where([](auto bytes) {
    return bytes.between(kFirstLead, kLastLead) | bytes.equal(kSingleShift2) |
           bytes.between(kEsc, kFs) | bytes.equal(kFormFeed);
  });
}

/// The switch at the last of some borders.
const SetSwitch& last_switch(const BlockPlan& plan, ByteMask borders) {
  return bit_at(plan.set, last_bit(borders)) ? kToDoubleByte : kToSingleByte;
}

}  // namespace

TextRun::TextRun(LoopState& loop, const std::uint8_t* next, const std::uint8_t* end)
    : loop_(loop),
      sink_(piece_sink(loop.output)),
      next_(next),
      end_(end),
      line_feeds_(loop),
      kept_(loop.carried),
      next_any_text_bytes_(kShortStretch) {}

/// The next bytes of the input, where a block and as much behind it can be read.
inline const std::uint8_t* TextRun::readable_block() {
  const auto left = static_cast<std::size_t>(end_ - next_);
  ready_ = std::min(left, kBlockBytes);
  if (left >= last_bytes_.size()) [[likely]] {
    return next_;
  }
  // Behind them come NULs, which neither complete a character nor end a sequence.
  last_bytes_ = {};
  std::memcpy(last_bytes_.data(), next_, left);
  return last_bytes_.data();
}

[[gnu::always_inline]] inline void TextRun::describe(const std::uint8_t* bytes,
                                                     const ByteBlock& block, TextMasks& text) {
  if (is_single_ && ready_ == kBlockBytes && no_single_bytes(block) == 0) {
    // The set stays the same, and all is noted: which bytes are neutral or invalid does not matter.
    text.length = kBlockBytes;
    return;
  }
  if (any_text_bytes_ == 0) [[likely]] {
    masks_of_text(block, text);
    if (text.length >= kShortBlock) [[likely]] {
      next_any_text_bytes_ = kShortStretch;
    } else if (bytes[text.length] != kFormFeed) {
      any_text_bytes_ = next_any_text_bytes_;
      next_any_text_bytes_ = std::min(2 * next_any_text_bytes_, kBlockBytes);
    }
  }
  if (text.length == 0) [[unlikely]] {
    masks_of_any_text(bytes, ready_, any_text_bytes_, text);
    any_text_bytes_ = 0;
    if (text.length == 0) {
      masks_of_text(block, text);
    }
  }
  text.length = std::min(text.length, ready_);
  if (text.prefix != 0 && text.length != 0 && bit_at(text.prefix, text.length - 1)) [[unlikely]] {
    // The prefix is the last byte of the input.
    --text.length;
  }
}

/// Finds the sequences that are only written, and takes them out of the text that the masks
/// describe; the block ends before any other.
[[gnu::noinline]] void TextRun::find_sequences(const std::uint8_t* bytes, TextMasks& text) {
  const SequenceEnds ends{ByteBlock(bytes)};
  ByteMask all = 0;
  ByteMask inside = 0;
  std::size_t count = 0;
  bool new_state = false;
  for (ByteMask left = text.introducer & bits_below(text.length); left != 0;) {
    const std::size_t at = first_bit(left);
    const ByteMask first = left & -left;
    // Where the next one begins is known before it is known how long this one is.
    left ^= first;
    if ((inside & first) != 0) [[unlikely]] {
      continue;
    }
    const ReadySequence found = ready_sequence(bytes, ends, at, text.length);
    const CommandEffects effects = command_effects[found.code];
    if (!effects.only_written) {
      text.length = at;
      break;
    }
    sequences_.all[count++] = {static_cast<std::uint8_t>(at),
                               static_cast<std::uint8_t>(found.last - at + 1),
                               static_cast<std::uint16_t>(found.code)};
    new_state |= effects.begins_new_state;
    all |= first;
    inside |= (ByteMask{2} << found.last) - (first << 1);
  }
  sequences_.count = count;
  sequences_.begins_new_state = new_state;
  const ByteMask bytes_of_all = all | inside;
  text.neutral |= bytes_of_all;
  text.double_byte &= ~bytes_of_all;
  text.invalid &= ~bytes_of_all;
  text.prefix &= ~bytes_of_all;
  text.inside = (text.inside & ~bytes_of_all) | inside;
}

/// Finds the LFs that get a pitch; the block ends before one that needs more.
[[gnu::always_inline]] inline ByteMask TextRun::find_line_feeds(const ByteBlock& block,
                                                                TextMasks& text) {
  // A sequence may have a LF in its parameters.
  const ByteMask all = block.equal(kLineFeed) & ~text.inside & bits_below(text.length);
  if (all == 0) {
    return 0;
  }
  std::size_t allowed = line_feeds_.prepare();
  for (ByteMask left = all; left != 0; left &= left - 1, --allowed) {
    // A form's last LF of the input is a plain one.
    if (allowed == 0 || next_ + first_bit(left) + 1 == end_) {
      text.length = first_bit(left);
      return all & bits_below(text.length);
    }
  }
  return all;
}

/// Sets the flags of the loop as the bytes that were put out do.
[[gnu::noinline]] void TextRun::note(const std::uint8_t* bytes, const BlockPlan& plan,
                                     ByteMask front) {
  const ByteBlock block(bytes);
  const ByteMask text = ~plan.text.neutral & front;
  const ByteMask line_ends =
      (block.equal(kLineFeed) | block.equal(kCarriageReturn)) & ~plan.text.inside;
  ByteMask content = text;
  ByteMask starts = (text & ~plan.text.invalid) | line_ends;
  ByteMask new_states = 0;
  for (std::size_t i = 0; i < sequences_.count; ++i) {
    const CommandEffects& effects = command_effects[sequences_.all[i].code];
    content |= ByteMask{effects.brings_content} << sequences_.all[i].at;
    starts |= ByteMask{effects.starts_page} << sequences_.all[i].at;
    new_states |= ByteMask{effects.begins_new_state} << sequences_.all[i].at;
  }
  content &= front;
  new_states &= front;
  loop_.job.page_has_content |= content != 0 ? 1 : 0;
  loop_.job.page_started |= (starts & front) != 0 ? 1 : 0;
  if (new_states != 0) {
    loop_.content_since_conditions = content != 0 && last_bit(content) > last_bit(new_states);
  } else if (content != 0) {
    loop_.content_since_conditions = true;
  }
}

/// Hands the last switches on. Only they count, so it is enough to do so before something else is
/// kept, and before a cut.
inline void TextRun::keep_last_switches() {
  if (set_switch_ != nullptr) {
    kept_.keep(set_switch_->set_command, set_switch_->set_sequence());
    set_switch_ = nullptr;
  }
  if (size_switch_ != nullptr) {
    kept_.keep(CMD_Q_YL_SP, size_switch_->size_sequence());
    size_switch_ = nullptr;
  }
}

/// Notes the last of some switches. One in front of an invalid character has no size sequence.
[[gnu::always_inline]] inline void TextRun::note_switches(const BlockPlan& plan,
                                                          ByteMask switches) {
  if (switches == 0) {
    return;
  }
  set_switch_ = &last_switch(plan, switches);
  const ByteMask whole = switches & ~plan.text.invalid;
  if (whole != 0) [[likely]] {
    size_switch_ = &last_switch(plan, whole);
  }
}

/// Keeps the sequences that were put out, each behind the switches in front of it.
/// @return the switches behind the last one.
[[gnu::noinline]] ByteMask TextRun::keep_sequences(const BlockPlan& plan, ByteMask switches) {
  if (loop_.command_line.framed_output != 0) {
    return switches;
  }
  keep_last_switches();
  const std::size_t length = plan.length();
  const std::uint8_t* const next = next_;
  const std::span all(sequences_.all.data(), sequences_.count);
  for (const BlockSequences::Sequence sequence : all) {
    if (sequence.at >= length) {
      break;
    }
    if (switches != 0) {
      const ByteMask before = switches & bits_below(sequence.at);
      note_switches(plan, before);
      keep_last_switches();
      switches ^= before;
    }
    kept_.keep(sequence.code, {next + sequence.at, sequence.length});
  }
  return switches;
}

/// Selects the set of the last switch that was put out, and keeps switches and sequences.
[[gnu::always_inline]] inline void TextRun::keep_all(const BlockPlan& plan) {
  ByteMask switches = plan.border & bits_below(plan.length());
  if (switches != 0) {
    if (&last_switch(plan, switches) == &kToDoubleByte) {
      loop_.character_set.select_double_byte();
    } else {
      loop_.character_set.select_single_byte();
    }
    switches &= ~ByteMask{switch_is_kept_};
  }
  switch_is_kept_ = false;
  if (sequences_.count != 0) {
    switches = keep_sequences(plan, switches);
  }
  note_switches(plan, switches);
}

/// Cuts for the piece that comes next. Its switch is kept first, so that the cut repeats what the
/// new block begins with.
void TextRun::cut_before_piece(const BlockPlan& plan) {
  const ByteMask first = plan.border & (ByteMask{1} << plan.length());
  note_switches(plan, first);
  switch_is_kept_ = first != 0;
  keep_last_switches();
  kept_.keep_now();
  sink_.cut();
}

/// Puts out as much of the block as there is room for, and cuts when a piece does not fit.
/// @return bytes of the block that were put out.
[[gnu::noinline]] std::size_t TextRun::put_what_fits(const std::uint8_t* bytes, BlockPlan& plan) {
  const std::size_t wanted = plan.length();
  plan.text.length = plan.fitting(static_cast<std::size_t>(sink_.room()), line_feeds_);
  std::array<std::uint8_t, kMostOutput + kPutSlack> apart;
  const std::uint8_t* const end = put_block(bytes, plan, line_feeds_, apart.data());
  sink_.append({apart.data(), end});
  if (plan.length() != 0) {
    keep_all(plan);
  }
  if (plan.length() != wanted) {
    cut_before_piece(plan);
  }
  return plan.length();
}

/// @return bytes of the block that were put out.
[[gnu::always_inline]] inline std::size_t TextRun::put(const std::uint8_t* bytes, BlockPlan& plan) {
  const auto room = static_cast<std::size_t>(sink_.room());
  std::uint8_t* const to = sink_.bytes + *sink_.length;
  if (plan.insertions() == 0 && room >= kBlockBytes) {
    std::memcpy(to, bytes, kBlockBytes);
    *sink_.length += static_cast<std::int32_t>(plan.length());
  } else if (room >= kMostOutput + kPutSlack ||
             room >= plan.output_length(plan.length(), line_feeds_) + kPutSlack) [[likely]] {
    const std::uint8_t* const end = put_block(bytes, plan, line_feeds_, to);
    *sink_.length = static_cast<std::int32_t>(end - sink_.bytes);
  } else {
    return put_what_fits(bytes, plan);
  }
  keep_all(plan);
  return plan.length();
}

/// @return false when the other road has to go on.
[[gnu::always_inline]] inline bool TextRun::take_block() {
  const std::uint8_t* const bytes = readable_block();
  const ByteBlock block(bytes);
  BlockPlan plan;
  describe(bytes, block, plan.text);
  sequences_.count = 0;
  sequences_.begins_new_state = false;
  if (plan.text.introducer != 0) {
    find_sequences(bytes, plan.text);
  }
  if (!line_feeds_.are_plain()) {
    plan.line_feed = find_line_feeds(block, plan.text);
  }
  if (plan.length() == 0) {
    return false;
  }
  plan.find_borders(double_byte());
  const std::size_t count = put(bytes, plan);
  if (!all_is_noted() || sequences_.begins_new_state) [[unlikely]] {
    note(bytes, plan, bits_below(count));
  }
  if (plan.line_feed != 0) {
    line_feeds_.take(count_bits(plan.line_feed & bits_below(count)));
  }
  is_single_ = plan.border == 0 && sequences_.count == 0 && !double_byte() && all_is_noted();
  next_ += count;
  return true;
}

/// Takes blocks that are put out as they are: every byte is a piece while the single-byte set is
/// selected. Ends before the first byte that may be more; what it is the masks have to tell.
inline void TextRun::take_single_bytes() {
  ByteMask other = 0;
  while (other == 0 && end_ - next_ >= static_cast<std::ptrdiff_t>(kBlockBytes) &&
         sink_.room() >= static_cast<std::int32_t>(kBlockBytes)) {
    other = no_single_bytes(ByteBlock(next_));
    std::memcpy(sink_.bytes + *sink_.length, next_, kBlockBytes);
    const std::size_t count = first_bit(other);
    *sink_.length += static_cast<std::int32_t>(count);
    next_ += count;
  }
}

void TextRun::take() {
  while (next_ != end_ && *next_ != kFormFeed && take_block()) {
    if (is_single_ && line_feeds_.are_plain()) {
      take_single_bytes();
    }
  }
  keep_last_switches();
  kept_.keep_now();
}

void write_text_run(LoopState& loop) {
  ByteWindow& window = job_window(loop.source);
  if (window.empty() || *window.next == kFormFeed || !road_is_free(loop)) {
    return;
  }
  // The last byte of an input frame makes the output frame leave; the other road sees to that.
  const std::uint8_t* const end =
      loop.command_line.framed_output != 0 ? window.end - 1 : window.end;
  TextRun run(loop, window.next, end);
  run.take();
  window.next = run.next();
}

}  // namespace rlx
