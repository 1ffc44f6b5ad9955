#pragma once

#include <array>

#include "job/command_record.h"
#include "job/status.h"
#include "support/messages.h"

namespace rlx {

/// The room of a form name that a print-condition command gives, with its NUL.
using FcbName = std::array<char, 5>;

/// The FCB name that a print-condition command gives: the four bytes from b + 15 on with layout
/// '2', from b + 11 on with any other, up to the first blank. Columns behind the record's end are
/// blanks, so a record that ends before the name gives the empty name.
/// @param name  set on success, to 0 to 4 letters and digits, NUL-terminated.
/// @return ST_OK; 1 after "FCB data error" on standard error when the record has no data length or
/// one of up to 16, or after "FCB name error" when another character stands in the name.
Status fcb_name_from_command(const Messages& messages, const CommandRecord& record, FcbName& name);

}  // namespace rlx
