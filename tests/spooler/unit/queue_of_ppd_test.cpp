#include "texttorlx/queue_of_ppd.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "spooler/unit/small_ppd.h"
#include "support/descriptors.h"

namespace rlx::texttorlx {
namespace {

using namespace rlx::testing;
using Words = std::vector<std::string>;

Queue read_lines(const std::string& lines) {
  const ScratchDirectory scratch;
  write_file("queue.ppd", small_ppd(lines));
  return read_ppd("queue.ppd");
}

Words shown(const std::vector<spooler::JobOption>& options) {
  Words all;
  for (const spooler::JobOption& option : options) {
    all.push_back(option.name + '=' + option.value);
  }
  return all;
}

TEST(QueueOfPpd, WithoutAPpdHasNoSettings) {
  const Queue queue = read_ppd("");
  EXPECT_EQ(queue.settings.emulation_mode, 1U);
  EXPECT_EQ(queue.settings.resolution, 0U);
  EXPECT_EQ(queue.settings.capabilities, "");
  EXPECT_EQ(queue.settings.filter_flags, "");
  EXPECT_TRUE(queue.settings.form_directories.empty());
  EXPECT_TRUE(queue.defaults.empty());
  EXPECT_TRUE(queue.faults.empty());
}

TEST(QueueOfPpd, HasItsAttributes) {
  const Queue queue = read_lines(
      "*rlxEmulationMode: \"7\"\n"
      "*rlxResolution: \"400\"\n"
      "*rlxCapabilities: \"D240!D400!f1\"\n"
      "*rlxFilterFlags: \"Af\"\n"
      "*rlxFormDirectories: \"/srv/forms:/usr/share/forms two::/c\"\n");
  EXPECT_EQ(queue.settings.emulation_mode, 7U);
  EXPECT_EQ(queue.settings.resolution, 400U);
  EXPECT_EQ(queue.settings.capabilities, "D240!D400!f1");
  EXPECT_EQ(queue.settings.filter_flags, "Af");
  EXPECT_EQ(queue.settings.form_directories, Words({"/srv/forms", "/usr/share/forms two", "/c"}));
  EXPECT_TRUE(queue.faults.empty());
}

TEST(QueueOfPpd, WithEmptyAttributesHasNoSettings) {
  const Queue queue = read_lines(
      "*rlxEmulationMode: \"\"\n*rlxResolution: \"\"\n*rlxCapabilities: \"\"\n"
      "*rlxFilterFlags: \"\"\n*rlxFormDirectories: \"\"\n");
  EXPECT_EQ(queue.settings.emulation_mode, 1U);
  EXPECT_EQ(queue.settings.resolution, 0U);
  EXPECT_TRUE(queue.settings.form_directories.empty());
  EXPECT_TRUE(queue.faults.empty());
}

TEST(QueueOfPpd, TellsWhatIsNoNumber) {
  const Queue queue = read_lines("*rlxEmulationMode: \"-E\"\n*rlxResolution: \"400dpi\"\n");
  ASSERT_EQ(queue.faults.size(), 2U);
  EXPECT_EQ(text_of(queue.faults[0]), "option rlxEmulationMode=-E: wanted is a whole number");
  EXPECT_EQ(text_of(queue.faults[1]), "option rlxResolution=400dpi: wanted is a whole number");
}

TEST(QueueOfPpd, HasTheDefaultsOfItsOptions) {
  EXPECT_EQ(shown(read_lines(ppd_option("form", "INVOICE", {"None", "INVOICE"}) +
                             ppd_option("lpi", "8", {"Default", "6", "8"}) +
                             ppd_option("rlx-charset", "EUC-JP", {"UTF-8", "EUC-JP"}) +
                             ppd_option("Duplex", "DuplexTumble", {"None", "DuplexTumble"}) +
                             ppd_option("number-up", "2", {"1", "2"}))
                      .defaults),
            Words({"form=INVOICE", "lpi=8", "rlx-charset=EUC-JP", "Duplex=DuplexTumble"}));
}

TEST(QueueOfPpd, LeavesOutDefaultsThatThePrinterHasByItself) {
  EXPECT_EQ(shown(read_lines(ppd_option("PageSize", "A4", {"A4", "A3"}) +
                             ppd_option("InputSlot", "Default", {"Default", "Tray1"}))
                      .defaults),
            Words());
  EXPECT_EQ(shown(read_lines(ppd_option("PageSize", "A3", {"A4", "A3"}) +
                             ppd_option("InputSlot", "Tray1", {"Default", "Tray1"}))
                      .defaults),
            Words({"PageSize=A3", "InputSlot=Tray1"}));
}

std::string fault_of(const std::string& path) {
  try {
    read_ppd(path);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "read";
}

TEST(QueueOfPpd, ThatCannotBeReadSaysWhere) {
  const ScratchDirectory scratch;
  EXPECT_EQ(fault_of("/nowhere/queue.ppd"),
            "the queue's PPD file /nowhere/queue.ppd: Unable to open PPD file");
  write_file("no.ppd", "this is no PPD file\n");
  // The words behind the line are CUPS's.
  const std::string place = "the queue's PPD file no.ppd, line 1: ";
  EXPECT_EQ(fault_of("no.ppd").substr(0, place.size()), place);
  write_file("empty.ppd", "");
  EXPECT_NE(fault_of("empty.ppd"), "read");
}

}  // namespace
}  // namespace rlx::texttorlx
