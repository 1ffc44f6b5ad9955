#include "output/text_out.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "job/command_record.h"
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
      Row{CMD_TEXT_ASCII, kSingle, "A", "A", kSingle, ""},
      Row{CMD_TEXT_ASCII, kDouble, "A", to_single + "A", kSingle, single_kept},
      Row{CMD_TEXT_MB, kSingle, kCharacter, to_double + kCharacter, kDouble, double_kept},
      Row{CMD_TEXT_MB, kDouble, kCharacter, kCharacter, kDouble, ""},
      Row{CMD_TEXT_SS2, kSingle, ss2, kCharacter, kSingle, ""},
      Row{CMD_TEXT_SS2, kDouble, ss2, to_single + kCharacter, kSingle, single_kept},
      Row{CMD_TEXT_BAD, kSingle, "\xff", "\xff", kSingle, ""},
      Row{CMD_TEXT_BAD, kDouble, "\xff", kSingleSet + "\xff", kSingle, block('6', kSingleSet)},
      Row{CMD_SO, kSingle, "A", nul, kSingle, ""},
      Row{CMD_SO, kDouble, "A", nul, kDouble, ""},
      Row{CMD_SI, kSingle, "A", nul, kSingle, ""},
      Row{CMD_SI, kDouble, "A", nul, kDouble, ""},
  };
  for (const Row& row : rows) {
    state_.set = row.from;
    EXPECT_EQ(convert(row.code, row.text), row.output) << row.code << " in " << row.from;
    EXPECT_EQ(state_.set, row.to) << row.code << " in " << row.from;
    EXPECT_EQ(kept(), row.kept) << row.code << " in " << row.from;
  }
}

TEST_F(TextOut, SingleBytesInTheSingleByteSetGetNoSwitch) {
  EXPECT_EQ(convert(CMD_TEXT_ASCII, "A"), "A");
  EXPECT_EQ(convert(CMD_TEXT_ASCII, "B"), "B");
  EXPECT_EQ(kept(), "");
}

TEST_F(TextOut, MultiByteCharacterThenSingleByte) {
  EXPECT_EQ(convert(CMD_TEXT_MB, kCharacter), "\x1bQ2 y\x1b$@\xe6\x96\x87");
  EXPECT_EQ(convert(CMD_TEXT_ASCII, "A"), "\x1bQ1 y\x1b(HA");
  EXPECT_EQ(kept(), block('6', "\x1b(H\x1bQ1 y"));
}

TEST_F(TextOut, PrefixedCharacterInTheDoubleByteSetLosesItsPrefix) {
  convert(CMD_TEXT_MB, kCharacter);
  EXPECT_EQ(convert(CMD_TEXT_SS2, "\x8e\xe6\x96\x87"), "\x1bQ1 y\x1b(H\xe6\x96\x87");
}

TEST_F(TextOut, InvalidByteInTheDoubleByteSetSendsTheSetAlone) {
  convert(CMD_TEXT_MB, kCharacter);
  EXPECT_EQ(convert(CMD_TEXT_BAD, "\xff"), "\x1b(H\xff");
  EXPECT_EQ(convert(CMD_TEXT_MB, kCharacter), "\x1bQ2 y\x1b$@\xe6\x96\x87");
}

TEST_F(TextOut, InvalidByteKeepsTheSizeOfTheDoubleByteSet) {
  convert(CMD_TEXT_MB, kCharacter);
  convert(CMD_TEXT_BAD, "\xff");
  EXPECT_EQ(kept(), block('6', kSingleSet + kDoubleSize));
}

TEST_F(TextOut, PrefixWithoutACharacterAddsNothing) {
  EXPECT_EQ(convert(CMD_TEXT_SS2, "\x8e"), "");
  state_.select_double_byte();
  EXPECT_EQ(convert(CMD_TEXT_SS2, "\x8e"), "\x1bQ1 y\x1b(H");
  EXPECT_EQ(state_.set, kSingle);
}

TEST_F(TextOut, EmptyRecordsAddNothing) {
  for (const std::uint32_t code : {CMD_TEXT_ASCII, CMD_TEXT_MB, CMD_TEXT_SS2, CMD_TEXT_BAD}) {
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
    EXPECT_EQ(convert(CMD_TEXT_ASCII, byte), byte);
    EXPECT_EQ(convert(CMD_TEXT_BAD, byte), byte);
    EXPECT_EQ(convert(CMD_TEXT_SS2, "\x8e" + byte), byte);
    state_.select_double_byte();
    EXPECT_EQ(convert(CMD_TEXT_MB, byte + byte), byte + byte);
  }
}

TEST_F(TextOut, FirstByteOfAPrefixedCharacterIsDroppedWhateverItIs) {
  EXPECT_EQ(convert(CMD_TEXT_SS2, "xyz"), "yz");
}

TEST_F(TextOut, LongestRecordsFitWithTheirSwitch) {
  const std::string text(kRecordCapacity, 'x');
  state_.select_double_byte();
  EXPECT_EQ(convert(CMD_TEXT_ASCII, text), kSingleSize + kSingleSet + text);
  EXPECT_EQ(convert(CMD_TEXT_MB, text), kDoubleSize + kDoubleSet + text);
  EXPECT_EQ(convert(CMD_TEXT_SS2, text), kSingleSize + kSingleSet + text.substr(1));
  state_.select_double_byte();
  EXPECT_EQ(convert(CMD_TEXT_BAD, text), kSingleSet + text);
}

TEST_F(TextOut, SwitchesReplaceEachOtherInTheCarriedSettings) {
  convert(CMD_TEXT_MB, kCharacter);
  EXPECT_EQ(kept(), block('6', kDoubleSet + kDoubleSize));
  convert(CMD_TEXT_ASCII, "A");
  convert(CMD_TEXT_MB, kCharacter);
  convert(CMD_TEXT_ASCII, "A");
  convert(CMD_TEXT_MB, kCharacter);
  EXPECT_EQ(kept(), block('6', kDoubleSet + kDoubleSize));
}

TEST_F(TextOut, SwitchBackEndsTheDownloadSet) {
  for (const std::uint32_t code : {CMD_TEXT_ASCII, CMD_TEXT_SS2, CMD_TEXT_BAD}) {
    state_.select_download();
    convert(code, "A");
    EXPECT_EQ(state_.set, kSingle) << code;
    EXPECT_EQ(state_.designation, 0) << code;
  }
}

TEST_F(TextOut, MultiByteCharacterInTheDownloadSetGetsNoSwitch) {
  state_.select_download();
  EXPECT_EQ(convert(CMD_TEXT_MB, kCharacter), kCharacter);
  EXPECT_EQ(state_.set, kDouble);
  EXPECT_EQ(state_.designation, CharacterSetState::kDownloadDesignation);
  EXPECT_EQ(kept(), "");
}

}  // namespace
}  // namespace rlx::testing
