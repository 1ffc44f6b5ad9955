// What the filter makes of a print-condition command in front of a job: each value reaches the
// printer as it was asked for (docs/rlx.md, sections 3 and 5).

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>

#include "mapping/condition_command.h"
#include "support/descriptors.h"
#include "tools/read_job.h"
#include "tools/tool_run.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;

/// The standard state at the start of a job, and what comes behind a print-condition command.
const std::string kStandardStart =
    "\034(`q\034(ap\034%!\" p\033Q1 y\033Q1;!f\033$@\033(H\034&! u\034%!\" p";
const std::string kBehindCommand = "\033$@\033(H\034&! u";

template <typename Value>
struct Wish {
  Value value;
  const char* parameter;  ///< its line in the job parameters
};

constexpr std::array<Wish<Paper>, 7> kPapers{{{Paper::unset, ""},
                                              {Paper::a3, "PSZ=A3\n"},
                                              {Paper::a4, "PSZ=A4\n"},
                                              {Paper::a5, "PSZ=A5\n"},
                                              {Paper::b4, "PSZ=B4\n"},
                                              {Paper::b5, "PSZ=B5\n"},
                                              {Paper::letter, "PSZ=LT\n"}}};

constexpr std::array<Wish<Tray>, 6> kTrays{{{Tray::unset, ""},
                                            {Tray::automatic, "BIN=A\n"},
                                            {Tray::tray_1, "BIN=1\n"},
                                            {Tray::tray_2, "BIN=2\n"},
                                            {Tray::tray_3, "BIN=3\n"},
                                            {Tray::tray_4, "BIN=4\n"}}};

constexpr std::array<Wish<Orientation>, 3> kOrientations{{{Orientation::unset, ""},
                                                          {Orientation::upright, "ORT=0\n"},
                                                          {Orientation::landscape, "ORT=1\n"}}};

constexpr std::array<Wish<Sides>, 4> kSides{{{Sides::unset, ""},
                                             {Sides::one, ""},
                                             {Sides::two_long_edge, "DUP=1\n"},
                                             {Sides::two_short_edge, "DUP=1\n"}}};

/// Series and size of a paper in a page format.
std::string paper_digits(Paper paper) {
  switch (paper) {
    case Paper::a3:
      return "0;3";
    case Paper::a5:
      return "0;5";
    case Paper::b4:
      return "1;4";
    case Paper::b5:
      return "1;5";
    case Paper::letter:
      return "3;4";
    case Paper::unset:
    case Paper::a4:
      break;
  }
  return "0;4";
}

std::string tray_digit(Tray tray) {
  switch (tray) {
    case Tray::tray_1:
      return "0";
    case Tray::tray_2:
      return "1";
    case Tray::tray_3:
      return "3";
    case Tray::tray_4:
      return "4";
    case Tray::unset:
    case Tray::automatic:
      break;
  }
  return "";
}

std::string page_format(const JobSettings& settings) {
  const std::string full_size = settings.orientation == Orientation::unset ? "" : "\033Q100;100!I";
  const std::string turned = settings.orientation == Orientation::landscape ? "1" : "0";
  const std::string tray = tray_digit(settings.tray);
  if (!tray.empty()) {
    return full_size + "\033Q" + paper_digits(settings.paper) + ';' + tray + ';' + turned + "!@";
  }
  if (settings.paper == Paper::unset && settings.tray == Tray::unset && full_size.empty()) {
    return "";
  }
  return full_size + "\033Q" + paper_digits(settings.paper) + ';' + turned + "!F";
}

/// The edge's digit: 2 for the upper one, 0 for the left one, as the sheets are held for reading.
std::string binding(const JobSettings& settings) {
  const bool landscape = settings.orientation == Orientation::landscape;
  switch (settings.sides) {
    case Sides::two_long_edge:
      return landscape ? "\033Q2;2;00000;00000!W" : "\033Q2;0;00000;00000!W";
    case Sides::two_short_edge:
      return landscape ? "\033Q2;0;00000;00000!W" : "\033Q2;2;00000;00000!W";
    case Sides::unset:
    case Sides::one:
      break;
  }
  return "";
}

std::string offsets(const JobSettings& settings) {
  const auto field = [](unsigned offset) {
    return offset == 0 ? std::string() : std::to_string(offset);
  };
  if (settings.page_offset_x == 0 && settings.page_offset_y == 0) {
    return "";
  }
  return "\033Q" + field(settings.page_offset_x) + ';' + field(settings.page_offset_y) + ";;!H";
}

/// What the printer gets in front of the page's data.
std::string page_header(const JobSettings& settings, unsigned copies,
                        const std::string& parameters) {
  const std::string format = page_format(settings);
  return rlx_parameters("%%%=Pji,0101,UNIC\nEMU=RLX\nDCH=240\n" +
                        (copies > 1 ? "CPS=" + std::to_string(copies) + '\n' : "") + parameters +
                        "MAK=UNIX\n") +
         rlx_block('9', bytes("\033\x7f\0\0\x01\x06")) + rlx_block('8', "\033Q240!A") +
         (format.empty() ? "" : rlx_block('7', format)) +
         rlx_block('9', "\033Q1;7200!C" + binding(settings) + offsets(settings));
}

std::string printed(const std::string& job, const std::vector<std::string>& options = {}) {
  const ToolOutcome outcome = run_tool(RLX_SANDBOXED_PROGRAM, {.arguments = options, .input = job});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.messages, "");
  return outcome.output;
}

void expect_header(const JobSettings& settings, unsigned copies, const std::string& parameters) {
  const std::string command = condition_command(settings, copies);
  const std::string output = printed(command + "A\f");
  const std::string data = kStandardStart + (command.empty() ? "" : kBehindCommand) + "A\f";
  const std::string expected = page_header(settings, copies, parameters) + rlx_block('2', data);
  ASSERT_EQ(output.substr(0, expected.size()), expected);
  ASSERT_EQ(output.substr(output.size() - 24), rlx_block('0', bytes("\033c\033\x7f\0\0\x01\0")));
}

struct OffsetsAndCopies {
  unsigned x;
  unsigned y;
  unsigned copies;
};

constexpr std::array<OffsetsAndCopies, 4> kOffsetsAndCopies{
    {{0, 0, 1}, {1440, 0, 2}, {0, 1440, 999}, {99999, 7200, 1}}};

class ConditionEffect : public ::testing::TestWithParam<std::size_t> {};

/// One paper, with everything else in all combinations.
TEST_P(ConditionEffect, IsWhatWasAskedFor) {
  const Wish<Paper>& paper = kPapers.at(GetParam());
  for (const auto& tray : kTrays) {
    for (const auto& orientation : kOrientations) {
      for (const auto& sides : kSides) {
        for (const OffsetsAndCopies& other : kOffsetsAndCopies) {
          JobSettings settings;
          settings.paper = paper.value;
          settings.tray = tray.value;
          settings.orientation = orientation.value;
          settings.sides = sides.value;
          settings.page_offset_x = other.x;
          settings.page_offset_y = other.y;
          const std::string parameters = std::string(sides.parameter) + orientation.parameter +
                                         paper.parameter + tray.parameter;
          SCOPED_TRACE(parameters + std::to_string(other.x) + ' ' + std::to_string(other.y) + ' ' +
                       std::to_string(other.copies));
          ASSERT_NO_FATAL_FAILURE(expect_header(settings, other.copies, parameters));
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Papers, ConditionEffect, ::testing::Range<std::size_t>(0, kPapers.size()));

JobSettings a4_on_tray_2() {
  JobSettings settings;
  settings.paper = Paper::a4;
  settings.tray = Tray::tray_2;
  return settings;
}

/// The page data of an output, a "|" between pages.
std::string page_data(const std::string& output) {
  std::string data;
  for (const FoundBlock& found : read_job(output).blocks) {
    using reader::BlockUse;
    if (found.block.use == BlockUse::first_data || found.block.use == BlockUse::further_data) {
      data += (found.block.use == BlockUse::first_data && !data.empty() ? "|" : "") + found.payload;
    }
  }
  return data;
}

std::size_t count(const std::string& text, const std::string& piece) {
  std::size_t found = 0;
  for (std::size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) {
    ++found;
  }
  return found;
}

TEST(ConditionCommandInFront, LeavesTheFormInForce) {
  const ScratchDirectory scratch;
  write_file("forms/fcbe/THREE", "print 3\n");
  const std::vector<std::string> options{"-p", "forms", "-n", "THREE"};
  const std::string command = condition_command(a4_on_tray_2(), 3);
  // The top of the form: two lines of 6 to the inch, then the pitch of the third.
  const std::string top = "\034%!\" p\n\034%!\" p\n\034%!\" p";
  EXPECT_EQ(page_data(printed(command + "A\fB\f", options)),
            kStandardStart + kBehindCommand + top + "A\f|" + top + "B\f");
}

TEST(ConditionCommandInFront, MakesNoPageOfItsOwn) {
  const std::string command = condition_command(a4_on_tray_2(), 3);
  const FoundJob job = read_job(printed(command + "A\fB\fC\f"));
  EXPECT_EQ(shown_faults(job), "");
  EXPECT_EQ(job.pages_begun, 3U);
  EXPECT_EQ(job.pages_ended, 3U);
  EXPECT_EQ(read_job(printed(command)).pages_begun, 0U);
}

TEST(ConditionCommandInFront, OfTheJobsOwnTakesThePlaceOfAllOfIt) {
  JobSettings wish = a4_on_tray_2();
  wish.sides = Sides::two_long_edge;
  wish.page_offset_x = 7200;
  JobSettings own;
  own.tray = Tray::tray_3;
  const std::string job = condition_command(own, 1) + "A\f";
  const std::string expected =
      page_header(own, 1, "BIN=3\n") +
      rlx_block('2', kStandardStart + kBehindCommand + kBehindCommand + "A\f");
  EXPECT_EQ(printed(condition_command(wish, 5) + job).substr(0, expected.size()), expected);
}

TEST(ConditionCommandInFront, ComesWithTheTrayOfThePrintersChoiceBeforeEveryPage) {
  JobSettings settings;
  settings.tray = Tray::automatic;
  const std::string output = printed(condition_command(settings, 1) + "A\fB\f");
  EXPECT_EQ(count(output, "BIN=A\n"), 2U);
}

/// From output variant 2 on the command changes the character spacing; where none is sent it does
/// not.
TEST(ConditionCommandInFront, ChangesTheSpacingInOutputVariant2) {
  const std::string job = condition_command(a4_on_tray_2(), 1) + "A\f";
  const std::string no_spacing = "\034(`q\034(ap\034%!\" p\033Q1 y\033Q1;!f\033$@\033(H\034%!\" p";
  for (const char* option : {"-A", "-B", "-C", "-Q"}) {
    EXPECT_EQ(page_data(printed(job, {option})), kStandardStart + kBehindCommand + "A\f") << option;
  }
  for (const char* option : {"-f", "-R"}) {
    EXPECT_EQ(page_data(printed(job, {option})), kStandardStart + "\033$@\033(H\034&!\"pA\f")
        << option;
    EXPECT_EQ(page_data(printed("A\f", {option})), kStandardStart + "A\f") << option;
  }
  EXPECT_EQ(page_data(printed(job, {"-E"})), no_spacing + "\033$@\033(HA\f");
  EXPECT_EQ(page_data(printed("A\f", {"-E"})), no_spacing + "A\f");
}

/// A job in the printer's language goes out as it is: the command in front of it leaves no trace.
TEST(ConditionCommandInFront, OfAJobInThePrintersLanguageHasNoEffect) {
  const std::string job = printed("A\fB\f");
  EXPECT_EQ(printed(condition_command(a4_on_tray_2(), 3) + job), job);
}

}  // namespace
}  // namespace rlx::spooler
