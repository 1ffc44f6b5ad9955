#include "mapping/job_settings.h"

#include <gtest/gtest.h>

#include <ostream>
#include <utility>

namespace rlx::spooler {

/// For EXPECT_EQ.
static bool operator==(const JobSettings& left, const JobSettings& right) {
  const auto tied = [](const JobSettings& settings) {
    return std::tie(settings.form, settings.lines_per_page, settings.lines_per_inch,
                    settings.characters_per_inch, settings.undefined_characters,
                    settings.extended_parameters, settings.charset, settings.paper, settings.tray,
                    settings.orientation, settings.sides, settings.copies, settings.page_offset_x,
                    settings.page_offset_y);
  };
  return tied(left) == tied(right);
}

namespace {

using Options = std::vector<JobOption>;

/// Settings in which nothing has the value that it has without a word.
JobSettings all_set() {
  JobSettings settings;
  settings.form = "KEPT";
  settings.lines_per_page = 55;
  settings.lines_per_inch = 12;
  settings.characters_per_inch = 17;
  settings.undefined_characters = UndefinedCharacters::space;
  settings.extended_parameters = true;
  settings.charset = "CP1252";
  settings.paper = Paper::a5;
  settings.tray = Tray::tray_4;
  settings.orientation = Orientation::upright;
  settings.sides = Sides::two_short_edge;
  settings.copies = 5;
  settings.page_offset_x = 2000;
  settings.page_offset_y = 3000;
  return settings;
}

JobSettings read(const Options& options, JobSettings settings = JobSettings()) {
  const auto faults = read_job_options(options, settings);
  for (const OptionFault& fault : faults) {
    ADD_FAILURE() << text_of(fault);
  }
  return settings;
}

/// The one option is refused, its words are the wanted ones, and nothing changes.
void expect_refused(const std::string& name, const std::string& value, const std::string& wanted) {
  SCOPED_TRACE(name + '=' + value);
  JobSettings settings = all_set();
  const auto faults = read_job_options({{name, value}}, settings);
  ASSERT_EQ(faults.size(), 1U);
  EXPECT_EQ(faults[0].name, name);
  EXPECT_EQ(faults[0].value, value);
  EXPECT_EQ(faults[0].wanted, wanted);
  EXPECT_TRUE(settings == all_set());
}

/// A value of an option and what becomes of it, from settings in which all is set and in which
/// nothing is.
template <typename Value>
void expect_values(const std::string& name, Value JobSettings::*setting,
                   const std::vector<std::pair<std::string, Value>>& values) {
  for (const auto& [word, value] : values) {
    SCOPED_TRACE(name + '=' + word);
    for (const JobSettings& before : {JobSettings(), all_set()}) {
      JobSettings expected = before;
      expected.*setting = value;
      EXPECT_TRUE(read({{name, word}}, before) == expected);
    }
  }
}

TEST(JobOptions, OfOtherNamesAreNotLookedAt) {
  const Options others{{"", "1"},          {"Form", "A B"},   {"LPI", "5"},
                       {"number-up", "9"}, {"forms", "/x"},   {"media-col", "{}"},
                       {"lpi ", "5"},      {"job-uuid", "?"}, {"page-offset", "1"}};
  EXPECT_TRUE(read(others) == JobSettings());
  EXPECT_TRUE(read(others, all_set()) == all_set());
  EXPECT_TRUE(read({}, all_set()) == all_set());
}

TEST(JobOptions, Form) {
  expect_values<std::string>("form", &JobSettings::form,
                             {{"INVOICE", "INVOICE"},
                              {"invoice", "invoice"},
                              {"-", "-"},
                              {"_a-Z09", "_a-Z09"},
                              {std::string(255, 'F'), std::string(255, 'F')},
                              {"", ""},
                              {"None", ""},
                              {"none", ""},
                              {"Default", ""}});
  for (const std::string& value :
       {std::string("/INVOICE"), std::string("a/b"), std::string(".."), std::string("a b"),
        std::string("a.b"), std::string("a\n"), std::string("a\0b", 3), std::string("\xe8\xa1\xa8"),
        std::string(256, 'F')}) {
    expect_refused("form", value, "the name of a form: letters, digits, - and _");
  }
}

TEST(JobOptions, LinesPerPage) {
  expect_values<unsigned>(
      "lines-per-page", &JobSettings::lines_per_page,
      {{"1", 1}, {"66", 66}, {"9999", 9999}, {"0", 0}, {"None", 0}, {"Default", 0}, {"", 0}});
  for (const char* value : {"10000", "-1", "6.5", "sixty"}) {
    expect_refused("lines-per-page", value, "a whole number from 0 to 9999");
  }
}

TEST(JobOptions, LinesPerInch) {
  expect_values<unsigned>(
      "lpi", &JobSettings::lines_per_inch,
      {{"3", 3}, {"4", 4}, {"6", 6}, {"8", 8}, {"12", 12}, {"Default", 0}, {"0", 0}, {"", 0}});
  for (const char* value : {"1", "2", "5", "7", "9", "10", "11", "13", "60", "-6", "6x"}) {
    expect_refused("lpi", value, "3, 4, 6, 8 or 12");
  }
}

TEST(JobOptions, CharactersPerInch) {
  expect_values<unsigned>("cpi", &JobSettings::characters_per_inch,
                          {{"1", 1}, {"10", 10}, {"100", 100}, {"Default", 0}, {"0", 0}, {"", 0}});
  for (const char* value : {"101", "-1", "16.7", "ten"}) {
    expect_refused("cpi", value, "a whole number from 1 to 100");
  }
}

TEST(JobOptions, UndefinedCharacters) {
  expect_values<UndefinedCharacters>("rlx-undefined", &JobSettings::undefined_characters,
                                     {{"space", UndefinedCharacters::space},
                                      {"ubar", UndefinedCharacters::ubar},
                                      {"UBAR", UndefinedCharacters::ubar},
                                      {"Default", UndefinedCharacters::unset},
                                      {"None", UndefinedCharacters::unset},
                                      {"", UndefinedCharacters::unset}});
  expect_refused("rlx-undefined", "bar", "space or ubar");
}

TEST(JobOptions, ExtendedParameters) {
  expect_values<bool>("rlx-extended", &JobSettings::extended_parameters,
                      {{"true", true},
                       {"True", true},
                       {"yes", true},
                       {"on", true},
                       {"", true},
                       {"false", false},
                       {"no", false},
                       {"off", false},
                       {"None", false}});
  for (const char* value : {"1", "0", "t", "Default"}) {
    expect_refused("rlx-extended", value, "true or false");
  }
}

TEST(JobOptions, Charset) {
  expect_values<std::string>("rlx-charset", &JobSettings::charset,
                             {{"EUC-JP", "EUC-JP"},
                              {"shift_jis", "shift_jis"},
                              {"UTF-8", ""},
                              {"utf8", ""},
                              {"US-ASCII", "US-ASCII"},
                              {"None", ""},
                              {"Default", ""},
                              {"", ""}});
  for (const char* value : {"EUC", "EUC-JP//IGNORE", "/"}) {
    expect_refused("rlx-charset", value, "the name of an encoding, such as EUC-JP or Shift_JIS");
  }
}

const std::vector<std::pair<std::string, Paper>>& paper_names() {
  static const std::vector<std::pair<std::string, Paper>> names{
      {"A3", Paper::a3},
      {"iso_a3_297x420mm", Paper::a3},
      {"iso-a3", Paper::a3},
      {"A4", Paper::a4},
      {"a4", Paper::a4},
      {"iso_a4_210x297mm", Paper::a4},
      {"iso-a4", Paper::a4},
      {"A5", Paper::a5},
      {"iso_a5_148x210mm", Paper::a5},
      {"iso-a5", Paper::a5},
      {"B4", Paper::b4},
      {"JISB4", Paper::b4},
      {"B4JIS", Paper::b4},
      {"jis_b4_257x364mm", Paper::b4},
      {"B5", Paper::b5},
      {"JISB5", Paper::b5},
      {"B5JIS", Paper::b5},
      {"jis_b5_182x257mm", Paper::b5},
      {"Letter", Paper::letter},
      {"letter", Paper::letter},
      {"LTR", Paper::letter},
      {"na_letter_8.5x11in", Paper::letter},
      {"na-letter", Paper::letter},
  };
  return names;
}

const std::vector<std::pair<std::string, Tray>>& tray_names() {
  static const std::vector<std::pair<std::string, Tray>> names{
      {"auto", Tray::automatic}, {"Auto", Tray::automatic}, {"tray-1", Tray::tray_1},
      {"tray-2", Tray::tray_2},  {"tray-3", Tray::tray_3},  {"tray-4", Tray::tray_4},
      {"Tray1", Tray::tray_1},   {"Tray2", Tray::tray_2},   {"Tray3", Tray::tray_3},
      {"Tray4", Tray::tray_4},   {"TRAY4", Tray::tray_4},   {"Default", Tray::unset}};
  return names;
}

constexpr const char* kWantedPaper = "A3, A4, A5, B4, B5 (both JIS) or Letter";
constexpr const char* kWantedTray = "auto, tray-1, tray-2, tray-3 or tray-4";

TEST(JobOptions, Paper) {
  expect_values<Paper>("media", &JobSettings::paper, paper_names());
  expect_values<Paper>("PageSize", &JobSettings::paper, paper_names());
  for (const char* name : {"media", "PageSize"}) {
    for (const char* value : {"A6", "Legal", "iso_b4_250x353mm", "A4x", "Tray5"}) {
      expect_refused(name, value, kWantedPaper);
    }
  }
  // A list is the affair of media alone.
  expect_refused("PageSize", "A4,tray-1", kWantedPaper);
  expect_refused("PageSize", "", kWantedPaper);
}

TEST(JobOptions, Tray) {
  expect_values<Tray>("media", &JobSettings::tray, tray_names());
  expect_values<Tray>("media-source", &JobSettings::tray, tray_names());
  expect_values<Tray>("InputSlot", &JobSettings::tray, tray_names());
  for (const char* name : {"media-source", "InputSlot"}) {
    for (const char* value : {"tray-0", "tray-5", "tray", "A4", ""}) {
      expect_refused(name, value, kWantedTray);
    }
  }
}

TEST(JobOptions, MediaIsAList) {
  JobSettings expected;
  expected.paper = Paper::b4;
  expected.tray = Tray::tray_3;
  EXPECT_TRUE(read({{"media", "B4,tray-3"}}) == expected);
  EXPECT_TRUE(read({{"media", "Tray3,jis_b4_257x364mm"}}) == expected);
  EXPECT_TRUE(read({{"media", ",A3,,B4,tray-3,"}}) == expected);
  EXPECT_TRUE(read({{"media", ""}}, all_set()) == all_set());
  // One wrong word, and none of it counts.
  expect_refused("media", "B4,tray-3,glossy", kWantedPaper);
  expect_refused("media", "glossy,B4", kWantedPaper);
}

TEST(JobOptions, Sides) {
  for (const char* name : {"sides", "Duplex"}) {
    expect_values<Sides>(name, &JobSettings::sides,
                         {{"one-sided", Sides::one},
                          {"two-sided-long-edge", Sides::two_long_edge},
                          {"two-sided-short-edge", Sides::two_short_edge},
                          {"None", Sides::one},
                          {"DuplexNoTumble", Sides::two_long_edge},
                          {"DuplexTumble", Sides::two_short_edge},
                          {"duplextumble", Sides::two_short_edge}});
    for (const char* value : {"", "two-sided", "2"}) {
      expect_refused(name, value, "one-sided, two-sided-long-edge or two-sided-short-edge");
    }
  }
}

TEST(JobOptions, Orientation) {
  expect_values<Orientation>("orientation-requested", &JobSettings::orientation,
                             {{"3", Orientation::upright}, {"4", Orientation::landscape}});
  for (const char* value : {"", "0", "2", "5", "6", "landscape"}) {
    expect_refused("orientation-requested", value, "3 (upright) or 4 (landscape)");
  }
  expect_values<Orientation>("landscape", &JobSettings::orientation,
                             {{"true", Orientation::landscape},
                              {"", Orientation::landscape},
                              {"false", Orientation::upright},
                              {"no", Orientation::upright}});
  expect_refused("landscape", "4", "true or false");
}

TEST(JobOptions, Copies) {
  expect_values<unsigned>("copies", &JobSettings::copies,
                          {{"1", 1}, {"2", 2}, {"999", 999}, {"1000", 1000}, {"9999", 9999}});
  for (const char* value : {"0", "10000", "-1", "", "two", "4294967297"}) {
    expect_refused("copies", value, "a whole number from 1 to 9999");
  }
}

TEST(JobOptions, PageOffsets) {
  const std::vector<std::pair<std::string, unsigned>> values{
      {"1440", 1440}, {"7200", 7200}, {"99999", 99999}, {"0", 0}, {"", 0}, {"None", 0}};
  expect_values<unsigned>("page-offset-x", &JobSettings::page_offset_x, values);
  expect_values<unsigned>("page-offset-y", &JobSettings::page_offset_y, values);
  for (const char* name : {"page-offset-x", "page-offset-y"}) {
    for (const char* value : {"1439", "1", "100000", "-1440", "1440.0", "1in"}) {
      expect_refused(name, value,
                     "0 or a whole number from 1440 to 99999, in 1/7200 inch (1440 is 1/5 inch)");
    }
  }
}

TEST(JobOptions, ThatMeanTheSameCountByTheirPlaceInTheTable) {
  const auto both_ways = [](const JobOption& weaker, const JobOption& stronger) {
    JobSettings expected;
    EXPECT_TRUE(read_job_options({stronger}, expected).empty());
    EXPECT_TRUE(read({weaker, stronger}) == expected) << weaker.name << ' ' << stronger.name;
    EXPECT_TRUE(read({stronger, weaker}) == expected) << weaker.name << ' ' << stronger.name;
  };
  both_ways({"media", "A3"}, {"PageSize", "A5"});
  both_ways({"media", "tray-1"}, {"media-source", "tray-2"});
  both_ways({"media", "tray-1"}, {"InputSlot", "tray-3"});
  both_ways({"media-source", "tray-2"}, {"InputSlot", "tray-3"});
  both_ways({"sides", "two-sided-long-edge"}, {"Duplex", "DuplexTumble"});
  both_ways({"orientation-requested", "3"}, {"landscape", "true"});
  both_ways({"orientation-requested", "4"}, {"landscape", "false"});
}

TEST(JobOptions, OfTheSameNameTheLastCounts) {
  EXPECT_EQ(read({{"lpi", "6"}, {"cpi", "10"}, {"lpi", "8"}}).lines_per_inch, 8U);
  EXPECT_EQ(read({{"form", "A"}, {"form", "None"}}).form, "");
}

TEST(JobOptions, AFaultChangesNothingOfItsOwnAndHindersNoOther) {
  JobSettings settings = all_set();
  const auto faults = read_job_options(
      {{"page-offset-y", "1"}, {"lpi", "5"}, {"cpi", "12"}, {"form", "a/b"}, {"copies", "3"}},
      settings);
  JobSettings expected = all_set();
  expected.characters_per_inch = 12;
  expected.copies = 3;
  EXPECT_TRUE(settings == expected);
  // In the order of the table.
  ASSERT_EQ(faults.size(), 3U);
  EXPECT_EQ(faults[0].name, "form");
  EXPECT_EQ(faults[1].name, "lpi");
  EXPECT_EQ(faults[2].name, "page-offset-y");
}

TEST(JobOptions, OfAJobComeBehindTheDefaultsOfItsQueue) {
  const JobSettings queue =
      read({{"form", "INVOICE"}, {"lpi", "8"}, {"PageSize", "B4"}, {"rlx-extended", "true"}});
  const JobSettings job =
      read({{"form", "None"}, {"media", "A3"}, {"rlx-extended", "false"}, {"copies", "2"}}, queue);
  JobSettings expected;
  expected.lines_per_inch = 8;
  expected.paper = Paper::a3;
  expected.copies = 2;
  EXPECT_TRUE(job == expected);
  // What a queue has set a job can take back.
  EXPECT_TRUE(read({{"lpi", "Default"}, {"form", ""}, {"rlx-extended", "no"}},
                   read({{"form", "INVOICE"}, {"lpi", "8"}, {"rlx-extended", "yes"}})) ==
              JobSettings());
}

TEST(JobOptions, AFaultIsALineForPeople) {
  EXPECT_EQ(text_of({"lpi", "5", "3, 4, 6, 8 or 12"}), "option lpi=5: wanted is 3, 4, 6, 8 or 12");
}

}  // namespace
}  // namespace rlx::spooler
