// The fast road against the reference: every job must come out the same along both.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "input/frames.h"
#include "support/descriptors.h"
#include "support/escaped_bytes.h"
#include "support/filter_state.h"
#include "support/input_stream.h"
#include "support/job_generator.h"

namespace rlx::testing {
namespace {

/// Jobs per run; the long suite asks for more through RLX_GENERATED_JOBS.
std::size_t generated_jobs() {
  const char* const wanted = std::getenv("RLX_GENERATED_JOBS");
  return wanted == nullptr ? 3000 : std::strtoul(wanted, nullptr, 10);
}

std::string shown(const GeneratedJob& job) {
  constexpr std::size_t kShort = 300;
  std::string words;
  for (const std::string& option : job.options) {
    words += option + " ";
  }
  words += "with " + std::to_string(job.input.size()) + " bytes";
  return job.input.size() > kShort ? words : words + ": " + encode_escaped_line(job.input);
}

void expect_same_along_both_roads(const GeneratedJob& job) {
  const JobResult reference = run_job(job.options, job.input, Road::record_by_record);
  const JobResult fast = run_job(job.options, job.input, Road::fast);
  ASSERT_EQ(reference.status, fast.status) << shown(job);
  ASSERT_EQ(reference.messages, fast.messages) << shown(job);
  ASSERT_TRUE(reference.output == fast.output)
      << shown(job) << '\n'
      << describe_difference(reference.output, fast.output);
}

TEST(Roads, WriteTheSameForGeneratedJobs) {
  const ScratchDirectory scratch;
  write_generator_forms();
  JobGenerator generator(20261120);
  std::size_t written = 0;
  for (std::size_t i = 0; i < generated_jobs(); ++i) {
    const GeneratedJob job = generator.next();
    SCOPED_TRACE(i);
    ASSERT_NO_FATAL_FAILURE(expect_same_along_both_roads(job));
    written += run_job(job.options, job.input).output.size();
  }
  // The jobs do print.
  EXPECT_GT(written, generated_jobs() * 100);
}

// One kind of unit across a border, at every offset

/// How the input arrives.
enum class Framing : std::uint8_t { none, one_frame, several_frames };

std::string arriving(Framing framing, std::string_view data) {
  constexpr std::size_t kSmallFrame = 997;
  if (framing == Framing::none) {
    return std::string(data);
  }
  const std::size_t longest = framing == Framing::one_frame ? kMaxInputFrame : kSmallFrame;
  std::string frames;
  for (; data.size() > longest; data.remove_prefix(longest)) {
    frames += cnt_frame(data.substr(0, longest));
  }
  return frames + end_frame(data);
}

struct UnitCase {
  const char* name;
  std::string unit;
};

const std::string kWideText = "\xe3\x81\x82";

/// Units that a road may take in another way than the other one, many of them next to double-byte
/// text, where switches are.
const std::vector<UnitCase> kUnits{
    {"Text", "ab\n"},
    {"Controls", "a\r\n\t\x01\x7f"},
    {"LineFeeds", "\n"},
    {"TwoBytes", "\xc3\xa9"},
    {"ThreeBytes", "\xe3\x81\x82\xe3\x81\x84"},
    {"FourBytes", "\xf0\xa0\x80\x8b"},
    {"FiveBytes", "\xf8\x88\x80\x80\x80"},
    {"SixBytes", "\xfc\x84\x80\x80\x80\x80"},
    {"AllLengths", "\xc3\xa9z\xf0\xa0\x80\x8b\xfc\x84\x80\x80\x80\x80\xe3\x81\x82"},
    {"Switches", kWideText + "z"},
    {"SwitchesOfTwoBytes", "\xc3\xa9z"},
    {"LinesOfBothSets", kWideText + "\n" + "z\n"},
    {"Stray", "z\x80"},
    {"StrayBehindWide", kWideText + "\x81"},
    {"Invalid", "\xff"},
    {"InvalidBehindWide", kWideText + "\xff\x80"},
    {"InvalidBetween", kWideText + "\xfez"},
    {"OneOfTwo", "\xc3z"},
    {"OneOfThree", "\xe3zz"},
    {"TwoOfThree", "\xe3\x81z"},
    {"OneOfFour", "\xf0zzz"},
    {"TwoOfFour", "\xf0\xa0zz"},
    {"ThreeOfFour", "\xf0\xa0\x80z"},
    {"LeadBeforeLead", "\xe3\xe3\x81\x82"},
    {"LeadBeforeLineFeeds", "\xe3\n\n\n"},
    {"LeadBeforeSequence", "\xe3\x1b[1a\x1b[1a"},
    {"LeadBeforePrefix", "\xe3\x8e\xb1\x8e\xb1"},
    {"ShiftedByte", "\x8e\xb1"},
    {"ShiftedText", "z\x8e\x41"},
    {"ShiftedLineFeed", "\x8e\n\n"},
    {"ShiftedEsc", "\x8e\x1b[1a"},
    {"ShiftedFs", "\x8e\x1c%1p"},
    {"ShiftedInvalid", "\x8e\xff"},
    {"ShiftedTwoBytes", "\x8e\xc3\xa9"},
    {"ShiftedWide", "\x8e\xe3\x81\x82"},
    {"ShiftedFiveBytes", "\x8e\xf8\x88\x80\x80\x80"},
    {"ShiftedSixBytes", "\x8e\xfc\x84\x80\x80\x80\x80"},
    {"ShiftedPrefix", "\x8e\x8e"},
    {"ShiftedPrefixAndMore", "\x8e\x8e\x8e\xb1z"},
    {"ShiftedBehindWide", kWideText + "\x8e\xb1"},
    {"ShiftedFormFeed", "ab\x8e\x0c"},
    {"FormFeeds", "ab\x0c"},
    {"FormFeedBehindWide", kWideText + "\x0c"},
    {"FormFeedEndsTwo", "a\xc3\x0c"},
    {"FormFeedEndsThree", "a\xe3\x81\x0c"},
    {"FormFeedEndsSix", "a\xfc\x84\x80\x80\x80\x0c"},
    {"FormFeedInside", "a\xe3\x0c\x82"},
    {"ShiftedEndsInFormFeed", "a\x8e\xe3\x81\x0c"},
    {"Csi", kWideText + "\x1b[12a"},
    {"CsiAfterSpace", kWideText + "\x1b[3 Ez"},
    {"CsiStartsPage", "\xff\x1b[5`"},
    {"SetSequences", "\x1b$@" + kWideText + "\x1b(Hz"},
    {"SizeSequences", kWideText + "\x1bQ3 yz\x1bQ4 y"},
    {"FsOfASlot", "\x1c%!\" p" + kWideText},
    {"FsOfTheGeneralBuffer", "\x1c$!$$p" + kWideText + "z"},
    {"FsByThirdByte", "\x1c(`q\x1c(ap\x1c(bq" + kWideText},
    {"FsOfNoSlot", "\x1c\"1p" + kWideText},
    {"FsComplete", "\x1cJ" + kWideText + "\x1cK"},
    {"EscComplete", "z\x1b\x63" + kWideText},
    {"QOfSlots", "\x1bQ2!f\x1bQ4/E\x1bQ5/Fz\x1bQ6/G"},
    {"QOfTheGeneralBuffer", "\x1bQ7!R" + kWideText},
    {"NewStateBehindText", kWideText + "z\x1bQ100;100!H"},
    {"NewStateBeforeInvalid", "\x1bQ1!@\xff\x1bQ1!@"},
    {"NewStateAndContent", "\x1bQ1!x\x1bQ1!H\n"},
    {"SequenceOfABlock", "\x1c%" + std::string(61, '1') + "p" + kWideText},
    {"SequenceOfMoreThanABlock", "\x1c%" + std::string(62, '1') + "pz"},
    {"LongSequence", kWideText + "\x1b[" + std::string(90, '1') + "a"},
    {"LongQSequence", kWideText + "\x1bQ" + std::string(70, '1') + "!H"},
    {"EscAmongParameters", "\x1c%\x1b[1p" + kWideText},
    {"LineFeedAmongParameters", "\x1b[\n1\na\n"},
    {"FormFeedAmongParameters", "\x1c%1\x0c\x31pz"},
    {"HighBytesAmongParameters", "\x1b[\x81\xff\x31\x61" + kWideText},
    {"CharacterAmongParameters", "z\x1b[" + kWideText + "a"},
    {"LeadAmongParameters", "z\x1b[\xe3\x31\x61z"},
    {"PrefixAmongParameters", "z\x1b[\x8e\x31\x61z"},
    {"UnknownSequence", kWideText + "\x1bx"},
    {"MalformedSequence", kWideText + "\x1c 1A"},
    {"CutSequence", kWideText + "\x1bQ1;"},
    {"SequenceWithData", kWideText + "\x1bQ1;5!aABCDE"},
    {"SequenceWithFormFeedData", "\x1bQ1;3!aA\x0c\x42z"},
    {"SequenceForTheOtherRoad", kWideText + "\x1bQ5!I"},
};

struct Way {
  std::vector<std::string> options;
  Framing framing = Framing::none;
};

const std::vector<Way>& ways() {
  static const std::vector<Way> all{
      {{}},
      {{"-p", "forms", "-n", "six"}},
      {{"-p", "forms", "-n", "mixd"}},
      {{"-L", "60"}},
      {{"-L", "66", "-l", "6"}},
      {{"-d"}, Framing::one_frame},
      {{"-d"}, Framing::several_frames},
  };
  return all;
}

std::string repeated(std::size_t count, std::string_view unit) {
  std::string all;
  for (; count > 0; --count) {
    all += unit;
  }
  return all;
}

class RoadsAcrossUnits : public ::testing::TestWithParam<UnitCase> {
 protected:
  RoadsAcrossUnits() { write_generator_forms(); }

  /// All pages in one job; when it does not come out the same, each of them by itself.
  static void expect_same_pages(const Way& way, const std::vector<std::string>& pages) {
    std::string all;
    for (const std::string& page : pages) {
      all += page;
    }
    const std::string input = arriving(way.framing, all);
    if (run_job(way.options, input, Road::record_by_record).output ==
        run_job(way.options, input).output) {
      return;
    }
    for (const std::string& page : pages) {
      ASSERT_NO_FATAL_FAILURE(
          expect_same_along_both_roads({way.options, arriving(way.framing, page)}));
    }
    FAIL() << "all together " << shown({way.options, input});
  }

  static std::vector<std::string> lengths_of(std::string_view filler, std::string_view end) {
    constexpr std::size_t kLongest = 130;
    std::vector<std::string> pages;
    for (std::size_t offset = 0; offset <= kLongest; ++offset) {
      const std::size_t fillers = offset / filler.size();
      pages.push_back(repeated(fillers, filler) + std::string(offset % filler.size(), '\x01') +
                      repeated(3, GetParam().unit) + std::string(end));
    }
    return pages;
  }

 private:
  ScratchDirectory scratch_;
};

// A run begins behind every FF, and its blocks with it.
TEST_P(RoadsAcrossUnits, WriteTheSameAcrossTheBlocksOfARun) {
  for (const Way& way : ways()) {
    ASSERT_NO_FATAL_FAILURE(expect_same_pages(way, lengths_of("x", "\x0c")));
  }
  for (const Way& way : {ways()[2], ways()[5]}) {
    ASSERT_NO_FATAL_FAILURE(expect_same_pages(way, lengths_of(kWideText, "z\x0c")));
  }
  for (const std::string_view filler : {"\xff", "z\xe3\x81\x82", "\x8e\xb1"}) {
    ASSERT_NO_FATAL_FAILURE(expect_same_pages({}, lengths_of(filler, "\x0c")));
  }
  for (const std::string_view filler : {"\xc3z", "\x1b[1a"}) {
    ASSERT_NO_FATAL_FAILURE(expect_same_pages({}, lengths_of(filler, "")));
  }
}

// Where the input ends nothing stands behind a block.
TEST_P(RoadsAcrossUnits, WriteTheSameAtTheEndOfTheInput) {
  const std::string unit = GetParam().unit;
  for (std::size_t cut = 0; cut < std::min<std::size_t>(unit.size(), 8); ++cut) {
    const std::string units = repeated(3, unit.substr(0, unit.size() - cut));
    for (const std::size_t offset : {0U, 1U, 61U, 62U, 63U, 64U, 120U}) {
      for (const Way& way : {ways()[0], ways()[2], ways()[4], ways()[5]}) {
        ASSERT_NO_FATAL_FAILURE(expect_same_along_both_roads(
            {way.options, arriving(way.framing, std::string(offset, 'x') + units)}));
      }
    }
  }
}

constexpr std::size_t kBlock = 8192;
constexpr std::size_t kBuffer = 65536;
constexpr std::size_t kOutputFrame = 4096;

/// Units across a border of the output or the input, so that every byte of one, and of a switch in
/// front of it, comes to stand on it.
void expect_same_across(const Way& way, std::size_t border, const std::string& unit) {
  for (std::size_t offset = 0; offset <= std::min<std::size_t>(48, unit.size() + 16); ++offset) {
    const std::string data = std::string(border - 24 - offset, 'x') + repeated(12, unit);
    SCOPED_TRACE(offset);
    ASSERT_NO_FATAL_FAILURE(
        expect_same_along_both_roads({way.options, arriving(way.framing, data)}));
  }
}

TEST_P(RoadsAcrossUnits, WriteTheSameAcrossABlockOfOutput) {
  expect_same_across({}, kBlock, GetParam().unit);
}

TEST_P(RoadsAcrossUnits, WriteTheSameAcrossAFrameOfOutput) {
  expect_same_across({{"-d"}, Framing::one_frame}, kOutputFrame, GetParam().unit);
}

INSTANTIATE_TEST_SUITE_P(Units, RoadsAcrossUnits, ::testing::ValuesIn(kUnits),
                         [](const auto& unit_case) { return unit_case.param.name; });

/// Units that are worth a longer way.
struct BorderCase {
  const char* name;
  Way way;
  std::size_t border;
  std::string unit;
};

class RoadsAcrossBorder : public ::testing::TestWithParam<BorderCase> {};

TEST_P(RoadsAcrossBorder, WriteTheSame) {
  const ScratchDirectory scratch;
  write_generator_forms();
  const BorderCase& border_case = GetParam();
  expect_same_across(border_case.way, border_case.border, border_case.unit);
}

const Way kForm{{"-p", "forms", "-n", "six"}};
const Way kMixedForm{{"-p", "forms", "-n", "mixd"}};
const Way kCounted{{"-L", "66", "-l", "6"}};
const Way kSeveralFrames{{"-d"}, Framing::several_frames};

INSTANTIATE_TEST_SUITE_P(
    Blocks, RoadsAcrossBorder,
    ::testing::Values(
        BorderCase{"FormLinesAcrossBlock", kForm, kBlock, "y\n"},
        BorderCase{"LinesOfMixedFormAcrossBlock", kMixedForm, kBlock, kWideText + "\n\xff\n"},
        BorderCase{"CountedLinesAcrossBlock", kCounted, kBlock, kWideText + "y\n"},
        BorderCase{"TextAcrossBuffer", {}, kBuffer, "ab\n"},
        BorderCase{"CharactersAcrossBuffer", {}, kBuffer, "\xe3\x81\x82\xe3\x81\x84"},
        BorderCase{"LongCharactersAcrossBuffer", {}, kBuffer, "\xfc\x84\x80\x80\x80\x80"},
        BorderCase{"SwitchesAcrossBuffer", {}, kBuffer, "\xe3\x81\x82z"},
        BorderCase{"ShiftedAcrossBuffer", {}, kBuffer, "\x8e\xb1\x8e\xe3\x81\x82"},
        BorderCase{"FormLinesAcrossBuffer", kForm, kBuffer, "y\n"},
        BorderCase{"SequencesAcrossBuffer", {}, kBuffer, "\x1c%!\" p"},
        BorderCase{"SwitchesAcrossInputFrame", kSeveralFrames, 997, "\xe3\x81\x82z"},
        BorderCase{"LongCharactersAcrossInputFrame", kSeveralFrames, 997,
                   "\xfc\x84\x80\x80\x80\x80"},
        BorderCase{"ShiftedAcrossInputFrame", kSeveralFrames, 997, "\x8e\xb1\x8e\xe3\x81\x82"},
        BorderCase{"SequencesAcrossInputFrame", kSeveralFrames, 997, kWideText + "\x1c%!\" p"}),
    [](const auto& border_case) { return border_case.param.name; });

}  // namespace
}  // namespace rlx::testing
