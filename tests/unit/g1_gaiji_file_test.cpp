#include "fonts/g1_gaiji_file.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <string>

#include "job/fixed_paths.h"
#include "job/settings.h"
#include "support/descriptors.h"
#include "support/odd_files.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::restart_settings;
using testing::the_filter;

using testing::bytes;

using CodeBytes = std::array<std::uint8_t, 2>;

constexpr const char* kFileError = "filter: g1gaiji file error\n";
constexpr const char* kCodeError = "filter: g1gaiji code error\n";

class G1GaijiFileTest : public ::testing::Test {
 protected:
  G1GaijiFileTest() { the_filter().messages.program_name = "filter"; }
  ~G1GaijiFileTest() override { restart_settings(); }

  /// Loads the range, over an old one.
  void load() {
    range_ = {1, {0x11, 0x22}, {0x33, 0x44}};
    const testing::CaptureDescriptor standard_error(STDERR_FILENO);
    status_ = g1gaiji_load(the_filter().messages, range_);
    message_ = standard_error.text();
  }

  /// Nothing is forbidden to the superuser, who may be the one that runs the tests.
  void load_as_ordinary_user() {
    constexpr uid_t kNobody = 65534;
    const uid_t user = geteuid();
    std::filesystem::permissions(".", std::filesystem::perms{0755});
    ASSERT_TRUE(user != 0 || seteuid(kNobody) == 0);
    load();
    ASSERT_EQ(seteuid(user), 0);
  }

  void load_file(const std::string& content) {
    testing::write_file(fixed_paths::kG1GaijiFile, content);
    load();
  }

  void expect_range(CodeBytes first, CodeBytes last) {
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(range_.valid, 1);
    EXPECT_EQ(range_.first, first);
    EXPECT_EQ(range_.last, last);
    EXPECT_EQ(message_, "");
  }

  void expect_no_range() {
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(range_.valid, 0);
    EXPECT_EQ(message_, "");
  }

  void expect_error(const std::string& message) {
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(range_.valid, 0);
    EXPECT_EQ(message_, message);
  }

  testing::ScratchDirectory scratch_;
  G1GaijiRange range_;
  Status status_{-1};
  std::string message_;
};

TEST_F(G1GaijiFileTest, NoFileDeclaresNoRange) {
  load();
  expect_no_range();
}

TEST_F(G1GaijiFileTest, NoFolderDeclaresNoRange) {
  std::filesystem::create_directories("sandbox");
  load();
  expect_no_range();
}

TEST_F(G1GaijiFileTest, AnEmptyFileDeclaresNoRange) {
  load_file("");
  expect_no_range();
}

TEST_F(G1GaijiFileTest, AFileInPlaceOfTheFolderIsAFileError) {
  testing::write_file(std::filesystem::path(fixed_paths::kG1GaijiFile).parent_path(), "");
  load();
  expect_error(kFileError);
}

TEST_F(G1GaijiFileTest, ADirectoryInPlaceOfTheFileIsAFileError) {
  std::filesystem::create_directories(fixed_paths::kG1GaijiFile);
  load();
  expect_error(kFileError);
}

TEST_F(G1GaijiFileTest, WhatIsNoRegularFileIsAFileError) {
  testing::for_each_odd_file(fixed_paths::kG1GaijiFile, [this] {
    load();
    expect_error(kFileError);
  });
}

TEST_F(G1GaijiFileTest, AFileThatCannotBeOpenedIsAFileError) {
  // A socket can be opened by nobody, not even by the superuser.
  std::filesystem::create_directories(
      std::filesystem::path(fixed_paths::kG1GaijiFile).parent_path());
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, fixed_paths::kG1GaijiFile, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  load();
  close(descriptor);
  expect_error(kFileError);
}

TEST_F(G1GaijiFileTest, AFileWithoutReadPermissionIsAFileError) {
  testing::write_file(fixed_paths::kG1GaijiFile, "F5A1-FEFE\n");
  std::filesystem::permissions(fixed_paths::kG1GaijiFile, std::filesystem::perms::none);
  load_as_ordinary_user();
  expect_error(kFileError);
}

TEST_F(G1GaijiFileTest, AFolderWithoutSearchPermissionIsAFileError) {
  testing::write_file(fixed_paths::kG1GaijiFile, "F5A1-FEFE\n");
  const auto folder = std::filesystem::path(fixed_paths::kG1GaijiFile).parent_path();
  std::filesystem::permissions(folder, std::filesystem::perms::none);
  load_as_ordinary_user();
  std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
  expect_error(kFileError);
}

struct AcceptedLine {
  std::string content;
  CodeBytes first;
  CodeBytes last;
};

TEST_F(G1GaijiFileTest, AcceptedLines) {
  const std::string blanks(501, ' ');
  const std::array accepted{
      AcceptedLine{"F5A1-FEFE\n", {0xF5, 0xA1}, {0xFE, 0xFE}},
      AcceptedLine{"f5a1-fefe\n", {0xF5, 0xA1}, {0xFE, 0xFE}},
      AcceptedLine{"F4A7-FEFE\n", {0xF4, 0xA7}, {0xFE, 0xFE}},  // the widest range
      AcceptedLine{"F5B2-F5B2\n", {0xF5, 0xB2}, {0xF5, 0xB2}},  // one code
      AcceptedLine{"F6FE-F7A1\n", {0xF6, 0xFE}, {0xF7, 0xA1}},
      AcceptedLine{"0xF5A1-0XFEFE\n", {0xF5, 0xA1}, {0xFE, 0xFE}},
      AcceptedLine{"+F5A1-+FEFE\n", {0xF5, 0xA1}, {0xFE, 0xFE}},
      AcceptedLine{" \t F5A1- \t+0xFEFE\n", {0xF5, 0xA1}, {0xFE, 0xFE}},
      AcceptedLine{"00000000000000000000F5A1-0FEFE\n", {0xF5, 0xA1}, {0xFE, 0xFE}},
      // Minus signs are read like any sign: these two numbers wrap around to codes.
      AcceptedLine{"-FFFFFFFFFFFF0A5F-FEFE\n", {0xF5, 0xA1}, {0xFE, 0xFE}},
      AcceptedLine{"F5A1--FFFFFFFFFFFF0102\n", {0xF5, 0xA1}, {0xFE, 0xFE}},
      AcceptedLine{"F5A1-FEFE\nF5A1-F5A0\n", {0xF5, 0xA1}, {0xFE, 0xFE}},  // second line ignored
      AcceptedLine{"F5A1-FEFE\n\n", {0xF5, 0xA1}, {0xFE, 0xFE}},
      AcceptedLine{bytes("F5A1-FEFE\n\0\xff"), {0xF5, 0xA1}, {0xFE, 0xFE}},
      AcceptedLine{blanks + "F5A1-FEFE\n", {0xF5, 0xA1}, {0xFE, 0xFE}},  // 511 bytes with LF
  };
  for (const AcceptedLine& line : accepted) {
    SCOPED_TRACE(line.content);
    load_file(line.content);
    expect_range(line.first, line.last);
  }
}

TEST_F(G1GaijiFileTest, RefusedLines) {
  const std::string blanks(502, ' ');
  const std::array refused{
      std::string("F5A1-FEFE"),  // no LF
      std::string("F5A1-FEFE\r\n"),
      std::string("F5A1-FEFE \n"),
      std::string("F5A1 -FEFE\n"),
      std::string("F5A1-FEFE;\n"),
      std::string("F5A1:FEFE\n"),
      std::string("F5A1FEFE\n"),
      std::string("F5A1\n"),
      std::string("F5A1-\n"),
      std::string("F5A1"),
      std::string("-FEFE\n"),
      std::string("-\n"),
      std::string("\n"),
      std::string("\nF5A1-FEFE\n"),
      std::string("F5A1-\nFEFE\n"),
      std::string("x\n"),
      std::string("0x-FEFE\n"),
      std::string("G5A1-FEFE\n"),
      std::string("F5A1-FEFG\n"),
      std::string("- F5A1-FEFE\n"),
      std::string("+-F5A1-FEFE\n"),
      std::string("-F5A1-FEFE\n"),  // a negative code
      std::string("F5A1--FEFE\n"),
      std::string("FEFE-F5A1\n"),  // first above last
      std::string("F5B2-F5B1\n"),
      std::string("F4A6-FEFE\n"),  // below the lowest code
      std::string("F4A0-FEFE\n"),
      std::string("F3FE-FEFE\n"),
      std::string("F5A0-FEFE\n"),  // low byte below its lowest
      std::string("F5FF-FEFE\n"),  // low byte above its highest
      std::string("F500-FEFE\n"),
      std::string("F5A1-F6A0\n"),
      std::string("F5A1-F6FF\n"),
      std::string("F5A1-FEFF\n"),  // above the highest code
      std::string("F5A1-FFA1\n"),
      std::string("F5A1-1F5A1\n"),  // above 16 bits
      std::string("1F5A1-FEFE\n"),
      std::string("10000F5A1-FEFE\n"),
      std::string("1000000000000F5A1-FEFE\n"),
      std::string("FFFFFFFFFFFFFFFFFFFF-FEFE\n"),
      bytes("F5A1\0-FEFE\n"),
      bytes("F5A1-FEFE\0\n"),
      bytes("\0"),
      blanks + "F5A1-FEFE\n",  // the LF is the 512th byte
      std::string(511, ' ') + "F5A1-FEFE\n",
      std::string(2000, 'F') + "\n",
  };
  for (const std::string& content : refused) {
    SCOPED_TRACE(content);
    load_file(content);
    expect_error(kCodeError);
  }
}

TEST_F(G1GaijiFileTest, LowBytesAndHighBytesAreSweptAtTheirBorders) {
  for (unsigned code = 0xF300; code <= 0xFFFF; ++code) {
    const unsigned low_byte = code & 0xFF;
    const bool acceptable =
        code >= 0xF4A7 && code <= 0xFEFE && low_byte >= 0xA1 && low_byte <= 0xFE;
    const bool near_border =
        low_byte <= 1 || (low_byte >= 0xA0 && low_byte <= 0xA8) || low_byte >= 0xFD;
    if (!near_border) {
      continue;
    }
    std::array<char, 16> line{};
    std::snprintf(line.data(), line.size(), "%X-%X\n", code, code);
    SCOPED_TRACE(line.data());
    load_file(line.data());
    if (acceptable) {
      const CodeBytes both{static_cast<std::uint8_t>(code >> 8),
                           static_cast<std::uint8_t>(low_byte)};
      expect_range(both, both);
    } else {
      expect_error(kCodeError);
    }
  }
}

}  // namespace
}  // namespace rlx
