#include "fcbcheck/fault_text.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "fcbcheck/form_file.h"
#include "support/descriptors.h"
#include "support/odd_files.h"

namespace rlx::fcbcheck {
namespace {

class FcbcheckFaultText : public ::testing::Test {
 protected:
  /// What is said of a form with this text, without the name in front.
  static std::string fault_of(const std::string& text, const Reading& reading = {}) {
    testing::write_file("INVOICE", text);
    const FormFile form = read_form_file("INVOICE", reading);
    EXPECT_FALSE(form.is_good()) << text;
    const std::string fault = fault_text(form);
    EXPECT_TRUE(fault.starts_with("INVOICE:")) << fault;
    return fault.substr(fault.find(':') + 1);
  }

  static std::string fault_of_path(const std::string& path) {
    return fault_text(read_form_file(path, {}));
  }

 private:
  const testing::ScratchDirectory scratch_;
};

TEST_F(FcbcheckFaultText, FirstLine) {
  EXPECT_EQ(fault_of("#\nprint 300\n"), "2: print: first line 300 is above 255");
  EXPECT_EQ(fault_of("print 256\n"), "1: print: first line 256 is above 255");
  EXPECT_EQ(fault_of("print 0\n"), "1: print: first line 0 is below 1");
  EXPECT_EQ(fault_of("print 4x\n"), "1: print: first line 4x is no number");
  EXPECT_EQ(fault_of("print\n"), "1: print: no first line");
  EXPECT_EQ(fault_of("\nprint 4\n\nprint 4\n"), "4: print: second print line, the first is line 2");
}

TEST_F(FcbcheckFaultText, Length) {
  EXPECT_EQ(fault_of("print 4 11in\n"), "1: print: length 11in is no number");
}

TEST_F(FcbcheckFaultText, Lpi) {
  EXPECT_EQ(fault_of("lpi\n"), "1: lpi: no pitch");
  EXPECT_EQ(fault_of("lpi 1000 1\n"),
            "1: lpi: pitch 1000 is none of 2400, 1800, 1200, 900 and 600");
  EXPECT_EQ(fault_of("lpi six 1\n"), "1: lpi: pitch six is none of 2400, 1800, 1200, 900 and 600");
  EXPECT_EQ(fault_of("lpi 1200\n"), "1: lpi: no count");
  EXPECT_EQ(fault_of("lpi 1200 1O\n"), "1: lpi: count 1O is no number");
  EXPECT_EQ(fault_of("lpi 600 256\n"), "1: lpi: count 256 is above 255");
  EXPECT_EQ(fault_of("lpi 600 255\nlpi 600 1\n"), "2: lpi: 256 lines are more than 255");
}

TEST_F(FcbcheckFaultText, WholeForm) {
  EXPECT_EQ(fault_of("print 4 79200\nlpi 1200 67\n#\n"),
            "3: lpi: lines of 80400 are taller than the form, 79200 (1/7200 inch)");
  EXPECT_EQ(fault_of("lpi 1200 67\n"),
            "1: lpi: lines of 80400 are taller than the form, 79200 (1/7200 inch; without a length "
            "in the print line it has 11 inches)");
  EXPECT_EQ(
      fault_of("print 1 144000\nlpi 1200 85\n", {.stream_variant = kShortFormStream}),
      "2: lpi: lines of 102000 are taller than the form, 100800 (1/7200 inch; the length in the "
      "print line counts as that)");
  EXPECT_EQ(fault_of("print 1 7000\nlpi 1200 7\n"),
            "2: lpi: lines of 8400 are taller than the form, 7200 (1/7200 inch; the length in the "
            "print line counts as that)");
  EXPECT_EQ(fault_of("print 1 0007200\nlpi 1200 7\n"),
            "2: lpi: lines of 8400 are taller than the form, 7200 (1/7200 inch)");
  EXPECT_EQ(fault_of("print 70\n\n"), "2: print: first line 70 is above 66, the number of lines");
  EXPECT_EQ(fault_of("lpi 1200 3\n"),
            "1: print: first line 4 is above 3, the number of lines (without a print line it is "
            "4)");
}

TEST_F(FcbcheckFaultText, Keyword) {
  EXPECT_EQ(fault_of("lines 6\n"), "1: lines: unknown keyword; lpi and print are known");
  EXPECT_EQ(fault_of("Lpi 1200 6\n"), "1: Lpi: unknown keyword; keywords are in lower case");
  EXPECT_EQ(fault_of("PRINT 4\n"), "1: PRINT: unknown keyword; keywords are in lower case");
  EXPECT_EQ(fault_of("PRINTS 4\n"), "1: PRINTS: unknown keyword; lpi and print are known");
  EXPECT_EQ(fault_of("\xef\xbb\xbflpi 1200 6\n"),
            "1: \\xef\\xbb\\xbflpi: unknown keyword; the file begins with a byte order mark");
}

TEST_F(FcbcheckFaultText, CausesThatCannotBeSeen) {
  EXPECT_EQ(fault_of("lpi 1200 10\r\n"),
            "1: lpi: count 10\\r is no number (the line ends with a carriage return)");
  EXPECT_EQ(fault_of("\r\n"),
            "1: \\r: unknown keyword; lpi and print are known (the line ends with a carriage "
            "return)");
  EXPECT_EQ(fault_of("\n#" + std::string(510, 'x') + "yes\n"),
            "2: yes: unknown keyword; lpi and print are known (behind byte 511 of its line, which "
            "begins another one)");
}

TEST_F(FcbcheckFaultText, FilesHaveLine0AndTheSystemsText) {
  EXPECT_EQ(fault_of_path("none"), "none:0: No such file or directory");
  EXPECT_EQ(fault_of_path(""), ":0: No such file or directory");
  testing::write_file("file", "");
  EXPECT_EQ(fault_of_path("file/x"), "file/x:0: Not a directory");
  EXPECT_EQ(fault_of_path("."), ".:0: Is a directory");
  EXPECT_EQ(fault_of_path("/dev/null"), "/dev/null:0: Not a regular file (device)");
  ASSERT_EQ(mkfifo("fifo", 0600), 0);
  EXPECT_EQ(fault_of_path("fifo"), "fifo:0: Not a regular file (FIFO)");
  testing::make_socket("socket");
  EXPECT_EQ(fault_of_path("socket"), "socket:0: Not a regular file (socket)");
  EXPECT_EQ(fault_of_path("/proc/self/mem"), "/proc/self/mem:0: Input/output error");
  std::filesystem::create_symlink("loop", "loop");
  EXPECT_EQ(fault_of_path("loop"), "loop:0: Too many levels of symbolic links");
}

TEST_F(FcbcheckFaultText, NamesCannotDriveTheTerminal) {
  EXPECT_EQ(fault_of_path("no\x1b[2Jne"), "no?[2Jne:0: No such file or directory");
}

}  // namespace
}  // namespace rlx::fcbcheck
