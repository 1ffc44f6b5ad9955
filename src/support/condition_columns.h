#pragma once

#include <cstddef>
#include <cstdint>

#include "job/command_record.h"

namespace rlx {

// The commands with fixed columns, and where in them everything stands: print-condition commands
// (482) and form name commands (483). Both have the shape
//
//     ESC Q 1 ; 1 0 0 SP n . . 2 INVOICE1 ...
//     0   1 2 3 4     s        b
//
// with "2" in place of the "1" for a form name command. Positions count the command's bytes from
// ESC as 0. The number at byte 4, up to the first blank at position s, is the length of the data,
// which begins at s + 2. The third byte of the data, at b = s + 4, is the layout digit; the columns
// are counted from it. A column behind the command's end reads as a blank.

/// The byte at a position of a command.
inline std::uint8_t column_at(const CommandRecord& record, std::size_t position) {
  return position < static_cast<std::size_t>(record.length) ? record.bytes[position]
                                                            : std::uint8_t{' '};
}

/// decimal_value of `width` columns of a command from `position` on.
std::int32_t decimal_column(const CommandRecord& record, std::size_t position, std::size_t width);

/// Columns, counted from the layout digit.
struct Column {
  std::size_t offset;
  std::size_t width;
};

/// Largest data length of a print-condition command of the short kind, which names no form.
inline constexpr std::int32_t kShortCommandLength = 16;

/// The layout digit of a print-condition command with a form overlay of up to 8 characters.
inline constexpr std::uint8_t kLongOverlayLayout = '2';
/// The layout digit of a form name command whose name has four characters.
inline constexpr std::uint8_t kShortNameLayout = '0';

/// The position b of the layout digit, whether or not there is a data length.
std::size_t layout_position(const CommandRecord& record);

/// The parts of a print-condition command.
struct CommandShape {
  /// Byte 4 is no blank: there is a data length. The other members are 0 when not.
  bool has_length = false;
  /// The decimal number at byte 4, as the command states it; 0 when there are no digits.
  std::int32_t data_length = 0;
  /// b, the position of the layout digit '0', '1' or '2'.
  std::size_t layout = 0;
};

/// Finds the parts of a print-condition command.
CommandShape command_shape(const CommandRecord& record);

/// The columns. job/print_conditions.h tells what each becomes.
namespace command_columns {

// Of a print-condition command. One of the short kind has those of the overlay, the counts and the
// form code alone, with the overlay of layouts '0' and '1' whatever its layout digit is.

inline constexpr Column kFormOverlay{1, 4};
inline constexpr Column kLongFormOverlay{1, 8};  ///< in layout '2'
inline constexpr Column kOverlayCount{9, 3};
inline constexpr Column kCopies{12, 3};
/// The name of the form (forms/fcb_name.h). In layouts '0' and '1' it lies over the counts, which
/// is deliberate: both are read.
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

// Of a form name command.

inline constexpr Column kShortName{7, 4};  ///< in layout '0'
inline constexpr Column kName{7, 8};

}  // namespace command_columns

}  // namespace rlx
