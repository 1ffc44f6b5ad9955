// A page printer for tests: it takes what is sent to a port of 127.0.0.1, a job a connection,
// checks it with the RLX reader and keeps it.
//
//   test_printer DIRECTORY
//
// It tells on standard output, a JSON object a line,
//   {"port":40123}                         first of all
//   {"job":1,"file":"job-0001",...}        a connection has ended; its bytes are in DIRECTORY/file
//   {"stalled":100}                        it stopped taking bytes after so many
//   {"done":"stall 100"}                   a command is in force
// and takes commands on standard input, a line each:
//   stall N   takes N bytes of a connection, and no more
//   close N   resets a connection, once, after N bytes of it
//   cut N     resets each connection after N bytes of it
//   rate N    takes N bytes a second
//   go        takes all again
//   away      nobody listens
//   back      listens again
// It ends at the end of its standard input, so it never outlives the test.

#include <poll.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

#include "spooler/printer/printer_port.h"
#include "spooler/printer/received_job.h"

namespace rlx::testing {
namespace {

void tell(const nlohmann::json& line) {
  std::cout << line.dump() << std::endl;
}

/// Keeps jobs in a folder.
class JobFolder {
 public:
  explicit JobFolder(std::string directory) : directory_(std::move(directory)) {}

  void keep(const Connection& connection) {
    ++jobs_;
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "job-%04u", jobs_);
    std::ofstream(directory_ + "/" + name.data(), std::ios::binary) << connection.bytes;
    const ReceivedJob job = read_received_job(connection.bytes);
    tell({{"job", jobs_},
          {"file", name.data()},
          {"end", connection.end},
          {"bytes", job.bytes},
          {"pages", job.pages},
          {"impressions", job.impressions},
          {"ended", job.ended},
          {"faults", job.faults}});
  }

 private:
  std::string directory_;
  unsigned jobs_ = 0;
};

/// The number behind a command's word; Manner::kNever when there is none.
std::uint64_t number_of(const std::string& command, std::size_t word) {
  std::uint64_t number = Manner::kNever;
  if (command.size() > word + 1) {
    std::from_chars(command.data() + word + 1, command.data() + command.size(), number);
  }
  return number;
}

/// @return false when there is no such command.
bool obey(const std::string& command, PrinterPort& port) {
  const std::string word = command.substr(0, command.find(' '));
  const std::uint64_t number = number_of(command, word.size());
  Manner manner;
  if (word == "stall") {
    manner.stall_at = number;
  } else if (word == "close" || word == "cut") {
    manner.close_at = number;
    manner.closes_each = word == "cut";
  } else if (word == "rate") {
    manner.bytes_a_second = number;
  } else if (word == "away") {
    port.go_away();
  } else if (word == "back") {
    port.come_back();
  } else if (word != "go") {
    return false;
  }
  port.behave(manner);
  return true;
}

/// Reads commands as they come.
class Commands {
 public:
  /// @return false when no more can come.
  bool read_and_obey(PrinterPort& port) {
    std::array<char, 256> buffer{};
    const ssize_t count = read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count <= 0) {
      return false;
    }
    waiting_.append(buffer.data(), static_cast<std::size_t>(count));
    for (std::size_t end = 0; (end = waiting_.find('\n')) != std::string::npos;) {
      const std::string command = waiting_.substr(0, end);
      waiting_.erase(0, end + 1);
      tell({{obey(command, port) ? "done" : "unknown", command}});
    }
    return true;
  }

 private:
  std::string waiting_;
};

void run(const std::string& directory) {
  JobFolder folder(directory);
  PrinterPort port([&folder](const Connection& connection) { folder.keep(connection); },
                   [](std::uint64_t bytes) {
                     tell({{"stalled", bytes}});
                   });
  tell({{"port", port.port()}});
  Commands commands;
  while (true) {
    const PrinterPort::Wait next = port.next();
    std::array<pollfd, 2> waiting{pollfd{STDIN_FILENO, POLLIN, 0},
                                  pollfd{next.descriptor, POLLIN, 0}};
    poll(waiting.data(), waiting.size(), next.most ? static_cast<int>(next.most->count()) : -1);
    if (waiting[0].revents != 0 && !commands.read_and_obey(port)) {
      return;
    }
    if (waiting[1].revents != 0 || next.most) {
      port.serve();
    }
  }
}

}  // namespace
}  // namespace rlx::testing

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: test_printer DIRECTORY\n";
    return 2;
  }
  try {
    rlx::testing::run(argv[1]);
  } catch (const std::exception& error) {
    std::cerr << "test_printer: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
