#include "rlx_reader/job_reader.h"

#include <gtest/gtest.h>

#include "support/descriptors.h"
#include "tools/sample_streams.h"

namespace rlx::testing {
namespace {

FoundJob read_whole(const std::string& stream) {
  FoundJob found = read_job(stream);
  EXPECT_EQ(found.misdeed, "");
  EXPECT_TRUE(found.rebuilt == stream);
  return found;
}

std::string page_of(const std::string& data) {
  return first_header() + rlx_block('2', data) + job_end();
}

TEST(JobReader, TakesAnEmptyJobAndOneOfParametersAlone) {
  EXPECT_EQ(shown_faults(read_whole("")), "");
  EXPECT_EQ(shown_faults(read_whole(rlx_parameters(kFixedText))), "");
}

TEST(JobReader, TakesJobsOneBehindTheOther) {
  const FoundJob found = read_whole(job_of_two_pages() + job_with_final_form_feed() +
                                    job_of_short_pages() + rlx_parameters(kFixedText));
  EXPECT_EQ(shown_faults(found), "");
  EXPECT_EQ(found.pages_begun, 6U);
}

TEST(JobReader, TellsTextThatIsNoJob) {
  EXPECT_EQ(shown_faults(read_whole("hello\n")), "0: data outside blocks\n");
  EXPECT_EQ(shown_faults(read_whole("\x1bQ")), "0: truncated block: 2 of 16 bytes of its header\n");
}

TEST(JobReader, TakesAPassedThroughJobAsTheJobThatItIs) {
  const std::string sequence = "\x1bQ1;2/`";
  const std::string front = first_header() + rlx_block('2', "A\n\f");
  const FoundJob found = read_whole(front + sequence + job_of_two_pages());
  EXPECT_EQ(shown_faults(found), "");
  EXPECT_EQ(found.pages_begun, 3U);
  EXPECT_EQ(shown_faults(read_whole(sequence + "hello")), "7: data outside blocks\n");
}

TEST(JobReader, TellsAJobThatStartsInsideAnother) {
  const std::string front = first_header() + rlx_block('2', "A\n\f");
  const std::size_t start = front.size() + rlx_parameters(kFixedText).size();
  EXPECT_EQ(shown_faults(read_whole(front + job_of_two_pages())),
            std::to_string(start) + ": job started twice\n");
}

TEST(JobReader, TakesBlocksLongerThanItLooksAhead) {
  for (const std::size_t length : {61000U, 65000U, 65536U, 70000U, 131072U, 1000000U}) {
    SCOPED_TRACE(length);
    const std::string job = page_of(std::string(length, 'x') + "\n\f");
    const FoundJob found = read_whole(job);
    EXPECT_EQ(shown_faults(found), "");
    EXPECT_EQ(found.pages_ended, 1U);
    EXPECT_EQ(found.blocks[5].payload.size(), length + 2);
  }
}

TEST(JobReader, TakesEveryLengthNearTheLookAhead) {
  for (std::size_t length = 61300; length < 65600;
       length += length < 61500 || length > 65400 ? 1 : 97) {
    ASSERT_EQ(shown_faults(read_whole(page_of(std::string(length, 'x') + "\f"))), "") << length;
  }
}

TEST(JobReader, TellsLongBlocksThatAreCut) {
  const std::string job = page_of(std::string(200000, 'x') + "\f");
  for (const std::size_t length : {500U, 66000U, 131400U, 200000U}) {
    const FoundJob found = read_whole(job.substr(0, length));
    const std::size_t offset = first_header().size();
    EXPECT_EQ(shown_faults(found), std::to_string(offset) + ": truncated block: " +
                                       std::to_string(length - offset - 16) +
                                       " of 200001 bytes of payload\n");
  }
}

TEST(JobReader, TellsACountThatIsFarTooLarge) {
  // The next block is seen, and the one behind it follows.
  const std::string job = first_header() + rlx_block('2', "A\n\f", 5000000) + job_end();
  const FoundJob found = read_whole(job);
  ASSERT_EQ(found.faults.size(), 1U) << shown_faults(found);
  EXPECT_EQ(found.faults[0].offset, first_header().size());
  EXPECT_EQ(found.faults[0].what,
            "wrong count 5000015: the block has 3 bytes of payload, the count says 5000003");
  EXPECT_EQ(found.pages_ended, 1U);
}

TEST(JobReader, TakesAHeaderInDataAsData) {
  const std::string job = job_of_two_pages();
  const std::string counted = "\x1bQ1;" + std::to_string(job.size()) + "!a" + job;
  EXPECT_EQ(shown_faults(read_whole(page_of(counted + "\f"))), "");
  EXPECT_EQ(shown_faults(read_whole(page_of(counted + std::string(100000, 'x') + "\f"))), "");
}

TEST(JobReader, TellsLongBytesOutside) {
  for (const std::size_t length : {65520U, 65536U, 65537U, 200000U}) {
    const std::string job = job_of_two_pages() + std::string(length, 'x') + job_of_short_pages();
    const FoundJob found = read_whole(job);
    EXPECT_EQ(shown_faults(found),
              std::to_string(job_of_two_pages().size()) + ": data outside blocks\n");
    EXPECT_EQ(found.outside.size(), length);
    EXPECT_EQ(found.pages_begun, 5U);
  }
}

TEST(JobReader, TellsABlockWithoutPayload) {
  const FoundJob found = read_whole(first_header() + rlx_block('2', "") + job_end());
  EXPECT_EQ(shown_faults(found),
            std::to_string(first_header().size()) + ": block without payload\n");
}

TEST(JobReader, TellsAKindThatTheLanguageDoesNotHave) {
  const FoundJob found =
      read_whole(first_header() + rlx_block('2', "A\f") + rlx_block('4', "B") + job_end());
  const std::size_t offset = first_header().size() + 16 + 2;
  EXPECT_EQ(shown_faults(found), std::to_string(offset) + ": unknown kind of block\n");
}

TEST(JobReader, TellsPagesWithoutAnEndAndBlocksOutOfOrder) {
  const std::string front = first_header() + rlx_block('2', "A\n");
  const std::string at = std::to_string(front.size());
  EXPECT_EQ(
      shown_faults(read_whole(front + rlx_block('9', kSetup) + rlx_block('2', "B\f") + job_end())),
      at + ": page not ended in front of page setup\n");
  const std::string page = first_header() + rlx_block('2', "A\f") + rlx_block('9', kSetup);
  EXPECT_EQ(shown_faults(read_whole(page + rlx_block('8', "\x1bQ400!A") + rlx_block('9', kSetup) +
                                    rlx_block('2', "B\f") + job_end())),
            std::to_string(page.size()) + ": page header without a page in front of density\n");
}

TEST(JobReader, LetsAJobEndWithoutAFormFeed) {
  // A page that holds nothing, and has more than one block.
  EXPECT_EQ(shown_faults(read_whole(first_header() + rlx_block('2', "\n") + rlx_block('0', "\n") +
                                    job_end())),
            "");
}

TEST(JobReader, GoesStepByStep) {
  struct Count : reader::JobVisitor {
    int blocks = 0;
    void begin_block(const reader::Block& /*block*/) override { ++blocks; }
  } count;
  const std::string job = job_of_two_pages();
  reader::MemoryInput input(reader_bytes(job));
  reader::JobReader reader(input, count);
  for (int steps = 1; steps <= 12; ++steps) {
    EXPECT_TRUE(reader.read_next());
    EXPECT_EQ(count.blocks, steps);
  }
  EXPECT_FALSE(reader.read_next());
  EXPECT_FALSE(reader.read_next());
}

TEST(FileInput, IsAFileOrStandardInput) {
  const ScratchDirectory scratch;
  const std::string job = page_of(std::string(3000000, 'x') + "\f");
  write_file("job", job);
  for (const bool standard : {false, true}) {
    const StandardInput input_bytes(job);
    reader::FileInput input(standard ? "-" : "job");
    struct Total : reader::JobVisitor {
      std::uint64_t bytes = 0;
      std::uint64_t faults = 0;
      void payload(const reader::Block& /*block*/, reader::Bytes part) override {
        bytes += part.size();
      }
      void fault(const reader::Fault& /*fault*/) override { ++faults; }
    } total;
    reader::read_jobs(input, total);
    EXPECT_EQ(total.faults, 0U);
    EXPECT_EQ(input.offset(), job.size());
    EXPECT_GT(total.bytes, 3000000U);
  }
}

TEST(FileInput, SaysWhichFileCannotBeRead) {
  try {
    reader::FileInput input("/nowhere/job");
    FAIL();
  } catch (const std::system_error& error) {
    EXPECT_STREQ(error.what(), "/nowhere/job: No such file or directory");
  }
  try {
    reader::FileInput input("/");
    input.look(1);
    FAIL();
  } catch (const std::system_error& error) {
    EXPECT_STREQ(error.what(), "/: byte 0: Is a directory");
  }
}

}  // namespace
}  // namespace rlx::testing
