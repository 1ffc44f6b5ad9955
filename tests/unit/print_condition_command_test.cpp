#include "driver/loop/print_condition_command.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "job/print_conditions.h"
#include "job/settings.h"
#include "support/descriptors.h"
#include "support/record_builder.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::restart_settings;
using testing::the_filter;

using testing::CaptureDescriptor;
using testing::condition_record;
using testing::ConditionColumns;
using testing::make_record;

class PrintConditionCommand : public ::testing::Test {
 protected:
  PrintConditionCommand() {
    the_filter().messages.program_name = "filter";
    fill_conditions();
  }
  ~PrintConditionCommand() override {
    the_filter().conditions = {};
    restart_settings();
  }

  /// What an earlier command may have left.
  static void fill_conditions() {
    the_filter().conditions.form_overlay = {"OLDFORM1"};
    the_filter().conditions.overlay_count = 1;
    the_filter().conditions.copies = 2;
    the_filter().conditions.form_code = {"OLD4"};
    the_filter().conditions.orientation = {"LZ"};
    the_filter().conditions.binding_edge = {"U"};
    the_filter().conditions.binding_mode = {"V"};
    the_filter().conditions.first_offset = 3;
    the_filter().conditions.second_offset = 4;
    the_filter().conditions.paper_size = {"OLD"};
    the_filter().conditions.tray = {"P9"};
    the_filter().conditions.duplex = {"B"};
    the_filter().conditions.binding_margin = 5;
  }

  static void parse(const CommandRecord& record) {
    const CaptureDescriptor error(STDERR_FILENO);
    EXPECT_EQ(parse_print_condition_command(the_filter().messages, record, the_filter().conditions),
              0);
    EXPECT_EQ(error.text(), "");
  }

  static void parse_columns(const ConditionColumns& columns) { parse(condition_record(columns)); }

  static void parse_bytes(const std::string& bytes) { parse(make_record(CMD_Q_NL_SP, bytes)); }

  static void expect_all_empty() {
    expect_common_empty();
    expect_long_fields_empty();
  }

  static void expect_common_empty() {
    EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "");
    EXPECT_EQ(the_filter().conditions.overlay_count, 0);
    EXPECT_EQ(the_filter().conditions.copies, 0);
    EXPECT_STREQ(the_filter().conditions.form_code.data(), "");
  }

  static void expect_long_fields_empty() {
    EXPECT_STREQ(the_filter().conditions.orientation.data(), "");
    EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "");
    EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "");
    EXPECT_EQ(the_filter().conditions.first_offset, 0);
    EXPECT_EQ(the_filter().conditions.second_offset, 0);
    EXPECT_STREQ(the_filter().conditions.paper_size.data(), "");
    EXPECT_STREQ(the_filter().conditions.tray.data(), "");
    EXPECT_STREQ(the_filter().conditions.duplex.data(), "");
    EXPECT_EQ(the_filter().conditions.binding_margin, 0);
  }
};

/// A command with something in every column.
ConditionColumns full_columns() {
  return {.layout = "2",
          .form_overlay = "INVOICE1",
          .overlay_count = "012",
          .copies = "345",
          .fcb_name = "FCB1",
          .form_code = "FORM",
          .orientation = "PZ",
          .paper_size = "LTR",
          .tray = "P3",
          .duplex = "B",
          .binding_margin = "00720",
          .binding_edge = "U",
          .binding_mode = "K",
          .first_offset = "01440",
          .second_offset = "99999"};
}

TEST_F(PrintConditionCommand, LongCommandFillsEveryField) {
  parse_columns(full_columns());
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVOICE1");
  EXPECT_EQ(the_filter().conditions.overlay_count, 12);
  EXPECT_EQ(the_filter().conditions.copies, 345);
  EXPECT_STREQ(the_filter().conditions.form_code.data(), "FORM");
  EXPECT_STREQ(the_filter().conditions.orientation.data(), "PZ");
  EXPECT_STREQ(the_filter().conditions.paper_size.data(), "LTR");
  EXPECT_STREQ(the_filter().conditions.tray.data(), "P3");
  EXPECT_STREQ(the_filter().conditions.duplex.data(), "B");
  EXPECT_EQ(the_filter().conditions.binding_margin, 720);
  EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "U");
  EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "K");
  EXPECT_EQ(the_filter().conditions.first_offset, 1440);
  EXPECT_EQ(the_filter().conditions.second_offset, 99999);
}

// Every byte behind the layout digit says where it stands, so the fields show which columns they
// were read from. Offset o (from the layout digit) holds o's last digit.
TEST_F(PrintConditionCommand, EveryFieldComesFromItsColumns) {
  std::string command = "\x1bQ1;100 n  2";
  for (std::size_t offset = 1; offset <= 97; ++offset) {
    command += static_cast<char>('0' + offset % 10);
  }
  parse_bytes(command);
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "12345678");
  EXPECT_EQ(the_filter().conditions.overlay_count, 901);
  EXPECT_EQ(the_filter().conditions.copies, 234);
  EXPECT_STREQ(the_filter().conditions.form_code.data(), "5678");
  EXPECT_STREQ(the_filter().conditions.orientation.data(), "78");
  EXPECT_STREQ(the_filter().conditions.paper_size.data(), "901");
  EXPECT_STREQ(the_filter().conditions.tray.data(), "23");
  EXPECT_STREQ(the_filter().conditions.duplex.data(), "6");
  EXPECT_EQ(the_filter().conditions.binding_margin, 34567);
  EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "9");
  EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "0");
  EXPECT_EQ(the_filter().conditions.first_offset, 89012);
  EXPECT_EQ(the_filter().conditions.second_offset, 34567);
}

// The same with the tens, for the fields whose columns are whole tens away from others.
TEST_F(PrintConditionCommand, EveryFieldComesFromItsTens) {
  std::string command = "\x1bQ1;100 n  2";
  for (std::size_t offset = 1; offset <= 97; ++offset) {
    command += static_cast<char>('0' + offset / 10);
  }
  parse_bytes(command);
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "00000000");
  EXPECT_EQ(the_filter().conditions.overlay_count, 11);
  EXPECT_EQ(the_filter().conditions.copies, 111);
  EXPECT_STREQ(the_filter().conditions.form_code.data(), "3333");
  EXPECT_STREQ(the_filter().conditions.orientation.data(), "55");
  EXPECT_STREQ(the_filter().conditions.paper_size.data(), "566");
  EXPECT_STREQ(the_filter().conditions.tray.data(), "66");
  EXPECT_STREQ(the_filter().conditions.duplex.data(), "6");
  EXPECT_EQ(the_filter().conditions.binding_margin, 77777);
  EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "6");
  EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "7");
  EXPECT_EQ(the_filter().conditions.first_offset, 77888);
  EXPECT_EQ(the_filter().conditions.second_offset, 88888);
}

TEST_F(PrintConditionCommand, LandscapeReadsTheBindingTwoAndTheOffsetsTenBytesLater) {
  std::string units = "\x1bQ1;100 n  0";
  std::string tens = units;
  for (std::size_t offset = 1; offset <= 97; ++offset) {
    units += static_cast<char>('0' + offset % 10);
    tens += static_cast<char>('0' + offset / 10);
  }
  const std::size_t orientation = 11 + 57;
  units[orientation] = 'L';
  tens[orientation] = 'L';
  parse_bytes(units);
  EXPECT_STREQ(the_filter().conditions.orientation.data(), "L8");
  EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "1");
  EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "2");
  EXPECT_EQ(the_filter().conditions.first_offset, 89012);
  EXPECT_EQ(the_filter().conditions.second_offset, 34567);
  EXPECT_EQ(the_filter().conditions.binding_margin, 34567);
  parse_bytes(tens);
  EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "7");
  EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "7");
  EXPECT_EQ(the_filter().conditions.first_offset, 88999);
  EXPECT_EQ(the_filter().conditions.second_offset, 99999);
  EXPECT_EQ(the_filter().conditions.binding_margin, 77777);
}

TEST_F(PrintConditionCommand, WhichCodesAreLandscape) {
  for (const char* const code : {"L ", " L", "LZ", "LP", "-L"}) {
    std::string command = "\x1bQ1;100 n  0" + std::string(97, ' ');
    command.replace(11 + 57, 2, code);
    command.replace(11 + 69, 4, "PpLl");
    parse_bytes(command);
    EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "L") << code;
    EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "l") << code;
  }
  for (const char* const code : {"P ", "PL", "PZ", "  ", "--", "l "}) {
    std::string command = "\x1bQ1;100 n  0" + std::string(97, ' ');
    command.replace(11 + 57, 2, code);
    command.replace(11 + 69, 4, "PpLl");
    parse_bytes(command);
    EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "P") << code;
    EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "p") << code;
  }
}

TEST_F(PrintConditionCommand, LengthSixteenWithLayoutTwoIsAShortCommand) {
  parse_bytes("\x1bQ1;16 n  2INVOICE1012345");
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVO");
  EXPECT_EQ(the_filter().conditions.overlay_count, 12);
  EXPECT_EQ(the_filter().conditions.copies, 345);
  EXPECT_STREQ(the_filter().conditions.form_code.data(), "");
  expect_long_fields_empty();
}

TEST_F(PrintConditionCommand, LengthSeventeenWithLayoutTwoIsALongCommand) {
  parse_bytes("\x1bQ1;17 n  2INVOICE1012345");
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVOICE1");
}

// The length that the command states counts, not the bytes that are there.
TEST_F(PrintConditionCommand, ShortCommandReadsTheFourCharacterCodeButNoLongField) {
  for (int length = 0; length <= 16; ++length) {
    fill_conditions();
    ConditionColumns columns = full_columns();
    columns.layout = "0";
    columns.form_overlay = "INVO";
    columns.fcb_name = "";
    parse_bytes("\x1bQ1;" + std::to_string(length) + " n" + testing::condition_data(columns));
    EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVO") << length;
    EXPECT_EQ(the_filter().conditions.overlay_count, 12) << length;
    EXPECT_EQ(the_filter().conditions.copies, 345) << length;
    EXPECT_STREQ(the_filter().conditions.form_code.data(), "FORM") << length;
    expect_long_fields_empty();
  }
}

TEST_F(PrintConditionCommand, ShortCommandTakesAnyLayout) {
  for (const char* const layout : {"0", "1", "2", "3", " ", "x"}) {
    fill_conditions();
    parse_columns({.layout = layout, .form_overlay = "FORM", .copies = "7", .data_length = 16});
    EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "FORM") << layout;
    EXPECT_EQ(the_filter().conditions.overlay_count, 7) << layout;
  }
}

TEST_F(PrintConditionCommand, LayoutsZeroAndOneHaveAFourByteName) {
  for (const char* const layout : {"0", "1"}) {
    parse_columns({.layout = layout, .form_overlay = "INVOICE1"});
    EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVO") << layout;
  }
}

TEST_F(PrintConditionCommand, LayoutThreeLeavesEveryFieldEmptyWithoutAMessage) {
  ConditionColumns columns = full_columns();
  columns.layout = "3";
  parse_columns(columns);
  expect_all_empty();
}

TEST_F(PrintConditionCommand, EveryUnknownLayoutLeavesEveryFieldEmpty) {
  for (int byte = 0; byte < 256; ++byte) {
    if (byte >= '0' && byte <= '2') {
      continue;
    }
    fill_conditions();
    ConditionColumns columns = full_columns();
    columns.layout = std::string(1, static_cast<char>(byte));
    parse_columns(columns);
    expect_all_empty();
  }
}

TEST_F(PrintConditionCommand, BlankByteFourIsADataErrorAndClearsEveryField) {
  const CaptureDescriptor error(STDERR_FILENO);
  EXPECT_EQ(parse_print_condition_command(
                the_filter().messages,
                make_record(CMD_Q_NL_SP, "\x1bQ1; n  2INVOICE1012345" + std::string(100, '5')),
                the_filter().conditions),
            1);
  EXPECT_EQ(error.text(), "filter: FCB data error\n");
  expect_all_empty();
}

TEST_F(PrintConditionCommand, CommandThatEndsBeforeByteFourIsADataError) {
  const CaptureDescriptor error(STDERR_FILENO);
  EXPECT_EQ(
      parse_print_condition_command(the_filter().messages, make_record(CMD_Q_NL_SP, "\x1bQ1;"),
                                    the_filter().conditions),
      1);
  EXPECT_EQ(error.text(), "filter: FCB data error\n");
  expect_all_empty();
}

TEST_F(PrintConditionCommand, NameColumnABBlankCGivesABC) {
  parse_columns({.form_overlay = "AB C"});
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "ABC");
}

TEST_F(PrintConditionCommand, TextsKeepOnlyLettersAndDigits) {
  parse_columns({.layout = "2",
                 .form_overlay = "a-1./Z\xe3 ",
                 .form_code = "A 4 ",
                 .orientation = " P",
                 .paper_size = "A 4",
                 .tray = "-1",
                 .duplex = "*",
                 .binding_edge = "-",
                 .binding_mode = "7"});
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "a1Z");
  EXPECT_STREQ(the_filter().conditions.form_code.data(), "A4");
  EXPECT_STREQ(the_filter().conditions.orientation.data(), "P");
  EXPECT_STREQ(the_filter().conditions.paper_size.data(), "A4");
  EXPECT_STREQ(the_filter().conditions.tray.data(), "1");
  EXPECT_STREQ(the_filter().conditions.duplex.data(), "");
  EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "");
  EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "7");
}

TEST_F(PrintConditionCommand, OverlayCountZeroWithAnOverlayTakesTheCopies) {
  parse_columns({.form_overlay = "FORM", .overlay_count = "000", .copies = "012"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 12);
  EXPECT_EQ(the_filter().conditions.copies, 12);
}

TEST_F(PrintConditionCommand, BlankOverlayCountWithAnOverlayTakesTheCopies) {
  parse_columns({.form_overlay = "FORM", .copies = "  7"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 7);
}

TEST_F(PrintConditionCommand, OverlayCountZeroWithoutAnOverlayStaysZero) {
  parse_columns({.overlay_count = "000", .copies = "012"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 0);
  EXPECT_EQ(the_filter().conditions.copies, 12);
}

TEST_F(PrintConditionCommand, OverlayCountZeroWithAnOverlayThatIsFilteredAwayStaysZero) {
  parse_columns({.form_overlay = "----", .overlay_count = "000", .copies = "012"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 0);
}

TEST_F(PrintConditionCommand, OverlayCountOfItsOwnIsKept) {
  parse_columns({.form_overlay = "FORM", .overlay_count = "001", .copies = "012"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 1);
}

TEST_F(PrintConditionCommand, NumbersAllowBlanksInFrontAndJunkBehind) {
  parse_columns({.overlay_count = " 12",
                 .copies = "3x9",
                 .binding_margin = "  720",
                 .first_offset = "12 34",
                 .second_offset = "x1234"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 12);
  EXPECT_EQ(the_filter().conditions.copies, 3);
  EXPECT_EQ(the_filter().conditions.binding_margin, 720);
  EXPECT_EQ(the_filter().conditions.first_offset, 12);
  EXPECT_EQ(the_filter().conditions.second_offset, 0);
}

// In layouts 0 and 1 the FCB name stands on the last column of the overlay count and on the copies.
TEST_F(PrintConditionCommand, FcbNameOverTheCountsIsReadAsCountsToo) {
  parse_columns({.layout = "1", .overlay_count = "01", .fcb_name = "2345"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 12);
  EXPECT_EQ(the_filter().conditions.copies, 345);
}

TEST_F(PrintConditionCommand, FcbNameOfLayoutTwoTouchesNoField) {
  parse_columns({.layout = "2", .fcb_name = "2345"});
  expect_all_empty();
}

TEST_F(PrintConditionCommand, ColumnsMoveWithTheDigitsOfTheLength) {
  for (const char* const length : {"17", "00017", "1000000"}) {
    parse_bytes("\x1bQ1;" + std::string(length) + " n  2INVOICE1012345");
    EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVOICE1") << length;
    EXPECT_EQ(the_filter().conditions.copies, 345) << length;
  }
}

TEST_F(PrintConditionCommand, ColumnsBehindTheEndOfTheRecordReadAsBlanks) {
  ConditionColumns columns = full_columns();
  columns.data_length = 17;
  parse_columns(columns);
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVOICE1");
  EXPECT_EQ(the_filter().conditions.overlay_count, 12);
  EXPECT_EQ(the_filter().conditions.copies, 345);
  EXPECT_STREQ(the_filter().conditions.form_code.data(), "");
  expect_long_fields_empty();
}

// Cut behind each data byte: a number keeps the digits in front of the cut.
TEST_F(PrintConditionCommand, CommandIsCutAtEveryPlace) {
  ConditionColumns columns = full_columns();
  columns.second_offset = "12345";  // the data bytes 85 to 89
  const std::string whole = testing::condition_data(columns);
  const std::string digits = "12345";
  for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
    parse_bytes("\x1bQ1;100 n" + whole.substr(0, cut));
    const std::size_t kept = cut < 85 ? 0 : std::min<std::size_t>(cut - 85, 5);
    const int expected = kept == 0 ? 0 : std::stoi(digits.substr(0, kept));
    EXPECT_EQ(the_filter().conditions.second_offset, expected) << cut;
    EXPECT_STREQ(the_filter().conditions.duplex.data(), cut > 68 ? "B" : "") << cut;
  }
}

TEST_F(PrintConditionCommand, DataThatIsStillInTheInputLeavesEveryFieldEmpty) {
  CommandRecord record = make_record(CMD_Q_NL_SP, "\x1bQ1;5000 n");
  record.pending = 5000;
  parse(record);
  expect_all_empty();
}

}  // namespace
}  // namespace rlx
