#include "support/hex_dump.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>

#include "support/descriptors.h"

namespace rlx {
namespace {

using testing::CaptureDescriptor;

/// A dump of the bytes 0, 1, 2 ... to standard output.
std::string dump_of(std::size_t length) {
  std::array<std::uint8_t, 64> bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(i);
  }
  const CaptureDescriptor out(STDOUT_FILENO);
  hex_dump(nullptr, Bytes(bytes).first(length));
  return out.text();
}

TEST(HexDump, NoBytesAreJustANewline) {
  EXPECT_EQ(dump_of(0), "\n");
  const CaptureDescriptor out(STDOUT_FILENO);
  hex_dump(nullptr, Bytes());
  EXPECT_EQ(out.text(), "\n");
}

TEST(HexDump, BytesInGroupsOfFour) {
  EXPECT_EQ(dump_of(1), "00000000  00\n");
  EXPECT_EQ(dump_of(3), "00000000  000102\n");
  EXPECT_EQ(dump_of(4), "00000000  00010203 \n");
  EXPECT_EQ(dump_of(5), "00000000  00010203 04\n");
  EXPECT_EQ(dump_of(8), "00000000  00010203 04050607 \n");
  EXPECT_EQ(dump_of(12), "00000000  00010203 04050607 08090a0b \n");
  EXPECT_EQ(dump_of(15), "00000000  00010203 04050607 08090a0b 0c0d0e\n");
}

TEST(HexDump, FullRowEndsWithAnEmptyLine) {
  EXPECT_EQ(dump_of(16), "00000000  00010203 04050607 08090a0b 0c0d0e0f\n\n");
}

TEST(HexDump, RowsAreHeadedByTheirOffset) {
  EXPECT_EQ(dump_of(17),
            "00000000  00010203 04050607 08090a0b 0c0d0e0f\n"
            "00000010  10\n");
  EXPECT_EQ(dump_of(32),
            "00000000  00010203 04050607 08090a0b 0c0d0e0f\n"
            "00000010  10111213 14151617 18191a1b 1c1d1e1f\n\n");
}

TEST(HexDump, HighBytesAreTwoDigits) {
  const std::array<std::uint8_t, 3> bytes{0xff, 0x80, 0x7f};
  const CaptureDescriptor out(STDOUT_FILENO);
  hex_dump(nullptr, bytes);
  EXPECT_EQ(out.text(), "00000000  ff807f\n");
}

TEST(HexDump, GoesToTheStreamThatIsGiven) {
  const std::array<std::uint8_t, 1> bytes{0x41};
  const CaptureDescriptor out(STDOUT_FILENO);
  const CaptureDescriptor error(STDERR_FILENO);
  hex_dump(stderr, bytes);
  EXPECT_EQ(error.text(), "00000000  41\n");
  EXPECT_EQ(out.text(), "");
}

}  // namespace
}  // namespace rlx
