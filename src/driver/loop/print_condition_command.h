#pragma once

#include "job/command_record.h"
#include "job/print_conditions.h"
#include "job/status.h"
#include "support/messages.h"

namespace rlx {

/// Fills `conditions` from a print-condition command (command 482), a sequence with counted data in
/// fixed columns:
///
///     ESC Q 1 ; 1 0 0 SP n . . 2 INVOICE1 ...
///     0   1 2 3 4     s        b
///
/// The number at byte 4, up to the first blank at position s, is the data length L; the first data
/// byte stands at s + 2, and b = s + 4 is the layout digit from which the columns are counted
/// (command_shape in support/condition_columns.h). A record whose L is 16 or less is short: only
/// the rows marked * are looked at, whatever the layout digit says.
///
///     columns         width  field            remark
///     b                   1  layout           '0', '1' or '2'
///     b + 1  to b + 4     4  form_overlay   * layouts 0 and 1, and short records
///     b + 1  to b + 8     8  form_overlay     layout 2
///     b + 9  to b + 11    3  overlay_count  * when it is 0 and there is an overlay: the copies
///     b + 12 to b + 14    3  copies         *
///     b + 11 to b + 14    4  the FCB name     layouts 0 and 1; not read here. That it lies over
///                                             the counts is deliberate: both are read
///     b + 15 to b + 18    4  the FCB name     layout 2; not read here
///     b + 35 to b + 38    4  form_code      *
///     b + 57, b + 58      2  orientation
///     b + 59 to b + 61    3  paper_size
///     b + 62, b + 63      2  tray
///     b + 66              1  duplex
///     b + 73 to b + 77    5  binding_margin
///
///     orientation "L..."   any other      width  field
///     b + 71               b + 69             1  binding_edge
///     b + 72               b + 70             1  binding_mode
///     b + 88 to b + 92     b + 78 to b + 82   5  first_offset
///     b + 93 to b + 97     b + 83 to b + 87   5  second_offset
///
/// Texts keep only the letters and digits of their columns. Numbers are decimal, blanks in front
/// of them and junk behind them allowed; no digits are 0. Columns behind the record's end are
/// blanks.
///
/// All fields are cleared first. A record whose L is above 16 and whose layout is none of the three
/// leaves them so, which is no error.
///
/// @return ST_OK; ST_FAILED after "FCB data error" on standard error when byte 4 is a blank.
Status parse_print_condition_command(const Messages& messages, const CommandRecord& record,
                                     PrintConditions& conditions);

}  // namespace rlx
