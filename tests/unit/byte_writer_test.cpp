#include "output/byte_writer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <string>
#include <thread>

#include "support/filter_state.h"
#include "support/interruptions.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

constexpr auto kBufferBytes = static_cast<std::int32_t>(kOutputBufferBytes);

/// Bytes that show where they stand.
std::string varied_text(std::size_t count) {
  std::string text(count, '\0');
  for (std::size_t i = 0; i < count; ++i) {
    text[i] = static_cast<char>((i * 31 + i / 251) & 0xff);
  }
  return text;
}

void write_text(const std::string& text) {
  out_bytes(the_filter().writer, bytes_of(text));
}

/// Puts another file at descriptor 1 while it lives; a negative one leaves it closed.
class StandardOutput {
 public:
  explicit StandardOutput(int file) : saved_(dup(STDOUT_FILENO)) {
    if (file < 0) {
      close(STDOUT_FILENO);
    } else {
      dup2(file, STDOUT_FILENO);
      close(file);
    }
  }
  ~StandardOutput() {
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
  }
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

 private:
  int saved_;
};

int full_device() {
  return open("/dev/full", O_WRONLY | O_CLOEXEC);
}

using ByteWriter = FilterTest;
using ByteWriterDeathTest = FilterTest;

TEST_F(ByteWriter, WritesBytesInTheirOrderNulIncluded) {
  EXPECT_EQ(output_of([] {
              write_text(bytes("a\0b"));
              write_text(bytes("\xff\x0c\n"));
            }),
            bytes("a\0b\xff\x0c\n"));
}

TEST_F(ByteWriter, WritesOnlyTheCountedBytes) {
  EXPECT_EQ(output_of([] { out_bytes(the_filter().writer, bytes_of("abc").first(2)); }), "ab");
}

TEST_F(ByteWriter, NoBytesWriteNothing) {
  EXPECT_EQ(output_of([] {
              out_bytes(the_filter().writer, Bytes());
              out_bytes(the_filter().writer, bytes_of("abc").first(0));
            }),
            "");
}

TEST_F(ByteWriter, LengthsAroundTheBufferInOnePiece) {
  for (std::int32_t count = kBufferBytes - 2; count <= kBufferBytes + 2; ++count) {
    const std::string text = varied_text(static_cast<std::size_t>(count));
    EXPECT_TRUE(output_of([&] { write_text(text); }) == text) << count;
  }
  const std::string text = varied_text(3 * kOutputBufferBytes + 7);
  EXPECT_TRUE(output_of([&] { write_text(text); }) == text);
}

TEST_F(ByteWriter, LengthsAroundTheBufferBehindGatheredBytes) {
  const std::string text = varied_text(3 * kOutputBufferBytes);
  for (const std::size_t first :
       {std::size_t{1}, kOutputBufferBytes / 2, kOutputBufferBytes - 1, kOutputBufferBytes}) {
    for (std::size_t total = kOutputBufferBytes - 1; total <= kOutputBufferBytes + 2; ++total) {
      for (const std::size_t more : {std::size_t{0}, kOutputBufferBytes}) {
        const std::size_t all = std::max(total, first) + more;
        const std::string caught = output_of([&] {
          write_text(text.substr(0, first));
          write_text(text.substr(first, all - first));
        });
        EXPECT_TRUE(caught == text.substr(0, all)) << first << ", " << all;
      }
    }
  }
}

TEST_F(ByteWriter, SmallPiecesAcrossTheBuffer) {
  const std::string text = varied_text(2 * kOutputBufferBytes + 13);
  for (const std::size_t piece : {std::size_t{7}, std::size_t{1000}, std::size_t{8192}}) {
    const std::string caught = output_of([&] {
      for (std::size_t at = 0; at < text.size(); at += piece) {
        write_text(text.substr(at, piece));
      }
    });
    EXPECT_TRUE(caught == text) << piece;
  }
}

TEST_F(ByteWriter, GathersUntilItIsFlushed) {
  const CaptureDescriptor output(1);
  write_text("abc");
  EXPECT_EQ(output.text(), "");
  flush_output(the_filter().writer);
  EXPECT_EQ(output.text(), "abc");
  flush_output(the_filter().writer);
  EXPECT_EQ(output.text(), "abc");
}

TEST_F(ByteWriter, FinishedPagesAreFlushedBeforeWaitingOthersAreNot) {
  const CaptureDescriptor output(1);
  write_text("abc");
  flush_finished_pages(the_filter().writer);
  EXPECT_EQ(output.text(), "");
  note_page_end(the_filter().writer);
  EXPECT_EQ(output.text(), "");
  flush_finished_pages(the_filter().writer);
  EXPECT_EQ(output.text(), "abc");
  write_text("d");
  flush_finished_pages(the_filter().writer);
  EXPECT_EQ(output.text(), "abc");
}

TEST_F(ByteWriter, PageEndIsForgottenOnceItsBytesAreWritten) {
  const CaptureDescriptor output(1);
  write_text("abc");
  note_page_end(the_filter().writer);
  flush_output(the_filter().writer);
  write_text("d");
  flush_finished_pages(the_filter().writer);
  EXPECT_EQ(output.text(), "abc");
}

TEST_F(ByteWriter, WritesThatAreCutShortOrInterruptedGoOn) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  const std::string text = varied_text(5 * kOutputBufferBytes + 99);
  std::string caught;
  std::thread reader([&] { caught = testing::read_slowly(ends[0]); });
  {
    const StandardOutput standard_output(ends[1]);
    const testing::Interruptions interruptions;
    write_text(text);
    flush_output(the_filter().writer);
  }
  reader.join();
  close(ends[0]);
  EXPECT_TRUE(caught == text);
}

TEST_F(ByteWriter, ResetForgetsWhatIsGathered) {
  EXPECT_EQ(output_of([] {
              write_text("abc");
              note_page_end(the_filter().writer);
              forget_output();
              flush_finished_pages(the_filter().writer);
              write_text("d");
            }),
            "d");
}

[[noreturn]] void flush_to(int file) {
  const StandardOutput standard_output(file);
  write_text("abc");
  flush_output(the_filter().writer);
  _exit(0);
}

[[noreturn]] void overfill(std::size_t count) {
  const StandardOutput standard_output(full_device());
  write_text(varied_text(count));
  write_text("abc");
  _exit(0);
}

TEST_F(ByteWriterDeathTest, FullDeviceIsAWriteErrorWithoutNewline) {
  EXPECT_EXIT(flush_to(full_device()), ::testing::ExitedWithCode(1), "^write error$");
}

TEST_F(ByteWriterDeathTest, ClosedStandardOutputIsAWriteError) {
  EXPECT_EXIT(flush_to(-1), ::testing::ExitedWithCode(1), "^write error$");
}

TEST_F(ByteWriterDeathTest, StandardOutputOpenForReadingOnlyIsAWriteError) {
  EXPECT_EXIT(flush_to(open("/dev/null", O_RDONLY | O_CLOEXEC)), ::testing::ExitedWithCode(1),
              "^write error$");
}

TEST_F(ByteWriterDeathTest, BytesThatNoLongerFitTheBufferMeetTheErrorAtOnce) {
  EXPECT_EXIT(overfill(kOutputBufferBytes), ::testing::ExitedWithCode(1), "^write error$");
  EXPECT_EXIT(overfill(kOutputBufferBytes * 2), ::testing::ExitedWithCode(1), "^write error$");
}

TEST_F(ByteWriterDeathTest, FinishedPageMeetsTheErrorBeforeTheFilterWaits) {
  EXPECT_EXIT(
      {
        const StandardOutput standard_output(full_device());
        write_text("abc");
        note_page_end(the_filter().writer);
        flush_finished_pages(the_filter().writer);
        _exit(0);
      },
      ::testing::ExitedWithCode(1), "^write error$");
}

}  // namespace
}  // namespace rlx::testing
