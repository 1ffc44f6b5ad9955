#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace rlx::testing {

/// What a job must become with option -q, written anew from docs/rlx.md and without a line of the
/// filter: pages, blocks, and the settings that are carried behind them. It is told what the pieces
/// are, and is quick enough not to keep the filter waiting. The bytes gather in `bytes`, from where
/// they may be taken at any time.
class PrintedJob {
 public:
  static constexpr std::size_t kBlockBytes = 8192;
  static constexpr std::size_t kSlots = 13;  ///< 1 to 12 are used

  /// Bytes each of which is a piece; none of them FF.
  void text(std::string_view pieces);
  /// `count` equal bytes, each a piece.
  void repeated(char byte, std::size_t count);
  /// A piece that is never divided; it does not end in FF.
  void piece(std::string_view whole) {
    if (whole.size() > kBlockBytes - length_) {
      cut();
    }
    append(whole);
  }
  /// A piece of a few bytes that ends the page with its last one, a FF.
  void end_page(std::string_view last_piece = "\f");
  /// What is to be repeated behind the block in which the last piece came; a few bytes.
  void carry(std::size_t slot, std::string_view sequence) {
    slots_.at(slot) = sequence;
    carries_ = true;
  }
  /// The end of a job that has printed something; content on the last page is fed.
  void end_job(bool has_content);

  std::string bytes;

 private:
  static constexpr std::size_t kLastPieceBytes = 16;

  void append(std::string_view more) {
    std::memcpy(gathered_.data() + length_, more.data(), more.size());
    length_ += more.size();
  }
  void block(char kind, std::string_view payload);
  void data_block();
  void carried_block();
  void cut();

  std::array<char, kBlockBytes + kLastPieceBytes> gathered_{};
  std::size_t length_ = 0;
  std::array<std::string, kSlots> slots_;
  bool carries_ = false;
  bool first_page_ = true;
  bool first_block_ = true;
};

}  // namespace rlx::testing
