#include "driver/fast_road/character_masks.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "input/classifier.h"
#include "input/raw_input.h"
#include "input/tokenizer.h"
#include "job/settings.h"
#include "job/status.h"
#include "support/filter_state.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

class CharacterMasksOfBytes : public FilterTest {
 protected:
  /// Reads the command that begins with a byte, text standing behind it.
  CommandRecord& read(std::size_t byte) {
    reset_filter();
    job_ = std::string(1, static_cast<char>(byte)) + "AAAAAAAA";
    the_filter().source.raw.window.next = reinterpret_cast<const std::uint8_t*>(job_.data());
    the_filter().source.raw.window.end = the_filter().source.raw.window.next + job_.size();
    EXPECT_EQ(zqclass(the_filter().classifier, &the_filter().loop.record), ST_OK);
    return the_filter().loop.record;
  }

  std::string job_;
};

TEST_F(CharacterMasksOfBytes, AreThoseOfTheCommandThatTheByteBegins) {
  for (std::size_t byte = 0; byte < 256; ++byte) {
    const CharacterMasks masks = kCharacterMasks[byte];
    const CommandRecord& record = read(byte);
    const bool no_text = byte == 0x0c || byte == 0x1b || byte == 0x1c;
    // Of the prefix 0x8e the byte alone counts.
    const int length = no_text ? 0 : byte == 0x8e ? 1 : record.length;
    EXPECT_EQ(masks.length, length) << byte;
    EXPECT_EQ(masks.double_byte, record.code == CMD_TEXT_MB ? (1 << length) - 1 : 0) << byte;
    const bool control = record.code == CMD_CTRL || record.code == CMD_DEL ||
                         record.code == CMD_LF || record.code == CMD_CR;
    EXPECT_EQ(masks.neutral, control ? 1 : 0) << byte;
    EXPECT_EQ(masks.invalid, record.code == CMD_TEXT_BAD ? 1 : 0) << byte;
  }
}

}  // namespace
}  // namespace rlx::testing
