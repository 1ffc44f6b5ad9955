#include "tools/read_job.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "rlx_reader/frame_reader.h"
#include "rlx_reader/job_reader.h"
#include "support/escaped_bytes.h"

namespace rlx::testing {

namespace {

std::string text_of(reader::Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Notes what is found, and where a call does not follow from those before.
class Finder : public reader::JobVisitor {
 public:
  FoundJob job;

  void begin_block(const reader::Block& block) override {
    require(!inside_, "a block inside something");
    require(block.offset == job.rebuilt.size(), "the offset of a block");
    inside_ = true;
    job.blocks.push_back({block, ""});
    job.rebuilt += header_bytes(block.header);
  }
  void payload(const reader::Block& block, reader::Bytes part) override {
    require(inside_ && block.offset == job.blocks.back().block.offset, "a payload outside");
    require(!part.empty() && part.size() <= reader::ByteInput::kMostLookAhead, "a portion's size");
    job.blocks.back().payload += text_of(part);
    job.rebuilt += text_of(part);
  }
  void end_block(const reader::Block& block) override {
    require(inside_, "an end without a block");
    inside_ = false;
    require(block.payload == job.blocks.back().payload.size(), "the length of a payload");
    job.blocks.back().block = block;
  }
  void begin_page(std::uint64_t number, const reader::Block& /*block*/) override {
    require(number == ++job.pages_begun, "the number of a page");
  }
  void end_page(std::uint64_t number) override {
    require(number == job.pages_begun, "the end of another page");
    ++job.pages_ended;
  }
  void begin_frame(const reader::Frame& frame) override {
    require(!inside_ && frame.offset == job.rebuilt.size(), "the offset of a frame");
    inside_ = true;
    job.frames.push_back({frame, ""});
    job.rebuilt += header_bytes(frame);
  }
  void frame_data(const reader::Frame& /*frame*/, reader::Bytes part) override {
    require(inside_ && !part.empty(), "data outside a frame");
    job.frames.back().data += text_of(part);
    job.rebuilt += text_of(part);
  }
  void end_frame(const reader::Frame& /*frame*/) override {
    require(inside_, "an end without a frame");
    inside_ = false;
  }
  void pass_through(std::uint64_t offset, reader::Bytes sequence) override {
    add(offset, sequence);
  }
  void outside(std::uint64_t offset, reader::Bytes part) override {
    add(offset, part);
    job.outside += text_of(part);
  }
  void fault(const reader::Fault& fault) override {
    require(!fault.what.empty(), "a fault without words");
    job.faults.push_back(fault);
  }

 private:
  void add(std::uint64_t offset, reader::Bytes part) {
    require(!inside_ && offset == job.rebuilt.size() && !part.empty(), "bytes outside");
    job.rebuilt += text_of(part);
  }
  void require(bool holds, const char* what) {
    if (!holds && job.misdeed.empty()) {
      job.misdeed = what;
    }
  }

  bool inside_ = false;
};

class TokenList : public reader::TokenVisitor {
 public:
  struct Entry {
    reader::TokenKind kind;
    std::uint64_t offset;
    std::string bytes;
  };
  std::vector<Entry> entries;

  void token(const reader::Token& token) override {
    if (!entries.empty() && entries.back().kind == token.kind && merges(token.kind) &&
        entries.back().offset + entries.back().bytes.size() == token.offset) {
      entries.back().bytes += text_of(token.bytes);
    } else {
      entries.push_back({token.kind, token.offset, text_of(token.bytes)});
    }
  }

 private:
  static bool merges(reader::TokenKind kind) {
    return kind == reader::TokenKind::text || kind == reader::TokenKind::double_text ||
           kind == reader::TokenKind::invalid || kind == reader::TokenKind::data;
  }
};

std::string ten_digits(std::int64_t count) {
  std::array<char, 24> digits{};
  std::snprintf(digits.data(), digits.size(), "%010lld", static_cast<long long>(count));
  return digits.data();
}

}  // namespace

reader::Bytes reader_bytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

FoundJob read_job(std::string_view stream) {
  reader::MemoryInput input(reader_bytes(stream));
  Finder finder;
  reader::read_jobs(input, finder);
  return finder.job;
}

std::string shown_faults(const FoundJob& job) {
  std::string all;
  for (const reader::Fault& fault : job.faults) {
    all += std::to_string(fault.offset) + ": " + fault.what + '\n';
  }
  return all;
}

std::string shown_tokens(std::string_view data, std::size_t portion) {
  constexpr std::array<const char*, 8> kNames{"text",     "double", "invalid", "control",
                                              "sequence", "data",   "glyph",   "unknown"};
  TokenList list;
  reader::PageDataReader reader(list);
  const std::size_t step = portion == 0 ? std::max<std::size_t>(data.size(), 1) : portion;
  for (std::size_t at = 0; at < data.size(); at += step) {
    reader.feed(reader_bytes(data.substr(at, step)), at);
  }
  reader.finish();
  std::string all;
  for (const TokenList::Entry& entry : list.entries) {
    all += std::to_string(entry.offset) + ' ' + kNames[static_cast<std::size_t>(entry.kind)] + ' ' +
           encode_escaped_line(entry.bytes) + '\n';
  }
  return all;
}

std::string rlx_block(char kind, std::string_view payload, std::int64_t wrong) {
  const auto count = static_cast<std::int64_t>(payload.size()) + 12 + wrong;
  return std::string("\x1bQ") + kind + ';' + ten_digits(count) + "/a" + std::string(payload);
}

std::string rlx_parameters(std::string_view payload, std::int64_t wrong) {
  const auto count = static_cast<std::int64_t>(payload.size()) + wrong;
  return "\x1bQ0;" + ten_digits(count) + "/`" + std::string(payload);
}

std::string rlx_frame(std::string_view data, bool last, std::int64_t wrong) {
  const auto count = static_cast<std::int64_t>(data.size()) + wrong;
  return ten_digits(count).substr(6) + (last ? "END_PRN_DAT" : "CNT_PRN_DAT") + '\0' +
         std::string(data);
}

}  // namespace rlx::testing
