#include "driver/loop/pass_through.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "driver/loop/loop_state.h"
#include "job/exit_status.h"
#include "support/descriptors.h"
#include "support/input_stream.h"
#include "support/main_loop_fixture.h"
#include "support/page_data.h"
#include "support/record_builder.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::CaptureDescriptor;
using testing::cnt_frame;
using testing::end_frame;
using testing::FailingInput;
using testing::JobResult;
using testing::kParameterBlock;
using testing::RedirectedDescriptor;
using testing::run_job;
using testing::StandardInput;

using PassThrough = testing::MainLoopTest;

std::string all_values(std::size_t count) {
  std::string text(count, '\0');
  for (std::size_t i = 0; i < count; ++i) {
    text[i] = static_cast<char>(i * 7 + i / 256);
  }
  return text;
}

TEST_F(PassThrough, Command520CopiesTheRestUnchangedAndExits0EvenWhenTheCopyFails) {
  EXPECT_EQ(run_job({}, kParameterBlock + "rest\x0c\x1bQ").output,
            kParameterBlock + "rest\x0c\x1bQ");
  const FailingInput input(kParameterBlock + "abc");
  const JobResult result = testing::run_job_from_current_input({});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, kParameterBlock + "abc");
  EXPECT_EQ(result.messages, "filter: Connection reset by peer\n");
}

TEST_F(PassThrough, RestOfEveryLengthIsCopied) {
  for (const std::size_t length : {0U, 1U, 2U, 8191U, 8192U, 65535U - 16U, 65536U - 16U,
                                   65537U - 16U, 65536U, 131072U, 131073U, 400001U}) {
    const std::string job = kParameterBlock + all_values(length);
    const JobResult result = run_job({}, job);
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output == job) << length;
    EXPECT_EQ(result.messages, "");
  }
}

TEST_F(PassThrough, AJobOfThePrintersLanguageComesOutAsItWentIn) {
  for (const std::string& input :
       {std::string("ABC\n\f"), std::string("A\fB\fC"), std::string("\n"),
        "A" + testing::kBlankCommand + "B", std::string(20000, 'x') + "\f\xe3\x81\x82"}) {
    const std::string job = run_job({}, input).output;
    ASSERT_TRUE(job.starts_with(kParameterBlock));
    for (const std::vector<std::string>& options : std::vector<std::vector<std::string>>{
             {}, {"-q"}, {"-L", "2"}, {"-c", "10"}, {"-E"}, {"-R"}, {"-C"}}) {
      EXPECT_EQ(run_job(options, job).output, job);
    }
  }
}

TEST_F(PassThrough, WhatStandsInThePageBufferIsNotWritten) {
  EXPECT_EQ(run_job({}, "AB\n" + kParameterBlock + "rest").output, kParameterBlock + "rest");
  const std::string page = run_job({"-q"}, "A\x0c").output;
  const std::string written = page.substr(0, page.size() - testing::kJobEnd.size());
  EXPECT_EQ(run_job({"-q"},
                    "A\x0c"
                    "B" +
                        kParameterBlock + "rest")
                .output,
            written + kParameterBlock + "rest");
}

/// Runs a job with a full device as its output, and exits with the job's status.
[[noreturn]] void run_into_full_device(std::string_view input) {
  const StandardInput standard_input(input);
  const RedirectedDescriptor output(STDOUT_FILENO, "/dev/full", O_WRONLY);
  std::exit(testing::run_job_here({}));
}

TEST_F(PassThrough, FinishedPagesBeforeItThatCannotBeWrittenAreAWriteError) {
  EXPECT_EXIT(run_into_full_device("A\x0c" + kParameterBlock + "rest"),
              ::testing::ExitedWithCode(1), "^write error$");
}

TEST_F(PassThrough, ItsOwnBytesThatCannotBeWrittenAreAWriteError) {
  EXPECT_EXIT(run_into_full_device(kParameterBlock + "rest"), ::testing::ExitedWithCode(1),
              "^write error$");
  EXPECT_EXIT(run_into_full_device(kParameterBlock), ::testing::ExitedWithCode(1), "^write error$");
}

TEST_F(PassThrough, NothingThatWaitsIsWrittenBefore) {
  pend_conditions();
  use_form({6, 6}, 1);
  hold_movement("VVV");
  hold_command("HELD");
  the_filter().loop.content_since_conditions = true;
  const StandardInput input("rest");
  const testing::Routed routed = route(CMD_Q_BQ_SL, kParameterBlock);
  EXPECT_FALSE(routed.goes_on);
  EXPECT_EQ(routed.data, kParameterBlock + "rest");
  EXPECT_EQ(the_filter().loop.status, 0);
}

TEST_F(PassThrough, CommandWithoutBytesOnlyCopies) {
  const StandardInput input("rest");
  EXPECT_EQ(route(CMD_Q_BQ_SL, "").data, "rest");
}

TEST_F(PassThrough, FramedJobGoesOutWithoutFramesAndWithoutWhatIsHeld) {
  const std::string more = cnt_frame("more") + end_frame("last\x0c") + "behind";
  EXPECT_EQ(run_job({"-d"}, cnt_frame("AB" + kParameterBlock + "rest") + more).output,
            kParameterBlock + more);
  // Frames that have gone out before stay.
  EXPECT_EQ(run_job({"-d", "-q"}, cnt_frame("AB") + cnt_frame(kParameterBlock) + more).output,
            cnt_frame("AB") + kParameterBlock + more);
  EXPECT_EQ(run_job({"-d"}, end_frame("A" + kParameterBlock)).output, kParameterBlock);
}

TEST_F(PassThrough, FramedCommandMayCrossFrames) {
  for (std::size_t cut = 1; cut < kParameterBlock.size(); ++cut) {
    EXPECT_EQ(run_job({"-d"}, cnt_frame("A" + kParameterBlock.substr(0, cut)) +
                                  cnt_frame(kParameterBlock.substr(cut) + "rest") + "raw")
                  .output,
              kParameterBlock + "raw")
        << cut;
  }
}

TEST_F(PassThrough, FramedCopyThatFailsExits0) {
  const FailingInput input(cnt_frame("A" + kParameterBlock + "rest") + "abc");
  const JobResult result = testing::run_job_from_current_input({"-d"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, kParameterBlock + "abc");
  EXPECT_EQ(result.messages, "filter: Connection reset by peer\n");
}

/// Lets the files of the process grow to `bytes` and no further.
void limit_files(rlim_t bytes) {
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{bytes, bytes};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

/// Passes a job through to a file that takes `room` bytes; exits with the status.
[[noreturn]] void pass_through_with_room(rlim_t room, const std::string& rest) {
  const StandardInput input(rest);
  limit_files(room);
  LoopState& loop = the_filter().loop;
  loop.record = testing::make_record(CMD_Q_BQ_SL, kParameterBlock);
  pass_through(loop);
  std::exit(loop.copy_failed ? exit_status_of(loop.status) : 99);
}

TEST_F(PassThrough, CopyThatCannotBeWrittenIsReportedAndExits0) {
  // The limit holds for the file that catches the message, too.
  for (const std::size_t length : {200U, 300000U}) {
    for (const std::size_t room : {50U, 199U}) {
      const std::string rest = all_values(length);
      std::string caught;
      {
        const CaptureDescriptor output(STDOUT_FILENO);
        EXPECT_EXIT(pass_through_with_room(kParameterBlock.size() + room, rest),
                    ::testing::ExitedWithCode(0), "^filter: File too large\n$");
        caught = output.text();
      }
      EXPECT_TRUE(caught == kParameterBlock + rest.substr(0, room));
    }
  }
}

}  // namespace
}  // namespace rlx
