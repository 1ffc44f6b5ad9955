#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "spooler/app/app_server.h"
#include "support/record_builder.h"

// Jobs that print, with what they ask for; print() compares the pages that the server counts with
// those that the printer got.
namespace rlx::testing {
namespace {

class AppPrint : public AppTest {};

/// A job with a line in Japanese, a page end, and a sequence with extended parameters.
const char* const kMixedJob = "\033Q1;2;3;4;5/~12345A\n\346\227\245\346\234\254\nC\nD\n\fE\f";
const char* const kLines = "application/vnd.rlx-lines";

TEST_F(AppPrint, ATextIsWhatTheFilterMakesOfIt) {
  const std::string text = numbered_pages("A", 3);
  expect_same_job(filtered({}, text), print(text));
}

TEST_F(AppPrint, AJobOfThePrintersLanguageGoesThrough) {
  const std::string job = filtered({}, numbered_pages("A", 2));
  expect_same_job(job, print(job, {}, "application/vnd.rlx"));
}

TEST_F(AppPrint, ALargeTextArrivesWhole) {
  const std::string text = numbered_pages("A", 5000);
  expect_same_job(filtered({}, text), print(text));
}

TEST_F(AppPrint, TheFormatIsFoundOut) {
  const std::string format = "application/octet-stream";
  expect_same_job(filtered({}, kMixedJob), print(kMixedJob, {}, format));
  const std::string job = filtered({}, "TEXT\f");
  expect_same_job(job, print(job, {}, format));
}

TEST_F(AppPrint, AForm) {
  const std::string text = numbered_pages("A", 2);
  expect_same_job(filtered({"-n", "INVOICE", "-p", forms()}, text),
                  print(text, {{"form", "INVOICE"}}));
}

struct OptionRow {
  JobAttributes attributes;
  std::vector<std::string> filter_options;
  ConditionColumns columns;
  bool has_record = false;
};

OptionRow of_filter(JobAttributes attributes, std::vector<std::string> filter_options) {
  return {std::move(attributes), std::move(filter_options), {}, false};
}

OptionRow of_record(JobAttributes attributes, ConditionColumns columns) {
  columns.layout = "2";
  return {std::move(attributes), {}, std::move(columns), true};
}

std::vector<OptionRow> option_rows() {
  return {
      of_filter({{"lpi", "8"}}, {"-l", "8"}),
      of_filter({{"lpi", "0"}}, {}),
      of_filter({{"cpi", "12"}}, {"-c", "12"}),
      of_filter({{"lines-per-page", "2"}}, {"-L", "2"}),
      of_filter({{"lines-per-page", "3"}, {"lpi", "4"}}, {"-L", "3", "-l", "4"}),
      of_filter({{"rlx-undefined", "ubar"}}, {"-r", "ubar"}),
      of_filter({{"rlx-extended", "true"}}, {"-P"}),
      of_filter({{"sides", "one-sided"}}, {}),
      of_filter({{"copies", "1"}}, {}),
      of_record({{"media", "iso_a3_297x420mm"}}, {.paper_size = "A3"}),
      of_record({{"media", "iso_a5_148x210mm"}}, {.paper_size = "A5"}),
      of_record({{"media", "jis_b4_257x364mm"}}, {.paper_size = "B4"}),
      of_record({{"media", "jis_b5_182x257mm"}}, {.paper_size = "B5"}),
      of_record({{"media", "na_letter_8.5x11in"}}, {.paper_size = "LTR"}),
      of_record({{"media-source", "tray-1"}}, {.tray = "P1"}),
      of_record({{"media-source", "tray-4"}}, {.tray = "P4"}),
      of_record({{"sides", "two-sided-long-edge"}}, {.duplex = "B", .binding_edge = "L"}),
      of_record({{"sides", "two-sided-short-edge"}}, {.duplex = "B", .binding_edge = "U"}),
      of_record({{"orientation-requested", "3"}}, {.orientation = "P"}),
      of_record({{"orientation-requested", "4"}}, {.orientation = "L"}),
      of_record({{"page-offset-x", "1440"}}, {.first_offset = " 1440"}),
      of_record({{"page-offset-y", "7200"}}, {.second_offset = " 7200"}),
      of_record({{"copies", "3"}}, {.copies = "  3"}),
  };
}

TEST_F(AppPrint, EveryOption) {
  for (const OptionRow& row : option_rows()) {
    SCOPED_TRACE(row.attributes.front().first + '=' + row.attributes.front().second);
    const std::string job = (row.has_record ? condition_sequence(row.columns) : "") + kMixedJob;
    const PrinterJob printed = print(kMixedJob, row.attributes, kLines);
    expect_same_job(filtered(row.filter_options, job), printed);
  }
}

TEST_F(AppPrint, CharacterSets) {
  const std::string expected = filtered({}, "\346\227\245\346\234\254\n\f");
  expect_same_job(expected, print("\306\374\313\334\n\f", {{"rlx-charset", "euc-jp"}}));
  expect_same_job(expected, print("\223\372\226\173\n\f", {{"rlx-charset", "shift_jis"}}));
}

TEST_F(AppPrint, TheKindOfPrinterIsTheFiltersMode) {
  const std::string text = numbered_pages("A", 2);
  const std::vector<std::pair<std::string, std::vector<std::string>>> kinds{
      {"rlx-400", {"-B"}},
      {"rlx-form-lengths", {"-E"}},
      {"rlx-extended", {"-C"}},
      {"rlx-mode-6", {"-Q"}},
      {"rlx-mode-7", {"-R"}}};
  std::size_t printed = 0;
  for (const auto& [kind, options] : kinds) {
    SCOPED_TRACE(kind);
    server_.add_printer(kind, kind, printer_.uri());
    const int id = server_.submit(kind, text);
    EXPECT_EQ(server_.wait_for(kind, id).state, kCompleted);
    const auto& jobs = printer_.wait_for_jobs(++printed);
    ASSERT_EQ(jobs.size(), printed);
    expect_same_job(filtered(options, text), jobs.back());
  }
}

}  // namespace
}  // namespace rlx::testing
