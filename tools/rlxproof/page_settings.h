#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "rlx_reader/byte_input.h"
#include "rlxproof/paper.h"

namespace rlx::proof {

/// What page headers say about the sheets behind them. Texts are empty, and lengths 0, when nothing
/// was said.
struct PageSettings {
  const Paper* paper = &default_paper();
  bool paper_is_unknown = false;  ///< another paper was asked for; A4 stands for it
  bool landscape = false;
  std::string tray;  ///< "1" to "4", "any"
  std::string copies;
  std::string overlay;
  std::string overlay_count;
  std::string form_code;
  double form_length = 0;  ///< points
  bool duplex = false;
  bool binding_is_upper = false;
  double binding_margin = 0;          ///< points
  std::optional<double> left;         ///< first offset, points
  std::optional<double> top;          ///< second offset, points
  std::uint64_t duplex_switches = 0;  ///< how often duplex or simplex was selected

  double width() const { return landscape ? paper->height : paper->width; }
  double height() const { return landscape ? paper->width : paper->height; }
};

/// What page data set for text, and lose at the end of a data block. Lengths are in points.
struct TextSettings {
  double line_pitch = 12;
  double character_pitch = 7.2;
  std::optional<double> double_pitch;  ///< none: twice the character pitch
  std::uint64_t spacing = 0;           ///< as FS "&" says it; 0 when it does not
  double unit = kPointsPerUnit;        ///< of positions
  double across = 1;                   ///< reduction of what is counted from the left edge
  double down = 1;                     ///< reduction of what is counted from the top

  double single_cell() const { return character_pitch * across; }
  double double_cell() const { return double_pitch.value_or(2 * character_pitch) * across; }
};

/// Takes the lines of a job parameter text, KEY=VALUE each. Keys without a meaning for the sheet
/// and malformed lines change nothing.
void apply_parameters(std::string_view text, PageSettings& page);

/// Takes a sequence of a page format or page setup that says something about the sheet.
/// @return false when it is none of those; nothing has changed then.
bool apply_page_sequence(reader::Bytes sequence, PageSettings& page);

/// Takes a sequence that sets something for text, in page data, carried settings or page headers.
/// @return false when it is none of those, or its value cannot be used; nothing has changed then.
bool apply_text_sequence(reader::Bytes sequence, TextSettings& text);

}  // namespace rlx::proof
