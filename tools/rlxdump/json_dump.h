#pragma once

#include <cstdint>
#include <string>

#include "rlx_reader/job_contents.h"
#include "rlxdump/output.h"

namespace rlx::dump {

/// Writes a job as JSON, one object a line. Each has a "type" and, but for the summary, an
/// "offset"; the man page lists what else they have. The values of "header" and "bytes", taken out
/// of base64 and put together in the order of the lines, are the stream, byte for byte.
class JsonDump : public reader::ContentVisitor {
 public:
  explicit JsonDump(Output& output) : output_(output) {}

  void section(const reader::Section& section) override;
  void begin_page() override { ++pages_; }
  void begin_block(const reader::Block& block) override;
  void frame(const reader::Frame& frame) override;
  void bytes(std::uint64_t offset, reader::Bytes part) override;
  void pass_through(std::uint64_t offset, reader::Bytes sequence) override;
  void outside(std::uint64_t offset, reader::Bytes part) override;
  void job_parameter(std::uint64_t offset, reader::Bytes line) override;
  void token(reader::Place place, const reader::Token& token) override;
  void fault(const reader::Fault& fault) override;

  /// Writes the summary. @param bytes  of the whole stream.
  void finish(std::uint64_t bytes);

 private:
  Output& output_;
  std::string section_;
  std::uint64_t pages_ = 0;
  std::uint64_t blocks_ = 0;
  std::uint64_t frames_ = 0;
  std::uint64_t faults_ = 0;
};

}  // namespace rlx::dump
