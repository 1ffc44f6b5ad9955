#include "output/text_out.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "output/carried_settings.h"
#include "support/filter_state.h"
#include "support/printer_blocks.h"
#include "support/record_builder.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

constexpr int kSingle = CharacterSetState::kSingleByte;
constexpr int kDouble = CharacterSetState::kDoubleByte;

const std::string kSingleSize = "\x1bQ1 y";
const std::string kDoubleSize = "\x1bQ2 y";
const std::string kSingleSet = "\x1b(H";
const std::string kDoubleSet = "\x1b$@";

const std::string kCharacter = "\xe6\x96\x87";

std::string kept() {
  return output_of([] { out_kept_settings(the_filter().carried); });
}

class TextOut : public FilterTest {
 protected:
  /// What a record becomes.
  std::string convert(std::uint32_t code, std::string_view text) {
    out_->length = 4711;
    text_out(the_filter().carried, make_record(code, text), *out_, state_);
    return {out_->bytes.begin(), out_->bytes.begin() + out_->length};
  }

  CharacterSetState state_;
  std::unique_ptr<OutputBuffer> out_ = std::make_unique<OutputBuffer>();
};

/// One conversion: from a set, to a set, with the sequences that it keeps (as they stand in the
/// carried settings: the set before the size).
struct Row {
  std::uint32_t code;
  int from;
  std::string text;
  std::string output;
  int to;
  std::string kept;
};

TEST_F(TextOut, EachCodeInBothStates) {
  const std::string to_single = kSingleSize + kSingleSet;
  const std::string to_double = kDoubleSize + kDoubleSet;
  const std::string single_kept = block('6', kSingleSet + kSingleSize);
  const std::string double_kept = block('6', kDoubleSet + kDoubleSize);
  const std::string nul = bytes("\0");
  const std::string ss2 = "\x8e" + kCharacter;
  const std::array rows{
      Row{512, kSingle, "A", "A", kSingle, ""},
      Row{512, kDouble, "A", to_single + "A", kSingle, single_kept},
      Row{768, kSingle, kCharacter, to_double + kCharacter, kDouble, double_kept},
      Row{768, kDouble, kCharacter, kCharacter, kDouble, ""},
      Row{1024, kSingle, ss2, kCharacter, kSingle, ""},
      Row{1024, kDouble, ss2, to_single + kCharacter, kSingle, single_kept},
      Row{3840, kSingle, "\xff", "\xff", kSingle, ""},
      Row{3840, kDouble, "\xff", kSingleSet + "\xff", kSingle, block('6', kSingleSet)},
      Row{264, kSingle, "A", nul, kSingle, ""},
      Row{264, kDouble, "A", nul, kDouble, ""},
      Row{265, kSingle, "A", nul, kSingle, ""},
      Row{265, kDouble, "A", nul, kDouble, ""},
  };
  for (const Row& row : rows) {
    state_.set = row.from;
    EXPECT_EQ(convert(row.code, row.text), row.output) << row.code << " in " << row.from;
    EXPECT_EQ(state_.set, row.to) << row.code << " in " << row.from;
    EXPECT_EQ(kept(), row.kept) << row.code << " in " << row.from;
  }
}

TEST_F(TextOut, SingleBytesInTheSingleByteSetGetNoSwitch) {
  EXPECT_EQ(convert(512, "A"), "A");
  EXPECT_EQ(convert(512, "B"), "B");
  EXPECT_EQ(kept(), "");
}

TEST_F(TextOut, MultiByteCharacterThenSingleByte) {
  EXPECT_EQ(convert(768, kCharacter), "\x1bQ2 y\x1b$@\xe6\x96\x87");
  EXPECT_EQ(convert(512, "A"), "\x1bQ1 y\x1b(HA");
  EXPECT_EQ(kept(), block('6', "\x1b(H\x1bQ1 y"));
}

TEST_F(TextOut, PrefixedCharacterInTheDoubleByteSetLosesItsPrefix) {
  convert(768, kCharacter);
  EXPECT_EQ(convert(1024, "\x8e\xe6\x96\x87"), "\x1bQ1 y\x1b(H\xe6\x96\x87");
}

TEST_F(TextOut, InvalidByteInTheDoubleByteSetSendsTheSetAlone) {
  convert(768, kCharacter);
  EXPECT_EQ(convert(3840, "\xff"), "\x1b(H\xff");
  EXPECT_EQ(convert(768, kCharacter), "\x1bQ2 y\x1b$@\xe6\x96\x87");
}

TEST_F(TextOut, InvalidByteKeepsTheSizeOfTheDoubleByteSet) {
  convert(768, kCharacter);
  convert(3840, "\xff");
  EXPECT_EQ(kept(), block('6', kSingleSet + kDoubleSize));
}

TEST_F(TextOut, PrefixWithoutACharacterAddsNothing) {
  EXPECT_EQ(convert(1024, "\x8e"), "");
  state_.select_double_byte();
  EXPECT_EQ(convert(1024, "\x8e"), "\x1bQ1 y\x1b(H");
  EXPECT_EQ(state_.set, kSingle);
}

TEST_F(TextOut, EmptyRecordsAddNothing) {
  for (const std::uint32_t code : {512U, 768U, 1024U, 3840U}) {
    state_.set = code == CMD_TEXT_MB ? kDouble : kSingle;
    EXPECT_EQ(convert(code, ""), "") << code;
  }
}

TEST_F(TextOut, AnyOtherCodeIsOneNulByte) {
  for (std::uint32_t code = 0; code <= 4000; ++code) {
    if (code != CMD_TEXT_ASCII && code != CMD_TEXT_MB && code != CMD_TEXT_SS2 &&
        code != CMD_TEXT_BAD) {
      ASSERT_EQ(convert(code, "ABC"), bytes("\0")) << code;
      ASSERT_EQ(state_.set, kSingle);
    }
  }
  EXPECT_EQ(kept(), "");
}

TEST_F(TextOut, BytesAreNeverTranslated) {
  for (int value = 0; value < 256; ++value) {
    const std::string byte(1, static_cast<char>(value));
    state_.select_single_byte();
    EXPECT_EQ(convert(512, byte), byte);
    EXPECT_EQ(convert(3840, byte), byte);
    EXPECT_EQ(convert(1024, "\x8e" + byte), byte);
    state_.select_double_byte();
    EXPECT_EQ(convert(768, byte + byte), byte + byte);
  }
}

TEST_F(TextOut, FirstByteOfAPrefixedCharacterIsDroppedWhateverItIs) {
  EXPECT_EQ(convert(1024, "xyz"), "yz");
}

TEST_F(TextOut, LongestRecordsFitWithTheirSwitch) {
  const std::string text(kRecordCapacity, 'x');
  state_.select_double_byte();
  EXPECT_EQ(convert(512, text), kSingleSize + kSingleSet + text);
  EXPECT_EQ(convert(768, text), kDoubleSize + kDoubleSet + text);
  EXPECT_EQ(convert(1024, text), kSingleSize + kSingleSet + text.substr(1));
  state_.select_double_byte();
  EXPECT_EQ(convert(3840, text), kSingleSet + text);
}

TEST_F(TextOut, SwitchesReplaceEachOtherInTheCarriedSettings) {
  convert(768, kCharacter);
  EXPECT_EQ(kept(), block('6', kDoubleSet + kDoubleSize));
  convert(512, "A");
  convert(768, kCharacter);
  convert(512, "A");
  convert(768, kCharacter);
  EXPECT_EQ(kept(), block('6', kDoubleSet + kDoubleSize));
}

TEST_F(TextOut, SwitchBackEndsTheDownloadSet) {
  for (const std::uint32_t code : {512U, 1024U, 3840U}) {
    state_.select_download();
    convert(code, "A");
    EXPECT_EQ(state_.set, kSingle) << code;
    EXPECT_EQ(state_.designation, 0) << code;
  }
}

TEST_F(TextOut, MultiByteCharacterInTheDownloadSetGetsNoSwitch) {
  state_.select_download();
  EXPECT_EQ(convert(768, kCharacter), kCharacter);
  EXPECT_EQ(state_.set, kDouble);
  EXPECT_EQ(state_.designation, CharacterSetState::kDownloadDesignation);
  EXPECT_EQ(kept(), "");
}

}  // namespace
}  // namespace rlx::testing
