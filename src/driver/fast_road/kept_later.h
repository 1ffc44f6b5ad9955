#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "job/bytes.h"
#include "output/carried_settings.h"

namespace rlx {

/// Sequences of a run that belong in slots of the carried settings. Of each slot only the last one
/// counts, so their bytes stay where they are and only the last ones are copied, when the run ends
/// or a block is cut.
class KeptLater {
 public:
  explicit KeptLater(CarriedSettings& carried) : carried_(carried) {}

  /// As keep_setting; the bytes must stay until keep_now.
  void keep(std::uint32_t command, Bytes sequence) {
    const int place = place_of_setting(command, sequence);
    if (place == kKeptInGeneralBuffer) {
      keep_setting(carried_, command, sequence);
      return;
    }
    if (sequence.size() > kSlotBytes) [[unlikely]] {
      return;
    }
    // A sequence that is kept nowhere is noted all the same, in a place that is no slot: that costs
    // less than a branch that no processor can predict.
    sequences_[static_cast<std::size_t>(place)] = {sequence.data(), sequence.size()};
    slots_ |= 1U << place;
  }

  /// Keeps what has come together.
  void keep_now() {
    for (slots_ &= ~(1U << kKeptNowhere); slots_ != 0; slots_ &= slots_ - 1) {
      const int slot = std::countr_zero(slots_);
      const Noted& sequence = sequences_[static_cast<std::size_t>(slot)];
      keep_in_slot(carried_, slot, {sequence.bytes, sequence.count});
    }
  }

 private:
  /// A span that is not cleared when a run begins: many runs keep nothing.
  struct Noted {
    const std::uint8_t* bytes;
    std::size_t count;
  };

  CarriedSettings& carried_;
  std::uint32_t slots_ = 0;  ///< a bit for each slot number; kKeptNowhere's means nothing
  std::array<Noted, kSlotCount + 1> sequences_;
};

}  // namespace rlx
