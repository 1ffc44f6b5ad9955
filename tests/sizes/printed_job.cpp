#include "sizes/printed_job.h"

#include <algorithm>

namespace rlx::testing {

namespace {

using namespace std::string_view_literals;

/// A count in a block's header counts its own ten digits and the two bytes behind them.
constexpr std::size_t kCountedHeader = 12;

constexpr std::string_view kJobParameters =
    "\x1bQ0;0000000043/`%%%=Pji,0101,UNIC\nEMU=RLX\nDCH=240\nMAK=UNIX\n"
    "\x1bQ9;0000000018/a\x1b\x7f\x00\x00\x01\x06"
    "\x1bQ8;0000000019/a\x1bQ240!A"sv;
constexpr std::string_view kUnit = "\x1bQ9;0000000022/a\x1bQ1;7200!C";
constexpr std::string_view kJobEnd = "\x1b\x63\x1b\x7f\x00\x00\x01\x00"sv;

}  // namespace

void PrintedJob::block(char kind, std::string_view payload) {
  std::array<char, 16> header{'\x1b', 'Q', kind, ';', '0', '0', '0', '0',
                              '0',    '0', '0',  '0', '0', '0', '/', 'a'};
  std::size_t count = payload.size() + kCountedHeader;
  for (std::size_t at = 13; count != 0; count /= 10) {
    header.at(at--) = static_cast<char>('0' + count % 10);
  }
  bytes.append(header.data(), header.size());
  bytes.append(payload);
}

void PrintedJob::data_block() {
  if (first_block_) {
    bytes += first_page_ ? kJobParameters : ""sv;
    bytes += kUnit;
  }
  block(first_block_ ? '2' : '0', {gathered_.data(), length_});
  length_ = 0;
  first_page_ = false;
  first_block_ = false;
}

void PrintedJob::carried_block() {
  if (!carries_) {
    return;
  }
  std::string all;
  for (std::string& slot : slots_) {
    all += slot;
    slot.clear();
  }
  block('6', all);
  carries_ = false;
}

void PrintedJob::cut() {
  data_block();
  carried_block();
}

void PrintedJob::text(std::string_view pieces) {
  while (!pieces.empty()) {
    if (length_ == kBlockBytes) {
      cut();
    }
    const std::size_t count = std::min(pieces.size(), kBlockBytes - length_);
    append(pieces.substr(0, count));
    pieces.remove_prefix(count);
  }
}

void PrintedJob::repeated(char byte, std::size_t count) {
  while (count > 0) {
    if (length_ == kBlockBytes) {
      cut();
    }
    const std::size_t portion = std::min(count, kBlockBytes - length_);
    std::memset(gathered_.data() + length_, byte, portion);
    length_ += portion;
    count -= portion;
  }
}

void PrintedJob::end_page(std::string_view last_piece) {
  append(last_piece.substr(0, kLastPieceBytes));
  data_block();
  carried_block();
  first_block_ = true;
}

void PrintedJob::end_job(bool has_content) {
  if (has_content) {
    data_block();
    block('0', "\f");
  }
  block('0', kJobEnd);
}

}  // namespace rlx::testing
