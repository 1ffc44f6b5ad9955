#include "output/page_writer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>

#include "job/output_buffer.h"
#include "job/settings.h"
#include "support/filter_state.h"
#include "support/page_data.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

constexpr std::size_t kRoom = kPageBufferBytes;

using PageWriter = FilterTest;
using PageWriterDeathTest = FilterTest;

TEST_F(PageWriter, SingleFormFeedEndsThePage) {
  EXPECT_EQ(output_of([] { put("\f"); }), kFirstHeader + "\x1bQ2;0000000013/a\f");
}

TEST_F(PageWriter, SingleFormFeedIsFollowedByTheCarriedSettings) {
  keep(CMD_ESC_PAREN_H, "\x1b(H");
  EXPECT_EQ(output_of([] { put("\f"); }),
            kFirstHeader + "\x1bQ2;0000000013/a\f\x1bQ6;0000000015/a\x1b(H");
}

TEST_F(PageWriter, PiecesAreGatheredUntilThePageEnds) {
  EXPECT_EQ(output_of([] {
              put("ABC");
              put(bytes("\x1b\0D"));
            }),
            "");
  EXPECT_EQ(output_of([] { put("\n\f"); }),
            kFirstHeader + bytes("\x1bQ2;0000000020/aABC\x1b\0D\n\f"));
}

TEST_F(PageWriter, SecondPageHasTheShortHeaderAndAFirstDataBlockAgain) {
  EXPECT_EQ(output_of([] {
              put("A\f");
              put("B\f");
            }),
            kFirstHeader + block('2', "A\f") + kNextHeader + block('2', "B\f"));
}

TEST_F(PageWriter, PageOf10000BytesInPiecesOf100) {
  const std::string text = pattern(10000);
  for (std::size_t at = 0; at < 8100; at += 100) {
    EXPECT_EQ(output_of([&] { put(text.substr(at, 100)); }), "") << at;
  }
  EXPECT_EQ(output_of([&] { put(text.substr(8100, 100)); }),
            kFirstHeader + "\x1bQ2;0000008112/a" + text.substr(0, 8100));
  for (std::size_t at = 8200; at < 10000; at += 100) {
    EXPECT_EQ(output_of([&] { put(text.substr(at, 100)); }), "") << at;
  }
  EXPECT_EQ(output_of([] { put("\f"); }), block('0', text.substr(8100) + "\f"));
}

TEST_F(PageWriter, CountOfZeroWithBytesDoesNothing) {
  EXPECT_EQ(output_of([] {
              put("A");
              the_filter().job.page_has_content = 1;
              out_page_data(the_filter().page, bytes_of("\f").first(0));
              out_page_data(the_filter().page, Bytes());
            }),
            "");
  EXPECT_EQ(the_filter().job.page_has_content, 1);
  EXPECT_EQ(output_of([] { put("\f"); }), kFirstHeader + block('2', "A\f"));
}

TEST_F(PageWriter, TwoPiecesAroundTheRoomOfTheBuffer) {
  for (const std::size_t first : {std::size_t{1}, std::size_t{100}, kRoom / 2, kRoom - 1, kRoom}) {
    for (std::size_t total = kRoom - 2; total <= kRoom + 3; ++total) {
      if (total <= first || total > first + kRoom) {
        continue;
      }
      reset_filter();
      const std::string text = pattern(total);
      const std::string caught = output_of([&] {
        put(text.substr(0, first));
        put(text.substr(first));
        put("\f");
      });
      // The form feed's piece may make the block longer than the buffer.
      const std::string expected = total <= kRoom ? block('2', text + "\f")
                                                  : block('2', text.substr(0, first)) +
                                                        block('0', text.substr(first) + "\f");
      EXPECT_TRUE(caught == kFirstHeader + expected) << first << ", " << total;
    }
  }
}

TEST_F(PageWriter, OnePieceAroundTheRoomOfTheBuffer) {
  for (std::size_t length = kRoom - 2; length <= kRoom; ++length) {
    reset_filter();
    std::string text = pattern(length);
    EXPECT_EQ(output_of([&] { put(text); }), "") << length;
    text += '\f';
    EXPECT_TRUE(output_of([] { put("\f"); }) == kFirstHeader + block('2', text)) << length;
  }
}

TEST_F(PageWriter, PiecesOfOneByteAroundTheRoomOfTheBuffer) {
  for (std::size_t length = kRoom - 1; length <= kRoom + 2; ++length) {
    reset_filter();
    const std::string text = pattern(length);
    const std::string caught = output_of([&] {
      for (const char byte : text) {
        put(std::string_view(&byte, 1));
      }
      put("\f");
    });
    const std::string expected =
        length <= kRoom ? block('2', text + "\f")
                        : block('2', text.substr(0, kRoom)) + block('0', text.substr(kRoom) + "\f");
    EXPECT_TRUE(caught == kFirstHeader + expected) << length;
  }
}

TEST_F(PageWriter, EachLengthOfPieceFillsBlocksOfWholePieces) {
  for (const std::size_t piece : {1U, 3U, 7U, 64U, 1000U, 4095U, 4096U, 4097U, 8191U, 8192U}) {
    reset_filter();
    const std::size_t a_block = kRoom / piece * piece;
    // Three full blocks and one piece.
    const std::string text = pattern(3 * a_block + piece);
    const std::string caught = output_of([&] {
      for (std::size_t at = 0; at < text.size(); at += piece) {
        put(text.substr(at, piece));
      }
      put("\f");
    });
    const std::string expected = kFirstHeader + block('2', text.substr(0, a_block)) +
                                 block('0', text.substr(a_block, a_block)) +
                                 block('0', text.substr(2 * a_block, a_block)) +
                                 block('0', text.substr(3 * a_block) + "\f");
    EXPECT_TRUE(caught == expected) << piece;
  }
}

TEST_F(PageWriter, FormFeedInsideAPieceButNotLastEndsNothing) {
  EXPECT_EQ(output_of([] {
              put("\fA");
              put("B\fC");
            }),
            "");
  EXPECT_EQ(output_of([] { put("\f"); }), kFirstHeader + block('2', "\fAB\fC\f"));
}

TEST_F(PageWriter, LastByteThatIsDataOfASequenceEndsThePageAsWell) {
  const std::string sequence = bytes("\x1b\x7f\x00\x00\x01\x0c");
  EXPECT_EQ(output_of([&] { put(sequence); }), kFirstHeader + block('2', sequence));
}

TEST_F(PageWriter, FormFeedPieceOfAnyLengthBehindAnyFilledBuffer) {
  for (const std::size_t gathered : {std::size_t{0}, std::size_t{1}, kRoom - 1, kRoom}) {
    for (const std::size_t length : {std::size_t{1}, std::size_t{2}, kRoom, 2 * kRoom}) {
      reset_filter();
      std::string text = pattern(gathered + length);
      text.back() = '\f';
      const std::string caught = output_of([&] {
        put(text.substr(0, gathered));
        put(text.substr(gathered));
      });
      EXPECT_EQ(caught, kFirstHeader + block('2', text)) << gathered << '+' << length;
    }
  }
}

TEST_F(PageWriter, FormFeedPieceOfAContinuedPageMakesAFurtherBlock) {
  const std::string text = pattern(kRoom);
  EXPECT_EQ(output_of([&] {
              put(text);
              put("A");
              put("B\f");
              put("C\f");
            }),
            kFirstHeader + block('2', text) + block('0', "AB\f") + kNextHeader + block('2', "C\f"));
}

TEST_F(PageWriter, PageEndClearsTheContentFlagButNotTheJobsStart) {
  the_filter().job.page_has_content = 1;
  output_of([] { put("A\f"); });
  EXPECT_EQ(the_filter().job.page_has_content, 0);
  EXPECT_EQ(the_filter().job.job_started, 1);
}

TEST_F(PageWriter, FullBlockLeavesTheContentFlag) {
  the_filter().job.page_has_content = 1;
  output_of([] {
    put(pattern(kRoom));
    put("A");
  });
  EXPECT_EQ(the_filter().job.page_has_content, 1);
}

TEST_F(PageWriter, CarriedSettingsFollowEachBlock) {
  const std::string text = pattern(kRoom);
  const std::string size = "\x1bQ1 y";
  const std::string set = "\x1b$@";
  const std::string caught = output_of([&] {
    keep(CMD_Q_YL_SP, size);
    put(text);
    put("A");
    keep(CMD_ESC_DOLLAR_AT, set);
    put(text);
    put("B");
    put("\f");
    keep(CMD_Q_YL_SP, size);
    keep(CMD_ESC_DOLLAR_AT, set);
    put("C\f");
  });
  EXPECT_EQ(caught, kFirstHeader + block('2', text) + block('6', size) + block('0', "A") +
                        block('6', set) + block('0', text) + block('0', "B\f") + kNextHeader +
                        block('2', "C\f") + block('6', set + size));
}

TEST_F(PageWriter, OversizePieceIsNeitherLostNorWrittenBehindTheBuffer) {
  for (const std::size_t gathered : {std::size_t{0}, std::size_t{5}, kRoom}) {
    for (const std::size_t length : {kRoom + 1, kRoom + 2, 2 * kRoom, 2 * kRoom + 1, 5 * kRoom}) {
      reset_filter();
      const std::string text = pattern(gathered + length);
      const DataBlocks blocks = data_blocks(output_of([&] {
        put(text.substr(0, gathered));
        put(text.substr(gathered));
        put("Z\f");
      }));
      EXPECT_TRUE(blocks.data == text + "Z\f") << gathered << '+' << length;
      EXPECT_EQ(blocks.kinds, '2' + std::string(blocks.kinds.size() - 1, '0'));
    }
  }
}

TEST_F(PageWriter, SinkIsThePageBuffer) {
  put("AB");
  const PieceSink sink = page_sink(the_filter().page);
  EXPECT_EQ(sink.capacity, kPageBufferBytes);
  ASSERT_EQ(*sink.length, 2);
  sink.bytes[2] = 'C';
  *sink.length = 3;
  EXPECT_EQ(output_of([] { put("\f"); }), kFirstHeader + block('2', "ABC\f"));
  EXPECT_EQ(*page_sink(the_filter().page).length, 0);
}

TEST_F(PageWriter, CutOfTheSinkWritesWhatIsGatheredAndTheCarriedSettings) {
  put("AB");
  keep(CMD_Q_YL_SP, "\x1bQ1 y");
  EXPECT_EQ(output_of([] { page_sink(the_filter().page).cut(); }),
            kFirstHeader + block('2', "AB") + block('6', "\x1bQ1 y"));
  EXPECT_EQ(*page_sink(the_filter().page).length, 0);
  put("C");
  EXPECT_EQ(output_of([] { page_sink(the_filter().page).cut(); }), block('0', "C"));
}

TEST_F(PageWriter, FinishedPageLeavesBeforeTheFilterWaits) {
  const CaptureDescriptor output(1);
  put("A");
  flush_finished_pages(the_filter().writer);
  EXPECT_EQ(output.text(), "");
  put("\f");
  flush_finished_pages(the_filter().writer);
  EXPECT_EQ(output.text(), kFirstHeader + block('2', "A\f"));
}

TEST_F(PageWriter, BlockInsideAPageDoesNotLeaveBeforeTheFilterWaits) {
  const CaptureDescriptor output(1);
  put(pattern(kRoom));
  put("A");
  flush_finished_pages(the_filter().writer);
  EXPECT_EQ(output.text(), "");
}

TEST_F(PageWriter, BuffersCanBeFreedTwiceAndAllocatedAgain) {
  free_page_buffers(the_filter().page);
  free_page_buffers(the_filter().page);
  ASSERT_EQ(allocate_page_buffers(the_filter().page), 0);
  EXPECT_EQ(output_of([] { put("A\f"); }), kFirstHeader + block('2', "A\f"));
}

TEST_F(PageWriterDeathTest, PageThatCannotBeWrittenIsAWriteError) {
  EXPECT_EXIT(
      {
        close(1);
        const std::string text = pattern(kRoom);
        for (std::size_t pages = 0; pages <= kOutputBufferBytes / kRoom; ++pages) {
          put(text + "\f");
        }
        _exit(0);
      },
      ::testing::ExitedWithCode(1), "^write error$");
}

}  // namespace
}  // namespace rlx::testing
