#include "forms/fcb_name.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "job/settings.h"
#include "support/descriptors.h"
#include "support/record_builder.h"

namespace rlx {
namespace {

using testing::CaptureDescriptor;
using testing::condition_record;
using testing::make_record;

class FcbName : public ::testing::Test {
 protected:
  FcbName() { job_settings.program_name = "filter"; }
  ~FcbName() override { reset_job_settings(); }

  /// The name that the record gives, or the message with which it is refused.
  static std::string name_of(const CommandRecord& record) {
    const CaptureDescriptor error(STDERR_FILENO);
    const char* name = "untouched";
    const int status = fcb_name_from_record(record, name);
    if (status == 0) {
      EXPECT_EQ(error.text(), "");
      return name;
    }
    EXPECT_EQ(status, 1);
    EXPECT_STREQ(name, "untouched");
    return error.text();
  }

  static std::string name_of_bytes(const std::string& bytes) {
    return name_of(make_record(CMD_Q_NL_SP, bytes));
  }

  static std::string name_of_field(const std::string& field) {
    return name_of(condition_record({.layout = "2", .fcb_name = field}));
  }
};

constexpr const char* kDataError = "filter: FCB data error\n";
constexpr const char* kNameError = "filter: FCB name error\n";

TEST_F(FcbName, TwoLettersAndTwoSpacesGiveATwoLetterName) {
  EXPECT_EQ(name_of_field("AB  "), "AB");
}

TEST_F(FcbName, ADashIsANameError) {
  EXPECT_EQ(name_of_field("A-B "), kNameError);
}

TEST_F(FcbName, FourLettersOrDigitsAreTheWholeName) {
  EXPECT_EQ(name_of_field("aZ09"), "aZ09");
}

TEST_F(FcbName, NamesOfEveryLength) {
  EXPECT_EQ(name_of_field("    "), "");
  EXPECT_EQ(name_of_field("A   "), "A");
  EXPECT_EQ(name_of_field("ABC "), "ABC");
}

TEST_F(FcbName, NothingBehindTheFirstBlankIsLookedAt) {
  EXPECT_EQ(name_of_field("A -/"), "A");
  EXPECT_EQ(name_of_field(" ABC"), "");
}

TEST_F(FcbName, EveryOtherByteIsANameErrorInEveryPlace) {
  for (std::size_t place = 0; place < 4; ++place) {
    for (int byte = 0; byte < 256; ++byte) {
      std::string field = "AAAA";
      field[place] = static_cast<char>(byte);
      const bool letter_or_digit = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                                   (byte >= 'a' && byte <= 'z');
      std::string expected = kNameError;
      if (letter_or_digit) {
        expected = field;
      } else if (byte == ' ') {
        expected = std::string(place, 'A');
      }
      EXPECT_EQ(name_of_field(field), expected) << place << " " << byte;
    }
  }
}

// The first data byte stands two bytes behind the blank, the layout digit two bytes behind that:
// with the length 100 (three digits) the layout is byte 11, the name byte 26 (layout 2) or 22.
TEST_F(FcbName, LayoutTwoReadsTheColumnsBehindTheCounts) {
  std::string record = "\x1bQ1;100 n  2" + std::string(97, '.');
  record.replace(26, 4, "FRM2");
  EXPECT_EQ(name_of_bytes(record), "FRM2");
}

TEST_F(FcbName, OtherLayoutsReadTheColumnsOfTheCounts) {
  for (const char layout : {'0', '1', '3', ' ', 'x'}) {
    std::string record = "\x1bQ1;100 n  " + std::string(1, layout) + std::string(97, '.');
    record.replace(22, 4, "FRM1");
    EXPECT_EQ(name_of_bytes(record), "FRM1") << layout;
  }
}

TEST_F(FcbName, ColumnsMoveWithTheDigitsOfTheLength) {
  EXPECT_EQ(name_of_bytes("\x1bQ1;30 n  2              FRM2"), "FRM2");
  EXPECT_EQ(name_of_bytes("\x1bQ1;0030 n  2              FRM2"), "FRM2");
  EXPECT_EQ(name_of_bytes("\x1bQ1;30 n  0          FRM1"), "FRM1");
}

TEST_F(FcbName, LengthWithLotsOfLeadingZeros) {
  const std::string zeros(1000, '0');
  EXPECT_EQ(name_of_bytes("\x1bQ1;" + zeros + "30 n  2              FRM2"), "FRM2");
  EXPECT_EQ(name_of_bytes("\x1bQ1;" + zeros + " n  2              FRM2"), kDataError);
}

TEST_F(FcbName, LengthBehindAnyNumberOfTabs) {
  for (const std::size_t count : {1U, 27U, 28U, 30U, 31U, 32U, 500U}) {
    const std::string tabs(count, '\t');
    EXPECT_EQ(name_of_bytes("\x1bQ12" + tabs + "100;100 n  2              FRM2"), "FRM2") << count;
    EXPECT_EQ(name_of_bytes("\x1bQ12" + tabs + "16;16 n  2              FRM2"), kDataError)
        << count;
  }
}

TEST_F(FcbName, LengthUpToSixteenIsADataError) {
  for (int length = 0; length <= 16; ++length) {
    EXPECT_EQ(name_of_bytes("\x1bQ1;" + std::to_string(length) + " n  2              FRM2"),
              kDataError)
        << length;
  }
  EXPECT_EQ(name_of_bytes("\x1bQ1;17 n  2              FRM2"), "FRM2");
}

TEST_F(FcbName, BlankInPlaceOfTheLengthIsADataError) {
  EXPECT_EQ(name_of_bytes("\x1bQ1; n  2              FRM2"), kDataError);
}

TEST_F(FcbName, LengthThatIsNoNumberIsADataError) {
  EXPECT_EQ(name_of_bytes("\x1bQ10;30 n  2              FRM2"), kDataError);
}

TEST_F(FcbName, RecordThatEndsBeforeTheLengthIsADataError) {
  EXPECT_EQ(name_of_bytes("\x1bQ1;"), kDataError);
  EXPECT_EQ(name_of_bytes(""), kDataError);
}

TEST_F(FcbName, RecordThatEndsInsideTheNameIsCutThere) {
  const std::string whole = "\x1bQ1;30 n  2              FRM2";
  const std::string name = "FRM2";
  for (std::size_t missing = 0; missing <= 4; ++missing) {
    EXPECT_EQ(name_of_bytes(whole.substr(0, whole.size() - missing)), name.substr(0, 4 - missing));
  }
}

TEST_F(FcbName, RecordThatEndsBeforeTheNameGivesTheEmptyName) {
  const std::string whole = "\x1bQ1;30 n  2";
  for (std::size_t length = 6; length <= whole.size(); ++length) {
    EXPECT_EQ(name_of_bytes(whole.substr(0, length)), "") << length;
  }
}

TEST_F(FcbName, DataThatIsStillInTheInputGivesTheEmptyName) {
  CommandRecord record = make_record(CMD_Q_NL_SP, "\x1bQ1;5000 n");
  record.pending = 5000;
  EXPECT_EQ(name_of(record), "");
}

TEST_F(FcbName, NextCallOverwritesTheBuffer) {
  const char* first = nullptr;
  const char* second = nullptr;
  ASSERT_EQ(fcb_name_from_record(condition_record({.layout = "2", .fcb_name = "ABCD"}), first), 0);
  ASSERT_EQ(fcb_name_from_record(condition_record({.layout = "2", .fcb_name = "X"}), second), 0);
  EXPECT_EQ(first, second);
  EXPECT_STREQ(first, "X");
}

TEST(RecordShapeTest, LayoutIsFourBytesBehindTheBlank) {
  const RecordShape shape = record_shape(make_record(CMD_Q_NL_SP, "\x1bQ1;100 n  2"));
  EXPECT_TRUE(shape.has_length);
  EXPECT_EQ(shape.data_length, 100);
  EXPECT_EQ(shape.layout, 11U);
}

TEST(RecordShapeTest, FullRecordWithoutABlankEndsAtItsEnd) {
  const RecordShape shape = record_shape(make_record(CMD_Q_NL_SP, std::string(4096, '0')));
  EXPECT_TRUE(shape.has_length);
  EXPECT_EQ(shape.data_length, 0);
  EXPECT_EQ(shape.layout, 4100U);
}

TEST(RecordShapeTest, NumberEndsAtTheFirstByteThatIsNoDigit) {
  const RecordShape shape = record_shape(make_record(CMD_Q_NL_SP, "\x1bQab99;12 n"));
  EXPECT_EQ(shape.data_length, 99);
  EXPECT_EQ(shape.layout, 13U);
}

}  // namespace
}  // namespace rlx
