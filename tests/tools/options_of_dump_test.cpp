#include <gtest/gtest.h>

#include "rlxdump/options.h"

namespace rlx::testing {
namespace {

using dump::Options;
using Words = std::vector<std::string>;

Options parsed(const Words& words) {
  std::string complaint;
  const auto options = dump::parse_options(words, complaint);
  EXPECT_TRUE(options.has_value()) << complaint;
  return options.value_or(Options{});
}

std::string complaint_about(const Words& words) {
  std::string complaint;
  EXPECT_FALSE(dump::parse_options(words, complaint).has_value());
  return complaint;
}

TEST(DumpOptions, AreTextOfStandardInputWithoutAny) {
  const Options options = parsed({});
  EXPECT_EQ(options.mode, Options::Mode::text);
  EXPECT_EQ(options.color, Options::Color::automatic);
  EXPECT_EQ(options.files, Words{"-"});
}

TEST(DumpOptions, SayHowAJobIsShown) {
  EXPECT_EQ(parsed({"--pages", "job"}).mode, Options::Mode::pages);
  EXPECT_EQ(parsed({"job", "--json"}).mode, Options::Mode::json);
  EXPECT_EQ(parsed({"--check"}).mode, Options::Mode::check);
  EXPECT_EQ(parsed({"--diff", "a", "-"}).files, (Words{"a", "-"}));
  EXPECT_EQ(parsed({"--help"}).mode, Options::Mode::help);
  EXPECT_EQ(parsed({"--check", "--help", "a", "b"}).mode, Options::Mode::help);
  EXPECT_EQ(parsed({"--version"}).mode, Options::Mode::version);
  EXPECT_EQ(parsed({"--color=always"}).color, Options::Color::always);
  EXPECT_EQ(parsed({"--color=never"}).color, Options::Color::never);
  EXPECT_EQ(parsed({"--color=auto"}).color, Options::Color::automatic);
}

TEST(DumpOptions, EndAtTwoHyphens) {
  EXPECT_EQ(parsed({"--", "--json"}).files, Words{"--json"});
  EXPECT_EQ(parsed({"--", "--json"}).mode, Options::Mode::text);
}

TEST(DumpOptions, ThatAreWrongAreNamed) {
  EXPECT_EQ(complaint_about({"--jsn"}), "unknown option --jsn");
  EXPECT_EQ(complaint_about({"-x"}), "unknown option -x");
  EXPECT_EQ(complaint_about({"--color=red"}), "unknown option --color=red");
  EXPECT_EQ(complaint_about({"--json", "--pages"}),
            "--pages does not go with another way to show a job");
  EXPECT_EQ(complaint_about({"a", "b"}), "one file, please; \"b\" is more");
  EXPECT_EQ(complaint_about({"--diff", "a"}), "--diff takes two files");
  EXPECT_EQ(complaint_about({"--diff", "a", "b", "c"}), "--diff takes two files");
  EXPECT_EQ(complaint_about({"--diff", "-", "-"}), "standard input can be read once");
}

TEST(DumpOptions, AreAllInTheHelp) {
  for (const char* const word :
       {"--pages", "--json", "--check", "--diff", "--color=", "--help", "--version", "NO_COLOR"}) {
    EXPECT_NE(dump::help_text().find(word), std::string_view::npos) << word;
  }
}

}  // namespace
}  // namespace rlx::testing
