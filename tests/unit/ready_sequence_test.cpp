#include "input/ready_sequence.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "input/raw_input.h"
#include "input/tokenizer.h"
#include "job/command_record.h"
#include "job/status.h"
#include "support/filter_state.h"
#include "support/guarded_bytes.h"
#include "support/input_stream.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

constexpr std::size_t kLongestParameters = 70;

bool one_of(int value, std::string_view bytes) {
  return value != 0 && bytes.find(static_cast<char>(value)) != std::string_view::npos;
}

/// True for a final byte and the separator before it that make an ESC "Q" command without data.
bool is_dataless_q_command(int separator, int final) {
  switch (separator) {
    case ' ':
      return one_of(final, "xy");
    case '!':
      return one_of(final, "@ACDFHIRWXY\\]bcfjklmqsuvxyz");
    case '/':
      return one_of(final, "EFGHIUVWX`b|}");
    default:
      return false;
  }
}

class ReadySequences : public FilterTest {
 protected:
  /// What zqtoken reads from the same bytes, with something behind them.
  Status read_token(const std::string& text) {
    job_ = text + std::string(400, 'n');
    restart_raw_input();
    the_filter().tokenizer.sticky_eof = false;
    the_filter().source.raw.window.next = reinterpret_cast<const std::uint8_t*>(job_.data());
    the_filter().source.raw.window.end = the_filter().source.raw.window.next + job_.size();
    return zqtoken(the_filter().tokenizer, 0, &record_);
  }

  /// Expects none, or exactly what zqtoken reads. @return true when one was found.
  bool found_as_token(const std::string& text) {
    bool found = found_at(text, 0);
    // Wherever it stands in its block, it is found if it ends there.
    for (const std::size_t at : {1UL, 40UL, 62UL, 63UL}) {
      EXPECT_EQ(found_at(text, at), found && at + text_length_ <= kBlockBytes) << at;
    }
    return found;
  }

  /// The same with bytes in front of it.
  bool found_at(const std::string& text, std::size_t at) {
    std::string ready = std::string(at, 'p') + text;
    ready.resize(2 * kBlockBytes, 'n');
    const std::uint8_t* const block = guarded_.at_end(ready);
    const SequenceEnds ends{ByteBlock(block)};
    const ReadySequence sequence = ready_sequence(block, ends, at, kBlockBytes);
    if (sequence.code == CMD_IGNORE) {
      return false;
    }
    EXPECT_EQ(read_token(text), ST_OK);
    EXPECT_EQ(sequence.code, record_.code);
    text_length_ = sequence.last - at + 1;
    EXPECT_EQ(static_cast<std::int32_t>(text_length_), record_.length);
    EXPECT_EQ(record_.pending, 0U);
    EXPECT_NE(record_.code, std::uint32_t{CMD_IGNORE});
    // Not when it has to end before its last byte.
    EXPECT_EQ(ready_sequence(block, ends, at, sequence.last).code, std::uint32_t{CMD_IGNORE});
    EXPECT_EQ(ready_sequence(block, ends, at, sequence.last + 1).code, sequence.code);
    return true;
  }

  /// A whole sequence of a common kind is found, if it is not too long.
  void expect_found(const std::string& text) {
    ASSERT_EQ(found_as_token(text), text.size() <= kBlockBytes) << text.size();
    ASSERT_EQ(read_token(text), ST_OK);
    ASSERT_EQ(static_cast<std::size_t>(record_.length), text.size());
    ASSERT_NE(record_.code, std::uint32_t{CMD_IGNORE});
  }

  std::string job_;
  /// Of the sequence that was found last.
  std::size_t text_length_ = 0;
  CommandRecord record_;
  GuardedBytes guarded_;
};

TEST_F(ReadySequences, EveryBehindEsc) {
  for (int second = 0; second < 256; ++second) {
    for (int third = 0; third < 256; ++third) {
      SCOPED_TRACE(::testing::Message() << second << ' ' << third);
      const bool set = (second == '$' && third == '@') || (second == '(' && third == 'H');
      // 'n' stands behind: a final byte that makes no command.
      const bool found = found_as_token("\x1b" + one(second) + one(third));
      const bool csi = second == '[' && one_of(third, "`ade");
      ASSERT_EQ(found, set || csi || second == 'c');
    }
  }
}

TEST_F(ReadySequences, EveryBehindFs) {
  for (int second = 0; second < 256; ++second) {
    for (int third = 0; third < 256; ++third) {
      SCOPED_TRACE(::testing::Message() << second << ' ' << third);
      const bool whole = one_of(second, "JK");
      const bool ended = one_of(second, "\"$%&(*") && third >= 'p' && third <= 'y';
      ASSERT_EQ(found_as_token("\x1c" + one(second) + one(third)), whole || ended);
    }
  }
}

TEST_F(ReadySequences, FsParametersOfAllLengths) {
  for (const char second : std::string_view("\"$%&(*")) {
    for (const char filler : {'1', ';', 'o', 'z', '\x7f', '\xff', '\0', '\f', '\x1b'}) {
      for (std::size_t length = 0; length <= kLongestParameters; ++length) {
        for (char last = 'p'; last <= 'y'; ++last) {
          const std::string parameters(length, filler);
          ASSERT_NO_FATAL_FAILURE(expect_found("\x1c" + one(second) + parameters + last));
        }
      }
    }
  }
}

TEST_F(ReadySequences, CsiFinalsWithParametersOfAllLengths) {
  for (const char filler : {'1', ';', ' ', '\x3f', '\x7f', '\xff', '\0', '\f', '\x1b'}) {
    for (std::size_t length = 0; length <= kLongestParameters; ++length) {
      for (int final = 0x40; final <= 0x7e; ++final) {
        SCOPED_TRACE(::testing::Message() << length << ' ' << final);
        const std::string text = "\x1b[" + std::string(length, filler) + one(final);
        if (one_of(final, "`ade") || (final == 'E' && length > 0 && filler == ' ')) {
          ASSERT_NO_FATAL_FAILURE(expect_found(text));
        } else {
          found_as_token(text);
        }
      }
    }
  }
}

TEST_F(ReadySequences, EveryFinalAndSeparatorOfEscQ) {
  for (int separator = 0; separator < 256; ++separator) {
    for (int final = 0; final < 256; ++final) {
      SCOPED_TRACE(::testing::Message() << separator << ' ' << final);
      const std::string text = "\x1bQ1" + one(separator) + one(final);
      if (is_dataless_q_command(separator, final)) {
        ASSERT_NO_FATAL_FAILURE(expect_found(text));
      } else {
        // The sequence may have ended with the separator or may go on; it makes no command then.
        ASSERT_FALSE(found_as_token(text));
      }
    }
  }
}

TEST_F(ReadySequences, EscQWithParametersOfAllLengths) {
  for (const char filler : {'1', ';', ' ', '!', '\xff', '\0', '\f'}) {
    for (std::size_t length = 0; length <= kLongestParameters; ++length) {
      for (const char separator : {' ', '!', '/', '#', '\x7f'}) {
        for (int final = 0x40; final <= 0x7f; ++final) {
          SCOPED_TRACE(::testing::Message() << length << ' ' << separator << ' ' << final);
          const std::string text = "\x1bQ" + std::string(length, filler) + separator + one(final);
          if (is_dataless_q_command(separator, final)) {
            ASSERT_NO_FATAL_FAILURE(expect_found(text));
          } else {
            found_as_token(text);
          }
        }
      }
    }
  }
}

TEST_F(ReadySequences, ADelAmongEscQParametersIsForTheOtherRoad) {
  for (std::size_t length = 0; length <= kLongestParameters; ++length) {
    const std::string digits(length, '1');
    EXPECT_FALSE(found_as_token("\x1bQ" + digits + "\x7f" + "2!f"));
    EXPECT_FALSE(found_as_token("\x1bQ" + digits + "!\x7f"));
  }
}

TEST_F(ReadySequences, SequencesWithDataAreForTheOtherRoad) {
  for (const std::string text :
       {"\x1bQ1;5!a12345", "\x1bQ1!a", "\x1bQ1 p", "\x1bQ1!p", "\x1bQ1 ~", "\x1bQ1;1;1;1;3/~abc",
        "\x1bQ1;5 n12345", "\x1bQ1!n", "\x1bQ1;5 o12345", "\x1bQ1;5!\x7f\x31\x32\x33\x34\x35",
        "\x1b\x7f\x01\x02\x03\x04"}) {
    EXPECT_FALSE(found_as_token(text)) << text;
  }
}

}  // namespace
}  // namespace rlx::testing
