#include <gtest/gtest.h>

#include <string>

#include "spooler/app/app_server.h"

// What the sub-commands do at a server that "-h" names.
namespace rlx::testing {
namespace {

class AppCommand : public AppTest {};

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(AppCommand, AModifiedDefaultIsThatOfJobs) {
  EXPECT_EQ(server_.run({"modify", "-d", "office", "-o", "lines-per-page=2"}).status, 0);
  EXPECT_EQ(print("A\nB\nC\n").bytes, filtered({"-L", "2"}, "A\nB\nC\n"));
  EXPECT_EQ(server_.run({"modify", "-d", "office", "-o", "lines-per-page=0"}).status, 0);
  EXPECT_EQ(print("A\nB\nC\n").bytes, filtered({}, "A\nB\nC\n"));
}

TEST_F(AppCommand, PaperIsADefaultToo) {
  EXPECT_EQ(server_.run({"modify", "-d", "office", "-o", "media=iso_a3_297x420mm"}).status, 0);
  EXPECT_NE(print("A\n").bytes, filtered({}, "A\n")) << "A4 paper needs no words";
  for (const char* const option : {"media=poster", "media=A4"}) {
    EXPECT_EQ(server_.run({"modify", "-d", "office", "-o", option}).status, 1) << option;
  }
}

TEST_F(AppCommand, WhatCannotBeADefaultIsRefused) {
  const Outcome bad = server_.run({"modify", "-d", "office", "-o", "lpi=13"});
  EXPECT_EQ(bad.status, 1);
  EXPECT_TRUE(has(bad.messages, "lpi=13")) << bad.messages;
  const Outcome other = server_.run({"modify", "-d", "office", "-o", "sides=one-sided"});
  EXPECT_EQ(other.status, 1);
  EXPECT_TRUE(has(other.messages, "sides is set on the web page")) << other.messages;
}

TEST_F(AppCommand, TheStateOfServerAndPrinter) {
  EXPECT_EQ(server_.run({"status"}).output, "Running, idle.\n");
  const Outcome printer = server_.run({"status", "-d", "office"});
  EXPECT_EQ(printer.status, 0);
  EXPECT_TRUE(has(printer.output, "idle")) << printer.output;
}

TEST_F(AppCommand, APrinterThatIsMissingIsMissed) {
  for (const char* const command : {"status", "jobs", "options", "pause"}) {
    const Outcome outcome = server_.run({command, "-d", "nobody"});
    EXPECT_EQ(outcome.status, 1) << command;
    EXPECT_TRUE(has(outcome.messages, "not found")) << command << ": " << outcome.messages;
  }
}

TEST_F(AppCommand, TheDefaultPrinter) {
  server_.add_printer("hall", "rlx-240", printer_.uri());
  EXPECT_EQ(server_.run({"default"}).output, "office\n");
  EXPECT_EQ(server_.run({"default", "-d", "hall"}).status, 0);
  EXPECT_EQ(server_.run({"default"}).output, "hall\n");
  EXPECT_EQ(server_.run({"delete", "-d", "office"}).status, 0);
  EXPECT_EQ(server_.run({"printers"}).output, "hall\n");
  // A number is not given twice, also over a start.
  server_.add_printer("third", "rlx-240", printer_.uri());
  server_.stop();
  server_.start();
  server_.add_printer("fourth", "rlx-240", printer_.uri());
  EXPECT_EQ(server_.run({"delete", "-d", "third"}).status, 0);
  EXPECT_EQ(server_.run({"printers"}).output, "fourth\nhall\n");
}

}  // namespace
}  // namespace rlx::testing
