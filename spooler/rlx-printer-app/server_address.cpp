#include "rlx-printer-app/server_address.h"

#include <cups/cups.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <utility>

#include "mapping/job_settings.h"
#include "rlx-printer-app/printer_options.h"

namespace rlx::printer_app {

namespace {

constexpr const char* kUsualPort = ":8631";
constexpr const char* kSystem = "/ipp/system";
constexpr int kPatienceMilliseconds = 30000;

using Words = std::vector<std::string>;

/// Takes an option's values out of the words, as far as "--".
Words take_all(Words& words, const std::string& option) {
  Words values;
  for (auto at = words.begin(); at != words.end() && *at != "--";) {
    if (*at != option) {
      ++at;
      continue;
    }
    if (std::next(at) == words.end()) {
      throw std::runtime_error(option + ": its value is missing");
    }
    values.push_back(*std::next(at));
    at = words.erase(at, at + 2);
  }
  return values;
}

/// The last one of them. @return false when there is none.
bool take(Words& words, const std::string& option, std::string& value) {
  const Words values = take_all(words, option);
  if (!values.empty()) {
    value = values.back();
  }
  return !values.empty();
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

/// A request to the server, or to its printer of this name.
ipp_t* make_request(const ServerAddress& address, ipp_op_t operation, const std::string& printer) {
  const std::string path = printer.empty() ? kSystem : path_of(printer);
  const std::string uri = "ipp://" + address.authority + path;
  ipp_t* const request = ippNewRequest(operation);
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI,
               printer.empty() ? "system-uri" : "printer-uri", nullptr, uri.c_str());
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr,
               cupsUser());
  return request;
}

/// Sends a request, which is deleted. @return null when there is no answer.
Answer send(const ServerAddress& address, ipp_t* request, const std::string& path) {
  const std::string uri = "ipp://" + address.authority + path;
  std::array<char, 32> scheme{};
  std::array<char, 256> user{};
  std::array<char, 256> host{};
  std::array<char, 1024> resource{};
  int port = 0;
  httpSeparateURI(HTTP_URI_CODING_ALL, uri.c_str(), scheme.data(), scheme.size(), user.data(),
                  user.size(), host.data(), host.size(), &port, resource.data(), resource.size());
  const std::unique_ptr<http_t, decltype(&httpClose)> http(
      httpConnect2(host.data(), port, nullptr, AF_UNSPEC, HTTP_ENCRYPTION_IF_REQUESTED, 1,
                   kPatienceMilliseconds, nullptr),
      httpClose);
  if (http == nullptr) {
    ippDelete(request);
    return {nullptr, ippDelete};
  }
  return {cupsDoRequest(http.get(), request, resource.data()), ippDelete};
}

/// Does an operation on the server, or on a printer. @return null, with a message, when it was not
/// done.
Answer ask(const ServerAddress& address, ipp_t* request, const std::string& printer = {}) {
  Answer answer = send(address, request, printer.empty() ? kSystem : path_of(printer));
  if (answer != nullptr && ippGetStatusCode(answer.get()) < IPP_STATUS_ERROR_BAD_REQUEST) {
    return answer;
  }
  std::fprintf(stderr, "rlx-printer-app: the server at %s: %s\n", address.authority.c_str(),
               cupsLastErrorString());
  return {nullptr, ippDelete};
}

bool is_vendor_attribute(const std::string& name) {
  const auto& all = vendor_attributes();
  return std::any_of(all.begin(), all.end(),
                     [&name](const VendorAttribute& vendor) { return name == vendor.name; });
}

/// Puts a default of a printer into a request.
void add_default(ipp_t* request, const std::string& option) {
  const std::string name = option.substr(0, option.find('='));
  const std::string value = option.substr(std::min(name.size() + 1, option.size()));
  const std::string attribute = name + "-default";
  if (!is_vendor_attribute(name) && name != "media") {
    throw std::runtime_error("the default of " + name +
                             " is set on the web page alone; nothing was changed");
  }
  // The server takes any value.
  spooler::JobSettings settings;
  const auto faults = spooler::read_job_options({{name, value}}, settings);
  if (!faults.empty()) {
    throw std::runtime_error(spooler::text_of(faults.front()) + "; nothing was changed");
  }
  if (name == "media" && pwgMediaForPWG(value.c_str()) == nullptr) {
    throw std::runtime_error("option " + option +
                             ": wanted is a name such as iso_a4_210x297mm; nothing was changed");
  }
  ippAddString(request, IPP_TAG_PRINTER, name == "media" ? IPP_TAG_KEYWORD : IPP_TAG_TEXT,
               attribute.c_str(), nullptr, value.c_str());
}

int modify(const ServerAddress& address) {
  Answer request(make_request(address, IPP_OP_SET_PRINTER_ATTRIBUTES, address.printer), ippDelete);
  for (const std::string& option : address.options) {
    add_default(request.get(), option);
  }
  // The request is libcups's from here on.
  return ask(address, request.release(), address.printer) == nullptr ? 1 : 0;
}

int print_status(const ServerAddress& address) {
  const Answer answer = ask(address, make_request(address, IPP_OP_GET_SYSTEM_ATTRIBUTES, {}));
  if (answer == nullptr) {
    return 1;
  }
  ipp_attribute_t* const state = ippFindAttribute(answer.get(), "system-state", IPP_TAG_ENUM);
  std::printf("Running, %s.\n", ippEnumString("system-state", ippGetInteger(state, 0)));
  return 0;
}

int print_printers(const ServerAddress& address) {
  const Answer answer = ask(address, make_request(address, IPP_OP_GET_PRINTERS, {}));
  if (answer == nullptr) {
    return 1;
  }
  for (ipp_attribute_t* name = ippFindAttribute(answer.get(), "printer-name", IPP_TAG_NAME);
       name != nullptr; name = ippFindNextAttribute(answer.get(), "printer-name", IPP_TAG_NAME)) {
    std::puts(ippGetString(name, 0, nullptr));
  }
  return 0;
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
  std::string path = kSystem;
  std::string printer;
  const bool names_printer = command != "add" && take(words, "-d", printer);
  if (command == "printers" || command == "shutdown" || (command == "status" && !names_printer)) {
    address.at_server = command;
  } else if (command == "modify" && names_printer) {
    address.at_server = command;
    address.printer = printer;
    address.options = take_all(words, "-o");
    if (words.size() > 2 || address.options.empty()) {
      throw std::runtime_error("modify: wanted is -o NAME=VALUE; nothing else can be changed");
    }
  } else if (names_printer) {
    path = path_of(printer);
  } else if (command != "add" && command != "default") {
    throw std::runtime_error("-h needs the printer, too: -d PRINTER");
  }
  if (command == "default" && names_printer) {
    // Without its name PAPPL would show the default printer.
    words.insert(words.begin() + 2, {"-d", printer});
  }
  if (command == "status" || command == "jobs" || command == "options") {
    address.printer = printer;
  }
  words.insert(words.begin() + 2, {"-u", "ipp://" + address.authority + path});
  address.words = std::move(words);
  return address;
}

int run_at_server(const ServerAddress& address) {
  if (address.at_server == "modify") {
    return modify(address);
  }
  if (address.at_server == "status") {
    return print_status(address);
  }
  if (address.at_server == "printers") {
    return print_printers(address);
  }
  return ask(address, make_request(address, IPP_OP_SHUTDOWN_ALL_PRINTERS, {})) == nullptr ? 1 : 0;
}

bool has_printer(const ServerAddress& address) {
  if (address.printer.empty()) {
    return true;
  }
  ipp_t* const request = make_request(address, IPP_OP_GET_PRINTER_ATTRIBUTES, address.printer);
  ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes", nullptr,
               "printer-state");
  return ask(address, request, address.printer) != nullptr;
}

}  // namespace rlx::printer_app
