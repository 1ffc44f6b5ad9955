#include "driver/fast_road/text_run.h"

#include <algorithm>
#include <cstddef>

#include "driver/fast_road/byte_kinds.h"
#include "driver/fast_road/text_run_state.h"
#include "driver/loop/routing.h"
#include "input/ready_sequence.h"

namespace rlx {

namespace {

LineMode line_mode(const LoopState& loop) {
  if (form_moves_paper(loop)) {
    return LineMode::form;
  }
  const bool counted = loop.command_line.lines_per_page != 0 && !loop.fcb_active &&
                       loop.command_line.framed_output == 0;
  return counted ? LineMode::counted : LineMode::plain;
}

/// True when the next byte of text needs nothing but to be written.
bool road_is_free(const LoopState& loop) {
  return loop.fast_road && !conditions_due(loop) && loop.held_command.length == 0 &&
         loop.end_marker == ST_OK &&
         !(form_moves_paper(loop) && loop.pending_vertical_bytes.length > 0);
}

}  // namespace

TextRun::TextRun(LoopState& loop, const std::uint8_t* next, const std::uint8_t* end)
    : loop_(loop),
      sink_(piece_sink(loop.output)),
      next_(next),
      end_(end),
      text_(next),
      lines_(line_mode(loop)),
      text_is_noted_(flags_are_set()),
      kept_(loop.carried) {}

/// Selects the set of a switch. The switch is kept before its character is written, so that a cut
/// which the character makes repeats it already.
void TextRun::select(const SetSwitch& set_switch) {
  kept_.keep(set_switch.set_command, set_switch.set_sequence());
  if (&set_switch == &kToDoubleByte) {
    loop_.character_set.select_double_byte();
  } else {
    loop_.character_set.select_single_byte();
  }
}

/// Makes room for a piece.
void TextRun::make_room(std::int32_t count) {
  if (count > sink_.room()) [[unlikely]] {
    kept_.keep_now();
    sink_.cut();
  }
}

/// Puts bytes of the input. There is room for them.
void TextRun::append_next(std::int32_t count) {
  sink_.append({next_, static_cast<std::size_t>(count)});
  next_ += count;
}

/// Puts a switch, from byte `from` of it on, and `count` bytes of the input as one piece.
bool TextRun::put_switch(const SetSwitch& set_switch, std::int32_t from, std::int32_t count) {
  if (from == 0) {
    kept_.keep(CMD_Q_YL_SP, set_switch.size_sequence());
  }
  select(set_switch);
  make_room(kSwitchBytes - from + count);
  sink_.append(Bytes(set_switch.bytes).subspan(static_cast<std::size_t>(from)));
  append_next(count);
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
  make_room(1);
  const std::ptrdiff_t most = std::min<std::ptrdiff_t>(end_ - next_, sink_.room());
  const std::uint8_t* const limit = next_ + most;
  const std::uint8_t* stop = next_ + 1;
  while (stop != limit && is_single(kind_of(*stop).byte_class) && *stop != line_end()) {
    ++stop;
  }
  append_next(static_cast<std::int32_t>(stop - next_));
  return true;
}

/// A byte while the double-byte set is selected: text of the single-byte set, or one that is no
/// text and leaves the set alone.
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
  make_room(1);
  append_next(1);
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
  if (pitch == nullptr || end_ - next_ < 2) {
    return false;
  }
  make_room(1 + pitch->length);
  append_next(1);
  sink_.append(pitch->sequence());
  ++loop_.current_store->cur_line;
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
  make_room(length);
  append_next(length);
  return true;
}

/// The 0x8e prefix and the character behind it, which alone is written.
bool TextRun::take_shifted() {
  if (end_ - next_ < 2) {
    return false;
  }
  const std::int32_t length = kind_of(next_[1]).length;
  if (end_ - next_ < 1 + length || next_[length] == kFormFeed) {
    return false;
  }
  ++next_;
  if (double_byte()) {
    return put_switch(kToSingleByte, 0, length);
  }
  make_room(length);
  append_next(length);
  return true;
}

/// A sequence that is only written, and kept in the carried settings like any command.
bool TextRun::take_sequence() {
  if (end_ - next_ < static_cast<std::ptrdiff_t>(kReadyBytes)) {
    return false;
  }
  const ReadySequence sequence = ready_sequence(next_);
  if (sequence.length == 0) {
    return false;
  }
  note_text();
  const bool nothing_else = text_is_noted_ ? is_only_written_on_started_page(sequence.code)
                                           : is_only_written(sequence.code);
  if (!nothing_else) {
    return false;
  }
  make_room(sequence.length);
  const Bytes bytes(next_, static_cast<std::size_t>(sequence.length));
  append_next(sequence.length);
  if (loop_.command_line.framed_output == 0) {
    kept_.keep(sequence.code, bytes);
  }
  text_ = next_;
  return true;
}

bool TextRun::take_some() {
  switch (kind_of(*next_).byte_class) {
    case ByteClass::other:
      return false;
    case ByteClass::sequence:
      return take_sequence();
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

/// Sets the flags of the loop that the text taken so far sets.
void TextRun::note_text() {
  if (text_is_noted_) {
    return;
  }
  bool content = loop_.content_since_conditions && loop_.job.page_has_content != 0;
  bool started = loop_.job.page_started != 0;
  for (const std::uint8_t* byte = text_; byte != next_ && !(content && started); ++byte) {
    const auto byte_class = static_cast<std::size_t>(kind_of(*byte).byte_class);
    // Behind the first multi-byte character both are set; its own bytes are never looked at.
    content = content || kBringsContent[byte_class];
    started = started || kStartsPage[byte_class];
  }
  loop_.content_since_conditions = loop_.content_since_conditions || content;
  loop_.job.page_has_content |= content ? 1 : 0;
  loop_.job.page_started = started ? 1 : 0;
  text_is_noted_ = flags_are_set();
}

void TextRun::take() {
  bool taken = true;
  while (taken && next_ != end_) {
    burst();
    taken = next_ != end_ && take_some();
  }
  kept_.keep_now();
  note_text();
}

void write_text_run(LoopState& loop) {
  ByteWindow& window = job_window(loop.source);
  if (window.empty() || kind_of(*window.next).byte_class == ByteClass::other ||
      !road_is_free(loop)) {
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
