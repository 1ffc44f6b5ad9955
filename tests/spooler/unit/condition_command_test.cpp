#include "mapping/condition_command.h"

#include <gtest/gtest.h>

#include <string_view>

namespace rlx::spooler {
namespace {

/// What every command begins with, up to and including the layout digit.
constexpr std::string_view kFront = "\033Q1;100 n  2";

/// What stands in the columns behind the layout digit, each with its place: "59:A4 62:P1".
/// Neighbours without a blank between them are one.
std::string columns_of(const JobSettings& settings, unsigned copies = 1) {
  const std::string command = condition_command(settings, copies);
  if (command.empty()) {
    return "no command";
  }
  EXPECT_EQ(command.substr(0, kFront.size()), kFront);
  // "n", two free bytes, 98 columns.
  EXPECT_EQ(command.size(), kFront.size() + 97);
  const std::string columns = command.substr(kFront.size() - 1);
  std::string all;
  for (std::size_t at = columns.find_first_not_of(' ', 1); at != std::string::npos;) {
    const std::size_t end = std::min(columns.find(' ', at), columns.size());
    all += (all.empty() ? "" : " ") + std::to_string(at) + ':' + columns.substr(at, end - at);
    at = columns.find_first_not_of(' ', end);
  }
  return all;
}

TEST(ConditionCommand, IsLeftOutWithoutAWish) {
  EXPECT_EQ(condition_command(JobSettings(), 1), "");
  // What is no affair of the command's.
  JobSettings settings;
  settings.form = "INVOICE";
  settings.lines_per_inch = 8;
  settings.lines_per_page = 60;
  settings.characters_per_inch = 10;
  settings.charset = "EUC-JP";
  settings.extended_parameters = true;
  settings.copies = 5;
  EXPECT_EQ(condition_command(settings, 1), "");
  // One side is what comes without a word.
  settings.sides = Sides::one;
  EXPECT_EQ(condition_command(settings, 1), "");
}

TEST(ConditionCommand, ByteByByte) {
  JobSettings settings;
  settings.paper = Paper::a4;
  settings.tray = Tray::tray_2;
  settings.orientation = Orientation::landscape;
  settings.sides = Sides::two_long_edge;
  settings.page_offset_x = 1440;
  settings.page_offset_y = 99999;
  const std::string expected =
      "\033Q1;100 n"
      "  "
      "2"                   // 0: layout
      "           "         // 1 to 11: overlay, its count
      " 12"                 // 12 to 14: copies
      "    "                // 15 to 18: name of the form
      "                "    // 19 to 34
      "    "                // 35 to 38: form code
      "                  "  // 39 to 56
      "L "                  // 57: orientation
      "A4 "                 // 59: paper
      "P2"                  // 62: tray
      "  "                  // 64
      "B"                   // 66: duplex
      "    "                // 67 to 70
      "U"                   // 71: edge
      " "                   // 72: kind of binding
      "     "               // 73 to 77: margin
      "          "          // 78 to 87: the offsets of an upright page
      " 1440"               // 88 to 92
      "99999";              // 93 to 97
  EXPECT_EQ(condition_command(settings, 12), expected);
}

TEST(ConditionCommand, OfPapers) {
  const auto with = [](Paper paper) {
    JobSettings settings;
    settings.paper = paper;
    return columns_of(settings);
  };
  EXPECT_EQ(with(Paper::unset), "no command");
  EXPECT_EQ(with(Paper::a3), "59:A3");
  EXPECT_EQ(with(Paper::a4), "59:A4");
  EXPECT_EQ(with(Paper::a5), "59:A5");
  EXPECT_EQ(with(Paper::b4), "59:B4");
  EXPECT_EQ(with(Paper::b5), "59:B5");
  EXPECT_EQ(with(Paper::letter), "59:LTR");
}

TEST(ConditionCommand, OfTrays) {
  const auto with = [](Tray tray) {
    JobSettings settings;
    settings.tray = tray;
    return columns_of(settings);
  };
  EXPECT_EQ(with(Tray::unset), "no command");
  EXPECT_EQ(with(Tray::automatic), "62:P");
  EXPECT_EQ(with(Tray::tray_1), "62:P1");
  EXPECT_EQ(with(Tray::tray_2), "62:P2");
  EXPECT_EQ(with(Tray::tray_3), "62:P3");
  EXPECT_EQ(with(Tray::tray_4), "62:P4");
}

TEST(ConditionCommand, OfSidesAndOrientation) {
  const auto with = [](Orientation orientation, Sides sides) {
    JobSettings settings;
    settings.orientation = orientation;
    settings.sides = sides;
    return columns_of(settings);
  };
  EXPECT_EQ(with(Orientation::unset, Sides::two_long_edge), "66:B 69:L");
  EXPECT_EQ(with(Orientation::unset, Sides::two_short_edge), "66:B 69:U");
  EXPECT_EQ(with(Orientation::upright, Sides::unset), "57:P");
  EXPECT_EQ(with(Orientation::upright, Sides::one), "57:P");
  EXPECT_EQ(with(Orientation::upright, Sides::two_long_edge), "57:P 66:B 69:L");
  EXPECT_EQ(with(Orientation::upright, Sides::two_short_edge), "57:P 66:B 69:U");
  EXPECT_EQ(with(Orientation::landscape, Sides::unset), "57:L");
  EXPECT_EQ(with(Orientation::landscape, Sides::one), "57:L");
  EXPECT_EQ(with(Orientation::landscape, Sides::two_long_edge), "57:L 66:B 71:U");
  EXPECT_EQ(with(Orientation::landscape, Sides::two_short_edge), "57:L 66:B 71:L");
}

TEST(ConditionCommand, OfOffsets) {
  const auto with = [](Orientation orientation, unsigned x, unsigned y) {
    JobSettings settings;
    settings.orientation = orientation;
    settings.page_offset_x = x;
    settings.page_offset_y = y;
    return columns_of(settings);
  };
  EXPECT_EQ(with(Orientation::unset, 1440, 0), "79:1440");
  EXPECT_EQ(with(Orientation::unset, 0, 1440), "84:1440");
  EXPECT_EQ(with(Orientation::unset, 99999, 0), "78:99999");
  EXPECT_EQ(with(Orientation::upright, 7200, 99999), "57:P 79:720099999");
  EXPECT_EQ(with(Orientation::landscape, 1440, 0), "57:L 89:1440");
  EXPECT_EQ(with(Orientation::landscape, 0, 10000), "57:L 93:10000");
}

TEST(ConditionCommand, OfCopies) {
  EXPECT_EQ(columns_of(JobSettings(), 1), "no command");
  EXPECT_EQ(columns_of(JobSettings(), 2), "14:2");
  EXPECT_EQ(columns_of(JobSettings(), 10), "13:10");
  EXPECT_EQ(columns_of(JobSettings(), kMostCommandCopies), "12:999");
  // What the job wants as a whole is another matter.
  JobSettings settings;
  settings.copies = 9999;
  EXPECT_EQ(columns_of(settings, 3), "14:3");
}

}  // namespace
}  // namespace rlx::spooler
