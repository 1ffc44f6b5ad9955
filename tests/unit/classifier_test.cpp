#include "input/classifier.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "input/byte_source.h"
#include "job/command_record.h"
#include "job/settings.h"
#include "job/status.h"
#include "support/descriptors.h"
#include "support/filter_state.h"
#include "support/input_stream.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using namespace rlx::testing;

/// Bytes that a lead byte brings with it.
int bytes_behind(int lead) {
  if (lead >= 0xc0 && lead <= 0xdf) {
    return 1;
  }
  if (lead >= 0xe0 && lead <= 0xef) {
    return 2;
  }
  if (lead >= 0xf0 && lead <= 0xf7) {
    return 3;
  }
  if (lead >= 0xf8 && lead <= 0xfb) {
    return 4;
  }
  return lead == 0xfc || lead == 0xfd ? 5 : 0;
}

/// One character of every kind.
const std::vector<std::string>& characters() {
  static const std::vector<std::string> all{
      "A",
      "\xc3\xa9",
      "\xe3\x81\x82",
      "\xf0\x9f\x98\x80",
      "\xf8\x88\x80\x80\x80",
      "\xfc\x84\x80\x80\x80\x80",
      "\xfd\x41\x42\x43\x44\x45",
      "\x8e\xb1",
      "\x8e\x41",
      "\x8e\xc3\xa9",
      "\x8e\xe3\x81\x82",
      "\x8e\xf0\x9f\x98\x80",
      "\x8e\xf8\x88\x80\x80\x80",
      "\x8e\xfd\x84\x80\x80\x80\x80",
      "\x8e\x8e",
      "\xe3\n\x1b",
  };
  return all;
}

std::uint32_t code_of(const std::string& character) {
  const auto lead = static_cast<std::uint8_t>(character[0]);
  return lead < 0x7f ? CMD_TEXT_ASCII : lead == 0x8e ? CMD_TEXT_SS2 : CMD_TEXT_MB;
}

class Classifier : public FilterTest {
 protected:
  static void restart(bool framed) {
    reset_filter();
    the_filter().command_line.framed_output = framed ? 1 : 0;
  }

  static void expect_end() {
    for (int call = 0; call < 2; ++call) {
      const Token token = next_command();
      EXPECT_EQ(token.status, ST_EOF);
      EXPECT_EQ(token.bytes, "");
      EXPECT_EQ(token.pending, 0U);
    }
  }

  /// The first `length` bytes are one command.
  static void expect_front(const std::string& input_bytes, std::size_t length, std::uint32_t code) {
    SCOPED_TRACE(encode_escaped_line(input_bytes));
    restart(false);
    const StandardInput input(input_bytes);
    EXPECT_EQ(next_command(), (Token{ST_OK, code, input_bytes.substr(0, length), 0}));
    EXPECT_EQ(rest_of_input(), input_bytes.substr(length));
    restart(true);
    const StandardInput framed(end_frame(input_bytes));
    EXPECT_EQ(next_command(), (Token{ST_OK, code, input_bytes.substr(0, length), 0}));
    EXPECT_EQ(rest_of_input(), input_bytes.substr(length));
  }
};

TEST_F(Classifier, AIs512WithOneByte) {
  expect_front("AB", 1, CMD_TEXT_ASCII);
}

TEST_F(Classifier, ThreeByteCharactersAre768WhateverTheContinuation) {
  expect_front(
      "\xe3\x81\x82"
      "A",
      3, CMD_TEXT_MB);
  expect_front(
      "\xe3\x41\x42"
      "A",
      3, CMD_TEXT_MB);
}

TEST_F(Classifier, PrefixedCharactersAre1024) {
  expect_front(
      "\x8e\xb1"
      "A",
      2, CMD_TEXT_SS2);
  expect_front(
      "\x8e\xe3\x81\x82"
      "A",
      4, CMD_TEXT_SS2);
}

TEST_F(Classifier, A4AloneAndFeAreBad) {
  expect_front(
      "\xa4"
      "A",
      1, CMD_TEXT_BAD);
  expect_front("\xa4", 1, CMD_TEXT_BAD);
  expect_front(
      "\xfe"
      "A",
      1, CMD_TEXT_BAD);
}

TEST_F(Classifier, ACharacterThatTheEndOfTheInputCutsIsBadAndThenItEnds) {
  const StandardInput input("\xe3\x81");
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_TEXT_BAD, "\xe3\x81", 0}));
  expect_end();
}

TEST_F(Classifier, ALeadByteAtTheEndOfTheEndFrameIsBadWithOneByte) {
  restart(true);
  const StandardInput input(end_frame("\xe3") + "\x81\x82");
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_TEXT_BAD, "\xe3", 0}));
  expect_end();
}

TEST_F(Classifier, AnEmptyInputEnds) {
  const StandardInput input("");
  expect_end();
}

TEST_F(Classifier, EveryPrintableByteIs512) {
  for (int value = 0x20; value <= 0x7e; ++value) {
    expect_front(one(value) + "\x81\x82", 1, CMD_TEXT_ASCII);
  }
}

TEST_F(Classifier, EveryHighByteWithMoreBehindIt) {
  for (int value = 0x80; value <= 0xff; ++value) {
    for (const std::string& behind : {std::string("\x81\x82\x83\x84\x85\x86"),
                                      std::string("ABCDEF"), std::string("\x1b\n\f\r\x1c\x7f")}) {
      if (value != 0x8e) {
        const int count = bytes_behind(value);
        expect_front(one(value) + behind, static_cast<std::size_t>(1 + count),
                     count > 0 ? CMD_TEXT_MB : CMD_TEXT_BAD);
      }
    }
  }
}

TEST_F(Classifier, EveryHighByteAloneIsBad) {
  for (int value = 0x80; value <= 0xff; ++value) {
    for (const bool framed : {false, true}) {
      restart(framed);
      const StandardInput input(framed ? end_frame(one(value)) : one(value));
      EXPECT_EQ(next_command(), (Token{ST_OK, CMD_TEXT_BAD, one(value), 0})) << value;
      expect_end();
    }
  }
}

TEST_F(Classifier, EveryByteBehindThePrefix) {
  for (int value = 0; value < 256; ++value) {
    const std::string all = "\x8e" + one(value) +
                            "\x81\xff"
                            "CDEF";
    expect_front(all, static_cast<std::size_t>(2 + bytes_behind(value)), CMD_TEXT_SS2);
  }
}

TEST_F(Classifier, ContinuationCountsOfEveryByte) {
  for (int value = 0; value < 256; ++value) {
    EXPECT_EQ(continuation_bytes(static_cast<std::uint8_t>(value)), bytes_behind(value)) << value;
  }
}

TEST_F(Classifier, TheEndOfTheInputCutsEveryCharacterAtEveryByte) {
  for (const std::string& character : characters()) {
    for (std::size_t cut = 1; cut < character.size(); ++cut) {
      restart(false);
      const StandardInput input(character.substr(0, cut));
      EXPECT_EQ(next_command(), (Token{ST_OK, CMD_TEXT_BAD, character.substr(0, cut), 0}));
      expect_end();
    }
  }
}

TEST_F(Classifier, TheEndStaysAfterACutCharacterEvenIfMoreBytesCome) {
  const StandardInput input("\xe3");
  EXPECT_EQ(next_command().code, CMD_TEXT_BAD);
  restart_raw_input();
  const StandardInput more("A");
  expect_end();
  the_filter().classifier.class_eof = false;
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_TEXT_ASCII, "A", 0}));
}

TEST_F(Classifier, TheEndFrameCutsEveryCharacterAtEveryByte) {
  for (const std::string& character : characters()) {
    for (std::size_t cut = 1; cut < character.size(); ++cut) {
      restart(true);
      const StandardInput input(end_frame(character.substr(0, cut)) +
                                end_frame(character.substr(cut)));
      EXPECT_EQ(next_command(), (Token{ST_OK, CMD_TEXT_BAD, character.substr(0, cut), 0}));
      expect_end();
    }
  }
}

TEST_F(Classifier, CharactersGoOnAcrossEveryFrameBorder) {
  for (const std::string& character : characters()) {
    for (std::size_t cut = 1; cut < character.size(); ++cut) {
      for (const bool empty_between : {false, true}) {
        restart(true);
        const StandardInput input(cnt_frame(character.substr(0, cut)) +
                                  (empty_between ? cnt_frame("") : "") +
                                  end_frame(character.substr(cut)));
        const CaptureDescriptor output(1);
        EXPECT_EQ(next_command(), (Token{ST_OK, code_of(character), character, 0}));
        EXPECT_EQ(output.text(), empty_between ? cnt_frame("") : "");
        expect_end();
      }
    }
  }
}

TEST_F(Classifier, AnEmptyEndFrameInsideACharacterIsACut) {
  restart(true);
  const StandardInput input(cnt_frame("\xe3\x81") + end_frame(""));
  const CaptureDescriptor output(1);
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_TEXT_BAD, "\xe3\x81", 0}));
  EXPECT_EQ(output.text(), end_frame(""));
  expect_end();
}

TEST_F(Classifier, AMissingEndFrameInsideACharacterEndsTheProcess) {
  restart(true);
  const StandardInput input(cnt_frame("\xe3\x81"));
  const CaptureDescriptor output(1);
  EXPECT_EXIT(next_command(), ::testing::ExitedWithCode(0), "");
  EXPECT_EQ(output.text(), end_frame(""));
}

TEST_F(Classifier, AReadErrorCutsEveryCharacterAtEveryByte) {
  for (const std::string& character : characters()) {
    for (std::size_t cut = 1; cut < character.size(); ++cut) {
      restart(false);
      const FailingInput input(character.substr(0, cut));
      const CaptureDescriptor messages(2);
      EXPECT_EQ(next_command(), (Token{ST_IOERR, CMD_TEXT_BAD, character.substr(0, cut), 0}));
      EXPECT_EQ(messages.text(), "filter: Connection reset by peer\n");
    }
  }
}

TEST_F(Classifier, AReadErrorBetweenCommandsIsReported) {
  const FailingInput input("");
  const CaptureDescriptor messages(2);
  EXPECT_EQ(next_command().status, 129);
  EXPECT_EQ(messages.text(), "filter: Connection reset by peer\n");
}

TEST_F(Classifier, AFramedReadErrorIsSilentAndClosesTheOutput) {
  restart(true);
  const FailingInput input(cnt_frame("\xe3\x81") + "0001");
  const CaptureDescriptor output(1);
  const CaptureDescriptor messages(2);
  EXPECT_EQ(next_command(), (Token{ST_IOERR, CMD_TEXT_BAD, "\xe3\x81", 0}));
  EXPECT_EQ(output.text(), end_frame(""));
  EXPECT_EQ(messages.text(), "");
}

TEST_F(Classifier, IgnoredCommandsHaveNoBytesAndNothingPending) {
  for (const char* ignored : {"\x1bx", "\x1b%12A", "\x1b$A", "\x1bQ12 C", "\x1c\x7f", "\x1b[1E",
                              "\x1bQ1;2;3;4;5/~ddddd", "\x1bQ1;:!a"}) {
    for (const bool framed : {false, true}) {
      restart(framed);
      const std::string all = std::string(ignored) + "Z";
      const StandardInput input(framed ? end_frame(all) : all);
      EXPECT_EQ(next_command(), (Token{ST_OK, CMD_IGNORE, "", 0}));
      EXPECT_EQ(rest_of_input(), "Z");
    }
  }
}

TEST_F(Classifier, ASequenceThatTheEndOfTheInputCutsHasNoBytesAndThenItEnds) {
  const StandardInput input("\x1bQ1");
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_IGNORE, "", 0}));
  expect_end();
}

TEST_F(Classifier, ASequenceThatTheEndFrameCutsKeepsItsBytesAndStatus) {
  restart(true);
  const StandardInput input(end_frame("\x1bQ1;5!ad"));
  EXPECT_EQ(next_command(), (Token{ST_CUT, CMD_IGNORE, "\x1bQ1;5!ad", 0}));
  expect_end();
}

TEST_F(Classifier, OtherCommandsComeAsTheTokenizerLeftThem) {
  const StandardInput input("\n\f\r\x7f\x1b$@\x1c%1p\x1b[ E\x1bQ1;5000!a");
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_LF, "\n", 0}));
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_FF, "\f", 0}));
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_CR, "\r", 0}));
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_DEL, "\x7f", 0}));
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_ESC_DOLLAR_AT, "\x1b$@", 0}));
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_FS_PERCENT, "\x1c%1p", 0}));
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_CSI_SP_E, "\x1b[ E", 0}));
  EXPECT_EQ(next_command(), (Token{ST_OK, CMD_Q_AL_EX, "\x1bQ1;5000!a", 5000}));
  expect_end();
}

TEST_F(Classifier, CharactersAcrossTheInputBufferBorder) {
  std::string all;
  for (const std::string& character : characters()) {
    all += character;
  }
  for (std::size_t before = 0; before <= all.size(); ++before) {
    restart(false);
    const StandardInput input(std::string(kInputBufferBytes - before, 'x') + all);
    std::uint8_t byte = 0;
    for (std::size_t i = before; i < kInputBufferBytes; ++i) {
      ASSERT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
    }
    for (const std::string& character : characters()) {
      ASSERT_EQ(next_command(), (Token{ST_OK, code_of(character), character, 0})) << before;
    }
    expect_end();
  }
}

TEST_F(Classifier, CharactersThatArriveByteByByte) {
  std::vector<std::string> pieces;
  for (const std::string& character : characters()) {
    for (const char byte : character) {
      pieces.emplace_back(1, byte);
    }
  }
  const PiecewiseInput input(pieces);
  for (const std::string& character : characters()) {
    EXPECT_EQ(next_command(), (Token{ST_OK, code_of(character), character, 0}));
  }
  expect_end();
}

}  // namespace
}  // namespace rlx
