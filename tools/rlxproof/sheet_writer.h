#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>

#include "rlx_reader/page_data.h"
#include "rlxproof/sheet.h"

namespace rlx::proof {

/// Puts the tokens of page data in their places on sheets, as docs/rlx.md, section 14, settles it,
/// and hands on each sheet when it is complete. Keeps one sheet.
class SheetWriter : public reader::TokenVisitor {
 public:
  /// What the last sheet was, and what the next one follows.
  struct Numbers {
    std::uint64_t page = 1;
    std::uint64_t sheets = 0;  ///< of that page
  };

  /// @param page  what the page headers have said; looked at whenever a sheet begins.
  /// @param numbers  those of the sheets before, so that no two sheets have the same.
  SheetWriter(const PageSettings& page, SheetVisitor& visitor, const Numbers& numbers)
      : page_(page), visitor_(visitor), numbers_(numbers) {}

  /// A page begins, on a new sheet. What is on the sheet before is handed on. In a broken job
  /// sheets of the page may stand in front of it.
  void begin_page(std::uint64_t number);

  /// From here on every form feed ends a page, too.
  void take_sheets_as_pages() { sheets_are_pages_ = true; }

  const Numbers& numbers() const { return numbers_; }

  /// A form feed: hands on the sheet, an empty one too.
  void feed_sheet();

  /// Nothing follows on this sheet: it is handed on if there is something on it, else dropped.
  void end_sheet();

  /// A token of the page data.
  void token(const reader::Token& token) override;

  /// A sequence of a page header or of carried settings. One that means nothing here is left out.
  void set_lasting(reader::Bytes sequence);

  /// A data block ends: what was set in it no longer holds.
  void forget() { text_ = lasting_; }

  /// Counts something that the sheet does not show.
  void note(const std::string& what);

 private:
  void open();
  Side next_side();
  void start_line(double top, std::uint64_t number);
  void begin_line();
  void change_height();

  void write_single(reader::Bytes bytes);
  void write_codes(reader::Bytes bytes);
  void write_code(std::uint8_t first, std::uint8_t second);
  void write_double(reader::Bytes bytes);
  void write_invalid(reader::Bytes bytes);
  void control(std::uint8_t byte);
  void sequence(reader::Bytes bytes);
  bool move(reader::Bytes bytes);
  bool select_set(reader::Bytes bytes);
  void place(char32_t character, bool is_double,
             std::shared_ptr<const reader::Glyph> glyph = nullptr);
  void put(Cell cell);
  void tabulate();

  const PageSettings& page_;
  SheetVisitor& visitor_;

  Sheet sheet_;
  bool is_open_ = false;
  bool has_content_ = false;
  Numbers numbers_;
  bool sheets_are_pages_ = false;
  std::uint64_t duplex_switches_ = 0;
  bool next_is_back_ = false;

  TextSettings text_;
  TextSettings lasting_;

  double x_ = 0;
  double line_top_ = 0;
  double line_height_ = 0;
  bool line_has_begun_ = false;
  std::uint64_t line_number_ = 0;

  bool download_set_ = false;
  std::optional<std::uint8_t> first_of_code_;
  std::map<std::array<std::uint8_t, 2>, std::shared_ptr<const reader::Glyph>> glyphs_;
};

}  // namespace rlx::proof
