#include "rlx-printer-app/journal.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "support/descriptors.h"

namespace rlx::printer_app {
namespace {

namespace fs = std::filesystem;

JournalEntry entry_of(int printer_id, int job_id) {
  JournalEntry entry;
  entry.printer_id = printer_id;
  entry.job_id = job_id;
  entry.name = "a \"name\" with \\ and \n";
  entry.user = "somebody";
  entry.format = "text/plain";
  entry.created = 1700000000;
  return entry;
}

class JournalTest : public ::testing::Test {
 protected:
  /// An entry whose document is there.
  static JournalEntry complete_entry(int printer_id, int job_id) {
    JournalEntry entry = entry_of(printer_id, job_id);
    entry.document = "doc-" + std::to_string(printer_id) + "-" + std::to_string(job_id);
    entry.complete = true;
    std::ofstream(entry.document) << "TEXT";
    return entry;
  }
  static bool has_line(const std::string& text, const std::string& line) {
    return ("\n" + text).find("\n" + line) != std::string::npos;
  }

 private:
  testing::ScratchDirectory scratch_;
};

TEST_F(JournalTest, AJobGoesThroughItsNotes) {
  const Journal journal("a/journal");
  ASSERT_TRUE(journal.note(entry_of(1, 7)));
  ASSERT_EQ(journal.entries().size(), 1U);
  EXPECT_EQ(journal.entries()[0].name, entry_of(1, 7).name);
  EXPECT_FALSE(journal.entries()[0].complete);
  ASSERT_TRUE(journal.note_complete(1, 7, "/spool/x"));
  EXPECT_TRUE(journal.entries()[0].complete);
  EXPECT_EQ(journal.entries()[0].document, "/spool/x");
  ASSERT_TRUE(journal.note_held(1, 7, true));
  EXPECT_TRUE(journal.entries()[0].held);
  ASSERT_TRUE(journal.note_ended(1, 7, 9));
  EXPECT_EQ(journal.entries()[0].ended, 9);
  journal.forget_ended(journal.entries());
  EXPECT_TRUE(journal.entries().empty());
}

/// A job whose server died between the mark and the note.
/// PAPPL hands names on as a client has sent them.
TEST_F(JournalTest, BytesThatAreNoUtf8AreReplaced) {
  const Journal journal("journal");
  JournalEntry entry = entry_of(1, 7);
  entry.name =
      "a\xff\xfe"
      "b";
  entry.user = "\xc3(";
  entry.format = "text/\x80";
  ASSERT_TRUE(journal.note(entry));
  ASSERT_EQ(journal.entries().size(), 1U);
  EXPECT_EQ(journal.entries()[0].name,
            "a\xef\xbf\xbd\xef\xbf\xbd"
            "b");
  EXPECT_EQ(journal.entries()[0].user, "\xef\xbf\xbd(");
  EXPECT_EQ(journal.entries()[0].format, "text/\xef\xbf\xbd");
  ASSERT_TRUE(journal.note_complete(1, 7, "/spool/x"));
  EXPECT_TRUE(journal.entries()[0].complete);
}

TEST_F(JournalTest, AMarkedJobIsComplete) {
  const Journal journal("journal");
  ASSERT_TRUE(journal.note(entry_of(1, 7)));
  ASSERT_TRUE(journal.note(entry_of(1, 8)));
  ASSERT_TRUE(journal.mark_complete(1, 7));
  EXPECT_TRUE(journal.entries()[0].complete);
  EXPECT_FALSE(journal.entries()[1].complete);
  ASSERT_TRUE(journal.note_ended(1, 7, 9));
  journal.forget_ended(journal.entries());
  ASSERT_TRUE(journal.note(entry_of(1, 7)));
  EXPECT_FALSE(journal.entries()[0].complete) << "the mark has stayed";
}

TEST_F(JournalTest, TheNoteOfACompleteJobTakesItsMarkAway) {
  const Journal journal("journal");
  ASSERT_TRUE(journal.note(entry_of(1, 7)));
  ASSERT_TRUE(journal.mark_complete(1, 7));
  ASSERT_TRUE(journal.note_complete(1, 7, "/spool/x"));
  EXPECT_TRUE(journal.entries()[0].complete);
  EXPECT_EQ(std::distance(fs::directory_iterator("journal"), fs::directory_iterator()), 1);
}

TEST_F(JournalTest, WhatIsNotNotedIsNotChanged) {
  const Journal journal("journal");
  EXPECT_TRUE(journal.note_complete(1, 1, "x"));
  EXPECT_TRUE(journal.note_held(1, 1, true));
  EXPECT_TRUE(journal.note_ended(1, 1, 9));
  EXPECT_TRUE(journal.entries().empty());
}

TEST_F(JournalTest, AnEndedJobChangesNoMore) {
  const Journal journal("journal");
  journal.note(entry_of(1, 1));
  journal.note_ended(1, 1, 7);
  journal.note_complete(1, 1, "late");
  journal.note_held(1, 1, true);
  EXPECT_FALSE(journal.entries()[0].complete);
  EXPECT_FALSE(journal.entries()[0].held);
}

TEST_F(JournalTest, EntriesAreInOrderAndRubbishIsLeftOut) {
  const Journal journal("journal");
  journal.note(entry_of(2, 1));
  journal.note(entry_of(1, 100));
  journal.note(entry_of(1, 20));
  std::ofstream("journal/00001-000000003.json") << "{\"printer\":";
  std::ofstream("journal/00001-000000004.json") << "{}";
  std::ofstream("journal/00001-000000005.json.new") << "cut";
  const auto entries = journal.entries();
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_EQ(entries[0].job_id, 20);
  EXPECT_EQ(entries[1].job_id, 100);
  EXPECT_EQ(entries[2].printer_id, 2);
}

TEST_F(JournalTest, AFolderThatIsGoneHasNoEntries) {
  const Journal journal("journal");
  ASSERT_TRUE(journal.note(entry_of(1, 7)));
  fs::rename("journal", "away");
  EXPECT_TRUE(journal.entries().empty());
  EXPECT_FALSE(journal.note(entry_of(1, 8)));
}

TEST_F(JournalTest, OnlyEndedOnesAreForgotten) {
  const Journal journal("journal");
  journal.note(entry_of(1, 1));
  journal.note(entry_of(1, 2));
  const auto before = journal.entries();
  journal.note_ended(1, 1, 9);
  journal.forget_ended(before);
  EXPECT_EQ(journal.entries().size(), 2U) << "ended after the state was written";
  journal.forget_ended(journal.entries());
  EXPECT_EQ(journal.entries().size(), 1U);
}

TEST_F(JournalTest, AFolderThatCannotBeIsAnError) {
  std::ofstream("file") << "x";
  EXPECT_THROW(Journal("file/journal"), std::runtime_error);
}

TEST_F(JournalTest, AFileIsReplacedAsAWhole) {
  ASSERT_TRUE(put_in_place("state", "one"));
  ASSERT_TRUE(put_in_place("state", "two"));
  std::string text;
  std::getline(std::ifstream("state"), text);
  EXPECT_EQ(text, "two");
  EXPECT_FALSE(fs::exists("state.new"));
  EXPECT_FALSE(put_in_place("nowhere/state", "x"));
}

const std::string kState =
    "UUID 1\n"
    "<Printer id=\"1\" name=\"office\" did=\"\" uri=\"socket://h\" driver=\"rlx-240\">\n"
    "Job id=\"1\" name=\"done\" state=\"9\" created=\"1\" completed=\"2\"\n"
    "Job id=\"2\" name=\"open\" state=\"3\" created=\"1\"\n"
    "NextJobId 3\n"
    "</Printer>\n"
    "<Printer id=\"2\" name=\"other\">\n"
    "</Printer>\n";

TEST_F(JournalTest, HistoryStaysAndJobsWithoutANoteAreGone) {
  const std::string text = restorable_state(kState, {});
  EXPECT_TRUE(has_line(text, "Job id=\"1\""));
  EXPECT_FALSE(has_line(text, "Job id=\"2\""));
  EXPECT_TRUE(has_line(text, "NextJobId 3\n</Printer>\n"));
  EXPECT_TRUE(has_line(text, "UUID 1\n"));
  EXPECT_TRUE(has_line(text, "NextJobId 1\n</Printer>\n")) << text;
}

TEST_F(JournalTest, ACompleteJobWaitsToBePrinted) {
  const std::string text = restorable_state(kState, {complete_entry(1, 2), complete_entry(1, 9)});
  EXPECT_TRUE(has_line(text, "Job id=\"2\" name=")) << text;
  EXPECT_TRUE(has_line(text, "Job id=\"9\" name=")) << text;
  EXPECT_NE(text.find("filename=\"doc-1-9\" state=\"3\""), std::string::npos) << text;
  EXPECT_TRUE(has_line(text, "NextJobId 10\n")) << text;
}

TEST_F(JournalTest, ACutOrHeldJobIsHeld) {
  JournalEntry cut = complete_entry(1, 2);
  cut.complete = false;
  JournalEntry held = complete_entry(1, 3);
  held.held = true;
  const std::string text = restorable_state(kState, {cut, held});
  EXPECT_NE(text.find("filename=\"doc-1-2\" state=\"4\""), std::string::npos) << text;
  EXPECT_NE(text.find("filename=\"doc-1-3\" state=\"4\""), std::string::npos) << text;
}

TEST_F(JournalTest, AnEndedJobHasEndedAndIsNotWrittenTwice) {
  JournalEntry ended = complete_entry(1, 2);
  ended.ended = 9;
  JournalEntry known = complete_entry(1, 1);
  const std::string text = restorable_state(kState, {known, ended});
  EXPECT_NE(text.find("state=\"9\" created=\"1700000000\" completed=\"1700000000\""),
            std::string::npos)
      << text;
  EXPECT_EQ(text.find("Job id=\"1\"", text.find("Job id=\"1\"") + 1), std::string::npos) << text;
}

TEST_F(JournalTest, AJobWithoutItsDocumentIsGoneButItsNumberIsNotUsedAgain) {
  JournalEntry entry = complete_entry(1, 12);
  fs::remove(entry.document);
  const std::string text = restorable_state(kState, {entry, entry_of(1, 13)});
  EXPECT_FALSE(has_line(text, "Job id=\"12\"")) << text;
  EXPECT_FALSE(has_line(text, "Job id=\"13\"")) << text;
  EXPECT_TRUE(has_line(text, "NextJobId 14\n")) << text;
}

TEST_F(JournalTest, AttributesOfAJobThatGoesOnStandBesideItsDocument) {
  const Journal journal("journal");
  JournalEntry entry = complete_entry(1, 3);
  entry.document = "p00001j000000003-a.prn";
  JournalEntry ended = complete_entry(1, 4);
  ended.ended = 9;
  std::ofstream(journal.attributes_path(1, 3)) << "attributes";
  std::ofstream(journal.attributes_path(1, 4)) << "attributes";
  restore_attributes(journal, {entry, ended, entry_of(1, 5)});
  std::string text;
  std::getline(std::ifstream("p00001j000000003-a.ipp"), text);
  EXPECT_EQ(text, "attributes");
  EXPECT_FALSE(fs::exists("doc-1-4.ipp"));
  journal.forget_ended({ended});
  EXPECT_FALSE(fs::exists(journal.attributes_path(1, 4)));
  EXPECT_TRUE(fs::exists(journal.attributes_path(1, 3)));
}

TEST_F(JournalTest, QuotesInNamesAreEscaped) {
  JournalEntry entry = complete_entry(1, 5);
  entry.name = R"(a "b" \ c)";
  EXPECT_NE(restorable_state(kState, {entry}).find(R"(name="a \"b\" \\ c")"), std::string::npos);
}

TEST_F(JournalTest, ALineEndInANameMakesNoLine) {
  JournalEntry entry = complete_entry(1, 5);
  entry.name = "a\nNextJobId 999\nb";
  EXPECT_FALSE(has_line(restorable_state(kState, {entry}), "NextJobId 999"));
}

}  // namespace
}  // namespace rlx::printer_app
