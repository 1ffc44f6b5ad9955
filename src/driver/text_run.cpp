#include "driver/text_run.h"

#include <algorithm>
#include <array>

#include "driver/burst_scan.h"
#include "driver/routing.h"
#include "input/byte_source.h"
#include "input/classifier.h"
#include "input/ready_sequence.h"
#include "job/control_bytes.h"
#include "job/piece_sink.h"
#include "job/settings.h"
#include "output/carried_settings.h"
#include "output/line_spacing.h"
#include "output/out_piece.h"
#include "output/text_out.h"

namespace rlx {

namespace {

enum class ByteClass : std::uint8_t {
  other,      ///< FF: for the record-by-record road
  sequence,   ///< ESC or FS
  printable,  ///< 0x20-0x7e
  cr,
  lf,
  control,  ///< any other control byte that is a command by itself, and DEL
  invalid,  ///< an invalid character
  lead,     ///< begins a multi-byte character
  shift,    ///< the 0x8e prefix
};

constexpr ByteClass class_of(std::uint8_t byte) {
  switch (byte) {
    case kCarriageReturn:
      return ByteClass::cr;
    case kLineFeed:
      return ByteClass::lf;
    case kFormFeed:
      return ByteClass::other;
    case kEsc:
    case kFs:
      return ByteClass::sequence;
    case kSingleShift2:
      return ByteClass::shift;
    default:
      break;
  }
  if (byte < 0x20 || byte == kDel) {
    return ByteClass::control;
  }
  if (byte < kDel) {
    return ByteClass::printable;
  }
  return continuation_bytes(byte) > 0 ? ByteClass::lead : ByteClass::invalid;
}

struct ByteKind {
  ByteClass byte_class;
  std::uint8_t length;  ///< of the character that the byte begins
};

constexpr auto kByteKinds = [] {
  std::array<ByteKind, 256> kinds{};
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    const auto byte = static_cast<std::uint8_t>(i);
    kinds[i] = {class_of(byte), static_cast<std::uint8_t>(1 + continuation_bytes(byte))};
  }
  return kinds;
}();

constexpr ByteKind kind_of(std::uint8_t byte) {
  return kByteKinds[byte];
}

/// Room that is copied for a character at once.
constexpr std::size_t kLongestCharacter = 8;
constexpr std::int32_t kSwitchBytes = kSizeSequenceBytes + kSetSequenceBytes;

constexpr bool is_single(ByteClass byte_class) {
  return byte_class > ByteClass::sequence && byte_class < ByteClass::lead;
}

/// By ByteClass: what puts content on the page, and what starts the page.
constexpr std::array kBringsContent{false, false, true, false, false, false, true, true, true};
constexpr std::array kStartsPage{false, false, true, true, true, false, false, true, true};

/// Bytes that an iteration of a burst may look at, and bytes that it may store. Within these no cut
/// is due and no character is incomplete.
constexpr std::ptrdiff_t kBurstInput = 32;
constexpr std::int32_t kBurstOutput = 64;

/// Who acts on a LF.
enum class LineMode : std::uint8_t {
  plain,   ///< nobody: it is a byte like others
  form,    ///< the form gives it the pitch of the next line
  counted  ///< page-length emulation, on the record-by-record road
};

LineMode line_mode(const LoopState& loop) {
  if (form_moves_paper(loop)) {
    return LineMode::form;
  }
  const bool counted =
      job_settings.lines_per_page != 0 && !loop.fcb_active && job_settings.framed_output == 0;
  return counted ? LineMode::counted : LineMode::plain;
}

/// One run: the input that may be taken, and where it goes.
class TextRun {
 public:
  TextRun(LoopState& loop, const std::uint8_t* next, const std::uint8_t* end)
      : loop_(loop),
        sink_(piece_sink()),
        text_(next),
        next_(next),
        end_(end),
        lines_(line_mode(loop)) {}

  /// Takes all that is ordinary. @return 0 or the status of a cut.
  int take();

  const std::uint8_t* next() const { return next_; }

 private:
  /// Where a burst stands; kept by value, so that it stays in registers.
  struct Cursor {
    const std::uint8_t* next;
    std::uint8_t* out;
    bool double_byte;
  };

  // A burst goes on while no bound has to be looked at but the two above, 16 bytes at a time.
  void burst();
  bool burst_single_byte(Cursor& at);
  bool burst_double_byte(Cursor& at);
  bool burst_form_line(Cursor& at);
  bool burst_character(Cursor& at, std::size_t length);
  void burst_switch(Cursor& at, const SetSwitch& set_switch, std::int32_t from);

  // One step, up to the last byte of input and of room. False when the other road has to go on.
  bool take_some();
  bool take_single_bytes();
  bool take_one_byte();
  bool take_form_line();
  bool take_character();
  bool take_shifted();
  bool take_sequence();
  bool put_switch(const SetSwitch& set_switch, std::int32_t from, std::int32_t count);
  bool make_room(std::int32_t count);
  const PitchCommand* next_line_pitch();

  void note_text();

  std::int32_t character_length() const;
  std::uint8_t stop_line_end() const { return lines_ == LineMode::plain ? kFormFeed : kLineFeed; }
  bool double_byte() const { return loop_.character_set.set == CharacterSetState::kDoubleByte; }
  void note_switch(const SetSwitch& set_switch, std::int32_t from);
  void keep_switches();

  LoopState& loop_;
  PieceSink sink_;
  /// Text from here to `next_` has not been noted in the flags of the loop.
  const std::uint8_t* text_;
  const std::uint8_t* next_;
  const std::uint8_t* end_;
  LineMode lines_;
  int status_ = ST_OK;
  /// Switches of this run that the carried settings do not have yet; only the last ones count.
  const SetSwitch* size_to_keep_ = nullptr;
  const SetSwitch* set_to_keep_ = nullptr;
  /// The pitch of the last form line, and its lines per inch.
  PitchCommand pitch_;
  std::uint32_t pitch_lines_per_inch_ = 0;
};

void TextRun::keep_switches() {
  if (size_to_keep_ != nullptr) {
    keep_setting(CMD_Q_YL_SP, kSizeSequenceBytes, size_to_keep_->bytes.data());
    size_to_keep_ = nullptr;
  }
  if (set_to_keep_ != nullptr) {
    keep_set(*set_to_keep_);
    set_to_keep_ = nullptr;
  }
}

/// Selects the set of a switch that is sent from byte `from` of it on.
void TextRun::note_switch(const SetSwitch& set_switch, std::int32_t from) {
  set_to_keep_ = &set_switch;
  size_to_keep_ = from == 0 ? &set_switch : size_to_keep_;
  if (&set_switch == &kToDoubleByte) {
    loop_.character_set.select_double_byte();
  } else {
    loop_.character_set.select_single_byte();
  }
}

/// Makes room for a piece. A switch is kept before its piece is written, so that the cut which the
/// piece makes repeats it already.
bool TextRun::make_room(std::int32_t count) {
  if (count > sink_.room()) [[unlikely]] {
    keep_switches();
    status_ = sink_.cut();
  }
  return status_ == ST_OK;
}

/// Puts a switch, from byte `from` of it on, and `count` bytes of the input as one piece.
bool TextRun::put_switch(const SetSwitch& set_switch, std::int32_t from, std::int32_t count) {
  note_switch(set_switch, from);
  if (!make_room(kSwitchBytes - from + count)) {
    return false;
  }
  sink_.append(set_switch.bytes.data() + from, kSwitchBytes - from);
  sink_.append(next_, count);
  next_ += count;
  return true;
}

/// Length of the multi-byte character that comes next, if this road may take it: not one that is
/// incomplete in memory, nor one whose last byte is a FF, which ends the page. Otherwise 0.
std::int32_t TextRun::character_length() const {
  const ByteKind kind = kind_of(*next_);
  const bool complete = kind.byte_class == ByteClass::lead && end_ - next_ >= kind.length;
  return complete && next_[kind.length - 1] != kFormFeed ? kind.length : 0;
}

/// Single bytes while the single-byte set is selected, up to the end of the room.
bool TextRun::take_single_bytes() {
  if (!make_room(1)) {
    return false;
  }
  const std::ptrdiff_t most = std::min<std::ptrdiff_t>(end_ - next_, sink_.room());
  const std::uint8_t* const limit = next_ + most;
  const std::uint8_t* stop = next_ + 1;
  while (stop != limit && is_single(kind_of(*stop).byte_class) && *stop != stop_line_end()) {
    ++stop;
  }
  sink_.append(next_, static_cast<std::int32_t>(stop - next_));
  next_ = stop;
  return true;
}

/// The pitch of the line that a LF moves to; null when it leaves the form.
const PitchCommand* TextRun::next_line_pitch() {
  const FcbTable& form = *loop_.current_store;
  const std::uint32_t lines_per_inch = form.lpi[static_cast<std::size_t>(form.cur_line) + 1];
  if (lines_per_inch == 0) {
    return nullptr;
  }
  if (lines_per_inch != pitch_lines_per_inch_) {
    pitch_ = line_pitch_command(line_pitch_72nds(lines_per_inch));
    pitch_lines_per_inch_ = lines_per_inch;
  }
  return &pitch_;
}

/// A LF inside the form, with the pitch of the line that it moves to. One that leaves the form, and
/// one behind which no byte stands ready, are for the other road.
bool TextRun::take_form_line() {
  const PitchCommand* const pitch = next_line_pitch();
  if (pitch == nullptr || end_ - next_ < 2 || !make_room(1 + pitch->length)) {
    return false;
  }
  sink_.append(next_++, 1);
  sink_.append(pitch->bytes.data(), pitch->length);
  ++loop_.current_store->cur_line;
  return true;
}

/// A byte of the single-byte set while the double-byte set is selected, or one that is no text and
/// leaves the set alone.
bool TextRun::take_one_byte() {
  switch (kind_of(*next_).byte_class) {
    case ByteClass::printable:
      return put_switch(kToSingleByte, 0, 1);
    case ByteClass::invalid:
      // The size sequence is left out before an invalid character.
      return put_switch(kToSingleByte, kSizeSequenceBytes, 1);
    default:
      break;
  }
  if (!make_room(1)) {
    return false;
  }
  sink_.append(next_++, 1);
  return true;
}

bool TextRun::take_character() {
  const std::int32_t length = character_length();
  if (length == 0) {
    return false;
  }
  if (!double_byte()) {
    return put_switch(kToDoubleByte, 0, length);
  }
  if (!make_room(length)) {
    return false;
  }
  sink_.append(next_, length);
  next_ += length;
  return true;
}

/// The 0x8e prefix and the character behind it, which alone is written.
bool TextRun::take_shifted() {
  if (end_ - next_ < 2 || end_ - next_ < 1 + kind_of(next_[1]).length) {
    return false;
  }
  const std::int32_t length = kind_of(next_[1]).length;
  if (next_[length] == kFormFeed) {
    return false;
  }
  ++next_;
  if (double_byte()) {
    return put_switch(kToSingleByte, 0, length);
  }
  if (!make_room(length)) {
    return false;
  }
  sink_.append(next_, length);
  next_ += length;
  return true;
}

/// A sequence that is only written, and kept in the carried settings like any command.
bool TextRun::take_sequence() {
  const ReadySequence sequence = ready_sequence(next_, end_);
  if (sequence.length == 0 || !is_only_written(sequence.code)) {
    return false;
  }
  note_text();
  if (!make_room(sequence.length)) {
    return false;
  }
  sink_.append(next_, sequence.length);
  if (job_settings.framed_output == 0) {
    keep_switches();
    keep_setting(sequence.code, sequence.length, next_);
  }
  next_ += sequence.length;
  text_ = next_;
  return true;
}

bool TextRun::take_some() {
  switch (kind_of(*next_).byte_class) {
    case ByteClass::sequence:
      return take_sequence();
    case ByteClass::other:
      return false;
    case ByteClass::lead:
      return take_character();
    case ByteClass::shift:
      return take_shifted();
    case ByteClass::lf:
      if (lines_ != LineMode::plain) {
        return lines_ == LineMode::form && take_form_line();
      }
      break;
    default:
      break;
  }
  return double_byte() ? take_one_byte() : take_single_bytes();
}

/// Puts a switch; the character that it is for follows within the room of the burst.
inline void TextRun::burst_switch(Cursor& at, const SetSwitch& set_switch, std::int32_t from) {
  const std::int32_t count = kSwitchBytes - from;
  std::memcpy(at.out, set_switch.bytes.data() + from, static_cast<std::size_t>(count));
  at.out += count;
  at.double_byte = &set_switch == &kToDoubleByte;
  set_to_keep_ = &set_switch;
  size_to_keep_ = from == 0 ? &set_switch : size_to_keep_;
}

inline bool TextRun::burst_form_line(Cursor& at) {
  const PitchCommand* const pitch = next_line_pitch();
  if (pitch == nullptr) {
    return false;
  }
  *at.out = kLineFeed;
  static_assert(sizeof(pitch->bytes) < kBurstOutput);
  std::memcpy(at.out + 1, pitch->bytes.data(), pitch->bytes.size());
  at.out += 1 + pitch->length;
  ++at.next;
  ++loop_.current_store->cur_line;
  return true;
}

/// Single bytes while the single-byte set is selected, and what ends them if it can be taken.
inline bool TextRun::burst_single_byte(Cursor& at) {
  const std::size_t count = single_bytes_at_front(at.next, stop_line_end());
  std::memcpy(at.out, at.next, kScanBytes);
  at.next += count;
  at.out += count;
  if (count == kScanBytes) {
    return true;
  }
  const ByteKind kind = kind_of(*at.next);
  if (kind.byte_class == ByteClass::lead && at.next[kind.length - 1] != kFormFeed) {
    burst_switch(at, kToDoubleByte, 0);
    return true;
  }
  return kind.byte_class == ByteClass::lf && lines_ == LineMode::form && burst_form_line(at);
}

inline bool TextRun::burst_character(Cursor& at, std::size_t length) {
  if (at.next[length - 1] == kFormFeed) {
    return false;
  }
  std::memcpy(at.out, at.next, kLongestCharacter);
  at.next += length;
  at.out += length;
  return true;
}

/// Multi-byte characters while the double-byte set is selected, or a byte that is none.
inline bool TextRun::burst_double_byte(Cursor& at) {
  const std::size_t count = three_byte_characters_at_front(at.next);
  std::memcpy(at.out, at.next, kScanBytes);
  at.next += count;
  at.out += count;
  const ByteKind kind = kind_of(*at.next);
  switch (kind.byte_class) {
    case ByteClass::lead:
      return burst_character(at, kind.length);
    case ByteClass::printable:
      burst_switch(at, kToSingleByte, 0);
      break;
    case ByteClass::invalid:
      burst_switch(at, kToSingleByte, kSizeSequenceBytes);
      break;
    case ByteClass::lf:
      if (lines_ != LineMode::plain) {
        return lines_ == LineMode::form && burst_form_line(at);
      }
      break;
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
  if (set_to_keep_ != nullptr) {
    note_switch(*set_to_keep_, kSwitchBytes);
  }
}

/// Sets the flags of the loop that the text taken so far sets.
void TextRun::note_text() {
  bool content = loop_.content_since_conditions && job_settings.page_has_content != 0;
  bool started = job_settings.page_started != 0;
  for (const std::uint8_t* byte = text_; byte != next_ && !(content && started); ++byte) {
    const auto byte_class = static_cast<std::size_t>(kind_of(*byte).byte_class);
    // Behind the first multi-byte character both are set; its own bytes are never looked at.
    content = content || kBringsContent[byte_class];
    started = started || kStartsPage[byte_class];
  }
  loop_.content_since_conditions = loop_.content_since_conditions || content;
  job_settings.page_has_content |= content ? 1 : 0;
  job_settings.page_started = started ? 1 : 0;
}

int TextRun::take() {
  bool taken = true;
  while (taken && next_ != end_) {
    burst();
    taken = next_ != end_ && take_some();
  }
  keep_switches();
  note_text();
  return status_;
}

/// True when the next byte of text needs nothing but to be written.
bool road_is_free(const LoopState& loop) {
  return loop.fast_road && !conditions_due(loop) && loop.held_command.length == 0 &&
         loop.end_marker == ST_OK &&
         !(form_moves_paper(loop) && loop.pending_vertical_bytes.length > 0);
}

}  // namespace

int write_text_run(LoopState& loop) {
  ByteWindow& window = job_window();
  if (window.empty() || kind_of(*window.next).byte_class == ByteClass::other ||
      !road_is_free(loop)) {
    return ST_OK;
  }
  // The last byte of an input frame makes the output frame leave; the other road sees to that.
  const std::uint8_t* const end = job_settings.framed_output != 0 ? window.end - 1 : window.end;
  TextRun run(loop, window.next, end);
  const int status = run.take();
  window.next = run.next();
  return status;
}

}  // namespace rlx
