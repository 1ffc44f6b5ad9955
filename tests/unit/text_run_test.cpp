// The fast road by itself: what it takes, and what it leaves behind, against the record-by-record
// road; and what must come of jobs at the borders of blocks and frames, by hand.

#include "driver/fast_road/text_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "driver/loop/routing.h"
#include "input/classifier.h"
#include "job/command_record.h"
#include "output/page_writer.h"
#include "support/descriptors.h"
#include "support/escaped_bytes.h"
#include "support/guarded_bytes.h"
#include "support/input_stream.h"
#include "support/main_loop_fixture.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

const std::string kSelectDouble = "\x1bQ2 y\x1b$@";
const std::string kSelectSingle = "\x1bQ1 y\x1b(H";

// What is noted

/// What stands noted when a run begins.
struct NotedBefore {
  bool content_since_conditions = false;
  int page_has_content = 0;
  int page_started = 0;
  bool double_byte = false;
  bool download = false;  ///< the double-byte set is the download set
};

/// All that a run may change.
struct NotedBehind {
  bool content_since_conditions = false;
  int page_has_content = 0;
  int page_started = 0;
  int settings_changed = 0;
  int set = 0;
  int designation = 0;
  std::int64_t line_counter = 0;
  std::int32_t form_line = 0;
  std::string gathered;
  std::string kept;

  bool operator==(const NotedBehind&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const NotedBehind& noted) {
  return stream << "content " << noted.content_since_conditions << ' ' << noted.page_has_content
                << " started " << noted.page_started << " settings " << noted.settings_changed
                << " set " << noted.set << ' ' << noted.designation << " line "
                << noted.line_counter << ' ' << noted.form_line << " gathered "
                << encode_escaped_line(noted.gathered) << " kept "
                << encode_escaped_line(noted.kept);
}

/// The carried settings, each behind the number of its slot.
std::string settings_kept() {
  const CarriedSettings& carried = the_filter().carried;
  const Bytes general = carried.general->gathered();
  std::string kept(general.begin(), general.end());
  for (std::size_t i = 0; i < carried.slots.size(); ++i) {
    const CarriedSettings::Slot& slot = carried.slots[i];
    kept += std::to_string(i + 1) + ':';
    kept.append(slot.bytes.begin(), slot.bytes.begin() + slot.length);
  }
  return kept;
}

NotedBehind noted_behind() {
  const LoopState& loop = the_filter().loop;
  const PieceSink sink = page_sink(the_filter().page);
  return {loop.content_since_conditions,
          loop.job.page_has_content,
          loop.job.page_started,
          loop.job.settings_changed,
          loop.character_set.set,
          loop.character_set.designation,
          loop.line_counter,
          loop.current_store->cur_line,
          {sink.bytes, sink.bytes + *sink.length},
          settings_kept()};
}

class TextRunNotes : public MainLoopTest {
 protected:
  /// The job as it was when the test began, but for what is noted.
  static void start(const NotedBefore& before) {
    LoopState& loop = the_filter().loop;
    restart_input();
    restart_page();
    forget_kept_settings(the_filter().carried);
    loop.content_since_conditions = before.content_since_conditions;
    loop.job.page_has_content = before.page_has_content;
    loop.job.page_started = before.page_started;
    loop.job.settings_changed = 0;
    loop.line_counter = 0;
    loop.current_store->cur_line = 0;
    loop.pending_vertical_bytes.length = 0;
    loop.character_set.select_single_byte();
    if (before.double_byte) {
      loop.character_set.select_double_byte();
    }
    if (before.download) {
      loop.character_set.select_download();
    }
  }

  static ByteWindow& give(std::string_view input) {
    ByteWindow& window = the_filter().source.raw.window;
    window = {raw(input), raw(input) + input.size()};
    return window;
  }

  /// @return bytes that the fast road took.
  static std::size_t take_fast(std::string_view input) {
    const ByteWindow& window = give(input);
    write_text_run(the_filter().loop);
    return static_cast<std::size_t>(window.next - raw(input));
  }

  /// Takes as many bytes along the record-by-record road.
  static void take_records(std::string_view input, std::size_t count) {
    const ByteWindow& window = give(input);
    LoopState& loop = the_filter().loop;
    while (window.next < raw(input) + count) {
      ASSERT_EQ(zqclass(loop.classifier, &loop.record), ST_OK);
      ASSERT_TRUE(route_record(loop));
    }
    ASSERT_EQ(window.next, raw(input) + count) << "a command was divided";
  }

  /// Expects that both roads write, keep and note the same. @return bytes that the fast road took.
  static std::size_t expect_same_notes(const NotedBefore& before, std::string_view input) {
    start(before);
    const std::size_t count = take_fast(input);
    const NotedBehind fast = noted_behind();
    start(before);
    take_records(input, count);
    EXPECT_EQ(fast, noted_behind())
        << encode_escaped_line(input) << " from " << before.content_since_conditions
        << before.page_has_content << before.page_started << before.double_byte;
    return count;
  }

  /// Nothing noted, each thing alone, and all.
  static std::vector<NotedBefore> kinds_of_starts() {
    return {{},
            {true, 0, 0, false},
            {false, 1, 0, false},
            {false, 0, 1, false},
            {false, 0, 0, true},
            {true, 1, 1, true}};
  }

  // A look behind the input finds its end.
  StandardInput no_more_{""};
};

/// Bytes that note nothing, for a run of more than a block.
const std::string kNothingNoted(200, '\x01');

/// Puts something in front of and behind a unit.
std::vector<std::string> in_surroundings(const std::string& unit) {
  return {unit,          "x" + unit,  "\xe3\x81\x82" + unit, unit + "x",
          unit + "\xff", unit + "\r", kNothingNoted + unit,  unit + kNothingNoted};
}

TEST_F(TextRunNotes, EveryByte) {
  for (int byte = 0; byte < 256; ++byte) {
    for (const std::string& unit : {one(byte), one(byte) + std::string(5, '\x80')}) {
      for (const std::string& input : in_surroundings(unit)) {
        for (const NotedBefore& before : kinds_of_starts()) {
          expect_same_notes(before, input);
        }
      }
    }
  }
}

TEST_F(TextRunNotes, EveryByteBehindAPrefix) {
  for (int byte = 0; byte < 256; ++byte) {
    for (const NotedBefore& before : {NotedBefore{}, NotedBefore{false, 0, 0, true}}) {
      expect_same_notes(before, "\x8e" + one(byte));
      expect_same_notes(before, "\x8e" + one(byte) + std::string(6, '\x80'));
      expect_same_notes(before, "\x8e" + one(byte) + kNothingNoted);
    }
  }
}

TEST_F(TextRunNotes, EveryByteAsTheLastOneOfACharacter) {
  for (int byte = 0; byte < 256; ++byte) {
    for (const std::string_view front : {"\xc3", "\xe3\x81", "\xf0\xa0\x80", "\xf8\x88\x80\x80",
                                         "\xfc\x84\x80\x80\x80", "\x8e\xe3\x81"}) {
      expect_same_notes({}, std::string(front) + one(byte));
      expect_same_notes({}, std::string(front) + one(byte) + kNothingNoted);
    }
  }
}

TEST_F(TextRunNotes, WhichBytesAreTaken) {
  for (int byte = 0; byte < 256; ++byte) {
    start({});
    const bool begins_more = byte == 0x1b || byte == 0x1c || byte == 0x8e ||
                             (byte >= 0xc0 && byte <= 0xfd) || byte == 0x0c;
    EXPECT_EQ(take_fast(one(byte)), begins_more ? 0U : 1U) << byte;
    // Of what begins a sequence nothing is taken without it.
    const bool begins_sequence = byte == 0x1b || byte == 0x1c;
    start({});
    EXPECT_EQ(take_fast(one(byte) + std::string(300, '\x80')),
              byte == 0x0c || begins_sequence ? 0U : 301U)
        << byte;
  }
}

// Flags by hand: what stands on the page, and whether a form must feed a sheet.

struct NotesCase {
  std::string input;
  bool content_since_conditions;
  int page_has_content;
  int page_started;
};

TEST_F(TextRunNotes, WhatTextAndSequencesNote) {
  const std::string character = "\xe3\x81\x82";
  const std::string new_state = "\x1bQ100;100!H";
  const std::string content = "\x1bQ1!x";
  const std::string page_start = "\x1b[5`";
  const std::string none = "\x1c%!\"\x70";
  for (const NotesCase& wanted : std::vector<NotesCase>{
           {"x", true, 1, 1},
           {character, true, 1, 1},
           {"\x8e\xb1", true, 1, 1},
           {"\x8e\x0a", true, 1, 1},
           {"\xff", true, 1, 0},
           {"\x80", true, 1, 0},
           {"\n", false, 0, 1},
           {"\r", false, 0, 1},
           {"\t", false, 0, 0},
           {"\b\v\x0e\x0f\x11\x7f", false, 0, 0},
           {none, false, 0, 0},
           {content, true, 1, 0},
           {page_start, false, 0, 1},
           {new_state, false, 0, 0},
           {"x" + new_state, false, 1, 1},
           {new_state + "x", true, 1, 1},
           {new_state + "\xff", true, 1, 0},
           {new_state + "\n", false, 0, 1},
           {character + new_state, false, 1, 1},
           {new_state + character, true, 1, 1},
           {new_state + content, true, 1, 0},
           {content + new_state, false, 1, 0},
           {content + new_state + content, true, 1, 0},
           {"x" + new_state + none + "\n" + page_start, false, 1, 1},
           {"x" + new_state + "y" + new_state, false, 1, 1},
           {"x" + new_state + new_state + "y", true, 1, 1},
           {"x" + kNothingNoted + new_state, false, 1, 1},
           {new_state + kNothingNoted + "x", true, 1, 1},
           {new_state + kNothingNoted, false, 0, 0},
           // A LF or CR among the parameters is none.
           {"\x1c%\n\r\x70", false, 0, 0},
           // Nor is text there.
           {"\x1b[\xe3\x81\x82\xff\x61", false, 0, 0},
       }) {
    for (const std::size_t behind : {0U, 1U, 200U}) {
      const std::string input = wanted.input + kNothingNoted.substr(0, behind);
      EXPECT_EQ(expect_same_notes({}, input), input.size()) << encode_escaped_line(input);
      const NotedBehind noted = noted_behind();
      EXPECT_EQ(noted.content_since_conditions, wanted.content_since_conditions)
          << encode_escaped_line(input);
      EXPECT_EQ(noted.page_has_content, wanted.page_has_content) << encode_escaped_line(input);
      EXPECT_EQ(noted.page_started, wanted.page_started) << encode_escaped_line(input);
    }
  }
}

// Sequences

std::string with_parameter(std::string_view front, std::string_view end) {
  return std::string(front) + "1" + std::string(end);
}

/// One sequence of each kind that is only written.
std::vector<std::string> taken_sequences() {
  std::vector<std::string> all{"\x1b$@", "\x1b(H",   "\x1b\x63", "\x1b[1 E", "\x1cJ",
                               "\x1cK",  "\x1c(`1p", "\x1c(a1q", "\x1c(by"};
  for (const char final : std::string_view("`ade")) {
    all.push_back(with_parameter("\x1b[", std::string(1, final)));
  }
  for (const char second : std::string_view("\"$%&(*")) {
    all.push_back(with_parameter(std::string("\x1c") + second, "s"));
  }
  for (const char final : std::string_view("xy")) {
    all.push_back(with_parameter("\x1bQ", std::string(" ") + final));
  }
  for (const char final : std::string_view("@ACDFHRWXY\\]bcfjklmqsuvxyz")) {
    all.push_back(with_parameter("\x1bQ", std::string("!") + final));
  }
  for (const char final : std::string_view("EFGHIUVWXb|}")) {
    all.push_back(with_parameter("\x1bQ", std::string("/") + final));
  }
  return all;
}

/// Sequences that do more than to be written, unknown and malformed ones, and ones with data.
const std::vector<std::string> kLeftSequences{
    "\x1bQ1!I", "\x1bQ1/`",     "\x1bQ1!a", "\x1bQ1;2!aXX",
    "\x1bQ1 p", "\x1bQ1/p",     "\x1bQ1!n", "\x1bQ1 ~",
    "\x1bQ1!~", "\x1bQ1;2 oXX", "\x1bQ1 n", "\x1bQ1 H",
    "\x1bQ1/C", "\x1bQ1H",      "\x1bQ1!B", "\x1bQ\x7f\x31!H",
    "\x1bx",    "\x1b%1A",      "\x1b$A",   "\x1b(x",
    "\x1b[1E",  "\x1b[1f",

    "\x1c\x7f", "\x1c 1A",      "\x1cL",    "\x1b\x7f\x61\x62\x63\x64",
    "\x1bQ1",   "\x1b[1",       "\x1c%1",   "\x1b$",
    "\x1b(",    "\x1b",         "\x1c",     "\x1c%1\x0c\x31p"};

TEST_F(TextRunNotes, EverySequenceThatIsOnlyWritten) {
  for (const std::string& sequence : taken_sequences()) {
    for (const std::string& input : in_surroundings(sequence)) {
      for (const NotedBefore& before : kinds_of_starts()) {
        ASSERT_EQ(expect_same_notes(before, input), input.size()) << encode_escaped_line(input);
      }
    }
  }
}

TEST_F(TextRunNotes, EveryPairOfSequences) {
  const std::vector<std::string> all = taken_sequences();
  for (const std::string& first : all) {
    for (const std::string& second : all) {
      const std::string pair = first + second;
      ASSERT_EQ(expect_same_notes({}, pair), pair.size()) << encode_escaped_line(pair);
      const std::string apart = "\xe3\x81\x82" + first + "x" + second + "\xe3\x81\x82";
      ASSERT_EQ(expect_same_notes({}, apart), apart.size()) << encode_escaped_line(apart);
    }
  }
}

TEST_F(TextRunNotes, OtherSequencesAreLeft) {
  for (const std::string& sequence : kLeftSequences) {
    for (const std::string front : {"", "x", "\xe3\x81\x82", "\x1b[1a"}) {
      const std::string input = front + sequence + std::string(200, ' ');
      EXPECT_EQ(expect_same_notes({}, input), front.size()) << encode_escaped_line(input);
    }
  }
}

TEST_F(TextRunNotes, AnyByteAmongTheParameters) {
  for (int byte = 0; byte < 256; ++byte) {
    for (const std::string front : {"\x1b[", "\x1c%", "\x1bQ", "\x1c(`"}) {
      for (const std::string behind : {"", "1", "\x81\x82", "\xff", "\n"}) {
        const std::string end = front == "\x1b[" ? "a" : front == "\x1bQ" ? "!H" : "p";
        const std::string input = "ab" + front + one(byte) + behind + end + "yz\xe3\x81\x82";
        expect_same_notes({}, input);
        expect_same_notes({}, input + kNothingNoted);
        if (HasFailure()) {
          return;
        }
      }
    }
  }
}

TEST_F(TextRunNotes, SequencesOfAnyLengthAtAnyPlaceOfTheBlock) {
  for (std::size_t length = 0; length <= 140; length += length < 60 ? 7 : 1) {
    for (std::size_t at = 0; at <= 66; at += at < 55 ? 11 : 1) {
      const std::string sequence = "\x1c%" + std::string(length, '1') + "p";
      const std::string input = std::string(at, ' ') + sequence + std::string(70, ' ');
      const std::size_t taken = expect_same_notes({}, input);
      // Wherever a sequence stands that no block holds, the road ends before it.
      EXPECT_EQ(taken, sequence.size() <= 64 ? input.size() : at) << length << " at " << at;
    }
  }
}

TEST_F(TextRunNotes, AnyTextAndSequencesAreTakenInOneRun) {
  const std::string cut = "\xe3zz\xc3z";
  for (const std::string sequence : {"\x1b[1a", "\x1c%1p", "\x1bQ100;100!H"}) {
    for (std::size_t count = 1; count <= 40; ++count) {
      std::string input;
      for (std::size_t i = 0; i < count; ++i) {
        input += cut;
      }
      input += sequence;
      input += cut;
      input += sequence;
      input += kNothingNoted;
      ASSERT_EQ(expect_same_notes({}, input), input.size()) << count;
    }
  }
}

TEST_F(TextRunNotes, NothingIsReadBehindTheInput) {
  GuardedBytes guarded;
  for (const std::string unit :
       {"x", "\xe3\x81\x82z", "\xff", "\x8e\xb1\xe3\x81\x82", "\xc3z", "\x1b[1a", "\x1c%1p\n"}) {
    std::string input;
    while (input.size() < 300) {
      input += unit;
    }
    for (std::size_t size = 1; size <= input.size(); ++size) {
      start({});
      const std::uint8_t* const bytes = guarded.at_end(input.substr(0, size));
      ByteWindow& window = the_filter().source.raw.window;
      window = {bytes, bytes + size};
      write_text_run(the_filter().loop);
      ASSERT_LT(window.size(), 4U) << size;
    }
  }
}

// Which switches and sequences are kept

TEST_F(TextRunNotes, SwitchesAndSequencesOfOneSlot) {
  const std::vector<std::string> units{"x",      "\xe3\x81\x82", "\xff",     "\x1b$@",
                                       "\x1b(H", "\x1bQ3 y",     "\x8e\xb1", "\n"};
  for (const std::string& first : units) {
    for (const std::string& second : units) {
      for (const std::string& third : units) {
        // In one block, and each in another one.
        const std::string block(64, '\x01');
        std::string apart = first + block;
        apart += second + block;
        apart += third + block;
        expect_same_notes({}, apart);
        expect_same_notes({true, 1, 1, true}, apart);
        for (const std::string& fourth : units) {
          std::string input = first;
          input += second;
          input += third;
          input += fourth;
          expect_same_notes({}, input);
          expect_same_notes({false, 0, 0, true}, input);
        }
      }
    }
  }
}

TEST_F(TextRunNotes, ASwitchEndsTheDownloadSet) {
  for (const std::string input :
       {"x", "\xff", "\xe3\x81\x82", "\n", "x\xe3\x81\x82", "\xe3\x81\x82x"}) {
    EXPECT_EQ(expect_same_notes({false, 0, 0, true, true}, input), input.size());
    const bool ends = input.find_first_of("x\xff") != std::string::npos;
    EXPECT_EQ(noted_behind().designation, ends ? 0 : CharacterSetState::kDownloadDesignation)
        << encode_escaped_line(input);
  }
}

// Line feeds

TEST_F(TextRunNotes, LineFeedsOfAForm) {
  for (const std::vector<std::uint32_t>& lines :
       std::vector<std::vector<std::uint32_t>>{{6, 6, 6},
                                               {6, 8, 8, 6, 6, 6},
                                               std::vector<std::uint32_t>(66, 6),
                                               std::vector<std::uint32_t>(255, 12)}) {
    use_form(lines, 1);
    for (const std::string unit :
         {"\n", "x\n", "\xe3\x81\x82\n", "\xff\n\r", "\x1b[1a\n", "\n\n\n"}) {
      std::string input;
      for (int i = 0; i < 100; ++i) {
        input += unit;
      }
      EXPECT_GT(expect_same_notes({}, input), 0U);
      EXPECT_GT(the_filter().loop.current_store->cur_line, 0);
    }
  }
}

TEST_F(TextRunNotes, LineFeedsThatAreCounted) {
  for (const int lines : {1, 2, 3, 16, 17, 60, 66, 1000, -1, -66}) {
    for (const char* const pitch : {static_cast<const char*>(nullptr), "6", "8"}) {
      restart();
      the_filter().command_line.lines_per_page = lines;
      the_filter().settings.line_pitch_text = pitch;
      the_filter().settings.line_pitch_source =
          static_cast<std::uint8_t>(pitch == nullptr ? kNotGiven : kFromCommandLine);
      for (const std::string unit : {"\n", "x\n", "\xe3\x81\x82\n", "\x8e\n\n"}) {
        std::string input;
        for (int i = 0; i < 100; ++i) {
          input += unit;
        }
        const std::size_t count = expect_same_notes({}, input);
        // The last line feed of the input, and that of the page, are left.
        const auto wanted = lines < 0 ? 99 : std::min(99, lines - 1);
        EXPECT_EQ(the_filter().loop.line_counter, wanted) << lines;
        EXPECT_EQ(count % unit.size(), unit.size() - 1);
      }
    }
  }
}

TEST_F(TextRunNotes, WhatStandsBehindALineFeedThatIsLeftNotesNothing) {
  for (const std::string front : {"\r", "\t", "x", "\xff", "\x1b[5`"}) {
    for (const std::string& behind : taken_sequences()) {
      const std::string input = front + "\n" + behind + "x\xe3\x81\x82";
      restart();
      the_filter().command_line.lines_per_page = 1;
      EXPECT_EQ(expect_same_notes({}, input), front.size()) << encode_escaped_line(input);
      EXPECT_EQ(expect_same_notes({true, 0, 0, true}, input), front.size());
      restart();
      use_form({6}, 1);
      EXPECT_EQ(expect_same_notes({}, input), front.size()) << encode_escaped_line(input);
    }
  }
}

TEST_F(TextRunNotes, ARunGoesOnWhereTheLinesLeftOff) {
  use_form({6, 6, 8, 8, 8, 6, 6, 6}, 1);
  start({});
  the_filter().loop.current_store->cur_line = 1;
  const std::string input = "a\nb\nc\nd\ne\nf\ng\nh";
  const std::size_t taken = take_fast(input);
  EXPECT_EQ(taken, 13U);
  const NotedBehind noted = noted_behind();
  EXPECT_EQ(noted.form_line, 7);
  const std::string six = "\n" + kSixLines;
  const std::string eight = "\n" + kEightLines;
  EXPECT_EQ(noted.gathered,
            "a" + eight + "b" + eight + "c" + eight + "d" + six + "e" + six + "f" + six + "g");
}

// When the road is closed

TEST_F(TextRunNotes, NothingIsTakenBeforeSomethingElse) {
  const auto taken_with = [](auto change) {
    restart();
    change(the_filter());
    return take_fast("text");
  };
  EXPECT_EQ(taken_with([](Filter&) {}), 4U);
  EXPECT_EQ(taken_with([](Filter& filter) { filter.loop.fast_road = false; }), 0U);
  EXPECT_EQ(taken_with([](Filter& filter) { filter.loop.conditions_pending = true; }), 0U);
  EXPECT_EQ(taken_with([](Filter& filter) { filter.loop.held_command.length = 1; }), 0U);
  EXPECT_EQ(taken_with([](Filter& filter) { filter.loop.end_marker = ST_EOF; }), 0U);
  // Movement is held for a form only.
  EXPECT_EQ(taken_with([](Filter& filter) { filter.loop.pending_vertical_bytes.length = 1; }), 4U);
  EXPECT_EQ(taken_with([](Filter& filter) {
              filter.loop.pending_vertical_bytes.length = 1;
              filter.loop.fcb_active = true;
            }),
            0U);
  EXPECT_EQ(taken_with([](Filter& filter) {
              filter.loop.conditions_pending = true;
              filter.command_line.print_conditions_enabled = 0;
            }),
            4U);
}

TEST_F(TextRunNotes, TheLastByteOfAnInputFrameIsLeft) {
  for (const std::string_view text : {"t", "te", "tex", "text"}) {
    restart();
    open_frame(false, text);
    write_text_run(the_filter().loop);
    EXPECT_EQ(frame_left(the_filter().source.frames), 1U);
    EXPECT_EQ(gathered_frame(), text.substr(0, text.size() - 1));
  }
  restart();
  // A character that needs the last byte is left as well.
  open_frame(true, "te\xe3\x81\x82");
  write_text_run(the_filter().loop);
  EXPECT_EQ(frame_left(the_filter().source.frames), 3U);
  EXPECT_EQ(gathered_frame(), "te");
}

TEST_F(TextRunNotes, SequencesAreNotKeptWithFramedOutput) {
  restart();
  open_frame(false, "te\x1c%1p\x1c$1px");
  write_text_run(the_filter().loop);
  EXPECT_EQ(gathered_frame(), "te\x1c%1p\x1c$1p");
  EXPECT_EQ(take_kept_settings(), "");
}

// Jobs at the borders of blocks, by hand

/// A job without conditions, along both roads.
void expect_job(const std::string& input, const std::string& wanted,
                const std::vector<std::string>& more_options = {}) {
  std::vector<std::string> options{"-q"};
  options.insert(options.end(), more_options.begin(), more_options.end());
  const std::string by_record = run_job(options, input, Road::record_by_record).output;
  EXPECT_TRUE(by_record == wanted) << describe_difference(wanted, by_record);
  const std::string fast = run_job(options, input).output;
  EXPECT_TRUE(fast == wanted) << describe_difference(wanted, fast);
}

/// What a job of one page becomes: its blocks, as they follow the header.
std::string page_of_blocks(std::string_view blocks) {
  return kFirstHeader + std::string(blocks) + kFinalFormFeed + kJobEnd;
}

std::string many(std::size_t count, std::string_view unit) {
  std::string all;
  for (; count > 0; --count) {
    all += unit;
  }
  return all;
}

constexpr std::size_t kPageBlock = 8192;
const std::string kWide = "\xe3\x81\x82";
const std::string kDoubleKept = block('6', "\x1b$@\x1bQ2 y");
const std::string kSingleKept = block('6', "\x1b(H\x1bQ1 y");

TEST(TextRunBlocks, NoPieceIsDivided) {
  // Each stands 0 to 12 bytes before the end of the block.
  const std::vector<std::string> pieces{"\x1b[12a", "\x1cJ", "\x1c*1p", "z"};
  for (const std::string& piece : pieces) {
    for (std::size_t room = 0; room <= 12; ++room) {
      const std::string front = many(kPageBlock - room, "x");
      std::string first = front;
      std::string second;
      // Pieces of the same length until nothing more fits, then the rest.
      std::string input = front;
      for (int i = 0; i < 30; ++i) {
        input += piece;
        const bool fits = second.empty() && first.size() + piece.size() <= kPageBlock;
        (fits ? first : second) += piece;
      }
      // FS * is carried.
      const bool is_kept = piece[1] == '*' && first.size() > front.size();
      const bool is_slot = piece[1] == 'J' && first.size() > front.size();
      std::string kept;
      if (is_kept) {
        kept = block('6', first.substr(front.size()));
      } else if (is_slot) {
        kept = block('6', piece);
      }
      expect_job(input, page_of_blocks(block('2', first) + kept + block('0', second)));
    }
  }
}

TEST(TextRunBlocks, NoCharacterIsDivided) {
  // The set is selected with the first one.
  for (const std::string character : {"\xc3\xa9", "\xe3\x81\x82", "\xf0\xa0\x80\x8b",
                                      "\xf8\x88\x80\x80\x80", "\xfc\x84\x80\x80\x80\x80"}) {
    for (std::size_t first = 0; first < character.size(); ++first) {
      const std::size_t fitting = (kPageBlock - 8 - first) / character.size();
      expect_job(
          many(first, "x") + many(fitting + 20, character),
          page_of_blocks(block('2', many(first, "x") + kSelectDouble + many(fitting, character)) +
                         kDoubleKept + block('0', many(20, character))));
    }
  }
}

TEST(TextRunBlocks, ALineFeedAndItsPitchAreOnePiece) {
  const std::string line_feed = "\n" + kSixLines;
  for (std::size_t room = 0; room <= 15; ++room) {
    const std::string front = many(kPageBlock - room, "x");
    const std::size_t fitting = room / line_feed.size();
    expect_job(front + "\n\n\n" + "z",
               page_of_blocks(block('2', front + many(fitting, line_feed)) +
                              block('0', many(3 - fitting, line_feed) + "z")),
               {"-L", "66", "-l", "6"});
  }
}

TEST(TextRunBlocks, LineFeedsAreCountedWhenTheyArePutOut) {
  const std::string line_feed = "\n" + kSixLines;
  for (std::size_t fitting = 0; fitting <= 2; ++fitting) {
    const std::string front = many(kPageBlock - fitting * line_feed.size(), "x");
    expect_job(front + "\n\n\n\nz",
               kFirstHeader + block('2', front + many(fitting, line_feed)) +
                   block('0', many(4 - fitting, line_feed) + "\x0c") + kNextHeader +
                   block('2', "z") + kFinalFormFeed + kJobEnd,
               {"-L", "4", "-l", "6"});
  }
}

TEST(TextRunBlocks, APrefixTakesNoRoom) {
  const std::string front = many(kPageBlock - 2, "x");
  expect_job(front + "\x8e\xb1\x8e\xb2", page_of_blocks(block('2', front + "\xb1\xb2")));
  expect_job(front + "\x8e\xb1\x8e\xb2\x8e\xb3",
             page_of_blocks(block('2', front + "\xb1\xb2") + block('0', "\xb3")));
  expect_job(front + "\x8e\xe3\x81\x82z",
             page_of_blocks(block('2', front) + block('0', "\xe3\x81\x82z")));
}

TEST(TextRunBlocks, ABlockTakesAllPiecesThatFit) {
  // Of "A z" the character fits with its switch, but not the switch behind it.
  for (std::size_t room = 11; room <= 19; ++room) {
    const std::string front = many(kPageBlock - room, "x");
    expect_job(front + kWide + "z", page_of_blocks(block('2', front + kSelectDouble + kWide) +
                                                   kSingleKept + block('0', kSelectSingle + "z")));
  }
  const std::string front = many(kPageBlock - 20, "x");
  expect_job(front + kWide + "z",
             page_of_blocks(block('2', front + kSelectDouble + kWide + kSelectSingle + "z")));
  // Nothing of it fits.
  for (std::size_t room = 0; room <= 10; ++room) {
    const std::string longer = many(kPageBlock - room, "x");
    expect_job(longer + kWide + "z",
               page_of_blocks(block('2', longer) + kDoubleKept +
                              block('0', kSelectDouble + kWide + kSelectSingle + "z")));
  }
}

TEST(TextRunBlocks, TheSwitchThatMakesACutIsKeptOnce) {
  const std::string front = many(kPageBlock - 3, "x");
  const std::size_t fitting = (kPageBlock - 8) / 3;
  // Behind the second block, which begins with the switch, it is not carried again.
  expect_job(front + many(fitting + 5, kWide),
             page_of_blocks(block('2', front) + kDoubleKept +
                            block('0', kSelectDouble + many(fitting, kWide)) +
                            block('0', many(5, kWide))));
  // Another switch in the second block is.
  expect_job(front + kWide + "z" + many(kPageBlock, "y"),
             page_of_blocks(block('2', front) + kDoubleKept +
                            block('0', kSelectDouble + kWide + kSelectSingle + "z" +
                                           many(kPageBlock - 20, "y")) +
                            kSingleKept + block('0', many(20, "y"))));
  // Also where it stands at the front of a block of input.
  expect_job(front + many(21, kWide) + "\x01" + many(kPageBlock, "z"),
             page_of_blocks(block('2', front) + kDoubleKept +
                            block('0', kSelectDouble + many(21, kWide) + "\x01" + kSelectSingle +
                                           many(kPageBlock - 80, "z")) +
                            kSingleKept + block('0', many(80, "z"))));
}

TEST(TextRunBlocks, ASwitchOfThreeBytesMakesACut) {
  const std::string characters = kSelectDouble + many(2727, kWide);  // room for 3 bytes
  expect_job(many(2727, kWide) + "\xff" + many(kPageBlock, "y"),
             page_of_blocks(block('2', characters) + block('6', "\x1b(H\x1bQ2 y") +
                            block('0', "\x1b(H\xff" + many(kPageBlock - 4, "y")) +
                            block('0', many(4, "y"))));
  // With a byte more it fits.
  expect_job("y" + many(2726, kWide) + "\xff" + "yy",
             page_of_blocks(block('2', "y" + kSelectDouble + many(2726, kWide) +
                                           "\x1b(H\xff"
                                           "y") +
                            block('6', "\x1b(H\x1bQ2 y") + block('0', "y")));
}

TEST(TextRunBlocks, ACutIsMadeOnlyForAPiece) {
  const std::string full = many(kPageBlock, "x");
  expect_job(full, page_of_blocks(block('2', full)));
  expect_job(full + "\x0c", kFirstHeader + block('2', full + "\x0c") + kJobEnd);
  expect_job(full + full, page_of_blocks(block('2', full) + block('0', full)));
  expect_job(full + "\x0c" + full + "\x0c", kFirstHeader + block('2', full + "\x0c") + kNextHeader +
                                                block('2', full + "\x0c") + kJobEnd);
  const std::string characters = many(2728, kWide);
  expect_job(characters, page_of_blocks(block('2', kSelectDouble + characters)));
  expect_job(characters + "\x0c", kFirstHeader + block('2', kSelectDouble + characters + "\x0c") +
                                      kDoubleKept + kJobEnd);
  const std::string sequences = "xx" + many(1638, "\x1b[12a");
  expect_job(sequences, page_of_blocks(block('2', sequences)));
  expect_job(sequences + "\x0c", kFirstHeader + block('2', sequences + "\x0c") + kJobEnd);
}

TEST(TextRunBlocks, AFormFeedInsideACharacterEndsThePageAsItsLastByte) {
  for (const std::string character :
       {"\xc3\x0c", "\xe3\x81\x0c", "\xf0\xa0\x80\x0c", "\xfc\x84\x80\x80\x80\x0c"}) {
    for (const std::size_t length : {2U, 60U, 62U, 63U, 64U, 65U, 200U}) {
      const std::string front = many(length, "x");
      expect_job(front + character + "yz",
                 kFirstHeader + block('2', front + kSelectDouble + character) + kDoubleKept +
                     kNextHeader + block('2', kSelectSingle + "yz") + kFinalFormFeed + kJobEnd);
    }
  }
  expect_job(
      "ab\x8e\x0c"
      "c",
      kFirstHeader + block('2', "ab\x0c") + kNextHeader + block('2', "c") + kFinalFormFeed +
          kJobEnd);
  // Not as another byte, nor among parameters.
  expect_job(
      "ab\xe3\x0c\x82"
      "c",
      page_of_blocks(block('2', "ab" + kSelectDouble + "\xe3\x0c\x82" + kSelectSingle + "c")));
  expect_job(
      "ab\x1b[\x0c\x61"
      "c",
      page_of_blocks(block('2',
                           "ab\x1b[\x0c\x61"
                           "c")));
}

TEST(TextRunBlocks, APrefixAmongParametersIsWritten) {
  expect_job(
      "ab\x1b[\x8e"
      "1aXYZ",
      page_of_blocks(block('2',
                           "ab\x1b[\x8e"
                           "1aXYZ")));
  expect_job(
      "ab\x1c%\x8e\x8f"
      "1pXYZ",
      page_of_blocks(block('2',
                           "ab\x1c%\x8e\x8f"
                           "1pXYZ")));
}

// Frames, by hand

TEST(TextRunFrames, AFrameOfOutputLeavesWithTheLastByteOfInput) {
  expect_job(cnt_frame("ABC") + end_frame("DE"), cnt_frame("ABC") + end_frame("DE"), {"-d"});
  expect_job(cnt_frame("A") + cnt_frame("B") + end_frame("C"),
             cnt_frame("A") + cnt_frame("B") + end_frame("C"), {"-d"});
  expect_job(cnt_frame("A" + kWide) + end_frame("z"),
             cnt_frame("A" + kSelectDouble + kWide) + end_frame(kSelectSingle + "z"), {"-d"});
  // A character over the border belongs to the frame that it ends in, with what is held.
  expect_job(cnt_frame("AB\xe3") + end_frame("\x81\x82z"),
             end_frame("AB" + kSelectDouble + kWide + kSelectSingle + "z"), {"-d"});
}

TEST(TextRunFrames, NoPieceIsDivided) {
  constexpr std::size_t kFrame = 4096;
  for (std::size_t room = 0; room <= 10; ++room) {
    const std::string front = many(kFrame - room, "x");
    expect_job(end_frame(front + kWide + "zz"),
               cnt_frame(front) + end_frame(kSelectDouble + kWide + kSelectSingle + "zz"), {"-d"});
  }
  const std::string front = many(kFrame - 13, "x");
  expect_job(end_frame(front + kWide + "zz"),
             cnt_frame(front + kSelectDouble + kWide) + end_frame(kSelectSingle + "zz"), {"-d"});
  // A full frame leaves when another piece comes, or with the input frame.
  expect_job(end_frame(many(kFrame, "x")), end_frame(many(kFrame, "x")), {"-d"});
  expect_job(end_frame(many(kFrame + 1, "x")), cnt_frame(many(kFrame, "x")) + end_frame("x"),
             {"-d"});
  expect_job(end_frame(many(2 * kFrame + 1, "x")),
             cnt_frame(many(kFrame, "x")) + cnt_frame(many(kFrame, "x")) + end_frame("x"), {"-d"});
}

}  // namespace
}  // namespace rlx::testing
