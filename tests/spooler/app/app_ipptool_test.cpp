// The printer as ipptool sees it: files of our own, and the suites that CUPS brings.
#include <cups/raster.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "spooler/app/app_server.h"
#include "support/record_builder.h"

namespace rlx::testing {
namespace {

namespace fs = std::filesystem;

class AppIpptool : public AppTest {
 protected:
  void expect_passes(const std::string& file, const std::vector<std::string>& words = {}) {
    const Outcome outcome = server_.ipptool(file, words);
    EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.messages;
  }

  /// A document of its own for a test.
  std::string document(const std::string& bytes) const {
    std::string path = server_.directory() + "/document";
    write_file(path, bytes);
    return path;
  }
};

TEST_F(AppIpptool, SaysItsFormatsAndAttributes) {
  // An attribute that stands twice in an answer is a fault to ipptool, too.
  for (int time = 0; time < 3; ++time) {
    expect_passes("printer-attributes.test");
  }
}

TEST_F(AppIpptool, JobsWithOptions) {
  const std::string text = numbered_pages("A", 2);
  const std::string expected = filtered(
      {"-n", "INVOICE", "-p", forms()},
      condition_sequence({.layout = "2", .copies = "  2", .duplex = "B", .binding_edge = "L"}) +
          text);
  std::size_t printed = 0;
  for (const char* const file : {"print-job.test", "create-job.test"}) {
    SCOPED_TRACE(file);
    expect_passes(file, {"-f", document(text)});
    const auto& jobs = printer_.wait_for_jobs(++printed);
    ASSERT_EQ(jobs.size(), printed);
    expect_same_job(expected, jobs.back());
  }
}

TEST_F(AppIpptool, ValidateJob) {
  expect_passes("validate-job.test");
}

TEST_F(AppIpptool, CancelJobAndGetJobs) {
  expect_passes("cancel-job.test", {"-f", document("TEXT\f")});
  EXPECT_TRUE(printer_.jobs().empty());
}

TEST_F(AppIpptool, ValueThatCannotBe) {
  expect_passes("bad-value.test", {"-f", document("TEXT\f")});
  EXPECT_TRUE(printer_.jobs().empty());
}

/// A page of PWG raster, 240 dots to the inch, 8 bits of gray, as the printer says it would take.
void write_raster(const std::string& path) {
  constexpr unsigned kDots = 240;
  cups_page_header2_t header;
  ASSERT_NE(cupsRasterInitPWGHeader(&header, pwgMediaForPWG("iso_a5_148x210mm"), "sgray_8", kDots,
                                    kDots, "one-sided", nullptr),
            0);
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  cups_raster_t* const raster = cupsRasterOpen(descriptor, CUPS_RASTER_WRITE_PWG);
  ASSERT_NE(cupsRasterWriteHeader2(raster, &header), 0U);
  std::vector<unsigned char> line(header.cupsBytesPerLine, 0xff);
  for (unsigned y = 0; y < header.cupsHeight; ++y) {
    cupsRasterWritePixels(raster, line.data(), header.cupsBytesPerLine);
  }
  cupsRasterClose(raster);
  close(descriptor);
}

TEST_F(AppIpptool, PictureIsRefused) {
  const std::string path = server_.directory() + "/page.pwg";
  write_raster(path);
  expect_passes("raster.test", {"-f", path});
  EXPECT_TRUE(printer_.jobs().empty());
}

// ---- The suites of CUPS
// --------------------------------------------------------------------------

constexpr const char* kSuites = "/usr/share/cups/ipptool";

/// What a suite said of a test that did not pass.
struct Deviation {
  std::string suite;
  std::string verdict;  ///< "FAIL" or "SKIP"
  std::string test;     ///< the name as ipptool writes it: at most 68 characters
  std::string detail;   ///< of a failure: one of the things that were expected

  bool operator<(const Deviation& other) const {
    return std::tie(suite, verdict, test, detail) <
           std::tie(other.suite, other.verdict, other.test, other.detail);
  }
};

std::string text_of(const Deviation& deviation) {
  return deviation.suite + ": " + deviation.verdict + ": " + deviation.test + ": " +
         deviation.detail;
}

struct SuiteResult {
  int passed = 0;
  std::set<Deviation> deviations;
};

/// Reads the words of `ipptool -t`.
SuiteResult read_result(const std::string& output) {
  static const std::regex kSuite(R"x(^"(.*)":$)x");
  static const std::regex kTest(R"(^    (\S.*?) +\[(PASS|FAIL|SKIP)\]$)");
  static const std::regex kDetail(R"(^ {8}((EXPECTED:|Duplicate|Bad|Missing).*)$)");
  SuiteResult result;
  Deviation now;
  bool told = true;
  const auto finish = [&] {
    if (!told) {
      result.deviations.insert(now);
    }
    told = true;
  };
  std::istringstream lines(output);
  std::smatch match;
  for (std::string line; std::getline(lines, line);) {
    if (std::regex_match(line, match, kSuite)) {
      finish();
      now.suite = fs::path(match[1].str()).filename().string();
    } else if (std::regex_match(line, match, kTest)) {
      finish();
      now.test = match[1];
      now.verdict = match[2];
      now.detail.clear();
      told = now.verdict == "PASS";
      result.passed += told ? 1 : 0;
    } else if (now.verdict == "FAIL" && std::regex_match(line, match, kDetail)) {
      now.detail = match[1];
      result.deviations.insert(now);
      told = true;
    }
  }
  finish();
  return result;
}

/// A row of the list of those that are known: suite, verdict, test, detail, reason. A test that
/// ends with "*" stands for all that begin so.
struct Known {
  Deviation deviation;
  std::string reason;

  /// Fails now and then.
  bool is_seldom() const { return deviation.verdict == "MAY"; }
  bool covers(const Deviation& found) const {
    const bool is_front = deviation.test.ends_with('*');
    const std::string front = deviation.test.substr(0, deviation.test.size() - 1);
    return deviation.suite == found.suite &&
           (deviation.verdict == found.verdict || (is_seldom() && found.verdict == "FAIL")) &&
           deviation.detail == found.detail &&
           (is_front ? found.test.starts_with(front) : deviation.test == found.test);
  }
};

std::vector<Known> read_list() {
  std::ifstream file(RLX_PROJECT_DIRECTORY "/tests/spooler/app/ipptool/deviations.tsv");
  std::vector<Known> list;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line.front() == '#') {
      continue;
    }
    std::istringstream words(line);
    std::array<std::string, 5> columns;
    for (std::string& column : columns) {
      std::getline(words, column, '\t');
    }
    EXPECT_FALSE(columns[4].empty()) << "no reason: " << line;
    list.push_back({{columns[0], columns[1], columns[2], columns[3]}, columns[4]});
  }
  EXPECT_FALSE(list.empty());
  return list;
}

/// The suites in a folder of their own. The documents that they print are not in CUPS's packages,
/// and all are pictures, PDF or PostScript: a line of text stands in the place of each. What the
/// suites look at is the answer to the request, and that comes before anybody looks into a picture.
std::string make_suites() {
  std::string folder = make_directory("suites");
  static const std::regex kFile(R"(\n\s*FILE\s+([^\s$]+))");
  for (const fs::directory_entry& entry : fs::directory_iterator(kSuites)) {
    const std::string text = read_file(entry.path());
    write_file(folder + "/" + entry.path().filename().string(), text);
    for (std::sregex_iterator found(text.begin(), text.end(), kFile), end; found != end; ++found) {
      const std::string path = folder + "/" + (*found)[1].str();
      fs::create_directories(fs::path(path).parent_path());
      write_file(path, "no picture\n");
    }
  }
  return folder;
}

class LongAppSuites : public AppIpptool {
 protected:
  SuiteResult run_suite(const std::string& file) {
    // A printer is 0 seconds old in its first second, which the suites take for a fault.
    expect_passes("up-time.test");
    const std::string folder = make_suites();
    const Outcome outcome =
        run_command({.words = {"ipptool", "-tI", "-T", "30", "-V", "2.0", "-f", document("TEXT\f"),
                               server_.uri("office"), folder + "/" + file},
                     .environment = {{"HOME", server_.directory()}}});
    EXPECT_EQ(outcome.messages, "");
    return read_result(outcome.output);
  }

  /// Compares with the list: what is found, and nothing else, has to stand in it.
  static void expect_as_listed(const SuiteResult& result, const std::set<std::string>& suites) {
    const std::vector<Known> list = read_list();
    for (const Deviation& found : result.deviations) {
      EXPECT_TRUE(std::any_of(list.begin(), list.end(),
                              [&](const Known& known) { return known.covers(found); }))
          << "not in the list: " << text_of(found);
    }
    for (const Known& known : list) {
      if (known.is_seldom()) {
        continue;
      }
      const bool is_found =
          std::any_of(result.deviations.begin(), result.deviations.end(),
                      [&](const Deviation& found) { return known.covers(found); });
      EXPECT_EQ(is_found, suites.contains(known.deviation.suite))
          << "in the list, but passes: " << text_of(known.deviation);
    }
  }
};

TEST_F(LongAppSuites, Ipp11) {
  const SuiteResult result = run_suite("ipp-1.1.test");
  EXPECT_GE(result.passed, 30);
  expect_as_listed(result, {"ipp-1.1.test"});
}

/// With all that it includes.
TEST_F(LongAppSuites, IppEverywhere) {
  const SuiteResult result = run_suite("ipp-everywhere.test");
  EXPECT_GE(result.passed, 30);
  expect_as_listed(result, {"ipp-1.1.test", "ipp-2.0.test", "ipp-everywhere.test"});
}

/// The documentation has the same list.
TEST(AppSuites, ListIsDocumented) {
  const std::string page = read_file(RLX_PROJECT_DIRECTORY "/docs/printer-app.md");
  for (const Known& known : read_list()) {
    std::string test = known.deviation.test;
    if (test.ends_with('*')) {
      test.replace(test.size() - 1, 1, " ...");
    }
    const std::string row = "| " + test + " | " + known.reason + " |\n";
    EXPECT_NE(page.find(row), std::string::npos) << row;
  }
}

}  // namespace
}  // namespace rlx::testing
