#pragma once

#include <memory>
#include <string>

#include "spooler/spooler_test.h"

namespace rlx::testing {

/// A print server of a farm that is an rlx-printer-app, with the printer "office" of its own.
class FarmApplication {
 public:
  FarmApplication();
  ~FarmApplication();
  FarmApplication(const FarmApplication&) = delete;
  FarmApplication& operator=(const FarmApplication&) = delete;

  /// What the front's lanes are made for.
  std::string uri() const;
  /// Where its forms stand.
  std::string forms() const { return directory_ + "/state/forms"; }
  Printer& printer() { return printer_; }
  std::string log() const;

  void start();
  /// Ends it as a crash does.
  void kill();

 private:
  Command command(std::vector<std::string> words) const;

  Printer printer_;
  std::string directory_;
  int port_;
  std::unique_ptr<Process> process_;
};

}  // namespace rlx::testing
