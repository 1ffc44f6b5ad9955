#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "job/bytes.h"
#include "job/command_record.h"

namespace rlx {

// Which command's sequence is carried in which place.

/// Number of slots; they are written in the order of their numbers.
inline constexpr std::size_t kSlotCount = 12;
/// The places that are no slot, far from the slots, so that neither is taken for the other.
inline constexpr int kKeptNowhere = 0;
inline constexpr int kKeptInGeneralBuffer = 100;

namespace detail {

/// In the index: FS "(" has two settings, told apart by the third byte.
inline constexpr int kByThirdByte = 101;

struct PlaceRow {
  std::uint32_t command;
  int place;
};

inline constexpr auto kPlaces = std::to_array({
    PlaceRow{CMD_ESC_DOLLAR_AT, 1},
    PlaceRow{CMD_ESC_PAREN_H, 1},
    PlaceRow{CMD_FS_J, 2},
    PlaceRow{CMD_FS_K, 2},
    PlaceRow{CMD_CSI_SP_E, 5},
    PlaceRow{CMD_Q_YL_SP, 6},
    PlaceRow{CMD_Q_FL_EX, 7},
    PlaceRow{CMD_Q_PL_SP, 8},
    PlaceRow{CMD_Q_E_SL, 9},
    PlaceRow{CMD_Q_F_SL, 10},
    PlaceRow{CMD_Q_G_SL, 11},
    PlaceRow{CMD_FS_PERCENT, 12},
    PlaceRow{CMD_FS_DOLLAR, kKeptInGeneralBuffer},
    PlaceRow{CMD_FS_AMP, kKeptInGeneralBuffer},
    PlaceRow{CMD_FS_STAR, kKeptInGeneralBuffer},
    PlaceRow{CMD_Q_R_EX, kKeptInGeneralBuffer},
    PlaceRow{CMD_FS_PAREN, kByThirdByte},
});

inline constexpr int kGraveSlot = 3;
inline constexpr int kSmallASlot = 4;

constexpr bool is_slot(int place) {
  return place >= 1 && static_cast<std::size_t>(place) <= kSlotCount;
}

constexpr bool is_place(int place) {
  return is_slot(place) || place == kKeptInGeneralBuffer || place == kByThirdByte;
}

// Whoever notes slots has a bit for each.
static_assert(kSlotCount < 32);
static_assert(!is_slot(kKeptNowhere) && !is_slot(kKeptInGeneralBuffer) && !is_slot(kByThirdByte));
static_assert(is_slot(kGraveSlot) && is_slot(kSmallASlot));
static_assert(std::ranges::all_of(kPlaces, is_place, &PlaceRow::place),
              "a place is a slot up to kSlotCount, the general buffer or told by the third byte");

/// The place of a FS "(", by its third byte.
inline constexpr auto kPlaceByThirdByte = [] {
  std::array<std::uint8_t, 256> places{};
  places['`'] = kGraveSlot;
  places['a'] = kSmallASlot;
  return places;
}();

/// Highest command that is kept, for the index below.
inline constexpr std::size_t kIndexSize = CMD_Q_G_SL + 1;

static_assert(kKeptNowhere == 0);
inline constexpr auto kPlaceIndex = [] {
  std::array<std::uint8_t, kIndexSize> index{};
  for (const PlaceRow& row : kPlaces) {
    index[row.command] = static_cast<std::uint8_t>(row.place);
  }
  return index;
}();

}  // namespace detail

/// Where a sequence is kept: the number of a slot, kKeptInGeneralBuffer or kKeptNowhere.
/// @param command   code of the command that the sequence belongs to.
/// @param sequence  its third byte tells settings of FS "(" apart.
inline int place_of_setting(std::uint32_t command, Bytes sequence) {
  const int place = command < detail::kIndexSize ? detail::kPlaceIndex[command] : kKeptNowhere;
  // Looked up for every command: that costs less than a branch that no processor can predict.
  const int by_third_byte = sequence.size() > 2 ? detail::kPlaceByThirdByte[sequence[2]] : 0;
  return place == detail::kByThirdByte ? by_third_byte : place;
}

}  // namespace rlx
