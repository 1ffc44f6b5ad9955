// The program: files, messages, statuses.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "proofs/proof_files.h"
#include "proofs/proof_job.h"

namespace rlx::proof {
namespace {

namespace fs = std::filesystem;

TEST(Program, HelpAndVersion) {
  const ProofFolder folder;
  EXPECT_EQ(folder.run("--help").status, 0);
  EXPECT_TRUE(folder.run("--help").output.starts_with("usage: rlxproof"));
  EXPECT_EQ(folder.run("--version").status, 0);
  EXPECT_TRUE(folder.run("--version").output.starts_with("rlxproof "));
  EXPECT_EQ(folder.run("--wrong").status, 2);
}

TEST(Program, WritesBesideTheJob) {
  const ProofFolder folder;
  folder.write("job.rlx", one_page("TEXT\f"));
  EXPECT_EQ(folder.run("job.rlx").status, 0);
  EXPECT_TRUE(folder.pages("job.pdf").at(0).has("TEXT"));
}

TEST(Program, StandardInputGoesToStandardOutput) {
  const ProofFolder folder;
  folder.write("job", "TEXT\n");
  const Ending ending = folder.run("<job");
  EXPECT_EQ(ending.status, 0);
  folder.write("out.pdf", ending.output);
  EXPECT_TRUE(folder.pages("out.pdf").at(0).has("TEXT"));
  folder.write("piped.pdf", folder.run("-o - - <<END\nTEXT\nEND\n").output);
  EXPECT_TRUE(folder.pages("piped.pdf").at(0).has("TEXT"));
}

TEST(Program, PicturesOfSheetsAreNamedByPageAndSheet) {
  const ProofFolder folder;
  folder.write("job", one_page("A\f\nB\f"));
  EXPECT_EQ(folder.run("--png pictures/new job").status, 0);
  EXPECT_TRUE(fs::exists(folder.path() / "pictures/new/page-001-1.png"));
  EXPECT_TRUE(fs::exists(folder.path() / "pictures/new/page-001-2.png"));
  EXPECT_FALSE(fs::exists(folder.path() / "job.pdf"));
  EXPECT_TRUE(folder.read("pictures/new/page-001-1.png").starts_with("\x89PNG"));
}

TEST(Program, PagesAreChosen) {
  const ProofFolder folder;
  folder.write("job", "P1\fP2\fP3\fP4\f");
  EXPECT_EQ(folder.run("--pages 2-3 job").status, 0);
  const auto pages = folder.pages("job.pdf");
  ASSERT_EQ(pages.size(), 2U);
  EXPECT_TRUE(pages[0].has("P2"));
  EXPECT_TRUE(pages[1].has("P3"));
  const Ending none = folder.run("--pages 9 job");
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.messages, "rlxproof: job: The job has 4 pages, none of those asked for.\n");
  EXPECT_EQ(folder.pages("job.pdf").size(), 1U);
}

TEST(Program, AnEmptyJobIsGood) {
  const ProofFolder folder;
  folder.write("job", "");
  EXPECT_EQ(folder.run("job").status, 0);
  EXPECT_TRUE(folder.pages("job.pdf").at(0).has("prints"));
}

TEST(Program, FaultsAreToldWithTheirOffsetAndTheRestIsDrawn) {
  const ProofFolder folder;
  std::string job = one_page("TEXT\f");
  const std::size_t count = job.find("\x1bQ2;");
  job[count + 13] = '9';
  folder.write("job", job);
  const Ending ending = folder.run("job");
  EXPECT_EQ(ending.status, 1);
  EXPECT_TRUE(ending.messages.starts_with("rlxproof: job:" + std::to_string(count) + ": "))
      << ending.messages;
  EXPECT_TRUE(folder.pages("job.pdf").at(0).has("TEXT"));
}

TEST(Program, TheFiltersFailureIsTold) {
  const ProofFolder folder;
  folder.write("job", "TEXT\n");
  const Ending ending = folder.run("--filter-options '-n MISSING -p forms' job");
  EXPECT_EQ(ending.status, 1);
  EXPECT_NE(ending.messages.find("FCB data error"), std::string::npos) << ending.messages;
  EXPECT_TRUE(ending.messages.ends_with("rlxproof: job: the filter ended with status 1\n"))
      << ending.messages;
  EXPECT_TRUE(folder.pages("job.pdf").at(0).has("convert"));
  EXPECT_FALSE(folder.pages("job.pdf").at(0).has("prints"));
}

TEST(Program, OptionsForTheFilterAreNotUsedForRlx) {
  const ProofFolder folder;
  folder.write("job", one_page("TEXT\f"));
  const Ending ending = folder.run("--filter-options '-l 8' job");
  EXPECT_EQ(ending.status, 0);
  EXPECT_NE(ending.messages.find("not used"), std::string::npos);
}

TEST(Program, FilesThatCannotBeUsed) {
  const ProofFolder folder;
  EXPECT_EQ(folder.run("missing").status, 1);
  folder.write("job", one_page("TEXT\f"));
  EXPECT_EQ(folder.run("-o no/such/folder.pdf job").status, 1);
  EXPECT_EQ(folder.run("-o job job").status, 1);
  EXPECT_EQ(folder.read("job"), one_page("TEXT\f"));
  EXPECT_EQ(folder.run("-o /dev/full job").status, 1);
  const Ending no_folder = folder.run("--png job job");
  EXPECT_EQ(no_folder.status, 1);
  EXPECT_EQ(no_folder.messages, "rlxproof: job: Not a directory\n");
}

TEST(Program, FramedAndPassedThroughJobs) {
  const ProofFolder folder;
  folder.write("framed",
               testing::bytes("0005CNT_PRN_DAT\0TEXT\f") + testing::bytes("0000END_PRN_DAT\0"));
  EXPECT_EQ(folder.run("framed").status, 0);
  EXPECT_TRUE(folder.pages("framed.pdf").at(0).has("TEXT"));
}

TEST(Program, FramesOfALinePrinterJobAreConverted) {
  const ProofFolder folder;
  folder.write("framed", testing::bytes("0005END_PRN_DAT\0TEXT\f"));
  const Ending missing = folder.run("--filter-options '-d -n MISSING -p forms' framed");
  EXPECT_EQ(missing.status, 1);
  EXPECT_NE(missing.messages.find("FCB data error"), std::string::npos) << missing.messages;
  const Ending good = folder.run("--filter-options -d framed");
  EXPECT_EQ(good.status, 0);
  EXPECT_EQ(good.messages, "");
  EXPECT_TRUE(folder.pages("framed.pdf").at(0).has("TEXT"));
}

/// A job's own pages, and what may stand between them and the job that is passed through behind
/// them.
struct PassedThrough {
  const char* between;
  int status;
};

// With a sequence of its own in front nothing is wrong. The header of a job can be that sequence,
// too, and then the second job starts in one that has no end.
constexpr PassedThrough kPassedThrough[] = {{"\x1bQ520/`", 0}, {"", 1}};

TEST(Program, JobsThatArePassedThroughAreJudgedAsByTheDump) {
  for (const PassedThrough& row : kPassedThrough) {
    const ProofFolder folder;
    folder.write("job.rlx", testing::kFirstHeader + testing::block('2', "FIRST\f") + row.between +
                                one_page("SECOND\f"));
    const Ending check = folder.check("job.rlx");
    const Ending proof = folder.run("job.rlx");
    EXPECT_EQ(check.status, row.status);
    EXPECT_EQ(proof.status, row.status);
    const std::string fault = check.output.empty() ? "" : "rlxproof: job.rlx:" + check.output;
    EXPECT_EQ(proof.messages, fault);
    EXPECT_EQ(check.output.find("job started twice") != std::string::npos, row.status == 1);
  }
}

TEST(Program, JobsThatArePassedThroughBehindPagesAreDrawn) {
  for (const PassedThrough& row : kPassedThrough) {
    const ProofFolder folder;
    folder.write("mixed", std::string("FIRST\fLOST") + row.between + one_page("SECOND\f"));
    const Ending proof = folder.run("mixed");
    EXPECT_EQ(proof.status, row.status);
    // The place is one in what the filter wrote, not in the file.
    EXPECT_EQ(proof.messages.starts_with("rlxproof: mixed, converted:"), row.status == 1)
        << proof.messages;
    const auto pages = folder.pages("mixed.pdf");
    ASSERT_EQ(pages.size(), 2U);
    EXPECT_TRUE(pages[0].has("FIRST"));
    EXPECT_TRUE(pages[1].has("SECOND"));
  }
}

}  // namespace
}  // namespace rlx::proof
