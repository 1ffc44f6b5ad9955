#pragma once

#include <cstdint>
#include <string>

#include "rlx_reader/job_contents.h"
#include "rlxdump/output.h"

namespace rlx::dump {

/// Writes a line for each page: its number, the bytes of its data, its lines that have text, and
/// the first words.
class PageList : public reader::ContentVisitor {
 public:
  PageList(Output& output, const Painter& painter) : output_(output), painter_(painter) {}

  void section(const reader::Section& section) override;
  void begin_page() override { has_data_ = true; }
  void token(reader::Place place, const reader::Token& token) override;

  /// Writes the last page.
  void finish();

 private:
  void out_page();
  void add_text(reader::Bytes text);

  Output& output_;
  const Painter& painter_;
  std::uint64_t page_ = 0;
  bool has_data_ = false;
  std::uint64_t bytes_ = 0;
  std::uint64_t lines_ = 0;
  bool line_has_text_ = false;
  std::string words_;
  bool word_ended_ = false;
};

}  // namespace rlx::dump
