// The form parameter, command 500: its shapes, kinds and lengths.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "driver/loop/command_parameters.h"
#include "job/settings.h"
#include "support/page_data.h"
#include "support/record_builder.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::restart_settings;
using testing::the_filter;

using testing::make_record;
using testing::pattern;

std::string big_endian(std::uint32_t value) {
  std::string text;
  for (const int shift : {24, 16, 8, 0}) {
    text += static_cast<char>(value >> shift & 0xFF);
  }
  return text;
}

std::string command(char kind, std::uint32_t length, std::string_view data,
                    std::string_view parameter = "6;9 ") {
  return "\x1bQ" + std::string(parameter) + "o" + kind + big_endian(length) + std::string(data);
}

class FormParameter : public ::testing::Test {
 protected:
  FormParameter() {
    restart_settings();
    settings_.spacing_index = 2;
    settings_.form_data_length = 7;
    settings_.form_data.fill('o');
  }
  ~FormParameter() override { restart_settings(); }

  bool parse(std::string_view text) {
    return parse_form_parameter(make_record(CMD_Q_OL_SP, text),
                                the_filter().command_line.capability_g, settings_);
  }
  std::string data() const {
    return {settings_.form_data.begin(), settings_.form_data.begin() + settings_.form_data_length};
  }
  void expect_untouched(std::string_view what) const {
    EXPECT_EQ(settings_.form_source, kNotGiven) << what;
    EXPECT_EQ(settings_.spacing_index, 2) << what;
    EXPECT_EQ(settings_.form_flag, 0) << what;
    EXPECT_EQ(data(), "ooooooo") << what;
  }

  SettingsRecord settings_;
};

TEST_F(FormParameter, KindSelectsSourceSpacingAndFlag) {
  for (const int capability : {0, 1}) {
    for (const char kind : {'\1', '\2', '\3'}) {
      the_filter().command_line.capability_g = capability;
      settings_ = SettingsRecord{};
      EXPECT_TRUE(parse(command(kind, 3, "abc")));
      EXPECT_EQ(settings_.form_source, kind == 3 ? kFromFormKind3 : kFromForm);
      EXPECT_EQ(settings_.spacing_index, kind == 3 ? 4 : 3);
      EXPECT_EQ(settings_.form_flag, kind == 2 && capability == 1 ? 1 : 0);
      EXPECT_EQ(data(), "abc");
    }
  }
}

TEST_F(FormParameter, OtherKindsAreRefused) {
  for (int kind = 0; kind <= 255; ++kind) {
    if (kind < 1 || kind > 3) {
      EXPECT_FALSE(parse(command(static_cast<char>(kind), 3, "abc"))) << kind;
      expect_untouched("kind " + std::to_string(kind));
    }
  }
}

TEST_F(FormParameter, SourceOfTheCommandLineStays) {
  settings_.form_source = kFromCommandLine;
  for (const char kind : {'\1', '\2', '\3'}) {
    EXPECT_TRUE(parse(command(kind, 1, "x")));
    EXPECT_EQ(settings_.form_source, kFromCommandLine);
    EXPECT_EQ(settings_.spacing_index, kind == 3 ? 4 : 3);
  }
}

TEST_F(FormParameter, FlagIsNeverClearedAgain) {
  the_filter().command_line.capability_g = 1;
  EXPECT_TRUE(parse(command(2, 1, "x")));
  EXPECT_TRUE(parse(command(1, 1, "x")));
  EXPECT_TRUE(parse(command(3, 1, "x")));
  EXPECT_EQ(settings_.form_flag, 1);
}

TEST_F(FormParameter, UpToHundredBytesAreCopied) {
  for (std::uint32_t length = 0; length <= 100; ++length) {
    const std::string given = pattern(length);
    EXPECT_TRUE(parse(command(1, length, given))) << length;
    EXPECT_EQ(data(), given);
    // What stands behind them is not looked at.
    EXPECT_TRUE(parse(command(1, length, given + "more"))) << length;
    EXPECT_EQ(data(), given);
  }
}

TEST_F(FormParameter, LongerDataIsRefusedButItsKindCounts) {
  for (const std::uint32_t length : {101U, 102U, 255U, 256U, 300U, 0x100U, 0x10000U, 0x1000000U,
                                     0x01000064U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    for (const std::string& given : {std::string(), pattern(100), pattern(400)}) {
      settings_ = SettingsRecord{};
      settings_.form_data_length = 7;
      EXPECT_FALSE(parse(command(3, length, given))) << length;
      EXPECT_EQ(settings_.form_source, kFromFormKind3);
      EXPECT_EQ(settings_.spacing_index, 4);
      EXPECT_EQ(settings_.form_data_length, 0);
    }
  }
}

TEST_F(FormParameter, LongerDataOfKind2SetsTheFlag) {
  the_filter().command_line.capability_g = 1;
  EXPECT_FALSE(parse(command(2, 101, "")));
  EXPECT_EQ(settings_.form_flag, 1);
  EXPECT_EQ(settings_.form_source, kFromForm);
}

TEST_F(FormParameter, MissingBytesAreRefusedAndSetNothing) {
  the_filter().command_line.capability_g = 1;
  for (const std::uint32_t length : {0U, 1U, 99U, 100U}) {
    const std::string whole = command(2, length, pattern(length));
    for (std::size_t there = 0; there < whole.size(); ++there) {
      EXPECT_FALSE(parse(whole.substr(0, there))) << there;
      expect_untouched(whole.substr(0, there));
    }
    EXPECT_EQ(settings_.form_flag, 0);
  }
}

TEST_F(FormParameter, MissingLengthBytesOfLongDataSetNothing) {
  const std::string whole = command(3, 101, "");
  for (std::size_t there = 0; there < whole.size(); ++there) {
    EXPECT_FALSE(parse(whole.substr(0, there))) << there;
    expect_untouched(whole.substr(0, there));
  }
}

TEST_F(FormParameter, LeadingZerosAreSkippedBeforeTheSix) {
  for (const char* parameter : {"6;9 ", "06;9 ", "0000000006;9 ", "6;", "6;;;x ", "6;6;"}) {
    settings_ = SettingsRecord{};
    EXPECT_TRUE(parse(command(1, 3, "abc", parameter))) << parameter;
    EXPECT_EQ(data(), "abc");
  }
}

TEST_F(FormParameter, OtherParametersAreRefused) {
  for (const char* parameter : {"", ";", "6", "6 ;", "5;9 ", "7;9 ", "16;9 ", "60;9 ", "66;9 ",
                                " 6;9 ", "0;9 ", "x6;9 ", "6,;9 "}) {
    EXPECT_FALSE(parse(command(1, 3, "abc", parameter))) << parameter;
    expect_untouched(parameter);
  }
}

TEST_F(FormParameter, FirstLetterOEndsTheScan) {
  // The kind is what stands behind the first "o", here another "o".
  EXPECT_FALSE(parse(command(1, 3, "abc", "6;o")));
  expect_untouched("oo");
  EXPECT_TRUE(parse("\x1bQ6;o\1" + big_endian(2) + "o\1"));
  EXPECT_EQ(data(), "o\1");
  EXPECT_FALSE(parse("\x1bQ6;9 x\1" + big_endian(2) + "ab"));
}

}  // namespace
}  // namespace rlx
