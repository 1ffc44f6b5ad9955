// Whole jobs that walk a form to its last line and over it: the bytes, and where on the paper a
// printer that follows them puts the text.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "support/descriptors.h"
#include "support/filter_state.h"
#include "support/main_loop_fixture.h"
#include "support/page_data.h"

namespace rlx::testing {
namespace {

/// A pitch as the form file, the printer and the paper know it.
struct Pitch {
  int height_7200ths;
  int height_72nds;
  std::string_view sequence;
};

constexpr std::array<Pitch, 5> kPitches{{
    {2400, 24, "\x1c%\"$ p"},
    {1800, 18, "\x1c%!( p"},
    {1200, 12, "\x1c%!\" p"},
    {900, 9, "\x1c%) p"},
    {600, 6, "\x1c%& p"},
}};
constexpr std::array<Road, 2> kRoads{Road::fast, Road::record_by_record};

std::string repeated(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) {
    all += text;
  }
  return all;
}

class FormWalk : public FilterTest {
 protected:
  static void form(int top_line, const std::string& lines) {
    write_file("forms/fcbe/FORM", "print " + std::to_string(top_line) + " 144000\n" + lines);
  }

  /// Expects the same of both roads: the page data, and how many pages the printer is told of (a
  /// form feed inside a page is not one of them). The job ends with its last page.
  static void expect_job(const std::string& input, const std::string& data, std::size_t pages) {
    for (const Road road : kRoads) {
      const JobResult result = run_job({"-p", "forms", "-n", "FORM"}, input, road);
      EXPECT_EQ(result.status, 0);
      EXPECT_EQ(result.messages, "");
      const DataBlocks blocks = data_blocks(result.output);
      EXPECT_EQ(blocks.data, kStartConditions + data + std::string("\x1b\x63") +
                                 bytes("\x1b\x7f\x00\x00\x01\x00"));
      EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(blocks.kinds, '2')), pages);
    }
  }

 private:
  ScratchDirectory scratch_;
};

/// A form of `lines` lines of one pitch, and what its jobs consist of: a text on each line from the
/// top line to the last one.
struct EvenForm {
  const Pitch& pitch;
  int lines;
  int top_line;

  std::string file() const {
    return "lpi " + std::to_string(pitch.height_7200ths) + " " + std::to_string(lines) + "\n";
  }
  std::string top() const {
    return repeated(top_line - 1, std::string(pitch.sequence) + "\n") + std::string(pitch.sequence);
  }
  std::string texts_in() const { return repeated(lines - top_line, "x\n") + "last"; }
  std::string texts_out() const {
    return repeated(lines - top_line, "x\n" + std::string(pitch.sequence)) + "last";
  }
};

/// Every pitch, on forms from one line to 20 inches, printed from the first, the second and the
/// last line.
template <typename Action>
void for_each_even_form(Action action) {
  for (const Pitch& pitch : kPitches) {
    for (const int lines : {1, 2, 3, 79200 / pitch.height_7200ths, 144000 / pitch.height_7200ths}) {
      for (const int top_line : {1, 2, lines}) {
        if (top_line <= lines) {
          SCOPED_TRACE(std::to_string(pitch.height_7200ths) + ", " + std::to_string(lines) +
                       " lines from " + std::to_string(top_line));
          action(EvenForm{pitch, lines, top_line});
        }
      }
    }
  }
}

TEST_F(FormWalk, FormFeedBehindTheTextOfTheLastLine) {
  for_each_even_form([](const EvenForm& even) {
    form(even.top_line, even.file());
    const std::string page = even.top() + even.texts_out() + "\x0c";
    expect_job(even.texts_in() + "\x0c" + even.texts_in() + "\x0c", page + page, 2);
    // Without the form feed the end of the job brings it.
    expect_job(even.texts_in(), page, 1);
  });
}

TEST_F(FormWalk, LineFeedThatLeavesTheFormBecomesAFormFeedInsideThePage) {
  for_each_even_form([](const EvenForm& even) {
    form(even.top_line, even.file());
    const std::string walked = even.top() + even.texts_out() + "\x0c";
    expect_job(even.texts_in() + "\n" + even.texts_in() + "\n" + even.texts_in() + "\x0c",
               walked + walked + walked, 1);
  });
}

TEST_F(FormWalk, FormFeedBehindTheLineFeedThatLeavesTheFormIsTheOnlyOne) {
  for_each_even_form([](const EvenForm& even) {
    form(even.top_line, even.file());
    const std::string page = even.top() + even.texts_out() + "\x0c";
    expect_job(even.texts_in() + "\n\x0c" + even.texts_in() + "\n\x0c", page + page, 2);
  });
}

TEST_F(FormWalk, FinalLineFeedOnTheLastLineIsWrittenAsItStands) {
  for_each_even_form([](const EvenForm& even) {
    form(even.top_line, even.file());
    expect_job(even.texts_in() + "\n", even.top() + even.texts_out() + "\n\x0c", 1);
    // One more leaves the form, and what is held then never goes out.
    expect_job(even.texts_in() + "\n\x0c", even.top() + even.texts_out() + "\x0c", 1);
  });
}

TEST_F(FormWalk, FormThatIsLeftByLineFeedsAlone) {
  for_each_even_form([](const EvenForm& even) {
    form(even.top_line, even.file());
    const int movable = even.lines - even.top_line;
    const std::string fed = repeated(movable, "\n" + std::string(even.pitch.sequence));
    expect_job("A" + repeated(2 * (movable + 1), "\n") + "B\x0c",
               even.top() + "A" + fed + "\x0c" + even.top() + fed + "\x0c" + even.top() + "B\x0c",
               1);
  });
}

TEST_F(FormWalk, BytesOfAFormOfAllPitches) {
  form(2, "lpi 1200 1\nlpi 2400 1\nlpi 1800 1\nlpi 900 1\nlpi 600 1\n");
  expect_job("a\nb\nc\nd\ne\n\nf",
             "\x1c%!\" p\n\x1c%\"$ p"
             "a\n\x1c%!( p"
             "b\n\x1c%) p"
             "c\n\x1c%& p"
             "d"
             "\x0c\x1c%!\" p\n\x1c%\"$ p"
             "e\n\x1c%!( p\n\x1c%) p"
             "f\x0c",
             1);
}

/// A letter on the paper: the sheet, the distance of its line from the sheet's top, and the line's
/// height.
struct Mark {
  char letter;
  int sheet;
  int top_72nds;
  int height_72nds;
  bool operator==(const Mark&) const = default;
};

// GoogleTest looks for this name.
// NOLINTNEXTLINE(readability-identifier-naming)
void PrintTo(const Mark& mark, std::ostream* out) {
  *out << mark.letter << " on sheet " << mark.sheet << " at " << mark.top_72nds << ", "
       << mark.height_72nds << " high";
}

/// A printer that knows letters, LF, FF and line pitches: LF moves by the pitch in force.
std::vector<Mark> printed(std::string_view data) {
  std::vector<Mark> marks;
  Mark now{' ', 0, 0, 0};
  while (!data.empty()) {
    const auto* const pitch = std::ranges::find_if(
        kPitches, [data](const Pitch& one) { return data.starts_with(one.sequence); });
    if (pitch != kPitches.end()) {
      now.height_72nds = pitch->height_72nds;
      data.remove_prefix(pitch->sequence.size());
      continue;
    }
    if (data.front() == '\n') {
      now.top_72nds += now.height_72nds;
    } else if (data.front() == '\x0c') {
      now.top_72nds = 0;
      ++now.sheet;
    } else {
      marks.push_back({data.front(), now.sheet, now.top_72nds, now.height_72nds});
    }
    data.remove_prefix(1);
  }
  return marks;
}

/// A form of runs of every pitch, line by line.
const std::vector<Pitch>& mixed_lines() {
  static const std::vector<Pitch> kLines = [] {
    std::vector<Pitch> lines;
    for (int round = 0; round < 3; ++round) {
      for (const Pitch& pitch : kPitches) {
        lines.insert(lines.end(), static_cast<std::size_t>(round + 1), pitch);
      }
    }
    return lines;
  }();
  return kLines;
}

/// Where the letter of line `line` (from 0) of the mixed form stands.
Mark on_line(char letter, int sheet, std::size_t line) {
  int top = 0;
  for (std::size_t above = 0; above < line; ++above) {
    top += mixed_lines()[above].height_72nds;
  }
  return {letter, sheet, top, mixed_lines()[line].height_72nds};
}

TEST_F(FormWalk, EveryLineOfAMixedFormLiesWhereTheFormPutsIt) {
  std::string file;
  for (const Pitch& pitch : mixed_lines()) {
    file += "lpi " + std::to_string(pitch.height_7200ths) + " 1\n";
  }
  const std::size_t lines = mixed_lines().size();
  for (std::size_t top_line = 1; top_line <= lines; ++top_line) {
    form(static_cast<int>(top_line), file);
    for (const std::string leaving : {"\n", "\x0c", "\n\x0c"}) {
      std::string input;
      std::vector<Mark> expected;
      for (int sheet = 0; sheet < 3; ++sheet) {
        for (std::size_t line = top_line - 1; line < lines; ++line) {
          const char letter = static_cast<char>('A' + line % 26);
          input += letter + (line + 1 < lines ? "\n" : leaving);
          expected.push_back(on_line(letter, sheet, line));
        }
      }
      std::string data = job_pages(run_job({"-p", "forms", "-n", "FORM"}, input));
      std::erase(data, '|');
      ASSERT_TRUE(data.starts_with(kStartConditions));
      EXPECT_EQ(printed(data.substr(kStartConditions.size())), expected) << top_line;
    }
  }
}

}  // namespace
}  // namespace rlx::testing
