#include "output/frame_writer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>

#include "input/byte_source.h"
#include "job/settings.h"
#include "job/status.h"
#include "support/descriptors.h"
#include "support/filter_state.h"
#include "support/input_stream.h"
#include "support/interruptions.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using namespace rlx::testing;

const std::string kEmptyEnd = bytes("0000END_PRN_DAT\0");
const std::string kEmptyCnt = bytes("0000CNT_PRN_DAT\0");

::testing::Matcher<const std::string&> silence() {
  return std::string();
}

class FramedTransferTest : public FilterTest {
 protected:
  FramedTransferTest() { the_filter().command_line.framed_output = 1; }

  static void restart() {
    reset_filter();
    the_filter().command_line.framed_output = 1;
  }

  /// The status of the first prtclin over an input.
  static Status first_status(std::string_view input_bytes) {
    restart();
    const StandardInput input(input_bytes);
    return prtclin(the_filter().source.frames, &last_byte);
  }

  /// Makes the module stand inside an input frame of the kind with `left` bytes to come.
  static void stand_in_frame(FrameKind kind, std::size_t left) {
    restart();
    const std::string data(left + 1, 'd');
    const StandardInput input(kind == kCntFrame ? cnt_frame(data) : end_frame(data));
    ASSERT_EQ(prtclin(the_filter().source.frames, &last_byte), ST_OK);
    ASSERT_EQ(frame_left(the_filter().source.frames), left);
  }

  static void put(std::string_view data) { directout(the_filter().frame_writer, bytes_of(data)); }

  static std::uint8_t last_byte;
};

std::uint8_t FramedTransferTest::last_byte = 0;

TEST_F(FramedTransferTest, StartsBetweenFramesWithBothMarkersEnd) {
  EXPECT_EQ(the_filter().source.frames.frame_kind, kEndFrame);
  EXPECT_EQ(the_filter().source.frames.last_data_kind, kEndFrame);
  EXPECT_EQ(frame_left(the_filter().source.frames), 0U);
  EXPECT_EQ(the_filter().frame_writer.out_len, 0);
}

TEST_F(FramedTransferTest, DeliversTheDataByteByByte) {
  const StandardInput input(cnt_frame(bytes("a\0\xff")) + end_frame("z"));
  std::uint8_t byte = 0;
  EXPECT_EQ(prtclin(the_filter().source.frames, &byte), ST_OK);
  EXPECT_EQ(byte, 'a');
  EXPECT_EQ(frame_left(the_filter().source.frames), 2U);
  EXPECT_EQ(the_filter().source.frames.frame_kind, kCntFrame);
  EXPECT_EQ(the_filter().source.frames.last_data_kind, kCntFrame);
  EXPECT_EQ(prtclin(the_filter().source.frames, &byte), ST_OK);
  EXPECT_EQ(byte, 0);
  EXPECT_EQ(prtclin(the_filter().source.frames, &byte), ST_OK);
  EXPECT_EQ(byte, 0xff);
  EXPECT_EQ(frame_left(the_filter().source.frames), 0U);
  EXPECT_EQ(prtclin(the_filter().source.frames, &byte), ST_OK);
  EXPECT_EQ(byte, 'z');
  EXPECT_EQ(the_filter().source.frames.frame_kind, kEndFrame);
  EXPECT_EQ(the_filter().source.frames.last_data_kind, kEndFrame);
  EXPECT_EQ(prtclin(the_filter().source.frames, &byte), ST_EOF);
}

TEST_F(FramedTransferTest, EndOfInputAtAFrameBorderDependsOnTheLastMarker) {
  EXPECT_EQ(first_status(""), ST_EOF);
  restart();
  const StandardInput input(cnt_frame("a"));
  EXPECT_EQ(prtclin(the_filter().source.frames, &last_byte), ST_OK);
  EXPECT_EQ(prtclin(the_filter().source.frames, &last_byte), 4);
}

TEST_F(FramedTransferTest, EndOfInputBehindAnEmptyCntFrameIsAMissingEndFrame) {
  const StandardInput input(kEmptyCnt);
  EXPECT_EQ(prtclin(the_filter().source.frames, &last_byte), 3);
  EXPECT_EQ(the_filter().source.frames.frame_kind, kCntFrame);
  EXPECT_EQ(the_filter().source.frames.last_data_kind, kEndFrame);
  EXPECT_EQ(prtclin(the_filter().source.frames, &last_byte), 4);
}

TEST_F(FramedTransferTest, AnEmptyFrameChangesTheMarkerOnly) {
  const StandardInput input(cnt_frame("a") + kEmptyEnd);
  EXPECT_EQ(prtclin(the_filter().source.frames, &last_byte), ST_OK);
  EXPECT_EQ(prtclin(the_filter().source.frames, &last_byte), 3);
  EXPECT_EQ(the_filter().source.frames.frame_kind, kEndFrame);
  EXPECT_EQ(the_filter().source.frames.last_data_kind, kCntFrame);
  EXPECT_EQ(frame_left(the_filter().source.frames), 0U);
  EXPECT_EQ(prtclin(the_filter().source.frames, &last_byte), ST_EOF);
}

TEST_F(FramedTransferTest, InputThatEndsAfterEachHeaderAndDataByteIsShort) {
  for (const std::string& frame : {cnt_frame("abc"), end_frame("abc"), cnt_frame("")}) {
    EXPECT_EQ(first_status(frame.substr(0, 0)), -1);
    for (std::size_t length = 1; length < frame.size(); ++length) {
      EXPECT_EQ(first_status(frame.substr(0, length)), 5) << length;
    }
  }
}

TEST_F(FramedTransferTest, EveryCountByteThatIsNoDigitIsBadAtOnce) {
  for (std::size_t place = 0; place < 4; ++place) {
    for (int value = 0; value < 256; ++value) {
      if (value >= '0' && value <= '9') {
        continue;
      }
      const std::string count = std::string(place, '0') + static_cast<char>(value);
      EXPECT_EQ(first_status(count), 1) << place << ' ' << value;
      EXPECT_EQ(first_status(count + end_frame("a").substr(place + 1)), 1) << place << ' ' << value;
    }
  }
}

TEST_F(FramedTransferTest, EveryCountDigitCounts) {
  for (std::size_t place = 0; place < 4; ++place) {
    for (char digit = '0'; digit <= '9'; ++digit) {
      std::string frame = end_frame("");
      frame[place] = digit;
      const std::size_t count = static_cast<std::size_t>(std::stoul(frame.substr(0, 4)));
      EXPECT_EQ(first_status(frame + std::string(count, 'x')), count == 0 ? 3 : 0);
      EXPECT_EQ(frame_left(the_filter().source.frames) + (count == 0 ? 0 : 1), count);
      if (count > 0) {
        EXPECT_EQ(first_status(frame + std::string(count - 1, 'x')), 5);
      }
    }
  }
}

TEST_F(FramedTransferTest, EveryWrongMarkerByteIsBad) {
  for (const std::string& good : {cnt_frame("a"), end_frame("a"), kEmptyCnt, kEmptyEnd}) {
    for (std::size_t place = 4; place < 16; ++place) {
      for (int value = 0; value < 256; ++value) {
        std::string frame = good;
        if (frame[place] == static_cast<char>(value)) {
          continue;
        }
        frame[place] = static_cast<char>(value);
        ASSERT_EQ(first_status(frame), 1) << place << ' ' << value;
        EXPECT_EQ(the_filter().source.frames.frame_kind, kEndFrame);
      }
    }
  }
}

TEST_F(FramedTransferTest, AWrongMarkerThatIsCutIsShortNotBad) {
  EXPECT_EQ(first_status("0001XXX_PRN_DAT"), 5);
  EXPECT_EQ(first_status("0001XXX_PRN_DAT\n"), 1);
}

TEST_F(FramedTransferTest, AReadErrorInEveryPlaceOfAFrameIsAReadError) {
  const std::string frame = end_frame("abc");
  for (std::size_t length = 0; length < frame.size(); ++length) {
    restart();
    const FailingInput input(frame.substr(0, length));
    EXPECT_EQ(prtclin(the_filter().source.frames, &last_byte), 129) << length;
  }
}

TEST_F(FramedTransferTest, AReadErrorAtAFrameBorderIsAReadErrorWhateverTheMarker) {
  const FailingInput input(cnt_frame("a"));
  EXPECT_EQ(prtclin(the_filter().source.frames, &last_byte), ST_OK);
  EXPECT_EQ(prtclin(the_filter().source.frames, &last_byte), 129);
}

TEST_F(FramedTransferTest, TheEndFrameEndPredicate) {
  EXPECT_TRUE(
      at_end_frame_end(the_filter().source));  // nothing read yet: both markers start as END
  stand_in_frame(kEndFrame, 1);
  EXPECT_FALSE(at_end_frame_end(the_filter().source));
  stand_in_frame(kEndFrame, 0);
  EXPECT_TRUE(at_end_frame_end(the_filter().source));
  the_filter().command_line.framed_output = 0;
  EXPECT_FALSE(at_end_frame_end(the_filter().source));
  stand_in_frame(kCntFrame, 0);
  EXPECT_FALSE(at_end_frame_end(the_filter().source));
  stand_in_frame(kCntFrame, 1);
  EXPECT_FALSE(at_end_frame_end(the_filter().source));
}

TEST_F(FramedTransferTest, EmptyFramesAreWrittenWithTheMarkerInForce) {
  const CaptureDescriptor output(1);
  the_filter().source.frames.frame_kind = kCntFrame;
  prtclout(the_filter().source.frames);
  EXPECT_EQ(output.text(), kEmptyCnt);
  the_filter().source.frames.frame_kind = kEndFrame;
  prtclout(the_filter().source.frames);
  EXPECT_EQ(output.text(), kEmptyCnt + kEmptyEnd);
}

TEST_F(FramedTransferTest, OutputIsHeldWhileTheInputFrameLasts) {
  stand_in_frame(kCntFrame, 2);
  const CaptureDescriptor output(1);
  put("ab");
  put("c");
  EXPECT_EQ(output.text(), "");
  EXPECT_EQ(the_filter().frame_writer.out_len, 3);
}

TEST_F(FramedTransferTest, OutputIsWrittenUnderTheInputFramesMarkerWhenItIsUsedUp) {
  for (const FrameKind kind : {kCntFrame, kEndFrame}) {
    stand_in_frame(kind, 1);
    const CaptureDescriptor output(1);
    put("ab");
    std::uint8_t byte = 0;
    ASSERT_EQ(prtclin(the_filter().source.frames, &byte), ST_OK);
    put("c");
    EXPECT_EQ(output.text(),
              kind == kCntFrame ? bytes("0003CNT_PRN_DAT\0abc") : bytes("0003END_PRN_DAT\0abc"));
    EXPECT_EQ(the_filter().frame_writer.out_len, 0);
  }
}

TEST_F(FramedTransferTest, EveryPieceBehindTheEndOfTheInputFrameIsAFrame) {
  stand_in_frame(kEndFrame, 0);
  const CaptureDescriptor output(1);
  put("a");
  put("bc");
  EXPECT_EQ(output.text(), bytes("0001END_PRN_DAT\0a0002END_PRN_DAT\0bc"));
}

TEST_F(FramedTransferTest, APieceOfNoBytesWritesAFrameWhenTheInputFrameIsUsedUp) {
  for (const FrameKind kind : {kCntFrame, kEndFrame}) {
    stand_in_frame(kind, 0);
    const CaptureDescriptor output(1);
    put("");
    EXPECT_EQ(output.text(), kind == kCntFrame ? kEmptyCnt : kEmptyEnd);
  }
}

TEST_F(FramedTransferTest, APieceOfNoBytesWritesNothingWhileTheInputFrameLasts) {
  stand_in_frame(kCntFrame, 1);
  const CaptureDescriptor output(1);
  put("a");
  put("");
  EXPECT_EQ(output.text(), "");
  EXPECT_EQ(the_filter().frame_writer.out_len, 1);
}

TEST_F(FramedTransferTest, ANullPieceDoesNothing) {
  for (const std::size_t left : {0UL, 1UL}) {
    stand_in_frame(kEndFrame, left);
    const CaptureDescriptor output(1);
    directout(the_filter().frame_writer, Bytes());
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(the_filter().frame_writer.out_len, 0);
  }
}

TEST_F(FramedTransferTest, CountsAreWrittenWithFourDigits) {
  for (const std::size_t size :
       {1UL, 9UL, 10UL, 99UL, 100UL, 999UL, 1000UL, 1001UL, 4095UL, 4096UL}) {
    stand_in_frame(kEndFrame, 0);
    const CaptureDescriptor output(1);
    put(std::string(size, 'q'));
    EXPECT_TRUE(output.text() == end_frame(std::string(size, 'q'))) << size;
  }
}

TEST_F(FramedTransferTest, ACountOf10IsWritten0010And4096Is4096) {
  stand_in_frame(kEndFrame, 0);
  const CaptureDescriptor output(1);
  put("0123456789");
  put(std::string(4096, 'q'));
  EXPECT_EQ(output.text().substr(0, 46), bytes("0010END_PRN_DAT\0"
                                               "01234567894096END_PRN_DAT\0qqqq"));
}

TEST_F(FramedTransferTest, OutputOfMoreThan4096BytesWhileOneInputFrameLasts) {
  for (const FrameKind kind : {kCntFrame, kEndFrame}) {
    stand_in_frame(kind, 1);
    const CaptureDescriptor output(1);
    put(std::string(4000, 'a'));
    put(std::string(96, 'b'));
    EXPECT_EQ(output.text(), "");
    put("c");
    const std::string first = cnt_frame(std::string(4000, 'a') + std::string(96, 'b'));
    EXPECT_TRUE(output.text() == first);
    put("d");
    std::uint8_t byte = 0;
    ASSERT_EQ(prtclin(the_filter().source.frames, &byte), ST_OK);
    EXPECT_TRUE(output.text() == first);
    put("e");
    EXPECT_TRUE(output.text() == first + (kind == kCntFrame ? cnt_frame("cde") : end_frame("cde")));
  }
}

TEST_F(FramedTransferTest, HeldAndNewLengthsAroundTheFrameSize) {
  for (const FrameKind kind : {kCntFrame, kEndFrame}) {
    for (const std::size_t left : {0UL, 1UL}) {
      for (const std::size_t held : {1UL, 2UL, 4094UL, 4095UL, 4096UL}) {
        for (const std::size_t added : {0UL, 1UL, 2UL, 3UL, 4094UL, 4095UL, 4096UL}) {
          stand_in_frame(kind, 1);
          const CaptureDescriptor output(1);
          put(std::string(held, 'h'));
          std::uint8_t byte = 0;
          if (left == 0) {
            ASSERT_EQ(prtclin(the_filter().source.frames, &byte), ST_OK);
          }
          put(std::string(added, 'n'));
          std::string expected;
          std::string gathered = std::string(held, 'h') + std::string(added, 'n');
          if (held + added > 4096) {
            expected = cnt_frame(std::string(held, 'h'));
            gathered = std::string(added, 'n');
          }
          if (left == 0) {
            expected += kind == kCntFrame ? cnt_frame(gathered) : end_frame(gathered);
            gathered.clear();
          }
          EXPECT_TRUE(output.text() == expected) << held << ' ' << added << ' ' << left;
          EXPECT_EQ(the_filter().frame_writer.out_len, static_cast<std::int32_t>(gathered.size()));
        }
      }
    }
  }
}

TEST_F(FramedTransferTest, AFullFrameIsWrittenAtOnceWhenNothingIsHeld) {
  stand_in_frame(kCntFrame, 0);
  const CaptureDescriptor output(1);
  put(std::string(4096, 'f'));
  EXPECT_TRUE(output.text() == cnt_frame(std::string(4096, 'f')));
}

TEST_F(FramedTransferTest, APieceLongerThanAFrameIsDivided) {
  for (const std::size_t held : {0UL, 1UL}) {
    for (const std::size_t added : {4097UL, 8191UL, 8192UL, 8193UL, 10000UL}) {
      stand_in_frame(kEndFrame, held);
      const CaptureDescriptor output(1);
      if (held != 0) {
        std::uint8_t byte = 0;
        put("h");
        ASSERT_EQ(prtclin(the_filter().source.frames, &byte), ST_OK);
      }
      std::string rest(added, 'n');
      put(rest);
      std::string expected = held != 0 ? cnt_frame("h") : "";
      for (; rest.size() > 4096; rest.erase(0, 4096)) {
        expected += cnt_frame(rest.substr(0, 4096));
      }
      EXPECT_TRUE(output.text() == expected + end_frame(rest)) << added;
    }
  }
}

TEST_F(FramedTransferTest, TheSinkCutsLikeAPieceThatDoesNotFit) {
  stand_in_frame(kEndFrame, 1);
  const CaptureDescriptor output(1);
  put("abc");
  const PieceSink sink = frame_sink(the_filter().frame_writer);
  EXPECT_EQ(sink.capacity, 4096);
  EXPECT_EQ(*sink.length, 3);
  sink.bytes[3] = 'd';
  *sink.length = 4;
  sink.cut();
  EXPECT_EQ(*sink.length, 0);
  EXPECT_EQ(output.text(), cnt_frame("abcd"));
}

TEST_F(FramedTransferTest, TheEndFrameHoldsWhatWasHeld) {
  const CaptureDescriptor output(1);
  EXPECT_EQ(out_end_frame(the_filter().frame_writer), 0);
  EXPECT_EQ(output.text(), "");
  stand_in_frame(kCntFrame, 1);
  put("abc");
  EXPECT_EQ(out_end_frame(the_filter().frame_writer), 0);
  EXPECT_EQ(output.text(), bytes("0003END_PRN_DAT\0abc"));
}

TEST_F(FramedTransferTest, TheEndFrameThatCannotBeWrittenIsAFailure) {
  stand_in_frame(kCntFrame, 1);
  put("abc");
  const CaptureDescriptor saved(1);
  close(STDOUT_FILENO);
  EXPECT_EQ(out_end_frame(the_filter().frame_writer), 1);
}

/// Lets standard output take `room` more bytes and no further one.
void limit_output(rlim_t room) {
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{room, room};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

/// Writes frames into a pipe that holds a page only while signals interrupt the writes.
void put_frames_through_a_small_pipe(int flags) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
  ASSERT_GT(fcntl(ends[1], F_SETPIPE_SZ, 4096), 0);
  ASSERT_EQ(fcntl(ends[1], F_SETFL, flags), 0);
  std::string caught;
  std::thread reader([&] { caught = read_slowly(ends[0]); });
  std::string expected;
  const int saved = dup(STDOUT_FILENO);
  dup2(ends[1], STDOUT_FILENO);
  close(ends[1]);
  {
    const Interruptions interruptions;
    for (int i = 0; i < 20; ++i) {
      const std::string data(4000, static_cast<char>('a' + i));
      directout(the_filter().frame_writer, bytes_of(data));
      prtclout(the_filter().source.frames);
      expected += end_frame(data) + kEmptyEnd;
    }
  }
  dup2(saved, STDOUT_FILENO);
  close(saved);
  reader.join();
  close(ends[0]);
  EXPECT_TRUE(caught == expected);
}

TEST_F(FramedTransferTest, FramesThatSignalsCutShortAreWrittenOn) {
  put_frames_through_a_small_pipe(0);
}

TEST_F(FramedTransferTest, FramesWaitForADescriptorThatDoesNotBlock) {
  put_frames_through_a_small_pipe(O_NONBLOCK);
}

TEST_F(FramedTransferTest, AFrameThatIsNotWrittenWholeEndsTheProcess) {
  for (const std::size_t room : {0U, 1U, 15U, 16U, 18U}) {
    stand_in_frame(kEndFrame, 0);
    const CaptureDescriptor output(1);
    EXPECT_EXIT(
        {
          limit_output(room);
          put("abc");
        },
        ::testing::ExitedWithCode(1), silence());
    EXPECT_EQ(output.text(), bytes("0003END_PRN_DAT\0abc").substr(0, room));
  }
}

TEST_F(FramedTransferTest, AnEmptyFrameThatIsNotWrittenWholeEndsTheProcess) {
  for (const std::size_t room : {0U, 1U, 15U}) {
    restart();
    const CaptureDescriptor output(1);
    EXPECT_EXIT(
        {
          limit_output(room);
          prtclout(the_filter().source.frames);
        },
        ::testing::ExitedWithCode(1), silence());
    EXPECT_EQ(output.text(), kEmptyEnd.substr(0, room));
  }
}

TEST_F(FramedTransferTest, AClosedOutputEndsTheProcess) {
  stand_in_frame(kEndFrame, 0);
  EXPECT_EXIT(
      {
        close(STDOUT_FILENO);
        put("abc");
      },
      ::testing::ExitedWithCode(1), silence());
  EXPECT_EXIT(
      {
        close(STDOUT_FILENO);
        prtclout(the_filter().source.frames);
      },
      ::testing::ExitedWithCode(1), silence());
}

}  // namespace
}  // namespace rlx
