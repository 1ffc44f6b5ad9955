#include "fcbcheck/layout.h"

#include "fcbcheck/text.h"
#include "job/units.h"

namespace rlx::fcbcheck {

namespace {

void add_to_runs(std::vector<LineRun>& runs, const LineBox& line) {
  if (runs.empty() || runs.back().lines_per_inch != line.lines_per_inch) {
    runs.push_back(
        {.count = 0, .top = line.top, .height = 0, .lines_per_inch = line.lines_per_inch});
  }
  ++runs.back().count;
  runs.back().height += line.height;
}

}  // namespace

std::string Layout::summary() const {
  return inches(length) + " in, " + counted(static_cast<std::int64_t>(lines.size()), "line") +
         ", printing starts on line " + std::to_string(top_line);
}

Layout lay_out(const std::string& name, const FcbTable& table) {
  Layout layout;
  layout.name = name;
  layout.length = table.form_halfinch * kUnitsPerHalfInch;
  layout.top_line = table.top_line;
  for (const std::uint32_t lines_per_inch : table.lpi) {
    if (lines_per_inch == 0) {
      break;
    }
    const LineBox line{.number = static_cast<std::int32_t>(layout.lines.size()) + 1,
                       .top = layout.lines_bottom(),
                       .height = kUnitsPerInch / static_cast<std::int32_t>(lines_per_inch),
                       .lines_per_inch = lines_per_inch};
    layout.lines.push_back(line);
    add_to_runs(layout.runs, line);
  }
  return layout;
}

}  // namespace rlx::fcbcheck
