#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "spooler/fuzz/http_exchange.h"
#include "spooler/fuzz/ipp_message.h"
#include "spooler/process.h"

namespace rlx::testing {

/// A server of the program that was built, on a free port of loopback, and what is looked at while
/// requests come. All of it stands in a folder of its own, three levels deep, so that most paths
/// out of the server's folders still end in it.
class FuzzedServer {
 public:
  /// @throws std::runtime_error when it does not start.
  FuzzedServer();
  ~FuzzedServer();
  FuzzedServer(const FuzzedServer&) = delete;
  FuzzedServer& operator=(const FuzzedServer&) = delete;

  int port() const { return port_; }
  /// So many jobs have been submitted to "office".
  std::size_t jobs() const { return jobs_; }
  /// The token of the server's forms.
  std::string token() const;

  /// Lets it work again as at the beginning, whatever was asked of it: printers are there and
  /// print, jobs are cancelled.
  void restore();
  /// Looks at everything, best behind restore(). @return what is wrong, a line each.
  std::vector<std::string> faults();
  /// Ends it. @return what is wrong.
  std::vector<std::string> end();

  /// Descriptors, threads and memory, for people.
  std::string figures() const;
  std::size_t starts() const { return starts_; }
  const std::string& folder() const { return root_; }

  /// Stands in files that no answer may show.
  static constexpr std::string_view kSecret = "secret-5b1e-of-the-fuzzer";

 private:
  void start();
  void ask_system(std::uint16_t operation) const;
  void ask_printer(std::uint16_t operation, const std::string& printer) const;
  void add_printer(const std::string& name, const std::string& device) const;
  bool has_printer(const std::string& name) const;
  std::string fault_of_life();
  std::string fault_of_a_job();
  std::string fault_of_descriptors();
  void find_stray_files(std::vector<std::string>& faults) const;
  void find_reports(std::vector<std::string>& faults) const;
  void clear_away() const;

  std::string root_;
  std::string place_;
  int port_ = 0;
  std::size_t jobs_ = 0;
  std::size_t starts_ = 0;
  std::size_t usual_descriptors_ = 0;
  std::unique_ptr<Process> process_;
};

}  // namespace rlx::testing
