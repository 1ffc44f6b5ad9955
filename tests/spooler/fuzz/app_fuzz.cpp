// Sends a printer application what no client should: IPP requests and requests of browsers, good
// ones and such with something wrong, from several connections at once. After each batch the server
// has to live, answer and print, no file may have appeared outside its folders, its descriptors are
// counted, and a sanitizer may have said nothing.
//
//   app_fuzz [--seconds N] [--seed S] [--first NUMBER] [--found DIRECTORY]
//
// A request depends on the seed and its number alone, but for the token of the server's forms and
// the numbers of its jobs. With --found the requests of a batch with a fault are kept, a file each.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "spooler/fuzz/fuzzed_server.h"
#include "spooler/fuzz/http_exchange.h"
#include "spooler/fuzz/ipp_message.h"
#include "spooler/fuzz/web_message.h"

namespace rlx::testing {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::uint64_t kBatch = 150;
constexpr std::uint64_t kNone = ~std::uint64_t{0};
constexpr int kClients = 4;
constexpr milliseconds kGoodPatience(60000);
constexpr milliseconds kBadPatience(1500);
constexpr milliseconds kShortPatience(100);

struct Arguments {
  std::chrono::seconds seconds{20};
  std::uint64_t seed = 1;
  std::uint64_t first = 0;
  std::string found;
};

Arguments read_arguments(int count, char** words) {
  Arguments arguments;
  for (int i = 1; i + 1 < count; i += 2) {
    const std::string name = words[i];
    const std::string value = words[i + 1];
    if (name == "--seconds") {
      arguments.seconds = std::chrono::seconds(std::stoll(value));
    } else if (name == "--seed") {
      arguments.seed = std::stoull(value);
    } else if (name == "--first") {
      arguments.first = std::stoull(value);
    } else if (name == "--found") {
      arguments.found = value;
    } else {
      throw std::runtime_error("unknown option " + name);
    }
  }
  if (count % 2 == 0) {
    throw std::runtime_error("an option without a value");
  }
  return arguments;
}

/// How a request is sent.
struct Sending {
  std::string bytes;
  bool is_good = false;   ///< an answer must come
  bool is_ended = false;  ///< nothing follows on the connection
};

Sending framed(const WebMessage& message, bool may_chunk, Chance& chance) {
  if (chance.once_in(5)) {
    return {badly_framed(message.method, message.path, message.type, message.body, chance), false,
            chance.once_in(2)};
  }
  if (may_chunk && chance.once_in(3)) {
    return {chunked_request(message.path, message.type, message.body, chance), false, false};
  }
  return {http_request(message.method, message.path, message.type, message.body), false, false};
}

/// PAPPL 1.3.1 never answers a compressed request without a document, such as Validate-Job, and
/// pictures only when the printer is there.
bool is_answered(const std::string& message) {
  return message.find("compression") == std::string::npos &&
         message.find("image/") == std::string::npos;
}

Sending ipp_sending(const IppPlaces& places, Chance& chance) {
  IppMessage message = good_message(places, chance);
  const bool is_good = chance.once_in(4);
  if (!is_good) {
    spoil(message, chance);
  }
  const std::string path = path_of(message, chance);
  std::string bytes = message.bytes();
  if (!is_good && chance.once_in(2)) {
    spoil(bytes, chance);
  }
  if (is_good) {
    return {http_request("POST", path, "application/ipp", bytes), is_answered(bytes), false};
  }
  return framed({"POST", path, "application/ipp", bytes}, true, chance);
}

/// The fuzzer: a server, clients, and what they have found.
class Fuzzer {
 public:
  explicit Fuzzer(Arguments arguments)
      : arguments_(std::move(arguments)), next_(arguments_.first) {}

  /// @return true when nothing was wrong.
  bool run() {
    const auto latest = Clock::now() + arguments_.seconds;
    server_.restore();
    take_faults(server_.faults());
    while (is_good_ && Clock::now() < latest) {
      run_batch();
    }
    const std::string figures = server_.figures();
    take_faults(server_.end());
    std::printf("%llu requests, %llu answers, %zu starts of the server; %s\n",
                static_cast<unsigned long long>(next_ - arguments_.first),
                static_cast<unsigned long long>(answers_.load()), server_.starts(),
                figures.c_str());
    return is_good_;
  }

 private:
  void run_batch() {
    sent_.clear();
    unanswered_ = kNone;
    web_.token = server_.token();
    web_.jobs = server_.jobs();
    const std::uint64_t end = next_ + kBatch;
    std::vector<std::thread> clients;
    clients.reserve(kClients);
    for (int i = 0; i < kClients; ++i) {
      clients.emplace_back([this, end] {
        for (std::uint64_t number = next_++; number < end; number = next_++) {
          send_one(number);
        }
      });
    }
    for (std::thread& client : clients) {
      client.join();
    }
    next_ = end;
    const std::size_t starts = server_.starts();
    server_.restore();
    take_faults(server_.faults());
    if (unanswered_ != kNone && server_.starts() == starts) {
      take_faults({"no answer to the good request " + std::to_string(unanswered_)});
    }
    if (end / kBatch % 10 == 0) {
      std::printf("%llu requests: %s\n", static_cast<unsigned long long>(end),
                  server_.figures().c_str());
      std::fflush(stdout);
    }
  }

  Sending make(Chance& chance) {
    const std::lock_guard lock(changing_);
    if (chance.once_in(3)) {
      return framed(web_message(web_, chance), false, chance);
    }
    return ipp_sending({server_.port(), web_.jobs}, chance);
  }

  /// One connection with one request, or several.
  void send_one(std::uint64_t number) {
    Chance chance(arguments_.seed, number);
    HttpConnection connection(server_.port());
    bool is_first = true;
    for (std::size_t requests = chance.once_in(4) ? 1 + chance.below(5) : 1; requests > 0;
         --requests) {
      Sending sending = make(chance);
      // What stands in front may have made a part of it a part of another request.
      sending.is_good = sending.is_good && is_first;
      is_first = false;
      if (leaves_the_machine(sending.bytes)) {
        continue;
      }
      note(number, sending.bytes);
      if (!connection.is_open() || !connection.send(sending.bytes)) {
        return;
      }
      if (sending.is_ended) {
        connection.end();
      }
      const HttpAnswer answer = connection.receive(patience(sending, chance));
      if (sending.is_good && answer.status == 0) {
        unanswered_ = number;
      }
      take(answer);
      if (sending.is_ended) {
        return;
      }
    }
  }

  static milliseconds patience(const Sending& sending, Chance& chance) {
    if (sending.is_good) {
      return kGoodPatience;
    }
    return chance.once_in(4) ? kShortPatience : kBadPatience;
  }

  void note(std::uint64_t number, const std::string& bytes) {
    const std::lock_guard lock(changing_);
    sent_.emplace_back(number, bytes);
  }

  void take(const HttpAnswer& answer) {
    answers_ += answer.status != 0 ? 1 : 0;
    if (answer.body.find(FuzzedServer::kSecret) != std::string::npos) {
      take_faults({"an answer shows a file:\n" + answer.head});
    }
    const std::string location = answer.field("location");
    const std::size_t at = location.find("/try?of=t");
    if (at != std::string::npos) {
      const std::lock_guard lock(changing_);
      web_.trial = location.substr(at + 8);
    }
  }

  void take_faults(const std::vector<std::string>& faults) {
    if (faults.empty()) {
      return;
    }
    const std::lock_guard lock(changing_);
    is_good_ = false;
    for (const std::string& fault : faults) {
      std::printf("finding: %s\n", fault.c_str());
    }
    std::printf("seed %llu, requests before %llu\n",
                static_cast<unsigned long long>(arguments_.seed),
                static_cast<unsigned long long>(next_.load()));
    std::fflush(stdout);
    keep_sent();
  }

  void keep_sent() const {
    if (arguments_.found.empty()) {
      return;
    }
    std::filesystem::create_directories(arguments_.found);
    std::size_t place = 0;
    for (const auto& [number, bytes] : sent_) {
      std::ofstream(arguments_.found + '/' + std::to_string(++place) + "-" + std::to_string(number),
                    std::ios::binary)
          << bytes;
    }
  }

  Arguments arguments_;
  FuzzedServer server_;
  std::atomic<std::uint64_t> next_;
  std::atomic<std::uint64_t> answers_ = 0;
  std::atomic<bool> is_good_ = true;
  std::atomic<std::uint64_t> unanswered_ = kNone;  ///< a good request of the batch
  std::mutex changing_;                            ///< what follows
  WebPlaces web_;
  std::vector<std::pair<std::uint64_t, std::string>> sent_;
};

}  // namespace
}  // namespace rlx::testing

int main(int count, char** words) {
  try {
    return rlx::testing::Fuzzer(rlx::testing::read_arguments(count, words)).run() ? EXIT_SUCCESS
                                                                                  : EXIT_FAILURE;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "app_fuzz: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
