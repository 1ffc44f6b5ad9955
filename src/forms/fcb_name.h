#pragma once

#include <cstddef>
#include <cstdint>

#include "job/command_record.h"

namespace rlx {

/// Largest data length of a print-condition record of the short kind, which names no form.
inline constexpr std::int32_t kShortRecordLength = 16;

/// Where things stand in a print-condition record (command 482):
///
///     ESC Q 1 ; <data length> SP n <2 bytes> <layout> <columns>
///     0   1 2 3 4             s  s+1         b = s+4
///
/// Positions count the record's bytes from ESC as 0. The columns that `layout` begins are listed in
/// driver/print_condition_record.h.
struct RecordShape {
  /// Byte 4 is no blank: there is a data length. The other members are 0 when not.
  bool has_length = false;
  /// The decimal number at byte 4, as the record states it; 0 when there are no digits.
  std::int32_t data_length = 0;
  /// b, the position of the layout digit '0', '1' or '2', counted from the first blank behind byte
  /// 4; all other columns are counted from it.
  std::size_t layout = 0;
};

/// Finds them. The record's end reads as a blank.
RecordShape record_shape(const CommandRecord& record);

/// The FCB name that a print-condition record gives: the four bytes from b + 15 on with layout '2',
/// from b + 11 on with any other, up to the first blank. Columns behind the record's end are
/// blanks, so a record that ends before the name gives the empty name.
/// @param name  set on success, to 0 to 4 letters and digits, NUL-terminated, in a buffer that the
///              next call overwrites.
/// @return 0; 1 after "FCB data error" on standard error when the record has no data length or one
/// of up to 16, or after "FCB name error" when another character stands in the name.
int fcb_name_from_record(const CommandRecord& record, const char*& name);

}  // namespace rlx
