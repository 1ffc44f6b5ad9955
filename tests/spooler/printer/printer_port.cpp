#include "spooler/printer/printer_port.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace rlx::testing {

namespace {

/// Small, so that a host notices soon that a printer takes nothing.
constexpr int kReceiveBufferBytes = 2048;
constexpr std::size_t kMostBytesAtOnce = 65536;
constexpr int kWaitingConnections = 64;

void require(bool holds, const char* what) {
  if (!holds) {
    throw std::system_error(errno, std::generic_category(), what);
  }
}

template <typename Value>
void set_option(int descriptor, int option, const Value& value) {
  require(setsockopt(descriptor, SOL_SOCKET, option, &value, sizeof(value)) == 0, "setsockopt");
}

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

}  // namespace

PrinterPort::PrinterPort(Finished finished, Stalled stalled)
    : finished_(std::move(finished)), stalled_(std::move(stalled)) {
  listen();
}

PrinterPort::~PrinterPort() {
  if (peer_ >= 0) {
    close(peer_);
  }
  if (listener_ >= 0) {
    close(listener_);
  }
}

void PrinterPort::listen() {
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  require(listener_ >= 0, "socket");
  set_option(listener_, SO_REUSEADDR, 1);
  set_option(listener_, SO_RCVBUF, kReceiveBufferBytes);
  sockaddr_in address = loopback(port_);
  socklen_t length = sizeof(address);
  require(bind(listener_, reinterpret_cast<sockaddr*>(&address), length) == 0, "bind");
  require(::listen(listener_, kWaitingConnections) == 0, "listen");
  require(getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) == 0, "port");
  port_ = ntohs(address.sin_port);
}

void PrinterPort::behave(const Manner& manner) {
  manner_ = manner;
  stall_is_told_ = false;
  slow_since_ = Clock::now();
  bytes_before_slow_ = connection_.bytes.size();
}

void PrinterPort::go_away() {
  if (listener_ >= 0) {
    close(listener_);
    listener_ = -1;
  }
  if (peer_ >= 0) {
    finish("closed by the printer", true);
  }
}

void PrinterPort::come_back() {
  if (listener_ < 0) {
    listen();
  }
}

/// Bytes that may be taken now.
std::uint64_t PrinterPort::allowance() const {
  const std::uint64_t got = connection_.bytes.size();
  std::uint64_t most = std::min(manner_.stall_at, manner_.close_at);
  if (manner_.bytes_a_second != Manner::kNever) {
    const auto elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - slow_since_);
    const auto milliseconds = static_cast<std::uint64_t>(elapsed.count());
    most = std::min(most, bytes_before_slow_ + milliseconds * manner_.bytes_a_second / 1000);
  }
  return std::min<std::uint64_t>(most > got ? most - got : 0, kMostBytesAtOnce);
}

PrinterPort::Wait PrinterPort::next() const {
  if (peer_ < 0) {
    return {listener_, {}};
  }
  if (allowance() > 0) {
    return {peer_, {}};
  }
  if (is_stalled()) {
    return {};
  }
  return {-1, std::chrono::milliseconds(std::max<std::uint64_t>(1000 / manner_.bytes_a_second, 1))};
}

void PrinterPort::accept() {
  peer_ = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
  connection_ = {};
  stall_is_told_ = false;
  slow_since_ = Clock::now();
  bytes_before_slow_ = 0;
}

void PrinterPort::take_bytes() {
  std::array<char, kMostBytesAtOnce> buffer;
  const ssize_t count = read(peer_, buffer.data(), allowance());
  if (count > 0) {
    connection_.bytes.append(buffer.data(), static_cast<std::size_t>(count));
  } else if (count == 0) {
    finish("end of data", false);
  } else if (errno != EAGAIN && errno != EINTR) {
    finish("reset by the host", false);
  }
}

void PrinterPort::serve() {
  if (peer_ < 0) {
    if (listener_ >= 0) {
      accept();
    }
    return;
  }
  if (allowance() > 0) {
    take_bytes();
  }
  if (peer_ >= 0 && connection_.bytes.size() >= manner_.close_at) {
    if (!manner_.closes_each) {
      manner_.close_at = Manner::kNever;
    }
    finish("closed by the printer", true);
  }
  if (peer_ >= 0 && is_stalled() && !stall_is_told_) {
    stall_is_told_ = true;
    stalled_(connection_.bytes.size());
  }
}

void PrinterPort::finish(const char* end, bool reset) {
  if (reset) {
    set_option(peer_, SO_LINGER, linger{1, 0});
  }
  close(peer_);
  peer_ = -1;
  connection_.end = end;
  finished_(connection_);
  connection_ = {};
}

}  // namespace rlx::testing
