#include "mapping/condition_command.h"

#include <string_view>

namespace rlx::spooler {

namespace {

/// Offsets of the columns from the layout digit.
constexpr std::size_t kCopiesColumn = 12;
constexpr std::size_t kOrientationColumn = 57;
constexpr std::size_t kPaperColumn = 59;
constexpr std::size_t kTrayColumn = 62;
constexpr std::size_t kDuplexColumn = 66;
constexpr std::size_t kColumns = 98;

/// Three columns stand elsewhere when the page lies on its side.
struct TurnedColumns {
  std::size_t binding_edge;
  std::size_t first_offset;
  std::size_t second_offset;
};
constexpr TurnedColumns kUpright{69, 78, 83};
constexpr TurnedColumns kLandscape{71, 88, 93};

constexpr std::size_t kCountDigits = 3;
constexpr std::size_t kOffsetDigits = 5;

std::string_view name_of(Paper paper) {
  switch (paper) {
    case Paper::a3:
      return "A3";
    case Paper::a4:
      return "A4";
    case Paper::a5:
      return "A5";
    case Paper::b4:
      return "B4";
    case Paper::b5:
      return "B5";
    case Paper::letter:
      return "LTR";
    case Paper::unset:
      break;
  }
  return "";
}

std::string_view name_of(Tray tray) {
  switch (tray) {
    case Tray::automatic:
      return "P";
    case Tray::tray_1:
      return "P1";
    case Tray::tray_2:
      return "P2";
    case Tray::tray_3:
      return "P3";
    case Tray::tray_4:
      return "P4";
    case Tray::unset:
      break;
  }
  return "";
}

std::string_view name_of(Orientation orientation) {
  switch (orientation) {
    case Orientation::upright:
      return "P";
    case Orientation::landscape:
      return "L";
    case Orientation::unset:
      break;
  }
  return "";
}

/// The edge that a reader sees the sheets bound at: U, the upper one, or L, the left one. The long
/// edge of a page that lies on its side is the upper one.
std::string_view binding_edge(const JobSettings& settings) {
  const bool long_edge_is_left = settings.orientation != Orientation::landscape;
  return (settings.sides == Sides::two_long_edge) == long_edge_is_left ? "L" : "U";
}

bool is_two_sided(const JobSettings& settings) {
  return settings.sides == Sides::two_long_edge || settings.sides == Sides::two_short_edge;
}

void put(std::string& columns, std::size_t column, std::string_view text) {
  columns.replace(column, text.size(), text);
}

/// A number at the right of its column; blanks where it is 0.
void put_number(std::string& columns, std::size_t column, std::size_t digits, unsigned number) {
  if (number != 0) {
    const std::string text = std::to_string(number);
    put(columns, column + digits - text.size(), text);
  }
}

void put_sides(std::string& columns, const TurnedColumns& turned, const JobSettings& settings) {
  if (is_two_sided(settings)) {
    put(columns, kDuplexColumn, "B");
    put(columns, turned.binding_edge, binding_edge(settings));
  }
}

}  // namespace

std::string condition_command(const JobSettings& settings, unsigned copies) {
  const TurnedColumns& turned =
      settings.orientation == Orientation::landscape ? kLandscape : kUpright;
  std::string columns(kColumns, ' ');
  put_number(columns, kCopiesColumn, kCountDigits, copies > 1 ? copies : 0);
  put(columns, kOrientationColumn, name_of(settings.orientation));
  put(columns, kPaperColumn, name_of(settings.paper));
  put(columns, kTrayColumn, name_of(settings.tray));
  put_sides(columns, turned, settings);
  put_number(columns, turned.first_offset, kOffsetDigits, settings.page_offset_x);
  put_number(columns, turned.second_offset, kOffsetDigits, settings.page_offset_y);
  if (columns.find_first_not_of(' ') == std::string::npos) {
    return {};
  }
  columns.front() = '2';
  constexpr std::string_view kFreeBytes = "  ";
  return "\033Q1;" + std::to_string(kFreeBytes.size() + kColumns) + " n" + std::string(kFreeBytes) +
         columns;
}

}  // namespace rlx::spooler
