#include "fcbcheck/explanation.h"

#include <gtest/gtest.h>

#include <string>

#include "job/fixed_paths.h"
#include "support/descriptors.h"

namespace rlx::fcbcheck {
namespace {

class FcbcheckExplanation : public ::testing::Test {
 protected:
  /// The explanation of a form with this text.
  std::string explained(const std::string& text) const {
    testing::write_file("FORM", text);
    const FormFile form = read_form_file("FORM", reading_);
    EXPECT_TRUE(form.is_good()) << text;
    return explanation(form, reading_);
  }

  /// Its first line, of a form with this print line, without the name.
  std::string length(const std::string& print) const {
    const std::string text = explained(print + "\n");
    EXPECT_TRUE(text.starts_with("FORM: "));
    return text.substr(6, text.find('\n') - 6);
  }

  void use_environment_file(bool half_inches) {
    reading_.environment = {.loaded = 1, .fcbprint_halfinch = half_inches ? 1 : 0};
    reading_.environment_found = true;
  }

  Reading reading_{.environment = {.loaded = 1}};

 private:
  const testing::ScratchDirectory scratch_;
};

TEST_F(FcbcheckExplanation, WholeInchesAreNotRounded) {
  EXPECT_EQ(length("print 1 79200"), "length 79200/7200 in = 11 in");
  EXPECT_EQ(length("print 1"), "length not given, 79200/7200 in = 11 in");
  EXPECT_EQ(length(""), "length not given, 79200/7200 in = 11 in");
}

TEST_F(FcbcheckExplanation, RoundingUp) {
  EXPECT_EQ(length("print 1 79300"),
            "length 79300/7200 in = 11.01 in, rounded up to the whole inch: 12 in (no environment "
            "file: half inches off)");
  use_environment_file(false);
  EXPECT_EQ(length("print 1 79300"),
            "length 79300/7200 in = 11.01 in, rounded up to the whole inch: 12 in (environment "
            "file: half inches off)");
}

TEST_F(FcbcheckExplanation, RoundingDown) {
  use_environment_file(true);
  EXPECT_EQ(length("print 1 79300"),
            "length 79300/7200 in = 11.01 in, rounded down to the half inch: 11 in (environment "
            "file: half inches on)");
  EXPECT_EQ(length("print 1 28799"),
            "length 28799/7200 in = 3.9999 in, rounded down to the half inch: 3.5 in (environment "
            "file: half inches on)");
  EXPECT_EQ(length("print 1 25200"),
            "length 25200/7200 in = 3.5 in, whole half inches stay: 3.5 in (environment file: half "
            "inches on)");
}

TEST_F(FcbcheckExplanation, Limits) {
  EXPECT_EQ(length("print 1 7199"),
            "length 7199/7200 in = 0.9999 in, raised to the shortest, 7200/7200 in = 1 in");
  EXPECT_EQ(length("print 1 0"),
            "length 0/7200 in = 0 in, raised to the shortest, 7200/7200 in = 1 in");
  EXPECT_EQ(length("print 1 07200"), "length 7200/7200 in = 1 in");
  EXPECT_EQ(length("print 1 144000"), "length 144000/7200 in = 20 in");
  EXPECT_EQ(length("print 1 144001"),
            "length 144001/7200 in = 20.0001 in, cut to the longest, 144000/7200 in = 20 in");
  EXPECT_EQ(length("print 1 144001x"),
            "length 144001x, cut to the longest, 144000/7200 in = 20 in");
  EXPECT_EQ(length("print 1 99999999999999999999"),
            "length 99999999999999999999, cut to the longest, 144000/7200 in = 20 in");
}

TEST_F(FcbcheckExplanation, LimitsOfStreamVariant4) {
  reading_.stream_variant = kShortFormStream;
  EXPECT_EQ(
      length("print 1 7200"),
      "length 7200/7200 in = 1 in, raised to the shortest, 25200/7200 in = 3.5 in, rounded up "
      "to the whole inch: 4 in (no environment file: half inches off); sent to the printer");
  EXPECT_EQ(length("print 1 144000"),
            "length 144000/7200 in = 20 in, cut to the longest, 100800/7200 in = 14 in; sent to "
            "the printer");
}

TEST_F(FcbcheckExplanation, LengthsThatAreSent) {
  reading_.stream_variant = kSentLengthStream;
  EXPECT_EQ(length("print 1"), "length not given, 79200/7200 in = 11 in; sent to the printer");
}

TEST_F(FcbcheckExplanation, LinesAndTheRest) {
  EXPECT_EQ(explained("print 4 79200\nlpi 1200 12\nlpi 900 1\nlpi 900 35\nlpi 1200 1\n"),
            "FORM: length 79200/7200 in = 11 in\n"
            "FORM: 49 lines, 6.67 in: 12 at 6, 36 at 8, 1 at 6 lines per inch\n"
            "FORM: printing starts on line 4, 0.5 in below the top\n"
            "FORM: 4.33 in below the last line are unused\n");
}

TEST_F(FcbcheckExplanation, LinesPastTheRoundedLength) {
  use_environment_file(true);
  EXPECT_EQ(explained("print 1 30000\nlpi 1200 25\n"),
            "FORM: length 30000/7200 in = 4.17 in, rounded down to the half inch: 4 in "
            "(environment file: half inches on)\n"
            "FORM: 25 lines, 4.17 in: 25 at 6 lines per inch\n"
            "FORM: printing starts on line 1, 0 in below the top\n"
            "FORM: the last line ends 0.17 in past the rounded length\n");
}

// The environment file.

TEST_F(FcbcheckExplanation, WithoutAnotherOneTheFiltersIsRead) {
  Reading reading;
  EXPECT_EQ(read_environment(nullptr, reading), "");
  EXPECT_FALSE(reading.environment_found);
  testing::write_file(fixed_paths::kEnvironmentFile, "*COMMON\nFCBPRINT:2\n");
  EXPECT_EQ(read_environment(nullptr, reading), "");
  EXPECT_TRUE(reading.environment_found);
  EXPECT_EQ(reading.environment.fcbprint_halfinch, 1);
  testing::write_file("mine", "*OTHER\nFCBPRINT:2\n");
  EXPECT_EQ(read_environment("mine", reading), "");
  EXPECT_TRUE(reading.environment_found);
  EXPECT_EQ(reading.environment.fcbprint_halfinch, 0);
}

TEST_F(FcbcheckExplanation, AnotherEnvironmentFileMustBeReadable) {
  Reading reading;
  EXPECT_EQ(read_environment("none", reading), "No such file or directory");
  EXPECT_EQ(read_environment(".", reading), "Is a directory");
  EXPECT_EQ(read_environment("/dev/null", reading), "Not a regular file (device)");
  EXPECT_EQ(read_environment("/proc/self/mem", reading), "Input/output error");
}

}  // namespace
}  // namespace rlx::fcbcheck
