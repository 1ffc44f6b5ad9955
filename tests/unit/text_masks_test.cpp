#include "driver/fast_road/text_masks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "input/byte_block.h"
#include "support/descriptors.h"
#include "support/escaped_bytes.h"
#include "support/guarded_bytes.h"
#include "support/printer_blocks.h"

namespace rlx::testing {
namespace {

// A description is shown as a picture, a letter for each byte that is described:
//
//   .  text of the single-byte set     D d  a double-byte character: first byte, another one
//   n  a control byte, or DEL          p s  0x8e, and the bytes of the character behind it
//   i  no character                    E    ESC or FS
//
// and "|" behind them when that is not the whole block.

/// What one byte is in masks; "?" when they contradict one another.
char letter_of(const TextMasks& masks, std::size_t at) {
  const std::array<ByteMask, 6> all{masks.double_byte, masks.neutral, masks.invalid,
                                    masks.inside,      masks.prefix,  masks.introducer};
  unsigned bits = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    bits |= static_cast<unsigned>(all[i] >> at & 1) << i;
  }
  switch (bits) {
    case 0b000000:
      return '.';
    case 0b000001:
      return 'D';
    case 0b001001:
      return 'd';
    case 0b000010:
      return 'n';
    case 0b100010:
      return 'E';
    case 0b000100:
      return 'i';
    case 0b001000:
      return 's';
    case 0b010000:
      return 'p';
    default:
      return '?';
  }
}

std::string picture_of(const TextMasks& masks) {
  std::string picture;
  for (std::size_t at = 0; at < masks.length; ++at) {
    picture += letter_of(masks, at);
  }
  return picture + (masks.length < kBlockBytes ? "|" : "");
}

/// The picture of masks_of_text, which were something else before.
std::string text_picture(std::string_view block) {
  GuardedBytes guarded;
  TextMasks masks{3, ~ByteMask{0}, ~ByteMask{0}, ~ByteMask{0}, ~ByteMask{0}, ~ByteMask{0}, 0};
  masks_of_text(ByteBlock(guarded.at_end(block)), masks);
  return picture_of(masks);
}

/// The picture of masks_of_any_text, which must not look behind the bytes that stand ready.
std::string any_text_picture(std::string_view bytes, std::size_t enough) {
  GuardedBytes guarded;
  TextMasks masks{3, ~ByteMask{0}, ~ByteMask{0}, ~ByteMask{0}, ~ByteMask{0}, ~ByteMask{0}, 0};
  masks_of_any_text(guarded.at_end(bytes), bytes.size(), enough, masks);
  EXPECT_EQ(masks.introducer, 0U);
  return picture_of(masks);
}

std::string block_of(std::string_view text) {
  std::string block(text);
  block.resize(kBlockBytes, 'A');
  return block;
}

/// The picture of the whole block whose front has this one.
std::string whole(std::string_view front) {
  std::string picture(front);
  if (!picture.ends_with('|')) {
    picture.resize(kBlockBytes, '.');
  }
  return picture;
}

// The descriptions once more, as slowly as they can be told.

std::size_t bytes_of_character(std::uint8_t first) {
  if (first >= 0xfc && first <= 0xfd) {
    return 6;
  }
  if (first >= 0xf8 && first <= 0xfb) {
    return 5;
  }
  if (first >= 0xf0 && first <= 0xf7) {
    return 4;
  }
  if (first >= 0xe0 && first <= 0xef) {
    return 3;
  }
  return first >= 0xc0 && first <= 0xdf ? 2 : 1;
}

char letter_of_single_byte(std::uint8_t byte) {
  if (byte == 0x1b || byte == 0x1c) {
    return 'E';
  }
  if (byte < 0x20 || byte == 0x7f) {
    return 'n';
  }
  return byte < 0x7f ? '.' : 'i';
}

/// What the next character of text as it should be is; nothing when the description stops there.
std::string next_of_text(Bytes bytes) {
  const std::uint8_t first = bytes[0];
  const std::size_t length = bytes_of_character(first);
  if (first == 0x0c || length > 4 || length > bytes.size()) {
    return "";
  }
  if (first == 0x8e) {
    const bool single = bytes.size() > 1 && bytes[1] != 0x0c && bytes[1] != 0x8e &&
                        bytes_of_character(bytes[1]) == 1;
    return single ? "ps" : "";
  }
  if (length == 1) {
    return {letter_of_single_byte(first)};
  }
  const Bytes rest = bytes.subspan(1, length - 1);
  const bool is_whole =
      std::ranges::all_of(rest, [](int byte) { return byte >= 0x80 && byte < 0xc0; });
  return is_whole ? "D" + std::string(length - 1, 'd') : "";
}

/// The same of any text.
std::string next_of_any_text(Bytes bytes) {
  const std::uint8_t first = bytes[0];
  const bool shifted = first == 0x8e;
  if (first == 0x1b || first == 0x1c || (shifted && bytes.size() == 1)) {
    return "";
  }
  const std::size_t length = shifted ? 1 + bytes_of_character(bytes[1]) : bytes_of_character(first);
  if (length > bytes.size() || bytes[length - 1] == 0x0c) {
    return "";
  }
  if (shifted) {
    return "p" + std::string(length - 1, 's');
  }
  return length == 1 ? std::string{letter_of_single_byte(first)}
                     : "D" + std::string(length - 1, 'd');
}

template <typename NextCharacter>
std::string slow_picture(std::string_view text, std::size_t enough, NextCharacter next) {
  const Bytes bytes = bytes_of(text);
  std::string picture;
  while (picture.size() < std::min(enough, bytes.size())) {
    const std::string letters = next(bytes.subspan(picture.size()));
    if (letters.empty()) {
      break;
    }
    picture += letters;
  }
  return picture + (picture.size() < kBlockBytes ? "|" : "");
}

std::string slow_text_picture(std::string_view block) {
  return slow_picture(block, kBlockBytes, next_of_text);
}

std::string slow_any_text_picture(std::string_view bytes, std::size_t enough) {
  return slow_picture(bytes, enough, next_of_any_text);
}

// Text as it should be

struct PictureCase {
  std::string text;
  std::string picture;
};

void expect_text_pictures(const std::vector<PictureCase>& cases) {
  for (const auto& [text, picture] : cases) {
    EXPECT_EQ(text_picture(block_of(text)), whole(picture)) << encode_escaped_line(text);
    EXPECT_EQ(slow_text_picture(block_of(text)), whole(picture)) << encode_escaped_line(text);
  }
}

void expect_any_text_pictures(const std::vector<PictureCase>& cases) {
  for (const auto& [text, picture] : cases) {
    EXPECT_EQ(any_text_picture(block_of(text), 64), whole(picture)) << encode_escaped_line(text);
    EXPECT_EQ(slow_any_text_picture(block_of(text), 64), whole(picture))
        << encode_escaped_line(text);
  }
}

TEST(TextMasksOfText, WholeCharacters) {
  expect_text_pictures({
      {"", ""},
      {" ~", ".."},
      {bytes("\0\x1f\x7f\x0a\x0d"), "nnnnn"},
      {"z\xc3\xa9z", ".Dd."},
      {"\xc0\x80\xdf\xbf", "DdDd"},
      {"\xe0\x80\x80\xef\xbf\xbf", "DddDdd"},
      {"\xf0\x80\x80\x80\xf7\xbf\xbf\xbf", "DdddDddd"},
      {"\xe3\x81\x82z\xf0\xa0\x80\x8b\n\xc3\xa9", "Ddd.DdddnDd"},
      {"\x80\xbf\xfe\xff", "iiii"},
      {"\xe3\x81\x82\x83\xc3\xa9\xaa", "DddiDdi"},
  });
}

TEST(TextMasksOfText, StopAtALongCharacter) {
  expect_text_pictures({
      {"z\xf8\x88\x80\x80\x80", ".|"},
      {"z\xfb\x88\x80\x80\x80", ".|"},
      {"z\xfc\x84\x80\x80\x80\x80", ".|"},
      {"z\xfd\x84\x80\x80\x80\x80", ".|"},
      {"\xff\xfe\xfd", "ii|"},
      {"\xe3\x81\x82\xf8", "Ddd|"},
  });
}

TEST(TextMasksOfText, StopAtACharacterThatLacksAByte) {
  expect_text_pictures({
      {"z\xc3z", ".|"},
      {"z\xe3z\x82", ".|"},
      {"z\xe3\x81z", ".|"},
      {"z\xf0z\x80\x8b", ".|"},
      {"z\xf0\xa0z\x8b", ".|"},
      {"z\xf0\xa0\x80z", ".|"},
      {"z\xe3\x81\xe3\x81\x82", ".|"},
      {"z\xe3\xe3\x81\x82", ".|"},
      {"z\xf0\xa0\x80\xff", ".|"},
      {"z\xf0\xa0\x80\x7f", ".|"},
      {"z\xf0\xa0\x80\xc0", ".|"},
      {"\xc3\xa9\xc3\xa9\xe3\x81", "DdDd|"},
      {"\xe3\x81\x82\xe3\x81\x0c", "Ddd|"},
      {"\xe3\x81\x82\xe3\x0c\x82", "Ddd|"},
      {"\xe3\x81\x82\xe3\x1b\x82", "Ddd|"},
      {"\xc3\xa9\xf0\x80\xc3\xa9", "Dd|"},
  });
}

TEST(TextMasksOfText, StopAtACharacterThatTheEndOfTheBlockCuts) {
  for (std::size_t left = 1; left <= 4; ++left) {
    const std::string front(kBlockBytes - left, 'z');
    const std::string dots(kBlockBytes - left, '.');
    // The first bytes alone stand in the block.
    const auto cut = [&](std::string_view character) {
      return front + std::string(character.substr(0, left));
    };
    expect_text_pictures({
        {cut("\xc3\xa9yy"), dots + (left < 2 ? "|" : "Dd")},
        {cut("\xe3\x81\x82y"), dots + (left < 3 ? "|" : "Ddd")},
        {cut("\xf0\xa0\x80\x8b"), dots + (left < 4 ? "|" : "Dddd")},
        {cut("\xf8\x88\x80\x80"), dots + "|"},
        {cut("\xff\x80\x80\x80"), dots + std::string(left, 'i')},
    });
  }
}

TEST(TextMasksOfText, StopAtAFormFeed) {
  for (const std::size_t at : {0U, 1U, 31U, 62U, 63U}) {
    for (const std::string_view unit : {"A", "\n", "\xe3\x81\x82"}) {
      std::string text;
      std::string picture;
      while (text.size() < at) {
        const bool fits = text.size() + unit.size() <= at;
        text += fits ? unit : "A";
        picture += !fits || unit == "A" ? "." : unit == "\n" ? "n" : "Ddd";
      }
      expect_text_pictures({{text + "\x0c", picture + "|"}});
    }
  }
}

TEST(TextMasksOfText, IntroducersAndWhatFollowsThemAreText) {
  expect_text_pictures({
      {"z\x1b[1az", ".E...."},
      {"\x1c%\"p\x1bQ1;1!H\n", "E...E......n"},
      {"\x1b\x1b\x1c\x1c\x1a\x1d", "EEEEnn"},
      {"\x1b[\xe3\x81\x82\x61", "E.Ddd."},
      {"\x1b[\xff\x8f\x61", "E.ii."},
      {"\x1b[1\x0c\x61", "E..|"},
      {"\x1b[1\xe3\x61", "E..|"},
  });
  for (std::size_t at = 0; at < kBlockBytes; ++at) {
    const std::string front(at, 'z');
    const std::string dots(at, '.');
    expect_text_pictures({{front + "\x1b", dots + "E"}, {front + "\x1c", dots + "E"}});
  }
}

TEST(TextMasksOfText, ShiftedCharactersOfOneByte) {
  expect_text_pictures({
      {"z\x8e\xb1z", ".ps."},
      {"\x8e\x41\x8e\xff\x8e\xfe\x8e\x80\x8e\xbf", "pspspspsps"},
      {bytes("\x8e\0\x8e\x0a\x8e\x0d\x8e\x7f\x8e\x1f"), "pspspspsps"},
      {"\x8e\x1b[\x8e\x1c%", "ps.ps."},
      {"\x8e\x8f\x8d\x8e\x8d\x8f", "psipsi"},
      {"\xe3\x81\x82\x8e\xb1\xe3\x81\x82", "DddpsDdd"},
      // 0x8e as the byte of a character is no prefix.
      {"\xe3\x8e\x8e\x8e\xb1", "Dddps"},
      {"\xc3\x8e\x8e\x8e", "Dd|"},
  });
}

TEST(TextMasksOfText, StopAtAnyOtherShiftedCharacter) {
  expect_text_pictures({
      {"z\x8e\x0c", ".|"},
      {"z\x8e\x8e", ".|"},
      {"z\x8e\x8e\xb1", ".|"},
      {"z\x8e\x8e\x8e\x8e", ".|"},
      {"z\x8e\xb1\x8e\x8e", ".ps|"},
      {"z\x8e\xc3\xa9", ".|"},
      {"z\x8e\xe3\x81\x82", ".|"},
      {"z\x8e\xf0\xa0\x80\x8b", ".|"},
      {"z\x8e\xf8\x88\x80\x80\x80", ".|"},
      {"z\x8e\xfd\x84\x80\x80\x80\x80", ".|"},
      {"z\x8e\xe3zz", ".|"},
      {"z\x8e\xc0z", ".|"},
  });
}

TEST(TextMasksOfText, ShiftedCharactersAtTheEndOfTheBlock) {
  const std::string front(62, 'z');
  const std::string dots(62, '.');
  expect_text_pictures({
      {front + "z\x8e", dots + ".|"},
      {front + "\x8e\xb1", dots + "ps"},
      {front + "\x8e\x8e", dots + "|"},
      {front + "\x8e\x0c", dots + "|"},
      {front + "\x8e\xe3", dots + "|"},
      {front + "\xc3\x8e", dots + "Dd"},
  });
}

TEST(TextMasksOfText, APrefixBeforeEveryByte) {
  for (int value = 0; value < 256; ++value) {
    const auto byte = static_cast<std::uint8_t>(value);
    const bool stops = value == 0x0c || value == 0x8e || (value >= 0xc0 && value <= 0xfd);
    for (const std::size_t at : {0U, 15U, 16U, 40U, 62U}) {
      const std::string text = std::string(at, '\n') + "\x8e" + static_cast<char>(byte);
      const std::string picture = std::string(at, 'n') + (stops ? "|" : "ps");
      EXPECT_EQ(text_picture(block_of(text)), whole(picture)) << value << " at " << at;
    }
  }
}

TEST(TextMasksOfText, TheFirstReasonToStopCounts) {
  const std::vector<std::string> reasons{"\x0c",     "\xe3z",    "\x8e\x8e",
                                         "\x8e\x0c", "\xf8\x80", "\x8e\xe3"};
  for (const std::string& first : reasons) {
    for (const std::string& second : reasons) {
      expect_text_pictures({{"zz" + first + "zz" + second, "..|"}});
    }
  }
}

// Any text

TEST(TextMasksOfAnyText, CharactersByTheirFirstByte) {
  expect_any_text_pictures({
      {"", ""},
      {bytes(" ~\0\x1f\x7f\x0a\x0d"), "..nnnnn"},
      {"z\xc3\xa9z", ".Dd."},
      {"\xe3\x81\x82\xf0\xa0\x80\x8b", "DddDddd"},
      {"\xf8\x88\x80\x80\x80z", "Ddddd."},
      {"\xfb\x88\x80\x80\x80z", "Ddddd."},
      {"\xfc\x84\x80\x80\x80\x80z", "Dddddd."},
      {"\xfd\x84\x80\x80\x80\x80z", "Dddddd."},
      {"\x80\xbf\xfe\xff", "iiii"},
      {"\xff\xe3\x81\x82\x82", "iDddi"},
  });
}

TEST(TextMasksOfAnyText, WhateverFollowsALeadByteBelongsToIt) {
  expect_any_text_pictures({
      {"\xc3zz", "Dd."},
      {"\xe3zzz", "Ddd."},
      {"\xe3\xe3\xe3\xe3\xe3\xe3", "DddDdd"},
      {"\xf0\n\x1b\x1czz", "Dddd.."},
      {"\xc3\x1b\xc3\x1c[", "DdDd."},
      {"\xe3\x8e\x8ez", "Ddd."},
      {"\xfd\x0c\x0c\x0c\x0czz", "Dddddd."},
      {"\xe3\x0czz", "Ddd."},
  });
}

TEST(TextMasksOfAnyText, APrefixTakesTheCharacterBehindIt) {
  expect_any_text_pictures({
      {"z\x8e\xb1z", ".ps."},
      {"\x8e\xff\x8e\x0a\x8e\x1b[", "pspsps."},
      {"\x8e\xc3\xa9z", "pss."},
      {"\x8e\xe3\x81\x82z", "psss."},
      {"\x8e\xf0zzzz", "pssss."},
      {"\x8e\xf8zzzzz", "psssss."},
      {"\x8e\xfczzzzzz", "pssssss."},
      {"\x8e\x8e\xb1z", "psi."},
      {"\x8e\x8e\x8e\xb1z", "psps."},
      {"\x8e\xe3\x0czz", "psss."},
  });
}

TEST(TextMasksOfAnyText, StopAtAFormFeedAndAtACharacterThatEndsInOne) {
  expect_any_text_pictures({
      {"z\x0c", ".|"},
      {"z\xc3\x0c", ".|"},
      {"z\xe3\x81\x0c", ".|"},
      {"z\xf0\x81\x81\x0c", ".|"},
      {"z\xf8\x81\x81\x81\x0c", ".|"},
      {"z\xfd\x81\x81\x81\x81\x0c", ".|"},
      {"z\x8e\x0c", ".|"},
      {"z\x8e\xe3\x81\x0c", ".|"},
      {"\x0c", "|"},
  });
}

TEST(TextMasksOfAnyText, StopAtSequences) {
  expect_any_text_pictures({
      {"\x1b[1a", "|"},
      {"z\x1b[1a", ".|"},
      {"\xe3\x81\x82\x1c%1p", "Ddd|"},
  });
}

TEST(TextMasksOfAnyText, StopAtACharacterThatNeedsMoreThanStandsReady) {
  const std::vector<PictureCase> characters{
      {"\xc3\xa9", "Dd"},
      {"\xe3\x81\x82", "Ddd"},
      {"\xf0\xa0\x80\x8b", "Dddd"},
      {"\xf8\x88\x80\x80\x80", "Ddddd"},
      {"\xfc\x84\x80\x80\x80\x80", "Dddddd"},
      {"\x8e\xb1", "ps"},
      {"\x8e\x8e", "ps"},
      {"\x8e\xe3\x81\x82", "psss"},
      {"\x8e\xfc\x84\x80\x80\x80\x80", "pssssss"},
  };
  for (const auto& [character, letters] : characters) {
    for (std::size_t ready = 1; ready <= kBlockBytes; ++ready) {
      for (std::size_t stands = 1; stands <= std::min(ready, character.size()); ++stands) {
        const std::string text = std::string(ready - stands, 'z') + character.substr(0, stands);
        const std::string dots(ready - stands, '.');
        const std::string end = ready < kBlockBytes ? "|" : "";
        EXPECT_EQ(any_text_picture(text, 64),
                  dots + (stands < character.size() ? "|" : letters + end))
            << encode_escaped_line(character) << ' ' << stands << " of " << ready;
      }
    }
  }
}

TEST(TextMasksOfAnyText, NothingStandsReadyOrIsAskedFor) {
  EXPECT_EQ(any_text_picture("", 64), "|");
  EXPECT_EQ(any_text_picture("zz", 0), "|");
}

TEST(TextMasksOfAnyText, StopWhenEnoughIsDescribed) {
  const std::string text = block_of("zz\xe3\x81\x82\x8e\xe3\x81\x82z");
  const std::string picture = "..Dddpsss.......";
  const std::array<std::size_t, 12> described{0, 1, 2, 5, 5, 5, 9, 9, 9, 9, 10, 11};
  for (std::size_t enough = 0; enough < described.size(); ++enough) {
    EXPECT_EQ(any_text_picture(text, enough), picture.substr(0, described[enough]) + "|") << enough;
  }
}

// Both

/// Bytes at which a description changes its mind.
std::string adversarial_bytes(std::mt19937& generator, std::size_t count) {
  static const std::string kinds = bytes(
      "\0\x0a\x0c\x0d\x1a\x1b\x1c\x1d\x1f\x20\x41\x7e\x7f\x80\x8d\x8e\x8f\xbf\xc0\xdf\xe0\xef\xf0"
      "\xf7\xf8\xfb\xfc\xfd\xfe\xff");
  std::string all(count, ' ');
  std::generate(all.begin(), all.end(), [&] { return kinds[generator() % kinds.size()]; });
  return all;
}

/// Mostly whole characters, so that the descriptions come far.
std::string mostly_whole_characters(std::mt19937& generator) {
  static const std::array<std::string, 9> characters{
      "A",    "\n",       "\xc3\xa9", "\xe3\x81\x82", "\xf0\xa0\x80\x8b",
      "\xff", "\x8e\xb1", "\x1b[1a",  "\x80"};
  static const std::array<std::string, 6> seldom{"\xf8\x88\x80\x80\x80",
                                                 "\xfc\x84\x80\x80\x80\x80",
                                                 "\x8e\xe3\x81\x82",
                                                 "\x8e\x8e",
                                                 "\xe3z",
                                                 "\x0c"};
  const std::size_t oddness = generator() % 30;
  std::string all;
  while (all.size() < kBlockBytes) {
    const std::size_t kind = generator() % 100;
    if (kind < oddness / 2) {
      all += adversarial_bytes(generator, 1 + generator() % 3);
    } else if (kind < oddness) {
      all += seldom[generator() % seldom.size()];
    } else {
      all += characters[generator() % characters.size()];
    }
  }
  all.resize(kBlockBytes);
  return all;
}

/// The letters that both pictures have.
std::size_t described_by_both(std::string_view one, std::string_view other) {
  return std::min(one.size(), other.size()) - (one.ends_with('|') || other.ends_with('|') ? 1 : 0);
}

void expect_true_pictures(const std::string& block, std::mt19937& generator) {
  SCOPED_TRACE(encode_escaped_line(block));
  const std::string of_text = text_picture(block);
  const std::string of_any_text = any_text_picture(block, 64);
  ASSERT_EQ(of_text, slow_text_picture(block));
  ASSERT_EQ(of_any_text, slow_any_text_picture(block, 64));
  const std::size_t ready = generator() % (kBlockBytes + 1);
  const std::size_t enough = generator() % (kBlockBytes + 1);
  ASSERT_EQ(any_text_picture(block.substr(0, ready), enough),
            slow_any_text_picture(block.substr(0, ready), enough))
      << ready << ' ' << enough;
  const std::size_t both = described_by_both(of_text, of_any_text);
  ASSERT_EQ(of_text.substr(0, both), of_any_text.substr(0, both));
}

TEST(TextMasksOfBoth, RandomBlocks) {
  std::mt19937 generator(8);
  for (int round = 0; round < 3000; ++round) {
    ASSERT_NO_FATAL_FAILURE(
        expect_true_pictures(adversarial_bytes(generator, kBlockBytes), generator));
    ASSERT_NO_FATAL_FAILURE(expect_true_pictures(mostly_whole_characters(generator), generator));
  }
}

TEST(TextMasksOfBoth, EveryPairOfBytesAtEveryKindOfPlace) {
  std::mt19937 generator(9);
  for (int first = 0; first < 256; ++first) {
    for (const int second : {0x00, 0x0a, 0x0c, 0x1b, 0x41, 0x7f, 0x80, 0x8e, 0xbf, 0xc0, 0xe3, 0xf7,
                             0xf8, 0xfd, 0xfe, 0xff}) {
      const std::string pair{static_cast<char>(first), static_cast<char>(second)};
      const std::size_t at = generator() % (kBlockBytes - 1);
      std::string block(kBlockBytes, 'A');
      block.replace(at, 2, pair);
      ASSERT_NO_FATAL_FAILURE(expect_true_pictures(block, generator));
    }
  }
}

}  // namespace
}  // namespace rlx::testing
