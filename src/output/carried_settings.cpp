#include "output/carried_settings.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <new>

#include "job/command_record.h"
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
constexpr int kNowhere = -1;
constexpr int kGeneral = 0;

struct PlaceRow {
  std::uint32_t command;
  int place;
};

constexpr std::array kPlaces{
    PlaceRow{CMD_ESC_DOLLAR_AT, 1}, PlaceRow{CMD_ESC_PAREN_H, 1}, PlaceRow{CMD_FS_J, 2},
    PlaceRow{CMD_FS_K, 2},          PlaceRow{CMD_CSI_SP_E, 5},    PlaceRow{CMD_Q_YL_SP, 6},
    PlaceRow{CMD_Q_FL_EX, 7},       PlaceRow{CMD_Q_PL_SP, 8},     PlaceRow{CMD_Q_E_SL, 9},
    PlaceRow{CMD_Q_F_SL, 10},       PlaceRow{CMD_Q_G_SL, 11},     PlaceRow{CMD_FS_PERCENT, 12},
    PlaceRow{CMD_FS_DOLLAR, 0},     PlaceRow{CMD_FS_AMP, 0},      PlaceRow{CMD_FS_STAR, 0},
    PlaceRow{CMD_Q_R_EX, 0},
};

constexpr int kGraveSlot = 3;
constexpr int kSmallASlot = 4;

/// FS "(" has two settings, told apart by the third byte.
int place_of_fs_paren(std::int32_t count, const std::uint8_t* bytes) {
  if (count < 3) {
    return kNowhere;
  }
  switch (bytes[2]) {
    case '`':
      return kGraveSlot;
    case 'a':
      return kSmallASlot;
    default:
      return kNowhere;
  }
}

/// Highest command that is kept, for the index below.
constexpr std::size_t kIndexSize = CMD_Q_G_SL + 1;

constexpr std::array<std::int8_t, kIndexSize> index_places() {
  std::array<std::int8_t, kIndexSize> index{};
  index.fill(kNowhere);
  for (const PlaceRow& row : kPlaces) {
    index[row.command] = static_cast<std::int8_t>(row.place);
  }
  return index;
}

constexpr std::array<std::int8_t, kIndexSize> kPlaceIndex = index_places();

int place_of(std::uint32_t command, std::int32_t count, const std::uint8_t* bytes) {
  if (command == CMD_FS_PAREN) {
    return place_of_fs_paren(count, bytes);
  }
  return command < kIndexSize ? kPlaceIndex[command] : kNowhere;
}

void keep_in_slot(Slot& slot, std::int32_t count, const std::uint8_t* bytes) {
  if (count < 0 || count > kSlotBytes) {
    return;
  }
  slot.length = static_cast<std::uint8_t>(count);
  std::memcpy(slot.bytes.data(), bytes, static_cast<std::size_t>(count));
}

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
  carried.general = new (std::nothrow) OutputBuffer;
  return carried.general == nullptr ? kExitFailure : ST_OK;
}

void free_carried_settings() {
  delete carried.general;
  carried.general = nullptr;
}

int keep_setting(std::uint32_t command, std::int32_t count, const std::uint8_t* bytes) {
  const int place = place_of(command, count, bytes);
  if (place == kGeneral) {
    keep_in_general(count, bytes);
  } else if (place != kNowhere) {
    keep_in_slot(carried.slots[static_cast<std::size_t>(place - 1)], count, bytes);
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
