// Every kind of damage at every block of several jobs: what is told, and where.

#include <gtest/gtest.h>

#include "rlx_reader/block_end.h"
#include "tools/sample_streams.h"

namespace rlx::testing {
namespace {

using reader::BlockUse;

std::vector<std::string> damaged_jobs() {
  return {job_of_two_pages(), job_with_final_form_feed(), job_of_short_pages()};
}

/// A job taken to pieces.
struct Blocks {
  explicit Blocks(const std::string& bytes) : job(bytes), found(read_job(bytes).blocks) {}

  std::size_t begin(std::size_t index) const { return found[index].block.offset; }
  std::size_t end(std::size_t index) const {
    return begin(index) + reader::kHeaderBytes + found[index].payload.size();
  }
  BlockUse use(std::size_t index) const { return found[index].block.use; }
  std::string front(std::size_t index) const { return job.substr(0, begin(index)); }
  std::string whole(std::size_t index) const {
    return job.substr(begin(index), end(index) - begin(index));
  }
  std::string back(std::size_t index) const { return job.substr(end(index)); }
  /// A data block whose page goes on.
  bool in_mid_page(std::size_t index) const {
    const bool data = use(index) == BlockUse::first_data || use(index) == BlockUse::further_data;
    return data && found[index].payload.back() != '\f';
  }

  std::string job;
  std::vector<FoundBlock> found;
};

/// Reads a damaged job: whatever is wrong, all its bytes are there.
FoundJob read_damaged(const std::string& job) {
  FoundJob found = read_job(job);
  EXPECT_EQ(found.misdeed, "");
  EXPECT_TRUE(found.rebuilt == job);
  return found;
}

/// There is one fault, there, and it begins so.
void expect_fault(const FoundJob& job, std::size_t offset, const std::string& what) {
  ASSERT_EQ(job.faults.size(), 1U) << shown_faults(job);
  EXPECT_EQ(job.faults[0].offset, offset) << shown_faults(job);
  EXPECT_EQ(job.faults[0].what.substr(0, what.size()), what);
}

/// Calls `check(blocks, index)` for every block of every job.
template <typename Check>
void for_each_block(Check check) {
  for (const std::string& job : damaged_jobs()) {
    const Blocks blocks(job);
    for (std::size_t i = 0; i < blocks.found.size(); ++i) {
      SCOPED_TRACE(std::string(name_of(blocks.use(i))) + " at " + std::to_string(blocks.begin(i)));
      ASSERT_NO_FATAL_FAILURE(check(blocks, i));
    }
  }
}

TEST(DamagedJobs, AreGoodWithoutDamage) {
  for (const std::string& job : damaged_jobs()) {
    const FoundJob found = read_damaged(job);
    EXPECT_EQ(shown_faults(found), "");
    EXPECT_EQ(found.pages_begun, found.pages_ended);
  }
}

TEST(DamagedJobs, TellAWrongCount) {
  for (const std::int64_t wrong : {-1, 1, 5, 1000, 70000}) {
    SCOPED_TRACE(wrong);
    for_each_block([=](const Blocks& blocks, std::size_t i) {
      std::string header = blocks.whole(i).substr(0, reader::kHeaderBytes);
      const auto count = static_cast<std::int64_t>(blocks.found[i].block.header.count) + wrong;
      std::string digits = std::to_string(count);
      header.replace(4, 10, std::string(10 - digits.size(), '0') + digits);
      const FoundJob found =
          read_damaged(blocks.front(i) + header + blocks.whole(i).substr(16) + blocks.back(i));
      // What is cut by the end of the input looks like a count that is too large.
      const bool last =
          i + 1 == blocks.found.size() && wrong > 0 && blocks.use(i) == BlockUse::job_parameters;
      expect_fault(found, blocks.begin(i), last ? "truncated block" : "wrong count");
      EXPECT_EQ(found.blocks.size(), blocks.found.size());
      EXPECT_EQ(found.blocks[i].block.use, blocks.use(i));
      EXPECT_EQ(found.blocks[i].payload, blocks.found[i].payload);
      EXPECT_FALSE(found.blocks[i].block.count_is_right);
    });
  }
}

TEST(DamagedJobs, TellACountThatIsNoneAndAHugeOne) {
  for (const char* const count : {"0000000000", "0000000011", "9999999999"}) {
    SCOPED_TRACE(count);
    for_each_block([=](const Blocks& blocks, std::size_t i) {
      std::string whole = blocks.whole(i);
      whole.replace(4, 10, count);
      const FoundJob found = read_damaged(blocks.front(i) + whole + blocks.back(i));
      const bool last = i + 1 == blocks.found.size() && *count == '9' &&
                        blocks.use(i) == BlockUse::job_parameters;
      expect_fault(found, blocks.begin(i), last ? "truncated block" : "wrong count");
      EXPECT_EQ(found.blocks.size(), blocks.found.size());
    });
  }
}

TEST(DamagedJobs, TellAHeaderWithAWrongByte) {
  for (const std::size_t at : {4U, 9U, 13U}) {
    SCOPED_TRACE(at);
    for_each_block([=](const Blocks& blocks, std::size_t i) {
      std::string whole = blocks.whole(i);
      whole[at] = 'x';
      const FoundJob found = read_damaged(blocks.front(i) + whole + blocks.back(i));
      expect_fault(found, blocks.begin(i), "data outside blocks");
      EXPECT_EQ(found.outside, whole);
    });
  }
}

/// What is told when a block is missing, and at which of the blocks behind it; nothing when nobody
/// can tell.
std::string missing_block(const Blocks& blocks, std::size_t index) {
  switch (blocks.use(index)) {
    case BlockUse::job_start:
      return "page before the job start";
    case BlockUse::page_setup:
      return "page without header";
    case BlockUse::first_data:
      return blocks.use(index + 1) == BlockUse::page_setup ? "page setup twice"
                                                           : "page header without a page";
    case BlockUse::further_data:
      return blocks.in_mid_page(index) ? "" : "carried settings that are not behind data";
    case BlockUse::job_end:
      return "job not ended";
    default:
      return "";
  }
}

TEST(DamagedJobs, TellABlockThatIsMissing) {
  for_each_block([](const Blocks& blocks, std::size_t i) {
    const FoundJob found = read_damaged(blocks.front(i) + blocks.back(i));
    const std::string expected = missing_block(blocks, i);
    if (expected.empty()) {
      EXPECT_EQ(shown_faults(found), "");
      return;
    }
    ASSERT_FALSE(found.faults.empty());
    EXPECT_EQ(found.faults[0].what.substr(0, expected.size()), expected);
    // The first place where something is wrong: at the page for the page's header, else at once.
    std::size_t place = i + 1;
    if (blocks.use(i) == BlockUse::job_start || blocks.use(i) == BlockUse::page_setup) {
      while (blocks.use(place) != BlockUse::first_data) {
        ++place;
      }
    }
    const std::size_t length = blocks.whole(i).size();
    const std::size_t offset = blocks.use(i) == BlockUse::job_end ? blocks.job.size() - length
                                                                  : blocks.begin(place) - length;
    EXPECT_EQ(found.faults[0].offset, offset) << shown_faults(found);
  });
}

/// What is told about a block that comes a second time; nothing when nobody can tell.
std::string doubled_block(const Blocks& blocks, std::size_t index) {
  switch (blocks.use(index)) {
    case BlockUse::job_parameters:
      // In front of a job and behind it other parameters may stand.
      return index == 0 || index + 1 == blocks.found.size() ? "" : "job parameters twice";
    case BlockUse::job_start:
      return "job started twice";
    case BlockUse::first_data:
      return blocks.in_mid_page(index) ? "page begins inside a page" : "page without header";
    case BlockUse::further_data:
      return blocks.in_mid_page(index) ? "" : "further data without a page";
    case BlockUse::carried_settings:
      return "carried settings that are not behind data";
    case BlockUse::final_form_feed:
      return "form feed without a page";
    case BlockUse::job_end:
      return "job ended without a start";
    default:
      return std::string(name_of(blocks.use(index))) + " twice";
  }
}

TEST(DamagedJobs, TellABlockThatComesTwice) {
  for_each_block([](const Blocks& blocks, std::size_t i) {
    const FoundJob found =
        read_damaged(blocks.front(i) + blocks.whole(i) + blocks.whole(i) + blocks.back(i));
    const std::string expected = doubled_block(blocks, i);
    if (expected.empty()) {
      EXPECT_EQ(shown_faults(found), "");
    } else {
      expect_fault(found, blocks.end(i), expected);
    }
  });
}

TEST(DamagedJobs, TellWhatStandsBetweenBlocks) {
  for (const char byte : {'x', '\0', '\n', '\x1b', '\x1c', '\xe3'}) {
    for (std::size_t length = 1; length <= 40; ++length) {
      SCOPED_TRACE(length);
      SCOPED_TRACE(static_cast<int>(byte));
      const std::string junk(length, byte);
      for_each_block([&](const Blocks& blocks, std::size_t i) {
        const FoundJob found =
            read_damaged(blocks.front(i) + blocks.whole(i) + junk + blocks.back(i));
        if (blocks.in_mid_page(i)) {
          // Nothing tells it from data.
          expect_fault(found, blocks.begin(i), "wrong count");
          return;
        }
        const bool cut = i + 1 == blocks.found.size() && byte == '\x1b' && length == 1;
        expect_fault(found, blocks.end(i), cut ? "truncated block" : "data outside blocks");
        EXPECT_EQ(found.outside, junk);
      });
    }
  }
}

TEST(DamagedJobs, TellWhatStandsInFront) {
  for (const std::string& job : damaged_jobs()) {
    for (std::size_t length = 1; length <= 40; ++length) {
      const FoundJob found = read_damaged(std::string(length, 'x') + job);
      expect_fault(found, 0, "data outside blocks");
    }
  }
}

TEST(DamagedJobs, TellWhereTheyAreCut) {
  for (const std::string& job : damaged_jobs()) {
    const Blocks blocks(job);
    std::size_t i = 0;
    for (std::size_t length = 1; length < job.size(); ++length) {
      SCOPED_TRACE(length);
      const FoundJob found = read_damaged(job.substr(0, length));
      if (length == blocks.end(i)) {
        const bool ended = blocks.use(i) == BlockUse::job_end || i == 0;
        if (ended) {
          EXPECT_EQ(shown_faults(found), "");
        } else {
          expect_fault(found, length, "job not ended");
        }
        ++i;
      } else if (length < blocks.begin(i) + reader::kHeaderBytes) {
        expect_fault(found, blocks.begin(i), "truncated block");
        EXPECT_EQ(found.outside.size(), length - blocks.begin(i));
      } else {
        const bool none = length == blocks.begin(i) + reader::kHeaderBytes;
        const std::size_t there = length - blocks.begin(i) - reader::kHeaderBytes;
        expect_fault(found, blocks.begin(i), "truncated block: " + std::to_string(there) + " of ");
        EXPECT_EQ(found.blocks.back().payload.size(), none ? 0 : there);
      }
    }
  }
}

}  // namespace
}  // namespace rlx::testing
