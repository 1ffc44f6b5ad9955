#include "input/sequence_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

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

constexpr std::uint32_t kCodeBefore = 4711;

class SequenceReader : public FilterTest {
 protected:
  /// Gives the record some bytes that stand in it already.
  static void start_record(const std::string& bytes) {
    CommandRecord& record = reused_record();
    record.code = kCodeBefore;
    record.pending = 0;
    record.length = static_cast<std::int32_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), record.bytes.begin());
  }

  static Token run_zqrhandl(std::uint8_t low, std::uint8_t high) {
    return token_of(zqrhandl(the_filter().source, 0, &reused_record(), low, high));
  }

  static void expect_left(const std::string& left) { EXPECT_EQ(rest_of_input(), left); }
};

TEST_F(SequenceReader, ReadsUpToAndIncludingTheFirstByteOfTheRange) {
  start_record("\x1b[");
  const StandardInput input("12;3ab");
  EXPECT_EQ(run_zqrhandl(0x40, 0x7e), (Token{ST_OK, kCodeBefore, "\x1b[12;3a", 0}));
  expect_left("b");
}

TEST_F(SequenceReader, EveryByteEndsExactlyTheRangesThatHoldIt) {
  struct Range {
    std::uint8_t low;
    std::uint8_t high;
  };
  for (const Range range : {Range{0x40, 0x7e}, Range{0x40, 0x7f}, Range{0x70, 0x79}}) {
    for (int value = 0; value < 256; ++value) {
      reset_filter();
      start_record("S");
      const std::string first(1, static_cast<char>(value));
      const StandardInput input(first + "wZ");
      const bool ends = value >= range.low && value <= range.high;
      EXPECT_EQ(run_zqrhandl(range.low, range.high),
                (Token{ST_OK, kCodeBefore, "S" + first + (ends ? "" : "w"), 0}))
          << value;
      expect_left(ends ? "wZ" : "Z");
    }
  }
}

TEST_F(SequenceReader, ARangeOfHighBytesIsUnsigned) {
  start_record("");
  const StandardInput input("a\x7f\x80Z");
  EXPECT_EQ(run_zqrhandl(0x80, 0xff), (Token{ST_OK, kCodeBefore, "a\x7f\x80", 0}));
}

TEST_F(SequenceReader, TheEndOfTheInputIgnoresTheCommand) {
  start_record("S");
  const StandardInput input("12");
  EXPECT_EQ(run_zqrhandl(0x40, 0x7e), (Token{ST_EOF, CMD_IGNORE, "S12", 0}));
}

TEST_F(SequenceReader, AReadErrorIgnoresTheCommand) {
  start_record("S");
  const FailingInput input("12");
  const CaptureDescriptor messages(2);
  EXPECT_EQ(run_zqrhandl(0x40, 0x7e), (Token{ST_IOERR, CMD_IGNORE, "S12", 0}));
  EXPECT_EQ(messages.text(), "filter: Connection reset by peer\n");
}

TEST_F(SequenceReader, AQuietReadErrorIsNotReported) {
  start_record("S");
  const FailingInput input("12");
  const CaptureDescriptor messages(2);
  EXPECT_EQ(zqrhandl(the_filter().source, kQuiet, &reused_record(), 0x40, 0x7e), 129);
  EXPECT_EQ(messages.text(), "");
}

TEST_F(SequenceReader, TheEndOfTheEndFrameCutsTheSequence) {
  the_filter().command_line.framed_output = 1;
  start_record("S");
  const StandardInput input(end_frame("12"));
  std::uint8_t byte = 0;
  ASSERT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
  EXPECT_EQ(run_zqrhandl(0x40, 0x7e), (Token{ST_CUT, CMD_IGNORE, "S2", 0}));
  EXPECT_EQ(run_zqrhandl(0x40, 0x7e), (Token{ST_CUT, CMD_IGNORE, "S2", 0}));
}

TEST_F(SequenceReader, AFrameBorderIsReadAcross) {
  the_filter().command_line.framed_output = 1;
  start_record("S");
  const StandardInput input(cnt_frame("x1") + cnt_frame("2") + end_frame("3a"));
  std::uint8_t byte = 0;
  ASSERT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
  EXPECT_EQ(run_zqrhandl(0x40, 0x7e), (Token{ST_OK, kCodeBefore, "S123a", 0}));
}

TEST_F(SequenceReader, AFullRecordGoesOnInItsFront) {
  // All lengths around the capacity, and around the second time that it fills.
  for (const std::size_t total :
       {4094UL, 4095UL, 4096UL, 4097UL, 4098UL, 8191UL, 8192UL, 8193UL, 8194UL, 12288UL, 12289UL}) {
    for (const std::size_t before : {0UL, 1UL, 3UL}) {
      reset_filter();
      start_record(std::string(before, 'S'));
      std::string sequence;
      for (std::size_t i = before; i + 1 < total; ++i) {
        sequence.push_back(static_cast<char>('0' + i % 10));
      }
      sequence.push_back('a');
      const StandardInput input(sequence + "Z");
      const std::string all = std::string(before, 'S') + sequence;
      const std::size_t kept = (total - 1) % 4096 + 1;
      EXPECT_TRUE(
          run_zqrhandl(0x40, 0x7e) ==
          (Token{ST_OK, total <= 4096 ? kCodeBefore : CMD_IGNORE, all.substr(total - kept), 0}))
          << total << ' ' << before;
      expect_left("Z");
    }
  }
}

TEST_F(SequenceReader, AFullRecordAtTheEndOfTheInputKeepsItsBytes) {
  start_record(std::string(4096, '1'));
  const StandardInput input("");
  EXPECT_TRUE(run_zqrhandl(0x40, 0x7e) == (Token{ST_EOF, CMD_IGNORE, std::string(4096, '1'), 0}));
}

TEST_F(SequenceReader, AFullRecordAtTheEndOfTheEndFrameKeepsItsBytes) {
  the_filter().command_line.framed_output = 1;
  start_record(std::string(4095, '1'));
  const StandardInput input(end_frame("x1"));
  std::uint8_t byte = 0;
  ASSERT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
  EXPECT_TRUE(run_zqrhandl(0x40, 0x7e) == (Token{ST_CUT, CMD_IGNORE, std::string(4096, '1'), 0}));
}

TEST_F(SequenceReader, TheRecordIsNotWrittenBehindItsBytes) {
  struct {
    CommandRecord record;
    std::array<std::uint8_t, 64> guard;
  } room;
  room.guard.fill(0xa5);
  room.record.length = 0;
  const StandardInput input(std::string(4097, '1') + "a");
  EXPECT_EQ(zqrhandl(the_filter().source, 0, &room.record, 0x40, 0x7e), ST_OK);
  EXPECT_TRUE(std::all_of(room.guard.begin(), room.guard.end(),
                          [](std::uint8_t byte) { return byte == 0xa5; }));
}

TEST_F(SequenceReader, ANullRecordIsReported) {
  const StandardInput input("12a");
  const CaptureDescriptor messages(2);
  EXPECT_NE(zqrhandl(the_filter().source, 0, nullptr, 0x40, 0x7e), ST_OK);
  EXPECT_EQ(messages.text(), "*** zqrhandl: zqdtp error\n");
}

TEST_F(SequenceReader, OneByteIsAppended) {
  start_record("S");
  const StandardInput input(bytes("\0"));
  EXPECT_EQ(token_of(read_sequence_byte(the_filter().source, 0, reused_record())),
            (Token{ST_OK, kCodeBefore, bytes("S\0"), 0}));
  EXPECT_EQ(token_of(read_sequence_byte(the_filter().source, 0, reused_record())),
            (Token{ST_EOF, CMD_IGNORE, bytes("S\0"), 0}));
}

TEST_F(SequenceReader, OneByteBehindTheEndFrameIsCut) {
  the_filter().command_line.framed_output = 1;
  start_record("S");
  const StandardInput input(end_frame("a"));
  EXPECT_EQ(rest_of_input(), "a");
  EXPECT_EQ(token_of(read_sequence_byte(the_filter().source, 0, reused_record())),
            (Token{ST_CUT, CMD_IGNORE, "S", 0}));
}

TEST_F(SequenceReader, OneByteAtAReadError) {
  start_record("S");
  const FailingInput input("");
  const CaptureDescriptor messages(2);
  EXPECT_EQ(token_of(read_sequence_byte(the_filter().source, kQuiet, reused_record())),
            (Token{ST_IOERR, CMD_IGNORE, "S", 0}));
  EXPECT_EQ(messages.text(), "");
}

TEST_F(SequenceReader, DataOfEveryCountIsRead) {
  for (const std::int32_t wanted : {0, 1, 2, 9, 10}) {
    reset_filter();
    const StandardInput input("0123456789Z");
    std::array<std::uint8_t, 12> room{};
    std::int32_t count = -1;
    const std::span place = std::span(room).first(static_cast<std::size_t>(wanted));
    EXPECT_EQ(zqrdata(the_filter().source, 0, place, count), ST_OK);
    EXPECT_EQ(count, wanted);
    EXPECT_EQ(std::string(room.begin(), room.end()),
              std::string("0123456789").substr(0, static_cast<std::size_t>(wanted)) +
                  std::string(static_cast<std::size_t>(12 - wanted), '\0'));
    expect_left(std::string("0123456789Z").substr(static_cast<std::size_t>(wanted)));
  }
}

TEST_F(SequenceReader, DataWithoutADestinationIsDiscarded) {
  const StandardInput input("0123456789Z");
  EXPECT_EQ(skip_data(the_filter().source, 0, 10), ST_OK);
  expect_left("Z");
}

TEST_F(SequenceReader, DataThatTheEndOfTheInputCutsIsCounted) {
  const StandardInput input("abc");
  std::array<std::uint8_t, 9> room{};
  std::int32_t count = 0;
  EXPECT_EQ(zqrdata(the_filter().source, 0, room, count), ST_EOF);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(std::string(room.begin(), room.begin() + 3), "abc");
  EXPECT_EQ(room[3], 0);
}

TEST_F(SequenceReader, DataThatTheEndOfTheInputCutsIsDiscardedToTheEnd) {
  const StandardInput input("abc");
  EXPECT_EQ(skip_data(the_filter().source, 0, 9), ST_EOF);
  expect_left("");
}

TEST_F(SequenceReader, DataThatAReadErrorCutsIsCounted) {
  const FailingInput input("abc");
  const CaptureDescriptor messages(2);
  std::array<std::uint8_t, 9> room{};
  std::int32_t count = 0;
  EXPECT_EQ(zqrdata(the_filter().source, 0, room, count), 129);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(messages.text(), "filter: Connection reset by peer\n");
}

TEST_F(SequenceReader, DataThatTheEndFrameCutsIsCounted) {
  the_filter().command_line.framed_output = 1;
  const StandardInput input(cnt_frame("xa") + cnt_frame("b") + end_frame("c"));
  std::uint8_t byte = 0;
  ASSERT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
  std::array<std::uint8_t, 9> room{};
  std::int32_t count = 0;
  EXPECT_EQ(zqrdata(the_filter().source, 0, room, count), 6);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(std::string(room.begin(), room.begin() + 3), "abc");
  EXPECT_EQ(zqrdata(the_filter().source, 0, std::span(room).first(1), count), 6);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(skip_data(the_filter().source, 0, 1), 6);
  count = 1;
  EXPECT_EQ(zqrdata(the_filter().source, 0, {}, count), ST_OK);
  EXPECT_EQ(count, 0);
}

TEST_F(SequenceReader, DataAcrossTheInputBufferBorder) {
  std::string all(2 * kInputBufferBytes + 100, '\0');
  for (std::size_t i = 0; i < all.size(); ++i) {
    all[i] = static_cast<char>(i % 251);
  }
  for (const std::size_t before : {0UL, 1UL, 65535UL, 65536UL}) {
    for (const std::size_t wanted : {1UL, 2UL, 65536UL, 65537UL}) {
      reset_filter();
      const StandardInput input(all);
      ASSERT_EQ(skip_data(the_filter().source, 0, static_cast<std::int32_t>(before)), ST_OK);
      std::vector<std::uint8_t> room(wanted);
      std::int32_t count = 0;
      ASSERT_EQ(zqrdata(the_filter().source, 0, room, count), ST_OK);
      EXPECT_EQ(count, static_cast<std::int32_t>(wanted));
      EXPECT_TRUE(std::string(room.begin(), room.end()) == all.substr(before, wanted));
      std::uint8_t byte = 0;
      ASSERT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
      EXPECT_EQ(byte, static_cast<std::uint8_t>(all[before + wanted]));
    }
  }
}

}  // namespace
}  // namespace rlx
