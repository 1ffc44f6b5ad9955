#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "harness.h"

namespace rlx::fuzzing {

// The output as the printer and the transfer protocol read it, taken apart without the code under
// test.

/// One block of the printer language.
struct Block {
  char kind = 0;
  bool is_parameter_text = false;  ///< its header ends in "/`" instead of "/a"
  std::string payload;

  bool operator==(const Block&) const = default;
};

/// One frame of the transfer protocol.
struct Frame {
  bool is_end = false;
  std::string data;

  bool operator==(const Frame&) const = default;
};

/// Reads a count of decimal digits off the front.
inline std::size_t take_count(std::string_view& bytes, std::size_t digits) {
  require(bytes.size() >= digits, "a count is cut");
  std::size_t count = 0;
  for (const char digit : bytes.substr(0, digits)) {
    require(digit >= '0' && digit <= '9', "a count has another character than digits");
    count = count * 10 + static_cast<std::size_t>(digit - '0');
  }
  bytes.remove_prefix(digits);
  return count;
}

/// Takes `count` bytes off the front.
inline std::string_view take_bytes(std::string_view& bytes, std::size_t count) {
  require(bytes.size() >= count, "a block or frame is cut");
  const std::string_view taken = bytes.substr(0, count);
  bytes.remove_prefix(count);
  return taken;
}

inline Block take_block(std::string_view& bytes) {
  require(take_bytes(bytes, 2) == "\x1bQ", "a block does not begin with ESC Q");
  Block block;
  block.kind = take_bytes(bytes, 1).front();
  require(std::string_view("026789").find(block.kind) != std::string_view::npos, "block kind");
  require(take_bytes(bytes, 1) == ";", "no semicolon in a block header");
  const std::size_t count = take_count(bytes, 10);
  const std::string_view last = take_bytes(bytes, 2);
  require(last == "/a" || (last == "/`" && block.kind == '0'), "the end of a block header");
  block.is_parameter_text = last == "/`";
  require(block.is_parameter_text || count > 12, "an empty block");
  block.payload = take_bytes(bytes, block.is_parameter_text ? count : count - 12);
  return block;
}

/// Takes an output apart that consists of whole blocks.
inline std::vector<Block> blocks_of(std::string_view output) {
  std::vector<Block> blocks;
  while (!output.empty()) {
    blocks.push_back(take_block(output));
  }
  return blocks;
}

/// The transfer protocol's spelling of a frame.
inline std::string frame_bytes(std::string_view data, bool is_end) {
  std::string count = std::to_string(data.size());
  count.insert(0, 4 - count.size(), '0');
  return count + (is_end ? "END_PRN_DAT" : "CNT_PRN_DAT") + '\0' + std::string(data);
}

/// Takes an output apart that consists of whole frames.
inline std::vector<Frame> frames_of(std::string_view output) {
  std::vector<Frame> frames;
  while (!output.empty()) {
    const std::size_t count = take_count(output, 4);
    require(count <= 4096, "a frame is too long");
    const std::string_view marker = take_bytes(output, 12);
    const bool is_end = marker == std::string_view("END_PRN_DAT\0", 12);
    require(is_end || marker == std::string_view("CNT_PRN_DAT\0", 12), "the marker of a frame");
    frames.push_back({is_end, std::string(take_bytes(output, count))});
  }
  return frames;
}

}  // namespace rlx::fuzzing
