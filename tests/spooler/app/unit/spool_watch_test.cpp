#include "rlx-printer-app/spool_watch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>

#include "support/descriptors.h"

namespace rlx::printer_app {
namespace {

TEST(SpoolWatch, ReadsTheJobOfADocumentsName) {
  int printer = 0;
  int job = 0;
  ASSERT_TRUE(read_document_name("p00012j000000345-a_job.txt", printer, job));
  EXPECT_EQ(printer, 12);
  EXPECT_EQ(job, 345);
  EXPECT_FALSE(read_document_name("p00012j000000345-a_job.ipp", printer, job));
  EXPECT_FALSE(read_document_name("p00012-a_job.txt", printer, job));
  EXPECT_FALSE(read_document_name("", printer, job));
}

TEST(SpoolWatch, TellsTheJournalOfADocumentThatIsWritten) {
  const testing::ScratchDirectory scratch;
  Journal journal("journal");
  JournalEntry entry;
  entry.printer_id = 1;
  entry.job_id = 2;
  ASSERT_TRUE(journal.note(entry));
  ASSERT_TRUE(std::filesystem::create_directory("spool"));
  const SpoolWatch watch("spool", journal);
  std::ofstream("spool/p00001j000000002-x.txt") << "TEXT";
  bool complete = false;
  for (int i = 0; i < 500 && !complete; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    // The mark is there first; the note has the document's path.
    complete = journal.entries().at(0).complete && !journal.entries().at(0).document.empty();
  }
  EXPECT_TRUE(complete);
  EXPECT_EQ(journal.entries().at(0).document, "spool/p00001j000000002-x.txt");
}

TEST(SpoolWatch, FindsDocumentsThatAreNotNoted) {
  const testing::ScratchDirectory scratch;
  std::filesystem::create_directory("spool");
  std::ofstream("spool/p00001j000000002-x.prn") << "TEXT";
  std::ofstream("spool/p00001j000000002-x.ipp") << "attributes";
  std::ofstream("spool/other") << "x";
  std::vector<JournalEntry> entries(2);
  entries[0].printer_id = entries[1].printer_id = 1;
  entries[0].job_id = 2;
  entries[1].job_id = 3;
  find_documents("spool", entries);
  EXPECT_EQ(entries[0].document, "spool/p00001j000000002-x.prn");
  EXPECT_FALSE(entries[0].complete);
  EXPECT_EQ(entries[1].document, "");
}

TEST(SpoolWatch, AFolderThatIsNotThereIsAnError) {
  const testing::ScratchDirectory scratch;
  Journal journal("journal");
  EXPECT_THROW(SpoolWatch("nowhere", journal), std::system_error);
}

}  // namespace
}  // namespace rlx::printer_app
