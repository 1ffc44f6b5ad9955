// What fcb_read tells of a form that it refuses, and of one that it takes.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "forms/fcb.h"
#include "support/descriptors.h"
#include "support/odd_files.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

/// A fault as the tests write it.
struct ExpectedFault {
  FcbWrong wrong = FcbWrong::nothing;
  std::size_t line = 0;
  std::string word{};
  std::int64_t value = 0;
  std::int64_t limit = 0;
};

class FcbFaults : public ::testing::Test {
 protected:
  FcbFaults() { testing::the_filter().environment = {}; }
  ~FcbFaults() override {
    testing::restart_settings();
    testing::the_filter().environment = {};
  }

  /// Reads a form; the status says whether there is a fault, and nothing is printed.
  const FcbFault& read_path(const std::string& path) {
    const testing::CaptureDescriptor error(STDERR_FILENO);
    const Status status = fcb_read(testing::the_filter().forms, path.c_str(), table_, report_);
    EXPECT_EQ(status == ST_OK, report_.fault.wrong == FcbWrong::nothing);
    EXPECT_EQ(error.text(), "");
    return report_.fault;
  }

  const FcbFault& read_text(const std::string& text) {
    testing::write_file("FORM", text);
    return read_path("./FORM");
  }

  void expect_fault(const std::string& text, const ExpectedFault& expected) {
    SCOPED_TRACE(text);
    const FcbFault& fault = read_text(text);
    EXPECT_EQ(static_cast<int>(fault.wrong), static_cast<int>(expected.wrong));
    EXPECT_EQ(fault.line, expected.line);
    EXPECT_EQ(fault.word.data(), expected.word);
    EXPECT_EQ(fault.value, expected.value);
    EXPECT_EQ(fault.limit, expected.limit);
    EXPECT_EQ(fault.error_number, 0);
  }

  void expect_good(const std::string& text) { expect_fault(text, {}); }

  FcbTable table_;
  FcbReport report_;

 private:
  const testing::ScratchDirectory scratch_;
};

// Each limit: below, at and above.

TEST_F(FcbFaults, FirstLine) {
  const std::string lines = "lpi 600 240\n";
  expect_fault("# a\nprint 0 144000\n" + lines, {FcbWrong::first_line_below, 2, "0", 0, 1});
  expect_good("print 1 144000\n" + lines);
  expect_good("print 2 144000\n" + lines);
  expect_fault("print 254\n", {FcbWrong::too_few_lines, 1, "", 66, 254});
  expect_fault("print 255\n", {FcbWrong::too_few_lines, 1, "", 66, 255});
  expect_fault("print 256\n", {FcbWrong::first_line_above, 1, "256", 0, 255});
  expect_fault("print 18446744073709551617\n",
               {FcbWrong::first_line_above, 1, "18446744073709551617", 0, 255});
  expect_fault("\n\nprint\n", {FcbWrong::first_line_missing, 3});
  expect_fault("print # 4\n", {FcbWrong::first_line_missing, 1});
  expect_fault("print 4x\n", {FcbWrong::first_line_no_number, 1, "4x", 0, 255});
  expect_fault("print 300x\n", {FcbWrong::first_line_no_number, 1, "300x", 0, 255});
  expect_fault("print -4\n", {FcbWrong::first_line_no_number, 1, "-4", 0, 255});
}

TEST_F(FcbFaults, Count) {
  expect_good("print 1 144000\nlpi 600 0\n");
  expect_good("print 1 144000\nlpi 600 240\n");
  expect_fault("lpi 600 254\n", {FcbWrong::lines_too_tall, 1, "", 254 * 600, 79200});
  expect_fault("lpi 600 255\n", {FcbWrong::lines_too_tall, 1, "", 255 * 600, 79200});
  expect_fault("lpi 1200 4\nlpi 600 256\n", {FcbWrong::count_above, 2, "256", 0, 255});
  expect_fault("lpi 600\n", {FcbWrong::count_missing, 1});
  expect_fault("lpi 600#10\n", {FcbWrong::count_missing, 1});
  expect_fault("lpi 600 10\r\n", {FcbWrong::count_no_number, 1, "10\r", 0, 255});
}

TEST_F(FcbFaults, Pitch) {
  for (const char* const pitch : {"2400", "1800", "1200", "900", "600", "00600"}) {
    expect_good("lpi " + std::string(pitch) + " 4\n");
  }
  for (const char* const pitch : {"599", "601", "899", "901", "1199", "1201", "1799", "1801",
                                  "2399", "2401", "0", "x", "6OO", "99999999999999999999"}) {
    expect_fault("lpi " + std::string(pitch) + " 4\n", {FcbWrong::pitch, 1, pitch});
  }
  expect_fault("lpi\n", {FcbWrong::pitch_missing, 1});
  expect_fault("lpi x y\n", {FcbWrong::pitch, 1, "x"});
}

TEST_F(FcbFaults, NumberOfLines) {
  const std::string tall = "lpi 600 200\n";
  expect_fault(tall + "lpi 600 54\n", {FcbWrong::lines_too_tall, 2, "", 254 * 600, 79200});
  expect_fault(tall + "lpi 600 55\n", {FcbWrong::lines_too_tall, 2, "", 255 * 600, 79200});
  expect_fault(tall + "\nlpi 600 56\n", {FcbWrong::too_many_lines, 3, "", 256, 255});
}

TEST_F(FcbFaults, Keyword) {
  expect_fault("lpis 1200 10\n", {FcbWrong::keyword, 1, "lpis"});
  expect_fault("lpi 1200 10\n\r\n", {FcbWrong::keyword, 2, "\r"});
  expect_fault("LPI 1200 10\n", {FcbWrong::keyword, 1, "LPI"});
  const std::string longest(511, 'x');
  expect_fault(longest + "\n", {FcbWrong::keyword, 1, longest});
}

TEST_F(FcbFaults, SecondPrint) {
  expect_fault("#\nprint 4\nlpi 1200 10\nprint 4\n", {FcbWrong::second_print, 4, "", 2});
  expect_fault("print 4\nprint\n", {FcbWrong::second_print, 2, "", 1});
}

TEST_F(FcbFaults, Length) {
  expect_fault("print 4 x\n", {FcbWrong::length_no_number, 1, "x"});
  expect_fault("print 4 79200\r\n", {FcbWrong::length_no_number, 1, "79200\r"});
  expect_fault("print 4 144000x\n", {FcbWrong::length_no_number, 1, "144000x"});
  expect_good("print 4 144001x\n");
}

TEST_F(FcbFaults, FaultsOfTheWholeFormNameItsLastLine) {
  const std::string rest = "\n# end\n";
  expect_good("lpi 1200 66\n" + rest);
  expect_good("lpi 1200 65\n" + rest);
  expect_fault("lpi 1200 66\nlpi 600 1\n" + rest, {FcbWrong::lines_too_tall, 4, "", 79800, 79200});
  expect_fault("lpi 1200 67", {FcbWrong::lines_too_tall, 1, "", 80400, 79200});
  expect_good("lpi 1200 4\n" + rest);
  expect_good("lpi 1200 5\n" + rest);
  expect_fault("lpi 1200 3\n" + rest, {FcbWrong::too_few_lines, 3, "", 3, 4});
  expect_good("print 66\n");
  expect_good("print 65\n");
  expect_fault("print 67\n\n\n", {FcbWrong::too_few_lines, 3, "", 66, 67});
}

TEST_F(FcbFaults, LengthsOfStreamVariant4AreItsOwn) {
  testing::the_filter().command_line.stream_variant = kShortFormStream;
  expect_good("print 1 5000\nlpi 1200 21\n");
  expect_fault("print 1 5000\nlpi 1200 21\nlpi 600 1\n",
               {FcbWrong::lines_too_tall, 3, "", 25800, 25200});
  expect_fault("print 1 144000\nlpi 1200 85\n", {FcbWrong::lines_too_tall, 2, "", 102000, 100800});
}

// Where it stands.

TEST_F(FcbFaults, PiecesOfALongLineHaveItsNumber) {
  const std::string comment = "#" + std::string(510, 'x');
  expect_fault("\n" + comment + "more\n", {FcbWrong::keyword, 2, "more"});
  EXPECT_TRUE(report_.fault.in_rest_of_line);
  expect_fault(comment + "\nmore\n", {FcbWrong::keyword, 2, "more"});
  EXPECT_FALSE(report_.fault.in_rest_of_line);
  expect_fault(comment + "#" + std::string(510, 'x') + "lpi\n", {FcbWrong::pitch_missing, 1});
  EXPECT_TRUE(report_.fault.in_rest_of_line);
  expect_fault("lpi 1200 3\n" + comment + "# more", {FcbWrong::too_few_lines, 2, "", 3, 4});
  EXPECT_FALSE(report_.fault.in_rest_of_line);
}

TEST_F(FcbFaults, ANulEndsTheLineForTheReaderButNotItsNumber) {
  expect_fault(testing::bytes("lpi 1200 \0 10\n"), {FcbWrong::count_missing, 1});
  expect_fault(testing::bytes("\0\0\n\0\nx\n"), {FcbWrong::keyword, 3, "x"});
}

TEST_F(FcbFaults, TheFirstFaultIsTold) {
  expect_fault("lpi 1200 10\nlpi 1 1\nlpi 2 2\n", {FcbWrong::pitch, 2, "1"});
  expect_fault("lpi x x\n", {FcbWrong::pitch, 1, "x"});
  expect_fault("print 0 x\n", {FcbWrong::first_line_below, 1, "0", 0, 1});
  expect_fault("print 67\nlpi 1200 67\n", {FcbWrong::lines_too_tall, 2, "", 80400, 79200});
}

TEST_F(FcbFaults, AFaultIsForgottenByTheNextForm) {
  read_text("print 4 79200\nprint 300\n");
  expect_good("");
  EXPECT_STREQ(report_.given_length.data(), "");
  EXPECT_EQ(report_.print_line, 0U);
}

// Files.

TEST_F(FcbFaults, FileThatIsNotThere) {
  const FcbFault& fault = read_path("none");
  EXPECT_EQ(fault.wrong, FcbWrong::file);
  EXPECT_EQ(fault.line, 0U);
  EXPECT_EQ(fault.error_number, ENOENT);
}

TEST_F(FcbFaults, PathThroughAFile) {
  testing::write_file("file", "");
  EXPECT_EQ(read_path("file/FORM").error_number, ENOTDIR);
}

TEST_F(FcbFaults, NoRegularFile) {
  testing::for_each_odd_file("odd", [this] {
    const FcbFault& fault = read_path("odd");
    EXPECT_EQ(fault.wrong, FcbWrong::file);
    EXPECT_EQ(fault.line, 0U);
    EXPECT_EQ(fault.error_number, 0);
  });
}

// A regular file, of which nothing can be read at its start.
TEST_F(FcbFaults, FileThatCannotBeRead) {
  const FcbFault& fault = read_path("/proc/self/mem");
  EXPECT_EQ(fault.wrong, FcbWrong::file);
  EXPECT_EQ(fault.line, 0U);
  EXPECT_EQ(fault.error_number, EIO);
}

// What is told of a form that is taken.

TEST_F(FcbFaults, ReportOfAGoodForm) {
  expect_good("lpi 1200 10\n\nprint 4 79300\n");
  EXPECT_EQ(report_.print_line, 3U);
  EXPECT_STREQ(report_.given_length.data(), "79300");
  EXPECT_EQ(report_.length, 79300);
  EXPECT_EQ(table_.form_halfinch, 24);
}

TEST_F(FcbFaults, ReportOfALengthThatIsCutOrRaised) {
  expect_good("print 4 99999999999999999999\n");
  EXPECT_STREQ(report_.given_length.data(), "99999999999999999999");
  EXPECT_EQ(report_.length, 144000);
  expect_good("print 4 1\n");
  EXPECT_EQ(report_.length, 7200);
}

TEST_F(FcbFaults, ReportWithoutALength) {
  expect_good("print 4\n");
  EXPECT_EQ(report_.print_line, 1U);
  EXPECT_STREQ(report_.given_length.data(), "");
  EXPECT_EQ(report_.length, 79200);
}

}  // namespace
}  // namespace rlx
