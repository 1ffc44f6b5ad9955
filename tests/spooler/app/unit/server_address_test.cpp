#include "rlx-printer-app/server_address.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace rlx::printer_app {
namespace {

using Words = std::vector<std::string>;

TEST(ServerAddress, WithoutTheOptionNothingChanges) {
  const Words words{"rlx-printer-app", "submit", "-d", "office", "--", "-h"};
  EXPECT_EQ(read_server_address(words).words, words);
  EXPECT_EQ(read_server_address({"rlx-printer-app"}).words, Words{"rlx-printer-app"});
}

TEST(ServerAddress, APrinterIsMeantByItsUri) {
  EXPECT_EQ(read_server_address({"rlx-printer-app", "submit", "-h", "host:99", "-d", "office", "-o",
                                 "form=A", "file"})
                .words,
            (Words{"rlx-printer-app", "submit", "-u", "ipp://host:99/ipp/print/office", "-o",
                   "form=A", "file"}));
}

TEST(ServerAddress, AnAddedPrinterKeepsItsName) {
  EXPECT_EQ(
      read_server_address({"rlx-printer-app", "add", "-d", "office", "-h", "host", "-m", "rlx-240"})
          .words,
      (Words{"rlx-printer-app", "add", "-u", "ipp://host:8631/ipp/system", "-d", "office", "-m",
             "rlx-240"}));
}

TEST(ServerAddress, ColonsWithinBracketsAreNoPort) {
  EXPECT_EQ(read_server_address({"rlx-printer-app", "printers", "-h", "[::1]"}).authority,
            "[::1]:8631");
  EXPECT_EQ(read_server_address({"rlx-printer-app", "printers", "-h", "[::1]:80"}).authority,
            "[::1]:80");
}

TEST(ServerAddress, WhatPapplHasNoUriForIsDoneHere) {
  EXPECT_EQ(read_server_address({"rlx-printer-app", "printers", "-h", "h"}).at_server, "printers");
  EXPECT_EQ(read_server_address({"rlx-printer-app", "shutdown", "-h", "h"}).at_server, "shutdown");
  EXPECT_EQ(read_server_address({"rlx-printer-app", "add", "-h", "h"}).at_server, "");
}

TEST(ServerAddress, ANameWithSpacesIsAPath) {
  EXPECT_EQ(
      read_server_address({"rlx-printer-app", "status", "-h", "h:1", "-d", "a / b?"}).words[3],
      "ipp://h:1/ipp/print/a_b");
}

TEST(ServerAddress, TheServersOwnOptionsAreLeftAlone) {
  const Words words{"rlx-printer-app", "server", "-h", "x"};
  EXPECT_EQ(read_server_address(words).words, words);
}

TEST(ServerAddress, KindsAndDevicesNeedNoServer) {
  EXPECT_EQ(read_server_address({"rlx-printer-app", "drivers", "-h", "h"}).words,
            (Words{"rlx-printer-app", "drivers"}));
}

TEST(ServerAddress, WhatIsMissingIsNamed) {
  EXPECT_THROW(read_server_address({"rlx-printer-app", "status", "-h"}), std::runtime_error);
  EXPECT_THROW(read_server_address({"rlx-printer-app", "status", "-h", "h"}), std::runtime_error);
}

}  // namespace
}  // namespace rlx::printer_app
