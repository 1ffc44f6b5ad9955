#include "running/whole_blocks.h"

#include <gtest/gtest.h>

#include "spooler/unit/spooler_rig.h"
#include "support/descriptors.h"
#include "tools/read_job.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;

const std::string kEndOfJob = rlx_block('0', bytes("\033c\033\x7f\0\0\x01\0"));

/// Two pages, the second one not fed.
std::string two_pages() {
  const std::string setup = rlx_block('9', "\033Q1;7200!C");
  return rlx_parameters("%%%=Pji,0101,UNIC\nEMU=RLX\nDCH=240\nMAK=UNIX\n") +
         rlx_block('9', bytes("\033\x7f\0\0\x01\x06")) + rlx_block('8', "\033Q240!A") + setup +
         rlx_block('2', "A\n") + rlx_block('6', "\033Q1 y") + rlx_block('0', "B\f") +
         rlx_parameters("%%%=Pji,0101,UNIC\nEMU=RLX\nPSZ=A4\nMAK=UNIX\n") +
         rlx_block('7', "\033Q0;4;0!F") + setup + rlx_block('2', "C") + rlx_block('0', "\f") +
         kEndOfJob;
}

/// What comes of a job that is cancelled behind so many bytes.
std::string cancelled_behind(const std::string& job, std::size_t place, std::size_t room) {
  Cancellation cancellation;
  const Descriptor file = memory_file(job);
  WholeBlocks blocks(file.number(), cancellation);
  std::string text(place, ' ');
  if (place > 0) {
    EXPECT_EQ(blocks.read(std::span(reinterpret_cast<std::uint8_t*>(text.data()), place)), place);
  }
  cancellation.ask();
  return text + read_all(blocks, room);
}

TEST(WholeBlocks, AreTheJobWhenNobodyCancelsIt) {
  const Cancellation never;
  for (const std::string& job : {two_pages(), std::string(), std::string("no job"),
                                 two_pages() + two_pages(), two_pages().substr(0, 100)}) {
    for (const std::size_t room : {1U, 7U, 65536U}) {
      const Descriptor file = memory_file(job);
      WholeBlocks blocks(file.number(), never);
      EXPECT_EQ(read_all(blocks, room), job);
    }
  }
}

TEST(WholeBlocks, EndTheJobWhereverItIsCancelled) {
  const std::string job = two_pages();
  for (std::size_t place = 0; place <= job.size(); ++place) {
    SCOPED_TRACE(place);
    const std::string all = cancelled_behind(job, place, 65536);
    for (const std::size_t room : {1U, 5U}) {
      ASSERT_EQ(cancelled_behind(job, place, room), all);
    }
    const FoundJob found = read_job(all);
    ASSERT_EQ(shown_faults(found), "");
    ASSERT_EQ(found.outside, "");
    if (!found.blocks.empty() && found.blocks.size() > 1) {
      ASSERT_EQ(found.blocks.back().block.use, reader::BlockUse::job_end);
    }
  }
}

TEST(WholeBlocks, AddNoMoreThanIsMissing) {
  const std::string job = two_pages();
  EXPECT_EQ(cancelled_behind(job, 0, 100), "");
  // The job parameters alone are no job yet.
  const std::string parameters = job.substr(0, job.find("\033Q9;"));
  EXPECT_EQ(cancelled_behind(job, 1, 100), parameters);
  // In the page's first block: it is not fed.
  const std::string first = job.substr(0, job.find("A\n") + 2);
  const std::string fed = rlx_block('0', "\f");
  EXPECT_EQ(cancelled_behind(job, first.size(), 100), first + fed + kEndOfJob);
  EXPECT_EQ(cancelled_behind(job, first.size() - 1, 100), first + fed + kEndOfJob);
  // In its page header, and behind the end of the page.
  EXPECT_EQ(cancelled_behind(job, parameters.size() + 1, 100), first + fed + kEndOfJob);
  const std::string page = job.substr(0, job.find("B\f") + 2);
  EXPECT_EQ(cancelled_behind(job, page.size(), 100), page + kEndOfJob);
  EXPECT_EQ(cancelled_behind(job, job.size(), 100), job);
}

TEST(WholeBlocks, TakeWhatIsNoJobAsItIs) {
  EXPECT_EQ(cancelled_behind("this is no job, but text", 20, 100), "this is no job, but ");
  EXPECT_EQ(cancelled_behind("\033Q0;0000000000/`", 16, 100), "\033Q0;0000000000/`");
  // A job that ends in the block that is open.
  EXPECT_EQ(cancelled_behind(two_pages().substr(0, 100), 90, 100), two_pages().substr(0, 100));
}

}  // namespace
}  // namespace rlx::spooler
