#pragma once

#include <string>
#include <string_view>

#include "harness.h"
#include "rlx_reader/frame_reader.h"
#include "rlx_reader/job_contents.h"
#include "rlx_reader/job_reader.h"
#include "rlxdump/base64.h"
#include "rlxdump/json_dump.h"

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

/// The bytes in base64 behind a key of a line; none without it.
inline std::string bytes_behind(std::string_view line, std::string_view key) {
  const std::size_t found = line.find(key);
  if (found == std::string_view::npos) {
    return "";
  }
  const std::string_view rest = line.substr(found + key.size());
  const auto bytes = dump::from_base64(rest.substr(0, rest.find('"')));
  require(bytes.has_value(), "base64");
  return *bytes;
}

/// The stream that a JSON dump tells of.
inline std::string rebuilt_from_json(std::string_view dump) {
  std::string stream;
  while (!dump.empty()) {
    const std::string_view line = dump.substr(0, dump.find('\n'));
    stream += bytes_behind(line, R"("header":")") + bytes_behind(line, R"("bytes":")");
    dump.remove_prefix(std::min(dump.size(), line.size() + 1));
  }
  return stream;
}

/// What a dump writes about a stream.
template <typename Dump, typename... Arguments>
std::string dump_of(std::string_view stream, const Arguments&... arguments) {
  std::string text;
  dump::Output output(text);
  Dump dump(output, arguments...);
  reader::MemoryInput input({raw(stream), stream.size()});
  reader::read_contents(input, dump);
  dump.finish(input.offset());
  output.flush();
  return text;
}

/// A stream that is dumped as JSON can be rebuilt.
inline void require_rebuilt(std::string_view stream) {
  require(rebuilt_from_json(dump_of<dump::JsonDump>(stream)) == stream,
          "the stream that was rebuilt is another one");
}

}  // namespace rlx::fuzzing
