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

class PrintConditionRecord : public ::testing::Test {
 protected:
  PrintConditionRecord() {
    the_filter().messages.program_name = "filter";
    fill_conditions();
  }
  ~PrintConditionRecord() override {
    the_filter().conditions = {};
    restart_settings();
  }

  /// What an earlier record may have left.
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

/// A record with something in every column.
ConditionColumns full_columns() {
  return {.layout = "2",
          .form_name = "INVOICE1",
          .count_a = "012",
          .count_b = "345",
          .fcb_name = "FCB1",
          .code_4 = "FORM",
          .code_2 = "PZ",
          .code_3 = "LTR",
          .code_2b = "P3",
          .flag_3 = "B",
          .value_3 = "00720",
          .flag_1 = "U",
          .flag_2 = "K",
          .value_1 = "01440",
          .value_2 = "99999"};
}

TEST_F(PrintConditionRecord, LongRecordFillsEveryField) {
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
TEST_F(PrintConditionRecord, EveryFieldComesFromItsColumns) {
  std::string record = "\x1bQ1;100 n  2";
  for (std::size_t offset = 1; offset <= 97; ++offset) {
    record += static_cast<char>('0' + offset % 10);
  }
  parse_bytes(record);
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
TEST_F(PrintConditionRecord, EveryFieldComesFromItsTens) {
  std::string record = "\x1bQ1;100 n  2";
  for (std::size_t offset = 1; offset <= 97; ++offset) {
    record += static_cast<char>('0' + offset / 10);
  }
  parse_bytes(record);
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

TEST_F(PrintConditionRecord, LandscapeReadsFlagsTwoAndValuesTenBytesLater) {
  std::string units = "\x1bQ1;100 n  0";
  std::string tens = units;
  for (std::size_t offset = 1; offset <= 97; ++offset) {
    units += static_cast<char>('0' + offset % 10);
    tens += static_cast<char>('0' + offset / 10);
  }
  const std::size_t code_2 = 11 + 57;
  units[code_2] = 'L';
  tens[code_2] = 'L';
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

TEST_F(PrintConditionRecord, WhichCodesAreLandscape) {
  for (const char* const code : {"L ", " L", "LZ", "LP", "-L"}) {
    std::string record = "\x1bQ1;100 n  0" + std::string(97, ' ');
    record.replace(11 + 57, 2, code);
    record.replace(11 + 69, 4, "PpLl");
    parse_bytes(record);
    EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "L") << code;
    EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "l") << code;
  }
  for (const char* const code : {"P ", "PL", "PZ", "  ", "--", "l "}) {
    std::string record = "\x1bQ1;100 n  0" + std::string(97, ' ');
    record.replace(11 + 57, 2, code);
    record.replace(11 + 69, 4, "PpLl");
    parse_bytes(record);
    EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "P") << code;
    EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "p") << code;
  }
}

TEST_F(PrintConditionRecord, LengthSixteenWithLayoutTwoIsAShortRecord) {
  parse_bytes("\x1bQ1;16 n  2INVOICE1012345");
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVO");
  EXPECT_EQ(the_filter().conditions.overlay_count, 12);
  EXPECT_EQ(the_filter().conditions.copies, 345);
  EXPECT_STREQ(the_filter().conditions.form_code.data(), "");
  expect_long_fields_empty();
}

TEST_F(PrintConditionRecord, LengthSeventeenWithLayoutTwoIsALongRecord) {
  parse_bytes("\x1bQ1;17 n  2INVOICE1012345");
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVOICE1");
}

// The length that the record states counts, not the bytes that are there.
TEST_F(PrintConditionRecord, ShortRecordReadsTheFourCharacterCodeButNoLongField) {
  for (int length = 0; length <= 16; ++length) {
    fill_conditions();
    ConditionColumns columns = full_columns();
    columns.layout = "0";
    columns.form_name = "INVO";
    columns.fcb_name = "";
    parse_bytes("\x1bQ1;" + std::to_string(length) + " n" + testing::condition_data(columns));
    EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVO") << length;
    EXPECT_EQ(the_filter().conditions.overlay_count, 12) << length;
    EXPECT_EQ(the_filter().conditions.copies, 345) << length;
    EXPECT_STREQ(the_filter().conditions.form_code.data(), "FORM") << length;
    expect_long_fields_empty();
  }
}

TEST_F(PrintConditionRecord, ShortRecordTakesAnyLayout) {
  for (const char* const layout : {"0", "1", "2", "3", " ", "x"}) {
    fill_conditions();
    parse_columns({.layout = layout, .form_name = "FORM", .count_b = "7", .data_length = 16});
    EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "FORM") << layout;
    EXPECT_EQ(the_filter().conditions.overlay_count, 7) << layout;
  }
}

TEST_F(PrintConditionRecord, LayoutsZeroAndOneHaveAFourByteName) {
  for (const char* const layout : {"0", "1"}) {
    parse_columns({.layout = layout, .form_name = "INVOICE1"});
    EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVO") << layout;
  }
}

TEST_F(PrintConditionRecord, LayoutThreeLeavesEveryFieldEmptyWithoutAMessage) {
  ConditionColumns columns = full_columns();
  columns.layout = "3";
  parse_columns(columns);
  expect_all_empty();
}

TEST_F(PrintConditionRecord, EveryUnknownLayoutLeavesEveryFieldEmpty) {
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

TEST_F(PrintConditionRecord, BlankByteFourIsADataErrorAndClearsEveryField) {
  const CaptureDescriptor error(STDERR_FILENO);
  EXPECT_EQ(parse_print_condition_command(
                the_filter().messages,
                make_record(CMD_Q_NL_SP, "\x1bQ1; n  2INVOICE1012345" + std::string(100, '5')),
                the_filter().conditions),
            1);
  EXPECT_EQ(error.text(), "filter: FCB data error\n");
  expect_all_empty();
}

TEST_F(PrintConditionRecord, RecordThatEndsBeforeByteFourIsADataError) {
  const CaptureDescriptor error(STDERR_FILENO);
  EXPECT_EQ(
      parse_print_condition_command(the_filter().messages, make_record(CMD_Q_NL_SP, "\x1bQ1;"),
                                    the_filter().conditions),
      1);
  EXPECT_EQ(error.text(), "filter: FCB data error\n");
  expect_all_empty();
}

TEST_F(PrintConditionRecord, NameColumnABBlankCGivesABC) {
  parse_columns({.form_name = "AB C"});
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "ABC");
}

TEST_F(PrintConditionRecord, TextsKeepOnlyLettersAndDigits) {
  parse_columns({.layout = "2",
                 .form_name = "a-1./Z\xe3 ",
                 .code_4 = "A 4 ",
                 .code_2 = " P",
                 .code_3 = "A 4",
                 .code_2b = "-1",
                 .flag_3 = "*",
                 .flag_1 = "-",
                 .flag_2 = "7"});
  EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "a1Z");
  EXPECT_STREQ(the_filter().conditions.form_code.data(), "A4");
  EXPECT_STREQ(the_filter().conditions.orientation.data(), "P");
  EXPECT_STREQ(the_filter().conditions.paper_size.data(), "A4");
  EXPECT_STREQ(the_filter().conditions.tray.data(), "1");
  EXPECT_STREQ(the_filter().conditions.duplex.data(), "");
  EXPECT_STREQ(the_filter().conditions.binding_edge.data(), "");
  EXPECT_STREQ(the_filter().conditions.binding_mode.data(), "7");
}

TEST_F(PrintConditionRecord, CountAZeroWithANameTakesCountB) {
  parse_columns({.form_name = "FORM", .count_a = "000", .count_b = "012"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 12);
  EXPECT_EQ(the_filter().conditions.copies, 12);
}

TEST_F(PrintConditionRecord, BlankCountAWithANameTakesCountB) {
  parse_columns({.form_name = "FORM", .count_b = "  7"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 7);
}

TEST_F(PrintConditionRecord, CountAZeroWithoutANameStaysZero) {
  parse_columns({.count_a = "000", .count_b = "012"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 0);
  EXPECT_EQ(the_filter().conditions.copies, 12);
}

TEST_F(PrintConditionRecord, CountAZeroWithANameThatIsFilteredAwayStaysZero) {
  parse_columns({.form_name = "----", .count_a = "000", .count_b = "012"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 0);
}

TEST_F(PrintConditionRecord, CountAOfItsOwnIsKept) {
  parse_columns({.form_name = "FORM", .count_a = "001", .count_b = "012"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 1);
}

TEST_F(PrintConditionRecord, NumbersAllowBlanksInFrontAndJunkBehind) {
  parse_columns({.count_a = " 12",
                 .count_b = "3x9",
                 .value_3 = "  720",
                 .value_1 = "12 34",
                 .value_2 = "x1234"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 12);
  EXPECT_EQ(the_filter().conditions.copies, 3);
  EXPECT_EQ(the_filter().conditions.binding_margin, 720);
  EXPECT_EQ(the_filter().conditions.first_offset, 12);
  EXPECT_EQ(the_filter().conditions.second_offset, 0);
}

// In layouts 0 and 1 the FCB name stands on the last column of count A and on count B.
TEST_F(PrintConditionRecord, FcbNameOverTheCountsIsReadAsCountsToo) {
  parse_columns({.layout = "1", .count_a = "01", .fcb_name = "2345"});
  EXPECT_EQ(the_filter().conditions.overlay_count, 12);
  EXPECT_EQ(the_filter().conditions.copies, 345);
}

TEST_F(PrintConditionRecord, FcbNameOfLayoutTwoTouchesNoField) {
  parse_columns({.layout = "2", .fcb_name = "2345"});
  expect_all_empty();
}

TEST_F(PrintConditionRecord, ColumnsMoveWithTheDigitsOfTheLength) {
  for (const char* const length : {"17", "00017", "1000000"}) {
    parse_bytes("\x1bQ1;" + std::string(length) + " n  2INVOICE1012345");
    EXPECT_STREQ(the_filter().conditions.form_overlay.data(), "INVOICE1") << length;
    EXPECT_EQ(the_filter().conditions.copies, 345) << length;
  }
}

TEST_F(PrintConditionRecord, ColumnsBehindTheEndOfTheRecordReadAsBlanks) {
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
TEST_F(PrintConditionRecord, RecordIsCutAtEveryPlace) {
  ConditionColumns columns = full_columns();
  columns.value_2 = "12345";  // the data bytes 85 to 89
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

TEST_F(PrintConditionRecord, DataThatIsStillInTheInputLeavesEveryFieldEmpty) {
  CommandRecord record = make_record(CMD_Q_NL_SP, "\x1bQ1;5000 n");
  record.pending = 5000;
  parse(record);
  expect_all_empty();
}

}  // namespace
}  // namespace rlx
