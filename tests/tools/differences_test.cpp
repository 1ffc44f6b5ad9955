#include "rlxdump/differences.h"

#include <gtest/gtest.h>

#include <random>

#include "rlxdump/compare_jobs.h"
#include "tools/sample_streams.h"

namespace rlx::testing {
namespace {

using dump::Step;

std::vector<std::string> list_of(std::string_view letters) {
  std::vector<std::string> list;
  for (const char letter : letters) {
    list.emplace_back(1, letter);
  }
  return list;
}

/// "=a -b +c": the way from one list to the other, and a check that it leads there.
std::string shown_way(std::string_view from, std::string_view to) {
  std::string shown;
  std::string left;
  std::string right;
  for (const Step& step : dump::shortest_way(list_of(from), list_of(to))) {
    const bool added = step.kind == Step::Kind::added;
    const char letter = added ? to[step.to] : from[step.from];
    left += added ? "" : std::string(1, letter);
    right += step.kind == Step::Kind::removed ? "" : std::string(1, to[step.to]);
    const char* const signs = "=-+";
    shown += std::string(shown.empty() ? "" : " ") + signs[static_cast<int>(step.kind)] + letter;
  }
  EXPECT_EQ(left, from);
  EXPECT_EQ(right, to);
  return shown;
}

TEST(Differences, AreTheShortestWay) {
  EXPECT_EQ(shown_way("", ""), "");
  EXPECT_EQ(shown_way("abc", "abc"), "=a =b =c");
  EXPECT_EQ(shown_way("", "ab"), "+a +b");
  EXPECT_EQ(shown_way("ab", ""), "-a -b");
  EXPECT_EQ(shown_way("abc", "axc"), "=a -b +x =c");
  EXPECT_EQ(shown_way("abcd", "abxcd"), "=a =b +x =c =d");
  EXPECT_EQ(shown_way("abcde", "bcdef"), "-a =b =c =d =e +f");
  EXPECT_EQ(shown_way("aaa", "aa"), "=a =a -a");
}

TEST(Differences, LeadFromAnyListToAnyOther) {
  std::mt19937 random(4);
  for (int i = 0; i < 2000; ++i) {
    std::string from(random() % 30, 'a');
    std::string to(random() % 30, 'a');
    for (char& c : from) {
      c = static_cast<char>('a' + random() % 4);
    }
    for (char& c : to) {
      c = static_cast<char>('a' + random() % 4);
    }
    shown_way(from, to);
  }
}

TEST(Differences, OfListsWithNothingInCommonAreAll) {
  const std::string from(3000, 'a');
  const std::string to(2000, 'b');
  EXPECT_EQ(dump::shortest_way(list_of(from), list_of(to)).size(), 5000U);
  shown_way("x" + from + "y", "x" + to + "y");
}

/// What --diff writes about two jobs, "a" and "b".
std::string compared(const std::string& first, const std::string& second) {
  std::string text;
  dump::Output output(text);
  reader::MemoryInput left(reader_bytes(first));
  reader::MemoryInput right(reader_bytes(second));
  const bool same = dump::compare_jobs({"a", left}, {"b", right}, output, dump::Painter(false));
  output.flush();
  EXPECT_EQ(same, first == second);
  EXPECT_EQ(text.empty(), same);
  return text;
}

std::string replaced(std::string job, const std::string& what, const std::string& with) {
  job.replace(job.find(what), what.size(), with);
  return job;
}

TEST(JobDifferences, OfTheSameJobAreNone) {
  EXPECT_EQ(compared(job_of_two_pages(), job_of_two_pages()), "");
  EXPECT_EQ(compared("", ""), "");
}

TEST(JobDifferences, NamePageAndPiece) {
  const std::string job = job_of_two_pages();
  const std::size_t text = job.find("SECOND");
  const std::string at = std::to_string(text);
  EXPECT_EQ(compared(job, replaced(job, "SECOND", "FOURTH")),
            "--- a\n+++ b\n== page 2\n"
            "- piece      4  at        " +
                at +
                "  text  \"SECOND\"\n"
                "+ piece      4  at        " +
                at + "  text  \"FOURTH\"\n");
}

TEST(JobDifferences, ShowWhatOnlyOneHas) {
  const std::string front = first_header() + rlx_block('2', "A\n\f");
  const std::string page = rlx_block('9', kSetup) + rlx_block('2', "B\f");
  EXPECT_EQ(compared(front + job_end(), front + page + job_end()),
            "--- a\n+++ b\n== page 2\n"
            "+ piece      1  at        176  page setup\n"
            "+ piece      2  at        192  unit  ESC \"Q1;7200!C\"  (length 1/7200 in)\n"
            "+ piece      3  at        202  first data\n"
            "+ piece      4  at        218  text  \"B\"\n"
            "+ piece      5  at        219  form feed  FF\n");
}

TEST(JobDifferences, AreSeenInEachByte) {
  const std::string job = job_of_two_pages() + rlx_parameters(kFixedText);
  for (std::size_t at = 0; at < job.size(); ++at) {
    for (const unsigned bits : {1U, 0x20U, 0x80U}) {
      std::string changed = job;
      changed[at] = static_cast<char>(static_cast<unsigned char>(changed[at]) ^ bits);
      SCOPED_TRACE(at);
      compared(job, changed);
    }
    compared(job, job.substr(0, at));
    compared(job, job.substr(0, at) + "x" + job.substr(at));
  }
}

TEST(JobDifferences, AreSeenInFrames) {
  const std::string job = rlx_frame("A\n\fB", false) + rlx_frame("C\f", true);
  for (std::size_t at = 0; at < job.size(); ++at) {
    std::string changed = job;
    changed[at] = static_cast<char>(static_cast<unsigned char>(changed[at]) ^ 1U);
    compared(job, changed);
  }
}

TEST(JobDifferences, GoOnBehindAVeryLongPage) {
  // More pieces than are held at a time.
  std::string lines;
  for (int i = 0; i < 30000; ++i) {
    lines += "A\n";
  }
  const std::string front = first_header() + rlx_block('2', lines + "\f");
  const std::string back = rlx_block('9', kSetup) + rlx_block('2', "B\f") + job_end();
  const std::string shown = compared(front + back, replaced(front + back, "B\f", "C\f"));
  EXPECT_EQ(shown.substr(0, 20), "--- a\n+++ b\n== page ");
  EXPECT_EQ(shown.find("\"A\""), std::string::npos);
}

}  // namespace
}  // namespace rlx::testing
