#include "input/byte_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

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

const std::string kEmptyEnd = bytes("0000END_PRN_DAT\0");
const std::string kEmptyCnt = bytes("0000CNT_PRN_DAT\0");

/// A matcher of a process that said nothing.
::testing::Matcher<const std::string&> silence() {
  return std::string();
}

void make_directory_standard_input() {
  const int directory = open("/", O_RDONLY | O_DIRECTORY);
  ASSERT_GE(directory, 0);
  dup2(directory, STDIN_FILENO);
  close(directory);
}

class PlainByteSource : public FilterTest {};

class FramedByteSource : public FilterTest {
 protected:
  FramedByteSource() { the_filter().command_line.framed_output = 1; }

  static void restart() {
    reset_filter();
    the_filter().command_line.framed_output = 1;
  }

  /// Reads the input to its end, which must end the process with the status and write the bytes.
  static void expect_exit(const std::string& input_bytes, int status, const std::string& output) {
    SCOPED_TRACE(encode_escaped_line(input_bytes));
    restart();
    const StandardInput input(input_bytes);
    const CaptureDescriptor standard_output(1);
    EXPECT_EXIT(rest_of_input(), ::testing::ExitedWithCode(status), silence());
    EXPECT_EQ(encode_escaped_line(standard_output.text()), encode_escaped_line(output));
  }
};

TEST_F(PlainByteSource, DeliversEveryByteValueAndThenTheEnd) {
  std::string all;
  for (int value = 0; value < 256; ++value) {
    all.push_back(static_cast<char>(value));
  }
  const StandardInput input(all);
  std::uint8_t byte = 0;
  for (int value = 0; value < 256; ++value) {
    ASSERT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
    EXPECT_EQ(byte, value);
  }
  EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_EOF);
  EXPECT_EQ(zqgetc(the_filter().source, kQuiet, &byte), ST_EOF);
}

TEST_F(PlainByteSource, AFrameIsOrdinaryData) {
  const StandardInput input(end_frame("ab"));
  EXPECT_EQ(rest_of_input(), bytes("0002END_PRN_DAT\0ab"));
}

TEST_F(PlainByteSource, AReadErrorIsReportedUnlessQuiet) {
  for (const int flags : {0, 1, kQuiet, 4, kQuiet | 1, kQuiet | 4}) {
    reset_filter();
    const StandardInput saved("");
    make_directory_standard_input();
    const CaptureDescriptor messages(2);
    std::uint8_t byte = 0;
    EXPECT_EQ(zqgetc(the_filter().source, flags, &byte), 129);
    EXPECT_EQ(messages.text(), (flags & kQuiet) != 0 ? "" : "filter: Is a directory\n") << flags;
  }
}

TEST_F(PlainByteSource, AReadErrorBehindBytesComesBehindThem) {
  const FailingInput input("ab");
  const CaptureDescriptor messages(2);
  std::uint8_t byte = 0;
  EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
  EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
  EXPECT_EQ(byte, 'b');
  EXPECT_EQ(messages.text(), "");
  EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), 129);
  EXPECT_EQ(messages.text(), "filter: Connection reset by peer\n");
}

TEST_F(PlainByteSource, PeekLeavesTheByteInTheInput) {
  const StandardInput input("ab");
  std::uint8_t byte = 0;
  EXPECT_EQ(peek_input(the_filter().source), ST_OK);
  EXPECT_EQ(peek_input(the_filter().source), ST_OK);
  EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
  EXPECT_EQ(byte, 'a');
  EXPECT_EQ(peek_input(the_filter().source), ST_OK);
  EXPECT_EQ(rest_of_input(), "b");
  EXPECT_EQ(peek_input(the_filter().source), ST_EOF);
}

TEST_F(PlainByteSource, PeekAcrossTheBufferBorder) {
  const StandardInput input(std::string(kInputBufferBytes, 'x') + "y");
  std::size_t skipped = 0;
  std::vector<std::uint8_t> room(kInputBufferBytes);
  ASSERT_EQ(raw_read(the_filter().source.raw, room, skipped), ST_OK);
  EXPECT_EQ(peek_input(the_filter().source), ST_OK);
  EXPECT_EQ(rest_of_input(), "y");
}

TEST_F(PlainByteSource, PeekReportsAReadError) {
  const StandardInput saved("");
  make_directory_standard_input();
  const CaptureDescriptor messages(2);
  EXPECT_EQ(peek_input(the_filter().source), 129);
  EXPECT_EQ(messages.text(), "filter: Is a directory\n");
}

TEST_F(FramedByteSource, EmptyInputIsACleanEndAndWritesNothing) {
  const StandardInput input("");
  const CaptureDescriptor output(1);
  std::uint8_t byte = 0;
  EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_EOF);
  EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_EOF);
  EXPECT_EQ(output.text(), "");
}

TEST_F(FramedByteSource, CntFrameThenEmptyEndFrameIsDeliveredAndEchoed) {
  const StandardInput input(bytes("0003CNT_PRN_DAT\0abc0000END_PRN_DAT\0"));
  const CaptureDescriptor output(1);
  std::uint8_t byte = 0;
  for (const char expected : {'a', 'b', 'c'}) {
    EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
    EXPECT_EQ(byte, expected);
    EXPECT_EQ(output.text(), "");
  }
  EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_EOF);
  EXPECT_EQ(output.text(), kEmptyEnd);
  EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_EOF);
  EXPECT_EQ(output.text(), kEmptyEnd);
}

TEST_F(FramedByteSource, CntFrameThenEndOfFileClosesTheOutputAndExitsWithSuccess) {
  expect_exit(cnt_frame("abc"), 0, kEmptyEnd);
}

TEST_F(FramedByteSource, OnlyAnEmptyCntFrameIsEchoedThenClosed) {
  expect_exit(kEmptyCnt, 0, kEmptyCnt + kEmptyEnd);
}

TEST_F(FramedByteSource, EmptyFramesAreEchoedWithTheirMarkersInBetween) {
  const StandardInput input(kEmptyCnt + kEmptyCnt + cnt_frame("a") + kEmptyCnt + cnt_frame("bc") +
                            end_frame("d"));
  const CaptureDescriptor output(1);
  EXPECT_EQ(rest_of_input(), "abcd");
  EXPECT_EQ(output.text(), kEmptyCnt + kEmptyCnt + kEmptyCnt);
}

TEST_F(FramedByteSource, OnlyAnEmptyEndFrameIsEchoed) {
  const StandardInput input(kEmptyEnd);
  const CaptureDescriptor output(1);
  EXPECT_EQ(rest_of_input(), "");
  EXPECT_EQ(output.text(), kEmptyEnd);
}

TEST_F(FramedByteSource, NothingBehindTheEndFrameIsRead) {
  for (const std::string& end : {end_frame("a"), kEmptyEnd}) {
    for (const std::string& behind : {std::string("x"), kEmptyCnt, kEmptyEnd, end_frame("b")}) {
      restart();
      const StandardInput input(end + behind);
      const CaptureDescriptor output(1);
      EXPECT_EQ(rest_of_input(), end == kEmptyEnd ? "" : "a");
      EXPECT_EQ(rest_of_input(), "");
      EXPECT_EQ(output.text(), end == kEmptyEnd ? kEmptyEnd : "");
    }
  }
}

TEST_F(FramedByteSource, CountWithALetterExitsWithFailureAndClosesOnlyAfterACntDataFrame) {
  const std::string data_and_empty = cnt_frame("a") + kEmptyCnt;
  for (std::size_t place = 0; place < 4; ++place) {
    std::string bad = end_frame("x");
    bad[place] = 'A';
    expect_exit(bad, 1, "");
    expect_exit(cnt_frame("a") + bad, 1, kEmptyEnd);
    // Empty frames carry no data, so they do not count.
    expect_exit(kEmptyCnt + bad, 1, kEmptyCnt);
    expect_exit(data_and_empty + bad, 1, kEmptyCnt + kEmptyEnd);
  }
}

/// A byte that is wrong in each place of a header. Each case ends a process of its own, which takes
/// its time with the sanitizers, so the bytes are tests by themselves.
class WrongHeaderByte : public FramedByteSource, public ::testing::WithParamInterface<char> {};

TEST_P(WrongHeaderByte, ExitsWithFailureInEveryPlace) {
  const char wrong = GetParam();
  for (std::size_t place = 0; place < 16; ++place) {
    for (const std::string& frame : {end_frame("x"), cnt_frame("x")}) {
      std::string bad = frame;
      if (bad[place] == wrong) {
        continue;
      }
      bad[place] = wrong;
      expect_exit(bad, 1, "");
      if (wrong == 'x') {
        expect_exit(cnt_frame("a") + bad, 1, kEmptyEnd);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Frames, WrongHeaderByte,
                         ::testing::Values('\0', ' ', '/', ':', 'x', '\x7f', '\xff'));

TEST_F(FramedByteSource, InputThatEndsInsideAHeaderExitsWithFailure) {
  for (std::size_t length = 1; length < 16; ++length) {
    expect_exit(end_frame("xy").substr(0, length), 1, "");
    expect_exit(cnt_frame("xy").substr(0, length), 1, "");
    expect_exit(cnt_frame("a") + end_frame("xy").substr(0, length), 1, kEmptyEnd);
    expect_exit(kEmptyCnt + end_frame("xy").substr(0, length), 1, kEmptyCnt);
  }
}

TEST_F(FramedByteSource, InputThatEndsInsideDataExitsWithFailureAndDeliversNothingOfIt) {
  for (std::size_t length = 16; length < 20; ++length) {
    expect_exit(end_frame("wxyz").substr(0, length), 1, "");
    expect_exit(cnt_frame("wxyz").substr(0, length), 1, "");
    expect_exit(cnt_frame("a") + end_frame("wxyz").substr(0, length), 1, kEmptyEnd);
    restart();
    const StandardInput input(cnt_frame("a") + end_frame("wxyz").substr(0, length));
    std::uint8_t byte = 0;
    EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
    EXPECT_EQ(byte, 'a');
    const CaptureDescriptor output(1);
    EXPECT_EXIT(static_cast<void>(zqgetc(the_filter().source, 0, &byte)),
                ::testing::ExitedWithCode(1), silence());
    EXPECT_EQ(output.text(), kEmptyEnd);
  }
}

TEST_F(FramedByteSource, HeldOutputIsLostWhenABadFrameEndsTheProcess) {
  const StandardInput input(cnt_frame("ab") + "000xEND_PRN_DAT");
  std::uint8_t byte = 0;
  ASSERT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
  directout(the_filter().frame_writer, Bytes(&byte, 1));
  ASSERT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
  const CaptureDescriptor output(1);
  EXPECT_EXIT(static_cast<void>(zqgetc(the_filter().source, 0, &byte)),
              ::testing::ExitedWithCode(1), silence());
  EXPECT_EQ(output.text(), kEmptyEnd);
}

TEST_F(FramedByteSource, ReadErrorAtOnceIsSilentAndWritesNothing) {
  for (const int flags : {0, kQuiet}) {
    restart();
    const StandardInput saved("");
    make_directory_standard_input();
    const CaptureDescriptor output(1);
    const CaptureDescriptor messages(2);
    std::uint8_t byte = 0;
    EXPECT_EQ(zqgetc(the_filter().source, flags, &byte), 129);
    EXPECT_EQ(output.text(), "");
    EXPECT_EQ(messages.text(), "");
  }
}

TEST_F(FramedByteSource, ReadErrorAnywhereInAFrameClosesOnlyAfterACntDataFrame) {
  const std::string frame = end_frame("xyz");
  for (std::size_t length = 0; length < frame.size(); ++length) {
    for (const bool after_data : {false, true}) {
      restart();
      const FailingInput input((after_data ? cnt_frame("a") : "") + frame.substr(0, length));
      const CaptureDescriptor output(1);
      const CaptureDescriptor messages(2);
      std::uint8_t byte = 0;
      if (after_data) {
        EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_OK);
      }
      EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), 129) << length;
      EXPECT_EQ(output.text(), after_data ? kEmptyEnd : "") << length;
      EXPECT_EQ(messages.text(), "");
    }
  }
}

TEST_F(FramedByteSource, ReadErrorBehindTheEndFrameIsNotMet) {
  const FailingInput input(end_frame("a"));
  EXPECT_EQ(rest_of_input(), "a");
  std::uint8_t byte = 0;
  EXPECT_EQ(zqgetc(the_filter().source, 0, &byte), ST_EOF);
}

TEST_F(FramedByteSource, FramesOfEverySizeAroundTheLimitsAreDelivered) {
  for (const std::size_t size :
       {1UL, 9UL, 10UL, 99UL, 100UL, 999UL, 1000UL, 4095UL, 4096UL, 4097UL, 9998UL, 9999UL}) {
    restart();
    std::string data(size, 'x');
    data.back() = 'y';
    const StandardInput input(cnt_frame(data) + end_frame(data));
    EXPECT_TRUE(rest_of_input() == data + data) << size;
  }
}

TEST_F(FramedByteSource, FramesAnywhereAcrossTheInputBuffer) {
  const std::string content =
      cnt_frame("abc") + cnt_frame("d") + cnt_frame(std::string(40, 'e')) + end_frame("fgh");
  const std::string data = "abcd" + std::string(40, 'e') + "fgh";
  std::string padding;
  for (int frame = 0; frame < 6; ++frame) {
    padding += cnt_frame(std::string(9999, 'x'));
  }
  for (std::size_t before = 0; before <= content.size(); ++before) {
    restart();
    const std::size_t last = kInputBufferBytes - before - padding.size() - kFrameHeaderBytes;
    std::string stream = padding;
    stream += cnt_frame(std::string(last, 'x'));
    stream += content;
    const StandardInput input(stream);
    const std::string all = rest_of_input();
    ASSERT_EQ(all.size(), 6 * 9999 + last + data.size());
    EXPECT_EQ(all.substr(all.size() - data.size()), data) << before;
  }
}

TEST_F(FramedByteSource, FramesThatArriveByteByByte) {
  const std::string stream = cnt_frame("abc") + end_frame("de");
  std::vector<std::string> pieces;
  for (const char byte : stream) {
    pieces.emplace_back(1, byte);
  }
  const PiecewiseInput input(pieces);
  EXPECT_EQ(rest_of_input(), "abcde");
}

}  // namespace
}  // namespace rlx
