#include "output/block.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>

#include "support/filter_state.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

class Block : public FilterTest {
 protected:
  static std::string header(BlockKind kind, std::int32_t payload) {
    return output_of([&] { out_block_header(the_filter().writer, kind, payload); });
  }
};

TEST_F(Block, HeaderOfEachKind) {
  EXPECT_EQ(header(BlockKind::data, 0), "\x1bQ0;0000000012/a");
  EXPECT_EQ(header(BlockKind::first_data, 0), "\x1bQ2;0000000012/a");
  EXPECT_EQ(header(BlockKind::carried, 0), "\x1bQ6;0000000012/a");
  EXPECT_EQ(header(BlockKind::page_format, 0), "\x1bQ7;0000000012/a");
  EXPECT_EQ(header(BlockKind::density, 0), "\x1bQ8;0000000012/a");
  EXPECT_EQ(header(BlockKind::page_setup, 0), "\x1bQ9;0000000012/a");
}

TEST_F(Block, CountIsThePayloadAnd12InTenDigits) {
  struct Row {
    std::int32_t payload;
    const char* count;
  };
  constexpr std::array kRows{
      Row{0, "0000000012"},         Row{1, "0000000013"},         Row{87, "0000000099"},
      Row{88, "0000000100"},        Row{987, "0000000999"},       Row{988, "0000001000"},
      Row{8100, "0000008112"},      Row{8192, "0000008204"},      Row{9987, "0000009999"},
      Row{9988, "0000010000"},      Row{99987, "0000099999"},     Row{99988, "0000100000"},
      Row{999987, "0000999999"},    Row{999988, "0001000000"},    Row{9999987, "0009999999"},
      Row{9999988, "0010000000"},   Row{99999987, "0099999999"},  Row{99999988, "0100000000"},
      Row{999999987, "0999999999"}, Row{999999988, "1000000000"}, Row{2147483635, "2147483647"},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(header(BlockKind::first_data, row.payload), std::string("\x1bQ2;") + row.count + "/a")
        << row.payload;
  }
}

TEST_F(Block, EveryCountUpToTwoFullPageBuffers) {
  for (std::int32_t payload = 0; payload <= 16384; ++payload) {
    const std::string expected =
        "\x1bQ0;" + ten_digits(static_cast<std::size_t>(payload) + 12) + "/a";
    ASSERT_EQ(header(BlockKind::data, payload), expected);
  }
}

TEST_F(Block, WholeBlockIsHeaderAndPayload) {
  const std::string payload = bytes("\x1b(H\x00\xff");
  EXPECT_EQ(output_of([&] {
              out_block(the_filter().writer, BlockKind::carried, bytes_of(payload).first(5));
            }),
            bytes("\x1bQ6;0000000017/a\x1b(H\x00\xff"));
}

TEST_F(Block, JobParameterBlockCountsItsTextAlone) {
  const std::string text = "%%%=Pji,0101,UNIC\nEMU=RLX\nDCH=240\nMAK=UNIX\n";
  EXPECT_EQ(output_of([&] { out_job_parameter_block(the_filter().writer, bytes_of(text)); }),
            "\x1bQ0;0000000043/`" + text);
  EXPECT_EQ(output_of([&] { out_job_parameter_block(the_filter().writer, bytes_of("A")); }),
            "\x1bQ0;0000000001/`A");
}

}  // namespace
}  // namespace rlx::testing
