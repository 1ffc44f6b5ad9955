// A cupsd whose queue's device is a printer of the application: options set on CUPS's side arrive
// as attributes of IPP, and the pages are those of a job that was sent to the application directly.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "spooler/app/app_server.h"
#include "support/record_builder.h"

namespace rlx::testing {
namespace {

/// CUPS's backend asks each printer by SNMP first, and waits four seconds for an answer.
class LongAppCups : public AppTest {
 protected:
  LongAppCups() { add_queue("q", {"--forms", server_.forms()}); }

  void add_queue(const std::string& name, std::vector<std::string> options = {}) {
    std::vector<std::string> words{"add", name, "--device", server_.uri("office")};
    words.insert(words.end(), options.begin(), options.end());
    const Outcome outcome = cups_.rlx_queue(words);
    EXPECT_EQ(outcome.status, 0) << outcome.messages;
  }

  /// Prints by lp. @return what reached the printer.
  PrinterJob print_by_cups(std::string_view job, const std::vector<std::string>& options = {},
                           const std::string& queue = "q") {
    const std::size_t before = printer_.jobs().size();
    const int id = cups_.submit(queue, job, options);
    const CupsJob settled = cups_.wait_for(queue, id);
    EXPECT_EQ(settled.state, "completed") << settled.message << '\n' << cups_.log_of(id);
    const auto& jobs = printer_.wait_for_jobs(before + 1);
    EXPECT_EQ(jobs.size(), before + 1);
    return jobs.size() > before ? jobs[before] : PrinterJob();
  }

  CupsServer cups_;
};

/// Japanese, a page end, and a sequence with extended parameters.
const char* const kMixedJob = "\033Q1;2;3;4;5/~12345A\n\346\227\245\346\234\254\nC\nD\n\fE\f";

TEST_F(LongAppCups, Text) {
  const std::string text = numbered_pages("A", 3);
  expect_same_job(filtered({}, text), print_by_cups(text));
}

TEST_F(LongAppCups, JapaneseText) {
  const std::string text = "\346\227\245\346\234\254\350\252\236\n\f";
  expect_same_job(filtered({}, text), print_by_cups(text));
  expect_same_job(filtered({}, text),
                  print_by_cups("\306\374\313\334\270\354\n\f", {"rlx-charset=EUC-JP"}));
}

TEST_F(LongAppCups, LinePrinterJob) {
  expect_same_job(filtered({}, kMixedJob), print_by_cups(kMixedJob));
}

TEST_F(LongAppCups, JobInThePrintersLanguage) {
  const std::string job = filtered({}, numbered_pages("A", 2));
  expect_same_job(job, print_by_cups(job));
}

TEST_F(LongAppCups, Form) {
  const std::string text = numbered_pages("A", 2);
  const std::string expected = filtered({"-n", "INVOICE", "-p", forms()}, text);
  expect_same_job(expected, print_by_cups(text, {"form=INVOICE"}));
}

struct OptionRow {
  std::vector<std::string> options;
  std::vector<std::string> filter_options;
  ConditionColumns columns;
  bool has_record = false;
};

OptionRow of_filter(std::vector<std::string> options, std::vector<std::string> filter_options) {
  return {std::move(options), std::move(filter_options), {}, false};
}

OptionRow of_record(std::vector<std::string> options, ConditionColumns columns) {
  columns.layout = "2";
  return {std::move(options), {}, std::move(columns), true};
}

std::vector<OptionRow> option_rows() {
  return {
      of_filter({"lpi=8"}, {"-l", "8"}),
      of_filter({"cpi=12"}, {"-c", "12"}),
      of_filter({"lines-per-page=2"}, {"-L", "2"}),
      of_filter({"rlx-undefined=ubar"}, {"-r", "ubar"}),
      of_filter({"rlx-extended=True"}, {"-P"}),
      of_filter({"sides=one-sided"}, {}),
      // What a dialog sends of options that nobody chose.
      of_filter({"form=None", "lines-per-page=None", "lpi=Default", "cpi=Default",
                 "rlx-undefined=space", "rlx-extended=False", "rlx-charset=UTF-8"},
                {}),
      of_record({"copies=3"}, {.copies = "  3"}),
      of_record({"media=A3"}, {.paper_size = "A3"}),
      of_record({"PageSize=Letter"}, {.paper_size = "LTR"}),
      of_record({"media=jis_b4_257x364mm"}, {.paper_size = "B4"}),
      // CUPS's backend says a paper whenever it says a tray.
      of_record({"InputSlot=Tray2"}, {.paper_size = "A4", .tray = "P2"}),
      of_record({"media-source=tray-4"}, {.tray = "P4"}),
      of_record({"sides=two-sided-long-edge"}, {.duplex = "B", .binding_edge = "L"}),
      of_record({"Duplex=DuplexTumble"}, {.duplex = "B", .binding_edge = "U"}),
      of_record({"orientation-requested=4"}, {.orientation = "L"}),
      of_record({"page-offset-x=1440"}, {.first_offset = " 1440"}),
      of_record({"page-offset-y=7200"}, {.second_offset = " 7200"}),
  };
}

TEST_F(LongAppCups, EveryOption) {
  for (const OptionRow& row : option_rows()) {
    SCOPED_TRACE(row.options.front());
    const std::string job = (row.has_record ? condition_sequence(row.columns) : "") + kMixedJob;
    expect_same_job(filtered(row.filter_options, job), print_by_cups(kMixedJob, row.options));
  }
}

/// Where the reason of a job that the application aborts arrives: at the application. CUPS learns
/// that the job has ended; which word it has for that depends on which of its two looks comes
/// first.
TEST_F(LongAppCups, FormThatIsNotThere) {
  const int id = cups_.submit("q", "TEXT\f", {"form=NOSUCH"});
  const CupsJob settled = cups_.wait_for("q", id);
  EXPECT_TRUE(settled.state == "canceled" || settled.state == "completed") << settled.state;
  const AppJob job = server_.wait_for("office", 1);
  EXPECT_EQ(job.state, kAborted);
  EXPECT_NE(job.message.find("NOSUCH"), std::string::npos) << job.message;
  EXPECT_NE(server_.log().find("[Job 1] " + job.message), std::string::npos);
  EXPECT_TRUE(printer_.jobs().empty());
  // The queue goes on.
  expect_same_job(filtered({}, "NEXT\f"), print_by_cups("NEXT\f"));
}

TEST_F(LongAppCups, ValueThatCannotBe) {
  const int id = cups_.submit("q", "TEXT\f", {"lpi=7"});
  const CupsJob settled = cups_.wait_for("q", id);
  EXPECT_TRUE(settled.state == "canceled" || settled.state == "completed") << settled.state;
  EXPECT_EQ(server_.wait_for("office", 1).message,
            "option lpi=7: wanted is 3, 4, 6, 8 or 12; nothing was printed");
}

/// texttorlx refuses what cupsd does not recognise; nothing of it reaches the application.
TEST_F(LongAppCups, JobOfAnUnknownKind) {
  const int id = cups_.submit("q", std::string("\0\1\2\3binary\0", 11));
  const CupsJob settled = cups_.wait_for("q", id);
  EXPECT_NE(settled.message.find("neither text nor a job with control sequences"),
            std::string::npos)
      << settled.message;
  EXPECT_EQ(server_.job("office", 1).state, 0);
}

/// The application's default form is that of jobs that ask for none; a queue may have its own.
TEST_F(LongAppCups, DefaultForms) {
  const std::string text = numbered_pages("A", 2);
  const Outcome set = server_.ipptool("set-default-form.test", {"-d", "form=LABEL"});
  ASSERT_EQ(set.status, 0) << set.output;
  expect_same_job(filtered({"-n", "LABEL", "-p", forms()}, text), print_by_cups(text));
  add_queue("own", {"--forms", server_.forms(), "--default-form", "INVOICE"});
  expect_same_job(filtered({"-n", "INVOICE", "-p", forms()}, text), print_by_cups(text, {}, "own"));
  expect_same_job(filtered({}, text), print_by_cups(text, {"form=None"}, "own"));
  add_queue("own", {"--forms", server_.forms()});
  expect_same_job(filtered({"-n", "LABEL", "-p", forms()}, text), print_by_cups(text, {}, "own"));
}

/// A queue that CUPS makes by itself sends pictures.
TEST_F(LongAppCups, QueueOfEverywhere) {
  const Outcome made =
      cups_.run({"lpadmin", "-p", "e", "-E", "-v", server_.uri("office"), "-m", "everywhere"});
  // Filters of pictures run as another user, and need a folder for files.
  std::filesystem::permissions(cups_.directory() + "/temporary", std::filesystem::perms(01777));
  ASSERT_EQ(made.status, 0) << made.output << made.messages;
  const int id = cups_.submit("e", "TEXT\f");
  const CupsJob settled = cups_.wait_for("e", id, Seconds(60));
  const AppJob job = server_.wait_for("office", 1);
  EXPECT_TRUE(settled.state == "canceled" || settled.state == "completed") << settled.state;
  EXPECT_EQ(job.state, kAborted);
  EXPECT_EQ(
      job.message,
      "this printer prints text and line-printer jobs, not pictures or PDF; nothing was printed");
  EXPECT_TRUE(printer_.jobs().empty());
}

}  // namespace
}  // namespace rlx::testing
