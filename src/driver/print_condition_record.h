#pragma once

#include "job/command_record.h"

namespace rlx {

/// Fills `print_conditions` from a print-condition record (command 482), a sequence with counted
/// data in fixed columns:
///
///     ESC Q 1 ; 1 0 0 SP n . . 2 INVOICE1 ...
///     0   1 2 3 4     s        b
///
/// The number at byte 4, up to the first blank at position s, is the data length L; the first data
/// byte stands at s + 2, and b = s + 4 is the layout digit from which the columns are counted
/// (record_shape in forms/fcb_name.h). In a record of up to 16 (by L) only the rows marked * are
/// looked at, whatever the layout digit says.
///
///     columns         width  field                  remark
///     b                   1  layout                 '0', '1' or '2'
///     b + 1  to b + 4     4  condition_form_name    * layouts 0 and 1, and short records
///     b + 1  to b + 8     8  condition_form_name    layout 2
///     b + 9  to b + 11    3  condition_count_a      * when it is 0 and there is a form name: count
///                                                   b instead
///     b + 12 to b + 14    3  condition_count_b      *
///     b + 11 to b + 14    4  the FCB name           layouts 0 and 1; not read here. Deliberate: it
///                                                   overlaps the counts, both are read
///     b + 15 to b + 18    4  the FCB name           layout 2; not read here
///     b + 35 to b + 38    4  condition_code_4       *
///     b + 57, b + 58      2  condition_code_2
///     b + 59 to b + 61    3  condition_code_3
///     b + 62, b + 63      2  condition_code_2b
///     b + 66              1  condition_flag_3
///     b + 73 to b + 77    5  condition_value_3
///
///     code 2 begins with "L"      any other
///     b + 71                      b + 69              1  condition_flag_1
///     b + 72                      b + 70              1  condition_flag_2
///     b + 88 to b + 92            b + 78 to b + 82    5  condition_value_1
///     b + 93 to b + 97            b + 83 to b + 87    5  condition_value_2
///
/// Texts keep only the letters and digits of their columns. Numbers are decimal, blanks in front
/// of them and junk behind them allowed; no digits are 0. Columns behind the record's end are
/// blanks.
///
/// All fields are cleared first. A record whose L is above 16 and whose layout is none of the three
/// leaves them so, which is no error.
///
/// @return 0; 1 after "FCB data error" on standard error when byte 4 is a blank.
int parse_print_condition_record(const CommandRecord& record);

}  // namespace rlx
