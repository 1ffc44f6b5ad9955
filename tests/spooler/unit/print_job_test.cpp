#include "running/print_job.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <thread>

#include "mapping/condition_command.h"
#include "spooler/unit/spooler_rig.h"
#include "support/descriptors.h"
#include "tools/read_job.h"
#include "tools/tool_run.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;
namespace fs = std::filesystem;

class Notes : public PrintListener {
 public:
  void command_line(const std::string& words) override { command_lines.push_back(words); }
  void page(std::uint64_t number, unsigned copies) override {
    pages += std::to_string(number) + '*' + std::to_string(copies) + ' ';
  }

  std::vector<std::string> command_lines;
  std::string pages;
};

class PrintJobTest : public ::testing::Test {
 protected:
  PrintJobTest() {
    job_.filter = link_filter();
    job_.form_checker = RLX_FCBCHECK;
    job_.queue.form_directories = {scratch_.path() + "/forms"};
  }

  /// Prints a job that is a file, or comes through a pipe.
  PrintResult print(const std::string& text, bool through_pipe = false) {
    const Descriptor file = memory_file(text);
    Pipe pipe = make_pipe();
    std::thread host([&] {
      if (through_pipe) {
        write_all(pipe.write_end.number(), as_bytes(text));
      }
      pipe.write_end.reset();
    });
    PipeReader printer;
    job_.input = through_pipe ? pipe.read_end.number() : file.number();
    job_.output = printer.descriptor();
    notes_ = Notes();
    PrintResult result = print_job(job_, notes_, never_);
    pipe.read_end.reset();
    host.join();
    output_ = printer.text();
    EXPECT_EQ(result.bytes, output_.size());
    return result;
  }

  static std::string by_hand(const std::string& text,
                             const std::vector<std::string>& arguments = {}) {
    return run_tool(RLX_SANDBOXED_PROGRAM, {.arguments = arguments, .input = text}).output;
  }

  void expect_printed(const PrintResult& result) {
    EXPECT_EQ(result.problem, Problem::none);
    EXPECT_EQ(result.words, "");
    EXPECT_EQ(result.output_error, 0);
    const FoundJob found = read_job(output_);
    EXPECT_EQ(shown_faults(found), "");
    EXPECT_EQ(found.outside, "");
  }

  /// Nothing reached the printer, and this is why.
  void expect_refused(const PrintResult& result, Problem problem, const std::string& words) {
    EXPECT_EQ(result.problem, problem);
    EXPECT_EQ(result.words, words);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(result.count.pages, 0U);
    EXPECT_EQ(notes_.pages, "");
  }

  void TearDown() override {
    EXPECT_EQ(open_descriptors(), descriptors_);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a process is left";
  }

  IgnoredBrokenPipe ignored_;
  ScratchDirectory scratch_;
  const Cancellation never_;
  std::size_t descriptors_ = open_descriptors();
  PrintJob job_;
  Notes notes_;
  std::string output_;
};

/// A print-condition command of a job's own.
std::string own_conditions() {
  JobSettings settings;
  settings.tray = Tray::tray_3;
  return condition_command(settings, 1);
}

TEST_F(PrintJobTest, WithoutAWishIsTheFiltersOutput) {
  const std::string text = "A\fB\fC";
  for (const bool through_pipe : {false, true}) {
    expect_printed(print(text, through_pipe));
    job_.queue.form_directories.clear();
    expect_printed(print(text, through_pipe));
    EXPECT_EQ(output_, by_hand(text));
    EXPECT_EQ(notes_.pages, "1*1 2*1 3*1 ");
    EXPECT_EQ(notes_.command_lines, std::vector<std::string>{job_.filter});
  }
}

TEST_F(PrintJobTest, HasItsOptions) {
  write_file("forms/fcbe/THREE", "print 3\n");
  job_.settings.form = "THREE";
  job_.settings.lines_per_inch = 8;
  job_.settings.paper = Paper::a3;
  expect_printed(print("A\fB\f"));
  const std::string forms = scratch_.path() + "/forms";
  EXPECT_EQ(output_, by_hand(condition_command(job_.settings, 1) + "A\fB\f",
                             {"-l", "8", "-p", forms, "-n", "THREE"}));
  EXPECT_EQ(notes_.command_lines,
            std::vector<std::string>{job_.filter + " -l 8 -p " + forms + " -n THREE"});
}

TEST_F(PrintJobTest, LeavesCopiesToThePrinter) {
  for (const bool through_pipe : {false, true}) {
    job_.settings.copies = 4;
    const PrintResult result = print("A\fB\f", through_pipe);
    expect_printed(result);
    EXPECT_EQ(output_.find("CPS=4\n") != std::string::npos, true);
    EXPECT_EQ(read_job(output_).pages_begun, 2U);
    EXPECT_EQ(notes_.pages, "1*4 2*4 ");
    EXPECT_EQ(result.count.pages, 2U);
    EXPECT_EQ(result.count.impressions, 8U);
  }
  job_.settings.copies = 999;
  EXPECT_EQ(print("A\f").count.impressions, 999U);
  EXPECT_EQ(notes_.pages, "1*999 ");
}

TEST_F(PrintJobTest, WithConditionsOfItsOwnIsSentForEachCopy) {
  const std::string text = "A\f" + own_conditions() + "B\f";
  job_.queue.form_directories.clear();
  for (const bool through_pipe : {false, true}) {
    job_.settings.copies = 3;
    const PrintResult result = print(text, through_pipe);
    expect_printed(result);
    EXPECT_EQ(output_.find("CPS="), std::string::npos);
    const std::string once = by_hand(text);
    EXPECT_EQ(output_, once + once + once);
    EXPECT_EQ(notes_.pages, "1*1 2*1 3*1 4*1 5*1 6*1 ");
    EXPECT_EQ(result.count.impressions, 6U);
    EXPECT_EQ(notes_.command_lines.size(), 3U);
  }
}

/// Also where the command stands behind all that is read at once.
TEST_F(PrintJobTest, IsLookedThroughToItsEndForConditions) {
  job_.settings.copies = 2;
  for (const std::size_t place : {16383U, 16384U, 16385U, 100000U}) {
    std::string text(place, 'x');
    for (std::size_t at = 80; at < place; at += 80) {
      text[at] = '\n';
    }
    expect_printed(print(text + own_conditions() + "B\f"));
    EXPECT_EQ(output_.find("CPS="), std::string::npos) << place;
  }
}

TEST_F(PrintJobTest, WithCopiesOfItsOwnMultipliesThem) {
  // The job asks for 3 copies itself, and for the job two were wanted.
  job_.settings.copies = 2;
  const PrintResult result = print(condition_command(JobSettings(), 3) + "A\f");
  expect_printed(result);
  EXPECT_EQ(notes_.pages, "1*3 2*3 ");
  EXPECT_EQ(result.count.impressions, 6U);
}

TEST_F(PrintJobTest, OfMoreCopiesThanThePrinterCountsIsSentForEach) {
  job_.settings.copies = 1000;
  job_.filter = "/bin/cat";
  job_.queue.form_directories.clear();
  const PrintResult result = print("x");
  EXPECT_EQ(result.problem, Problem::none);
  EXPECT_EQ(output_, std::string(1000, 'x'));
}

TEST_F(PrintJobTest, InThePrintersLanguageGoesOutAsItIs) {
  const std::string rlx = by_hand("A\fB\f");
  job_.in_printer_language = true;
  job_.filter = "/nowhere/filter";
  job_.settings.form = "NOWHERE";
  job_.settings.paper = Paper::a3;
  job_.settings.charset = "EUC-JP";
  for (const bool through_pipe : {false, true}) {
    job_.settings.copies = 1;
    expect_printed(print(rlx, through_pipe));
    EXPECT_EQ(output_, rlx);
    EXPECT_EQ(notes_.pages, "1*1 2*1 ");
    EXPECT_TRUE(notes_.command_lines.empty());
    job_.settings.copies = 3;
    EXPECT_EQ(print(rlx, through_pipe).count.impressions, 6U);
    EXPECT_EQ(output_, rlx + rlx + rlx);
  }
}

TEST_F(PrintJobTest, WithoutTheFilterSaysSo) {
  job_.filter = "";
  expect_refused(print("A\f"), Problem::system, "the filter, zqeuctorlx, is not installed");
  job_.filter = "/nowhere/zqeuctorlx";
  expect_refused(print("A\f"), Problem::system,
                 "/nowhere/zqeuctorlx cannot be started: No such file or directory");
}

TEST_F(PrintJobTest, OfAQueueThatIsWrongIsRefused) {
  job_.queue.emulation_mode = 5;
  expect_refused(print("A\f"), Problem::wrong_option,
                 "the queue is set up wrongly: option rlxEmulationMode=5: wanted is 1, 2, 3, 4, 6 "
                 "or 7");
}

TEST_F(PrintJobTest, WithoutItsFormIsRefused) {
  job_.settings.form = "INVOICE";
  job_.queue.form_directories = {"/nowhere", scratch_.path() + "/forms"};
  const std::string words =
      "form INVOICE is missing; it was looked for as "
      "/nowhere/fcbe/INVOICE, " +
      scratch_.path() +
      "/forms/fcbe/INVOICE, /usr/local/lib/PXLQlp/fcbe/INVOICE; put it "
      "there, then let the job print again";
  expect_refused(print("A\f"), Problem::form_missing, words);
  // What is no file is no form.
  fs::create_directories("forms/fcbe/INVOICE");
  expect_refused(print("A\f"), Problem::form_missing, words);
  fs::remove("forms/fcbe/INVOICE");
  fs::create_symlink("/dev/null", "forms/fcbe/INVOICE");
  expect_refused(print("A\f"), Problem::form_missing, words);
  // It prints once the form is there.
  fs::remove("forms/fcbe/INVOICE");
  write_file("forms/fcbe/INVOICE", "print 1\n");
  expect_printed(print("A\f"));
}

TEST_F(PrintJobTest, WithAWrongFormSaysWhatIsWrongWithIt) {
  write_file("forms/fcbe/WRONG", "print 300\n");
  job_.settings.form = "WRONG";
  expect_refused(print("A\f"), Problem::form_wrong,
                 "form WRONG: " + scratch_.path() +
                     "/forms/fcbe/WRONG:1: print: first line 300 is above 255 (zqeuctorlx: FCB "
                     "data error); mend the form, then let the job print again");
}

TEST_F(PrintJobTest, ThatNamesAMissingFormItselfFails) {
  write_file("forms/fcbe/GOOD", "print 1\n");
  job_.settings.form = "GOOD";
  std::string command = own_conditions();
  command.replace(command.find("n  2") + 3 + 15, 4, "GONE");
  const PrintResult result = print("A\f" + command + "B\f");
  EXPECT_EQ(result.problem, Problem::form_wrong);
  EXPECT_EQ(result.words,
            "zqeuctorlx: FCB data error: a form, or the print-condition command that names it, "
            "cannot be used: check the form with fcbcheck, and the command in the job");
  // What was printed before is a whole job.
  EXPECT_EQ(shown_faults(read_job(output_)), "");
  EXPECT_EQ(result.count.pages, 1U);
}

TEST_F(PrintJobTest, InAnotherEncodingIsConverted) {
  job_.settings.charset = "EUC-JP";
  job_.queue.form_directories.clear();
  for (const bool through_pipe : {false, true}) {
    job_.settings.copies = 1;
    expect_printed(print("\xc6\xfc\xcb\xdc\f", through_pipe));
    EXPECT_EQ(output_, by_hand("\xe6\x97\xa5\xe6\x9c\xac\f"));
    job_.settings.copies = 2;
    EXPECT_EQ(print("\xc6\xfc\xcb\xdc\f", through_pipe).count.impressions, 2U);
  }
}

TEST_F(PrintJobTest, ThatIsNoTextOfItsEncodingPrintsNothing) {
  job_.settings.charset = "EUC-JP";
  const std::string text = std::string(200000, '\n') + "\xc6\xfc\xff";
  for (const bool through_pipe : {false, true}) {
    expect_refused(print(text, through_pipe), Problem::wrong_text,
                   "byte 200002 of the job: this is no character of EUC-JP; nothing was printed; "
                   "name the encoding of the text with the option rlx-charset");
  }
  expect_refused(
      print("\xc6\xfc" + own_conditions()), Problem::wrong_text,
      "byte 2 of the job: a control sequence; only text without them can be converted "
      "from EUC-JP; nothing was printed; a job with control sequences is UTF-8: leave the "
      "option rlx-charset out, or give it the value UTF-8");
}

TEST_F(PrintJobTest, OfAFilterThatFailsSaysWhy) {
  struct Row {
    const char* script;
    Problem problem;
    const char* words;
  };
  const std::vector<Row> rows{
      {"exit 1\n", Problem::system,
       "the filter ended with status 1: there may be too little memory"},
      {"cat >/dev/null; exit 127\n", Problem::job,
       "the filter ended with status 127: the font library failed while fonts were opened"},
      {"exit 129\n", Problem::system,
       "the filter ended with status 129: the job could not be read"},
      {"kill -9 $$\n", Problem::system, "the filter was ended by signal 9 (Killed)"},
      {"cat >/dev/null; echo 'failing: Input/output error' >&2; exit 0\n", Problem::job,
       "failing: Input/output error: the manual page zqeuctorlx(8) lists the messages"},
  };
  for (const Row& row : rows) {
    job_.filter = write_script("failing", row.script);
    expect_refused(print(std::string(300000, 'x')), row.problem, row.words);
    expect_refused(print(std::string(300000, 'x'), true), row.problem, row.words);
  }
}

/// A failure ends the copies, too.
TEST_F(PrintJobTest, ThatFailsIsNotSentAgain) {
  job_.filter = write_script("failing", "echo run >>runs\ncat >/dev/null\nexit 3\n");
  job_.settings.copies = 5;
  EXPECT_EQ(print(own_conditions() + "A\f").words, "the filter ended with status 3");
  EXPECT_EQ(read_file("runs"), "run\n");
}

TEST_F(PrintJobTest, WhoseOutputNobodyTakesSaysSo) {
  const Descriptor file = memory_file(std::string(500000, '\f'));
  Pipe gone = make_pipe();
  gone.read_end.reset();
  job_.input = file.number();
  job_.output = gone.write_end.number();
  job_.settings.copies = 1000;
  const PrintResult result = print_job(job_, notes_, never_);
  EXPECT_EQ(result.problem, Problem::output);
  EXPECT_EQ(result.output_error, EPIPE);
  EXPECT_EQ(result.words, "the output was not taken to its end: Broken pipe");
  EXPECT_EQ(notes_.command_lines.size(), 1U);
}

TEST_F(PrintJobTest, ThatCannotBeReadSaysSo) {
  const Descriptor folder(open(".", O_RDONLY | O_CLOEXEC));
  PipeReader printer;
  job_.input = folder.number();
  job_.output = printer.descriptor();
  EXPECT_EQ(print_job(job_, notes_, never_).words, "the job: Is a directory");
  job_.settings.copies = 2;
  EXPECT_EQ(print_job(job_, notes_, never_).words, "the job: Is a directory");
  job_.input = -1;
  EXPECT_EQ(print_job(job_, notes_, never_).words, "the job: Bad file descriptor");
  job_.settings.copies = 1;
  EXPECT_EQ(print_job(job_, notes_, never_).words, "the job: Bad file descriptor");
  job_.in_printer_language = true;
  EXPECT_EQ(print_job(job_, notes_, never_).words, "the job: Bad file descriptor");
}

/// Cancelled at several moments, on its way to the filter or while it is kept: what the printer got
/// are whole jobs.
TEST_F(PrintJobTest, ThatIsCancelledLeavesAWholeJob) {
  struct Row {
    unsigned copies;
    const char* charset;
    unsigned after;  ///< microseconds
  };
  for (const Row& row : {Row{1, "", 0}, Row{1, "", 3000}, Row{1, "", 30000}, Row{4, "", 3000},
                         Row{1, "EUC-JP", 3000}}) {
    SCOPED_TRACE(std::to_string(row.copies) + row.charset + std::to_string(row.after));
    Cancellation cancellation;
    Pipe pipe = make_pipe();
    std::thread host([&pipe] {
      while (write_all(pipe.write_end.number(), as_bytes("LINE\nLINE\n\f")) == 0) {
      }
    });
    std::thread asker([&] {
      usleep(row.after);
      cancellation.ask();
    });
    PipeReader printer;
    job_.input = pipe.read_end.number();
    job_.output = printer.descriptor();
    job_.settings.copies = row.copies;
    job_.settings.charset = row.charset;
    const PrintResult result = print_job(job_, notes_, cancellation);
    pipe.read_end.reset();
    host.join();
    asker.join();
    EXPECT_EQ(result.problem, Problem::none) << result.words;
    const FoundJob found = read_job(printer.text());
    EXPECT_EQ(shown_faults(found), "");
    if (!found.blocks.empty()) {
      EXPECT_EQ(found.blocks.back().block.use, reader::BlockUse::job_end);
    }
  }
}

TEST_F(PrintJobTest, InThePrintersLanguageLeavesAWholeJobWhenItIsCancelled) {
  std::string pages;
  for (int i = 0; i < 3000; ++i) {
    pages += std::string(static_cast<std::size_t>(i % 200), 'x') + "\n\f";
  }
  const std::string rlx = by_hand(pages);
  job_.in_printer_language = true;
  for (const unsigned after : {0U, 1000U, 5000U, 20000U}) {
    SCOPED_TRACE(after);
    Cancellation cancellation;
    Pipe pipe = make_pipe();
    std::thread host([&] {
      // A host that sends slowly.
      for (std::size_t at = 0; at < rlx.size(); at += 1000) {
        if (write_all(pipe.write_end.number(), as_bytes(std::string_view(rlx).substr(at, 1000))) !=
            0) {
          break;
        }
        usleep(100);
      }
      pipe.write_end.reset();
    });
    std::thread asker([&] {
      usleep(after);
      cancellation.ask();
    });
    PipeReader printer;
    job_.input = pipe.read_end.number();
    job_.output = printer.descriptor();
    const PrintResult result = print_job(job_, notes_, cancellation);
    pipe.read_end.reset();
    host.join();
    asker.join();
    EXPECT_EQ(result.problem, Problem::none) << result.words;
    const FoundJob found = read_job(printer.text());
    EXPECT_EQ(shown_faults(found), "");
    EXPECT_LT(found.pages_begun, 3000U);
    if (found.pages_begun > 0) {
      EXPECT_EQ(found.blocks.back().block.use, reader::BlockUse::job_end);
    }
    EXPECT_EQ(result.count.pages, found.pages_begun);
  }
}

TEST_F(PrintJobTest, ThatIsCancelledBetweenCopiesSendsNoMore) {
  Cancellation cancellation;
  // Each run of the filter takes a while.
  job_.filter = write_script("slow", "cat >/dev/null\nsleep 0.05\nprintf x\n");
  job_.settings.copies = 1000;
  std::thread asker([&cancellation] {
    usleep(200000);
    cancellation.ask();
  });
  const Descriptor file = memory_file("A\f");
  PipeReader printer;
  job_.input = file.number();
  job_.output = printer.descriptor();
  EXPECT_EQ(print_job(job_, notes_, cancellation).problem, Problem::none);
  asker.join();
  EXPECT_LT(printer.text().size(), 10U);
}

TEST(FormPlaces, AreThoseOfTheQueueThenThoseOfTheSystem) {
  QueueSettings queue;
  EXPECT_EQ(form_places(queue, "F"), std::vector<std::string>({"/usr/local/lib/PXLQlp/fcbe/F"}));
  queue.form_directories = {"/b", "/a"};
  EXPECT_EQ(form_places(queue, "F"),
            std::vector<std::string>({"/b/fcbe/F", "/a/fcbe/F", "/usr/local/lib/PXLQlp/fcbe/F"}));
}

}  // namespace
}  // namespace rlx::spooler
