#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "spooler/printer.h"
#include "spooler/process.h"
#include "spooler/web/browser/browser.h"

namespace rlx::testing {

/// rlx-printer-app with folders and a port of its own, a printer "office" and the form INVOICE.
class WebTest : public ::testing::Test {
 protected:
  WebTest();

  std::string at(const std::string& path) const { return base_ + path; }
  /// localhost:PORT
  std::string authority() const { return "localhost:" + std::to_string(port_); }
  int port() const { return port_; }
  std::string form_path(const std::string& name) const { return folder_ + "/s/forms/fcbe/" + name; }
  /// Hands a job to the printer.
  void submit(const std::string& text, const std::vector<std::string>& options = {}) const;
  /// Opens a page again and again until it shows a text. @return false when it does not.
  bool shows(Browser& browser, const std::string& path, const std::string& text) const;
  /// Runs a sub-command of the program, as it stands.
  Outcome run(const std::vector<std::string>& words) const;
  /// The server's processes that draw sheets just now.
  int painters() const;

  Printer printer_;

 private:
  void start();
  /// A sub-command with this server.
  Outcome run_here(std::vector<std::string> words) const;

  std::string folder_;
  std::string base_;
  int port_ = 0;
  std::unique_ptr<Process> server_;
};

}  // namespace rlx::testing
