#include "driver/fast_road/kept_later.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "job/command_record.h"
#include "support/filter_state.h"
#include "support/page_data.h"
#include "support/printer_blocks.h"
#include "support/the_filter.h"

namespace rlx::testing {
namespace {

struct Setting {
  std::uint32_t command;
  std::string sequence;
};

/// One of every place, of the general buffer, and of none.
const std::vector<Setting>& settings_of_every_place() {
  static const std::vector<Setting> settings{
      {CMD_ESC_DOLLAR_AT, "\x1b$@"}, {CMD_ESC_PAREN_H, "\x1b(H"}, {CMD_FS_J, "\x1cJ"},
      {CMD_FS_K, "\x1cK"},           {CMD_FS_PAREN, "\x1c(`1p"},  {CMD_FS_PAREN, "\x1c(a1p"},
      {CMD_FS_PAREN, "\x1c(b1p"},    {CMD_FS_PAREN, "\x1c("},     {CMD_CSI_SP_E, "\x1b[5 E"},
      {CMD_Q_YL_SP, "\x1bQ1 y"},     {CMD_Q_FL_EX, "\x1bQ2!f"},   {CMD_Q_PL_SP, "\x1bQ3 p"},
      {CMD_Q_E_SL, "\x1bQ4/E"},      {CMD_Q_F_SL, "\x1bQ5/F"},    {CMD_Q_G_SL, "\x1bQ6/G"},
      {CMD_FS_PERCENT, "\x1c%!\"p"}, {CMD_FS_DOLLAR, "\x1c$!p"},  {CMD_FS_AMP, "\x1c&!p"},
      {CMD_FS_STAR, "\x1c*!p"},      {CMD_Q_R_EX, "\x1bQ7!R"},    {CMD_FS_QUOTE, "\x1c\"\"p"},
      {CMD_Q_YL_EX, "\x1bQ8!y"},     {CMD_TEXT_BAD, "\xfe"},
  };
  return settings;
}

/// What the carried-settings block says; nothing is kept afterwards.
std::string kept_block() {
  return output_of([] { out_kept_settings(the_filter().carried); });
}

/// What the block says when each setting is kept at once.
std::string kept_at_once(const std::vector<Setting>& settings) {
  for (const Setting& setting : settings) {
    keep(setting.command, setting.sequence);
  }
  return kept_block();
}

void keep_later(KeptLater& later, const Setting& setting) {
  later.keep(setting.command, bytes_of(setting.sequence));
}

/// The same by way of KeptLater, which hands on behind every `every`-th setting and at the end.
std::string kept_later(const std::vector<Setting>& settings, std::size_t every) {
  KeptLater later(the_filter().carried);
  for (std::size_t i = 0; i < settings.size(); ++i) {
    keep_later(later, settings[i]);
    if (i % every == every - 1) {
      later.keep_now();
    }
  }
  later.keep_now();
  return kept_block();
}

class KeptLaterTest : public FilterTest {};

TEST_F(KeptLaterTest, EachSettingAloneIsKeptAsAtOnce) {
  for (const Setting& setting : settings_of_every_place()) {
    EXPECT_EQ(kept_later({setting}, 1), kept_at_once({setting})) << setting.command;
  }
}

TEST_F(KeptLaterTest, NothingIsWrittenBeforeItIsHandedOn) {
  const Setting setting{CMD_ESC_PAREN_H, "\x1b(H"};
  KeptLater later(the_filter().carried);
  keep_later(later, setting);
  EXPECT_EQ(kept_block(), "");
  later.keep_now();
  EXPECT_EQ(kept_block(), block('6', "\x1b(H"));
}

TEST_F(KeptLaterTest, TheLastSettingOfAPlaceCounts) {
  EXPECT_EQ(kept_later({{CMD_ESC_DOLLAR_AT, "\x1b$@"},
                        {CMD_ESC_PAREN_H, "\x1b(H"},
                        {CMD_ESC_DOLLAR_AT, "\x1b$@"}},
                       100),
            block('6', "\x1b$@"));
  EXPECT_EQ(kept_later({{CMD_ESC_DOLLAR_AT, "\x1b$@"}, {CMD_ESC_PAREN_H, "\x1b(H"}}, 100),
            block('6', "\x1b(H"));
}

TEST_F(KeptLaterTest, SettingsThatAddUpAllCount) {
  EXPECT_EQ(
      kept_later({{CMD_FS_DOLLAR, "\x1c$1p"}, {CMD_FS_DOLLAR, "\x1c$2p"}, {CMD_Q_R_EX, "\x1bQ7!R"}},
                 100),
      block('6', "\x1c$1p\x1c$2p\x1bQ7!R"));
}

TEST_F(KeptLaterTest, ASettingThatIsTooLongLeavesTheEarlierOne) {
  for (std::size_t length = 15; length <= 25; ++length) {
    const Setting wide{CMD_FS_PERCENT, "\x1c%" + std::string(length - 3, '1') + "p"};
    const std::vector<Setting> settings{{CMD_FS_PERCENT, "\x1c%2p"}, wide};
    const std::string_view kept = length <= 19 ? std::string_view(wide.sequence) : "\x1c%2p";
    EXPECT_EQ(kept_later(settings, 100), block('6', kept)) << length;
    EXPECT_EQ(kept_later(settings, 1), block('6', kept)) << length;
  }
}

TEST_F(KeptLaterTest, WhatIsHandedOnIsNotHandedOnAgain) {
  std::string bytes = "\x1bQ1 y";
  KeptLater later(the_filter().carried);
  later.keep(CMD_Q_YL_SP, bytes_of(bytes));
  later.keep_now();
  bytes = "\x1bQ2 y";
  later.keep_now();
  EXPECT_EQ(kept_block(), block('6', "\x1bQ1 y"));
  later.keep_now();
  EXPECT_EQ(kept_block(), "");
}

TEST_F(KeptLaterTest, AgreesOnAnyOrderHoweverOftenItIsHandedOn) {
  std::mt19937 generator(23);
  const std::vector<Setting>& every_place = settings_of_every_place();
  for (std::size_t round = 0; round < 2000; ++round) {
    std::vector<Setting> settings;
    for (std::size_t i = 1 + generator() % 40; i > 0; --i) {
      Setting setting = every_place[generator() % every_place.size()];
      setting.sequence.insert(setting.sequence.size() - 1, generator() % 22, '9');
      settings.push_back(std::move(setting));
    }
    ASSERT_EQ(kept_later(settings, 1 + round % 9), kept_at_once(settings)) << round;
  }
}

}  // namespace
}  // namespace rlx::testing
