#include <gtest/gtest.h>

#include <array>
#include <string>

#include "support/filter_state.h"
#include "support/header_values.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

// What the job header says about duplex, binding and offsets.

namespace rlx::testing {
namespace {

/// `header_selector` with option -D.
constexpr int kOptionD = 8;

const std::string kSimplex = "\x1bQ0;;;!W";

/// The binding sequence in full.
std::string binding(const std::string& duplex, const std::string& edge, const std::string& margin) {
  return "\x1bQ" + duplex + ';' + edge + ';' + margin + ";00000!W";
}

/// A duplex page: its line and its sequence.
PageHeader both_sides(const std::string& edge, const std::string& margin) {
  return {"DUP=1\n", "", binding("2", edge, margin)};
}

const PageHeader kOneSide{"DUP=0\n", "", kSimplex};
const PageHeader kOneSideWithD{"DUP=0\n", "", binding("0", "0", "00000")};

using JobHeaderSetup = FilterTest;

struct Edge {
  std::string value;
  std::string digit;
  bool has_margin;
};

const std::array<Edge, 6>& edges() {
  static const std::array<Edge, 6> kRows{{
      {"", "0", true},
      {"L", "0", true},
      {"U", "2", true},
      {"R", "0", false},
      {"u", "0", false},
      {"0", "0", false},
  }};
  return kRows;
}

TEST_F(JobHeaderSetup, DuplexWithEachEdgeAndMargin) {
  for (const int selector : {1, kOptionD}) {
    for (const Edge& edge : edges()) {
      SCOPED_TRACE(edge.value + " " + std::to_string(selector));
      reset_filter();
      the_filter().command_line.header_selector = selector;
      const std::string margin = edge.has_margin ? "00720" : "00000";
      const std::string other_margin = edge.has_margin ? "14400" : "00000";
      expect_pages(sent_once({.duplex = "B", .edge = edge.value, .margin = 720},
                             {.duplex = "B", .edge = edge.value, .margin = 14400},
                             both_sides(edge.digit, margin), both_sides(edge.digit, other_margin)));
    }
  }
}

TEST_F(JobHeaderSetup, EachEdgeChangedToEachOther) {
  for (const Edge& first : edges()) {
    for (const Edge& second : edges()) {
      if (first.value == second.value) {
        continue;
      }
      SCOPED_TRACE(first.value + ", " + second.value);
      reset_filter();
      expect_pages(sent_once({.duplex = "B", .edge = first.value, .margin = 5},
                             {.duplex = "B", .edge = second.value, .margin = 5},
                             both_sides(first.digit, first.has_margin ? "00005" : "00000"),
                             both_sides(second.digit, second.has_margin ? "00005" : "00000")));
    }
  }
}

TEST_F(JobHeaderSetup, OtherEdgesNoteTheMarginThatTheyDoNotSend) {
  // The margin is noted with the edge "R"; with the edge "L" it is no news, but the edge is.
  expect_pages(sent_once({.duplex = "B", .edge = "R", .margin = 100},
                         {.duplex = "B", .edge = "L", .margin = 100}, both_sides("0", "00000"),
                         both_sides("0", "00100")));
}

TEST_F(JobHeaderSetup, SimplexIsTheShortSequenceWithoutD) {
  for (const std::string edge : {"", "L", "U", "R"}) {
    for (const std::string duplex : {"S", "b", "0"}) {
      SCOPED_TRACE(duplex);
      SCOPED_TRACE(edge);
      reset_filter();
      expect_pages(sent_once({.duplex = duplex, .edge = edge}, {.duplex = "B", .edge = edge},
                             kOneSide, both_sides(edge == "U" ? "2" : "0", "00000")));
    }
  }
}

TEST_F(JobHeaderSetup, SimplexIsAFullBindingSequenceWithD) {
  for (const std::string edge : {"", "L", "U", "R"}) {
    for (const std::string duplex : {"S", "b", "0"}) {
      SCOPED_TRACE(duplex);
      SCOPED_TRACE(edge);
      reset_filter();
      the_filter().command_line.header_selector = kOptionD;
      const std::string digit = edge == "U" ? "2" : "0";
      expect_pages(sent_once({.duplex = duplex, .edge = edge}, {.duplex = "B", .edge = edge},
                             {"DUP=0\n", "", binding("0", digit, "00000")},
                             both_sides(digit, "00000")));
    }
  }
}

TEST_F(JobHeaderSetup, MarginWithoutDuplexComesAgainOnEveryPage) {
  for (const std::string edge : {"", "L", "U", "R"}) {
    SCOPED_TRACE(edge);
    reset_filter();
    expect_pages({{.duplex = "S", .edge = edge, .margin = 720},
                  {.duplex = "S", .edge = edge, .margin = 1},
                  kOneSide,
                  kOneSide,
                  kOneSide,
                  kOneSide});
  }
}

TEST_F(JobHeaderSetup, MarginWithoutDuplexComesAgainOnEveryPageWithD) {
  for (const Edge& edge : edges()) {
    SCOPED_TRACE(edge.value);
    reset_filter();
    the_filter().command_line.header_selector = kOptionD;
    const PageHeader page{"DUP=0\n", "", binding("0", edge.digit, "00000")};
    expect_pages({{.duplex = "S", .edge = edge.value, .margin = 720},
                  {.duplex = "S", .edge = edge.value, .margin = 1},
                  page,
                  page,
                  page,
                  page});
  }
}

TEST_F(JobHeaderSetup, MarginOfDuplexStaysNotedOnSimplexPages) {
  const HeaderValues duplex{.duplex = "B", .edge = "L", .margin = 720};
  next_header();
  apply(duplex);
  EXPECT_EQ(next_header(), header_bytes(both_sides("0", "00720")));
  // The same margin is no news on simplex pages, another one is, on each of them.
  apply({.duplex = "S", .edge = "L", .margin = 720});
  EXPECT_EQ(next_header(), header_bytes(kOneSide));
  EXPECT_EQ(next_header(), header_bytes({}));
  apply({.duplex = "S", .edge = "L", .margin = 0});
  EXPECT_EQ(next_header(), header_bytes(kOneSide));
  EXPECT_EQ(next_header(), header_bytes(kOneSide));
  the_filter().command_line.header_selector = kOptionD;
  EXPECT_EQ(next_header(), header_bytes(kOneSideWithD));
  apply({.duplex = "S", .edge = "L", .margin = 720});
  EXPECT_EQ(next_header(), header_bytes({}));
}

TEST_F(JobHeaderSetup, BindModeIsOnlyCompared) {
  expect_pages(sent_once({.duplex = "B", .mode = "1"}, {.duplex = "B", .mode = "2"},
                         both_sides("0", "00000"), both_sides("0", "00000")));
  reset_filter();
  expect_pages(sent_once({.duplex = "S", .mode = "1"}, {.duplex = "S"}, kOneSide, kOneSide));
}

TEST_F(JobHeaderSetup, EdgeOfSimplexPagesIsCompared) {
  expect_pages(
      sent_once({.duplex = "S", .edge = "U"}, {.duplex = "S", .edge = "L"}, kOneSide, kOneSide));
}

TEST_F(JobHeaderSetup, BindingValuesWithoutDuplexSendNothing) {
  for (const int selector : {1, kOptionD}) {
    reset_filter();
    the_filter().command_line.header_selector = selector;
    expect_pages(
        {{.edge = "U", .mode = "1", .margin = 720}, {.edge = "L", .margin = 1}, {}, {}, {}, {}});
  }
}

TEST_F(JobHeaderSetup, MarginsHaveFiveDigitsAtLeast) {
  struct Row {
    std::int32_t margin;
    const char* digits;
  };
  constexpr std::array kRows{Row{1, "00001"},       Row{9999, "09999"}, Row{99999, "99999"},
                             Row{100000, "100000"}, Row{-1, "-0001"},   Row{-99999, "-99999"}};
  for (const Row& row : kRows) {
    reset_filter();
    expect_pages(sent_once({.duplex = "B", .margin = row.margin}, {.duplex = "B"},
                           both_sides("0", row.digits), both_sides("0", "00000")));
  }
}

std::string offsets(const std::string& first, const std::string& second) {
  return "\x1bQ" + first + ';' + second + ";;!H";
}

PageHeader at(const std::string& first, const std::string& second) {
  return {"", "", offsets(first, second)};
}

TEST_F(JobHeaderSetup, FirstOffsetFrom1440OnIsSentOnce) {
  expect_pages(
      sent_once({.first_offset = 1440}, {.first_offset = 99999}, at("1440", ""), at("99999", "")));
  reset_filter();
  expect_pages(sent_once({.first_offset = 1441}, {}, at("1441", ""), at("", "")));
}

TEST_F(JobHeaderSetup, FirstOffsetBelow1440ComesAgainOnEveryPage) {
  for (const std::int32_t offset : {1, 1439, -1, -1440, -2147483647 - 1}) {
    SCOPED_TRACE(offset);
    reset_filter();
    // Back at 0 it is what its copy holds.
    expect_pages({{.first_offset = offset}, {}, at("", ""), at("", ""), {}, at("", "")});
  }
}

TEST_F(JobHeaderSetup, SecondOffsetBelow1440ComesAgainOnEveryPage) {
  for (const std::int32_t offset : {1, 1439, -1, -1440}) {
    SCOPED_TRACE(offset);
    reset_filter();
    expect_pages({{.second_offset = offset}, {}, at("", ""), at("", ""), {}, at("", "")});
  }
}

TEST_F(JobHeaderSetup, SecondOffsetFrom1440OnComesAgainOnEveryPageAndOnceMore) {
  for (const std::int32_t offset : {1440, 1441, 14400}) {
    SCOPED_TRACE(offset);
    reset_filter();
    const std::string text = std::to_string(offset);
    next_header();
    apply({.second_offset = offset});
    EXPECT_EQ(next_header(), header_bytes(at("", text)));
    EXPECT_EQ(next_header(), header_bytes(at("", text)));
    // It is noted as the first offset, which 0 now differs from.
    apply({});
    EXPECT_EQ(next_header(), header_bytes(at("", "")));
    EXPECT_EQ(next_header(), header_bytes({}));
    apply({.second_offset = offset});
    EXPECT_EQ(next_header(), header_bytes(at("", text)));
  }
}

TEST_F(JobHeaderSetup, SecondOffsetIsNotedAsTheFirstOne) {
  next_header();
  apply({.second_offset = 2000});
  EXPECT_EQ(next_header(), header_bytes(at("", "2000")));
  apply({.first_offset = 2000});
  EXPECT_EQ(next_header(), header_bytes({}));
}

/// An offset in both places, each on one side of 1440 or 0.
TEST_F(JobHeaderSetup, OffsetsInBothPlaces) {
  for (const std::int32_t first : {0, 1439, 1440, 3000}) {
    for (const std::int32_t second : {0, 1439, 1440, 3000}) {
      SCOPED_TRACE(std::to_string(first) + ", " + std::to_string(second));
      reset_filter();
      const PageHeader sent = at(first >= 1440 ? std::to_string(first) : "",
                                 second >= 1440 ? std::to_string(second) : "");
      const bool is_sent = first != 0 || second != 0;
      const bool repeats = second != 0 || first == 1439;
      next_header();
      apply({.first_offset = first, .second_offset = second});
      EXPECT_EQ(next_header(), header_bytes(is_sent ? sent : PageHeader{}));
      EXPECT_EQ(next_header(), header_bytes(repeats ? sent : PageHeader{}));
      EXPECT_EQ(next_header(), header_bytes(repeats ? sent : PageHeader{}));
    }
  }
}

TEST_F(JobHeaderSetup, OffsetsStandBehindTheBinding) {
  next_header();
  apply({.duplex = "B", .edge = "U", .margin = 720, .first_offset = 1440});
  EXPECT_EQ(next_header(), header_bytes({"DUP=1\n", "", "\x1bQ2;2;00720;00000!W\x1bQ1440;;;!H"}));
}

}  // namespace
}  // namespace rlx::testing
