#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>

namespace rlx::testing {

/// How a printer takes what is sent to it.
struct Manner {
  static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t stall_at = kNever;  ///< takes so many bytes of a connection and then no more
  std::uint64_t close_at = kNever;  ///< closes a connection after so many bytes of it
  bool closes_each = false;         ///< each connection; otherwise one
  std::uint64_t bytes_a_second = kNever;
};

/// A connection that has ended.
struct Connection {
  std::string bytes;
  std::string end;  ///< "end of data", "reset by the host", "closed by the printer"
};

/// The port of a page printer (AppSocket): whoever connects sends a job and closes. One connection
/// is served at a time; others wait.
class PrinterPort {
 public:
  /// Is told of each connection that has ended.
  using Finished = std::function<void(const Connection&)>;
  /// Is told when a connection stalls, with the bytes so far.
  using Stalled = std::function<void(std::uint64_t)>;

  /// Listens on a free port of 127.0.0.1.
  /// @throws std::system_error when that cannot be.
  PrinterPort(Finished finished, Stalled stalled);
  ~PrinterPort();
  PrinterPort(const PrinterPort&) = delete;
  PrinterPort& operator=(const PrinterPort&) = delete;

  int port() const { return port_; }

  /// How connections are taken from now on, the present one too.
  void behave(const Manner& manner);

  /// Nobody listens any more; the present connection is reset.
  void go_away();
  /// Listens again, on the same port.
  void come_back();

  /// What has to come before there is something to do.
  struct Wait {
    int descriptor = -1;                              ///< becomes readable; -1 for none
    std::optional<std::chrono::milliseconds> most{};  ///< or so much time is over
  };
  Wait next() const;

  /// Does what can be done now. Descriptors do not block.
  void serve();

 private:
  using Clock = std::chrono::steady_clock;

  void listen();
  void accept();
  void take_bytes();
  void finish(const char* end, bool reset);
  std::uint64_t allowance() const;
  bool is_stalled() const { return connection_.bytes.size() >= manner_.stall_at; }

  Finished finished_;
  Stalled stalled_;
  Manner manner_;
  int port_ = 0;
  int listener_ = -1;
  int peer_ = -1;
  Connection connection_;
  bool stall_is_told_ = false;
  Clock::time_point slow_since_;         ///< when the speed was set, or the connection began
  std::uint64_t bytes_before_slow_ = 0;  ///< that were there then
};

}  // namespace rlx::testing
