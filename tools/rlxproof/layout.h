#pragma once

#include <optional>
#include <string>
#include <utility>

#include "rlx_reader/job_reader.h"
#include "rlx_reader/page_data.h"
#include "rlxproof/sheet_writer.h"

namespace rlx::proof {

/// Lays out jobs: what a job reader finds becomes sheets, in their order. Keeps one sheet and the
/// downloaded glyphs; a job of any length fits.
class Layout : public reader::JobVisitor {
 public:
  explicit Layout(SheetVisitor& visitor);

  /// The stream has ended: what is on the last sheet is handed on.
  void finish();

  void begin_block(const reader::Block& block) override;
  void payload(const reader::Block& block, reader::Bytes part) override;
  void end_block(const reader::Block& block) override;
  void begin_page(std::uint64_t number, const reader::Block& block) override;
  void frame_data(const reader::Frame& frame, reader::Bytes part) override;
  void pass_through(std::uint64_t offset, reader::Bytes sequence) override;
  void fault(const reader::Fault& fault) override { visitor_.fault(fault); }

 private:
  /// Tokens of page headers and carried settings.
  class SettingTokens : public reader::TokenVisitor {
   public:
    explicit SettingTokens(Layout& layout) : layout_(layout) {}
    void token(const reader::Token& token) override;

   private:
    Layout& layout_;
  };

  void begin_job();
  void start_job();
  void end_job();

  SheetVisitor& visitor_;
  PageSettings page_;
  std::optional<SheetWriter> writer_;
  std::optional<reader::PageDataReader> data_;
  SettingTokens setting_tokens_;
  reader::PageDataReader settings_;
  std::string parameters_;
  std::string last_parameters_;
  bool has_started_ = false;
  bool is_framed_ = false;
  std::uint64_t framed_pages_ = 0;  ///< they stand before those that the reader counts
};

}  // namespace rlx::proof
