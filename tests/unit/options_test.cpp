#include "driver/options/options.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "driver/options/capabilities.h"
#include "job/settings.h"
#include "support/descriptors.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::option_targets;
using testing::restart_settings;
using testing::the_filter;

const std::string kProgram = "lpfilter";
const std::string kDefaultDirectory = "sandbox/usr/local/lib/PXLQlp";

/// A command line that lives as long as the settings that point into it.
class Options : public ::testing::Test {
 protected:
  Options() { reset(); }
  ~Options() override { reset(); }

  static void reset() {
    restart_settings();
    the_filter().printer = {};
  }

  /// Starts from the defaults; keeps the status and what went to standard error.
  Status parse(std::vector<std::string> arguments) {
    reset();
    return parse_on(std::move(arguments));
  }

  Status parse_on(std::vector<std::string> arguments) {
    arguments_ = std::move(arguments);
    arguments_.insert(arguments_.begin(), kProgram);
    argv_.clear();
    for (std::string& argument : arguments_) {
      argv_.push_back(argument.data());
    }
    argv_.push_back(nullptr);
    const testing::CaptureDescriptor standard_error(2);
    const Status status =
        parse_options(option_targets(), static_cast<int>(arguments_.size()), argv_.data());
    errors_ = standard_error.text();
    return status;
  }

  void expect_accepted(const std::vector<std::string>& arguments) {
    EXPECT_EQ(parse(arguments), 0);
    EXPECT_EQ(errors_, "");
  }

  void expect_refused(const std::vector<std::string>& arguments, const std::string& errors) {
    EXPECT_EQ(parse(arguments), 1);
    EXPECT_EQ(errors_, errors);
  }

  static std::vector<std::string> directories() {
    std::vector<std::string> list;
    for (std::size_t i = 0; i < the_filter().directories.count; ++i) {
      list.emplace_back(the_filter().directories.entries[i].data());
    }
    return list;
  }

  std::vector<std::string> arguments_;
  std::vector<char*> argv_;
  std::string errors_;
};

/// What the mode letters set.
struct Modes {
  int emulation_mode = kStandardMode;
  int output_variant = kPlainOutput;
  int stream_variant = kPlainStream;
  int extended_parameters = 0;
  int header_selector = kPlainHeader;
  int resolution = kLowResolution;
  int high_resolution_fonts = 0;
  int font_variant = kAllFonts;
  int compact_flag = 0;

  bool operator==(const Modes&) const = default;
};

Modes modes_set() {
  return {the_filter().command_line.emulation_mode,  the_filter().settings.output_variant,
          the_filter().command_line.stream_variant,  the_filter().command_line.extended_parameters,
          the_filter().command_line.header_selector, the_filter().command_line.resolution,
          the_filter().job.high_resolution_fonts,    the_filter().command_line.font_variant,
          the_filter().command_line.compact_flag};
}

TEST_F(Options, NoOptionsLeaveTheDefaults) {
  expect_accepted({});
  EXPECT_EQ(modes_set(), Modes{});
  EXPECT_EQ(the_filter().messages.program_name, kProgram);
  EXPECT_EQ(the_filter().command_line.framed_output, 0);
  EXPECT_EQ(the_filter().command_line.lines_per_page, 0);
  EXPECT_EQ(the_filter().command_line.character_pitch, 0);
  EXPECT_EQ(the_filter().command_line.print_conditions_enabled, 1);
  EXPECT_EQ(the_filter().command_line.undefined_gaiji_pattern, 0);
  EXPECT_EQ(the_filter().command_line.fcb_name, nullptr);
  EXPECT_EQ(the_filter().command_line.requested_resolution, 0);
  EXPECT_EQ(the_filter().job.line_unit, kDefaultLineUnit);
  EXPECT_EQ(the_filter().command_line.printer_class, kPrinterClassF0);
  EXPECT_EQ(the_filter().command_line.capability_F, 0);
  EXPECT_EQ(the_filter().command_line.capability_g, 0);
  EXPECT_EQ(the_filter().job.font_library_loaded, 0);
  EXPECT_EQ(the_filter().command_line.ignore_flag, 0);
  EXPECT_EQ(the_filter().settings.spacing_index, 3);
  EXPECT_EQ(the_filter().settings.form_data_length, 0);
  EXPECT_EQ(the_filter().settings.char_pitch_source, kNotGiven);
  EXPECT_EQ(the_filter().settings.line_pitch_source, kNotGiven);
  EXPECT_EQ(the_filter().settings.width_source, kNotGiven);
  EXPECT_EQ(the_filter().settings.line_pitch_text, nullptr);
  EXPECT_EQ(the_filter().settings.width_text, nullptr);
  EXPECT_EQ(directories(), std::vector<std::string>{kDefaultDirectory});
}

TEST_F(Options, EachModeLetterSetsWhatItNamesAndNothingElse) {
  struct Row {
    const char* option;
    Modes modes;
  };
  const std::vector<Row> rows{
      {"-A", {.output_variant = kOutputA}},
      {"-B",
       {.emulation_mode = kFineMode,
        .resolution = kHighResolution,
        .high_resolution_fonts = 1,
        .font_variant = kFineFonts}},
      {"-C", {.emulation_mode = kExtendedMode, .extended_parameters = 1}},
      {"-D", {.header_selector = kSimplexBindingHeader}},
      {"-E",
       {.emulation_mode = kFormLengthMode,
        .output_variant = kOutputE,
        .stream_variant = kSentLengthStream,
        .font_variant = kFixedFont}},
      {"-N",
       {.emulation_mode = kFormLengthMode,
        .output_variant = kOutputE,
        .stream_variant = kSentLengthStream,
        .extended_parameters = 1,
        .font_variant = kFixedFont}},
      {"-P", {.extended_parameters = 1}},
      {"-Q", {.emulation_mode = kMode6}},
      {"-R",
       {.emulation_mode = kMode7, .output_variant = kOutputR, .stream_variant = kShortFormStream}},
      {"-S", {.compact_flag = 1}},
      {"-f", {.output_variant = kOutputF}},
  };
  for (const Row& row : rows) {
    expect_accepted({row.option});
    EXPECT_EQ(modes_set(), row.modes) << row.option;
  }
}

TEST_F(Options, RFollowedByEEndsWithEmulationMode3) {
  expect_accepted({"-R", "-E"});
  EXPECT_EQ(modes_set(), (Modes{.emulation_mode = kFormLengthMode,
                                .output_variant = kOutputE,
                                .stream_variant = kSentLengthStream,
                                .font_variant = kFixedFont}));
}

TEST_F(Options, EFollowedByREndsWithEmulationMode7AndKeepsTheFontVariant) {
  for (const char* options : {"-ER", "-NR"}) {
    expect_accepted({options});
    EXPECT_EQ(the_filter().command_line.emulation_mode, kMode7);
    EXPECT_EQ(the_filter().command_line.stream_variant, kShortFormStream);
    EXPECT_EQ(the_filter().settings.output_variant, kOutputR);
    EXPECT_EQ(the_filter().command_line.font_variant, kFixedFont);
  }
}

TEST_F(Options, BAndEInBothOrders) {
  expect_accepted({"-E", "-B"});
  EXPECT_EQ(modes_set(), (Modes{.emulation_mode = kFineMode,
                                .output_variant = kOutputE,
                                .stream_variant = kSentLengthStream,
                                .resolution = kHighResolution,
                                .high_resolution_fonts = 1,
                                .font_variant = kFineFonts}));
  expect_accepted({"-B", "-E"});
  EXPECT_EQ(modes_set(), (Modes{.emulation_mode = kFormLengthMode,
                                .output_variant = kOutputE,
                                .stream_variant = kSentLengthStream,
                                .resolution = kHighResolution,
                                .high_resolution_fonts = 1,
                                .font_variant = kFixedFont}));
}

TEST_F(Options, LaterOfTwoOutputVariantsWins) {
  expect_accepted({"-Af"});
  EXPECT_EQ(the_filter().settings.output_variant, kOutputF);
  expect_accepted({"-fA"});
  EXPECT_EQ(the_filter().settings.output_variant, kOutputA);
  expect_accepted({"-A", "-R", "-f"});
  EXPECT_EQ(the_filter().settings.output_variant, kOutputF);
}

TEST_F(Options, ValueOptionsSetTheirSettingsBeforeAndAfterTheModeLetters) {
  const std::vector<std::string> values{"-c",   "10", "-l", "8",  "-L",  "66", "-w",   "136",
                                        "-n",   "f1", "-d", "-e", "400", "-i", "-q",   "-r",
                                        "ubar", "-p", "a",  "-F", "ff",  "-J", "jj jj"};
  for (const bool modes_first : {false, true}) {
    std::vector<std::string> arguments = values;
    arguments.insert(modes_first ? arguments.begin() : arguments.end(), {"-N", "-GD300!g"});
    expect_accepted(arguments);
    EXPECT_EQ(the_filter().command_line.emulation_mode, kFormLengthMode);
    EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 0), 300U);
    EXPECT_EQ(printer_has(the_filter().printer, kHasLowerG, 0), 1U);
    EXPECT_EQ(the_filter().settings.char_pitch_source, kFromCommandLine);
    EXPECT_EQ(the_filter().command_line.character_pitch, 720);
    EXPECT_EQ(the_filter().settings.line_pitch_source, kFromCommandLine);
    EXPECT_STREQ(the_filter().settings.line_pitch_text, "8");
    EXPECT_EQ(the_filter().settings.width_source, kFromCommandLine);
    EXPECT_STREQ(the_filter().settings.width_text, "136");
    EXPECT_EQ(the_filter().command_line.lines_per_page, 66);
    EXPECT_STREQ(the_filter().command_line.fcb_name, "f1");
    EXPECT_EQ(the_filter().command_line.framed_output, 1);
    EXPECT_EQ(the_filter().command_line.requested_resolution, 400);
    EXPECT_EQ(the_filter().command_line.resolution, 240);
    EXPECT_EQ(the_filter().command_line.ignore_flag, 1);
    EXPECT_EQ(the_filter().command_line.print_conditions_enabled, 0);
    EXPECT_EQ(the_filter().command_line.undefined_gaiji_pattern, 1);
    EXPECT_STREQ(the_filter().command_line.f_text.data(), "ff");
    EXPECT_STREQ(the_filter().command_line.j_text.data(), "jj jj");
    EXPECT_EQ(directories(), (std::vector<std::string>{"a", kDefaultDirectory}));
  }
}

TEST_F(Options, IgnoredLettersAreAcceptedAndChangeNothing) {
  expect_accepted({"-M", "text", "-b", "-E", "-j", "x", "-k", "-m"});
  EXPECT_EQ(modes_set(), Modes{});
  EXPECT_EQ(directories(), std::vector<std::string>{kDefaultDirectory});
}

TEST_F(Options, ModesBehindOperandsCountToo) {
  expect_accepted({"operand", "-R", "other", "-c", "12"});
  EXPECT_EQ(the_filter().command_line.emulation_mode, kMode7);
  EXPECT_EQ(the_filter().command_line.character_pitch, 600);
}

TEST_F(Options, DoubleDashEndsTheOptionsInBothPasses) {
  expect_accepted({"-R", "-d", "--", "-E", "-q", "-x"});
  EXPECT_EQ(the_filter().command_line.emulation_mode, kMode7);
  EXPECT_EQ(the_filter().command_line.framed_output, 1);
  EXPECT_EQ(the_filter().command_line.print_conditions_enabled, 1);
}

TEST_F(Options, NumbersAllowBlanksSignAndTrailingJunk) {
  expect_accepted({"-L", " +66x", "-e", "-5"});
  EXPECT_EQ(the_filter().command_line.lines_per_page, 66);
  EXPECT_EQ(the_filter().command_line.requested_resolution, -5);
  expect_accepted({"-L", "-3", "-e", "0x10"});
  EXPECT_EQ(the_filter().command_line.lines_per_page, -3);
  EXPECT_EQ(the_filter().command_line.requested_resolution, 0);
  expect_accepted({"-L", "abc"});
  EXPECT_EQ(the_filter().command_line.lines_per_page, 0);
}

TEST_F(Options, LastOfARepeatedValueCounts) {
  expect_accepted({"-c", "10", "-c12", "-n", "a", "-n", "b", "-r", "ubar", "-r", "space"});
  EXPECT_EQ(the_filter().command_line.character_pitch, 600);
  EXPECT_STREQ(the_filter().command_line.fcb_name, "b");
  EXPECT_EQ(the_filter().command_line.undefined_gaiji_pattern, 0);
}

TEST_F(Options, UnknownLetterIsDiagnosedByBothPassesAndEndsWithStatus1) {
  const std::string line = kProgram + ": invalid option -- 'x'\n";
  expect_refused({"-x"}, line + line);
}

TEST_F(Options, FirstPassReportsAllUnknownLettersAndTheSecondStopsAtTheFirst) {
  const auto line = [](char letter) { return kProgram + ": invalid option -- '" + letter + "'\n"; };
  expect_refused({"-xd", "-y", "-c", "0"}, line('x') + line('y') + line('x'));
  EXPECT_EQ(the_filter().command_line.framed_output, 0);
  EXPECT_EQ(the_filter().directories.count, 0U);
}

TEST_F(Options, ModesBehindAnUnknownLetterAreStillSet) {
  EXPECT_EQ(parse({"-x", "-R"}), 1);
  EXPECT_EQ(the_filter().command_line.emulation_mode, kMode7);
}

TEST_F(Options, MissingArgumentIsDiagnosedByBothPassesAndEndsWithStatus1) {
  for (const char letter : std::string("clLwnpbFJjerGM")) {
    const std::string line = kProgram + ": option requires an argument -- '" + letter + "'\n";
    expect_refused({std::string("-") + letter}, line + line);
  }
}

TEST_F(Options, OperandDoesNotBecomeTheArgumentThatTheLastOptionLacks) {
  // getopt moves it there after the first pass, so only that one speaks.
  for (const char letter : std::string("clLwnpbFJjeGM")) {
    expect_refused({"6", std::string("-") + letter},
                   kProgram + ": option requires an argument -- '" + letter + "'\n");
  }
}

TEST_F(Options, ParsingStartsAfreshAfterAnErrorWithinAGroupOfLetters) {
  EXPECT_EQ(parse({"-xRq"}), 1);
  expect_accepted({"-E", "-d"});
  EXPECT_EQ(the_filter().command_line.emulation_mode, kFormLengthMode);
  EXPECT_EQ(the_filter().command_line.framed_output, 1);
  EXPECT_EQ(the_filter().command_line.print_conditions_enabled, 1);
}

TEST_F(Options, SecondPassPutsConditionsAndPatternBackFirst) {
  the_filter().command_line.print_conditions_enabled = 0;
  the_filter().command_line.undefined_gaiji_pattern = 1;
  EXPECT_EQ(parse_on({}), 0);
  EXPECT_EQ(the_filter().command_line.print_conditions_enabled, 1);
  EXPECT_EQ(the_filter().command_line.undefined_gaiji_pattern, 0);
}

TEST_F(Options, CharacterPitchIs7200DividedByTheArgument) {
  struct Row {
    const char* argument;
    std::int32_t pitch;
  };
  for (const Row& row : std::initializer_list<Row>{{"1", 7200},
                                                   {"2", 3600},
                                                   {"7", 1028},
                                                   {"10", 720},
                                                   {"12", 600},
                                                   {"15", 480},
                                                   {"7199", 1},
                                                   {"7200", 1},
                                                   {"7201", 0},
                                                   {"2147483647", 0}}) {
    expect_accepted({"-c", row.argument});
    EXPECT_EQ(the_filter().command_line.character_pitch, row.pitch) << row.argument;
    EXPECT_EQ(the_filter().settings.char_pitch_source, kFromCommandLine) << row.argument;
  }
}

TEST_F(Options, CharacterPitchBelow1IsAnIllegalOption) {
  for (const char* argument : {"0", "-1", "-7200", "abc", "", "x10", "+", "-2147483648"}) {
    expect_refused({"-c", argument}, kProgram + ": illegal option c\n");
    EXPECT_EQ(the_filter().command_line.character_pitch, 0) << argument;
  }
}

TEST_F(Options, IllegalPitchEndsTheSecondPassAfterTheModesAreSet) {
  expect_refused({"-q", "-c0", "-d", "-R"}, kProgram + ": illegal option c\n");
  EXPECT_EQ(the_filter().command_line.print_conditions_enabled, 0);
  EXPECT_EQ(the_filter().command_line.framed_output, 0);
  EXPECT_EQ(the_filter().command_line.emulation_mode, kMode7);
}

TEST_F(Options, UndefinedGaijiPatternIsSpaceOrUbar) {
  expect_accepted({"-r", "space"});
  EXPECT_EQ(the_filter().command_line.undefined_gaiji_pattern, 0);
  expect_accepted({"-rubar"});
  EXPECT_EQ(the_filter().command_line.undefined_gaiji_pattern, 1);
}

TEST_F(Options, UndefinedGaijiPatternWithCapitalOrAnythingElseIsRejected) {
  for (const char* argument : {"Space", "UBAR", "", "spac", "spaces", "ubar ", " ubar"}) {
    expect_refused({"-r", argument}, kProgram + ": undefgaiji pattern error\n");
  }
}

TEST_F(Options, FormNameHas255BytesAtMost) {
  for (const std::size_t length : {0U, 1U, 254U, 255U}) {
    const std::string name(length, 'n');
    expect_accepted({"-n", name});
    EXPECT_EQ(the_filter().command_line.fcb_name, name);
  }
  for (const std::size_t length : {256U, 257U, 5000U}) {
    expect_refused({"-n", std::string(length, 'n')}, kProgram + ": FCB data error\n");
    EXPECT_EQ(the_filter().command_line.fcb_name, nullptr);
  }
}

TEST_F(Options, DirectoriesAreSplitAtColonsAndTheDefaultFollows) {
  expect_accepted({"-p", "a:b"});
  EXPECT_EQ(directories(), (std::vector<std::string>{"a", "b", kDefaultDirectory}));
}

TEST_F(Options, EmptyDirectoryFieldsAreSkipped) {
  expect_accepted({"-p", "::a:::b::"});
  EXPECT_EQ(directories(), (std::vector<std::string>{"a", "b", kDefaultDirectory}));
  for (const char* nothing : {"", ":", ":::"}) {
    expect_accepted({"-p", nothing});
    EXPECT_EQ(directories(), std::vector<std::string>{kDefaultDirectory});
  }
}

TEST_F(Options, SeveralDirectoryListsAppend) {
  expect_accepted({"-p", "a:b", "-d", "-p", "c"});
  EXPECT_EQ(directories(), (std::vector<std::string>{"a", "b", "c", kDefaultDirectory}));
}

TEST_F(Options, DirectoryHas255BytesAtMost) {
  const std::string longest(255, 'd');
  expect_accepted({"-p", "a:" + longest + ":b"});
  EXPECT_EQ(directories(), (std::vector<std::string>{"a", longest, "b", kDefaultDirectory}));
  for (const std::size_t length : {256U, 257U, 4000U}) {
    const std::string piece(length, 'd');
    for (const std::string& list : {piece, "a:" + piece, piece + ":b", "a::" + piece + ":"}) {
      expect_refused({"-p", list}, kProgram + ": FCB data error\n");
    }
  }
}

std::string pieces(int first, int last) {
  std::string list;
  for (int number = first; number <= last; ++number) {
    list += (list.empty() ? "" : ":") + ("d" + std::to_string(number));
  }
  return list;
}

TEST_F(Options, DirectoryListKeeps128PiecesThenTheDefault) {
  for (const int count : {127, 128, 129, 130}) {
    for (const int cut : {0, 1, 64, 127}) {
      expect_accepted({"-p", pieces(1, cut), "-p", pieces(cut + 1, count)});
      const int kept = count < 128 ? count : 128;
      const std::vector<std::string> list = directories();
      ASSERT_EQ(list.size(), static_cast<std::size_t>(kept) + 1);
      for (int number = 1; number <= kept; ++number) {
        EXPECT_EQ(list[static_cast<std::size_t>(number) - 1], "d" + std::to_string(number));
      }
      EXPECT_EQ(list.back(), kDefaultDirectory);
    }
  }
}

TEST_F(Options, PiecesAfterThe128thAreNotLookedAt) {
  const std::string too_long(256, 'd');
  expect_accepted({"-p", pieces(1, 128) + ":" + too_long, "-p", too_long});
  EXPECT_EQ(directories().size(), 129U);
  expect_refused({"-p", pieces(1, 127) + ":" + too_long}, kProgram + ": FCB data error\n");
}

TEST_F(Options, OverLongTextsOfFAndJAreCutToTheirRoom) {
  const int marker = the_filter().settings.spacing_index;
  for (const std::size_t length : {0U, 254U, 255U, 256U, 257U, 10000U}) {
    const std::string f_text(length, 'f');
    const std::string j_text(length, 'j');
    expect_accepted({"-F", f_text, "-J", j_text});
    EXPECT_EQ(the_filter().command_line.f_text.data(), f_text.substr(0, 255));
    EXPECT_EQ(the_filter().command_line.j_text.data(), j_text.substr(0, 255));
    EXPECT_EQ(the_filter().settings.spacing_index, marker);
  }
}

TEST_F(Options, ShorterTextOfFReplacesALongerOne) {
  expect_accepted({"-F", "longer", "-F", "ab", "-J", "longer", "-J", ""});
  EXPECT_STREQ(the_filter().command_line.f_text.data(), "ab");
  EXPECT_STREQ(the_filter().command_line.j_text.data(), "");
}

TEST_F(Options, OverLongCapabilitiesAreAccepted) {
  expect_accepted({"-G", std::string(100000, 'z') + "!f1!f2"});
  EXPECT_EQ(printer_has(the_filter().printer, kHasFonts, kPrinterClassF1 | kPrinterClassF2), 1U);
}

TEST_F(Options, CapabilitiesAreParsedOnceForEachOccurrence) {
  expect_accepted({"-G", "D240", "-GD400!Jja_JP"});
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 0), 240U);
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 400), 1U);
  // Had the second pass parsed them again, 13 resolutions would fill the 24 places.
  std::string list = "D1";
  for (int resolution = 2; resolution <= 13; ++resolution) {
    list += "!D" + std::to_string(resolution);
  }
  EXPECT_EQ(parse({"-G", list}), 0);
  parse_capabilities(the_filter().printer, "D14!D15");
  EXPECT_EQ(printer_has(the_filter().printer, kHasResolution, 15), 1U);
}

TEST_F(Options, WithoutArgumentsAtAllTheProgramNameIsEmpty) {
  char* argv[] = {nullptr};
  EXPECT_EQ(parse_options(option_targets(), 0, argv), 0);
  EXPECT_STREQ(the_filter().messages.program_name, "");
  EXPECT_EQ(directories(), std::vector<std::string>{kDefaultDirectory});
}

}  // namespace
}  // namespace rlx
