#include "support/glyph_bitmap.h"

#include <gtest/gtest.h>

#include "standin/glyph_dots.h"

namespace rlx::testing {

namespace {

/// The lowest `count` bits of a number as dots, the highest of them first.
std::string dots_of(unsigned bits, int count) {
  std::string dots;
  for (int bit = count - 1; bit >= 0; --bit) {
    dots += (bits >> bit & 1U) != 0 ? '#' : '.';
  }
  return dots;
}

Bitmap decode(std::string_view bytes, std::size_t bytes_a_row, unsigned base, int dots_a_byte) {
  EXPECT_EQ(bytes.size() % bytes_a_row, 0U);
  Bitmap bitmap;
  for (std::size_t position = 0; position < bytes.size(); ++position) {
    if (position % bytes_a_row == 0) {
      bitmap.emplace_back();
    }
    const unsigned bits = static_cast<unsigned char>(bytes[position]) - base;
    EXPECT_EQ(bits >> dots_a_byte, 0U) << "byte " << position;
    bitmap.back() += dots_of(bits, dots_a_byte);
  }
  return bitmap;
}

}  // namespace

Bitmap expected_bitmap(std::int32_t font_id, std::uint32_t code, const BitmapPart& part) {
  const int delivered = (part.dots + 7) / 8 * 8;
  Bitmap bitmap;
  for (int row = 0; row < part.rows; ++row) {
    std::string dots;
    for (int column = 0; column < part.columns; ++column) {
      const bool there = column < part.blank_from && column + part.crop < delivered;
      const bool dot = glyph_dot(font_id, code, row + part.crop, column + part.crop);
      dots += there && dot ? '#' : '.';
    }
    bitmap.push_back(dots);
  }
  return bitmap;
}

GlyphPattern standin_pattern(std::int32_t font_id, std::uint32_t code, int dots) {
  GlyphPattern pattern{};
  const int row_bytes = (dots + 7) / 8;
  for (int row = 0; row < dots; ++row) {
    for (int column = 0; column < row_bytes * 8; ++column) {
      if (glyph_dot(font_id, code, row, column)) {
        auto& byte = pattern[static_cast<std::size_t>(row * row_bytes + column / 8)];
        byte = static_cast<std::uint8_t>(byte | 0x80U >> (column % 8));
      }
    }
  }
  return pattern;
}

Bitmap decode_nibbles(std::string_view characters, std::size_t characters_a_row) {
  return decode(characters, characters_a_row, '0', 4);
}

Bitmap decode_bytes(std::string_view bytes, std::size_t bytes_a_row) {
  return decode(bytes, bytes_a_row, 0, 8);
}

}  // namespace rlx::testing
