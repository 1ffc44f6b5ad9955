#include <gtest/gtest.h>

#include <array>
#include <string>

#include "support/filter_state.h"
#include "support/header_values.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

// What the job header says about the paper: orientation, size, tray and form length.

namespace rlx::testing {
namespace {

using JobHeaderPaper = FilterTest;

const std::string kFull = "\x1bQ100;100!I";
const std::string kReduced66 = "\x1bQ66;66!I";
const std::string kReduced80 = "\x1bQ66;80!I";

struct Sent {
  std::string value;
  PageHeader header;
};

/// Each orientation, with no paper size given.
const std::array<Sent, 10>& orientations() {
  static const std::array<Sent, 10> kRows{{
      {"P", {"ORT=0\n", kFull + "\x1bQ0;4;0!F"}},
      {"L", {"ORT=1\n", kFull + "\x1bQ0;4;1!F"}},
      {"PZ", {"ORT=2\n", kFull + "\x1bQ0;4;0!F" + kReduced66}},
      {"LZ", {"ORT=3\n", kFull + "\x1bQ0;4;1!F" + kReduced66}},
      {"LP", {"ORT=4\n", kFull + "\x1bQ0;4;0!F" + kReduced80}},
      // Unknown ones have no line, but count as a change; a "P" anywhere makes them upright.
      {"X", {"", kFull + "\x1bQ0;4;1!F"}},
      {"p", {"", kFull + "\x1bQ0;4;1!F"}},
      {"LL", {"", kFull + "\x1bQ0;4;1!F"}},
      {"PP", {"", kFull + "\x1bQ0;4;0!F"}},
      {"XP", {"", kFull + "\x1bQ0;4;0!F"}},
  }};
  return kRows;
}

TEST_F(JobHeaderPaper, EachOrientationChangedToEachOther) {
  for (const Sent& first : orientations()) {
    for (const Sent& second : orientations()) {
      if (first.value == second.value) {
        continue;
      }
      SCOPED_TRACE(first.value + ", " + second.value);
      reset_filter();
      expect_pages(sent_once({.orientation = first.value}, {.orientation = second.value},
                             first.header, second.header));
    }
  }
}

/// Each paper size that is told apart, with no orientation given.
const std::array<Sent, 16>& papers() {
  static const std::array<Sent, 16> kRows{{
      {"A4", {"PSZ=A4\n", "\x1bQ0;4;0!F"}},
      {"A3", {"PSZ=A3\n", "\x1bQ0;3;0!F"}},
      {"A5", {"PSZ=A5\n", "\x1bQ0;5;0!F"}},
      {"B4", {"PSZ=B4\n", "\x1bQ1;4;0!F"}},
      {"B3", {"PSZ=B3\n", "\x1bQ1;3;0!F"}},
      {"B5", {"PSZ=B5\n", "\x1bQ1;5;0!F"}},
      {"LTR", {"PSZ=LT\n", "\x1bQ3;4;0!F"}},
      // Only the whole name is the letter size.
      {"LT", {"PSZ=LT\n", "\x1bQ0;4;0!F"}},
      {"LTB", {"PSZ=LTB\n", "\x1bQ1;4;0!F"}},
      {"LT3", {"PSZ=LT3\n", "\x1bQ0;3;0!F"}},
      {"ltr", {"PSZ=ltr\n", "\x1bQ0;4;0!F"}},
      {"b4", {"PSZ=b4\n", "\x1bQ0;4;0!F"}},
      {"LP", {"PSZ=LP\n", "\x1bQ0;4;0!F"}},
      {"5B", {"PSZ=5B\n", "\x1bQ1;5;0!F"}},
      // A 3 goes before a 5.
      {"A53", {"PSZ=A53\n", "\x1bQ0;3;0!F"}},
      {"B35", {"PSZ=B35\n", "\x1bQ1;3;0!F"}},
  }};
  return kRows;
}

TEST_F(JobHeaderPaper, EachPaperSizeChangedToEachOther) {
  for (const Sent& first : papers()) {
    for (const Sent& second : papers()) {
      if (first.value == second.value) {
        continue;
      }
      SCOPED_TRACE(first.value + ", " + second.value);
      reset_filter();
      expect_pages(
          sent_once({.paper = first.value}, {.paper = second.value}, first.header, second.header));
    }
  }
}

/// Each tray that is noted as sent once it was.
const std::array<Sent, 4>& trays() {
  static const std::array<Sent, 4> kRows{{
      {"P1", {"BIN=1\n", "\x1bQ0;4;0;0!@"}},
      {"P2", {"BIN=2\n", "\x1bQ0;4;1;0!@"}},
      {"P3", {"BIN=3\n", "\x1bQ0;4;3;0!@"}},
      {"P4", {"BIN=4\n", "\x1bQ0;4;4;0!@"}},
  }};
  return kRows;
}

/// Each tray that is deliberately never noted, and so comes again on every page.
const std::array<Sent, 7>& repeated_trays() {
  static const std::array<Sent, 7> kRows{{
      {"P", {"BIN=A\n", "\x1bQ0;4;0!F"}},
      {"P0", {"", "\x1bQ0;4;0!F"}},
      {"P5", {"", "\x1bQ0;4;0!F"}},
      {"p1", {"", "\x1bQ0;4;0!F"}},
      {"1", {"", "\x1bQ0;4;0!F"}},
      {"2P", {"", "\x1bQ0;4;0!F"}},
      {"A", {"", "\x1bQ0;4;0!F"}},
  }};
  return kRows;
}

TEST_F(JobHeaderPaper, EachTrayChangedToEachOther) {
  for (const Sent& first : trays()) {
    for (const Sent& second : trays()) {
      if (first.value == second.value) {
        continue;
      }
      SCOPED_TRACE(first.value + ", " + second.value);
      reset_filter();
      expect_pages(
          sent_once({.tray = first.value}, {.tray = second.value}, first.header, second.header));
    }
  }
}

TEST_F(JobHeaderPaper, OtherTraysComeAgainOnEveryPage) {
  for (const Sent& first : repeated_trays()) {
    for (const Sent& second : repeated_trays()) {
      SCOPED_TRACE(first.value + ", " + second.value);
      reset_filter();
      expect_pages({{.tray = first.value},
                    {.tray = second.value},
                    first.header,
                    first.header,
                    second.header,
                    first.header});
    }
    for (const Sent& numbered : trays()) {
      SCOPED_TRACE(first.value + ", " + numbered.value);
      reset_filter();
      expect_pages({{.tray = first.value},
                    {.tray = numbered.value},
                    first.header,
                    first.header,
                    numbered.header,
                    first.header});
    }
  }
}

TEST_F(JobHeaderPaper, NumberedTrayIsNoChangeBehindOneThatIsNeverNoted) {
  for (const Sent& numbered : trays()) {
    for (const Sent& repeated : repeated_trays()) {
      SCOPED_TRACE(numbered.value + ", " + repeated.value);
      reset_filter();
      expect_pages({{.tray = numbered.value},
                    {.tray = repeated.value},
                    numbered.header,
                    {},
                    repeated.header,
                    {}});
    }
  }
}

TEST_F(JobHeaderPaper, PaperSequenceIsMadeOfPaperTrayAndOrientation) {
  const std::array rows{
      // Tray and paper in one sequence, on its side with the orientation in force.
      sent_once({.orientation = "L", .paper = "B5", .tray = "P2"},
                {.orientation = "L", .paper = "LTR", .tray = "P4"},
                {"ORT=1\nPSZ=B5\nBIN=2\n", kFull + "\x1bQ1;5;1;1!@"},
                {"PSZ=LT\nBIN=4\n", "\x1bQ3;4;4;1!@"}),
      sent_once({.orientation = "LZ", .paper = "A3"}, {.orientation = "PZ", .paper = "A3"},
                {"ORT=3\nPSZ=A3\n", kFull + "\x1bQ0;3;1!F" + kReduced66},
                {"ORT=2\n", kFull + "\x1bQ0;3;0!F" + kReduced66}),
      sent_once({.orientation = "LP", .paper = "B4", .tray = "P1"},
                {.orientation = "L", .paper = "A5", .tray = "P3"},
                {"ORT=4\nPSZ=B4\nBIN=1\n", kFull + "\x1bQ1;4;0;0!@" + kReduced80},
                {"ORT=1\nPSZ=A5\nBIN=3\n", kFull + "\x1bQ0;5;3;1!@"}),
      // A new orientation alone repeats the paper, but not the tray.
      sent_once({.orientation = "P", .paper = "B5", .tray = "P4"},
                {.orientation = "L", .paper = "B5", .tray = "P4"},
                {"ORT=0\nPSZ=B5\nBIN=4\n", kFull + "\x1bQ1;5;4;0!@"},
                {"ORT=1\n", kFull + "\x1bQ1;5;1!F"}),
  };
  for (std::size_t i = 0; i < rows.size(); ++i) {
    SCOPED_TRACE(i);
    reset_filter();
    next_header();
    apply(rows[i].values);
    EXPECT_EQ(next_header(), header_bytes(rows[i].first));
    EXPECT_EQ(next_header(), header_bytes({}));
    apply(rows[i].changed);
    EXPECT_EQ(next_header(), header_bytes(rows[i].after_change));
    EXPECT_EQ(next_header(), header_bytes({}));
  }
}

TEST_F(JobHeaderPaper, EveryPaperSequenceNotesThePaperSizeAlsoAMissingOne) {
  const PageHeader paper{"PSZ=A5\n", "\x1bQ0;5;0!F"};
  // Tray, other tray and orientation each send "no size", so the size afterwards is a change.
  const std::array rows{
      HeaderRow{{.paper = "A5"}, {.tray = "P1"}, paper, {}, {"BIN=1\n", "\x1bQ0;4;0;0!@"}, paper},
      HeaderRow{{.paper = "A5"}, {.tray = "P"}, paper, {}, {"BIN=A\n", "\x1bQ0;4;0!F"}, paper},
      HeaderRow{{.paper = "A5"},
                {.orientation = "L"},
                paper,
                {},
                {"ORT=1\n", kFull + "\x1bQ0;4;1!F"},
                paper},
  };
  for (const HeaderRow& row : rows) {
    SCOPED_TRACE(row.after_change.lines);
    reset_filter();
    expect_pages(row);
  }
}

TEST_F(JobHeaderPaper, FormLengthIsSentInFiveDigits) {
  const auto header = [](const std::string& lines, const std::string& digits) {
    return PageHeader{lines, "\x1bQ10;;" + digits + ";!\\"};
  };
  next_header();
  apply({.form_length = 1});
  EXPECT_EQ(next_header(), header_bytes({"PSZ=LP\nFFL=1\n", "\x1bQ0;4;0!F\x1bQ10;;00001;!\\"}));
  EXPECT_EQ(next_header(), header_bytes({}));
  apply({.form_length = 99999});
  EXPECT_EQ(next_header(), header_bytes(header("FFL=99999\n", "99999")));
  apply({.form_length = 100000});
  EXPECT_EQ(next_header(), header_bytes(header("FFL=100000\n", "100000")));
  apply({.form_length = -5});
  EXPECT_EQ(next_header(), header_bytes(header("FFL=-5\n", "-0005")));
  EXPECT_EQ(next_header(), header_bytes({}));
}

TEST_F(JobHeaderPaper, NewFormLengthReplacesThePaperSizeForTheWholeJob) {
  next_header();
  apply({.paper = "A4", .form_length = 330});
  EXPECT_EQ(next_header(), header_bytes({"PSZ=LP\nFFL=330\n", "\x1bQ0;4;0!F\x1bQ10;;00330;!\\"}));
  EXPECT_STREQ(the_filter().conditions.paper_size.data(), "LP");
  EXPECT_EQ(next_header(), header_bytes({}));
}

TEST_F(JobHeaderPaper, FormLengthThatIsKnownLeavesANewPaperSize) {
  const HeaderValues values{.paper = "B5", .form_length = 330};
  next_header();
  apply(values);
  EXPECT_EQ(next_header(), header_bytes({"PSZ=LP\nFFL=330\n", "\x1bQ0;4;0!F\x1bQ10;;00330;!\\"}));
  apply(values);
  EXPECT_EQ(next_header(), header_bytes({"PSZ=B5\n", "\x1bQ1;5;0!F"}));
  EXPECT_STREQ(the_filter().conditions.paper_size.data(), "B5");
}

TEST_F(JobHeaderPaper, FormLengthStandsBetweenPaperAndReduction) {
  next_header();
  apply({.orientation = "LZ", .paper = "A3", .form_length = 220, .tray = "P4"});
  EXPECT_EQ(next_header(), header_bytes({"ORT=3\nPSZ=LP\nFFL=220\nBIN=4\n",
                                         kFull + "\x1bQ0;4;4;1!@\x1bQ10;;00220;!\\" + kReduced66}));
}

TEST_F(JobHeaderPaper, EachFormLengthChangedAndChangedBack) {
  const PageHeader paper_and_length{"PSZ=LP\nFFL=330\n", "\x1bQ0;4;0!F\x1bQ10;;00330;!\\"};
  const PageHeader other_length{"FFL=220\n", "\x1bQ10;;00220;!\\"};
  const PageHeader length{"FFL=330\n", "\x1bQ10;;00330;!\\"};
  // The paper size is "LP" from the first one on, so only the length is news.
  expect_pages(
      {{.form_length = 330}, {.form_length = 220}, paper_and_length, {}, other_length, length});
}

}  // namespace
}  // namespace rlx::testing
