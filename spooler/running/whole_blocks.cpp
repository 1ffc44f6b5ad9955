#include "running/whole_blocks.h"

#include <algorithm>
#include <string_view>

#include "rlx_reader/block.h"

namespace rlx::spooler {

namespace {

/// So much of a payload says what a block is for.
constexpr std::size_t kFrontBytes = 16;
constexpr std::uint8_t kFormFeed = '\f';

reader::Bytes bytes_of(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string block(std::string_view payload) {
  using reader::Ending;
  return reader::header_bytes(
             {'0', reader::count_for(Ending::data, payload.size()), Ending::data}) +
         std::string(payload);
}

}  // namespace

void BlockFollower::take_header(std::uint8_t byte) {
  header_.push_back(static_cast<char>(byte));
  if (header_.size() < reader::kHeaderBytes) {
    return;
  }
  const auto header = reader::parse_header(bytes_of(header_));
  const auto payload = header ? header->payload() : std::nullopt;
  lost_ = payload.value_or(0) == 0;
  payload_ = payload.value_or(0);
  front_.clear();
}

void BlockFollower::end_block() {
  using reader::BlockUse;
  const BlockUse use = use_of(*reader::parse_header(bytes_of(header_)), bytes_of(front_));
  switch (use) {
    case BlockUse::job_start:
      in_job_ = true;
      break;
    case BlockUse::job_end:
      in_job_ = false;
      break;
    case BlockUse::first_data:
    case BlockUse::further_data:
    case BlockUse::final_form_feed:
      fed_ = last_ == kFormFeed;
      break;
    default:
      break;
  }
  in_page_header_ = use == BlockUse::job_start || use == BlockUse::density ||
                    use == BlockUse::page_format || use == BlockUse::page_setup ||
                    (use == BlockUse::job_parameters && in_job_);
  header_.clear();
}

void BlockFollower::take(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty() && !lost_) {
    if (payload_ == 0) {
      take_header(bytes.front());
      bytes = bytes.subspan(1);
      continue;
    }
    const auto part = bytes.first(std::min<std::uint64_t>(bytes.size(), payload_));
    const auto front = part.first(std::min(part.size(), kFrontBytes - front_.size()));
    front_.append(front.begin(), front.end());
    last_ = part.back();
    payload_ -= part.size();
    bytes = bytes.subspan(part.size());
    if (payload_ == 0) {
      end_block();
    }
  }
}

std::uint64_t BlockFollower::missing() const {
  if (lost_ || (header_.empty() && !in_page_header_)) {
    return 0;
  }
  return payload_ > 0 ? payload_ : reader::kHeaderBytes - header_.size();
}

std::string BlockFollower::ending() const {
  if (lost_ || !in_job_) {
    return {};
  }
  using namespace std::string_view_literals;
  return (fed_ ? "" : block("\f")) + block("\033c\033\x7f\0\0\x01\0"sv);
}

/// What stands behind the cancellation.
std::size_t WholeBlocks::read_ending(std::span<std::uint8_t> room) {
  if (!ends_ && follower_.missing() > 0) {
    const auto part = room.first(std::min<std::uint64_t>(room.size(), follower_.missing()));
    const std::size_t count = read_some(descriptor_, part, "the job");
    follower_.take(part.first(count));
    ends_ = count == 0;
    return count;
  }
  if (!ends_) {
    ends_ = true;
    ending_ = follower_.ending();
  }
  const std::size_t count = std::min(room.size(), ending_.size());
  std::copy_n(ending_.begin(), count, room.begin());
  ending_.erase(0, count);
  return count;
}

std::size_t WholeBlocks::read(std::span<std::uint8_t> room) {
  const std::size_t count = bytes_.read(room);
  if (count == 0 && cancellation_.is_asked()) {
    return read_ending(room);
  }
  follower_.take(room.first(count));
  return count;
}

}  // namespace rlx::spooler
