#include "forms/fcb_name.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

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
using testing::make_record;

class FcbNameTest : public ::testing::Test {
 protected:
  FcbNameTest() { the_filter().messages.program_name = "filter"; }
  ~FcbNameTest() override { restart_settings(); }

  /// The name that the record gives, or the message with which it is refused.
  static std::string name_of(const CommandRecord& record) {
    const CaptureDescriptor error(STDERR_FILENO);
    FcbName name{"****"};
    const Status status = fcb_name_from_command(the_filter().messages, record, name);
    if (status == 0) {
      EXPECT_EQ(error.text(), "");
      return name.data();
    }
    EXPECT_EQ(status, 1);
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

TEST_F(FcbNameTest, TwoLettersAndTwoSpacesGiveATwoLetterName) {
  EXPECT_EQ(name_of_field("AB  "), "AB");
}

TEST_F(FcbNameTest, ADashIsANameError) {
  EXPECT_EQ(name_of_field("A-B "), kNameError);
}

TEST_F(FcbNameTest, FourLettersOrDigitsAreTheWholeName) {
  EXPECT_EQ(name_of_field("aZ09"), "aZ09");
}

TEST_F(FcbNameTest, NamesOfEveryLength) {
  EXPECT_EQ(name_of_field("    "), "");
  EXPECT_EQ(name_of_field("A   "), "A");
  EXPECT_EQ(name_of_field("ABC "), "ABC");
}

TEST_F(FcbNameTest, NothingBehindTheFirstBlankIsLookedAt) {
  EXPECT_EQ(name_of_field("A -/"), "A");
  EXPECT_EQ(name_of_field(" ABC"), "");
}

TEST_F(FcbNameTest, EveryOtherByteIsANameErrorInEveryPlace) {
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
TEST_F(FcbNameTest, LayoutTwoReadsTheColumnsBehindTheCounts) {
  std::string record = "\x1bQ1;100 n  2" + std::string(97, '.');
  record.replace(26, 4, "FRM2");
  EXPECT_EQ(name_of_bytes(record), "FRM2");
}

TEST_F(FcbNameTest, OtherLayoutsReadTheColumnsOfTheCounts) {
  for (const char layout : {'0', '1', '3', ' ', 'x'}) {
    std::string record = "\x1bQ1;100 n  " + std::string(1, layout) + std::string(97, '.');
    record.replace(22, 4, "FRM1");
    EXPECT_EQ(name_of_bytes(record), "FRM1") << layout;
  }
}

TEST_F(FcbNameTest, ColumnsMoveWithTheDigitsOfTheLength) {
  EXPECT_EQ(name_of_bytes("\x1bQ1;30 n  2              FRM2"), "FRM2");
  EXPECT_EQ(name_of_bytes("\x1bQ1;0030 n  2              FRM2"), "FRM2");
  EXPECT_EQ(name_of_bytes("\x1bQ1;30 n  0          FRM1"), "FRM1");
}

TEST_F(FcbNameTest, LengthWithLotsOfLeadingZeros) {
  const std::string zeros(1000, '0');
  EXPECT_EQ(name_of_bytes("\x1bQ1;" + zeros + "30 n  2              FRM2"), "FRM2");
  EXPECT_EQ(name_of_bytes("\x1bQ1;" + zeros + " n  2              FRM2"), kDataError);
}

TEST_F(FcbNameTest, LengthBehindAnyNumberOfTabs) {
  for (const std::size_t count : {1U, 27U, 28U, 30U, 31U, 32U, 500U}) {
    const std::string tabs(count, '\t');
    EXPECT_EQ(name_of_bytes("\x1bQ12" + tabs + "100;100 n  2              FRM2"), "FRM2") << count;
    EXPECT_EQ(name_of_bytes("\x1bQ12" + tabs + "16;16 n  2              FRM2"), kDataError)
        << count;
  }
}

TEST_F(FcbNameTest, LengthUpToSixteenIsADataError) {
  for (int length = 0; length <= 16; ++length) {
    EXPECT_EQ(name_of_bytes("\x1bQ1;" + std::to_string(length) + " n  2              FRM2"),
              kDataError)
        << length;
  }
  EXPECT_EQ(name_of_bytes("\x1bQ1;17 n  2              FRM2"), "FRM2");
}

TEST_F(FcbNameTest, BlankInPlaceOfTheLengthIsADataError) {
  EXPECT_EQ(name_of_bytes("\x1bQ1; n  2              FRM2"), kDataError);
}

TEST_F(FcbNameTest, LengthThatIsNoNumberIsADataError) {
  EXPECT_EQ(name_of_bytes("\x1bQ10;30 n  2              FRM2"), kDataError);
}

TEST_F(FcbNameTest, RecordThatEndsBeforeTheLengthIsADataError) {
  EXPECT_EQ(name_of_bytes("\x1bQ1;"), kDataError);
  EXPECT_EQ(name_of_bytes(""), kDataError);
}

TEST_F(FcbNameTest, RecordThatEndsInsideTheNameIsCutThere) {
  const std::string whole = "\x1bQ1;30 n  2              FRM2";
  const std::string name = "FRM2";
  for (std::size_t missing = 0; missing <= 4; ++missing) {
    EXPECT_EQ(name_of_bytes(whole.substr(0, whole.size() - missing)), name.substr(0, 4 - missing));
  }
}

TEST_F(FcbNameTest, RecordThatEndsBeforeTheNameGivesTheEmptyName) {
  const std::string whole = "\x1bQ1;30 n  2";
  for (std::size_t length = 6; length <= whole.size(); ++length) {
    EXPECT_EQ(name_of_bytes(whole.substr(0, length)), "") << length;
  }
}

TEST_F(FcbNameTest, DataThatIsStillInTheInputGivesTheEmptyName) {
  CommandRecord record = make_record(CMD_Q_NL_SP, "\x1bQ1;5000 n");
  record.pending = 5000;
  EXPECT_EQ(name_of(record), "");
}

}  // namespace
}  // namespace rlx
