#pragma once

#include <string>
#include <string_view>

#include "harness.h"
#include "rlx_reader/frame_reader.h"
#include "rlx_reader/job_reader.h"

namespace rlx::fuzzing {

/// What the reader of jobs finds in a stream. That its calls are balanced, that offsets ascend, and
/// that all bytes are handed on once, is required at each call.
class Reading : public reader::JobVisitor {
 public:
  explicit Reading(std::string_view stream) {
    reader::MemoryInput input({raw(stream), stream.size()});
    reader::read_jobs(input, *this);
    require(!inside_, "something is left open");
    require(rebuilt_ == stream, "the stream that was read is another one");
  }

  std::size_t faults = 0;
  std::string first_fault;
  bool passed_through = false;

  void begin_block(const reader::Block& block) override {
    begin(block.offset, header_bytes(block.header));
  }
  void payload(const reader::Block& /*block*/, reader::Bytes part) override { inner(part); }
  void end_block(const reader::Block& block) override {
    end();
    require(rebuilt_.size() - block.offset == reader::kHeaderBytes + block.payload,
            "the length of a payload");
  }
  void begin_page(std::uint64_t number, const reader::Block& /*block*/) override {
    require(number == ++pages_, "the number of a page");
  }
  void end_page(std::uint64_t number) override {
    require(number == pages_ && ended_ != pages_, "the end of a page");
    ended_ = number;
  }
  void begin_frame(const reader::Frame& frame) override {
    begin(frame.offset, header_bytes(frame));
  }
  void frame_data(const reader::Frame& /*frame*/, reader::Bytes part) override { inner(part); }
  void end_frame(const reader::Frame& /*frame*/) override { end(); }
  void pass_through(std::uint64_t offset, reader::Bytes sequence) override {
    outside(offset, sequence);
    passed_through = true;
  }
  void outside(std::uint64_t offset, reader::Bytes part) override {
    begin(offset, "");
    inner(part);
    end();
  }
  void fault(const reader::Fault& fault) override {
    require(!fault.what.empty(), "a fault without words");
    first_fault = faults++ == 0 ? fault.what : first_fault;
  }

 private:
  void begin(std::uint64_t offset, std::string_view header) {
    require(!inside_ && offset == rebuilt_.size(), "an offset");
    inside_ = true;
    rebuilt_ += header;
  }
  void inner(reader::Bytes part) {
    require(inside_ && !part.empty() && part.size() <= reader::ByteInput::kMostLookAhead,
            "a portion");
    rebuilt_ += text_of(part.data(), part.size());
  }
  void end() {
    require(inside_, "an end without a beginning");
    inside_ = false;
  }

  bool inside_ = false;
  std::uint64_t pages_ = 0;
  std::uint64_t ended_ = 0;
  std::string rebuilt_;
};

}  // namespace rlx::fuzzing
