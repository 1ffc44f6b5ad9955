// Proof sheets, from any stream up to what is drawn: no sheet holds what is not on its paper, what
// is clipped or cannot be drawn is counted, and the sheets are those of the form feeds.
//
// Input: a stream of blocks or frames. Nothing is drawn.

#include <cmath>
#include <set>

#include "harness.h"
#include "rlx_reader/job_contents.h"
#include "rlx_reader/job_reader.h"
#include "rlxproof/layout.h"
#include "rlxproof/margins.h"

namespace rlx::fuzzing {
namespace {

using proof::Cell;
using proof::Sheet;
using proof::Side;

/// What edges may differ by and still be the same, in points.
constexpr double kHair = 0.02;
constexpr const char* kBeyond = "character beyond the paper";

/// Counts of a sheet's note.
class NoteCounts {
 public:
  explicit NoteCounts(const proof::Note& note) {
    // "something else" is one more, and characters are of four kinds.
    require(note.entries().size() <= proof::Note::kMostKinds + 5, "kinds in a note");
    std::set<std::string> kinds;
    for (const proof::Note::Entry& entry : note.entries()) {
      require(entry.count != 0 && !entry.what.empty(), "an entry of a note");
      require(kinds.insert(entry.what).second, "a kind that is noted twice");
      all += entry.count;
      clipped += entry.what == kBeyond ? entry.count : 0;
    }
  }

  std::uint64_t all = 0;
  std::uint64_t clipped = 0;
};

/// Looks at each sheet, and at the order in which they come.
class CheckedSheets : public proof::SheetVisitor {
 public:
  void sheet(const Sheet& sheet) override {
    check_order(sheet);
    check_side(sheet);
    check_lines(sheet);
    check_cells(sheet);
    require(!heading_of(sheet, "job").empty(), "a heading");
    ++sheets;
    page_ = sheet.page;
    number_ = sheet.number;
  }
  void fault(const reader::Fault& /*fault*/) override { ++faults; }

  std::uint64_t sheets = 0;
  std::uint64_t faults = 0;

 private:
  void check_order(const Sheet& sheet) const {
    const bool same_page = sheet.page == page_ && sheet.number == number_ + 1;
    require(same_page || (sheet.page > page_ && sheet.number == 1), "page and number of a sheet");
    require(sheet.page != 0, "a sheet without a page");
  }

  static void check_side(const Sheet& sheet) {
    require((sheet.side == Side::only) == !sheet.settings.duplex, "the side of a sheet");
  }

  static void check_lines(const Sheet& sheet) {
    std::uint64_t last = 0;
    for (const proof::Line& line : sheet.lines) {
      require(line.top >= 0 && line.top < sheet.settings.height(), "a line beyond the paper");
      require(std::isfinite(line.height) && line.height > 0, "the height of a line");
      require(line.number == 0 || line.number > last, "the number of a line");
      last = std::max(last, line.number);
    }
  }

  /// @return true when the paper holds all of the cell.
  static bool check_cell(const Sheet& sheet, const Cell& cell) {
    const double right = sheet.settings.width();
    const double lower = sheet.settings.height();
    require(cell.x >= 0 && cell.x < right && cell.top >= 0 && cell.top < lower,
            "a character beyond the paper");
    require(std::isfinite(cell.width) && cell.width > 0, "the width of a cell");
    require(std::isfinite(cell.height) && cell.height > 0, "the height of a cell");
    require(cell.top + cell.height <= sheet.lowest, "the lowest edge");
    if (cell.glyph != nullptr) {
      const std::size_t rows = cell.glyph->rows;
      require(cell.is_double, "a narrow glyph");
      require(cell.glyph->dots.size() == rows * ((rows + 7) / 8), "the dots of a glyph");
    }
    return cell.x + cell.width <= right + kHair && cell.top + cell.height <= lower + kHair;
  }

  static void check_cells(const Sheet& sheet) {
    const NoteCounts note(sheet.note);
    std::uint64_t cut = 0;
    std::uint64_t boxes = 0;
    for (const Cell& cell : sheet.cells) {
      cut += check_cell(sheet, cell) ? 0U : 1U;
      boxes += cell.glyph == nullptr && cell.character == proof::kNoCharacter ? 1U : 0U;
    }
    require(cut <= note.clipped, "a character that is clipped and not noted");
    require(boxes <= note.all, "a box that is not noted");
    require(sheet.column_width > 0, "the width of a column");
  }

  std::uint64_t page_ = 0;
  std::uint64_t number_ = 0;
};

/// Counts what makes sheets, as the dump of a job shows it.
class SheetMakers : public reader::ContentVisitor {
 public:
  void token(reader::Place place, const reader::Token& token) override {
    constexpr std::uint8_t kFormFeed = 0x0c;
    const bool feeds = token.kind == reader::TokenKind::control && token.bytes[0] == kFormFeed;
    form_feeds += place == reader::Place::page_data && feeds ? 1 : 0;
  }
  void begin_block(const reader::Block& block) override {
    pages += block.use == reader::BlockUse::first_data ? 1 : 0;
    job_starts += block.use == reader::BlockUse::job_start ? 1 : 0;
    job_ends += block.use == reader::BlockUse::job_end ? 1 : 0;
  }
  void fault(const reader::Fault& /*fault*/) override { ++faults; }

  std::uint64_t form_feeds = 0;
  std::uint64_t pages = 0;
  std::uint64_t job_starts = 0;
  std::uint64_t job_ends = 0;
  std::uint64_t faults = 0;
};

/// Each form feed ends a sheet, and so may the end of a page and of a job.
void require_sheets(const CheckedSheets& found, const SheetMakers& makers) {
  require(found.faults == makers.faults, "faults of a proof and of a dump");
  require(found.sheets >= makers.form_feeds, "a form feed without a sheet");
  const std::uint64_t ends = makers.pages + makers.job_starts + makers.job_ends + 1;
  require(found.sheets <= makers.form_feeds + ends, "a sheet that nothing ends");
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  constexpr std::size_t kMostBytes = 200000;
  const ExactBytes exact({reinterpret_cast<const char*>(data), std::min(size, kMostBytes)});
  const rlx::reader::Bytes stream(exact.begin(), exact.end());
  CheckedSheets sheets;
  rlx::proof::Layout layout(sheets);
  rlx::reader::MemoryInput input(stream);
  rlx::reader::read_jobs(input, layout);
  layout.finish();
  SheetMakers makers;
  rlx::reader::MemoryInput again(stream);
  rlx::reader::read_contents(again, makers);
  require_sheets(sheets, makers);
  return 0;
}
