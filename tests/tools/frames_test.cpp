#include <gtest/gtest.h>

#include "rlx_reader/frame_reader.h"
#include "rlx_reader/job_reader.h"
#include "tools/sample_streams.h"

namespace rlx::testing {
namespace {

/// Reads what must not lose a byte.
FoundJob read_frames(const std::string& stream) {
  FoundJob found = read_job(stream);
  EXPECT_EQ(found.misdeed, "");
  EXPECT_TRUE(found.rebuilt == stream);
  return found;
}

TEST(Frames, AreRecognised) {
  EXPECT_TRUE(reader::is_framed(reader_bytes(rlx_frame("A", true))));
  EXPECT_TRUE(reader::is_framed(reader_bytes(rlx_frame("", false))));
  EXPECT_FALSE(reader::is_framed(reader_bytes(job_of_two_pages())));
  const std::string header = rlx_frame("", true);
  for (std::size_t at = 0; at < header.size(); ++at) {
    std::string changed = header;
    changed[at] = 'x';
    EXPECT_FALSE(reader::is_framed(reader_bytes(changed))) << at;
    EXPECT_FALSE(reader::is_framed(reader_bytes(header.substr(0, at)))) << at;
  }
}

TEST(Frames, HaveAHeaderThatIsGivenBack) {
  for (const std::string& header : {rlx_frame("", true), rlx_frame("", false, 9999)}) {
    EXPECT_EQ(header_bytes(*reader::parse_frame(reader_bytes(header))), header);
  }
}

TEST(Frames, AreUnwrapped) {
  const FoundJob found = read_frames(rlx_frame("AB\n", false) + rlx_frame("", false) +
                                     rlx_frame("C\f", true) + rlx_frame("", true));
  EXPECT_EQ(shown_faults(found), "");
  ASSERT_EQ(found.frames.size(), 4U);
  EXPECT_EQ(found.frames[0].data, "AB\n");
  EXPECT_FALSE(found.frames[0].frame.last);
  EXPECT_EQ(found.frames[2].data, "C\f");
  EXPECT_EQ(found.frames[2].frame.offset, 35U);
  EXPECT_TRUE(found.frames[2].frame.last);
}

TEST(Frames, OfTheLargestCountAreWhole) {
  const FoundJob found = read_frames(rlx_frame(std::string(9999, 'x'), true));
  EXPECT_EQ(shown_faults(found), "");
}

TEST(Frames, EndWithAnEndFrame) {
  EXPECT_EQ(shown_faults(read_frames(rlx_frame("AB", false))), "18: no END frame\n");
  EXPECT_EQ(shown_faults(read_frames(rlx_frame("A", true) + rlx_frame("AB", false))),
            "35: no END frame\n");
}

TEST(Frames, ThatAreCutAreTold) {
  const std::string first = rlx_frame("AB\n", false);
  const std::string stream = first + rlx_frame("CDE\f", true);
  for (std::size_t length = first.size() + 1; length < stream.size(); ++length) {
    const FoundJob found = read_frames(stream.substr(0, length));
    const std::size_t there = length - first.size();
    const std::string expected =
        there < 16 ? "truncated frame: " + std::to_string(there) + " of 16 bytes of its header"
                   : "truncated frame: " + std::to_string(there - 16) + " of 4 bytes of data";
    EXPECT_EQ(shown_faults(found), "19: " + expected + "\n");
  }
}

TEST(Frames, AreTheOnlyThingInTheirStream) {
  const std::string junk(100000, 'x');
  const FoundJob found = read_frames(rlx_frame("AB\n", false) + junk + rlx_frame("C", true));
  EXPECT_EQ(shown_faults(found), "19: no frame header\n");
  EXPECT_EQ(found.frames.size(), 1U);
}

TEST(Frames, WithAWrongCountEndWhereTheNextHeaderIsNone) {
  const FoundJob found = read_frames(rlx_frame("AB\n", false, -1) + rlx_frame("C", true));
  EXPECT_EQ(shown_faults(found), "18: no frame header\n");
}

TEST(Frames, EndWhereAJobIsPassedThrough) {
  const std::string frame = rlx_frame("AB\n", false);
  const FoundJob found = read_frames(frame + job_of_two_pages());
  EXPECT_EQ(shown_faults(found), "");
  EXPECT_EQ(found.frames.size(), 1U);
  EXPECT_EQ(found.blocks.size(), 12U);
  EXPECT_EQ(found.blocks[0].block.offset, frame.size());
}

}  // namespace
}  // namespace rlx::testing
