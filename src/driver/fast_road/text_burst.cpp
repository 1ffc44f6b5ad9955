#include <cstddef>
#include <cstring>

#include "driver/fast_road/byte_kinds.h"
#include "driver/fast_road/text_run_state.h"
#include "driver/loop/routing.h"
#include "input/ready_sequence.h"
#include "input/wide_scan.h"

namespace rlx {

namespace {

/// Bytes that an iteration of a burst may look at, and bytes that it may store. Within these no cut
/// is due and no character is incomplete.
constexpr std::ptrdiff_t kBurstInput = 160;
constexpr std::ptrdiff_t kBurstOutput = 192;
/// Scans of single bytes in an iteration, so that long text looks at the bounds less often.
constexpr int kScansInARow = 4;
static_assert(kBurstInput >= kScansInARow * kScanBytes + kReadyBytes + kFewBytes);
static_assert(kBurstOutput >= kScansInARow * kScanBytes + kMaxReadySequence + kScanBytes);
/// Room that is copied for a character at once.
constexpr std::size_t kCharacterRoom = 8;

/// Puts a switch, from byte `from` of it on; the character that it is for follows within the room
/// of the burst, so that they are one piece.
template <typename Cursor>
void put(Cursor& at, const SetSwitch& set_switch, std::int32_t from) {
  const std::int32_t count = kSwitchBytes - from;
  std::memcpy(at.out, set_switch.bytes.data() + from, static_cast<std::size_t>(count));
  at.out += count;
  at.double_byte = &set_switch == &kToDoubleByte;
  at.set_switch = &set_switch;
  at.size_switch = from == 0 ? &set_switch : at.size_switch;
}

/// Copies 16 bytes, of which `count` are taken.
template <typename Cursor>
void copy(Cursor& at, std::size_t count) {
  std::memcpy(at.out, at.next, kScanBytes);
  at.next += count;
  at.out += count;
}

/// Copies a character of any length, unless its last byte is a FF.
template <typename Cursor>
bool copy_character(Cursor& at, std::size_t length) {
  if (at.next[length - 1] == kFormFeed) {
    return false;
  }
  std::memcpy(at.out, at.next, kCharacterRoom);
  at.next += length;
  at.out += length;
  return true;
}

/// Text behind multi-byte characters, and the switch to the next ones when it is short.
template <typename Cursor>
void copy_few_single_bytes(Cursor& at) {
  put(at, kToSingleByte, 0);
  *at.out++ = *at.next++;
  copy(at, few_single_bytes_at_front(at.next));
  const ByteKind kind = kind_of(*at.next);
  if (kind.byte_class == ByteClass::lead && at.next[kind.length - 1] != kFormFeed) {
    put(at, kToDoubleByte, 0);
  }
}

}  // namespace

inline bool TextRun::burst_form_line(Cursor& at) {
  const PitchCommand* const pitch = next_line_pitch();
  if (pitch == nullptr) {
    return false;
  }
  static_assert(sizeof(pitch->bytes) < kBurstOutput);
  *at.out = kLineFeed;
  std::memcpy(at.out + 1, pitch->bytes.data(), pitch->bytes.size());
  at.out += 1 + pitch->length;
  ++at.next;
  ++loop_.current_store->cur_line;
  return true;
}

/// A sequence that is only written, and kept in the carried settings like any command. The flags of
/// the loop must have been set by the text before it.
inline bool TextRun::burst_sequence(Cursor& at) {
  const ReadySequence sequence = ready_sequence(at.next);
  if (sequence.length == 0 || !text_is_noted_ || !is_only_written_on_started_page(sequence.code)) {
    return false;
  }
  const auto length = static_cast<std::size_t>(sequence.length);
  for (std::size_t copied = 0; copied < length; copied += kScanBytes) {
    std::memcpy(at.out + copied, at.next + copied, kScanBytes);
  }
  keep_switches(at);
  if (loop_.command_line.framed_output == 0) {
    kept_.keep(sequence.code, {at.next, length});
  }
  at.next += sequence.length;
  at.out += sequence.length;
  text_ = at.next;
  if (!at.double_byte) {
    copy(at, few_single_bytes_at_front(at.next));
  }
  return true;
}

/// Hands the switches on to the carried settings.
inline void TextRun::keep_switches(Cursor& at) {
  if (at.set_switch != nullptr) {
    select(*at.set_switch);
    at.set_switch = nullptr;
  }
  if (at.size_switch != nullptr) {
    kept_.keep(CMD_Q_YL_SP, at.size_switch->size_sequence());
    at.size_switch = nullptr;
  }
}

/// Single bytes while the single-byte set is selected, and what ends them if it can be taken.
inline bool TextRun::burst_single_byte(Cursor& at) {
  if (kind_of(*at.next).byte_class == ByteClass::sequence) {
    return burst_sequence(at);
  }
  std::size_t count = kScanBytes;
  for (int i = 0; i < kScansInARow && count == kScanBytes; ++i) {
    count = single_bytes_at_front(at.next, line_end());
    copy(at, count);
  }
  if (count == kScanBytes) {
    return true;
  }
  const ByteKind kind = kind_of(*at.next);
  if (kind.byte_class == ByteClass::lead && at.next[kind.length - 1] != kFormFeed) {
    put(at, kToDoubleByte, 0);
    return true;
  }
  if (kind.byte_class == ByteClass::sequence) {
    return burst_sequence(at);
  }
  return kind.byte_class == ByteClass::lf && lines_ == LineMode::form && burst_form_line(at);
}

/// Multi-byte characters while the double-byte set is selected, and one byte or character behind
/// them.
inline bool TextRun::burst_double_byte(Cursor& at) {
  // Usually characters of three bytes fill the run of high bytes. Where the run ends is known
  // before it is known that they do; what comes next need not wait for that, because it is
  // predicted.
  const std::size_t high_bytes = high_bytes_at_front(at.next);
  if (are_three_byte_characters(at.next, high_bytes)) [[likely]] {
    copy(at, high_bytes);
  } else {
    copy(at, three_byte_characters_at_front(at.next));
  }
  const ByteKind kind = kind_of(*at.next);
  switch (kind.byte_class) {
    case ByteClass::lead:
      return copy_character(at, kind.length);
    case ByteClass::printable:
      copy_few_single_bytes(at);
      return true;
    case ByteClass::invalid:
      put(at, kToSingleByte, kSizeSequenceBytes);
      break;
    case ByteClass::lf:
      if (lines_ != LineMode::plain) {
        return lines_ == LineMode::form && burst_form_line(at);
      }
      break;
    case ByteClass::sequence:
      return burst_sequence(at);
    case ByteClass::cr:
    case ByteClass::control:
      break;
    default:
      return false;
  }
  *at.out++ = *at.next++;
  return true;
}

void TextRun::burst() {
  Cursor at{next_, sink_.bytes + *sink_.length, double_byte()};
  const std::uint8_t* const full = sink_.bytes + sink_.capacity;
  while (end_ - at.next >= kBurstInput && full - at.out >= kBurstOutput &&
         (at.double_byte ? burst_double_byte(at) : burst_single_byte(at))) {
  }
  next_ = at.next;
  *sink_.length = static_cast<std::int32_t>(at.out - sink_.bytes);
  keep_switches(at);
}

}  // namespace rlx
