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
  EXPECT_EQ(read_server_address({"rlx-printer-app", "status", "-h", "h"}).at_server, "status");
  EXPECT_EQ(read_server_address({"rlx-printer-app", "add", "-h", "h"}).at_server, "");
}

TEST(ServerAddress, DefaultsAreSetHere) {
  const ServerAddress address = read_server_address(
      {"rlx-printer-app", "modify", "-o", "lpi=8", "-h", "h", "-d", "office", "-o", "form=A"});
  EXPECT_EQ(address.at_server, "modify");
  EXPECT_EQ(address.printer, "office");
  EXPECT_EQ(address.options, (Words{"lpi=8", "form=A"}));
}

TEST(ServerAddress, NothingButDefaultsIsModified) {
  EXPECT_THROW(read_server_address({"rlx-printer-app", "modify", "-h", "h", "-d", "a"}),
               std::runtime_error);
  EXPECT_THROW(read_server_address({"rlx-printer-app", "modify", "-h", "h", "-d", "a", "-o",
                                    "lpi=8", "-v", "socket://b"}),
               std::runtime_error);
}

TEST(ServerAddress, TheDefaultPrinterIsShownOrSet) {
  EXPECT_EQ(read_server_address({"rlx-printer-app", "default", "-h", "h"}).words,
            (Words{"rlx-printer-app", "default", "-u", "ipp://h:8631/ipp/system"}));
  EXPECT_EQ(
      read_server_address({"rlx-printer-app", "default", "-h", "h", "-d", "office"}).words,
      (Words{"rlx-printer-app", "default", "-u", "ipp://h:8631/ipp/print/office", "-d", "office"}));
}

TEST(ServerAddress, PrintersThatPapplWouldNotMiss) {
  EXPECT_EQ(read_server_address({"rlx-printer-app", "jobs", "-h", "h", "-d", "a"}).printer, "a");
  EXPECT_EQ(read_server_address({"rlx-printer-app", "status", "-h", "h", "-d", "a"}).printer, "a");
  EXPECT_EQ(read_server_address({"rlx-printer-app", "pause", "-h", "h", "-d", "a"}).printer, "");
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
  EXPECT_THROW(read_server_address({"rlx-printer-app", "jobs", "-h", "h"}), std::runtime_error);
  EXPECT_THROW(read_server_address({"rlx-printer-app", "modify", "-h", "h"}), std::runtime_error);
}

}  // namespace
}  // namespace rlx::printer_app
