#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "driver/fast_road/block_plan.h"
#include "driver/fast_road/kept_later.h"
#include "driver/fast_road/line_feeds.h"
#include "driver/loop/loop_state.h"
#include "job/piece_sink.h"

namespace rlx {

/// The sequences of a block, in their order.
struct BlockSequences {
  struct Sequence {
    std::uint8_t at;
    std::uint8_t length;
    std::uint16_t code;
  };

  std::size_t count = 0;
  /// One of them begins a new state of the page.
  bool begins_new_state = false;
  std::array<Sequence, kBlockBytes / 2> all;
};

/// One run of the fast road: the input that may be taken, and where it goes, a block after the
/// other. A block begins where a piece does, and ends before what its masks do not describe.
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
  bool take_block();
  const std::uint8_t* readable_block();
  void describe(const std::uint8_t* bytes, const ByteBlock& block, TextMasks& text);
  void find_sequences(const std::uint8_t* bytes, TextMasks& text);
  ByteMask find_line_feeds(const ByteBlock& block, TextMasks& text);
  std::size_t put(const std::uint8_t* bytes, BlockPlan& plan);
  std::size_t put_what_fits(const std::uint8_t* bytes, BlockPlan& plan);
  void note(const std::uint8_t* bytes, const BlockPlan& plan, ByteMask front);
  void keep_all(const BlockPlan& plan);
  ByteMask keep_sequences(const BlockPlan& plan, ByteMask switches);
  void note_switches(const BlockPlan& plan, ByteMask switches);
  void keep_last_switches();
  void cut_before_piece(const BlockPlan& plan);
  void take_single_bytes();
  /// All that text can set in the flags of the loop is set.
  bool all_is_noted() const {
    return loop_.content_since_conditions && loop_.job.page_has_content != 0 &&
           loop_.job.page_started != 0;
  }
  bool double_byte() const { return loop_.character_set.set == CharacterSetState::kDoubleByte; }

  LoopState& loop_;
  PieceSink sink_;
  const std::uint8_t* next_;
  const std::uint8_t* end_;
  LineFeeds line_feeds_;
  KeptLater kept_;
  /// The last switches that kept_ has not been told of.
  const SetSwitch* set_switch_ = nullptr;
  const SetSwitch* size_switch_ = nullptr;
  /// Bytes of the input that stand ready for the block.
  std::size_t ready_ = 0;
  /// The next block is described as any text, up to so many bytes; 0 is text as it should be.
  std::size_t any_text_bytes_ = 0;
  /// How many it will be after the next block that is not as it should be.
  std::size_t next_any_text_bytes_;
  /// The switch of the next piece is kept already: the piece has made a cut.
  bool switch_is_kept_ = false;
  /// The last block was text of the single-byte set alone, and so may be the next one.
  bool is_single_ = false;
  BlockSequences sequences_;
  /// The last bytes of the input, with room to read on.
  std::array<std::uint8_t, 2 * kBlockBytes> last_bytes_;
};

}  // namespace rlx
