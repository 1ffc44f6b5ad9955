#include "rlx-printer-app/server_address.h"

#include <cups/cups.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <utility>

namespace rlx::printer_app {

namespace {

constexpr const char* kUsualPort = ":8631";
constexpr const char* kSystem = "/ipp/system";
constexpr int kPatienceMilliseconds = 30000;

using Words = std::vector<std::string>;

/// Takes an option's last value out of the words, as far as "--". @return false when it is not
/// there.
bool take(Words& words, const std::string& option, std::string& value) {
  bool found = false;
  for (auto at = words.begin(); at != words.end() && *at != "--";) {
    if (*at != option) {
      ++at;
      continue;
    }
    if (std::next(at) == words.end()) {
      throw std::runtime_error(option + ": its value is missing");
    }
    value = *std::next(at);
    at = words.erase(at, at + 2);
    found = true;
  }
  return found;
}

/// A printer's path, as PAPPL makes it of the name.
std::string path_of(const std::string& printer) {
  constexpr std::string_view kReplaced = "\177/\\'\"?#_";
  std::string path = "/ipp/print/";
  for (const char byte : printer) {
    const bool is_replaced =
        static_cast<unsigned char>(byte) <= ' ' || kReplaced.find(byte) != std::string_view::npos;
    if (!is_replaced) {
      path += byte;
    } else if (path.back() != '_') {
      path += '_';
    }
  }
  if (path.back() == '_') {
    path.pop_back();
  }
  return path;
}

using Answer = std::unique_ptr<ipp_t, decltype(&ippDelete)>;

/// Does an operation on a server. @return null, with a message, when it was not done.
Answer ask(const std::string& authority, ipp_op_t operation) {
  const std::string uri = "ipp://" + authority + kSystem;
  std::array<char, 32> scheme{};
  std::array<char, 256> user{};
  std::array<char, 256> host{};
  std::array<char, 256> path{};
  int port = 0;
  httpSeparateURI(HTTP_URI_CODING_ALL, uri.c_str(), scheme.data(), scheme.size(), user.data(),
                  user.size(), host.data(), host.size(), &port, path.data(), path.size());
  const std::unique_ptr<http_t, decltype(&httpClose)> http(
      httpConnect2(host.data(), port, nullptr, AF_UNSPEC, HTTP_ENCRYPTION_IF_REQUESTED, 1,
                   kPatienceMilliseconds, nullptr),
      httpClose);
  Answer answer(nullptr, ippDelete);
  if (http != nullptr) {
    ipp_t* const request = ippNewRequest(operation);
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "system-uri", nullptr, uri.c_str());
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr,
                 cupsUser());
    answer.reset(cupsDoRequest(http.get(), request, kSystem));
  }
  if (answer != nullptr && ippGetStatusCode(answer.get()) < IPP_STATUS_ERROR_BAD_REQUEST) {
    return answer;
  }
  std::fprintf(stderr, "rlx-printer-app: the server at %s: %s\n", authority.c_str(),
               cupsLastErrorString());
  return {nullptr, ippDelete};
}

}  // namespace

ServerAddress read_server_address(Words words) {
  ServerAddress address;
  const bool has_command = words.size() > 1 && words[1] != "server";
  if (!has_command || !take(words, "-h", address.authority)) {
    address.words = std::move(words);
    return address;
  }
  // A port stands behind the host; within brackets stands an address of IPv6.
  if (address.authority.find(':', address.authority.rfind(']') + 1) == std::string::npos) {
    address.authority += kUsualPort;
  }
  const std::string command = words[1];
  if (command == "devices" || command == "drivers") {
    address.words = std::move(words);  // they ask no server
    return address;
  }
  std::string printer;
  std::string path = kSystem;
  if (command == "printers" || command == "shutdown") {
    address.at_server = command;
  } else if (command != "add") {
    if (!take(words, "-d", printer)) {
      throw std::runtime_error("-h needs the printer, too: -d PRINTER");
    }
    path = path_of(printer);
  }
  words.insert(words.begin() + 2, {"-u", "ipp://" + address.authority + path});
  address.words = std::move(words);
  return address;
}

int run_at_server(const ServerAddress& address) {
  const bool shuts_down = address.at_server == "shutdown";
  const Answer answer =
      ask(address.authority, shuts_down ? IPP_OP_SHUTDOWN_ALL_PRINTERS : IPP_OP_GET_PRINTERS);
  if (answer == nullptr) {
    return 1;
  }
  for (ipp_attribute_t* name = ippFindAttribute(answer.get(), "printer-name", IPP_TAG_NAME);
       !shuts_down && name != nullptr;
       name = ippFindNextAttribute(answer.get(), "printer-name", IPP_TAG_NAME)) {
    std::puts(ippGetString(name, 0, nullptr));
  }
  return 0;
}

}  // namespace rlx::printer_app
