#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rlx_reader/job_reader.h"
#include "rlxproof/layout.h"
#include "support/printer_blocks.h"

namespace rlx::proof {

/// Keeps the sheets and faults of a job.
class KeptSheets : public SheetVisitor {
 public:
  void sheet(const Sheet& sheet) override { sheets.push_back(sheet); }
  void fault(const reader::Fault& fault) override { faults.push_back(fault); }

  std::vector<Sheet> sheets;
  std::vector<reader::Fault> faults;
};

/// Lays out a stream of jobs or frames.
inline KeptSheets lay_out(std::string_view job) {
  KeptSheets kept;
  Layout layout(kept);
  reader::MemoryInput input(
      reader::Bytes(reinterpret_cast<const std::uint8_t*>(job.data()), job.size()));
  read_jobs(input, layout);
  layout.finish();
  return kept;
}

/// A job of one page, with its data in one block.
inline std::string one_page(std::string_view data, const std::string& format = {},
                            const std::string& setup = {}) {
  return testing::kFirstParameters + testing::kJobStart + testing::kFirstDensity +
         (format.empty() ? std::string() : testing::block('7', format)) +
         testing::block('9', testing::kUnit + setup) + testing::block('2', data) + testing::kJobEnd;
}

/// The first sheet of a job of one page.
inline Sheet first_sheet(std::string_view data, const std::string& format = {},
                         const std::string& setup = {}) {
  const KeptSheets kept = lay_out(one_page(data, format, setup));
  return kept.sheets.empty() ? Sheet() : kept.sheets.front();
}

/// The characters of a sheet in the order of the job; boxes are '?', glyphs '#', others above 7e
/// '*'.
inline std::string characters(const Sheet& sheet) {
  std::string text;
  for (const Cell& cell : sheet.cells) {
    const bool is_ascii = cell.character < 0x7f;
    text += cell.glyph != nullptr            ? '#'
            : cell.character == kNoCharacter ? '?'
            : is_ascii                       ? static_cast<char>(cell.character)
                                             : '*';
  }
  return text;
}

}  // namespace rlx::proof
