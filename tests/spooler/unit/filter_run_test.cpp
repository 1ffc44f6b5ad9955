#include "running/filter_run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <optional>
#include <thread>

#include "spooler/unit/spooler_rig.h"
#include "support/descriptors.h"
#include "tools/read_job.h"
#include "tools/tool_run.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;

class FilterRun : public ::testing::Test {
 protected:
  /// Runs a program on a job that is there as a whole, with its output caught.
  RunReport run(const std::string& program, const std::string& job,
                const std::vector<std::string>& arguments = {}) {
    PortionSource source(job, 1000);
    PipeReader printer;
    RunReport report = run_to(program, arguments, source, printer.descriptor());
    output_ = printer.text();
    return report;
  }

  RunReport run_to(const std::string& program, const std::vector<std::string>& arguments,
                   JobSource& source, int output) {
    Cancellation run;
    return run_filter({program, arguments}, source, output, listener(), run);
  }

  PageListener listener() {
    return [this](std::uint64_t number, unsigned copies) {
      pages_ += std::to_string(number) + '*' + std::to_string(copies) + ' ';
    };
  }

  void TearDown() override {
    EXPECT_EQ(open_descriptors(), descriptors_);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a process is left";
  }

  IgnoredBrokenPipe ignored_;
  ScratchDirectory scratch_;
  std::size_t descriptors_ = open_descriptors();
  std::string pages_;
  std::string output_;
};

std::string many_pages() {
  std::string job;
  for (int i = 0; i < 3000; ++i) {
    job += "PAGE " + std::to_string(i) + '\n' + std::string(100, 'x') + "\n\f";
  }
  return job;
}

TEST_F(FilterRun, HandsOnWhatTheFilterWrites) {
  const std::string job = many_pages();
  const RunReport report = run(link_filter(), job, {"-l", "8"});
  const ToolOutcome by_hand =
      run_tool(RLX_SANDBOXED_PROGRAM, {.arguments = {"-l", "8"}, .input = job});
  EXPECT_FALSE(failed(report));
  EXPECT_TRUE(output_ == by_hand.output);
  EXPECT_EQ(report.bytes, output_.size());
  EXPECT_EQ(report.count.pages, 3000U);
  EXPECT_EQ(report.count.impressions, 3000U);
  EXPECT_EQ(pages_.substr(0, 12), "1*1 2*1 3*1 ");
  EXPECT_EQ(report.words, "");
}

TEST_F(FilterRun, OfAnEmptyJobWritesNothing) {
  const RunReport report = run(link_filter(), "");
  EXPECT_FALSE(failed(report));
  EXPECT_EQ(output_, "");
  EXPECT_EQ(report.bytes, 0U);
  EXPECT_EQ(report.count.pages, 0U);
}

TEST_F(FilterRun, TellsTheStatusAndTheWords) {
  for (const int status : {1, 127, 129, 255}) {
    const RunReport report = run(
        write_script("filter", "cat >/dev/null; echo words >&2; exit " + std::to_string(status)),
        "job");
    EXPECT_TRUE(failed(report));
    EXPECT_EQ(report.end.status, status);
    EXPECT_EQ(report.words, "words\n");
  }
}

TEST_F(FilterRun, TellsTheSignal) {
  const RunReport report = run(write_script("filter", "kill -SEGV $$\n"), "job");
  EXPECT_TRUE(failed(report));
  EXPECT_EQ(report.end.signal, SIGSEGV);
}

TEST_F(FilterRun, FailsWithWordsOfTheFiltersOwnInSpiteOfStatus0) {
  EXPECT_TRUE(
      failed(run(write_script("filter", "cat; echo 'filter: No space' >&2\n"), many_pages())));
  EXPECT_FALSE(failed(run(write_script("filter", "cat; echo 'other: word' >&2\n"), "job")));
}

TEST_F(FilterRun, KeepsAsManyWordsAsItMay) {
  const RunReport report =
      run(write_script("filter", "head -c 1000000 /dev/zero | tr '\\0' w >&2; exit 1\n"), "job");
  EXPECT_EQ(report.words, std::string(RunReport::kMostWords, 'w'));
}

TEST_F(FilterRun, EndsWithAFilterThatDoesNotReadItsJob) {
  EXPECT_EQ(run(write_script("filter", "exit 1\n"), many_pages()).end.status, 1);
  // Nobody sends the rest of this one.
  const Pipe never_ends = make_pipe();
  Cancellation run;
  DescriptorSource source(never_ends.read_end.number(), run);
  PipeReader printer;
  const RunReport report = run_filter({write_script("filter", "exit 129\n"), {}}, source,
                                      printer.descriptor(), listener(), run);
  EXPECT_EQ(report.end.status, 129);
}

TEST_F(FilterRun, EndsWithAFilterThatReadsOnAfterItsOutput) {
  const Pipe never_ends = make_pipe();
  Cancellation run;
  DescriptorSource source(never_ends.read_end.number(), run);
  PipeReader printer;
  const RunReport report = run_filter({write_script("filter", "exec >&-\ncat\nexit 5\n"), {}},
                                      source, printer.descriptor(), listener(), run);
  EXPECT_EQ(report.end.status, 5);
}

TEST_F(FilterRun, TellsThatNobodyTakesTheOutput) {
  Pipe gone = make_pipe();
  gone.read_end.reset();
  PortionSource source(many_pages(), 1000);
  const RunReport report = run_to(link_filter(), {}, source, gone.write_end.number());
  EXPECT_TRUE(failed(report));
  EXPECT_EQ(report.output_error, EPIPE);
  EXPECT_EQ(report.bytes, 0U);
  EXPECT_EQ(report.count.pages, 0U);
  EXPECT_EQ(pages_, "");
}

TEST_F(FilterRun, TellsThatNobodyTakesTheRestOfTheOutput) {
  Pipe printer = make_pipe();
  std::thread reader([&printer] {
    std::vector<std::uint8_t> room(200000);
    std::size_t got = 0;
    while (got < 100000) {
      got += read_some(printer.read_end.number(), room, "");
    }
    printer.read_end.reset();
  });
  PortionSource source(many_pages(), 1000);
  const RunReport report = run_to(link_filter(), {}, source, printer.write_end.number());
  reader.join();
  EXPECT_EQ(report.output_error, EPIPE);
  EXPECT_LT(report.count.pages, 3000U);
}

TEST_F(FilterRun, TellsThatThereIsNoRoomForTheOutput) {
  const Descriptor full(open("/dev/full", O_WRONLY | O_CLOEXEC));
  PortionSource source(many_pages(), 1000);
  const RunReport report = run_to(link_filter(), {}, source, full.number());
  EXPECT_TRUE(failed(report));
  EXPECT_EQ(report.output_error, ENOSPC);
}

TEST_F(FilterRun, NeedsAFilter) {
  PortionSource source("job", 1000);
  Cancellation run;
  EXPECT_THROW(run_filter({"/nowhere/filter", {}}, source, 1, listener(), run), std::system_error);
}

/// A source that fails behind some text.
class BrokenSource : public JobSource {
 public:
  explicit BrokenSource(std::string text) : text_(std::move(text), 1000) {}
  std::size_t read(std::span<std::uint8_t> room) override {
    const std::size_t count = text_.read(room);
    return count > 0 ? count : throw ConversionFault("byte 2 of the job: no character");
  }

 private:
  PortionSource text_;
};

TEST_F(FilterRun, TellsThatTheJobCouldNotBeRead) {
  BrokenSource source("A\fB");
  PipeReader printer;
  const RunReport report = run_to(link_filter(), {}, source, printer.descriptor());
  EXPECT_TRUE(failed(report));
  EXPECT_EQ(report.job_error, "byte 2 of the job: no character");
  // What was there is a whole job for the printer.
  EXPECT_EQ(shown_faults(read_job(printer.text())), "");
  EXPECT_EQ(report.count.pages, 2U);
}

/// A job without end that is cancelled after a while: whole blocks come out, and a job end.
TEST_F(FilterRun, ThatIsCancelledEndsThePrintersJob) {
  for (const useconds_t moment : {0U, 1000U, 5000U, 20000U, 100000U}) {
    SCOPED_TRACE(moment);
    Cancellation cancellation;
    Pipe job = make_pipe();
    std::thread host([&job] {
      const std::string page = "PAGE\n" + std::string(997, 'x') + "\033[12a\n\f";
      while (write_all(job.write_end.number(), as_bytes(page)) == 0) {
      }
    });
    std::thread asker([&cancellation, moment] {
      usleep(moment);
      cancellation.ask();
    });
    Cancellation run(&cancellation);
    DescriptorSource source(job.read_end.number(), run);
    PipeReader printer;
    const RunReport report =
        run_filter({link_filter(), {}}, source, printer.descriptor(), listener(), run);
    job.read_end.reset();
    host.join();
    asker.join();
    EXPECT_FALSE(failed(report)) << report.words << report.job_error;
    const FoundJob found = read_job(printer.text());
    EXPECT_EQ(shown_faults(found), "");
    EXPECT_EQ(found.outside, "");
    if (!found.blocks.empty()) {
      EXPECT_EQ(found.blocks.back().block.use, reader::BlockUse::job_end);
    }
    EXPECT_EQ(report.count.pages, found.pages_begun);
  }
}

TEST_F(FilterRun, ThatIsCancelledEndsAPageThatIsOpen) {
  Cancellation cancellation;
  const Pipe job = make_pipe();
  put_bytes(job.write_end.number(), "A\fB");
  std::thread asker([&] {
    usleep(50000);
    cancellation.ask();
  });
  Cancellation run(&cancellation);
  DescriptorSource source(job.read_end.number(), run);
  PipeReader printer;
  const RunReport report =
      run_filter({link_filter(), {}}, source, printer.descriptor(), listener(), run);
  asker.join();
  EXPECT_FALSE(failed(report));
  const FoundJob found = read_job(printer.text());
  EXPECT_EQ(shown_faults(found), "");
  ASSERT_EQ(found.pages_begun, 2U);
  EXPECT_EQ(found.blocks.back().block.use, reader::BlockUse::job_end);
  EXPECT_EQ(report.count.pages, 2U);
}

/// A job that is cancelled where it could not have ended.
TEST_F(FilterRun, ThatIsCancelledInsideACharacterIsNoFailure) {
  class CutSource : public JobSource {
   public:
    explicit CutSource(Cancellation& run) : run_(run) {}
    std::size_t read(std::span<std::uint8_t> room) override {
      if (std::exchange(read_, true)) {
        run_.ask();
        throw ConversionFault("byte 2 of the job: the job ends inside a character");
      }
      return PortionSource("A\f", 2).read(room);
    }

   private:
    Cancellation& run_;
    bool read_ = false;
  };
  Cancellation run;
  CutSource source(run);
  PipeReader printer;
  const RunReport report =
      run_filter({link_filter(), {}}, source, printer.descriptor(), listener(), run);
  EXPECT_FALSE(failed(report)) << report.job_error;
  EXPECT_EQ(report.count.pages, 1U);
}

TEST_F(FilterRun, OfAJobInThePrintersLanguageNeedsNone) {
  const std::string job = run_tool(RLX_SANDBOXED_PROGRAM, {.input = many_pages()}).output;
  PortionSource source(job, 4097);
  PipeReader printer;
  const RunReport report = hand_on(source, printer.descriptor(), listener());
  EXPECT_FALSE(failed(report));
  EXPECT_TRUE(printer.text() == job);
  EXPECT_EQ(report.bytes, job.size());
  EXPECT_EQ(report.count.pages, 3000U);
}

TEST_F(FilterRun, HandsOnWhatIsNoJobUnchanged) {
  PortionSource source("this is no job", 3);
  PipeReader printer;
  const RunReport report = hand_on(source, printer.descriptor(), listener());
  EXPECT_FALSE(failed(report));
  EXPECT_EQ(printer.text(), "this is no job");
  EXPECT_EQ(report.count.pages, 0U);
}

TEST_F(FilterRun, HandsOnAsFarAsItCan) {
  BrokenSource source("job");
  PipeReader printer;
  const RunReport report = hand_on(source, printer.descriptor(), listener());
  EXPECT_TRUE(failed(report));
  EXPECT_EQ(report.job_error, "byte 2 of the job: no character");
  EXPECT_EQ(printer.text(), "job");
}

}  // namespace
}  // namespace rlx::spooler
