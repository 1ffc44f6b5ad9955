#include "running/page_counter.h"

#include <gtest/gtest.h>

#include "rlx_reader/job_reader.h"
#include "support/descriptors.h"
#include "tools/read_job.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;

/// "1*1 2*3": pages and their copies, as the listener was told.
struct Counted {
  std::string told;
  std::uint64_t pages = 0;
  std::uint64_t impressions = 0;
};

Counted count(const std::string& job) {
  Counted counted;
  PageCounter counter([&counted](std::uint64_t number, unsigned copies) {
    counted.told +=
        (counted.told.empty() ? "" : " ") + std::to_string(number) + '*' + std::to_string(copies);
  });
  reader::MemoryInput input(reader_bytes(job));
  reader::read_jobs(input, counter);
  counter.finish();
  counter.finish();
  counted.pages = counter.count().pages;
  counted.impressions = counter.count().impressions;
  return counted;
}

std::string parameters(const std::string& lines) {
  return rlx_parameters("%%%=Pji,0101,UNIC\nEMU=RLX\n" + lines + "MAK=UNIX\n");
}

const std::string kStart = rlx_block('9', bytes("\033\x7f\0\0\x01\x06"));
const std::string kEnd = rlx_block('0', bytes("\033c\033\x7f\0\0\x01\0"));
const std::string kSetup = rlx_block('9', "\033Q1;7200!C");
const std::string kFormFeed = rlx_block('0', "\f");

std::string page(const std::string& data) {
  return kSetup + rlx_block('2', data);
}

TEST(PageCounter, CountsNothingInNothing) {
  EXPECT_EQ(count("").told, "");
  EXPECT_EQ(count("this is no job").told, "");
  EXPECT_EQ(count(parameters("DCH=240\n")).told, "");
  EXPECT_EQ(count(parameters("DCH=240\nCPS=3\n") + kStart + kEnd).pages, 0U);
}

TEST(PageCounter, CountsPages) {
  const Counted counted =
      count(parameters("DCH=240\n") + kStart + page("A\f") + page("B\f") + page("\f") + kEnd);
  EXPECT_EQ(counted.told, "1*1 2*1 3*1");
  EXPECT_EQ(counted.pages, 3U);
  EXPECT_EQ(counted.impressions, 3U);
}

TEST(PageCounter, CountsAPageOfSeveralBlocksOnce) {
  EXPECT_EQ(count(parameters("DCH=240\n") + kStart + page("A\n") + rlx_block('6', "\033Q1 y") +
                  rlx_block('0', "B\n") + rlx_block('0', "C\f") + page("D\f") + kEnd)
                .told,
            "1*1 2*1");
}

TEST(PageCounter, CountsALastPageWithoutItsEnd) {
  const std::string front = parameters("DCH=240\n") + kStart + page("A\f");
  EXPECT_EQ(count(front + page("B") + kFormFeed + kEnd).told, "1*1 2*1");
  EXPECT_EQ(count(front + page("B") + kEnd).told, "1*1 2*1");
  EXPECT_EQ(count(front + page("B")).told, "1*1 2*1");
}

TEST(PageCounter, CountsTheCopiesOfEachPage) {
  const Counted counted =
      count(parameters("DCH=240\nCPS=3\nDUP=1\n") + kStart + page("A\f") + page("B\f") +
            parameters("CPS=12\n") + page("C\f") + parameters("PSZ=A4\n") + page("D\f") +
            parameters("CPS=0\n") + page("E\f") + kEnd);
  EXPECT_EQ(counted.told, "1*3 2*3 3*12 4*12 5*1");
  EXPECT_EQ(counted.pages, 5U);
  EXPECT_EQ(counted.impressions, 31U);
}

TEST(PageCounter, CountsAPageWithTheCopiesInFrontOfIt) {
  // The first page is not fed; what comes behind it is the next page's.
  EXPECT_EQ(count(parameters("DCH=240\nCPS=2\n") + kStart + page("A") + parameters("CPS=5\n") +
                  page("B\f") + kEnd)
                .told,
            "1*2 2*5");
}

TEST(PageCounter, TakesStrangeCopiesForOne) {
  for (const char* copies : {"-7", "", "x", "10000", "99999999999", "1 "}) {
    EXPECT_EQ(count(parameters(std::string("CPS=") + copies + '\n') + kStart + page("A\f")).told,
              "1*1")
        << copies;
  }
  EXPECT_EQ(count(parameters("XCPS=4\nCPSX=4\n") + kStart + page("A\f")).told, "1*1");
  EXPECT_EQ(count(parameters("CPS=2\nCPS=9999\n") + kStart + page("A\f")).told, "1*9999");
}

TEST(PageCounter, CountsThroughSeveralJobs) {
  const std::string with_copies =
      parameters("DCH=240\nCPS=3\n") + kStart + page("A\f") + page("B\f") + kEnd;
  const std::string without = parameters("DCH=240\n") + kStart + page("C\f") + kEnd;
  EXPECT_EQ(count(with_copies + without + with_copies).told, "1*3 2*3 3*1 4*3 5*3");
  // One whose parameters came again behind its end.
  EXPECT_EQ(count(with_copies + parameters("CPS=7\n") + without).told, "1*3 2*3 3*1");
  // One without its end.
  const std::string cut = parameters("DCH=240\nCPS=3\n") + kStart + page("A");
  EXPECT_EQ(count(cut + without).told, "1*3 2*1");
}

TEST(PageCounter, TakesLongParametersForNone) {
  EXPECT_EQ(count(parameters("FOV=" + std::string(70000, 'x') + "\nCPS=3\n") + kStart + page("A\f"))
                .pages,
            1U);
}

}  // namespace
}  // namespace rlx::spooler
