#include "input/tokenizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "input/byte_source.h"
#include "job/command_record.h"
#include "job/settings.h"
#include "job/status.h"
#include "output/frame_writer.h"
#include "support/descriptors.h"
#include "support/filter_state.h"
#include "support/input_stream.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using namespace rlx::testing;

/// A whole command and its code.
struct Command {
  std::string bytes;
  std::uint32_t code;
};

/// One command of every kind, each way that a sequence can go on.
const std::vector<Command>& commands_of_every_kind() {
  static const std::vector<Command> commands{
      {bytes("\0"), CMD_CTRL},
      {"\n", CMD_LF},
      {"\f", CMD_FF},
      {"\r", CMD_CR},
      {"\x7f", CMD_DEL},
      {"\x1b$@", CMD_ESC_DOLLAR_AT},
      {"\x1b$A", CMD_IGNORE},
      {"\x1b(H", CMD_ESC_PAREN_H},
      {"\x1b(\xff", CMD_IGNORE},
      {"\x1b"
       "c",
       CMD_ESC_C},
      {bytes("\x1b\x7f\0\x1b\n\xff"), CMD_ESC_DEL4},
      {"\x1bx", CMD_IGNORE},
      {"\x1b%12A", CMD_IGNORE},
      {"\x1b[1;2a", CMD_CSI_AL},
      {"\x1b[ E", CMD_CSI_SP_E},
      {"\x1b[1E", CMD_IGNORE},
      {"\x1c\"12p", CMD_FS_QUOTE},
      {"\x1c$y", CMD_FS_DOLLAR},
      {"\x1c%!\" p", CMD_FS_PERCENT},
      {"\x1c&abcq", CMD_FS_AMP},
      {"\x1c(12p", CMD_FS_PAREN},
      {"\x1c*s", CMD_FS_STAR},
      {"\x1cJ", CMD_FS_J},
      {"\x1cK", CMD_FS_K},
      {"\x1c\x7f", CMD_IGNORE},
      {"\x1c"
       "12A",
       CMD_IGNORE},
      {"\x1bQ12!C", CMD_Q_C_EX},
      {"\x1bQ12 C", CMD_IGNORE},
      {"\x1bQ1\x7f"
       "2!C",
       CMD_Q_C_EX},
      {"\x1bQ1;5!a\x1b\n!a\xff", CMD_Q_AL_EX},
      {"\x1bQ1;5:!a", CMD_IGNORE},
      {"\x1bQ!a", CMD_Q_AL_EX},
      {"\x1bQ1;3!\x7f"
       "abc",
       CMD_Q_DEL_EX},
      {"\x1bQ1!p0123456789abcdef0123456789ABCDEF", CMD_Q_PL_EX},
      {"\x1bQ1 p", CMD_Q_PL_SP},
      {"\x1bQ1;4 n\x1b"
       "abc",
       CMD_Q_NL_SP},
      {"\x1bQ2;4 nabcd", CMD_Q_NL_SP2},
      {"\x1bQ9;1 nz", CMD_Q_NL_SP9},
      {"\x1bQ1;2;3;4;5/~12345", CMD_IGNORE},
      {"\x1bQ1 ~", CMD_Q_TILDE_SP},
      {"\x1bQ6;6 o\x01"
       "abcde",
       CMD_Q_OL_SP},
      {"\x1bQ3;0000000043/`", CMD_Q_BQ_SL},
      {"\x1bQ1#C", CMD_IGNORE},
  };
  return commands;
}

class Tokenizer : public FilterTest {
 protected:
  static void restart(bool framed) {
    reset_filter();
    the_filter().command_line.framed_output = framed ? 1 : 0;
  }

  /// Reads one command, which must be the front of the input, and then the rest.
  static void expect_command(const std::string& input_bytes, std::uint32_t code,
                             std::size_t length) {
    SCOPED_TRACE(encode_escaped_line(input_bytes));
    restart(false);
    const StandardInput input(input_bytes);
    EXPECT_EQ(next_token(), (Token{ST_OK, code, input_bytes.substr(0, length), 0}));
    EXPECT_EQ(rest_of_input(), input_bytes.substr(length));
  }

  /// The same for a command that is the whole input.
  static void expect_whole(const std::string& input_bytes, std::uint32_t code) {
    expect_command(input_bytes + "\x1b", code, input_bytes.size());
  }
};

TEST_F(Tokenizer, AnEmptyInputEndsAtOnceAndStaysEnded) {
  const StandardInput input("");
  EXPECT_EQ(next_token(), kEndOfInput);
  EXPECT_EQ(next_token(), kEndOfInput);
}

TEST_F(Tokenizer, EveryFirstByteThatStartsNoSequenceIsACommand) {
  for (int value = 0; value < 256; ++value) {
    if (value == 0x1b || value == 0x1c) {
      continue;
    }
    std::uint32_t code = value < 0x20 ? CMD_CTRL : CMD_TEXT_RAW;
    code = value == 0x0a ? CMD_LF : value == 0x0c ? CMD_FF : value == 0x0d ? CMD_CR : code;
    code = value == 0x7f ? CMD_DEL : code;
    expect_whole(one(value), code);
  }
}

TEST_F(Tokenizer, EveryByteAfterEsc) {
  for (int value = 0; value < 256; ++value) {
    const std::string start = "\x1b" + one(value);
    switch (value) {
      case '$':
        expect_whole(start + "@", CMD_ESC_DOLLAR_AT);
        break;
      case '(':
        expect_whole(start + "H", CMD_ESC_PAREN_H);
        break;
      case 'Q':
        expect_whole(start + "1!C", CMD_Q_C_EX);
        break;
      case '[':
        expect_whole(start + "1a", CMD_CSI_AL);
        break;
      case 'c':
        expect_whole(start, CMD_ESC_C);
        break;
      case 0x7f:
        expect_whole(start + "1234", CMD_ESC_DEL4);
        break;
      default:
        expect_whole(value >= 0x40 && value <= 0x7e ? start : start + "12A", CMD_IGNORE);
    }
  }
}

TEST_F(Tokenizer, EveryByteAfterEscDollarAndEscParen) {
  for (int value = 0; value < 256; ++value) {
    expect_whole("\x1b$" + one(value), value == '@' ? CMD_ESC_DOLLAR_AT : CMD_IGNORE);
    expect_whole("\x1b(" + one(value), value == 'H' ? CMD_ESC_PAREN_H : CMD_IGNORE);
  }
}

TEST_F(Tokenizer, EscDelTakesFourBytesOfEveryValue) {
  for (int value = 0; value < 256; ++value) {
    expect_whole("\x1b\x7f" + one(value) + one(255 - value) + one(value) + one(value),
                 CMD_ESC_DEL4);
  }
}

TEST_F(Tokenizer, EveryByteEndsOrContinuesAnUnknownEscSequence) {
  for (int value = 0; value < 256; ++value) {
    const bool final = value >= 0x40 && value <= 0x7e;
    expect_whole("\x1b%" + one(value) + (final ? "" : "A"), CMD_IGNORE);
  }
}

TEST_F(Tokenizer, EveryCsiFinal) {
  for (int value = 0x40; value <= 0x7e; ++value) {
    std::uint32_t code = CMD_IGNORE;
    code = value == '`' ? CMD_CSI_BQ : value == 'a' ? CMD_CSI_AL : value == 'd' ? CMD_CSI_DL : code;
    code = value == 'e' ? CMD_CSI_EL : code;
    expect_whole("\x1b[" + one(value), code);
    expect_whole("\x1b[12;3" + one(value), code);
    expect_whole("\x1b[12 " + one(value), value == 'E' ? CMD_CSI_SP_E : code);
    expect_whole("\x1b[ " + one(value), value == 'E' ? CMD_CSI_SP_E : code);
  }
}

TEST_F(Tokenizer, EveryByteBeforeTheCsiFinalE) {
  for (int value = 0; value < 256; ++value) {
    if (value < 0x40 || value > 0x7e) {
      expect_whole("\x1b[1" + one(value) + "E", value == ' ' ? CMD_CSI_SP_E : CMD_IGNORE);
      expect_whole("\x1b[" + one(value) + "1a", CMD_CSI_AL);
    }
  }
  expect_whole("\x1b[ 1E", CMD_IGNORE);
}

TEST_F(Tokenizer, EveryByteAfterFs) {
  for (int value = 0; value < 256; ++value) {
    const std::string start = "\x1c" + one(value);
    switch (value) {
      case '"':
        expect_whole(start + "12p", CMD_FS_QUOTE);
        break;
      case '$':
        expect_whole(start + "12p", CMD_FS_DOLLAR);
        break;
      case '%':
        expect_whole(start + "12p", CMD_FS_PERCENT);
        break;
      case '&':
        expect_whole(start + "12p", CMD_FS_AMP);
        break;
      case '(':
        expect_whole(start + "12p", CMD_FS_PAREN);
        break;
      case '*':
        expect_whole(start + "12p", CMD_FS_STAR);
        break;
      case 'J':
        expect_whole(start, CMD_FS_J);
        break;
      case 'K':
        expect_whole(start, CMD_FS_K);
        break;
      default:
        expect_whole(value >= 0x40 && value <= 0x7f ? start : start + "12A", CMD_IGNORE);
    }
  }
}

TEST_F(Tokenizer, EveryByteEndsOrContinuesAnFsSequence) {
  for (const Command& command : {Command{"\x1c\"", CMD_FS_QUOTE}, Command{"\x1c$", CMD_FS_DOLLAR},
                                 Command{"\x1c%", CMD_FS_PERCENT}, Command{"\x1c&", CMD_FS_AMP},
                                 Command{"\x1c(", CMD_FS_PAREN}, Command{"\x1c*", CMD_FS_STAR}}) {
    for (int value = 0; value < 256; ++value) {
      const bool terminator = value >= 0x70 && value <= 0x79;
      expect_whole(command.bytes + one(value) + (terminator ? "" : "y"), command.code);
    }
  }
}

TEST_F(Tokenizer, EveryByteEndsOrContinuesAnUnknownFsSequence) {
  for (int value = 0; value < 256; ++value) {
    // A DEL ends the sequence only as its second byte.
    const bool final = value >= 0x40 && value <= 0x7e;
    expect_whole("\x1c!" + one(value) + (final ? "" : "A"), CMD_IGNORE);
  }
}

TEST_F(Tokenizer, UnknownEscSequencesEndAtAByteFrom40To7e) {
  expect_whole("\x1bx", CMD_IGNORE);
  expect_whole("\x1b%12A", CMD_IGNORE);
}

TEST_F(Tokenizer, FsParen12pIs328AndFsDelIsIgnored) {
  expect_whole("\x1c(12p", CMD_FS_PAREN);
  expect_whole("\x1c\x7f", CMD_IGNORE);
}

TEST_F(Tokenizer, ADelSecondByteEndsAnUnknownSequenceAfterFsOnly) {
  expect_command(
      "\x1c\x7f"
      "1234A",
      CMD_IGNORE, 2);
  expect_command(
      "\x1b\x7f"
      "1234A",
      CMD_ESC_DEL4, 6);
}

TEST_F(Tokenizer, EndOfInputRightAfterEscQ1) {
  const StandardInput input("\x1bQ1");
  EXPECT_EQ(next_token(), (Token{ST_OK, CMD_IGNORE, "\x1bQ1", 0}));
  EXPECT_EQ(next_token(), kEndOfInput);
}

TEST_F(Tokenizer, EveryKindOfCommandIsReadWhole) {
  for (const Command& command : commands_of_every_kind()) {
    expect_whole(command.bytes, command.code);
  }
}

TEST_F(Tokenizer, CommandsFollowOneAnother) {
  std::string all;
  for (const Command& command : commands_of_every_kind()) {
    all += command.bytes;
  }
  const StandardInput input(all);
  for (const Command& command : commands_of_every_kind()) {
    EXPECT_EQ(next_token(), (Token{ST_OK, command.code, command.bytes, 0}));
  }
  EXPECT_EQ(next_token(), kEndOfInput);
}

TEST_F(Tokenizer, TheEndOfTheInputCutsEverySequenceAtEveryByte) {
  for (const Command& command : commands_of_every_kind()) {
    for (std::size_t cut = 1; cut < command.bytes.size(); ++cut) {
      SCOPED_TRACE(encode_escaped_line(command.bytes.substr(0, cut)));
      restart(false);
      const StandardInput input(command.bytes.substr(0, cut));
      EXPECT_EQ(next_token(), (Token{ST_OK, CMD_IGNORE, command.bytes.substr(0, cut), 0}));
      EXPECT_EQ(next_token(), kEndOfInput);
      EXPECT_EQ(next_token(), kEndOfInput);
    }
  }
}

TEST_F(Tokenizer, TheEndStaysAfterACutSequenceEvenIfMoreBytesCome) {
  const StandardInput input("\x1b");
  EXPECT_EQ(next_token(), (Token{ST_OK, CMD_IGNORE, "\x1b", 0}));
  restart_raw_input();
  const StandardInput more("A");
  EXPECT_EQ(next_token(), kEndOfInput);
  EXPECT_EQ(next_token(), kEndOfInput);
  the_filter().tokenizer.sticky_eof = false;
  EXPECT_EQ(next_token(), (Token{ST_OK, CMD_TEXT_RAW, "A", 0}));
}

TEST_F(Tokenizer, AReadErrorCutsEverySequenceAtEveryByte) {
  const CaptureDescriptor messages(2);
  for (const Command& command : commands_of_every_kind()) {
    for (std::size_t cut = 0; cut < command.bytes.size(); ++cut) {
      SCOPED_TRACE(encode_escaped_line(command.bytes.substr(0, cut)));
      restart(false);
      const FailingInput input(command.bytes.substr(0, cut));
      EXPECT_EQ(next_token(kQuiet), (Token{ST_IOERR, CMD_IGNORE, command.bytes.substr(0, cut), 0}));
    }
  }
  EXPECT_EQ(messages.text(), "");
}

TEST_F(Tokenizer, AReadErrorIsReportedWithoutTheQuietFlag) {
  const FailingInput input("\x1b[");
  const CaptureDescriptor messages(2);
  EXPECT_EQ(next_token().status, 129);
  EXPECT_EQ(messages.text(), "filter: Connection reset by peer\n");
}

TEST_F(Tokenizer, TheEndFrameCutsEverySequenceAtEveryByte) {
  for (const Command& command : commands_of_every_kind()) {
    for (std::size_t cut = 1; cut < command.bytes.size(); ++cut) {
      SCOPED_TRACE(encode_escaped_line(command.bytes.substr(0, cut)));
      restart(true);
      // What stands behind the END frame is never touched.
      const StandardInput input(end_frame(command.bytes.substr(0, cut)) +
                                end_frame(command.bytes.substr(cut)));
      const CaptureDescriptor output(1);
      EXPECT_EQ(next_token(), (Token{ST_CUT, CMD_IGNORE, command.bytes.substr(0, cut), 0}));
      EXPECT_EQ(next_token(), kEndOfInput);
      EXPECT_EQ(output.text(), "");
    }
  }
}

TEST_F(Tokenizer, ASequenceThatEndsWithTheEndFrameIsWhole) {
  for (const Command& command : commands_of_every_kind()) {
    restart(true);
    const StandardInput input(end_frame(command.bytes));
    EXPECT_EQ(next_token(), (Token{ST_OK, command.code, command.bytes, 0}));
    EXPECT_EQ(next_token(), kEndOfInput);
  }
}

TEST_F(Tokenizer, SequencesGoOnAcrossEveryFrameBorder) {
  for (const Command& command : commands_of_every_kind()) {
    for (std::size_t cut = 1; cut < command.bytes.size(); ++cut) {
      for (const bool empty_between : {false, true}) {
        SCOPED_TRACE(encode_escaped_line(command.bytes.substr(0, cut)));
        restart(true);
        const StandardInput input(cnt_frame(command.bytes.substr(0, cut)) +
                                  (empty_between ? cnt_frame("") : "") +
                                  end_frame(command.bytes.substr(cut)));
        const CaptureDescriptor output(1);
        EXPECT_EQ(next_token(), (Token{ST_OK, command.code, command.bytes, 0}));
        EXPECT_EQ(next_token(), kEndOfInput);
        EXPECT_EQ(output.text(), empty_between ? cnt_frame("") : "");
      }
    }
  }
}

TEST_F(Tokenizer, AnEmptyEndFrameInsideASequenceIsACut) {
  // The predicate does not hold when the CNT frame is used up, so the reader meets the END frame,
  // echoes it and finds the end of the input: the next call ends.
  restart(true);
  const StandardInput input(cnt_frame("\x1b[1") + end_frame(""));
  const CaptureDescriptor output(1);
  EXPECT_EQ(next_token(), (Token{ST_OK, CMD_IGNORE, "\x1b[1", 0}));
  EXPECT_EQ(output.text(), end_frame(""));
  EXPECT_EQ(next_token(), kEndOfInput);
}

TEST_F(Tokenizer, AMissingEndFrameInsideASequenceEndsTheProcess) {
  restart(true);
  const StandardInput input(cnt_frame("\x1b[1"));
  const CaptureDescriptor output(1);
  EXPECT_EXIT(next_token(), ::testing::ExitedWithCode(0), "");
  EXPECT_EQ(output.text(), end_frame(""));
}

TEST_F(Tokenizer, SequencesOfEveryKindAcrossTheInputBufferBorder) {
  std::string all;
  for (const Command& command : commands_of_every_kind()) {
    all += command.bytes;
  }
  for (std::size_t before = 0; before <= all.size(); ++before) {
    restart(false);
    const StandardInput input(std::string(kInputBufferBytes - before, 'x') + all);
    std::uint8_t byte = 0;
    for (std::size_t i = before; i < kInputBufferBytes; ++i) {
      ASSERT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
    }
    for (const Command& command : commands_of_every_kind()) {
      ASSERT_EQ(next_token(), (Token{ST_OK, command.code, command.bytes, 0})) << before;
    }
    EXPECT_EQ(next_token(), kEndOfInput);
  }
}

TEST_F(Tokenizer, SequencesThatArriveByteByByte) {
  std::vector<std::string> pieces;
  for (const Command& command : commands_of_every_kind()) {
    for (const char byte : command.bytes) {
      pieces.emplace_back(1, byte);
    }
  }
  const PiecewiseInput input(pieces);
  for (const Command& command : commands_of_every_kind()) {
    EXPECT_EQ(next_token(), (Token{ST_OK, command.code, command.bytes, 0}));
  }
  EXPECT_EQ(next_token(), kEndOfInput);
}

/// A sequence of `total` bytes out of its start, filling and its end.
std::string sequence_of(const std::string& start, const std::string& end, std::size_t total) {
  return start + std::string(total - start.size() - end.size(), '1') + end;
}

/// How a sequence begins and ends that may have any number of bytes between.
struct LongSequence {
  std::string start;
  std::string end;
  std::uint32_t code;
};

TEST_F(Tokenizer, SequencesAroundTheRecordsCapacity) {
  for (const LongSequence& sequence : {
           LongSequence{"\x1b[", "a", CMD_CSI_AL},
           LongSequence{"\x1b[", "`", CMD_CSI_BQ},
           LongSequence{"\x1b[", " E", CMD_CSI_SP_E},
           LongSequence{"\x1b%", "A", CMD_IGNORE},
           LongSequence{"\x1b%", "~", CMD_IGNORE},
           LongSequence{"\x1c%", "p", CMD_FS_PERCENT},
           LongSequence{"\x1c(", "y", CMD_FS_PAREN},
           LongSequence{"\x1c!", "@", CMD_IGNORE},
           LongSequence{"\x1bQ", "!C", CMD_Q_C_EX},
           LongSequence{"\x1bQ", "/`", CMD_Q_BQ_SL},
           LongSequence{"\x1bQ", "!p", CMD_Q_PL_EX},
       }) {
    for (const std::size_t total : {4000UL, 4094UL, 4095UL, 4096UL, 4097UL, 4098UL, 4099UL, 8190UL,
                                    8191UL, 8192UL, 8193UL, 8194UL, 20000UL}) {
      const std::string bytes = sequence_of(sequence.start, sequence.end, total);
      SCOPED_TRACE(encode_escaped_line(sequence.start + sequence.end) + std::to_string(total));
      restart(false);
      const StandardInput input(bytes + "Z");
      Token expected{ST_OK, sequence.code, bytes, 0};
      if (sequence.code == CMD_Q_PL_EX && total <= 4096) {
        // The 32 bytes of data: they do not fit, or the input ends before they do.
        expected.pending = total + 32 > 4096 ? 32 : 0;
        expected.code = total + 32 > 4096 ? CMD_Q_PL_EX : CMD_IGNORE;
        expected.bytes += total + 32 > 4096 ? "" : "Z";
      }
      if (total > 4096) {
        expected.code = CMD_IGNORE;
        expected.bytes = bytes.substr((total - 1) / 4096 * 4096);
      }
      const Token token = next_token();
      EXPECT_EQ(token, expected);
      EXPECT_EQ(rest_of_input(), sequence.code == CMD_Q_PL_EX && total == 4000 ? "" : "Z");
    }
  }
}

TEST_F(Tokenizer, AnOverlongSequenceThatIsCutIsIgnored) {
  for (const std::string& start : {std::string("\x1b["), std::string("\x1b%"), std::string("\x1c%"),
                                   std::string("\x1c!"), std::string("\x1bQ")}) {
    for (const std::size_t total : {4095UL, 4096UL, 4097UL, 4098UL}) {
      const std::string bytes = sequence_of(start, "", total);
      const std::string kept = bytes.substr((total - 1) / 4096 * 4096);
      restart(false);
      {
        const StandardInput input(bytes);
        EXPECT_TRUE(next_token() == (Token{ST_OK, CMD_IGNORE, kept, 0})) << total;
        EXPECT_EQ(next_token(), kEndOfInput);
      }
      restart(true);
      const StandardInput input(end_frame(bytes));
      EXPECT_TRUE(next_token() == (Token{ST_CUT, CMD_IGNORE, kept, 0})) << total;
      EXPECT_EQ(next_token(), kEndOfInput);
    }
  }
}

TEST_F(Tokenizer, TheParsersAppendToTheRecordAndSetItsCode) {
  struct Parser {
    Status (*parse)(rlx::Tokenizer& tokenizer, int flags, CommandRecord* record);
    std::string start;
    std::string input;
    std::uint32_t code;
  };
  for (const Parser& parser :
       {Parser{zqescseq, "\x1b", "c", CMD_ESC_C}, Parser{zqfsseq, "\x1c", "J", CMD_FS_J},
        Parser{zqcsiseq, "\x1b[", "1d", CMD_CSI_DL}}) {
    restart(false);
    const StandardInput input(parser.input);
    CommandRecord& record = reused_record();
    record.code = 0;
    record.pending = 0;
    record.length = static_cast<std::int32_t>(parser.start.size());
    std::copy(parser.start.begin(), parser.start.end(), record.bytes.begin());
    EXPECT_EQ(token_of(parser.parse(the_filter().tokenizer, 0, &record)),
              (Token{ST_OK, parser.code, parser.start + parser.input, 0}));
    record.length = 1;
    EXPECT_EQ(token_of(parser.parse(the_filter().tokenizer, 0, &record)).status, ST_EOF);
  }
}

}  // namespace
}  // namespace rlx
