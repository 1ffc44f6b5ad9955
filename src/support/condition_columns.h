#pragma once

#include <cstddef>
#include <cstdint>

#include "job/command_record.h"

namespace rlx {

// Print-condition commands have fixed columns. Positions count the command's bytes from ESC as 0.

/// The byte at a position of a record; a column behind the record's end reads as a blank.
inline std::uint8_t column_at(const CommandRecord& record, std::size_t position) {
  return position < static_cast<std::size_t>(record.length) ? record.bytes[position]
                                                            : std::uint8_t{' '};
}

/// decimal_value of `width` columns of a record from `position` on.
std::int32_t decimal_column(const CommandRecord& record, std::size_t position, std::size_t width);

/// Columns of a print-condition command, counted from its layout digit.
struct Column {
  std::size_t offset;
  std::size_t width;
};

/// Largest data length of a print-condition command of the short kind, which names no form.
inline constexpr std::int32_t kShortCommandLength = 16;

/// The layout digit of a record with a form overlay of up to 8 characters.
inline constexpr std::uint8_t kLongOverlayLayout = '2';

/// Where things stand in a print-condition command (command 482):
///
///     ESC Q 1 ; <data length> SP n <2 bytes> <layout> <columns>
///     0   1 2 3 4             s  s+1         b = s+4
///
/// Positions count the record's bytes from ESC as 0. The columns behind `layout` are listed below.
struct CommandShape {
  /// Byte 4 is no blank: there is a data length. The other members are 0 when not.
  bool has_length = false;
  /// The decimal number at byte 4, as the record states it; 0 when there are no digits.
  std::int32_t data_length = 0;
  /// b, the position of the layout digit '0', '1' or '2', counted from the first blank behind byte
  /// 4; all other columns are counted from it.
  std::size_t layout = 0;
};

/// Finds the parts of a record. The record's end reads as a blank.
CommandShape command_shape(const CommandRecord& record);

/// The columns. job/print_conditions.h tells what each becomes. A record of the short kind has
/// those of the overlay, the counts and the form code alone.
namespace command_columns {

inline constexpr Column kFormOverlay{1, 4};
inline constexpr Column kLongFormOverlay{1, 8};  ///< in layout '2'
inline constexpr Column kOverlayCount{9, 3};
inline constexpr Column kCopies{12, 3};
/// The name of the form (forms/fcb_name.h); in layouts '0' and '1' it overlaps the counts.
inline constexpr Column kFcbName{11, 4};
inline constexpr Column kFcbNameLongOverlay{15, 4};  ///< in layout '2'
inline constexpr Column kFormCode{35, 4};
inline constexpr Column kOrientation{57, 2};
inline constexpr Column kPaperSize{59, 3};
inline constexpr Column kTray{62, 2};
inline constexpr Column kDuplex{66, 1};
inline constexpr Column kBindingMargin{73, 5};

/// The columns whose place depends on the orientation.
struct Binding {
  Column edge;
  Column mode;
  Column first_offset;
  Column second_offset;
};

inline constexpr Binding kPortraitBinding{{69, 1}, {70, 1}, {78, 5}, {83, 5}};
/// When the orientation begins with "L".
inline constexpr Binding kLandscapeBinding{{71, 1}, {72, 1}, {88, 5}, {93, 5}};

}  // namespace command_columns

}  // namespace rlx
