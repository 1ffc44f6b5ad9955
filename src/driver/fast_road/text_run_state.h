#pragma once

#include <cstdint>

#include "driver/fast_road/kept_later.h"
#include "driver/loop/loop_state.h"
#include "job/control_bytes.h"
#include "job/piece_sink.h"
#include "output/line_spacing.h"
#include "output/text_out.h"

namespace rlx {

/// Who acts on a LF.
enum class LineMode : std::uint8_t {
  plain,   ///< nobody: it is a byte like others
  form,    ///< the form gives it the pitch of the next line
  counted  ///< page-length emulation, on the record-by-record road
};

inline constexpr std::int32_t kSwitchBytes = kSizeSequenceBytes + kSetSequenceBytes;

/// One run of the fast road: the input that may be taken, and where it goes. Works in bursts while
/// there is plenty of both, and in single steps near the borders.
class TextRun {
 public:
  /// @param next  first byte of the input.
  /// @param end   end of what may be taken.
  TextRun(LoopState& loop, const std::uint8_t* next, const std::uint8_t* end);

  /// Takes all that is ordinary, and leaves the job as the record-by-record road would have left it
  /// behind the same bytes.
  void take();

  /// First byte that was not taken.
  const std::uint8_t* next() const { return next_; }

 private:
  /// Where a burst stands; local to it, so that it stays in registers.
  struct Cursor {
    const std::uint8_t* next;
    std::uint8_t* out;
    bool double_byte;
    // The last switches of the burst, for the carried settings.
    const SetSwitch* size_switch = nullptr;
    const SetSwitch* set_switch = nullptr;
  };

  // Bursts (text_burst.cpp): 16 bytes at a time, no bound to be looked at within an iteration.
  void burst();
  bool burst_single_byte(Cursor& at);
  bool burst_double_byte(Cursor& at);
  bool burst_form_line(Cursor& at);
  bool burst_sequence(Cursor& at);
  void keep_switches(Cursor& at);

  // Single steps (text_run.cpp), up to the last byte of input and of room. False when the other
  // road has to go on.
  bool take_some();
  bool take_single_bytes();
  bool take_one_byte();
  bool take_form_line();
  bool take_character();
  bool take_shifted();
  bool take_sequence();
  bool put_switch(const SetSwitch& set_switch, std::int32_t from, std::int32_t count);

  // What both need.
  void make_room(std::int32_t count);
  void append_next(std::int32_t count);
  void select(const SetSwitch& set_switch);
  void note_text();
  bool flags_are_set() const {
    return loop_.content_since_conditions && loop_.job.page_has_content != 0 &&
           loop_.job.page_started != 0;
  }
  std::int32_t character_length() const;
  const PitchCommand* next_line_pitch();
  bool double_byte() const { return loop_.character_set.set == CharacterSetState::kDoubleByte; }
  /// A byte at which a run of single bytes stops besides those at which it always stops.
  std::uint8_t line_end() const { return lines_ == LineMode::plain ? kFormFeed : kLineFeed; }

  LoopState& loop_;
  PieceSink sink_;
  const std::uint8_t* next_;
  const std::uint8_t* end_;
  /// Text from here to `next_` has not been noted in the flags of the loop.
  const std::uint8_t* text_;
  LineMode lines_;
  /// All that text can set in the flags of the loop is set.
  bool text_is_noted_;
  KeptLater kept_;
  /// The pitch of the last form line, and its lines per inch.
  PitchCommand pitch_;
  std::uint32_t pitch_lines_per_inch_ = 0;
};

}  // namespace rlx
