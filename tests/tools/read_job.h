#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "rlx_reader/job_visitor.h"
#include "rlx_reader/page_data.h"

namespace rlx::testing {

/// Text as the reader takes it.
reader::Bytes reader_bytes(std::string_view text);

/// A block with its payload.
struct FoundBlock {
  reader::Block block;
  std::string payload;
};

/// A frame with its data.
struct FoundFrame {
  reader::Frame frame;
  std::string data;
};

/// All that the reader found in a stream.
struct FoundJob {
  std::vector<FoundBlock> blocks;
  std::vector<FoundFrame> frames;
  std::vector<reader::Fault> faults;
  std::string outside;
  std::uint64_t pages_begun = 0;
  std::uint64_t pages_ended = 0;
  /// Headers, payloads and what stands between them, put together again.
  std::string rebuilt;
  /// What the reader did that it must not do; empty when all was well.
  std::string misdeed;
};

/// Reads a stream, and checks that calls are balanced and offsets ascend.
FoundJob read_job(std::string_view stream);

/// "59: wrong count ..." a line for each fault.
std::string shown_faults(const FoundJob& job);

/// Tokens as text, one to a line: "12 text AB", the bytes escaped. Neighbouring portions of text,
/// of invalid bytes and of data are one.
std::string shown_tokens(std::string_view data, std::size_t portion = 0);

/// A block of a job. @param wrong  is added to its count.
std::string rlx_block(char kind, std::string_view payload, std::int64_t wrong = 0);
/// A job parameter block.
std::string rlx_parameters(std::string_view payload, std::int64_t wrong = 0);
/// A frame. @param wrong  is added to its count.
std::string rlx_frame(std::string_view data, bool last, std::int64_t wrong = 0);

}  // namespace rlx::testing
