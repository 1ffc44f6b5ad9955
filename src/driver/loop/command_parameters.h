#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "job/command_record.h"
#include "job/settings.h"

namespace rlx {

// Parameters of the commands that the main loop itself understands. A parameter text is what stands
// from the third byte of a command up to "!" (or the command's end).

/// The parameter text of a command.
std::string_view parameter_text(const CommandRecord& record);

/// Command 479: whether its parameter resets the line unit. True for an empty one, and for up to
/// seven digits (leading zeros not counted) with a value below 5.
bool resets_line_unit(std::string_view parameter);

/// Command 492, on and off: up to five fields separated by ";", each empty, "0" or "1" (with
/// leading zeros).
/// @param state  becomes the value of the first field, 0 when it is empty; unchanged on -1.
/// @return 1 when the state changed, 0 when not, -1 for any other parameter.
int parse_command_492(std::string_view parameter, int& state);

/// Command 489, resolution switch: 240 or 400 (leading zeros allowed) choose the fonts of that
/// resolution, an empty parameter those of `resolution`; any other value nothing.
/// @return true when JobState::high_resolution_fonts changed.
bool switch_resolution(std::string_view parameter, std::int32_t resolution, JobState& job);

/// Command 500, form parameter: "6;" (leading zeros allowed), anything up to the letter "o", then a
/// kind byte (1, 2 or 3), a length of four bytes, most significant first, and the data. Sets the
/// form source (unless the command line gave it), the spacing index and the form flag of a settings
/// record; a length up to kMaxFormData copies the data, a longer one clears the length.
/// @return true when the data was taken. A command of another shape, or one whose data is shorter
/// than its length says, sets nothing.
bool parse_form_parameter(const CommandRecord& command, int capability_g, SettingsRecord& settings);

/// The names that a form name command (command 483) brings: as it stands in its columns, and its
/// letters and digits alone. NUL-terminated.
struct FormName {
  std::array<char, 10> as_given{};
  std::array<char, 10> letters_and_digits{};
};

/// Command 483, form name command. Its columns are in support/condition_columns.h.
FormName parse_form_name(const CommandRecord& record);

}  // namespace rlx
