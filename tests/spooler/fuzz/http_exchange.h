#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "spooler/fuzz/chance.h"

namespace rlx::testing {

/// What a server has answered.
struct HttpAnswer {
  int status = 0;  ///< 0 when there was no answer
  std::string head;
  std::string body;

  /// A field of the head; empty without it.
  std::string field(const std::string& name) const;
};

/// A connection on loopback.
class HttpConnection {
 public:
  explicit HttpConnection(int port);
  ~HttpConnection();
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;

  bool is_open() const { return socket_ >= 0; }
  /// @return false when the server takes no more.
  bool send(const std::string& bytes) const;
  /// Nothing more is sent.
  void end() const;
  /// Reads one answer, but no longer than `patience`.
  HttpAnswer receive(std::chrono::milliseconds patience);

 private:
  bool receive_some(std::chrono::steady_clock::time_point latest);

  int socket_;
  std::string waiting_;
};

/// A request that has nothing wrong.
std::string http_request(const std::string& method, const std::string& path,
                         const std::string& type, const std::string& body);

/// The same body in chunks.
std::string chunked_request(const std::string& path, const std::string& type,
                            const std::string& body, Chance& chance);

/// The same with something wrong around the body: its length, its chunks, fields, or the end.
std::string badly_framed(const std::string& method, const std::string& path,
                         const std::string& type, const std::string& body, Chance& chance);

/// Sends a request that has nothing wrong, and waits for its answer.
HttpAnswer ask(int port, const std::string& request, std::chrono::milliseconds patience);

}  // namespace rlx::testing
