#include "rlxdump/described_token.h"

#include <array>

#include "rlx_reader/sequence.h"
#include "rlxdump/shown_text.h"

namespace rlx::dump {

namespace {

using reader::Bytes;
using reader::Token;
using reader::TokenKind;

/// Bytes of data, of a broken sequence or of an odd text that are shown.
constexpr std::size_t kMostShown = 32;

std::string_view control_meaning(std::uint8_t byte) {
  switch (byte) {
    case '\n':
      return "line feed";
    case '\f':
      return "form feed";
    case '\r':
      return "carriage return";
    default:
      return "control";
  }
}

std::string count_of(Bytes bytes) {
  return std::to_string(bytes.size()) + (bytes.size() == 1 ? " byte" : " bytes");
}

/// The first bytes in digits, and how many there are when that is not all.
DescribedToken described_bytes(std::string_view name, Bytes bytes) {
  const bool all = bytes.size() <= kMostShown;
  const std::string digits = hexadecimal(all ? bytes : bytes.first(kMostShown));
  return {std::string(name), digits + (all ? "" : " ..."), all ? "" : count_of(bytes)};
}

DescribedToken described_sequence(Bytes bytes) {
  const reader::SequenceInfo info = reader::describe_sequence(bytes);
  DescribedToken described{info.name, info.spelled, ""};
  for (const reader::Parameter& parameter : info.parameters) {
    described.meaning += described.meaning.empty() ? "" : ", ";
    described.meaning += parameter.name + " " + parameter.value;
  }
  return described;
}

DescribedToken described_glyph(const Token& token) {
  const reader::Glyph& glyph = *token.glyph;
  const std::string rows = std::to_string(glyph.rows);
  const std::size_t front = token.bytes[0] == 0x1b ? 7 : 5;
  return {"glyph", reader::spell(token.bytes.first(front)) + " ...",
          "code " + quoted(glyph.code) + ", " + rows + " x " + rows + " dots, " +
              count_of(token.bytes.subspan(front))};
}

}  // namespace

std::string_view name_of(TokenKind kind) {
  constexpr std::array<std::string_view, 8> kNames{
      "text", "double-byte text", "invalid", "control", "sequence", "data", "glyph", "unknown"};
  return kNames[static_cast<std::size_t>(kind)];
}

std::string name_of_control(Bytes byte) {
  return reader::spell(byte.first(1));
}

DescribedToken describe_token(const Token& token) {
  switch (token.kind) {
    case TokenKind::text:
    case TokenKind::double_text:
      return {std::string(name_of(token.kind)), quoted(token.bytes), ""};
    case TokenKind::control:
      return {std::string(control_meaning(token.bytes[0])), name_of_control(token.bytes), ""};
    case TokenKind::sequence:
      return described_sequence(token.bytes);
    case TokenKind::glyph:
      return described_glyph(token);
    default:
      return described_bytes(name_of(token.kind), token.bytes);
  }
}

}  // namespace rlx::dump
