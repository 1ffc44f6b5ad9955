#include "driver/loop/command_parameters.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "job/settings.h"
#include "support/record_builder.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::restart_settings;
using testing::the_filter;

using testing::make_record;

// The parameter text

TEST(ParameterText, StandsFromTheThirdByteToTheExclamationMark) {
  const auto text = [](std::string_view command) {
    const CommandRecord record = make_record(CMD_LINE_UNIT_479, command);
    return std::string(parameter_text(record));
  };
  EXPECT_EQ(text("\x1bQ12;3!C"), "12;3");
  EXPECT_EQ(text("\x1bQ1!2!C"), "1");
  EXPECT_EQ(text("\x1bQ!C"), "");
  EXPECT_EQ(text("\x1bQ12"), "12");
  EXPECT_EQ(text("\x1bQ"), "");
  EXPECT_EQ(text("\x1b"), "");
  EXPECT_EQ(text(""), "");
}

// Command 479

TEST(ResetsLineUnit, EmptyParameterDoes) {
  EXPECT_TRUE(resets_line_unit(""));
}

TEST(ResetsLineUnit, NumberBelowFiveDoes) {
  for (int number = 0; number <= 1000; ++number) {
    const std::string digits = std::to_string(number);
    for (const std::string& parameter : {digits, "0" + digits, "00000000000" + digits}) {
      EXPECT_EQ(resets_line_unit(parameter), number < 5) << parameter;
    }
  }
  EXPECT_TRUE(resets_line_unit(std::string(4000, '0')));
}

TEST(ResetsLineUnit, LongNumbersAndOtherCharactersDoNot) {
  for (const char* parameter : {"1234567",
                                "12345678",
                                "99999999999999999999",
                                "00012345678",
                                "4294967296",
                                "4294967300",
                                "18446744073709551616",
                                "a",
                                "4a",
                                "a4",
                                " 4",
                                "4 ",
                                "4;",
                                ";4",
                                "-1",
                                "+1",
                                "4.0",
                                "/",
                                ":",
                                "0x1",
                                "4-"}) {
    EXPECT_FALSE(resets_line_unit(parameter)) << parameter;
  }
}

// Command 492

/// What the fields say, by the letter: -1, or the value of the first field.
int first_field(std::string_view parameter) {
  int first = 0;
  int fields = 1;
  bool one = false;
  for (const char byte : parameter) {
    if (byte == ';') {
      ++fields;
      one = false;
    } else if (byte == '1' && !one) {
      one = true;
      first = fields == 1 ? 1 : first;
    } else if (byte != '0' || one) {
      return -1;
    }
  }
  return fields > 5 ? -1 : first;
}

void expect_492(std::string_view parameter, int value) {
  for (const int before : {0, 1}) {
    int state = before;
    const int result = parse_command_492(parameter, state);
    if (value < 0) {
      EXPECT_EQ(result, -1) << parameter;
      EXPECT_EQ(state, before) << parameter;
    } else {
      EXPECT_EQ(result, value != before ? 1 : 0) << parameter;
      EXPECT_EQ(state, value) << parameter;
    }
  }
}

TEST(Command492, FirstFieldIsTheState) {
  expect_492("", 0);
  expect_492("0", 0);
  expect_492("1", 1);
  expect_492("001", 1);
  expect_492(";1", 0);
  expect_492("1;", 1);
  expect_492("0;1;1;1;1", 0);
  expect_492("1;0;;01;1", 1);
}

TEST(Command492, FiveFieldsAreTaken) {
  const std::vector<std::string> values{"", "0", "1"};
  for (const std::string& first : values) {
    for (const std::string& other : values) {
      std::string parameter = first;
      for (int fields = 1; fields <= 7; ++fields) {
        expect_492(parameter, fields > 5 ? -1 : first == "1" ? 1 : 0);
        parameter += ";" + other;
      }
    }
  }
}

TEST(Command492, OtherShapesAreRefused) {
  for (const char* parameter :
       {"2",  "11", "10", "101", "1;10",       "1;11",  ";;;;10",    "1;2", " 1", "1 ",
        "-1", "+1", "a",  "1,0", "0;0;0;0;0;", ";;;;;", "1;0;0;0;x", ":",   "/",  "1\0011"}) {
    expect_492(parameter, -1);
  }
}

TEST(Command492, EveryShortParameterIsReadByTheRule) {
  std::vector<std::string> parameters{""};
  for (std::size_t i = 0; i < parameters.size() && parameters[i].size() < 7; ++i) {
    for (const char byte : {'0', '1', ';', '2'}) {
      parameters.push_back(parameters[i] + byte);
    }
  }
  EXPECT_EQ(parameters.size(), 21845U);
  for (const std::string& parameter : parameters) {
    expect_492(parameter, first_field(parameter));
  }
}

// Command 489

class Command489 : public ::testing::Test {
 protected:
  Command489() { restart_settings(); }
  ~Command489() override { restart_settings(); }

  /// Expects the fonts behind the command: 0, 1, or -1 for those from before.
  static void expect_fonts(std::string_view parameter, int fonts, std::int32_t resolution = 300) {
    for (const int before : {0, 1}) {
      the_filter().command_line.resolution = resolution;
      the_filter().job.high_resolution_fonts = before;
      const int expected = fonts < 0 ? before : fonts;
      EXPECT_EQ(switch_resolution(parameter, resolution, the_filter().job), expected != before)
          << parameter;
      EXPECT_EQ(the_filter().job.high_resolution_fonts, expected) << parameter;
      EXPECT_EQ(the_filter().command_line.resolution, resolution);
    }
  }
};

TEST_F(Command489, ChoosesTheFontsOfItsResolution) {
  for (const std::string zeros : {"", "0", "00000000"}) {
    expect_fonts(zeros + "400", 1);
    expect_fonts(zeros + "240", 0);
  }
}

TEST_F(Command489, WithoutAParameterChoosesThoseOfTheJob) {
  expect_fonts("", 1, 400);
  expect_fonts("", 0, 240);
  expect_fonts("", 0, 300);
}

TEST_F(Command489, OtherValuesChangeNothing) {
  for (int value = 1; value <= 1000; ++value) {
    if (value != 240 && value != 400) {
      expect_fonts(std::to_string(value), -1);
    }
  }
  for (const char* parameter : {"4000000", "2400000", "40000000", "4294967696", "400;", "400 ",
                                " 400", "+400", "-400", "4x0", "x", ";", "240a", "0240;400"}) {
    expect_fonts(parameter, -1);
  }
}

// Command 483

std::string name_record(char flag, std::string_view columns) {
  return "\x1bQ2;30 n  " + std::string(1, flag) + "      " + std::string(columns);
}

TEST(FormName, HasFourOrEightBytes) {
  const auto parse = [](std::string_view record) {
    return parse_form_name(make_record(CMD_Q_NL_SP2, record));
  };
  FormName name = parse(name_record('0', "ABCDEFGHIJ"));
  EXPECT_STREQ(name.as_given.data(), "ABCD");
  EXPECT_STREQ(name.letters_and_digits.data(), "ABCD");
  for (const char flag : {'1', '2', ' ', 'x', '\0'}) {
    name = parse(name_record(flag, "A-b 9.Z_IJ"));
    EXPECT_STREQ(name.as_given.data(), "A-b 9.Z_");
    EXPECT_STREQ(name.letters_and_digits.data(), "Ab9Z");
  }
}

TEST(FormName, ColumnsBehindTheRecordAreBlank) {
  const std::string record = name_record('1', "ABCDEFGH");
  for (std::size_t length = 0; length <= record.size(); ++length) {
    const FormName name = parse_form_name(make_record(CMD_Q_NL_SP2, record.substr(0, length)));
    const std::size_t there = length < 17 ? 0 : length - 17;
    const std::string_view letters = std::string_view("ABCDEFGH").substr(0, there);
    EXPECT_EQ(std::string_view(name.letters_and_digits.data()), letters) << length;
    EXPECT_TRUE(std::string_view(name.as_given.data()).starts_with(letters)) << length;
  }
}

TEST(FormName, ColumnsCountFromTheFirstSpaceAtOrBehindByte4) {
  const FormName name = parse_form_name(make_record(CMD_Q_NL_SP2, "\x1bQ2; n  0      ABCDEFGH"));
  EXPECT_STREQ(name.as_given.data(), "ABCD");
}

}  // namespace
}  // namespace rlx
