#include "rlx-lpd/job_options.h"

#include <gtest/gtest.h>

namespace rlx::testing {
namespace {

using lpd::copies_sent;
using lpd::divide_options;
using lpd::read_options;
using spooler::JobSettings;

/// "name=value" of each option, with "|" between them.
std::string divided(std::string_view text) {
  std::string all;
  for (const spooler::JobOption& option : divide_options(text)) {
    all += (all.empty() ? "" : "|") + option.name + "=" + option.value;
  }
  return all;
}

TEST(LpdOptions, ArePartedByCommasAndBlanks) {
  EXPECT_EQ(divided(""), "");
  EXPECT_EQ(divided("form=INVOICE"), "form=INVOICE");
  EXPECT_EQ(divided("form=INVOICE,lpi=8"), "form=INVOICE|lpi=8");
  EXPECT_EQ(divided(" form=INVOICE  lpi=8 ,, cpi=12,"), "form=INVOICE|lpi=8|cpi=12");
}

TEST(LpdOptions, MayHaveNoValue) {
  EXPECT_EQ(divided("rlx-extended,lpi=8,landscape"), "rlx-extended=|lpi=8|landscape=");
  EXPECT_EQ(divided("form="), "form=");
  EXPECT_EQ(divided("=x"), "=x");
  EXPECT_EQ(divided("form=a=b"), "form=a=b");
}

TEST(LpdOptions, OfMediaMayBeLists) {
  EXPECT_EQ(divided("media=A4,tray-2,lpi=8"), "media=A4,tray-2|lpi=8");
  EXPECT_EQ(divided("media=A4,landscape"), "media=A4|landscape=");
  EXPECT_EQ(divided("media=A4,tray-2,B4"), "media=A4,tray-2,B4");
  EXPECT_EQ(divided("lpi=8,tray-2"), "lpi=8|tray-2=");
}

TEST(LpdOptions, BecomeSettings) {
  JobSettings settings;
  EXPECT_EQ(
      read_options(divide_options("form=INVOICE,media=A3,tray-2,landscape,copies=3"), 1, settings),
      "");
  EXPECT_EQ(settings.form, "INVOICE");
  EXPECT_EQ(settings.paper, spooler::Paper::a3);
  EXPECT_EQ(settings.tray, spooler::Tray::tray_2);
  EXPECT_EQ(settings.orientation, spooler::Orientation::landscape);
  EXPECT_EQ(settings.copies, 3U);
}

TEST(LpdOptions, ThatNobodyKnowsAreFaults) {
  JobSettings settings;
  EXPECT_EQ(read_options({{"lpi", "8"}, {"fomr", "X"}}, 1, settings),
            "there is no option fomr; rlx-lpd(8) lists them");
  EXPECT_EQ(settings.lines_per_inch, 0U);
  EXPECT_EQ(read_options({{"lpi", "5"}}, 1, settings), "option lpi=5: wanted is 3, 4, 6, 8 or 12");
}

TEST(LpdOptions, ForCopiesGoWithOneOfLprngsOnly) {
  JobSettings settings;
  EXPECT_EQ(read_options({{"copies", "2"}}, 3, settings),
            "option copies=2 and lpr -K 3 ask for copies of copies: use one of them");
  settings = {};
  EXPECT_EQ(read_options({{"copies", "2"}}, 1, settings), "");
  settings = {};
  EXPECT_EQ(read_options({{"copies", "1"}}, 3, settings), "");
  EXPECT_EQ(read_options({}, 3, settings), "");
}

/// A ticket as lpd 3.8.B puts it into the environment.
std::string ticket(const std::string& files) {
  return "A=root@localhost+384\ndatafile_count=1\ndatafiles=dfA384localhost \nhf_name=hfA384\n"
         "hfdatafiles=" +
         files + "\nhold_class=0x0\nP=root\n";
}

std::string file(const std::string& name, const std::string& copies = "0x1") {
  return "copies=" + copies + "\2dftransfername=" + name + "\2format=f\2N=h.txt\2size=6\1";
}

TEST(LpdTicket, TellsHowOftenAFileIsSent) {
  EXPECT_EQ(copies_sent(ticket(file("dfA1")), "dfA1"), 1U);
  EXPECT_EQ(copies_sent(ticket(file("dfA1") + file("dfA1") + file("dfA1")), "dfA1"), 3U);
  const std::string two = ticket(file("dfA1") + file("dfB1") + file("dfA1") + file("dfB1"));
  EXPECT_EQ(copies_sent(two, "dfA1"), 2U);
  EXPECT_EQ(copies_sent(two, "dfB1"), 2U);
  EXPECT_EQ(copies_sent(two, "dfC1"), 1U);
  EXPECT_EQ(copies_sent(two, "dfA"), 1U);
}

TEST(LpdTicket, MayCountCopiesInOneEntry) {
  EXPECT_EQ(copies_sent(ticket(file("dfA1", "0x10")), "dfA1"), 16U);
  EXPECT_EQ(copies_sent(ticket(file("dfA1", "0x0")), "dfA1"), 1U);
  EXPECT_EQ(copies_sent(ticket("dftransfername=dfA1\1dftransfername=dfA1"), "dfA1"), 2U);
}

TEST(LpdTicket, ThatIsMissingMeansOneCopy) {
  EXPECT_EQ(copies_sent("", "dfA1"), 1U);
  EXPECT_EQ(copies_sent("A=root@localhost+384\n", "dfA1"), 1U);
  EXPECT_EQ(copies_sent(ticket(""), ""), 1U);
}

}  // namespace
}  // namespace rlx::testing
