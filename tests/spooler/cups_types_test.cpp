// What cupsd takes a job for, and what it takes at all.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "spooler/spooler_test.h"
#include "support/escaped_bytes.h"

namespace rlx::testing {
namespace {

namespace fs = std::filesystem;

constexpr const char* kText = "text/plain";
constexpr const char* kLines = "application/vnd.rlx-lines";
constexpr const char* kRlx = "application/vnd.rlx";
constexpr const char* kUnknown = "application/octet-stream";

/// The bytes of a golden job's file.
std::string case_bytes(const fs::path& folder, const char* name) {
  const fs::path path = folder / name;
  return fs::exists(path) ? decode_escaped(read_file(path)).value() : "";
}

std::map<std::string, std::string> golden_jobs(const char* file) {
  std::map<std::string, std::string> jobs;
  for (const fs::directory_entry& entry : fs::directory_iterator(RLX_CASES_DIRECTORY)) {
    std::string bytes = case_bytes(entry.path(), file);
    if (!bytes.empty()) {
      jobs[entry.path().filename()] = std::move(bytes);
    }
  }
  return jobs;
}

/// What cupsd's rule for text/plain takes: BS to CR, SUB, ESC, and all but the other control
/// characters. Seen with cupsd 2.4.2, whose manual page lists fewer.
bool is_printable(std::string_view job) {
  return std::all_of(job.begin(), job.begin() + std::min<std::ptrdiff_t>(1024, std::ssize(job)),
                     [](char byte) {
                       return (byte >= 8 && byte <= 13) || byte == 26 || byte == 27 ||
                              (static_cast<unsigned char>(byte) >= 32 && byte != 127);
                     });
}

/// True for a byte that text has not, in a job without NUL: control characters but BS to CR.
bool has_control_characters(std::string_view job) {
  return job.find('\0') == std::string_view::npos &&
         std::any_of(job.begin(), job.end(), [](char byte) {
           return (byte >= 0 && byte < 8) || (byte >= 14 && byte < 32) || byte == 127;
         });
}

/// ESC Q and a digit, or a reset.
bool has_sequences(std::string_view job) {
  for (std::size_t at = job.find("\033Q"); at != std::string_view::npos;
       at = job.find("\033Q", at + 1)) {
    if (at + 2 < job.size() && job[at + 2] >= '0' && job[at + 2] <= '9') {
      return true;
    }
  }
  return job.find("\033c\033\177") != std::string_view::npos;
}

/// A header of the transfer protocol.
bool is_framed(std::string_view job) {
  return job.size() > 15 && (job.substr(4, 12) == std::string_view("CNT_PRN_DAT\0", 12) ||
                             job.substr(4, 12) == std::string_view("END_PRN_DAT\0", 12));
}

/// The rule by which a golden job is what it is, told in another way than rlx.types does.
std::string expected_type(const std::string& job) {
  if (job.starts_with("\033Q0;") && job.substr(14, 9) == "/`%%%=Pji") {
    return kRlx;
  }
  const std::string front = job.substr(0, 4095);  // of 4096 the last one is not found
  if (!is_framed(job) && (has_sequences(front) || has_control_characters(front))) {
    return kLines;
  }
  return is_printable(job) ? kText : kUnknown;
}

class CupsTypes : public CupsTest {
 protected:
  /// Submits jobs that do not print. @return what each is taken for, by name.
  std::map<std::string, std::string> types_of(const std::map<std::string, std::string>& jobs) {
    for (const auto& [name, job] : jobs) {
      const Outcome outcome = server_.run({"lp", "-d", "q", "-H", "hold", "-t", name}, job);
      EXPECT_EQ(outcome.status, 0) << name << ": " << outcome.messages;
    }
    std::map<std::string, std::string> types;
    for (const auto& [id, job] : server_.jobs("q")) {
      types[job.name] = job.format;
    }
    return types;
  }

  /// Submits a job that is refused. @return lp's words.
  std::string refusal(std::string_view job, std::vector<std::string> options = {}) {
    std::vector<std::string> words{"lp", "-d", "q"};
    words.insert(words.end(), options.begin(), options.end());
    const Outcome outcome = server_.run(words, job);
    EXPECT_EQ(outcome.status, 1) << outcome.output;
    return outcome.messages;
  }
};

TEST_F(CupsTypes, EveryGoldenJob) {
  const auto jobs = golden_jobs("stdin.esc");
  std::map<std::string, int> seen;
  for (const auto& [name, type] : types_of(jobs)) {
    EXPECT_EQ(type, expected_type(jobs.at(name))) << name;
    ++seen[type];
  }
  EXPECT_GT(seen[kText], 50);
  EXPECT_GT(seen[kLines], 50);
  // These are the framed jobs.
  EXPECT_GT(seen[kUnknown], 20);
}

TEST_F(CupsTypes, EveryGoldenJobThatTheFilterWrote) {
  auto jobs = golden_jobs("stdout.esc");
  std::erase_if(jobs, [](const auto& job) { return is_framed(job.second); });
  int seen = 0;
  for (const auto& [name, type] : types_of(jobs)) {
    EXPECT_EQ(type, expected_type(jobs.at(name))) << name;
    seen += type == kRlx ? 1 : 0;
  }
  EXPECT_GT(seen, 100);
}

class LongCupsTypes : public CupsTypes {};

TEST_F(LongCupsTypes, EveryByte) {
  std::map<std::string, std::string> jobs;
  for (int byte = 0; byte < 256; ++byte) {
    jobs["byte " + std::to_string(byte)] = "AB" + std::string(1, static_cast<char>(byte)) + "CD\n";
  }
  for (const auto& [name, type] : types_of(jobs)) {
    EXPECT_EQ(type, expected_type(jobs.at(name))) << name;
  }
}

TEST_F(CupsTypes, TextInAnEncodingThatHasEscapes) {
  EXPECT_EQ(types_of({{"text", "\033$BF|K\\8l\033(B\n"}}).at("text"), kText);
}

/// A file that looks like one of its kind as far as it is looked at.
struct Document {
  const char* front;
  const char* type;
};
constexpr std::array<Document, 4> kDocuments{{
    {"%PDF-1.7\n%\342\343\317\323\n", "application/pdf"},
    {"%!PS-Adobe-3.0\n", "application/postscript"},
    {"\211PNG\r\n\032\n", "image/png"},
    {"\377\330\377\340", "image/jpeg"},
}};

/// A document with sequences of a line printer inside, as compressed data may have.
std::string document(const Document& kind) {
  return kind.front + std::string("\0\033Q1;2!A\1\2\3\033\034\n", 14);
}

TEST_F(CupsTypes, DocumentsOfOtherKindsAreRefused) {
  for (const Document& kind : kDocuments) {
    EXPECT_EQ(refusal(document(kind)),
              std::string("lp: Unsupported document-format \"") + kind.type + "\".\n");
  }
  EXPECT_EQ(refusal("%PDF", {"-o", "document-format=application/gzip"}),
            "lp: Unsupported document-format \"application/gzip\".\n");
  for (const auto& [id, job] : server_.jobs("q")) {
    EXPECT_EQ(job.state, "canceled") << job.name;
  }
}

/// cupsd looks through gzip: what is inside counts. But it hands the job on as it is.
TEST_F(CupsTypes, CompressedJobs) {
  const auto compressed = [](const std::string& bytes) {
    return run_command({{"gzip", "-c"}}, bytes).output;
  };
  EXPECT_EQ(refusal(compressed(document(kDocuments[0]))),
            "lp: Unsupported document-format \"application/pdf\".\n");
  const CupsJob job = server_.wait_for("q", server_.submit("q", compressed("A\f")));
  EXPECT_EQ(job.state, "processing-stopped");
  EXPECT_NE(job.message.find("compressed with gzip"), std::string::npos) << job.message;
  EXPECT_TRUE(printer_.jobs().empty());
}

TEST_F(CupsTypes, WhatIsNotRecognisedDoesNotReachThePrinter) {
  const std::string unknown("\0\0garbage\0\377", 11);
  for (const std::string& job : {unknown, "0003CNT_PRN_DAT" + std::string("\0ABC", 4) +
                                              "0002END_PRN_DAT" + std::string("\0\n\f", 3)}) {
    const CupsJob settled = server_.wait_for("q", server_.submit("q", job));
    EXPECT_EQ(settled.state, "processing-stopped");
    EXPECT_EQ(settled.format, kUnknown);
    EXPECT_NE(settled.message.find("document-format=application/vnd.rlx-lines"), std::string::npos)
        << settled.message;
  }
  // Who knows better says so.
  const std::string job("A\0B\n\f", 5);
  expect_same_job(filtered({}, job), print(job, {"document-format=application/vnd.rlx-lines"}));
  EXPECT_EQ(printer_.jobs().size(), 1U);
}

TEST_F(CupsTypes, PpdPassesTheTest) {
  const std::string root = make_directory("root");
  fs::create_directories(root + "/usr/lib/cups");
  fs::create_symlink(installed_tree() + "/lib/cups/filter", root + "/usr/lib/cups/filter");
  for (const std::string& ppd :
       {installed_tree() + "/share/rlx/rlx.ppd", server_.directory() + "/settings/ppd/q.ppd"}) {
    std::vector<std::string> words{"cupstestppd", "-W", "none", "-R", root};
    if (!is_root()) {
      words.insert(words.end(), {"-I", "filters"});  // they have to be root's
    }
    words.push_back(ppd);
    const Outcome outcome = server_.run(words);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    EXPECT_EQ(outcome.output, ppd + ": PASS\n");
  }
}

TEST_F(CupsTypes, PpdSpeaksJapanese) {
  const std::string ppd = read_file(server_.directory() + "/settings/ppd/q.ppd");
  for (const char* const line :
       {"*ja.Translation form/\345\270\263\347\245\250\343\203\225\343\202\251\343\203\274\343\203"
        "\240: \"\"\n",
        "*ja.lpi 8/8 \350\241\214/\343\202\244\343\203\263\343\203\201: \"\"\n",
        "*ja.form INVOICE/INVOICE: \"\"\n", "*cupsLanguages: \"en ja\"\n"}) {
    EXPECT_NE(ppd.find(line), std::string::npos) << line;
  }
}

TEST_F(CupsTypes, WhatAJobBecomesIsSeenWithCupsfilter) {
  const std::string text = numbered_pages("seen", 2);
  write_file(server_.directory() + "/temporary/job.txt", text);
  const Outcome outcome =
      server_.run({"cupsfilter", "-c", server_.directory() + "/settings/cups-files.conf", "-p",
                   server_.directory() + "/settings/ppd/q.ppd", "-o", "form=LABEL", "-m",
                   "application/vnd.rlx", server_.directory() + "/temporary/job.txt"});
  EXPECT_EQ(outcome.status, 0) << outcome.messages;
  EXPECT_EQ(describe_difference(filtered({"-n", "LABEL", "-p", forms()}, text), outcome.output),
            "");
}

}  // namespace
}  // namespace rlx::testing
