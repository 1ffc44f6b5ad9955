#include "driver/fast_road/block_plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "driver/fast_road/line_feeds.h"
#include "input/byte_block.h"
#include "support/guarded_bytes.h"
#include "support/main_loop_fixture.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

bool is_set(ByteMask mask, std::size_t at) {
  return (mask >> at & 1) != 0;
}

// Where the set changes

/// A number below another one.
std::size_t random_below(std::mt19937_64& generator, std::size_t count) {
  return static_cast<std::size_t>(generator() % count);
}

/// Bytes of the double-byte set, bytes that leave the set alone, and others, at random.
BlockPlan random_kinds(std::mt19937_64& generator) {
  BlockPlan plan;
  const bool seldom = generator() % 2 == 0;
  plan.text.double_byte = generator() & (seldom ? generator() : ~ByteMask{0});
  plan.text.neutral = generator() | (generator() % 2 == 0 ? generator() : 0);
  plan.text.length = random_below(generator, kBlockBytes + 1);
  // From the length on the masks mean nothing, and may contradict one another.
  plan.text.neutral &= ~(plan.text.double_byte & bits_below(plan.text.length));
  return plan;
}

void expect_true_borders(const BlockPlan& plan, bool was_double) {
  bool is_double = was_double;
  for (std::size_t at = 0; at < kBlockBytes; ++at) {
    const bool before = is_double;
    if (at < plan.length() && !is_set(plan.text.neutral, at)) {
      is_double = is_set(plan.text.double_byte, at);
    }
    ASSERT_EQ(is_set(plan.border, at), is_double != before) << at;
    if (at < plan.length()) {
      ASSERT_EQ(is_set(plan.set, at), is_double) << at;
    }
  }
}

TEST(BlockPlanBorders, AreWhereTheSetChanges) {
  std::mt19937_64 generator(12);
  for (int round = 0; round < 5000; ++round) {
    BlockPlan plan = random_kinds(generator);
    for (const bool was_double : {false, true}) {
      plan.find_borders(was_double);
      ASSERT_NO_FATAL_FAILURE(expect_true_borders(plan, was_double)) << round;
    }
  }
}

TEST(BlockPlanBorders, NeutralBytesLeaveTheSetAlone) {
  BlockPlan plan;
  plan.text.length = kBlockBytes;
  plan.text.neutral = ~ByteMask{0};
  plan.find_borders(true);
  EXPECT_EQ(plan.border, 0U);
  EXPECT_EQ(plan.set, ~ByteMask{0});
  plan.find_borders(false);
  EXPECT_EQ(plan.border, 0U);
  EXPECT_EQ(plan.set, 0U);
  // The switch stands in front of the text behind them.
  plan.text.neutral = bits_below(63);
  plan.find_borders(true);
  EXPECT_EQ(plan.border, ByteMask{1} << 63);
  plan.text.double_byte = ByteMask{1} << 63;
  plan.find_borders(true);
  EXPECT_EQ(plan.border, 0U);
  plan.find_borders(false);
  EXPECT_EQ(plan.border, ByteMask{1} << 63);
}

TEST(BlockPlanBorders, FirstAndLastByte) {
  for (std::size_t length = 1; length <= kBlockBytes; ++length) {
    BlockPlan plan;
    plan.text.length = length;
    plan.find_borders(true);
    EXPECT_EQ(plan.border, 1U) << length;
    plan.text.double_byte = ~ByteMask{0};
    plan.find_borders(false);
    EXPECT_EQ(plan.border, 1U) << length;
    plan.text.double_byte = ByteMask{1} << (length - 1);
    plan.find_borders(false);
    EXPECT_EQ(plan.border, ByteMask{1} << (length - 1)) << length;
  }
}

// What is put out

enum class PieceKind : std::uint8_t {
  single,
  neutral,
  invalid,
  wide,
  shifted,
  line_feed,
  sequence
};

struct PlannedPiece {
  PieceKind kind;
  std::size_t length;
};

/// A block, its plan, and the pieces that it was made of.
struct PlannedBlock {
  std::vector<PlannedPiece> pieces;
  std::string bytes;
  BlockPlan plan;
  bool was_double = false;
};

/// What comes of the first pieces, made byte by byte.
std::string naive_output(const PlannedBlock& block, std::size_t pieces, std::string_view pitch) {
  std::string output;
  bool is_double = block.was_double;
  const auto select = [&](bool wanted, std::string_view set_switch) {
    output += is_double == wanted ? "" : set_switch;
    is_double = wanted;
  };
  std::size_t at = 0;
  for (const PlannedPiece& piece : std::span(block.pieces).first(pieces)) {
    std::string bytes = block.bytes.substr(at, piece.length);
    at += piece.length;
    switch (piece.kind) {
      case PieceKind::single:
        select(false, "\x1bQ1 y\x1b(H");
        break;
      case PieceKind::shifted:
        select(false, "\x1bQ1 y\x1b(H");
        bytes.erase(0, 1);
        break;
      case PieceKind::invalid:
        select(false, "\x1b(H");
        break;
      case PieceKind::wide:
        select(true, "\x1bQ2 y\x1b$@");
        break;
      case PieceKind::line_feed:
        bytes = "\n" + std::string(pitch);
        break;
      case PieceKind::neutral:
      case PieceKind::sequence:
        break;
    }
    output += bytes;
  }
  return output;
}

/// Describes one more piece behind the others.
void add_to_plan(BlockPlan& plan, PlannedPiece piece) {
  const std::size_t at = plan.text.length;
  const ByteMask first = ByteMask{1} << at;
  const ByteMask all = bits_below(at + piece.length) & ~bits_below(at);
  plan.text.inside |= all & ~first;
  switch (piece.kind) {
    case PieceKind::single:
      break;
    case PieceKind::shifted:
      plan.text.prefix |= first;
      break;
    case PieceKind::invalid:
      plan.text.invalid |= first;
      break;
    case PieceKind::wide:
      plan.text.double_byte |= all;
      break;
    case PieceKind::line_feed:
      plan.line_feed |= first;
      plan.text.neutral |= all;
      break;
    case PieceKind::neutral:
    case PieceKind::sequence:
      plan.text.neutral |= all;
      break;
  }
  plan.text.length += piece.length;
}

PlannedPiece random_piece(std::mt19937_64& generator, const std::vector<PieceKind>& kinds) {
  const PieceKind kind = kinds[random_below(generator, kinds.size())];
  switch (kind) {
    case PieceKind::wide:
      return {kind, 2 + random_below(generator, 5)};
    case PieceKind::shifted:
      return {kind, 2 + random_below(generator, 6)};
    case PieceKind::sequence:
      return {kind, 2 + random_below(generator, 30)};
    default:
      return {kind, 1};
  }
}

/// From the length on the masks mean nothing.
void spoil_behind_length(BlockPlan& plan, std::mt19937_64& generator) {
  const ByteMask behind = ~bits_below(plan.length());
  for (ByteMask* const mask : {&plan.text.double_byte, &plan.text.neutral, &plan.text.invalid,
                               &plan.text.inside, &plan.text.prefix, &plan.line_feed}) {
    *mask |= generator() & behind;
  }
}

/// A block of input, and as much behind it.
std::string random_bytes(std::mt19937_64& generator) {
  std::string bytes(2 * kBlockBytes, ' ');
  std::generate(bytes.begin(), bytes.end(),
                [&generator] { return static_cast<char>(generator()); });
  return bytes;
}

PlannedBlock random_planned_block(std::mt19937_64& generator, const std::vector<PieceKind>& kinds) {
  PlannedBlock block;
  block.was_double = generator() % 2 == 0;
  const std::size_t longest =
      generator() % 2 == 0 ? kBlockBytes : 1 + random_below(generator, kBlockBytes);
  for (;;) {
    const PlannedPiece piece = random_piece(generator, kinds);
    if (block.plan.length() + piece.length > longest) {
      break;
    }
    block.pieces.push_back(piece);
    add_to_plan(block.plan, piece);
  }
  block.bytes = random_bytes(generator);
  spoil_behind_length(block.plan, generator);
  block.plan.find_borders(block.was_double);
  return block;
}

class BlockPlanOutput : public MainLoopTest {
 protected:
  /// LFs that get the pitch of six lines per inch, of eight, and none.
  static LineFeeds line_feeds_of_form(std::uint32_t lines_per_inch) {
    use_form({lines_per_inch, lines_per_inch, lines_per_inch}, 1);
    LineFeeds line_feeds(the_filter().loop);
    EXPECT_EQ(line_feeds.prepare(), 2U);
    return line_feeds;
  }
  static LineFeeds plain_line_feeds() { return LineFeeds(the_filter().loop); }

  /// What put_block writes; nothing but kPutSlack bytes behind it may change.
  std::string put(const PlannedBlock& block, const LineFeeds& line_feeds) {
    constexpr std::uint8_t kUntouched = 0xa5;
    std::vector<std::uint8_t> room(kMostOutput + 2 * kPutSlack, kUntouched);
    const std::uint8_t* const bytes = guarded_.at_end(block.bytes);
    const std::uint8_t* const end = put_block(bytes, block.plan, line_feeds, room.data() + 1);
    const auto length = end - room.data();
    EXPECT_EQ(room.front(), kUntouched);
    EXPECT_TRUE(std::all_of(room.begin() + length + static_cast<std::ptrdiff_t>(kPutSlack),
                            room.end(), [](int byte) { return byte == kUntouched; }));
    return {room.begin() + 1, room.begin() + length};
  }

  void expect_naive_output(const PlannedBlock& block, const LineFeeds& line_feeds,
                           std::string_view pitch) {
    const std::string wanted = naive_output(block, block.pieces.size(), pitch);
    ASSERT_LE(wanted.size(), kMostOutput);
    if (block.plan.insertions() != 0) {
      ASSERT_EQ(put(block, line_feeds), wanted);
    } else {
      ASSERT_EQ(block.bytes.substr(0, block.plan.length()), wanted);
    }
    expect_true_lengths(block, line_feeds, pitch);
  }

  /// The length of what comes of each number of pieces, and how many fit in each room.
  static void expect_true_lengths(const PlannedBlock& block, const LineFeeds& line_feeds,
                                  std::string_view pitch) {
    std::size_t room = 0;
    std::size_t at = 0;
    for (std::size_t pieces = 0; pieces < block.pieces.size(); ++pieces) {
      const std::size_t next = at + block.pieces[pieces].length;
      const std::size_t needed = naive_output(block, pieces + 1, pitch).size();
      ASSERT_EQ(block.plan.output_length(next, line_feeds), needed) << pieces;
      for (; room < needed; ++room) {
        ASSERT_EQ(block.plan.fitting(room, line_feeds), at) << room;
      }
      at = next;
    }
    for (const std::size_t more : {0U, 1U, 8192U}) {
      ASSERT_EQ(block.plan.fitting(room + more, line_feeds), at) << room;
    }
    ASSERT_EQ(block.plan.output_length(0, line_feeds), 0U);
  }

  void expect_random_blocks(const std::vector<PieceKind>& kinds, const LineFeeds& line_feeds,
                            std::string_view pitch) {
    std::mt19937_64 generator(kinds.size() + pitch.size());
    for (int round = 0; round < 80; ++round) {
      const PlannedBlock block = random_planned_block(generator, kinds);
      ASSERT_NO_FATAL_FAILURE(expect_naive_output(block, line_feeds, pitch)) << round;
    }
  }

 private:
  GuardedBytes guarded_;
};

TEST_F(BlockPlanOutput, WholeSwitchesAlone) {
  const LineFeeds line_feeds = plain_line_feeds();
  for (const std::vector<PieceKind>& kinds : std::vector<std::vector<PieceKind>>{
           {PieceKind::single, PieceKind::wide},
           {PieceKind::single, PieceKind::wide, PieceKind::neutral},
           {PieceKind::single, PieceKind::single, PieceKind::single, PieceKind::sequence,
            PieceKind::sequence, PieceKind::wide},
           {PieceKind::wide},
           {PieceKind::single}}) {
    expect_random_blocks(kinds, line_feeds, "");
  }
}

TEST_F(BlockPlanOutput, EveryNumberOfSwitches) {
  const LineFeeds line_feeds = plain_line_feeds();
  std::mt19937_64 generator(5);
  for (std::size_t switches = 1; switches <= 42; ++switches) {
    for (const bool was_double : {false, true}) {
      PlannedBlock block;
      block.bytes = random_bytes(generator);
      block.was_double = was_double;
      for (std::size_t i = 0; i < switches; ++i) {
        const bool wide = (i % 2 == 0) != was_double;
        block.pieces.push_back(wide ? PlannedPiece{PieceKind::wide, 2}
                                    : PlannedPiece{PieceKind::single, 1});
        add_to_plan(block.plan, block.pieces.back());
      }
      block.plan.find_borders(was_double);
      ASSERT_EQ(count_bits(block.plan.border), switches);
      ASSERT_NO_FATAL_FAILURE(expect_naive_output(block, line_feeds, "")) << switches;
    }
  }
}

TEST_F(BlockPlanOutput, ASwitchOfThreeBytesInFrontOfAnInvalidByte) {
  PlannedBlock block;
  block.bytes = "\xe3\x81\x82\xff\xe3\x81\x82z\xfe" + std::string(2 * kBlockBytes, 'A');
  block.bytes.resize(2 * kBlockBytes);
  block.pieces = {{PieceKind::wide, 3},
                  {PieceKind::invalid, 1},
                  {PieceKind::wide, 3},
                  {PieceKind::single, 1},
                  {PieceKind::invalid, 1}};
  for (const PlannedPiece& piece : block.pieces) {
    add_to_plan(block.plan, piece);
  }
  block.plan.find_borders(false);
  const LineFeeds line_feeds = plain_line_feeds();
  EXPECT_EQ(put(block, line_feeds),
            "\x1bQ2 y\x1b$@\xe3\x81\x82\x1b(H\xff\x1bQ2 y\x1b$@\xe3\x81\x82\x1bQ1 y\x1b(Hz\xfe");
  EXPECT_EQ(block.plan.output_length(9, line_feeds), 9U + 8 + 3 + 8 + 8);
}

TEST_F(BlockPlanOutput, PrefixesAreLeftOut) {
  PlannedBlock block;
  block.bytes = "\x8e\xb1z\xe3\x81\x82\x8e\x8e\x8e\xe3\x81\x82" + std::string(2 * kBlockBytes, 'A');
  block.bytes.resize(2 * kBlockBytes);
  block.pieces = {{PieceKind::shifted, 2},
                  {PieceKind::single, 1},
                  {PieceKind::wide, 3},
                  {PieceKind::shifted, 2},
                  {PieceKind::shifted, 4}};
  for (const PlannedPiece& piece : block.pieces) {
    add_to_plan(block.plan, piece);
  }
  block.plan.find_borders(true);
  const LineFeeds line_feeds = plain_line_feeds();
  EXPECT_EQ(put(block, line_feeds),
            "\x1bQ1 y\x1b(H\xb1z\x1bQ2 y\x1b$@\xe3\x81\x82\x1bQ1 y\x1b(H\x8e\xe3\x81\x82");
  EXPECT_EQ(block.plan.output_length(12, line_feeds), 12U - 3 + 3 * 8);
}

TEST_F(BlockPlanOutput, LineFeedsGetTheirPitch) {
  PlannedBlock block;
  block.bytes = "a\n\xe3\x81\x82\n\nb" + std::string(2 * kBlockBytes, 'A');
  block.bytes.resize(2 * kBlockBytes);
  block.pieces = {{PieceKind::single, 1},    {PieceKind::line_feed, 1}, {PieceKind::wide, 3},
                  {PieceKind::line_feed, 1}, {PieceKind::line_feed, 1}, {PieceKind::single, 1}};
  for (const PlannedPiece& piece : block.pieces) {
    add_to_plan(block.plan, piece);
  }
  block.plan.find_borders(false);
  const LineFeeds line_feeds = line_feeds_of_form(8);
  EXPECT_EQ(put(block, line_feeds),
            "a\n\x1c%) p\x1bQ2 y\x1b$@\xe3\x81\x82\n\x1c%) p\n\x1c%) p\x1bQ1 y\x1b(H"
            "b");
  EXPECT_EQ(block.plan.output_length(8, line_feeds), 8U + 3 * 5 + 2 * 8);
}

TEST_F(BlockPlanOutput, InsertionsOfAllKindsAtRandom) {
  const std::vector<PieceKind> all{PieceKind::single,   PieceKind::neutral, PieceKind::invalid,
                                   PieceKind::wide,     PieceKind::shifted, PieceKind::line_feed,
                                   PieceKind::sequence, PieceKind::wide,    PieceKind::single};
  const std::vector<PieceKind> small{PieceKind::single, PieceKind::invalid, PieceKind::line_feed};
  const std::vector<PieceKind> mostly_plain(
      {PieceKind::single, PieceKind::single, PieceKind::single, PieceKind::sequence,
       PieceKind::sequence, PieceKind::line_feed, PieceKind::shifted});
  for (const std::vector<PieceKind>& kinds : {all,
                                              small,
                                              mostly_plain,
                                              {PieceKind::line_feed},
                                              {PieceKind::shifted},
                                              {PieceKind::wide, PieceKind::invalid}}) {
    expect_random_blocks(kinds, line_feeds_of_form(6), kSixLines);
    expect_random_blocks(kinds, line_feeds_of_form(8), kEightLines);
  }
}

TEST_F(BlockPlanOutput, ALineFeedMayGetNoPitch) {
  the_filter().command_line.lines_per_page = 5;
  LineFeeds line_feeds(the_filter().loop);
  ASSERT_FALSE(line_feeds.are_plain());
  ASSERT_EQ(line_feeds.prepare(), 4U);
  expect_random_blocks({PieceKind::line_feed, PieceKind::single, PieceKind::wide}, line_feeds, "");
}

}  // namespace
}  // namespace rlx::testing
