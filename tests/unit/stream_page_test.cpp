// The page docs/line-printer-stream.md beside the code, both ways: its tables, and its examples.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "input/command_tables.h"
#include "job/print_conditions.h"
#include "job/settings.h"
#include "output/carried_places.h"
#include "support/descriptors.h"
#include "support/escaped_bytes.h"
#include "support/input_stream.h"
#include "support/main_loop_fixture.h"
#include "support/markdown_page.h"
#include "support/page_data.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using testing::the_filter;

using testing::bytes;
using testing::Routed;
using Row = testing::MarkdownRow;
using testing::StandardInput;
using testing::Token;
using Words = std::set<std::string>;

const testing::MarkdownPage& page() {
  static const testing::MarkdownPage the_page =
      testing::read_markdown(RLX_SOURCE_DIRECTORY "/../docs/line-printer-stream.md");
  return the_page;
}

std::vector<Row> rows_with(const std::string& column) {
  return page().rows_with(column);
}

/// A sequence for codes that no input produces.
constexpr std::string_view kAnySequence = "\x1bQ0!x";
constexpr std::string_view kDoubleByteText = "\xc3\xa4";

class StreamPage : public testing::MainLoopTest {
 protected:
  /// The first command of an input. What it leaves is in `rest_`.
  Token first_command(const std::string& text, int extended_parameters = 1) {
    restart();
    the_filter().command_line.extended_parameters = extended_parameters;
    const StandardInput input(text);
    Token token = testing::next_command();
    rest_ = testing::rest_of_input();
    return token;
  }

  std::string rest_;
};

// ---- Codes, names and sequences

TEST_F(StreamPage, ExamplesOfCommandsAreReadWithTheirCodes) {
  for (const Row& row : rows_with("code")) {
    const std::string example = row.bytes("example");
    const Token token = first_command(example + "\nREST");
    EXPECT_EQ(token.code, row.number("code")) << row.place();
    EXPECT_EQ(token.bytes, token.code == CMD_IGNORE ? "" : example) << row.place();
    EXPECT_EQ(rest_, "\nREST") << row.place();
    EXPECT_EQ(token.pending, 0U) << row.place();
  }
}

using Names = std::map<std::uint32_t, std::string>;

/// Adds the names that a line gives to codes, such as "CMD_LF = 260,".
void add_names(const std::string& line, Names& names) {
  std::istringstream words(line);
  std::string name;
  for (std::string word; words >> word; name = word) {
    std::uint32_t code = 0;
    if (name.starts_with("CMD_") && word == "=" && words >> code) {
      names[code] = name;
    }
  }
}

/// The names that the headers give to codes.
Names names_of_source() {
  Names names;
  for (const auto& file : std::filesystem::recursive_directory_iterator(RLX_SOURCE_DIRECTORY)) {
    if (file.path().extension() == ".h") {
      std::istringstream lines(testing::read_file(file.path()));
      for (std::string line; std::getline(lines, line);) {
        add_names(line, names);
      }
    }
  }
  return names;
}

/// The codes of a row, of either kind of table.
std::vector<std::uint32_t> codes_of(const Row& row) {
  return row.numbers(row.has("code") ? "code" : "codes");
}

TEST_F(StreamPage, NamesAreThoseOfTheSourceAndAllAreThere) {
  const Names names = names_of_source();
  EXPECT_GT(names.size(), 80U);
  Names missing = names;
  for (const Row& row : rows_with("name")) {
    const std::vector<std::uint32_t> codes = codes_of(row);
    std::vector<std::string> given = row.list("name");
    given.resize(codes.size(), "-");
    for (std::size_t i = 0; i < codes.size(); ++i) {
      const auto name = names.find(codes[i]);
      EXPECT_EQ(given[i], name == names.end() ? "-" : name->second)
          << codes[i] << ", " << row.place();
      missing.erase(codes[i]);
    }
  }
  for (const auto& [code, name] : missing) {
    ADD_FAILURE() << code << " " << name << " is not on the page";
  }
}

std::string word_of(char byte) {
  switch (byte) {
    case '\x1b':
      return "ESC";
    case '\x1c':
      return "FS";
    case '\x7f':
      return "DEL";
    case ' ':
      return "SP";
    default:
      return {byte};
  }
}

std::string shape_of_q(const std::string& sequence) {
  std::size_t final = 2;
  while (sequence[final] < '@') {
    ++final;
  }
  const char separator = sequence[final - 1];
  const bool by_first =
      sequence[final] == 'n' && separator == ' ' && (sequence[2] == '2' || sequence[2] == '9');
  return "ESC Q " + (by_first ? sequence.substr(2, 1) + " " : "") + "... " + word_of(separator) +
         " " + word_of(sequence[final]);
}

std::string shape_of_fs(const std::string& sequence, bool by_third) {
  return "FS " + sequence.substr(1, 1) + (by_third ? " " + sequence.substr(2, 1) : "") + " ... " +
         (sequence.back() >= 'p' && sequence.back() <= 'y' ? "p-y" : "?");
}

/// How the page describes a sequence.
std::string shape_of(std::uint32_t code, const std::string& sequence) {
  if (sequence.starts_with("\x1bQ")) {
    return shape_of_q(sequence);
  }
  if (sequence.starts_with("\x1b[")) {
    const char before = sequence[sequence.size() - 2];
    return std::string("ESC [ ... ") + (before == ' ' ? "SP " : "") + sequence.back();
  }
  if (sequence.starts_with('\x1c') && sequence.size() > 2) {
    const int place = place_of_setting(code, testing::bytes_of(sequence).first(3));
    return shape_of_fs(sequence, code == CMD_FS_PAREN && place != kKeptNowhere);
  }
  if (sequence.starts_with("\x1b\x7f")) {
    return "ESC DEL + " + std::to_string(sequence.size() - 2) + " bytes";
  }
  std::string words;
  for (const char byte : sequence) {
    words += (words.empty() ? "" : " ") + word_of(byte);
  }
  return words;
}

/// Codes of the page by the description of their sequences.
std::map<std::string, std::uint32_t> codes_by_sequence() {
  std::map<std::string, std::uint32_t> codes;
  for (const Row& row : rows_with("sequence")) {
    EXPECT_TRUE(codes.emplace(row.cell("sequence"), row.number("code")).second) << row.place();
  }
  return codes;
}

TEST_F(StreamPage, SequencesAreDescribedAsTheirExamplesAre) {
  for (const Row& row : rows_with("sequence")) {
    EXPECT_EQ(row.cell("sequence"), shape_of(row.number("code"), row.bytes("example")))
        << row.place();
  }
}

/// Expects a sequence on the page for each row of a table: one with the row's code that consists of
/// `front`, the row's byte and more, or, when the byte is the final one, of `front`, more and the
/// byte.
template <typename Table>
void expect_rows_of(const Table& table, const std::string& front, bool byte_is_final) {
  const auto codes = codes_by_sequence();
  for (const TableRow& row : table) {
    if (row.key == kNoKey || row.code == CMD_NONE) {
      continue;
    }
    const std::string byte = " " + word_of(static_cast<char>(row.key));
    const auto is_of_row = [&](const auto& sequence) {
      const std::string& words = sequence.first;
      return sequence.second == row.code &&
             words.starts_with(front + (byte_is_final ? "" : byte)) &&
             (!byte_is_final || words.ends_with(byte));
    };
    EXPECT_TRUE(std::ranges::any_of(codes, is_of_row))
        << front << byte << ", " << row.code << ", is not on the page";
  }
}

TEST_F(StreamPage, EveryRowOfTheSourceTablesIsThere) {
  expect_rows_of(kEscTable, "ESC", false);
  expect_rows_of(kCsiTable, "ESC [ ...", true);
  expect_rows_of(kFsTable, "FS", false);
  auto codes = codes_by_sequence();
  for (const QRow& row : kQTable) {
    for (const char separator : {' ', '!', '/'}) {
      const std::uint32_t code = code_for_separator(row, static_cast<std::uint8_t>(separator));
      if (code != CMD_IGNORE) {
        const std::string sequence =
            "ESC Q ... " + word_of(separator) + " " + word_of(static_cast<char>(row.key));
        EXPECT_EQ(codes[sequence], code) << sequence;
      }
    }
  }
}

// ---- Counted data

/// What a sequence after ESC "Q" with some parameters makes of the bytes behind it: how many are
/// its data, or -1 when it is not the command of its row.
using Replies = std::array<int, 3>;

/// For parameters of none, two and five fields, the last of them 2.
const std::map<std::string, Replies> kRepliesOfData{
    {"-", {0, 0, 0}},     {"2nd", {-1, 2, -1}},          {"2nd, also ;", {-1, 2, 1}},
    {"5th", {-1, -1, 2}}, {"2nd, optional", {0, 2, -1}}, {"32 bytes", {32, 32, 32}},
};

TEST_F(StreamPage, DataIsCountedAsTheRowsSay) {
  for (const Row& row : rows_with("data")) {
    const std::string example = row.bytes("example");
    const std::string first = example.substr(2, 1);
    const std::string end = example.substr(example.find_first_of(" !/"), 2);
    ASSERT_TRUE(kRepliesOfData.contains(row.cell("data"))) << row.place();
    Replies replies{};
    for (std::size_t i = 0; i < replies.size(); ++i) {
      const std::array<std::string, 3> parameters{"", first + ";2", first + ";1;1;1;2"};
      const std::string front = "\x1bQ" + parameters.at(i) + end;
      const Token token = first_command(front + std::string(64, '.'));
      const bool same = token.code == row.number("code");
      replies.at(i) = same ? static_cast<int>(token.bytes.size() - front.size()) : -1;
    }
    EXPECT_EQ(replies, kRepliesOfData.at(row.cell("data"))) << row.place();
  }
}

// ---- Text and control bytes

/// Bytes that follow the first byte of a character, by the page's rows for characters.
std::map<std::uint32_t, std::size_t> bytes_behind() {
  std::map<std::uint32_t, std::size_t> behind;
  for (const Row& row : rows_with("first byte")) {
    if (row.number("code") != CMD_TEXT_SS2) {
      for (const std::uint32_t first : row.numbers("first byte")) {
        EXPECT_TRUE(behind.emplace(first, row.number("bytes behind it")).second) << row.place();
      }
    }
  }
  return behind;
}

/// The codes of all bytes that begin text, or are commands, by the page.
std::map<std::uint32_t, std::uint32_t> codes_by_first_byte() {
  std::map<std::uint32_t, std::uint32_t> codes;
  for (const std::string column : {"byte", "first byte"}) {
    for (const Row& row : rows_with(column)) {
      for (const std::uint32_t first : row.numbers(column)) {
        const auto [entry, is_new] = codes.emplace(first, row.number("code"));
        EXPECT_TRUE(is_new || entry->second == row.number("code")) << first << row.place();
      }
    }
  }
  return codes;
}

TEST_F(StreamPage, EveryFirstByteHasTheCodeOfItsRow) {
  const auto codes = codes_by_first_byte();
  for (std::uint32_t first = 0; first < 256; ++first) {
    if (first == kEsc || first == kFs) {
      continue;
    }
    ASSERT_TRUE(codes.contains(first)) << first << " is not on the page";
    EXPECT_EQ(first_command(std::string(1, static_cast<char>(first)) + "ABCDEFGH").code,
              codes.at(first))
        << first;
  }
}

TEST_F(StreamPage, CharactersAreAsLongAsTheirRowsSay) {
  for (const auto& [first, count] : bytes_behind()) {
    const std::string text = std::string(1, static_cast<char>(first)) + "\n\x1b\fABCDE";
    EXPECT_EQ(first_command(text).bytes.size(), 1 + count) << first;
  }
  // Behind the prefix any byte is a character.
  const auto behind = bytes_behind();
  for (std::uint32_t first = 0; first < 256; ++first) {
    const auto count = behind.find(first);
    const std::string text = std::string("\x8e") + static_cast<char>(first) + "ABCDEFGH";
    EXPECT_EQ(first_command(text).bytes.size(), 2 + (count == behind.end() ? 0 : count->second))
        << first;
  }
}

TEST_F(StreamPage, CharactersBecomeWhatTheirRowsSay) {
  for (const Row& row : rows_with("after single-byte text")) {
    const std::uint32_t code = row.number("code");
    restart();
    pass(CMD_TEXT_ASCII, "A");
    route(CMD_LF, "\n");
    EXPECT_EQ(route(code, row.bytes("example")).data, row.bytes("after single-byte text"))
        << row.place();
    restart();
    route(CMD_TEXT_MB, kDoubleByteText);
    EXPECT_EQ(route(code, row.bytes("example")).data, row.bytes("after double-byte text"))
        << row.place();
  }
}

// ---- Carried places

std::string place_word(std::uint32_t code, const std::string& sequence) {
  const int place = place_of_setting(code, testing::bytes_of(sequence));
  if (place == kKeptInGeneralBuffer) {
    return "general";
  }
  return place == kKeptNowhere ? "-" : std::to_string(place);
}

TEST_F(StreamPage, SequencesAreCarriedWhereTheirRowsSay) {
  for (const Row& row : rows_with("code")) {
    EXPECT_EQ(row.cell("carried"), place_word(row.number("code"), row.bytes("example")))
        << row.place();
  }
}

TEST_F(StreamPage, EveryCarriedPlaceIsThere) {
  std::map<std::uint32_t, Words> given;
  for (const Row& row : rows_with("carried")) {
    given[row.number("code")].insert(row.cell("carried"));
  }
  for (std::uint32_t code = 0; code <= kHighestCommandCode; ++code) {
    for (int third = 0; third < (code == CMD_FS_PAREN ? 256 : 1); ++third) {
      const std::string place = place_word(code, std::string("\x1c(") + static_cast<char>(third));
      const auto places = given.find(code);
      EXPECT_TRUE(places == given.end() ? place == "-" : places->second.contains(place))
          << code << " " << place;
    }
  }
}

// ---- Effects

struct Effect {
  std::string word;
  bool (*shows)(std::uint32_t code, std::string_view bytes);
  /// Looked at for codes that no input produces alone.
  bool unproduced_alone = false;
};

std::ostream& operator<<(std::ostream& stream, const Effect& effect) {
  return stream << effect.word;
}

class StreamPageEffects : public testing::MainLoopTest,
                          public ::testing::WithParamInterface<Effect> {
 public:
  // What is seen of a code, each in a state of its own that shows it.

  static bool written(std::uint32_t code, std::string_view bytes) {
    restart();
    const Routed routed = route(code, bytes);
    return routed.goes_on && !bytes.empty() && routed.data.starts_with(bytes);
  }
  static bool consumed(std::uint32_t code, std::string_view bytes) {
    restart();
    const Routed routed = route(code, bytes);
    return routed.goes_on && routed.data.empty();
  }
  static bool passes(std::uint32_t code, std::string_view bytes) {
    restart();
    return !route(code, bytes).goes_on;
  }
  static bool content(std::uint32_t code, std::string_view bytes) {
    restart();
    route(code, bytes);
    return the_filter().job.page_has_content != 0;
  }
  static bool ends_page(std::uint32_t code, std::string_view bytes) {
    restart();
    pass(CMD_TEXT_ASCII, "A");
    return route(code, bytes).pages > 0;
  }
  static bool no_content(std::uint32_t code, std::string_view bytes) {
    restart();
    pass(CMD_TEXT_ASCII, "A");
    const Routed routed = route(code, bytes);
    return routed.goes_on && routed.pages == 0 &&
           route(CMD_Q_NL_SP, testing::kBlankCommand).pages == 0;
  }
  static bool brings_top(std::uint32_t code, std::string_view bytes) {
    restart();
    use_form({6, 6, 6}, 1);
    hold_movement("TOP");
    return route(code, bytes).data.starts_with("TOP");
  }
  static bool makes_conditions_due(std::uint32_t code, std::string_view bytes) {
    restart();
    return route(code, bytes).goes_on && sends_conditions(CMD_TEXT_ASCII, "A");
  }
  static bool lets_conditions_wait(std::uint32_t code, std::string_view bytes) {
    restart();
    pend_conditions();
    const Routed routed = route(code, bytes);
    return routed.goes_on && !has_conditions(routed);
  }

  // The same for codes that no input produces.

  static bool becomes_nul(std::uint32_t code, std::string_view bytes) {
    restart();
    return route(code, bytes).data == std::string(1, '\0');
  }
  static bool becomes_glyph(std::uint32_t code, std::string_view bytes) {
    restart();
    return route(code, bytes).data.starts_with("\x1b$D");
  }
  static bool copies_download(std::uint32_t code, std::string_view bytes) {
    restart();
    return route(code, bytes).data == std::string(bytes) + '\0';
  }
  static bool notes_settings(std::uint32_t code, std::string_view bytes) {
    restart();
    the_filter().command_line.printer_class = kPrinterClassF1;
    route(code, bytes);
    return the_filter().job.settings_changed != 0;
  }
  static bool drops_held(std::uint32_t code, std::string_view bytes) {
    restart();
    hold_command("HELD");
    return !route(code, bytes).data.starts_with("HELD");
  }
  static bool is_held(std::uint32_t code, std::string_view bytes) {
    restart();
    the_filter().command_line.printer_class = kPrinterClassF1;
    return route(code, bytes).data.empty() && route(CMD_LF, "\n").data == std::string(bytes) + "\n";
  }
  static bool sends_line_pitch(std::uint32_t code, std::string_view bytes) {
    restart();
    use_form({8, 8}, 1);
    return route(code, bytes).data.ends_with(testing::kEightLines);
  }
  static bool sends_pitches(std::uint32_t code, std::string_view bytes) {
    restart();
    the_filter().command_line.capability_F = 1;
    return route(code, bytes).data.ends_with(testing::kSixLines);
  }
  static bool selects_single_byte(std::uint32_t code, std::string_view bytes) {
    restart();
    route(CMD_TEXT_MB, kDoubleByteText);
    return route(code, bytes).data == "\x1b(H" + std::string(bytes);
  }

 private:
  static bool has_conditions(const Routed& routed) {
    return routed.data.find(testing::kSetReset) != std::string::npos;
  }
  static bool sends_conditions(std::uint32_t code, std::string_view bytes) {
    return has_conditions(route(code, bytes));
  }
};

const std::vector<Effect> kEffects{
    {"written", StreamPageEffects::written},
    {"consumed", StreamPageEffects::consumed},
    {"content", StreamPageEffects::content},
    {"no content", StreamPageEffects::no_content},
    {"page end", StreamPageEffects::ends_page},
    {"top", StreamPageEffects::brings_top},
    {"conditions", StreamPageEffects::makes_conditions_due},
    {"conditions wait", StreamPageEffects::lets_conditions_wait},
    {"passes", StreamPageEffects::passes},
    {"NUL", StreamPageEffects::becomes_nul, true},
    {"glyph", StreamPageEffects::becomes_glyph, true},
    {"download", StreamPageEffects::copies_download, true},
    {"settings", StreamPageEffects::notes_settings, true},
    {"drops held", StreamPageEffects::drops_held, true},
    {"held", StreamPageEffects::is_held, true},
    {"line pitch", StreamPageEffects::sends_line_pitch, true},
    {"pitches", StreamPageEffects::sends_pitches, true},
    {"single-byte set", StreamPageEffects::selects_single_byte, true},
};

Words effects_of(const Row& row) {
  const std::vector<std::string> words = row.list("effects");
  return {words.begin(), words.end()};
}

/// Characters are written in a way of their own, which their rows show.
bool is_about(const Row& row, const Effect& effect) {
  const bool of_bytes = effect.word == "written" || effect.word == "consumed";
  return !effect.unproduced_alone && !(of_bytes && row.has("after single-byte text"));
}

TEST_P(StreamPageEffects, AreThoseOfTheirRows) {
  const Effect& effect = GetParam();
  for (const Row& row : rows_with("code")) {
    if (is_about(row, effect)) {
      const StandardInput input("A");
      const std::uint32_t code = row.number("code");
      const std::string example = code == CMD_IGNORE ? "" : row.bytes("example");
      EXPECT_EQ(effect.shows(code, example), effects_of(row).contains(effect.word))
          << effect.word << ", " << row.place();
    }
  }
  for (const Row& row : rows_with("codes")) {
    for (const std::uint32_t code : codes_of(row)) {
      const StandardInput input(bytes("\0A"));
      EXPECT_EQ(effect.shows(code, kAnySequence), effects_of(row).contains(effect.word))
          << effect.word << " " << code << ", " << row.place();
    }
  }
}

TEST_P(StreamPageEffects, AreNotThoseOfCodesThatAreNotThere) {
  std::set<std::uint32_t> there;
  for (const Row& row : rows_with("name")) {
    const std::vector<std::uint32_t> codes = codes_of(row);
    there.insert(codes.begin(), codes.end());
  }
  const Effect& effect = GetParam();
  const StandardInput input("A");
  for (std::uint32_t code = 0; code <= kHighestCommandCode + 1; ++code) {
    if (!there.contains(code)) {
      EXPECT_EQ(effect.shows(code, kAnySequence), effect.word == "written")
          << effect.word << " " << code;
    }
  }
}

std::string effect_name(const ::testing::TestParamInfo<Effect>& info) {
  std::string name = info.param.word;
  std::ranges::replace_if(
      name, [](char c) { return c == ' ' || c == '-'; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(StreamPage, StreamPageEffects, ::testing::ValuesIn(kEffects), effect_name);

TEST_F(StreamPage, EffectsAreExplainedAndKnown) {
  Words explained;
  for (const Row& row : rows_with("effect")) {
    explained.insert(row.cell("effect"));
  }
  Words known;
  for (const Effect& effect : kEffects) {
    known.insert(effect.word);
    EXPECT_EQ(explained.contains(effect.word), !effect.unproduced_alone) << effect.word;
  }
  for (const Row& row : rows_with("effects")) {
    for (const std::string& word : effects_of(row)) {
      EXPECT_TRUE(known.contains(word)) << word << ", " << row.place();
    }
  }
  EXPECT_TRUE(std::ranges::includes(known, explained));
}

// ---- What is ignored

TEST_F(StreamPage, IgnoredSequencesReachAsFarAsTheirRowsSay) {
  for (const Row& row : rows_with("ignored")) {
    const std::string example = row.bytes("ignored");
    const Token token = first_command(example + "\nREST", 0);
    EXPECT_EQ(token.code, CMD_IGNORE) << row.place();
    EXPECT_EQ(rest_, example.substr(row.number("bytes taken")) + "\nREST") << row.place();
  }
}

// ---- The columns of the print-condition command

template <std::size_t Room>
std::string text_of(const std::array<char, Room>& field) {
  return field.data();
}

/// The condition fields by their names, as text.
std::map<std::string, std::string> condition_fields() {
  const PrintConditions& now = the_filter().conditions;
  return {{"form_overlay", text_of(now.form_overlay)},
          {"overlay_count", std::to_string(now.overlay_count)},
          {"copies", std::to_string(now.copies)},
          {"form_code", text_of(now.form_code)},
          {"orientation", text_of(now.orientation)},
          {"binding_edge", text_of(now.binding_edge)},
          {"binding_mode", text_of(now.binding_mode)},
          {"first_offset", std::to_string(now.first_offset)},
          {"second_offset", std::to_string(now.second_offset)},
          {"paper_size", text_of(now.paper_size)},
          {"tray", text_of(now.tray)},
          {"duplex", text_of(now.duplex)},
          {"binding_margin", std::to_string(now.binding_margin)}};
}

/// The layout digits that a row of the columns is about.
std::string layouts_of(const Row& row) {
  const std::string where = row.cell("where");
  if (where == "layouts 0, 1") {
    return "01";
  }
  return where == "layout 2" ? "2" : "012";
}

/// A record of 8s with 7s in the columns of a row.
std::string record_with(const Row& row, char layout) {
  constexpr std::size_t kLayout = 2;
  constexpr std::size_t kOrientation = 57;
  std::string data(100, '8');
  data[kLayout] = layout;
  if (row.cell("where") == "landscape") {
    data.replace(kLayout + kOrientation, 2, "L ");
  }
  const std::uint32_t width = row.number("width");
  data.replace(kLayout + row.number("offset"), width, width, '7');
  return "\x1bQ1;100 n" + data;
}

/// The orientations that a row of the columns is about.
Words orientations_of(const Row& row) {
  const std::string where = row.cell("where");
  return where == "upright" || where == "landscape" ? Words{where} : Words{"upright", "landscape"};
}

TEST_F(StreamPage, ColumnsOfARecordStandWhereTheirRowsSay) {
  const testing::CaptureDescriptor messages(2);
  std::multiset<std::string> shown;
  for (const Row& row : rows_with("offset")) {
    const std::string field = row.cell("field");
    for (const char layout : condition_fields().contains(field) ? layouts_of(row) : "") {
      restart();
      route(CMD_Q_NL_SP, record_with(row, layout));
      EXPECT_EQ(condition_fields()[field], std::string(row.number("width"), '7'))
          << "layout " << layout << ", " << row.place();
      for (const std::string& orientation : orientations_of(row)) {
        shown.insert(field + " " + layout + " " + orientation);
      }
    }
  }
  for (const auto& [field, text] : condition_fields()) {
    for (const std::string kind :
         {"0 upright", "0 landscape", "1 upright", "1 landscape", "2 upright", "2 landscape"}) {
      EXPECT_EQ(shown.count(field + " " + kind), 1U) << field << " " << kind;
    }
  }
}

TEST_F(StreamPage, NameOfTheFormStandsWhereItsRowsSay) {
  const testing::ScratchDirectory scratch;
  std::string layouts;
  for (const Row& row : rows_with("offset")) {
    testing::write_file("fcbe/" + std::string(row.number("width"), '7'), "");
    for (const char layout : row.cell("field") == "FCB name" ? layouts_of(row) : "") {
      restart();
      use_form_directory(".");
      EXPECT_TRUE(route(CMD_Q_NL_SP, record_with(row, layout)).goes_on) << row.place();
      EXPECT_NE(held_movement(), "") << row.place();
      layouts += layout;
    }
    std::filesystem::remove_all("fcbe");
  }
  EXPECT_EQ(layouts, "012");
}

// ---- The examples

/// What a command line prints, in lines.
std::vector<std::string> output_of_example(const std::string& command) {
  const testing::JobResult result =
      testing::run_job(testing::run_arguments(command), testing::printed_by(command));
  EXPECT_EQ(result.status, 0) << command;
  EXPECT_EQ(result.messages, "") << command;
  std::istringstream text(testing::encode_escaped(result.output));
  const bool page_alone = command.find("| page") != std::string::npos;
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) {
    if (!page_alone || !lines.empty() || line.find("Q2;") != std::string::npos) {
      lines.push_back(line);
    }
  }
  return lines;
}

/// The project's folder as the current one while it lives.
class ProjectFolder {
 public:
  ProjectFolder() : previous_(std::filesystem::current_path()) {
    std::filesystem::current_path(RLX_SOURCE_DIRECTORY "/..");
  }
  ~ProjectFolder() { std::filesystem::current_path(previous_); }
  ProjectFolder(const ProjectFolder&) = delete;
  ProjectFolder& operator=(const ProjectFolder&) = delete;

 private:
  std::filesystem::path previous_;
};

TEST_F(StreamPage, ExamplesPrintWhatStandsBelowThem) {
  const ProjectFolder folder;
  EXPECT_GT(page().examples.size(), 5U);
  for (const testing::ShellExample& example : page().examples) {
    EXPECT_EQ(output_of_example(example.command), example.output)
        << "line " << example.line << " of the page";
  }
}

}  // namespace
}  // namespace rlx
