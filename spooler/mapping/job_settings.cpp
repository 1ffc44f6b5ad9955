#include "mapping/job_settings.h"

#include <algorithm>
#include <array>
#include <optional>

#include "mapping/charsets.h"
#include "mapping/words.h"

namespace rlx::spooler {

namespace {

/// Puts a value into the settings. @return false when it cannot be used.
using Take = bool (*)(std::string_view value, JobSettings& settings);

struct Option {
  std::string_view name;
  std::string_view wanted;
  Take take;
};

/// A word that a spooler uses for a value.
template <typename Value>
struct Word {
  std::string_view word;
  Value value;
};

template <typename Value, std::size_t Count>
std::optional<Value> find_word(const std::array<Word<Value>, Count>& words, std::string_view word) {
  const auto* const found = std::find_if(
      words.begin(), words.end(), [word](const auto& row) { return same_word(row.word, word); });
  return found == words.end() ? std::nullopt : std::optional<Value>(found->value);
}

/// The names in IPP, in PPD files, and those that people type.
constexpr std::array<Word<Paper>, 21> kPapers{{
    {"A3", Paper::a3},
    {"A4", Paper::a4},
    {"A5", Paper::a5},
    {"B4", Paper::b4},
    {"B5", Paper::b5},
    {"JISB4", Paper::b4},
    {"JISB5", Paper::b5},
    {"B4JIS", Paper::b4},
    {"B5JIS", Paper::b5},
    {"Letter", Paper::letter},
    {"LTR", Paper::letter},
    {"iso_a3_297x420mm", Paper::a3},
    {"iso_a4_210x297mm", Paper::a4},
    {"iso_a5_148x210mm", Paper::a5},
    {"jis_b4_257x364mm", Paper::b4},
    {"jis_b5_182x257mm", Paper::b5},
    {"na_letter_8.5x11in", Paper::letter},
    {"iso-a3", Paper::a3},
    {"iso-a4", Paper::a4},
    {"iso-a5", Paper::a5},
    {"na-letter", Paper::letter},
}};

constexpr std::array<Word<Tray>, 10> kTrays{{
    {"Default", Tray::unset},
    {"auto", Tray::automatic},
    {"tray-1", Tray::tray_1},
    {"tray-2", Tray::tray_2},
    {"tray-3", Tray::tray_3},
    {"tray-4", Tray::tray_4},
    {"Tray1", Tray::tray_1},
    {"Tray2", Tray::tray_2},
    {"Tray3", Tray::tray_3},
    {"Tray4", Tray::tray_4},
}};

constexpr std::array<Word<Sides>, 6> kSides{{
    {"one-sided", Sides::one},
    {"two-sided-long-edge", Sides::two_long_edge},
    {"two-sided-short-edge", Sides::two_short_edge},
    {"None", Sides::one},
    {"DuplexNoTumble", Sides::two_long_edge},
    {"DuplexTumble", Sides::two_short_edge},
}};

constexpr std::array<Word<Orientation>, 2> kOrientations{{
    {"3", Orientation::upright},
    {"4", Orientation::landscape},
}};

constexpr std::array<Word<UndefinedCharacters>, 2> kUndefinedCharacters{{
    {"space", UndefinedCharacters::space},
    {"ubar", UndefinedCharacters::ubar},
}};

constexpr std::array<Word<bool>, 8> kTruths{{
    {"true", true},
    {"yes", true},
    {"on", true},
    {"", true},
    {"false", false},
    {"no", false},
    {"off", false},
    {"None", false},
}};

/// A word in front of which nothing was chosen.
bool is_nothing(std::string_view value) {
  return value.empty() || same_word(value, "None") || same_word(value, "Default");
}

template <typename Value>
bool put(const std::optional<Value>& value, Value& setting) {
  if (value) {
    setting = *value;
  }
  return value.has_value();
}

/// A number from `least` to `most`, or a word for none, which is 0.
bool put_number(std::string_view value, unsigned least, unsigned most, unsigned& setting) {
  const auto number = is_nothing(value) ? 0U : whole_number(value, most);
  if (!number || (*number != 0 && *number < least)) {
    return false;
  }
  setting = *number;
  return true;
}

bool take_form(std::string_view value, JobSettings& settings) {
  if (!is_nothing(value) && !is_form_name(value)) {
    return false;
  }
  settings.form = is_nothing(value) ? std::string() : std::string(value);
  return true;
}

bool take_lines_per_page(std::string_view value, JobSettings& settings) {
  return put_number(value, 1, JobSettings::kMostLinesPerPage, settings.lines_per_page);
}

bool take_lpi(std::string_view value, JobSettings& settings) {
  constexpr std::array<unsigned, 6> kKnown{0, 3, 4, 6, 8, 12};
  unsigned number = 0;
  if (!put_number(value, 1, kKnown.back(), number) ||
      std::find(kKnown.begin(), kKnown.end(), number) == kKnown.end()) {
    return false;
  }
  settings.lines_per_inch = number;
  return true;
}

bool take_cpi(std::string_view value, JobSettings& settings) {
  return put_number(value, 1, JobSettings::kMostCharactersPerInch, settings.characters_per_inch);
}

bool take_undefined(std::string_view value, JobSettings& settings) {
  const auto wanted = is_nothing(value) ? std::optional(UndefinedCharacters::unset)
                                        : find_word(kUndefinedCharacters, value);
  return put(wanted, settings.undefined_characters);
}

bool take_extended(std::string_view value, JobSettings& settings) {
  return put(find_word(kTruths, value), settings.extended_parameters);
}

bool take_charset(std::string_view value, JobSettings& settings) {
  if (!is_nothing(value) && !is_known_charset(std::string(value))) {
    return false;
  }
  settings.charset = is_nothing(value) || is_utf_8(value) ? std::string() : std::string(value);
  return true;
}

/// A size, or a list such as "A4,tray-2".
bool take_media(std::string_view value, JobSettings& settings) {
  JobSettings wanted = settings;
  for (const std::string& word : divide(value, ',')) {
    if (!put(find_word(kPapers, word), wanted.paper) &&
        !put(find_word(kTrays, word), wanted.tray)) {
      return false;
    }
  }
  settings = wanted;
  return true;
}

bool take_paper(std::string_view value, JobSettings& settings) {
  return put(find_word(kPapers, value), settings.paper);
}

bool take_tray(std::string_view value, JobSettings& settings) {
  return put(find_word(kTrays, value), settings.tray);
}

bool take_sides(std::string_view value, JobSettings& settings) {
  return put(find_word(kSides, value), settings.sides);
}

bool take_orientation(std::string_view value, JobSettings& settings) {
  return put(find_word(kOrientations, value), settings.orientation);
}

bool take_landscape(std::string_view value, JobSettings& settings) {
  const auto landscape = find_word(kTruths, value);
  if (landscape) {
    settings.orientation = *landscape ? Orientation::landscape : Orientation::upright;
  }
  return landscape.has_value();
}

bool take_copies(std::string_view value, JobSettings& settings) {
  const auto copies = whole_number(value, JobSettings::kMostCopies);
  return copies.value_or(0) > 0 && put(copies, settings.copies);
}

bool take_offset(std::string_view value, unsigned& setting) {
  return put_number(value, JobSettings::kLeastPageOffset, JobSettings::kMostPageOffset, setting);
}

bool take_offset_x(std::string_view value, JobSettings& settings) {
  return take_offset(value, settings.page_offset_x);
}

bool take_offset_y(std::string_view value, JobSettings& settings) {
  return take_offset(value, settings.page_offset_y);
}

constexpr std::string_view kPaperWords = "A3, A4, A5, B4, B5 (both JIS) or Letter";
constexpr std::string_view kTrayWords = "auto, tray-1, tray-2, tray-3 or tray-4";
constexpr std::string_view kSideWords = "one-sided, two-sided-long-edge or two-sided-short-edge";
constexpr std::string_view kTruthWords = "true or false";
constexpr std::string_view kOffsetWords =
    "0 or a whole number from 1440 to 99999, in 1/7200 inch (1440 is 1/5 inch)";

constexpr std::array<Option, 18> kOptions{{
    {"form", "the name of a form: letters, digits, - and _", take_form},
    {"lines-per-page", "a whole number from 0 to 9999", take_lines_per_page},
    {"lpi", "3, 4, 6, 8 or 12", take_lpi},
    {"cpi", "a whole number from 1 to 100", take_cpi},
    {"rlx-undefined", "space or ubar", take_undefined},
    {"rlx-extended", kTruthWords, take_extended},
    {"rlx-charset", "the name of an encoding, such as EUC-JP or Shift_JIS", take_charset},
    {"media", kPaperWords, take_media},
    {"PageSize", kPaperWords, take_paper},
    {"media-source", kTrayWords, take_tray},
    {"InputSlot", kTrayWords, take_tray},
    {"sides", kSideWords, take_sides},
    {"Duplex", kSideWords, take_sides},
    {"orientation-requested", "3 (upright) or 4 (landscape)", take_orientation},
    {"landscape", kTruthWords, take_landscape},
    {"copies", "a whole number from 1 to 9999", take_copies},
    {"page-offset-x", kOffsetWords, take_offset_x},
    {"page-offset-y", kOffsetWords, take_offset_y},
}};

}  // namespace

std::string text_of(const OptionFault& fault) {
  return "option " + fault.name + "=" + fault.value + ": wanted is " + fault.wanted;
}

std::vector<OptionFault> read_job_options(const std::vector<JobOption>& options,
                                          JobSettings& settings) {
  std::vector<OptionFault> faults;
  for (const Option& known : kOptions) {
    for (const JobOption& option : options) {
      if (option.name == known.name && !known.take(option.value, settings)) {
        faults.push_back({option.name, option.value, std::string(known.wanted)});
      }
    }
  }
  return faults;
}

bool is_job_option(std::string_view name) {
  return std::any_of(kOptions.begin(), kOptions.end(),
                     [name](const Option& known) { return known.name == name; });
}

bool is_form_name(std::string_view name) {
  constexpr std::string_view kBytes =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
  return !name.empty() && name.size() <= JobSettings::kMostFormNameBytes &&
         name.find_first_not_of(kBytes) == std::string_view::npos;
}

}  // namespace rlx::spooler
