#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "job/bytes.h"
#include "job/output_buffer.h"
#include "job/status.h"
#include "output/byte_writer.h"
#include "output/carried_places.h"

namespace rlx {

/// Longest sequence that a slot of the carried settings keeps.
inline constexpr std::int32_t kSlotBytes = 19;

// The printer forgets, behind a data block, what was set in it. So every sequence that sets a state
// is kept as it was put on the page, and all of them are written again, in a block of their own,
// behind the data block; what that block sets lasts. There is a slot for each kind of setting of
// which only the last one counts, and a general buffer for those that add up.

/// What is carried.
struct CarriedSettings {
  struct Slot {
    std::uint8_t length = 0;
    std::array<std::uint8_t, kSlotBytes> bytes;
  };

  ByteWriter& writer;
  std::array<Slot, kSlotCount> slots;
  /// Null until it is allocated.
  OutputBuffer* general = nullptr;

  explicit CarriedSettings(ByteWriter& output) : writer(output) {}
};

/// Allocates the general buffer. @return ST_OK, or ST_FAILED when there is no memory.
Status allocate_carried_settings(CarriedSettings& carried);
/// Frees the general buffer; harmless when there is none.
void free_carried_settings(CarriedSettings& carried);

/// Keeps a sequence.
/// @param command  code of the command that the sequence belongs to; it chooses the slot or the
///                 general buffer. Most codes keep nothing.
/// @param sequence copied. A slot keeps one of up to kSlotBytes, the general buffer what fits in
///                 its 8192 bytes; a sequence that is too long is left out silently.
void keep_setting(CarriedSettings& carried, std::uint32_t command, Bytes sequence);

/// Keeps a sequence in a slot, as keep_setting does once it knows the place.
/// @param slot  1 to kSlotCount.
void keep_in_slot(CarriedSettings& carried, int slot, Bytes sequence);

/// Writes the carried-settings block, if anything is kept, and forgets all that is kept.
void out_kept_settings(CarriedSettings& carried);

/// Forgets all that is kept.
void forget_kept_settings(CarriedSettings& carried);

}  // namespace rlx
