#include "support/include_arrows.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "support/descriptors.h"

namespace rlx::testing {
namespace {

using Faults = std::vector<std::string>;

TEST(IncludeArrows, SourcesFollowTheRules) {
  const Includes includes = read_includes(RLX_SOURCE_DIRECTORY);
  EXPECT_TRUE(includes.contains("job/status.h"));
  for (const std::string& fault : include_faults(includes, allowed_arrows())) {
    ADD_FAILURE() << fault;
  }
}

TEST(IncludeArrows, ToolsTakeOfTheFilterWhatTheyMay) {
  Includes includes = read_includes(RLX_TOOLS_DIRECTORY);
  EXPECT_TRUE(includes.contains("fcbcheck/fcbcheck.cpp"));
  for (const auto& [file, targets] : read_includes(RLX_SOURCE_DIRECTORY)) {
    if (allowed_arrows_of_tools().contains(file.substr(0, file.rfind('/')))) {
      includes.emplace(file, targets);
    }
  }
  for (const std::string& fault : include_faults(includes, allowed_arrows_of_tools())) {
    ADD_FAILURE() << fault;
  }
}

/// The web pages are a part of their program, in a folder for order's sake alone.
std::string without_web_folder(const std::string& file) {
  constexpr std::string_view kFolder = "rlx-printer-app/web/";
  return file.starts_with(kFolder) ? "rlx-printer-app/web-" + file.substr(kFolder.size()) : file;
}

Includes without_web_folder(const Includes& includes) {
  Includes all;
  for (const auto& [file, targets] : includes) {
    auto& renamed = all[without_web_folder(file)];
    for (const std::string& target : targets) {
      renamed.insert(without_web_folder(target));
    }
  }
  return all;
}

TEST(IncludeArrows, SpoolersTakeOfTheToolsTheReaderOfJobs) {
  Includes includes = without_web_folder(read_includes(RLX_SPOOLER_DIRECTORY));
  EXPECT_TRUE(includes.contains("texttorlx/texttorlx.cpp"));
  for (const auto& [file, targets] : read_includes(RLX_TOOLS_DIRECTORY)) {
    if (file.starts_with("rlx_reader/")) {
      includes.emplace(file, targets);
    }
  }
  for (const std::string& fault : include_faults(includes, allowed_arrows_of_spooler())) {
    ADD_FAILURE() << fault;
  }
}

// The checker itself, on made-up sources.

TEST(IncludeArrowsChecker, ReadsQuotedIncludesOnly) {
  EXPECT_EQ(quoted_includes("#include \"a/own.h\"\n\n#include <array>\n"
                            "  #  include\t\"b/other.h\"  // why\n"
                            "// #include \"c/comment.h\"\n"
                            "const char* text = \"#include\";\n"),
            (std::set<std::string>{"a/own.h", "b/other.h"}));
}

TEST(IncludeArrowsChecker, ReadsHeadersAndSourcesBelowAFolder) {
  const ScratchDirectory scratch;
  write_file("root/job/a.h", "#pragma once\n");
  write_file("root/input/b.cpp", "#include \"input/b.h\"\n#include \"job/a.h\"\n");
  write_file("root/input/notes.txt", "#include \"job/none.h\"\n");
  EXPECT_EQ(read_includes("root"),
            (Includes{{"input/b.cpp", {"input/b.h", "job/a.h"}}, {"job/a.h", {}}}));
}

TEST(IncludeArrowsChecker, AllowedArrowsAndTheOwnFolderAreFine) {
  EXPECT_EQ(include_faults({{"driver/main.cpp", {"output/page.h", "driver/options/options.h"}},
                            {"driver/options/options.h", {}},
                            {"output/page.h", {"job/settings.h"}},
                            {"job/settings.h", {"job/status.h"}},
                            {"job/status.h", {}}},
                           allowed_arrows()),
            Faults{});
}

TEST(IncludeArrowsChecker, FindsAnArrowThatIsNotAllowed) {
  EXPECT_EQ(include_faults({{"fonts/a.cpp", {"output/b.h"}}, {"output/b.h", {}}}, allowed_arrows()),
            Faults{"fonts/a.cpp may not include output/b.h"});
}

TEST(IncludeArrowsChecker, FindsEveryArrowOutOfJob) {
  for (const auto& [folder, targets] : allowed_arrows()) {
    if (folder != "job") {
      EXPECT_EQ(
          include_faults({{"job/a.h", {folder + "/b.h"}}, {folder + "/b.h", {}}}, allowed_arrows()),
          Faults{"job/a.h may not include " + folder + "/b.h"});
    }
  }
}

TEST(IncludeArrowsChecker, FindsAMissingFile) {
  EXPECT_EQ(include_faults({{"output/a.cpp", {"a.h"}}, {"output/a.h", {}}}, allowed_arrows()),
            Faults{"output/a.cpp includes a.h, which is not there"});
}

TEST(IncludeArrowsChecker, FindsAnUnknownFolder) {
  EXPECT_EQ(include_faults({{"misc/a.h", {}}}, allowed_arrows()),
            Faults{"misc/a.h is in no known folder"});
}

TEST(IncludeArrowsChecker, FindsACircleBetweenFiles) {
  EXPECT_EQ(
      include_faults({{"job/a.h", {"job/b.h"}}, {"job/b.h", {"job/c.h"}}, {"job/c.h", {"job/a.h"}}},
                     allowed_arrows()),
      Faults{"circle: job/a.h -> job/b.h -> job/c.h -> job/a.h"});
  EXPECT_EQ(include_faults({{"job/a.h", {"job/a.h"}}}, allowed_arrows()),
            Faults{"circle: job/a.h -> job/a.h"});
}

TEST(IncludeArrowsChecker, FindsACircleBetweenFolders) {
  const AllowedArrows careless{{"x", {"y"}}, {"y", {"x"}}};
  EXPECT_EQ(
      include_faults({{"x/a.h", {"y/b.h"}}, {"y/b.h", {}}, {"y/c.h", {"x/d.h"}}, {"x/d.h", {}}},
                     careless),
      Faults{"circle: x -> y -> x"});
}

TEST(IncludeArrowsChecker, TwoWaysToAFileAreNoCircle) {
  EXPECT_EQ(include_faults({{"job/a.h", {"job/b.h", "job/c.h"}},
                            {"job/b.h", {"job/d.h"}},
                            {"job/c.h", {"job/d.h"}},
                            {"job/d.h", {}}},
                           allowed_arrows()),
            Faults{});
}

}  // namespace
}  // namespace rlx::testing
