#pragma once

#include <cstddef>
#include <cstdint>

#include "job/command_record.h"

namespace rlx {

// Print-condition records have fixed columns. Positions count the command's bytes from ESC as 0.

/// The byte at a position of a record; a column behind the record's end reads as a blank.
inline std::uint8_t column_at(const CommandRecord& record, std::size_t position) {
  return position < static_cast<std::size_t>(record.length) ? record.bytes[position]
                                                            : std::uint8_t{' '};
}

/// decimal_value of `width` columns of a record from `position` on.
std::int32_t decimal_column(const CommandRecord& record, std::size_t position, std::size_t width);

}  // namespace rlx
