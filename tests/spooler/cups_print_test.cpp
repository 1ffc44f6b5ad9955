// Jobs that print: what reaches the printer is what the filter makes of them by hand, and CUPS
// counts as many pages as the printer got.
#include <gtest/gtest.h>

#include <filesystem>

#include "spooler/spooler_test.h"
#include "support/escaped_bytes.h"
#include "support/record_builder.h"

namespace rlx::testing {
namespace {

class CupsPrint : public CupsTest {
 protected:
  /// Prints a job and compares what comes of it, pages and copies too.
  void expect_printed(std::string_view job, const std::vector<std::string>& options,
                      const std::string& expected, std::uint64_t impressions);
};

void CupsPrint::expect_printed(std::string_view job, const std::vector<std::string>& options,
                               const std::string& expected, std::uint64_t impressions) {
  const PrinterJob printed = print(job, options);
  expect_same_job(expected, printed);
  EXPECT_EQ(printed.impressions, impressions);
  const auto jobs = server_.jobs("q");
  ASSERT_FALSE(jobs.empty());
  EXPECT_EQ(jobs.rbegin()->second.impressions, static_cast<long>(impressions));
}

/// A job with a line in Japanese, a page end, and a sequence with extended parameters.
const char* const kMixedJob = "\033Q1;2;3;4;5/~12345A\n\346\227\245\346\234\254\nC\nD\n\fE\f";

TEST_F(CupsPrint, Text) {
  const std::string text = numbered_pages("text", 3);
  expect_printed(text, {}, filtered({}, text), 3);
}

TEST_F(CupsPrint, TextOfAFile) {
  const std::string text = numbered_pages("file", 2);
  write_file(server_.directory() + "/temporary/report.txt", text);
  const Outcome outcome =
      server_.run({"lp", "-d", "q", server_.directory() + "/temporary/report.txt"});
  ASSERT_EQ(outcome.status, 0) << outcome.messages;
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  expect_same_job(filtered({}, text), printer_.jobs()[0]);
}

TEST_F(CupsPrint, Form) {
  const std::string invoice = read_file(RLX_PROJECT_DIRECTORY "/examples/invoice.txt");
  expect_printed(invoice, {"form=INVOICE"}, filtered({"-n", "INVOICE", "-p", forms()}, invoice), 2);
}

TEST_F(CupsPrint, FormOfTheQueue) {
  server_.add_queue("labels", printer_, {"--forms", forms(), "--default-form", "LABEL"});
  const std::string text = numbered_pages("labels", 2);
  const int id = server_.submit("labels", text);
  EXPECT_EQ(server_.wait_for("labels", id).state, "completed");
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  expect_same_job(filtered({"-n", "LABEL", "-p", forms()}, text), printer_.jobs()[0]);
  // A job that wants none says so.
  const int plain = server_.submit("labels", text, {"form=None"});
  EXPECT_EQ(server_.wait_for("labels", plain).state, "completed");
  ASSERT_EQ(printer_.wait_for_jobs(2).size(), 2U);
  expect_same_job(filtered({}, text), printer_.jobs()[1]);
}

TEST_F(CupsPrint, SettingsOfTheQueue) {
  server_.add_queue("old", printer_,
                    {"--forms", forms(), "--mode", "3", "--capabilities", "D240!D400",
                     "--resolution", "400", "--flags", "D"});
  const std::string text = numbered_pages("old", 2);
  const int id = server_.submit("old", text, {"form=LABEL"});
  EXPECT_EQ(server_.wait_for("old", id).state, "completed");
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  expect_same_job(
      filtered({"-E", "-D", "-G", "D240!D400", "-e", "400", "-p", forms(), "-n", "LABEL"}, text),
      printer_.jobs()[0]);
}

TEST_F(CupsPrint, JapaneseInEveryEncoding) {
  const std::string utf_8 = "\346\227\245\346\234\254\350\252\236 ABC\n\f";
  const std::string expected = filtered({}, utf_8);
  expect_printed(utf_8, {}, expected, 1);
  expect_printed(utf_8, {"rlx-charset=UTF-8"}, expected, 1);
  expect_printed("\306\374\313\334\270\354 ABC\n\f", {"rlx-charset=EUC-JP"}, expected, 1);
  expect_printed("\223\372\226\173\214\352 ABC\n\f", {"rlx-charset=Shift_JIS"}, expected, 1);
  expect_printed("\033$BF|K\\8l\033(B ABC\n\f", {"rlx-charset=ISO-2022-JP"}, expected, 1);
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
      of_filter({"lpi=3"}, {"-l", "3"}),
      of_filter({"cpi=12"}, {"-c", "12"}),
      of_filter({"cpi=11"}, {"-c", "11"}),
      of_filter({"lines-per-page=2"}, {"-L", "2"}),
      of_filter({"lines-per-page=3", "lpi=4", "cpi=10"}, {"-L", "3", "-l", "4", "-c", "10"}),
      of_filter({"rlx-undefined=ubar"}, {"-r", "ubar"}),
      of_filter({"rlx-undefined=space"}, {"-r", "space"}),
      of_filter({"rlx-extended=true"}, {"-P"}),
      of_filter({"rlx-extended=false"}, {}),
      of_record({"media=A3"}, {.paper_size = "A3"}),
      of_record({"media=a4"}, {.paper_size = "A4"}),
      of_record({"media=A5"}, {.paper_size = "A5"}),
      of_record({"PageSize=B4"}, {.paper_size = "B4"}),
      of_record({"media=jis_b5_182x257mm"}, {.paper_size = "B5"}),
      of_record({"media=Letter"}, {.paper_size = "LTR"}),
      of_record({"media-source=tray-1"}, {.tray = "P1"}),
      of_record({"media-source=tray-4"}, {.tray = "P4"}),
      of_record({"media-source=auto"}, {.tray = "P"}),
      of_record({"InputSlot=Tray3"}, {.tray = "P3"}),
      of_record({"media=A3,tray-2"}, {.paper_size = "A3", .tray = "P2"}),
      of_record({"sides=two-sided-long-edge"}, {.duplex = "B", .binding_edge = "L"}),
      of_record({"sides=two-sided-short-edge"}, {.duplex = "B", .binding_edge = "U"}),
      of_record({"Duplex=DuplexTumble"}, {.duplex = "B", .binding_edge = "U"}),
      of_filter({"sides=one-sided"}, {}),
      of_record({"orientation-requested=3"}, {.orientation = "P"}),
      of_record({"orientation-requested=4"}, {.orientation = "L"}),
      of_record({"landscape"}, {.orientation = "L"}),
      of_record({"orientation-requested=4", "sides=two-sided-long-edge"},
                {.orientation = "L", .duplex = "B", .binding_edge = "U"}),
      of_record({"page-offset-x=1440"}, {.first_offset = " 1440"}),
      of_record({"page-offset-x=2880", "page-offset-y=7200"},
                {.first_offset = " 2880", .second_offset = " 7200"}),
      of_record({"page-offset-y=14400", "orientation-requested=4"},
                {.orientation = "L", .second_offset = "14400"}),
      of_record({"copies=3"}, {.copies = "  3"}),
  };
}

TEST_F(CupsPrint, EveryOption) {
  for (const OptionRow& row : option_rows()) {
    SCOPED_TRACE(row.options.front());
    const std::string job = (row.has_record ? condition_sequence(row.columns) : "") + kMixedJob;
    const PrinterJob printed = print(kMixedJob, row.options);
    expect_same_job(filtered(row.filter_options, job), printed);
  }
}

TEST_F(CupsPrint, OptionsOfTheQueueByLpadmin) {
  ASSERT_EQ(server_
                .run({"lpadmin", "-p", "q", "-o", "lpi=8", "-o", "form=LABEL", "-o", "PageSize=A3",
                      "-o", "Duplex=DuplexNoTumble"})
                .status,
            0);
  const ConditionColumns columns{
      .layout = "2", .paper_size = "A3", .duplex = "B", .binding_edge = "L"};
  expect_same_job(
      filtered({"-l", "8", "-n", "LABEL", "-p", forms()}, condition_sequence(columns) + kMixedJob),
      print(kMixedJob));
}

TEST_F(CupsPrint, FourCopiesByThePrinter) {
  const std::string text = numbered_pages("copies", 3);
  const ConditionColumns columns{.layout = "2", .copies = "  4"};
  expect_printed(text, {"copies=4"}, filtered({}, condition_sequence(columns) + text), 12);
}

TEST_F(CupsPrint, FourCopiesOfAJobWithConditionsOfItsOwn) {
  const ConditionColumns columns{.layout = "2", .paper_size = "B4"};
  const std::string text = "FIRST\f" + condition_sequence(columns) + "SECOND\f";
  const std::string once = filtered({}, text);
  expect_printed(text, {"copies=4"}, once + once + once + once, 8);
}

TEST_F(CupsPrint, CopiesThatTheJobItselfAsksFor) {
  const ConditionColumns columns{.layout = "2", .copies = "  5"};
  const std::string text = condition_sequence(columns) + "A\fB\f";
  expect_printed(text, {}, filtered({}, text), 10);
  const std::string once = filtered({}, text);
  expect_printed(text, {"copies=2"}, once + once, 20);
}

TEST_F(CupsPrint, JobInThePrintersLanguage) {
  const std::string job = filtered({"-n", "INVOICE", "-p", forms()}, numbered_pages("rlx", 4));
  expect_printed(job, {}, job, 4);
  EXPECT_EQ(server_.jobs("q").rbegin()->second.format, "application/vnd.rlx");
  // Options of a line printer have no meaning for it; copies have.
  expect_printed(job, {"form=LABEL", "lpi=8"}, job, 4);
  expect_printed(job, {"copies=3"}, job + job + job, 12);
}

TEST_F(CupsPrint, CopiesOfSeveralDocumentsInOneJob) {
  const std::string folder = server_.directory() + "/temporary/";
  const std::string text = numbered_pages("documents", 2);
  const std::string own = condition_sequence({.layout = "2", .copies = "  2"}) + "OWN\f";
  const std::string rlx = filtered({}, numbered_pages("rlx", 3));
  write_file(folder + "text", text);
  write_file(folder + "own", own);
  write_file(folder + "rlx", rlx);
  const Outcome outcome =
      server_.run({"lp", "-d", "q", "-n", "3", folder + "text", folder + "own", folder + "rlx"});
  ASSERT_EQ(outcome.status, 0) << outcome.messages;
  const int id = server_.jobs("q").rbegin()->first;
  const CupsJob job = server_.wait_for("q", id);
  EXPECT_EQ(job.state, "completed") << job.message;
  const std::string by_printer =
      filtered({}, condition_sequence({.layout = "2", .copies = "  3"}) + text);
  const std::string once = filtered({}, own);
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  EXPECT_EQ(describe_difference(by_printer + once + once + once + rlx + rlx + rlx,
                                printer_.jobs()[0].bytes),
            "");
  EXPECT_EQ(printer_.jobs()[0].impressions, 6U + 6U + 9U);
  EXPECT_EQ(job.impressions, 6 + 6 + 9);
}

/// A client may compress what it sends: CUPS expands it and hands it over on standard input.
TEST_F(CupsPrint, CopiesOfAJobThatCameCompressed) {
  const std::string folder = server_.directory() + "/temporary";
  // The job is kept here for its copies, by a filter that runs as another user.
  std::filesystem::permissions(folder, std::filesystem::perms::all);
  const std::string text = numbered_pages("compressed", 2);
  write_file(folder + "/job", text);
  write_file(folder + "/print",
             "{\nOPERATION Print-Job\nGROUP operation-attributes-tag\n"
             "ATTR charset attributes-charset utf-8\n"
             "ATTR naturalLanguage attributes-natural-language en\n"
             "ATTR uri printer-uri $uri\nATTR keyword compression gzip\n"
             "ATTR mimeMediaType document-format text/plain\n"
             "GROUP job-attributes-tag\nATTR integer copies 3\n"
             "COMPRESSION gzip\nFILE $filename\nSTATUS successful-ok\n}\n");
  const Outcome outcome =
      server_.run({"ipptool", "-tv", "-f", folder + "/job", server_.uri("q"), folder + "/print"});
  ASSERT_EQ(outcome.status, 0) << outcome.output;
  const CupsJob job = server_.wait_for("q", server_.jobs("q").rbegin()->first);
  EXPECT_EQ(job.state, "completed") << job.message;
  EXPECT_EQ(job.impressions, 6);
  ASSERT_EQ(printer_.wait_for_jobs(1).size(), 1U);
  expect_same_job(filtered({}, condition_sequence({.layout = "2", .copies = "  3"}) + text),
                  printer_.jobs()[0]);
}

TEST_F(CupsPrint, PagesInThePageLog) {
  const int first = server_.submit("q", numbered_pages("one", 3));
  server_.wait_for("q", first);
  const int second = server_.submit("q", numbered_pages("two", 2), {"copies=3"});
  server_.wait_for("q", second);
  EXPECT_EQ(server_.page_log(),
            std::to_string(first) + " total 3\n" + std::to_string(second) + " total 6\n");
}

TEST_F(CupsPrint, TellsWhatWasPrintedAndHow) {
  print(numbered_pages("words", 2), {"form=LABEL"});
  const std::string log = server_.log_of(1);
  EXPECT_NE(log.find("zqeuctorlx "), std::string::npos) << log;
  EXPECT_NE(log.find("2 pages"), std::string::npos) << log;
  EXPECT_NE(log.find("form LABEL"), std::string::npos) << log;
}

}  // namespace
}  // namespace rlx::testing
