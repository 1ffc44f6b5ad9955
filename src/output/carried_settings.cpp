#include "output/carried_settings.h"

#include <array>
#include <cstddef>
#include <cstring>

#include "job/output_buffer.h"
#include "job/status.h"
#include "output/block.h"
#include "output/byte_writer.h"

namespace rlx {

namespace {

struct Slot {
  std::uint8_t length = 0;
  std::array<std::uint8_t, kSlotBytes> bytes;
};

struct CarriedSettings {
  std::array<Slot, kSlotCount> slots;
  OutputBuffer* general = nullptr;
};

CarriedSettings carried;

/// Where a command's sequence goes: a slot number from 1 on, the general buffer or nowhere.

void keep_in_general(std::int32_t count, const std::uint8_t* bytes) {
  OutputBuffer& general = *carried.general;
  if (count < 1 || count > kPageBufferBytes - general.length) {
    return;
  }
  std::memcpy(general.bytes.data() + general.length, bytes, static_cast<std::size_t>(count));
  general.length += count;
}

std::int32_t kept_bytes() {
  std::int32_t sum = carried.general->length;
  for (const Slot& slot : carried.slots) {
    sum += slot.length;
  }
  return sum;
}

}  // namespace

int allocate_carried_settings() {
  free_carried_settings();
  carried.general = allocate_output_buffer();
  return carried.general == nullptr ? kExitFailure : ST_OK;
}

void free_carried_settings() {
  free_output_buffer(carried.general);
  carried.general = nullptr;
}

void keep_in_slot(int slot, std::int32_t count, const std::uint8_t* bytes) {
  if (count < 0 || count > kSlotBytes) {
    return;
  }
  Slot& kept = carried.slots[static_cast<std::size_t>(slot - 1)];
  kept.length = static_cast<std::uint8_t>(count);
  std::memcpy(kept.bytes.data(), bytes, static_cast<std::size_t>(count));
}

int keep_setting(std::uint32_t command, std::int32_t count, const std::uint8_t* bytes) {
  const int place = place_of_setting(command, count, bytes);
  if (place == kKeptInGeneralBuffer) {
    keep_in_general(count, bytes);
  } else if (place != kKeptNowhere) {
    keep_in_slot(place, count, bytes);
  }
  return ST_OK;
}

int out_kept_settings() {
  const std::int32_t sum = kept_bytes();
  if (sum == 0) {
    return ST_OK;
  }
  int status = out_block_header(BlockKind::carried, sum);
  if (status == ST_OK) {
    status = out_bytes(carried.general->length, carried.general->bytes.data());
  }
  for (std::size_t i = 0; i < kSlotCount && status == ST_OK; ++i) {
    status = out_bytes(carried.slots[i].length, carried.slots[i].bytes.data());
  }
  if (status == ST_OK) {
    reset_carried_settings();
  }
  return status;
}

void reset_carried_settings() {
  for (Slot& slot : carried.slots) {
    slot.length = 0;
  }
  if (carried.general != nullptr) {
    carried.general->length = 0;
  }
}

}  // namespace rlx
