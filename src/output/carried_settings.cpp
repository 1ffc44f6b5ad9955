#include "output/carried_settings.h"

#include <cstddef>
#include <cstring>

#include "output/block.h"

namespace rlx {

namespace {

void keep_in_general(OutputBuffer& general, Bytes sequence) {
  // One that does not fit is left out.
  general.append_fitting(sequence);
}

std::int32_t kept_bytes(const CarriedSettings& carried) {
  std::int32_t sum = carried.general->length;
  for (const CarriedSettings::Slot& slot : carried.slots) {
    sum += slot.length;
  }
  return sum;
}

}  // namespace

Status allocate_carried_settings(CarriedSettings& carried) {
  free_carried_settings(carried);
  carried.general = allocate_output_buffer();
  return carried.general == nullptr ? ST_FAILED : ST_OK;
}

void free_carried_settings(CarriedSettings& carried) {
  free_output_buffer(carried.general);
  carried.general = nullptr;
}

void keep_in_slot(CarriedSettings& carried, int slot, Bytes sequence) {
  if (sequence.size() > kSlotBytes) {
    return;
  }
  CarriedSettings::Slot& kept = carried.slots[static_cast<std::size_t>(slot - 1)];
  kept.length = static_cast<std::uint8_t>(sequence.size());
  std::memcpy(kept.bytes.data(), sequence.data(), sequence.size());
}

void keep_setting(CarriedSettings& carried, std::uint32_t command, Bytes sequence) {
  const int place = place_of_setting(command, sequence);
  if (place == kKeptInGeneralBuffer) {
    keep_in_general(*carried.general, sequence);
  } else if (place != kKeptNowhere) {
    keep_in_slot(carried, place, sequence);
  }
}

void out_kept_settings(CarriedSettings& carried) {
  const std::int32_t sum = kept_bytes(carried);
  if (sum == 0) {
    return;
  }
  out_block_header(carried.writer, BlockKind::carried, sum);
  out_bytes(carried.writer, carried.general->gathered());
  for (const CarriedSettings::Slot& slot : carried.slots) {
    out_bytes(carried.writer, Bytes(slot.bytes).first(slot.length));
  }
  forget_kept_settings(carried);
}

void forget_kept_settings(CarriedSettings& carried) {
  for (CarriedSettings::Slot& slot : carried.slots) {
    slot.length = 0;
  }
  if (carried.general != nullptr) {
    carried.general->length = 0;
  }
}

}  // namespace rlx
