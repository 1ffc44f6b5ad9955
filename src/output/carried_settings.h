#pragma once

#include <cstddef>
#include <cstdint>

#include "output/carried_places.h"

namespace rlx {

/// Longest sequence that a slot of the carried settings keeps.
inline constexpr std::int32_t kSlotBytes = 19;

// The printer forgets its settings at the end of a data block. Every sequence that sets a state is
// therefore kept as it was put on the page, and all of them are written again, in a block of their
// own, behind the data block. There is a slot for each kind of setting of which only the last one
// counts, and a general buffer for those that add up.

/// Allocates the general buffer. @return 0, or 1 when there is no memory.
int allocate_carried_settings();
/// Frees the general buffer; harmless when there is none.
void free_carried_settings();

/// Keeps a sequence.
/// @param command  code of the command that the sequence belongs to; it chooses the slot or the
///                 general buffer. Most codes keep nothing.
/// @param count    bytes of the sequence. A slot keeps up to kSlotBytes of them, the general buffer
///                 what fits in its 8192 bytes; a sequence that is too long is left out silently.
/// @param bytes    the sequence; copied.
/// @return always 0.
int keep_setting(std::uint32_t command, std::int32_t count, const std::uint8_t* bytes);

/// Keeps a sequence in a slot, as keep_setting does once it knows the place.
/// @param slot  1 to kSlotCount.
void keep_in_slot(int slot, std::int32_t count, const std::uint8_t* bytes);

/// Writes the carried-settings block, if anything is kept, and forgets all that is kept.
/// @return 0 or the first non-zero status of out_bytes (then the settings stay kept).
int out_kept_settings();

/// Forgets all that is kept.
void reset_carried_settings();

}  // namespace rlx
