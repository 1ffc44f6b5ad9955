#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include "rlx-printer-app/job_record.h"
#include "rlx-printer-app/web/form_store.h"
#include "rlx-printer-app/web/paging.h"
#include "rlx-printer-app/web/program_run.h"
#include "rlx-printer-app/web/proof_name.h"
#include "rlx-printer-app/web/proof_store.h"
#include "rlx-printer-app/web/texts.h"

namespace rlx::printer_app {
namespace {

namespace fs = std::filesystem;

/// A folder of a test's own.
class WebFolder {
 public:
  WebFolder() : path_((fs::temp_directory_path() / "rlx-web-XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) {
      throw std::runtime_error("no folder " + path_);
    }
  }
  ~WebFolder() { fs::remove_all(path_); }
  WebFolder(const WebFolder&) = delete;
  WebFolder& operator=(const WebFolder&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

TEST(Paging, CoversTheList) {
  for (std::size_t entries = 0; entries < 40; ++entries) {
    std::size_t next = 0;
    const std::size_t portions = portion_of(entries, 7, 1).portions;
    for (std::size_t number = 1; number <= portions; ++number) {
      const Portion portion = portion_of(entries, 7, number);
      EXPECT_EQ(portion.first, next);
      EXPECT_LE(portion.end - portion.first, 7U);
      next = portion.end;
    }
    EXPECT_EQ(next, entries);
    EXPECT_EQ(portion_of(entries, 7, 0).number, 1U);
    EXPECT_EQ(portion_of(entries, 7, 999).number, portions);
  }
}

TEST(Paging, LinksTheNeighboursAndTheEnds) {
  EXPECT_EQ(portion_links(portion_of(5, 7, 1), "/x?a&b="), "");
  const std::string links = portion_links(portion_of(1000, 10, 50), "/x?a&part=");
  for (const char* part : {"part=1\"", "part=48\"", "part=52\"", "part=100\"", "<b>50</b>"}) {
    EXPECT_NE(links.find(part), std::string::npos) << part;
  }
  EXPECT_EQ(links.find("part=47\""), std::string::npos);
  EXPECT_EQ(links.find("a&part"), std::string::npos) << "not escaped";
}

TEST(ProofNames, AreJobsOrTrials) {
  ProofName name;
  ASSERT_TRUE(name.read("2-15"));
  EXPECT_EQ(name.printer_id, 2U);
  EXPECT_EQ(name.job_id, 15U);
  const std::string trial = new_trial_name();
  ASSERT_TRUE(name.read(trial));
  EXPECT_EQ(name.trial, trial);
  EXPECT_NE(trial, new_trial_name());
  for (const char* bad :
       {"", "2", "0-1", "1-0", "1-", "-1", "1-2-3", "1-2/..", "../1-2", "t", "t12", "99999999999-1",
        "t../../../../../../etc/passwd-12345", "tABCDEF0123456789ABCDEF0123456789"}) {
    EXPECT_FALSE(name.read(bad)) << bad;
  }
}

TEST(ProofNames, OfPictures) {
  Sheet sheet;
  ASSERT_TRUE(read_picture_name("page-003-2.png", sheet));
  EXPECT_EQ(sheet.page, 3U);
  EXPECT_EQ(sheet.sheet, 2U);
  EXPECT_TRUE(read_picture_name("page-1234-1.png", sheet));
  for (const char* bad : {"page-003-2.png.new", "page-3.png", "job.rlx", "page-a-1.png"}) {
    EXPECT_FALSE(read_picture_name(bad, sheet)) << bad;
  }
}

TEST(FormStore, LetsNoPathOutOfItsFolder) {
  const WebFolder folder;
  fs::create_directory(folder.path() + "/forms");
  std::ofstream(folder.path() + "/OUTSIDE") << "secret";
  std::ofstream(folder.path() + "/forms/GOOD") << "print 1 79200\nlpi 1200 66\n";
  fs::create_directory(folder.path() + "/forms/FOLDER");
  const FormStore store(folder.path() + "/forms", RLX_FCBCHECK);
  EXPECT_TRUE(store.read("GOOD"));
  for (const std::string& name :
       {std::string("../OUTSIDE"), std::string(""), std::string("."), std::string(".."),
        std::string("GOOD/../../OUTSIDE"), std::string("/etc/passwd"), std::string("GOOD\0", 5),
        std::string(256, 'A'), std::string("FOLDER")}) {
    EXPECT_FALSE(store.read(name)) << name;
    EXPECT_FALSE(store.draw(name).is_good) << name;
    EXPECT_NE(store.remove(name), "") << name;
    if (name != "FOLDER") {
      EXPECT_NE(store.write(name, "x"), "") << name;
    }
  }
  EXPECT_TRUE(fs::exists(folder.path() + "/OUTSIDE"));
  EXPECT_EQ(store.names(), std::vector<std::string>{"GOOD"});
}

TEST(FormStore, KeepsAndDrawsForms) {
  const WebFolder folder;
  const FormStore store(folder.path(), RLX_FCBCHECK);
  EXPECT_EQ(store.write("SLIP", "print 4 79200\nlpi 1200 66\n"), "");
  EXPECT_EQ(store.write("SLIP", "print 1 79200\nlpi 1200 66\n"), "");
  EXPECT_EQ(store.read("SLIP"), "print 1 79200\nlpi 1200 66\n");
  const FormCheck drawn = store.draw("SLIP");
  EXPECT_TRUE(drawn.is_good);
  EXPECT_NE(drawn.svg.find("<svg"), std::string::npos);
  EXPECT_NE(drawn.svg.find("SLIP"), std::string::npos);
  EXPECT_NE(store.write("LONG", std::string(FormStore::kMostBytes + 1, '#')), "");
  EXPECT_EQ(store.write("LONG", std::string(FormStore::kMostBytes, '#')), "");
  EXPECT_EQ(store.read("LONG")->size(), FormStore::kMostBytes);
  EXPECT_EQ(store.remove("SLIP"), "");
  EXPECT_EQ(store.names(), std::vector<std::string>{"LONG"});
}

TEST(FormStore, TwoWhoStoreTheSameFormDoNotMixTheirs) {
  const WebFolder folder;
  const FormStore store(folder.path(), RLX_FCBCHECK);
  const auto store_often = [&store](char letter) {
    for (int times = 0; times < 100; ++times) {
      EXPECT_EQ(store.write("SAME", std::string(FormStore::kMostBytes, letter)), "");
      const std::string text = store.read("SAME").value_or("");
      EXPECT_EQ(text.size(), FormStore::kMostBytes);
      EXPECT_EQ(text.find_first_not_of(text.front()), std::string::npos);
    }
  };
  std::thread other(store_often, 'A');
  store_often('B');
  other.join();
}

TEST(FormStore, TellsTheLineOfAFault) {
  const FormStore store("/nonexistent", RLX_FCBCHECK);
  const FormCheck check = store.check("print 3 79200\nlpi 1000 60\n");
  EXPECT_FALSE(check.is_good);
  EXPECT_EQ(check.line, 2U);
  EXPECT_EQ(check.words, "lpi: pitch 1000 is none of 2400, 1800, 1200, 900 and 600");
  EXPECT_FALSE(FormStore("/nonexistent", "").check("print 1 79200\n").is_good);
}

TEST(ProgramRun, HandsThroughWhatItIsGiven) {
  const std::string input(300000, 'x');
  const ProgramResult result = run_program("/bin/sh", {"-c", "cat; echo no >&2; exit 3"}, input);
  EXPECT_EQ(result.output, input);
  EXPECT_EQ(result.messages, "no\n");
  EXPECT_EQ(result.end.status, 3);
  EXPECT_FALSE(result.timed_out || result.cut);
}

TEST(ProgramRun, EndsWhatTakesTooLong) {
  ProgramLimits limits;
  limits.time = std::chrono::milliseconds(200);
  const auto begin = std::chrono::steady_clock::now();
  // What it has started goes with it: the pipe would stay open.
  const ProgramResult result = run_program("/bin/sh", {"-c", "sleep 60 & sleep 60"}, {}, limits);
  EXPECT_TRUE(result.timed_out);
  EXPECT_EQ(result.end.signal, SIGKILL);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

TEST(ProgramRun, EndsWhatSaysTooMuch) {
  ProgramLimits limits;
  limits.output_bytes = 1000;
  const ProgramResult result = run_program("/bin/sh", {"-c", "yes"}, {}, limits);
  EXPECT_TRUE(result.cut);
  EXPECT_EQ(result.output.size(), 1000U);
  EXPECT_EQ(result.end.signal, SIGKILL);
}

spooler::PrintJob text_job(const spooler::Descriptor& input) {
  spooler::PrintJob job;
  job.filter = RLX_FILTER;
  job.input = input.number();
  return job;
}

/// A descriptor that gives a text.
spooler::Descriptor given(const std::string& folder, const std::string& text) {
  const std::string path = folder + "/job";
  std::ofstream(path) << text;
  return spooler::Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

TEST(ProofStore, DrawsTheSheetsOfAJob) {
  const WebFolder folder;
  ProofStore store(folder.path() + "/proofs", RLX_RLXPROOF, RLX_RLXDUMP);
  const auto input = given(folder.path(), "ONE\n\fTWO\n\fTHREE\n");
  const Proof made = store.make("1-1", text_job(input), "beside");
  EXPECT_EQ(made.pages, 3U);
  EXPECT_EQ(made.words, "");
  EXPECT_FALSE(made.is_cut);
  const auto found = store.find("1-1");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->text, "beside");
  EXPECT_EQ(found->pages, 3U);
  EXPECT_EQ(found->commands.size(), 1U);
  std::string words;
  const auto sheets = store.draw(*found, 2, 3, words);
  ASSERT_EQ(sheets.size(), 2U) << words;
  EXPECT_EQ(sheets.front().page, 2U);
  const auto picture = ProofStore::picture(*found, sheets.front());
  ASSERT_TRUE(picture);
  EXPECT_TRUE(picture->starts_with("\x89PNG"));
  EXPECT_FALSE(ProofStore::picture(*found, {1, 1}));
  bool is_cut = true;
  EXPECT_NE(store.dump(*found, is_cut).find("THREE"), std::string::npos);
  EXPECT_FALSE(is_cut);
  EXPECT_FALSE(store.find("1-2"));
}

TEST(ProofStore, CutsALongJob) {
  const WebFolder folder;
  ProofStore store(folder.path() + "/proofs", RLX_RLXPROOF, RLX_RLXDUMP);
  std::string text;
  while (text.size() < 2 * ProofStore::kMostBytes) {
    text += std::string(120, 'x') + "\n";
  }
  const auto input = given(folder.path(), text);
  const Proof made = store.make("1-1", text_job(input), {});
  EXPECT_TRUE(made.is_cut);
  EXPECT_EQ(fs::file_size(made.folder + "/job.rlx"), ProofStore::kMostBytes);
}

TEST(ProofStore, KeepsTheLastOnly) {
  const WebFolder folder;
  ProofStore store(folder.path() + "/proofs", RLX_RLXPROOF, RLX_RLXDUMP);
  for (std::size_t i = 0; i < ProofStore::kMostProofs + 3; ++i) {
    const auto input = given(folder.path(), "A\n");
    store.make("1-" + std::to_string(i), text_job(input), {});
    usleep(5000);
  }
  EXPECT_FALSE(store.find("1-0"));
  EXPECT_TRUE(store.find("1-" + std::to_string(ProofStore::kMostProofs + 2)));
  const auto begin = fs::directory_iterator(folder.path() + "/proofs");
  EXPECT_EQ(static_cast<std::size_t>(std::distance(begin, fs::directory_iterator())),
            ProofStore::kMostProofs);
}

TEST(JobRecords, ComeBackAsTheyWere) {
  const WebFolder folder;
  const JobRecords records(folder.path());
  JobRecord record;
  record.kind = "rlx-400";
  record.resolution = 400;
  record.format = "text/plain";
  record.settings.form = "INVOICE";
  record.settings.lines_per_inch = 8;
  record.settings.sides = spooler::Sides::two_short_edge;
  record.settings.tray = spooler::Tray::tray_4;
  record.settings.copies = 12;
  record.settings.charset = "euc-jp";
  record.commands = {"filter -a", "filter -b"};
  record.words = "no \xFF text";
  record.pages = 7;
  ASSERT_TRUE(records.keep(3, 1500, record));
  JobRecord found;
  ASSERT_TRUE(records.find(3, 1500, found));
  EXPECT_EQ(found.settings.form, "INVOICE");
  EXPECT_EQ(found.settings.lines_per_inch, 8U);
  EXPECT_EQ(found.settings.sides, spooler::Sides::two_short_edge);
  EXPECT_EQ(found.settings.tray, spooler::Tray::tray_4);
  EXPECT_EQ(found.settings.copies, 12U);
  EXPECT_EQ(found.settings.charset, "euc-jp");
  EXPECT_EQ(found.commands, record.commands);
  EXPECT_EQ(found.pages, 7U);
  EXPECT_FALSE(records.find(3, 1501, found));
  ASSERT_TRUE(records.keep(3, 1500 + JobRecords::kKept, record));
  EXPECT_FALSE(records.find(3, 1500, found)) << "the old one goes";
}

TEST(JobRecords, RefuseWhatIsNone) {
  JobRecord record;
  EXPECT_FALSE(from_text("", record));
  EXPECT_FALSE(from_text("{}", record));
  EXPECT_FALSE(from_text("[1]", record));
}

TEST(Texts, AreEachThereOnce) {
  std::set<std::string> seen;
  for (const Translation& text : translations()) {
    EXPECT_TRUE(seen.insert(text.english).second) << text.english;
    EXPECT_STRNE(text.japanese, "");
    // The same places are filled in both.
    for (const char* place : {"{0}", "{1}"}) {
      EXPECT_EQ(std::string(text.english).find(place) == std::string::npos,
                std::string(text.japanese).find(place) == std::string::npos)
          << text.english;
    }
  }
}

}  // namespace
}  // namespace rlx::printer_app
