#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "input/byte_source.h"
#include "input/classifier.h"
#include "input/tokenizer.h"
#include "job/command_record.h"
#include "support/escaped_bytes.h"
#include "support/the_filter.h"

namespace rlx::testing {

/// A count as the transfer protocol writes it.
inline std::string frame_count(std::size_t count) {
  std::string digits = std::to_string(count);
  return std::string(4 - digits.size(), '0') + digits;
}

inline std::string cnt_frame(std::string_view data) {
  return frame_count(data.size()) + std::string("CNT_PRN_DAT\0", 12) + std::string(data);
}

inline std::string end_frame(std::string_view data) {
  return frame_count(data.size()) + std::string("END_PRN_DAT\0", 12) + std::string(data);
}

/// What one read of the tokenizer or the classifier gave.
struct Token {
  Status status = ST_OK;
  std::uint32_t code = 0;
  std::string bytes;
  std::uint32_t pending = 0;

  bool operator==(const Token&) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Token& token) {
  return stream << "status " << static_cast<int>(token.status) << " code " << token.code
                << " pending " << token.pending << " length " << token.bytes.size() << " bytes "
                << encode_escaped_line(token.bytes.substr(0, 60));
}

/// What a read behind the last command gives.
inline const Token kEndOfInput{ST_EOF, 0, "", 0};

/// One byte as a string.
inline std::string one(int value) {
  return std::string(1, static_cast<char>(value));
}

/// One record for all reads, as in the filter: what the last command left in it is still there.
inline CommandRecord& reused_record() {
  static CommandRecord record;
  return record;
}

inline Token token_of(Status status) {
  const CommandRecord& record = reused_record();
  const std::string_view all(reinterpret_cast<const char*>(record.bytes.data()),
                             record.bytes.size());
  return {status, record.code, std::string(all.substr(0, static_cast<std::size_t>(record.length))),
          record.pending};
}

/// The next command of the tokenizer; what the last one left must not shine through.
inline Token next_token(int flags = 0) {
  CommandRecord& record = reused_record();
  record.code = 4711;
  record.length = 13;
  record.pending = 12;
  record.extra = 11;
  const Status status = zqtoken(the_filter().tokenizer, flags, &record);
  EXPECT_EQ(record.extra, 0U);
  return token_of(status);
}

/// The next command of the classifier.
inline Token next_command() {
  CommandRecord& record = reused_record();
  record.length = 13;
  record.pending = 12;
  return token_of(zqclass(the_filter().classifier, &record));
}

/// All bytes that zqgetc still gives.
inline std::string rest_of_input() {
  std::string rest;
  std::uint8_t byte = 0;
  while (zqgetc(the_filter().source, 0, &byte) == ST_OK) {
    rest.push_back(static_cast<char>(byte));
  }
  return rest;
}

/// Standard input from a socket while it lives: the pieces arrive one a read.
class PiecewiseInput {
 public:
  explicit PiecewiseInput(const std::vector<std::string>& pieces) : saved_(dup(STDIN_FILENO)) {
    std::array<int, 2> ends{};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends.data()), 0);
    for (const std::string& piece : pieces) {
      EXPECT_EQ(write(ends[1], piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
    }
    close(ends[1]);
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
  }
  ~PiecewiseInput() {
    dup2(saved_, STDIN_FILENO);
    close(saved_);
  }
  PiecewiseInput(const PiecewiseInput&) = delete;
  PiecewiseInput& operator=(const PiecewiseInput&) = delete;

 private:
  int saved_;
};

/// Standard input that gives the bytes and then a read error (ECONNRESET) while it lives.
class FailingInput {
 public:
  explicit FailingInput(std::string_view bytes) : saved_(dup(STDIN_FILENO)) {
    std::array<int, 2> ends{};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    if (!bytes.empty()) {
      EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    // A peer that goes away without having read what it was sent resets the connection.
    EXPECT_EQ(write(ends[0], "x", 1), 1);
    close(ends[1]);
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
  }
  ~FailingInput() {
    dup2(saved_, STDIN_FILENO);
    close(saved_);
  }
  FailingInput(const FailingInput&) = delete;
  FailingInput& operator=(const FailingInput&) = delete;

 private:
  int saved_;
};

}  // namespace rlx::testing
