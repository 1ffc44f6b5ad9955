#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "rlx_reader/job_reader.h"
#include "rlx_reader/page_data.h"
#include "rlxproof/note.h"
#include "rlxproof/page_settings.h"

namespace rlx::proof {

/// Where a line's text stands: so much of its height below its top.
inline constexpr double kBaseline = 0.8;

/// Stands in a cell for what cannot be drawn: an empty box.
inline constexpr char32_t kNoCharacter = 0xffffffff;

/// A character or glyph in its place. All lengths are in points, from the paper's upper left
/// corner.
struct Cell {
  double x = 0;
  double top = 0;  ///< of its line
  double width = 0;
  double height = 0;  ///< of its line
  char32_t character = 0;
  bool is_double = false;
  std::shared_ptr<const reader::Glyph> glyph;  ///< when it is one

  double baseline() const { return top + kBaseline * height; }
};

/// A line that the job came to.
struct Line {
  double top = 0;
  double height = 0;
  std::uint64_t number = 0;  ///< from 1; 0 for a line that a position led to
};

enum class Side : std::uint8_t { only, front, back };

/// One side of paper with what stands on it.
struct Sheet {
  std::uint64_t page = 0;    ///< from 1
  std::uint64_t number = 1;  ///< within its page, from 1
  Side side = Side::only;
  PageSettings settings;
  double left = 0;            ///< x of the first column
  double top = 0;             ///< y of the first line
  double column_width = 0;    ///< of the first character; of the character pitch when there is none
  double down = 1;            ///< reduction down, where the sheet begins
  std::uint64_t spacing = 0;  ///< the last one that FS "&" set; 0 for none
  std::vector<Line> lines;    ///< those that begin on the paper, in the order of the job
  std::vector<Cell> cells;
  double lowest = 0;  ///< the lowest edge of a cell's line
  Note note;
};

class SheetVisitor {
 public:
  virtual ~SheetVisitor() = default;
  /// @param sheet  for the call only.
  virtual void sheet(const Sheet& sheet) = 0;
  /// Something is wrong with the job. What can be drawn of it is.
  virtual void fault(const reader::Fault& /*fault*/) {}
};

}  // namespace rlx::proof
