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
/// are those of docs/rlx.md, section 6 and 10. Characters are told by their lead bytes.
class PageDataReader {
 public:
  explicit PageDataReader(TokenVisitor& visitor) : visitor_(visitor) {}

  /// Reads on. Bytes may be fed in portions of any size; a token that they cut waits for the next.
  /// @param offset  where in the stream the first of them stands.
  void feed(Bytes bytes, std::uint64_t offset);

  /// No more bytes follow: what waits is told as it is (a cut character as `invalid`, a cut
  /// sequence or download as `unknown`).
  void finish();

 private:
  struct Cut {
    TokenKind kind = TokenKind::unknown;
    std::size_t length = 0;  ///< 0: more bytes are needed
  };

  std::size_t read_some(Bytes bytes, std::uint64_t offset);
  Cut cut_token(Bytes bytes) const;
  Cut cut_text(Bytes bytes) const;
  Cut cut_escape(Bytes bytes) const;
  Cut cut_field(Bytes bytes) const;
  Cut cut_download(Bytes bytes, std::size_t header, std::size_t pattern) const;
  void emit(TokenKind kind, Bytes bytes, std::uint64_t offset);
  void note_sequence(Bytes bytes);
  void emit_glyph(Bytes bytes, std::uint64_t offset);

  TokenVisitor& visitor_;
  /// Bytes that are not whole tokens yet, and where they began.
  std::vector<std::uint8_t> waiting_;
  std::uint64_t waiting_offset_ = 0;
  /// Data bytes that still belong to the last sequence.
  std::uint64_t data_left_ = 0;
  /// Rows of the downloads that follow, as FS "0" said last; 0 before.
  std::size_t glyph_rows_ = 0;
  Glyph glyph_;
};

}  // namespace rlx::reader
