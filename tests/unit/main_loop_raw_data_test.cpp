// Data that follows a command in the input and is copied byte by byte.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "driver/loop/loop_state.h"
#include "job/settings.h"
#include "support/descriptors.h"
#include "support/input_stream.h"
#include "support/main_loop_fixture.h"
#include "support/page_data.h"
#include "support/record_builder.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::bytes;
using testing::CaptureDescriptor;
using testing::cnt_frame;
using testing::end_frame;
using testing::FailingInput;
using testing::job_pages;
using testing::JobResult;
using testing::kFramedReset;
using testing::kStartConditions;
using testing::pattern;
using testing::Routed;
using testing::run_job;
using testing::StandardInput;

class MainLoopRawData : public testing::MainLoopTest {
 protected:
  static Routed route_with_pending(std::uint32_t pending) {
    the_filter().loop.record = testing::make_record(CMD_Q_AL_EX, "\x1bQ!a");
    the_filter().loop.record.pending = pending;
    return route_again();
  }
};

std::string image(std::string_view data) {
  return "\x1bQ1;" + std::to_string(data.size()) + "!a" + std::string(data);
}

/// The data of frames, with the count and kind of each in front of it when `with_headers`.
std::string frame_data(std::string_view frames) {
  std::string data;
  while (frames.size() >= 16) {
    const std::size_t count = std::stoul(std::string(frames.substr(0, 4)));
    data += frames.substr(16, count);
    frames.remove_prefix(16 + count);
  }
  EXPECT_EQ(frames, "");
  return data;
}

// Pending data

TEST_F(MainLoopRawData, PendingBytesAreCopiedAndNotOneMore) {
  for (std::uint32_t pending = 0; pending <= 5; ++pending) {
    const StandardInput input("abcdefgh");
    restart();
    const Routed routed = route_with_pending(pending);
    EXPECT_TRUE(routed.goes_on);
    EXPECT_EQ(routed.data, "\x1bQ!a" + std::string("abcde").substr(0, pending));
    EXPECT_EQ(testing::rest_of_input(), std::string("abcdefgh").substr(pending));
  }
}

TEST_F(MainLoopRawData, EndOfInputInPendingDataEndsTheJobWithStatus0) {
  for (std::size_t there = 0; there <= 5; ++there) {
    const StandardInput input(std::string("abcde").substr(0, there));
    restart();
    const Routed routed = route_with_pending(5);
    EXPECT_EQ(routed.goes_on, there == 5);
    EXPECT_EQ(the_filter().loop.status, 0);
    EXPECT_EQ(routed.data, "\x1bQ!a" + std::string("abcde").substr(0, there));
  }
}

TEST_F(MainLoopRawData, ReadErrorInPendingDataEndsTheJobWith129BehindWhatWasRead) {
  const FailingInput input("A\x1bQ1;5000!axyz");
  const JobResult result = testing::run_job_from_current_input({});
  EXPECT_EQ(result.status, 129);
  EXPECT_EQ(result.messages, "filter: Connection reset by peer\n");
  EXPECT_EQ(job_pages(result), kStartConditions + "A\x1bQ1;5000!axyz\x0c|");
}

TEST_F(MainLoopRawData, EachFormFeedInPendingDataEndsAPage) {
  const StandardInput input(
      "a\x0c\x0c"
      "b\x0c"
      "c");
  const Routed routed = route_with_pending(6);
  EXPECT_EQ(routed.data,
            "\x1bQ!a"
            "a\x0c\x0c"
            "b\x0c"
            "c");
  EXPECT_EQ(routed.pages, 3);
}

TEST_F(MainLoopRawData, DataBehindARecordThatIsFullIsCopiedLikeDataInIt) {
  // Ten bytes stand before the data: 4086 bytes of it still fit.
  for (const std::size_t size :
       {4085U, 4086U, 4087U, 8181U, 8182U, 8183U, 65535U, 65536U, 65537U, 200000U}) {
    const std::string data = pattern(size);
    EXPECT_TRUE(job_pages(run_job({}, "A" + image(data) + "B")) ==
                kStartConditions + "A" + image(data) + "B\x0c|")
        << size;
  }
}

TEST_F(MainLoopRawData, FormFeedInDataEndsThePageOnlyWhereItIsAPieceOfItsOwn) {
  std::string data(4086, 'x');
  data[100] = '\x0c';
  const std::string short_job = run_job({}, image(data) + "B").output;
  EXPECT_EQ(testing::data_blocks(short_job.substr(0, short_job.size() - 24)).kinds, "20");
  data += 'x';
  const std::string long_job = run_job({}, image(data) + "B").output;
  EXPECT_EQ(testing::data_blocks(long_job.substr(0, long_job.size() - 24)).kinds, "220");
}

TEST_F(MainLoopRawData, BlocksAreFilledToTheLastByteBySingleBytes) {
  // -q: the page begins with the command, eleven bytes.
  const std::string data = pattern(8181 + 8192 + 1);
  const std::string output = run_job({"-q"}, image(data)).output;
  const std::string written = image(data);
  EXPECT_NE(output.find("\x1bQ2;0000008204/a"), std::string::npos);
  EXPECT_NE(output.find("\x1bQ0;0000008204/a"), std::string::npos);
  EXPECT_EQ(job_pages({0, output, ""}), written + "\x0c|");
}

TEST_F(MainLoopRawData, FramedDataIsCutIntoFullFrames) {
  const std::string data = pattern(9000);
  const std::string sent = kFramedReset + image(data);
  EXPECT_EQ(run_job({"-d"}, end_frame(image(data))).output, cnt_frame(sent.substr(0, 4096)) +
                                                                cnt_frame(sent.substr(4096, 4096)) +
                                                                end_frame(sent.substr(8192)));
}

TEST_F(MainLoopRawData, FramedDataCrossesFramesAtEveryPlace) {
  const std::string data = pattern(4090);
  const std::string job = image(data) + "\x0c";
  for (std::size_t cut = 1; cut < job.size(); cut += cut < 20 || cut > 4080 ? 1 : 97) {
    const JobResult result =
        run_job({"-d"}, cnt_frame(job.substr(0, cut)) + end_frame(job.substr(cut)));
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(frame_data(result.output) == kFramedReset + job) << cut;
  }
}

TEST_F(MainLoopRawData, EndOfTheEndFrameInPendingDataEndsTheJobWithStatus0) {
  const JobResult result = run_job({"-d"}, end_frame("\x1bQ1;5000!axyz"));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, end_frame(kFramedReset + "\x1bQ1;5000!axyz"));
}

// Download data of command 499

const std::string kDownload = "\x1bQ1!X";
const std::string kOneUnit = bytes("\1") + std::string(68, 'd') + bytes("\0");

TEST_F(MainLoopRawData, DownloadDataIsCopiedUpToAZeroCount) {
  const std::string unit3 = bytes("\3") + std::string(196, 'e');
  for (const std::string& data : {bytes("\0"), kOneUnit, unit3 + kOneUnit}) {
    const StandardInput input(data + "REST");
    restart();
    const Routed routed = route(CMD_DOWNLOAD_499, kDownload);
    EXPECT_TRUE(routed.goes_on);
    EXPECT_EQ(routed.data, kDownload + data);
    EXPECT_EQ(testing::rest_of_input(), "REST");
  }
}

TEST_F(MainLoopRawData, ZerosInTheUnitsOfDownloadDataAreData) {
  const std::string data = bytes("\1") + std::string(68, '\0') + kOneUnit;
  const StandardInput input(data + "REST");
  EXPECT_EQ(route(CMD_DOWNLOAD_499, kDownload).data, kDownload + data);
  EXPECT_EQ(testing::rest_of_input(), "REST");
}

TEST_F(MainLoopRawData, LargestDownloadCrossesBlocksAndBuffers) {
  const std::string unit = bytes("\xff") + pattern(255 * 64 + 4);
  std::string data;
  for (int i = 0; i < 9; ++i) {
    data += unit;
  }
  data += bytes("\0");
  const StandardInput input(data + "R");
  EXPECT_TRUE(route(CMD_DOWNLOAD_499, kDownload).data == kDownload + data);
  EXPECT_EQ(testing::rest_of_input(), "R");
}

TEST_F(MainLoopRawData, EndOfInputAnywhereInDownloadDataEndsTheJobWithStatus0) {
  const std::string data = kOneUnit.substr(0, 69) + kOneUnit;
  for (std::size_t there = 0; there <= data.size(); ++there) {
    const StandardInput input(data.substr(0, there));
    restart();
    const Routed routed = route(CMD_DOWNLOAD_499, kDownload);
    EXPECT_EQ(routed.goes_on, there == data.size()) << there;
    EXPECT_EQ(the_filter().loop.status, 0) << there;
    EXPECT_EQ(routed.data, kDownload + data.substr(0, there)) << there;
  }
}

TEST_F(MainLoopRawData, ReadErrorInDownloadDataIsTheStatus) {
  for (const std::string& data : {bytes(""), bytes("\1"), bytes("\1abc"), kOneUnit.substr(0, 69)}) {
    const FailingInput input(data);
    restart();
    const CaptureDescriptor messages(2);
    const Routed routed = route(CMD_DOWNLOAD_499, kDownload);
    EXPECT_FALSE(routed.goes_on);
    EXPECT_EQ(the_filter().loop.status, 129);
    EXPECT_EQ(routed.data, kDownload + data);
    EXPECT_EQ(messages.text(), "filter: Connection reset by peer\n");
  }
}

TEST_F(MainLoopRawData, FormFeedsInDownloadDataEndPages) {
  // 12 as a count is a form feed too.
  std::string data = bytes("\x0c") + std::string(12 * 64 + 4, 'd') + bytes("\0");
  data[5] = '\x0c';
  const StandardInput input(data);
  const Routed routed = route(CMD_DOWNLOAD_499, kDownload);
  EXPECT_EQ(routed.data, kDownload + data);
  EXPECT_EQ(routed.pages, 2);
}

TEST_F(MainLoopRawData, PendingDataComesBeforeDownloadData) {
  const StandardInput input("pq" + kOneUnit + "R");
  the_filter().loop.record = testing::make_record(CMD_DOWNLOAD_499, kDownload);
  the_filter().loop.record.pending = 2;
  EXPECT_EQ(route_again().data, kDownload + "pq" + kOneUnit);
  EXPECT_EQ(testing::rest_of_input(), "R");
}

TEST_F(MainLoopRawData, FramedDownloadDataCrossesFramesAtEveryPlace) {
  for (std::size_t cut = 0; cut < kOneUnit.size(); ++cut) {
    const std::string first = kOneUnit.substr(0, cut);
    const StandardInput input(end_frame(kOneUnit.substr(cut) + "R"));
    restart();
    open_frame(false, first);
    const CaptureDescriptor frames(1);
    EXPECT_TRUE(pass(CMD_DOWNLOAD_499, kDownload));
    // What the first frame held leaves with it; the rest waits for the end of the second.
    const std::string expected = cut == 0 ? cnt_frame(kDownload) : cnt_frame(kDownload + first);
    EXPECT_EQ(frames.text(), expected) << cut;
    EXPECT_EQ(gathered_frame(), kOneUnit.substr(cut)) << cut;
    EXPECT_EQ(testing::rest_of_input(), "R") << cut;
  }
}

TEST_F(MainLoopRawData, EndOfTheEndFrameInDownloadDataEndsTheJobWithStatus0) {
  for (std::size_t there = 0; there < kOneUnit.size(); ++there) {
    const StandardInput input("");
    restart();
    const std::string data = kOneUnit.substr(0, there);
    open_frame(true, data);
    const CaptureDescriptor frames(1);
    EXPECT_FALSE(pass(CMD_DOWNLOAD_499, kDownload)) << there;
    EXPECT_EQ(the_filter().loop.status, 0) << there;
    EXPECT_EQ(frames.text(), end_frame(kDownload + data)) << there;
  }
}

}  // namespace
}  // namespace rlx
