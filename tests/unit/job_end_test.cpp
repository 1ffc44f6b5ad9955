#include "driver/job_end.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "driver/loop/loop_state.h"
#include "fonts/fal_library.h"
#include "fonts/font_sets.h"
#include "job/exit_status.h"
#include "job/settings.h"
#include "output/frame_writer.h"
#include "output/page_writer.h"
#include "support/descriptors.h"
#include "support/input_stream.h"
#include "support/main_loop_fixture.h"
#include "support/page_data.h"
#include "support/record_builder.h"
#include "support/standin_font_library.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::block;
using testing::bytes_of;
using testing::cnt_frame;
using testing::end_frame;
using testing::FailingInput;
using testing::job_pages;
using testing::JobResult;
using testing::kFinalFormFeed;
using testing::kFirstHeader;
using testing::kFirstParameters;
using testing::kFramedReset;
using testing::kJobEnd;
using testing::kStartConditions;
using testing::RedirectedDescriptor;
using testing::run_job;
using testing::run_job_from_current_input;

using JobEndTest = testing::MainLoopTest;

constexpr Status kStatuses[] = {ST_OK,  ST_FAILED, ST_NO_FONT_CLASS,
                                ST_CUT, ST_IOERR,  ST_FONT_ERROR};

std::string ended(JobEnd end, Status status) {
  return testing::output_of([&] { EXPECT_EQ(end_job(the_filter(), end, status), status); });
}

// What is written

TEST_F(JobEndTest, EmptyInputExits0WithNothingWritten) {
  for (const std::vector<std::string>& options :
       std::vector<std::vector<std::string>>{{}, {"-d"}, {"-c", "10"}, {"-L", "3"}, {"-B"}}) {
    const JobResult result = run_job(options, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.messages, "");
  }
}

TEST_F(JobEndTest, GatheredPageIsWrittenWhateverTheStatus) {
  for (const Status status : kStatuses) {
    testing::reset_filter();
    out_page_data(the_filter().page, bytes_of("AB"));
    the_filter().job.page_has_content = 1;
    EXPECT_EQ(ended(JobEnd::flush, status),
              kFirstHeader + block('2', "AB") + kFinalFormFeed + kJobEnd);
  }
}

TEST_F(JobEndTest, NothingIsWrittenAfterAPassThrough) {
  for (const Status status : {ST_OK, ST_IOERR}) {
    testing::reset_filter();
    out_page_data(the_filter().page, bytes_of("AB"));
    the_filter().job.page_has_content = 1;
    the_filter().job.job_started = 1;
    EXPECT_EQ(ended(JobEnd::passed_through, status), "");
  }
}

TEST_F(JobEndTest, PageWithoutContentLeavesTheParameterTextAlone) {
  const JobResult result = run_job({}, "\n");
  EXPECT_EQ(result.output, kFirstParameters);
  EXPECT_EQ(result.output.size(), 59U);
  EXPECT_EQ(result.status, 0);
  // Behind a page nothing of it is new.
  const std::string page = run_job({}, "A\x0c").output;
  EXPECT_EQ(run_job({}, "A\x0c\n").output, page);
}

TEST_F(JobEndTest, DataHeldForAFrameLeavesAsTheEndFrame) {
  for (const Status status : kStatuses) {
    testing::reset_filter();
    open_frame(false, "rest");
    directout(the_filter().frame_writer, bytes_of("abc"));
    EXPECT_EQ(ended(JobEnd::flush, status), end_frame("abc"));
  }
}

TEST_F(JobEndTest, NothingHeldMakesNoEndFrame) {
  open_frame(false, "rest");
  EXPECT_EQ(ended(JobEnd::flush, ST_OK), "");
}

TEST_F(JobEndTest, CountOfTheEndFrameHasFourDigits) {
  for (const std::size_t length : {1U, 9U, 10U, 99U, 100U, 999U, 1000U, 4096U}) {
    testing::reset_filter();
    const std::string data = testing::pattern(length);
    open_frame(false, "rest");
    directout(the_filter().frame_writer, bytes_of(data));
    EXPECT_EQ(ended(JobEnd::flush, ST_OK), end_frame(data));
  }
}

TEST_F(JobEndTest, FramedJobThatFailsStillGetsItsEndFrame) {
  testing::ConditionColumns columns;
  columns.layout = "2";
  columns.fcb_name = "NONE";
  const testing::ScratchDirectory scratch;
  const JobResult result =
      run_job({"-d"}, cnt_frame("A" + testing::condition_sequence(columns) + "B") + end_frame("C"));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, end_frame(kFramedReset + "A\x0c"));
  EXPECT_EQ(result.messages, "filter: FCB data error\n");
}

// Output that cannot be written

TEST_F(JobEndTest, EndFrameThatCannotBeWrittenIsStatus1UnlessThereWasOne) {
  for (const Status status : kStatuses) {
    testing::reset_filter();
    open_frame(false, "rest");
    directout(the_filter().frame_writer, bytes_of("abc"));
    const RedirectedDescriptor full(STDOUT_FILENO, "/dev/full", O_WRONLY);
    EXPECT_EQ(end_job(the_filter(), JobEnd::flush, status), status == ST_OK ? ST_FAILED : status);
  }
}

TEST_F(JobEndTest, LastFlushThatFailsIsAWriteErrorWhateverTheStatus) {
  for (const Status status : kStatuses) {
    EXPECT_EXIT(
        {
          const RedirectedDescriptor full(STDOUT_FILENO, "/dev/full", O_WRONLY);
          out_page_data(the_filter().page, bytes_of("AB"));
          the_filter().job.page_has_content = 1;
          std::exit(exit_status_of(end_job(the_filter(), JobEnd::flush, status)));
        },
        ::testing::ExitedWithCode(1), "^write error$");
  }
}

// Read errors

TEST_F(JobEndTest, DirectoryAsInputIsAReadError) {
  const RedirectedDescriptor input(STDIN_FILENO, "/", O_RDONLY | O_DIRECTORY);
  JobResult result = run_job_from_current_input({});
  EXPECT_EQ(result.status, 129);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.messages, "filter: Is a directory\n");
  result = run_job_from_current_input({"-d"});
  EXPECT_EQ(result.status, 129);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.messages, "");
}

TEST_F(JobEndTest, ReadErrorFlushesThePage) {
  for (const std::string_view cut : {"", "\x1b", "\x1bQ1", "\xe3\x81", "\x1bQ1;9!aab"}) {
    const FailingInput input("AB" + std::string(cut));
    const JobResult result = run_job_from_current_input({});
    EXPECT_EQ(result.status, 129);
    EXPECT_EQ(result.messages, "filter: Connection reset by peer\n");
    EXPECT_EQ(job_pages(result), kStartConditions + "AB\x0c|");
    EXPECT_TRUE(result.output.ends_with(kFinalFormFeed + kJobEnd));
  }
}

TEST_F(JobEndTest, ReadErrorBehindALineFeedOfAFormFlushesThePageWithoutIt) {
  const testing::ScratchDirectory scratch;
  testing::write_file("forms/fcbe/FORM", "print 1 7200\n");
  const FailingInput input("AB\n");
  const JobResult result = run_job_from_current_input({"-p", "forms", "-n", "FORM"});
  EXPECT_EQ(result.status, 129);
  EXPECT_EQ(result.messages, "filter: Connection reset by peer\n");
  EXPECT_EQ(job_pages(result), kStartConditions + testing::kSixLines + "AB\x0c|");
}

TEST_F(JobEndTest, ReadErrorOfAFramedJobIsSilentAndClosesTheOutput) {
  const FailingInput input(cnt_frame("AB"));
  const JobResult result = run_job_from_current_input({"-d"});
  EXPECT_EQ(result.status, 129);
  EXPECT_EQ(result.messages, "");
  EXPECT_EQ(result.output, cnt_frame(kFramedReset + "AB") + end_frame(""));
}

// What is released

class JobEndFonts : public testing::FontLibraryTest {};

TEST_F(JobEndFonts, FontsAreClosedBeforeTheLibraryIsReleased) {
  for (const JobEnd end : {JobEnd::flush, JobEnd::passed_through}) {
    testing::reset_filter();
    load("every-font\n");
    ASSERT_EQ(fonts_open(the_filter().fonts, 0, 0, 1, 0), 0);
    testing::take_font_calls();
    EXPECT_EQ(end_job(the_filter(), end, ST_OK), 0);
    EXPECT_EQ(testing::take_font_calls(),
              (std::vector<std::string>{"close 122422", "close 122424", "close 142422",
                                        "close 142424", "unload"}));
  }
}

TEST_F(JobEndFonts, WithoutTheLibraryNothingIsReleased) {
  testing::install_font_library();
  testing::reset_filter();
  EXPECT_EQ(end_job(the_filter(), JobEnd::flush, ST_OK), 0);
  EXPECT_EQ(testing::take_font_calls(), std::vector<std::string>{});
}

}  // namespace
}  // namespace rlx
