#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "rlx_reader/byte_input.h"

namespace rlx::reader {

/// What a token of the page data is.
enum class TokenKind : std::uint8_t {
  text,         ///< characters of the single-byte set, 20 to 7e; as many as stand together
  double_text,  ///< characters that begin with a lead byte, c0 to fd; as many as stand together
  invalid,      ///< bytes that begin no character: 80 to bf, fe and ff
  control,      ///< one control byte, or DEL
  sequence,     ///< a sequence after ESC or FS, up to its final byte
  data,         ///< counted data of the sequence before it, or a portion of it
  glyph,        ///< the download of a user-defined character, whole
  unknown,      ///< ESC or FS with what makes no sequence of the language
};

/// A glyph that is downloaded.
struct Glyph {
  std::array<std::uint8_t, 2> code{};  ///< the two bytes that print it
  std::size_t rows = 0;                ///< of as many dots
  /// The dots: row by row from the top, (rows + 7) / 8 bytes each, the leftmost dot highest.
  std::vector<std::uint8_t> dots;
};

/// A token, or a portion of one.
struct Token {
  TokenKind kind = TokenKind::unknown;
  std::uint64_t offset = 0;  ///< where in the stream it begins
  Bytes bytes;               ///< for the call only
  const Glyph* glyph = nullptr;
};

class TokenVisitor {
 public:
  virtual ~TokenVisitor() = default;
  virtual void token(const Token& token) = 0;
};

/// Cuts page data, or the payload of carried settings and page headers, into tokens. Their shapes
/// are those of docs/rlx.md, "The page data" and "User-defined characters". Characters are told by
/// their lead bytes. Every byte is in one token, and the tokens come in the order of the bytes.
class PageDataReader {
 public:
  explicit PageDataReader(TokenVisitor& visitor) : visitor_(visitor) {}

  /// Reads on. Bytes may be fed in portions of any size; a token that they cut waits for the next
  /// ones, but text and counted data come as far as they are there.
  /// @param offset  where in the stream the first of them stands. Between portions it may leap, as
  ///                it does from one block's payload to the next.
  void feed(Bytes bytes, std::uint64_t offset);

  /// No more bytes follow: what waits is told as it is (a cut character as `invalid`, a cut
  /// sequence or download as `unknown`). The next bytes begin a new token.
  void finish();

  /// True when the bytes so far are whole tokens, and no counted data is missing.
  bool is_whole() const { return waiting_.empty() && data_left_ == 0; }

  /// Rows of the largest glyph that is read; a larger size counts as none.
  static constexpr std::size_t kMostRows = 512;

 private:
  struct Cut {
    TokenKind kind = TokenKind::unknown;
    std::size_t length = 0;  ///< 0: more bytes are needed
  };

  std::size_t read_some(Bytes bytes, std::uint64_t offset);
  std::size_t read_one(Bytes bytes, std::uint64_t offset);
  Cut cut_token(Bytes bytes) const;
  Cut cut_escape(Bytes bytes) const;
  Cut cut_field(Bytes bytes) const;
  void emit(TokenKind kind, Bytes bytes, std::uint64_t offset);
  void note_sequence(Bytes bytes);
  void emit_glyph(Bytes bytes, std::uint64_t offset);

  void wait(Bytes bytes, std::uint64_t offset);
  void forget_waiting(std::size_t count);
  void read_waiting();
  Bytes complete_waiting(Bytes bytes, std::uint64_t offset);

  TokenVisitor& visitor_;
  /// Bytes that are no whole token yet, and where each of them stands.
  std::vector<std::uint8_t> waiting_;
  std::vector<std::uint64_t> waiting_offsets_;
  /// Data bytes that still belong to the last sequence.
  std::uint64_t data_left_ = 0;
  /// Rows of the downloads that follow, as FS "0" said last; 0 before.
  std::size_t glyph_rows_ = 0;
  Glyph glyph_;
};

}  // namespace rlx::reader
