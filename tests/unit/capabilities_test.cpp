#include "driver/options/capabilities.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "job/settings.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::restart_settings;
using testing::the_filter;

class Capabilities : public ::testing::Test {
 protected:
  Capabilities() {
    restart_settings();
    the_filter().printer = {};
  }
  ~Capabilities() override {
    restart_settings();
    the_filter().printer = {};
  }
};

struct BitRow {
  const char* token;
  int kind;
  std::uint32_t bit;
};

const std::vector<BitRow> kBitRows{
    {"sA3", kHasA3, 0x1},
    {"sa3", kHasA3, 0x1},
    {"m70", kHasM, 0x10},
    {"m75", kHasM, 0x20},
    {"isub", kHasIsub, 0x100},
    {"Sfront", kHasS, 0x1000},
    {"Sboth", kHasS, 0x2000},
    {"L1", kHasL, 0x10000},
    {"L2", kHasL, 0x20000},
    {"L3", kHasL, 0x40000},
    {"L4", kHasL, 0x80000},
    {"f0", kHasFonts, kPrinterClassF0},
    {"f1", kHasFonts, kPrinterClassF1},
    {"f2", kHasFonts, kPrinterClassF2},
    {"f10", kHasFonts, 0x800000},
};

TEST_F(Capabilities, WithoutAnyTokenNothingIsThere) {
  for (int kind = -1; kind <= 11; ++kind) {
    for (const std::uint32_t value : {0U, 1U, 0x10U, 0x100000U, 0x10000000U, 0xFFFFFFFFU}) {
      EXPECT_EQ(printer_has(the_filter().printer, kind, value), 0U) << kind << " " << value;
    }
  }
}

TEST_F(Capabilities, EachBitTokenSetsItsBitInItsKindAlone) {
  for (const BitRow& row : kBitRows) {
    the_filter().printer = {};
    parse_capabilities(the_filter().printer, row.token);
    for (int kind = 0; kind <= 10; ++kind) {
      const std::uint32_t expected = kind == row.kind ? 1 : 0;
      EXPECT_EQ(printer_has(the_filter().printer, kind, 0), expected)
          << row.token << " in kind " << kind;
      for (unsigned shift = 0; shift < 32; ++shift) {
        const std::uint32_t bit = std::uint32_t{1} << shift;
        EXPECT_EQ(printer_has(the_filter().printer, kind, bit), bit == row.bit ? expected : 0U)
            << row.token << " in kind " << kind << " bit " << shift;
      }
    }
  }
}

TEST_F(Capabilities, AllBitsOfAValueMustBeInTheSet) {
  parse_capabilities(the_filter().printer, "m70!L2!L4");
  EXPECT_EQ(printer_has(the_filter().printer, kHasM, 0x10), 1U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasM, 0x30), 0U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasL, 0xA0000), 1U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasL, 0xB0000), 0U);
  parse_capabilities(the_filter().printer, "m75");
  EXPECT_EQ(printer_has(the_filter().printer, kHasM, 0x30), 1U);
}

TEST_F(Capabilities, BitsOfAnotherKindAreNeverInASet) {
  parse_capabilities(the_filter().printer, "sA3!m70!isub!Sfront!L1!f0!g!F");
  EXPECT_EQ(printer_has(the_filter().printer, kHasA3, 0x11), 0U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasM, 0x1), 0U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasIsub, 0x1100), 0U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasS, 0x10000), 0U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasL, 0x100000), 0U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasFonts, 0x1100000), 0U);
}

TEST_F(Capabilities, FirstLetterGAndFCountWhateverFollowsAndWhateverIsAsked) {
  for (const char* token : {"g", "ga", "g1", "gF"}) {
    the_filter().printer = {};
    parse_capabilities(the_filter().printer, token);
    for (const std::uint32_t value : {0U, 1U, 0x1000000U, 0x10000000U}) {
      EXPECT_EQ(printer_has(the_filter().printer, kHasLowerG, value), 1U) << token << value;
      EXPECT_EQ(printer_has(the_filter().printer, kHasUpperF, value), 0U) << token << value;
    }
  }
  for (const char* token : {"F", "F1", "Fg"}) {
    the_filter().printer = {};
    parse_capabilities(the_filter().printer, token);
    for (const std::uint32_t value : {0U, 1U, 0x1000000U, 0x10000000U}) {
      EXPECT_EQ(printer_has(the_filter().printer, kHasLowerG, value), 0U) << token << value;
      EXPECT_EQ(printer_has(the_filter().printer, kHasUpperF, value), 1U) << token << value;
    }
  }
}

TEST_F(Capabilities, TokensThatMatchNothingAreSkipped) {
  for (const char* text :
       {"f3",   "L5", "L0",     "L",   "f",     "f1x",   "f100",    "sA4",   "sA3 ", " sA3",
        "SA3",  "m7", "m700",   "isu", "isubs", "Sfron", "Sfronts", "Sbot",  "S",    "l1",
        "d240", "G",  "Jja_JP", "x",   "",      "!",     "!!!",     "f1;f2", "L1,L2"}) {
    parse_capabilities(the_filter().printer, text);
    for (int kind = 1; kind <= 9; ++kind) {
      EXPECT_EQ(printer_has(the_filter().printer, kind, 0), 0U) << text << " in kind " << kind;
    }
  }
}

TEST_F(Capabilities, ExclamationMarksSeparateAndEmptyTokensDoNotCount) {
  parse_capabilities(the_filter().printer, "!!m70!!!D300!!f3!L1!");
  EXPECT_EQ(printer_has(the_filter().printer, kHasM, 0x10), 1U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasL, 0x10000), 1U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 0), 300U);
}

TEST_F(Capabilities, OccurrencesAddUp) {
  parse_capabilities(the_filter().printer, "D240!L1");
  parse_capabilities(the_filter().printer, "D400!L2");
  EXPECT_EQ(printer_has(the_filter().printer, kHasL, 0x30000), 1U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 0), 240U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 240), 1U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 400), 1U);
}

TEST_F(Capabilities, ResolutionTakesTheDecimalNumberThatFollows) {
  parse_capabilities(the_filter().printer, "D 300!D+400!D0600!D800dpi!D-5");
  for (const std::uint32_t listed : {300U, 400U, 600U, 800U, 0xFFFFFFFBU}) {
    EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, listed), 1U) << listed;
  }
  for (const std::uint32_t absent : {1U, 299U, 301U, 5U, 240U}) {
    EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, absent), 0U) << absent;
  }
}

TEST_F(Capabilities, A25thResolutionIsIgnored) {
  std::string text;
  for (unsigned resolution = 101; resolution <= 130; ++resolution) {
    text += "D" + std::to_string(resolution) + "!";
  }
  parse_capabilities(the_filter().printer, (text + "L1").c_str());
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 0), 101U);
  for (unsigned resolution = 101; resolution <= 130; ++resolution) {
    EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, resolution),
              resolution <= 124 ? 1U : 0U)
        << resolution;
  }
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 125), 0U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasL, 0x10000), 1U);
  // Nor from a later occurrence.
  parse_capabilities(the_filter().printer, "D777");
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 777), 0U);
}

TEST_F(Capabilities, AStoredZeroEndsTheResolutionListForEverySearch) {
  for (const char* zero : {"D0", "D", "Dx", "D00"}) {
    restart_settings();
    the_filter().printer = {};
    parse_capabilities(the_filter().printer, (std::string("D240!") + zero + "!D400").c_str());
    EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 0), 240U) << zero;
    EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 240), 1U) << zero;
    EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 400), 0U) << zero;
    EXPECT_EQ(printer_resolution(the_filter().printer, "400"), kUnknownResolution) << zero;
    the_filter().command_line.requested_resolution = 400;
    choose_resolution(the_filter().printer, the_filter().command_line);
    EXPECT_EQ(the_filter().command_line.resolution, 240) << zero;
  }
}

TEST_F(Capabilities, AZeroInFrontMakesTheResolutionListEmpty) {
  parse_capabilities(the_filter().printer, "D0!D400");
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 0), 0U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 400), 0U);
  EXPECT_EQ(printer_resolution(the_filter().printer, "400"), 0U);
  EXPECT_EQ(printer_resolution(the_filter().printer, nullptr), 0U);
  the_filter().command_line.resolution = 400;
  choose_resolution(the_filter().printer, the_filter().command_line);
  EXPECT_EQ(the_filter().command_line.resolution, 400);
}

TEST_F(Capabilities, AZeroTakesOneOfThe24Places) {
  std::string text;
  for (unsigned resolution = 1; resolution <= 23; ++resolution) {
    text += "D" + std::to_string(resolution) + "!";
  }
  parse_capabilities(the_filter().printer, (text + "D0!D24").c_str());
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 23), 1U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 24), 0U);
}

TEST_F(Capabilities, PrinterResolutionOfAText) {
  EXPECT_EQ(printer_resolution(the_filter().printer, nullptr), 0U);
  EXPECT_EQ(printer_resolution(the_filter().printer, "240"), 0U);
  parse_capabilities(the_filter().printer, "D240!D400");
  EXPECT_EQ(printer_resolution(the_filter().printer, nullptr), 240U);
  EXPECT_EQ(printer_resolution(the_filter().printer, "240"), 240U);
  EXPECT_EQ(printer_resolution(the_filter().printer, " 400dpi"), 400U);
  EXPECT_EQ(printer_resolution(the_filter().printer, "300"), kUnknownResolution);
  EXPECT_EQ(printer_resolution(the_filter().printer, "0"), kUnknownResolution);
  EXPECT_EQ(printer_resolution(the_filter().printer, ""), kUnknownResolution);
}

TEST_F(Capabilities, ResolutionStaysWithoutAListWhateverIsRequested) {
  for (const std::int32_t requested : {0, 240, 400, 300}) {
    for (const std::int32_t before : {240, 400}) {
      the_filter().command_line.resolution = before;
      the_filter().command_line.requested_resolution = requested;
      choose_resolution(the_filter().printer, the_filter().command_line);
      EXPECT_EQ(the_filter().command_line.resolution, before) << requested;
    }
  }
}

TEST_F(Capabilities, ResolutionWithoutRequestIsTheFirstListed) {
  parse_capabilities(the_filter().printer, "D300!D240!D400");
  the_filter().command_line.resolution = 400;
  choose_resolution(the_filter().printer, the_filter().command_line);
  EXPECT_EQ(the_filter().command_line.resolution, 300);
}

TEST_F(Capabilities, RequestedResolution300KeepsTheFirstListedAnd400IsSelected) {
  parse_capabilities(the_filter().printer, "D240!D400");
  the_filter().command_line.requested_resolution = 300;
  choose_resolution(the_filter().printer, the_filter().command_line);
  EXPECT_EQ(the_filter().command_line.resolution, 240);
  the_filter().command_line.requested_resolution = 400;
  choose_resolution(the_filter().printer, the_filter().command_line);
  EXPECT_EQ(the_filter().command_line.resolution, 400);
}

TEST_F(Capabilities, PrinterClassIsTheHighestOfF1AndF2) {
  struct Row {
    const char* text;
    std::uint32_t printer_class;
  };
  for (const Row& row : std::initializer_list<Row>{{"", kPrinterClassF0},
                                                   {"f0", kPrinterClassF0},
                                                   {"f10", kPrinterClassF0},
                                                   {"f3", kPrinterClassF0},
                                                   {"f1", kPrinterClassF1},
                                                   {"f0!f1", kPrinterClassF1},
                                                   {"f2", kPrinterClassF2},
                                                   {"f1!f2", kPrinterClassF2},
                                                   {"f2!f1!f0", kPrinterClassF2}}) {
    the_filter().printer = {};
    parse_capabilities(the_filter().printer, row.text);
    the_filter().command_line.printer_class = 0;
    query_printer(the_filter().printer, the_filter().command_line);
    EXPECT_EQ(the_filter().command_line.printer_class, row.printer_class) << row.text;
  }
}

TEST_F(Capabilities, QueryFillsTheTwoFlags) {
  for (const bool lower_g : {false, true}) {
    for (const bool upper_f : {false, true}) {
      the_filter().printer = {};
      parse_capabilities(the_filter().printer, lower_g ? "g" : "L1");
      parse_capabilities(the_filter().printer, upper_f ? "F" : "L1");
      query_printer(the_filter().printer, the_filter().command_line);
      EXPECT_EQ(the_filter().command_line.capability_g, lower_g ? 1 : 0);
      EXPECT_EQ(the_filter().command_line.capability_F, upper_f ? 1 : 0);
    }
  }
}

TEST_F(Capabilities, OverLongTextIsReadToItsEnd) {
  std::string text(100000, 'x');
  text += "!D" + std::string(5000, '0') + "600!" + std::string(70000, '!') + "L1";
  parse_capabilities(the_filter().printer, text.c_str());
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 0), 600U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasL, 0), 1U);
}

TEST_F(Capabilities, ResetForgetsEverything) {
  parse_capabilities(the_filter().printer, "D240!f2!g!F!sA3");
  the_filter().printer = {};
  for (int kind = 1; kind <= 9; ++kind) {
    EXPECT_EQ(printer_has(the_filter().printer, kind, 0), 0U) << kind;
  }
  parse_capabilities(the_filter().printer, "D400");
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 0), 400U);
}

}  // namespace
}  // namespace rlx
