#include "rlxdump/job_sections.h"

#include <utility>

#include "rlx_reader/sequence.h"
#include "rlxdump/described_token.h"
#include "rlxdump/shown_text.h"

namespace rlx::dump {

namespace {

using reader::Bytes;

constexpr std::size_t kMostShown = 32;

std::string named(const reader::Block& block) {
  const std::string name(name_of(block.use));
  return block.count_is_right ? name : name + ", wrong count " + std::to_string(block.header.count);
}

}  // namespace

std::optional<SectionPieces> JobSections::next() {
  while (ready_.empty() && !ended_) {
    if (!reader_.read_next()) {
      contents_.finish();
      close();
      ended_ = true;
    }
  }
  if (ready_.empty()) {
    return std::nullopt;
  }
  SectionPieces first = std::move(ready_.front());
  ready_.pop_front();
  return first;
}

void JobSections::close() {
  const std::uint64_t next_piece = current_.first_piece + current_.pieces.size();
  const reader::Section section = current_.section;
  if (!current_.pieces.empty()) {
    ready_.push_back(std::move(current_));
  }
  current_ = {section, next_piece, {}};
  current_bytes_ = 0;
}

void JobSections::section(const reader::Section& section) {
  close();
  current_.section = section;
  current_.first_piece = 1;
}

void JobSections::add(std::uint64_t offset, std::string what, Bytes bytes, std::string shown) {
  // What it is and its bytes are divided by a NUL, which no name has.
  std::string identity = std::move(what) + '\0';
  identity.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  current_bytes_ += bytes.size();
  current_.pieces.push_back({offset, std::move(identity), std::move(shown)});
  if (current_.pieces.size() > kMostPieces || current_bytes_ > kMostBytes) {
    close();
  }
}

/// A right count says nothing that the payload does not say; a wrong one, or the kind of a block
/// that the language does not have, does.
void JobSections::begin_block(const reader::Block& block) {
  const std::string header = block.count_is_right && block.use != reader::BlockUse::unknown
                                 ? std::string()
                                 : header_bytes(block.header);
  add(block.offset, "block " + std::string(name_of(block.use)) + header, {}, named(block));
}

void JobSections::frame(const reader::Frame& frame) {
  const std::string name = frame.last ? "END frame" : "CNT frame";
  add(frame.offset, name + std::to_string(frame.count), {},
      name + " of " + std::to_string(frame.count) + (frame.count == 1 ? " byte" : " bytes"));
}

void JobSections::pass_through(std::uint64_t offset, Bytes sequence) {
  add(offset, "pass through", sequence, "pass through  " + reader::spell(sequence));
}

void JobSections::outside(std::uint64_t offset, Bytes part) {
  const bool all = part.size() <= kMostShown;
  add(offset, "outside", part,
      "outside  " + hexadecimal(all ? part : part.first(kMostShown)) + (all ? "" : " ..."));
}

void JobSections::job_parameter(std::uint64_t offset, Bytes line) {
  const bool ended = line.back() == '\n';
  add(offset, "job parameter", line,
      "job parameter  " + shown(ended ? line.first(line.size() - 1) : line));
}

void JobSections::token(reader::Place /*place*/, const reader::Token& token) {
  const DescribedToken described = describe_token(token);
  const std::string meaning = described.meaning.empty() ? "" : "  (" + described.meaning + ")";
  add(token.offset, "piece", token.bytes, described.name + "  " + described.spelled + meaning);
}

}  // namespace rlx::dump
