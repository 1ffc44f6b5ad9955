#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "spooler/cups_server.h"
#include "spooler/installed_tree.h"
#include "spooler/printer.h"
#include "support/descriptors.h"

namespace rlx::testing {

/// What the installed filter makes of a job, run by hand.
std::string filtered(const std::vector<std::string>& options, std::string_view job);

/// A text of numbered pages, "PAGE 1 OF name" and so on.
std::string numbered_pages(const std::string& name, int pages, int lines = 3);

/// Fails the test when a job is not what is expected; tells where they part.
void expect_same_job(const std::string& expected, const PrinterJob& actual);

/// A printer, and a folder of forms with INVOICE and LABEL in it.
class SpoolerTest : public ::testing::Test {
 protected:
  SpoolerTest();
  ~SpoolerTest() override;

  /// The -p of the filter.
  const std::string& forms() const { return forms_; }
  void put_form(const std::string& name, const std::string& text) const;
  void remove_form(const std::string& name) const;

  Printer printer_;

 private:
  std::string forms_;
};

/// A cupsd besides, with the queue "q", whose forms are those of the folder.
class CupsTest : public SpoolerTest {
 protected:
  explicit CupsTest(const CupsSetup& setup = {});

  /// Submits a job, and waits until it is printed. @return what reached the printer.
  PrinterJob print(std::string_view job, const std::vector<std::string>& options = {});

  CupsServer server_;
};

}  // namespace rlx::testing
