#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "rlx_reader/job_contents.h"
#include "rlxdump/output.h"

namespace rlx::dump {

/// Writes a job as text: a line for each block, frame, job parameter and token, with its offset in
/// front; a separator in front of each page; the faults where they lie; and a summary.
class TextDump : public reader::ContentVisitor {
 public:
  TextDump(Output& output, const Painter& painter) : output_(output), painter_(painter) {}

  void section(const reader::Section& section) override;
  void begin_page() override { ++pages_; }
  void begin_block(const reader::Block& block) override;
  void frame(const reader::Frame& frame) override;
  void pass_through(std::uint64_t offset, reader::Bytes sequence) override;
  void outside(std::uint64_t offset, reader::Bytes part) override;
  void job_parameter(std::uint64_t offset, reader::Bytes line) override;
  void token(reader::Place place, const reader::Token& token) override;
  void fault(const reader::Fault& fault) override;

  /// Writes the summary. @param bytes  of the whole stream.
  void finish(std::uint64_t bytes);

 private:
  void line(std::uint64_t offset, std::string_view text);
  void piece(std::uint64_t offset, std::string_view name, std::string_view spelled,
             std::string_view meaning);

  Output& output_;
  const Painter& painter_;
  std::uint64_t pages_ = 0;
  std::uint64_t blocks_ = 0;
  std::uint64_t frames_ = 0;
  std::uint64_t faults_ = 0;
};

}  // namespace rlx::dump
