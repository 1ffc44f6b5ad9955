#include "driver/fast_road/byte_kinds.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "driver/loop/loop_state.h"
#include "driver/loop/routing.h"
#include "input/classifier.h"
#include "input/raw_input.h"
#include "input/tokenizer.h"
#include "job/settings.h"
#include "job/status.h"
#include "support/filter_state.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

class ByteKinds : public FilterTest {
 protected:
  /// Reads the command that begins with a byte, text standing behind it.
  CommandRecord& read(std::size_t byte) {
    reset_filter();
    job_ = std::string(1, static_cast<char>(byte)) + "AAAAAAAA";
    the_filter().source.raw.window.next = reinterpret_cast<const std::uint8_t*>(job_.data());
    the_filter().source.raw.window.end = the_filter().source.raw.window.next + job_.size();
    EXPECT_EQ(zqclass(the_filter().classifier, &the_filter().loop.record), ST_OK);
    return the_filter().loop.record;
  }

  std::string job_;
};

/// The class that the code of a byte's command asks for.
ByteClass class_for(std::uint32_t code) {
  switch (code) {
    case CMD_LF:
      return ByteClass::lf;
    case CMD_FF:
      return ByteClass::other;
    case CMD_CR:
      return ByteClass::cr;
    case CMD_CTRL:
    case CMD_DEL:
      return ByteClass::control;
    case CMD_TEXT_ASCII:
      return ByteClass::printable;
    case CMD_TEXT_MB:
      return ByteClass::lead;
    case CMD_TEXT_SS2:
      return ByteClass::shift;
    case CMD_TEXT_BAD:
      return ByteClass::invalid;
    default:
      return ByteClass::sequence;
  }
}

TEST_F(ByteKinds, EveryByteIsOfTheClassOfItsCommand) {
  for (std::size_t byte = 0; byte < 256; ++byte) {
    const std::uint32_t code = read(byte).code;
    EXPECT_EQ(kind_of(static_cast<std::uint8_t>(byte)).byte_class, class_for(code)) << byte;
    EXPECT_EQ(class_for(code) == ByteClass::sequence, byte == 0x1b || byte == 0x1c) << byte;
  }
}

TEST_F(ByteKinds, EveryCharacterHasItsLength) {
  for (std::size_t byte = 0; byte < 256; ++byte) {
    const ByteKind kind = kind_of(static_cast<std::uint8_t>(byte));
    // Of a sequence and of the prefix the byte alone counts.
    const bool alone =
        kind.byte_class == ByteClass::sequence || kind.byte_class == ByteClass::shift;
    EXPECT_EQ(kind.length, alone ? 1 : read(byte).length) << byte;
  }
}

TEST_F(ByteKinds, SingleBytesAreThoseBetweenSequencesAndLeadBytes) {
  for (std::size_t byte = 0; byte < 256; ++byte) {
    const ByteClass byte_class = kind_of(static_cast<std::uint8_t>(byte)).byte_class;
    const bool begins_more = byte == 0x0c || byte == 0x1b || byte == 0x1c || byte == 0x8e ||
                             (byte >= 0xc0 && byte <= 0xfd);
    EXPECT_EQ(is_single(byte_class), !begins_more) << byte;
  }
}

TEST_F(ByteKinds, WhatBringsContentAndStartsThePageIsWhatTheRoutingSays) {
  for (std::size_t byte = 0; byte < 256; ++byte) {
    const auto byte_class =
        static_cast<std::size_t>(kind_of(static_cast<std::uint8_t>(byte)).byte_class);
    if (byte == 0x0c || byte == 0x1b || byte == 0x1c) {
      continue;
    }
    read(byte);
    the_filter().loop.fast_road = false;
    ASSERT_EQ(the_filter().job.page_has_content, 0);
    ASSERT_EQ(the_filter().job.page_started, 0);
    ASSERT_TRUE(route_record(the_filter().loop));
    EXPECT_EQ(kBringsContent[byte_class], the_filter().loop.content_since_conditions) << byte;
    EXPECT_EQ(kBringsContent[byte_class], the_filter().job.page_has_content != 0) << byte;
    EXPECT_EQ(kStartsPage[byte_class], the_filter().job.page_started != 0) << byte;
  }
}

}  // namespace
}  // namespace rlx::testing
