#include "faults/output_rules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "job/fixed_paths.h"
#include "support/escaped_bytes.h"
#include "support/input_stream.h"

namespace rlx::testing {

namespace {

constexpr std::size_t kHeaderBytes = 16;
constexpr std::size_t kCountedHeaderBytes = 12;

struct Block {
  std::string head;  ///< what a header says besides the length
  std::string payload;

  bool operator==(const Block&) const = default;
};

const std::string kPlainHead = "0a";
const std::string kParameterHead = "0`";
const Block kJobEnd{kPlainHead, std::string("\x1b\x63\x1b\x7f\x00\x00\x01\x00", 8)};

/// Takes one block off the bytes; false when they do not begin with a whole one.
bool take_block(std::string_view& bytes, Block& block) {
  if (bytes.size() < kHeaderBytes || !starts_with_block_header(bytes)) {
    return false;
  }
  block.head = {bytes[2], bytes[15]};
  std::size_t length = std::stoul(std::string(bytes.substr(4, 10)));
  if (block.head[1] == 'a') {
    length -= kCountedHeaderBytes;
  }
  if (bytes.size() < kHeaderBytes + length) {
    return false;
  }
  block.payload = bytes.substr(kHeaderBytes, length);
  bytes.remove_prefix(kHeaderBytes + length);
  return true;
}

/// The blocks that bytes begin with; what follows them stays in `bytes`.
std::vector<Block> take_blocks(std::string_view& bytes) {
  std::vector<Block> blocks;
  Block block;
  while (take_block(bytes, block)) {
    blocks.push_back(block);
  }
  return blocks;
}

/// The printer waits for the end of a job when it has got more than the job's parameters.
bool has_started(const std::vector<Block>& blocks) {
  return std::ranges::any_of(blocks,
                             [](const Block& block) { return block.head != kParameterHead; });
}

/// The end of all frames counts as a border, too.
bool begins_with_frame(std::string_view bytes) {
  constexpr std::size_t kCountDigits = 4;
  if (bytes.empty()) {
    return true;
  }
  const std::string_view marker = bytes.substr(std::min(kCountDigits, bytes.size()));
  return marker.starts_with("CNT_PRN_DAT") || marker.starts_with("END_PRN_DAT");
}

/// Walks over the blocks of an end; each part of it may be missing but the job's end.
class EndReader {
 public:
  explicit EndReader(std::vector<Block> blocks) : blocks_(std::move(blocks)) {}

  void skip_beginning_of(const Block& whole) {
    if (next_ < blocks_.size() && blocks_[next_].head == whole.head &&
        whole.payload.starts_with(blocks_[next_].payload)) {
      ++next_;
    }
  }
  bool skip(const Block& block) {
    const bool there = next_ < blocks_.size() && blocks_[next_] == block;
    next_ += there ? 1 : 0;
    return there;
  }
  bool at_end() const { return next_ == blocks_.size(); }

 private:
  std::vector<Block> blocks_;
  std::size_t next_ = 0;
};

std::string compare(std::string_view expected, std::string_view actual) {
  return expected == actual ? "" : describe_difference(expected, actual);
}

std::string check_prefix(const Reference& reference, const Outcome& outcome) {
  if (!reference.undisturbed.starts_with(outcome.output)) {
    return "no prefix: " + describe_difference(reference.undisturbed, outcome.output);
  }
  return outcome.output.size() == outcome.tally.written_before_fault
             ? ""
             : "bytes were written after the failure";
}

std::string check_ended(const Job& job, const Reference& reference, const Outcome& outcome) {
  const bool ended = job.kind == JobKind::framed
                         ? is_ended_frames(reference.undisturbed, outcome.output)
                         : is_ended_job(reference.undisturbed, outcome.output);
  return ended ? "" : "not ended properly: " + encode_escaped(outcome.output);
}

}  // namespace

Reference make_reference(const Job& job) {
  FaultRig rig(job);
  const Outcome outcome = rig.run();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.messages, "");
  EXPECT_FALSE(outcome.output.empty());
  std::filesystem::remove(fixed_paths::kEnvironmentFile);
  return {outcome.output, rig.run().output};
}

bool is_ended_job(std::string_view whole, std::string_view output) {
  const std::vector<Block> expected = take_blocks(whole);
  std::vector<Block> actual = take_blocks(output);
  if (!output.empty()) {
    return false;
  }
  const auto [begun, after] = std::ranges::mismatch(expected, actual);
  EndReader end({after, actual.end()});
  if (begun != expected.end()) {
    end.skip_beginning_of(*begun);
  }
  end.skip({kPlainHead, "\f"});
  end.skip(kJobEnd);
  return end.at_end() && (!has_started(actual) || actual.back() == kJobEnd);
}

bool is_ended_frames(std::string_view whole, std::string_view output) {
  if (output.empty() || output == whole) {
    return true;
  }
  const std::string end = end_frame("");
  if (!output.ends_with(end)) {
    return false;
  }
  output.remove_suffix(end.size());
  return whole.starts_with(output) && begins_with_frame(whole.substr(output.size()));
}

std::string broken_rule(OutputRule rule, const Job& job, const Reference& reference,
                        const Outcome& outcome) {
  switch (rule) {
    case OutputRule::same:
      return compare(reference.undisturbed, outcome.output);
    case OutputRule::nothing:
      return compare("", outcome.output);
    case OutputRule::prefix:
      return check_prefix(reference, outcome);
    case OutputRule::ended:
      return check_ended(job, reference, outcome);
    case OutputRule::rounded_up:
      return compare(reference.without_environment, outcome.output);
    case OutputRule::rounded_either:
      return outcome.output == reference.without_environment
                 ? ""
                 : compare(reference.undisturbed, outcome.output);
  }
  return "no such rule";
}

}  // namespace rlx::testing
