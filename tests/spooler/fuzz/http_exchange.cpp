#include "spooler/fuzz/http_exchange.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace rlx::testing {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::size_t kMostAnswer = std::size_t{16} << 20U;
constexpr const char* kEndOfHead = "\r\n\r\n";

int connect_to(int port) {
  const int number = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  if (number >= 0 && connect(number, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
    close(number);
    return -1;
  }
  // A server that reads no more must not keep a client for ever.
  const timeval patience{.tv_sec = 5, .tv_usec = 0};
  setsockopt(number, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof(patience));
  return number;
}

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
  return text;
}

std::string hexadecimal(std::size_t number) {
  std::array<char, 32> digits{};
  std::snprintf(digits.data(), digits.size(), "%zx", number);
  return digits.data();
}

std::string head_of(const std::string& method, const std::string& path, const std::string& type) {
  std::string head = method + ' ' + path + " HTTP/1.1\r\nHost: localhost\r\n";
  return type.empty() ? head : head + "Content-Type: " + type + "\r\n";
}

std::string in_chunks(const std::string& body, std::size_t longest, Chance& chance) {
  std::string all;
  for (std::size_t at = 0; at < body.size();) {
    const std::string chunk = body.substr(at, 1 + chance.below(longest));
    all += hexadecimal(chunk.size()) + "\r\n" + chunk + "\r\n";
    at += chunk.size();
  }
  return all + "0\r\n\r\n";
}

/// The end of a body in chunks; npos when it has not come.
std::size_t end_of_chunks(const std::string& bytes, std::size_t at) {
  while (true) {
    const std::size_t line = bytes.find("\r\n", at);
    if (line == std::string::npos) {
      return line;
    }
    const std::size_t size = std::strtoul(bytes.c_str() + at, nullptr, 16);
    at = line + 2 + std::min(size, kMostAnswer) + 2;
    if (at > bytes.size()) {
      return std::string::npos;
    }
    if (size == 0) {
      return at;
    }
  }
}

/// How long the answer is at the front; npos when that is not known yet, or it ends with the
/// connection.
std::size_t length_of(const HttpAnswer& answer, const std::string& bytes) {
  const std::size_t body = answer.head.size();
  const std::string length = answer.field("content-length");
  if (answer.status == 304 || answer.status == 204) {
    return body;
  }
  if (!length.empty()) {
    const std::size_t end = body + std::strtoul(length.c_str(), nullptr, 10);
    return end <= bytes.size() ? end : std::string::npos;
  }
  return answer.field("transfer-encoding").empty() ? std::string::npos : end_of_chunks(bytes, body);
}

HttpAnswer read_head(const std::string& bytes) {
  HttpAnswer answer;
  const std::size_t end = bytes.find(kEndOfHead);
  if (end != std::string::npos) {
    answer.head = bytes.substr(0, end + 4);
    answer.status = std::atoi(bytes.substr(std::min(bytes.find(' '), end), 4).c_str());
  }
  return answer;
}

}  // namespace

std::string HttpAnswer::field(const std::string& name) const {
  const std::string all = lower(head);
  const std::size_t at = all.find("\r\n" + name + ": ");
  if (at == std::string::npos) {
    return {};
  }
  const std::size_t value = at + name.size() + 4;
  return head.substr(value, head.find("\r\n", value) - value);
}

HttpConnection::HttpConnection(int port) : socket_(connect_to(port)) {}

HttpConnection::~HttpConnection() {
  if (socket_ >= 0) {
    close(socket_);
  }
}

bool HttpConnection::send(const std::string& bytes) const {
  for (std::size_t at = 0; at < bytes.size();) {
    const ssize_t count = ::send(socket_, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
    if (count <= 0) {
      return false;
    }
    at += static_cast<std::size_t>(count);
  }
  return true;
}

void HttpConnection::end() const {
  shutdown(socket_, SHUT_WR);
}

bool HttpConnection::receive_some(Clock::time_point latest) {
  const auto left = std::chrono::duration_cast<milliseconds>(latest - Clock::now()).count();
  pollfd ready{socket_, POLLIN, 0};
  if (left <= 0 || waiting_.size() > kMostAnswer || poll(&ready, 1, static_cast<int>(left)) <= 0) {
    return false;
  }
  std::array<char, 65536> portion{};
  const ssize_t count = recv(socket_, portion.data(), portion.size(), 0);
  if (count > 0) {
    waiting_.append(portion.data(), static_cast<std::size_t>(count));
  }
  return count > 0;
}

HttpAnswer HttpConnection::receive(milliseconds patience) {
  const auto latest = Clock::now() + patience;
  HttpAnswer answer;
  std::size_t end = std::string::npos;
  do {
    answer = read_head(waiting_);
    if (answer.status == 100) {
      waiting_.erase(0, answer.head.size());
      answer = read_head(waiting_);
    }
    if (answer.status != 0) {
      end = length_of(answer, waiting_);
    }
  } while (end == std::string::npos && receive_some(latest));
  answer.body = waiting_.substr(std::min(answer.head.size(), waiting_.size()),
                                end == std::string::npos ? end : end - answer.head.size());
  waiting_.erase(0, end);
  return answer;
}

std::string http_request(const std::string& method, const std::string& path,
                         const std::string& type, const std::string& body) {
  const std::string length =
      method == "POST" ? "Content-Length: " + std::to_string(body.size()) + "\r\n" : "";
  return head_of(method, path, type) + length + "\r\n" + body;
}

std::string chunked_request(const std::string& path, const std::string& type,
                            const std::string& body, Chance& chance) {
  return head_of("POST", path, type) + "Transfer-Encoding: chunked\r\n\r\n" +
         in_chunks(body, chance.once_in(2) ? 5000 : 40, chance);
}

std::string badly_framed(const std::string& method, const std::string& path,
                         const std::string& type, const std::string& body, Chance& chance) {
  const std::string head = head_of(method, path, type);
  const auto with_length = [&](const std::string& length) {
    return head + "Content-Length: " + length + "\r\n\r\n" + body;
  };
  switch (chance.below(11)) {
    case 0:
      return with_length(std::to_string(body.size() + 1 + chance.below(1000)));
    case 1:
      return with_length(std::to_string(chance.below(body.size() + 1)));
    case 2:
      return with_length("-1");
    case 3:
      return with_length("99999999999999999999");
    case 4:
      return with_length(odd_text(chance));
    case 5: {
      std::string chunks = in_chunks(body, 2000, chance);
      spoil(chunks, chance);
      return head + "Transfer-Encoding: chunked\r\n\r\n" + chunks;
    }
    case 6:
      return head + "Transfer-Encoding: chunked\r\n\r\nffffffffffffffff\r\n" + body;
    case 7:
      return head + "Expect: 100-continue\r\nContent-Length: " + std::to_string(body.size()) +
             "\r\n\r\n" + body;
    case 8:
      return head + "Content-Encoding: gzip\r\nContent-Length: " + std::to_string(body.size()) +
             "\r\n\r\n" + body;
    case 9: {
      std::string all = with_length(std::to_string(body.size()));
      all.resize(chance.below(all.size()));
      return all;
    }
    default: {
      std::string all = with_length(std::to_string(body.size()));
      std::string front = all.substr(0, head.size() + 20);
      all.erase(0, front.size());
      spoil(front, chance);
      return front + all;
    }
  }
}

HttpAnswer ask(int port, const std::string& request, milliseconds patience) {
  HttpConnection connection(port);
  return connection.is_open() && connection.send(request) ? connection.receive(patience)
                                                          : HttpAnswer{};
}

}  // namespace rlx::testing
