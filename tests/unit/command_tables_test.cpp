#include "input/command_tables.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

namespace rlx {
namespace {

template <typename Table>
void expect_no_key_twice(const Table& table) {
  std::set<std::uint32_t> keys;
  for (const auto& row : table) {
    EXPECT_TRUE(keys.insert(row.key).second) << row.key;
  }
  EXPECT_GE(table.back().key, 255U);
  EXPECT_EQ(keys.count(kNoKey), 1U);
}

template <const auto& Table>
void expect_each_row_found() {
  std::set<std::uint32_t> keys;
  for (std::size_t i = 0; i + 1 < Table.size(); ++i) {
    EXPECT_EQ(&row_of<Table>(static_cast<std::uint8_t>(Table[i].key)), &Table[i]);
    keys.insert(Table[i].key);
  }
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    if (!keys.contains(byte)) {
      EXPECT_EQ(&row_of<Table>(static_cast<std::uint8_t>(byte)), &Table.back()) << byte;
    }
  }
}

TEST(CommandTables, NoKeyStandsTwiceAndTheLastRowHasNone) {
  expect_no_key_twice(kFirstByteTable);
  expect_no_key_twice(kEscTable);
  expect_no_key_twice(kCsiTable);
  expect_no_key_twice(kFsTable);
  expect_no_key_twice(kQTable);
}

TEST(CommandTables, EveryByteFindsItsRowOrTheLastOne) {
  expect_each_row_found<kFirstByteTable>();
  expect_each_row_found<kEscTable>();
  expect_each_row_found<kCsiTable>();
  expect_each_row_found<kFsTable>();
  expect_each_row_found<kQTable>();
}

TEST(CommandTables, TheTablesHaveAllTheirRows) {
  EXPECT_EQ(kFirstByteTable.size(), 7U);
  EXPECT_EQ(kEscTable.size(), 7U);
  EXPECT_EQ(kCsiTable.size(), 6U);
  EXPECT_EQ(kFsTable.size(), 9U);
  EXPECT_EQ(kQTable.size(), 41U);
}

TEST(CommandTables, NoCodeIsMadeInTwoWaysButThatOfPAndTilde) {
  std::multiset<std::uint32_t> codes;
  for (const QRow& row : kQTable) {
    codes.insert({row.code_space, row.code_exclamation, row.code_slash});
  }
  for (const std::uint32_t code : codes) {
    if (code != CMD_IGNORE) {
      EXPECT_EQ(codes.count(code), code == CMD_Q_PL_EX || code == CMD_Q_TILDE_SP ? 2U : 1U) << code;
    }
  }
}

struct NamedCode {
  CommandCode name;
  std::uint32_t number;
};

TEST(CommandTables, TheNamesHaveTheirNumbers) {
  for (const NamedCode code : {
           NamedCode{CMD_CTRL, 256},        NamedCode{CMD_LF, 260},
           NamedCode{CMD_FF, 262},          NamedCode{CMD_CR, 263},
           NamedCode{CMD_DEL, 268},         NamedCode{CMD_ESC_DOLLAR_AT, 289},
           NamedCode{CMD_ESC_PAREN_H, 292}, NamedCode{CMD_ESC_C, 298},
           NamedCode{CMD_ESC_DEL4, 302},    NamedCode{CMD_FS_QUOTE, 322},
           NamedCode{CMD_FS_DOLLAR, 324},   NamedCode{CMD_FS_PERCENT, 325},
           NamedCode{CMD_FS_AMP, 326},      NamedCode{CMD_FS_PAREN, 328},
           NamedCode{CMD_FS_STAR, 330},     NamedCode{CMD_FS_J, 347},
           NamedCode{CMD_FS_K, 348},        NamedCode{CMD_CSI_BQ, 385},
           NamedCode{CMD_CSI_AL, 386},      NamedCode{CMD_CSI_DL, 387},
           NamedCode{CMD_CSI_EL, 388},      NamedCode{CMD_CSI_SP_E, 396},
           NamedCode{CMD_Q_NL_SP9, 416},    NamedCode{CMD_Q_Y_EX, 428},
           NamedCode{CMD_Q_PL_SP, 437},     NamedCode{CMD_Q_XL_SP, 440},
           NamedCode{CMD_Q_YL_SP, 441},     NamedCode{CMD_Q_AT_EX, 445},
           NamedCode{CMD_Q_A_EX, 446},      NamedCode{CMD_Q_C_EX, 448},
           NamedCode{CMD_Q_D_EX, 449},      NamedCode{CMD_Q_H_EX, 453},
           NamedCode{CMD_Q_AL_EX, 456},     NamedCode{CMD_Q_JL_EX, 457},
           NamedCode{CMD_Q_KL_EX, 458},     NamedCode{CMD_Q_LL_EX, 459},
           NamedCode{CMD_Q_ML_EX, 460},     NamedCode{CMD_Q_NL_EX, 461},
           NamedCode{CMD_Q_PL_EX, 462},     NamedCode{CMD_Q_QL_EX, 463},
           NamedCode{CMD_Q_SL_EX, 464},     NamedCode{CMD_Q_UL_EX, 465},
           NamedCode{CMD_Q_VL_EX, 466},     NamedCode{CMD_Q_XL_EX, 468},
           NamedCode{CMD_Q_YL_EX, 469},     NamedCode{CMD_Q_ZL_EX, 470},
           NamedCode{CMD_Q_TILDE_SP, 474},  NamedCode{CMD_Q_DEL_EX, 475},
           NamedCode{CMD_Q_F_EX, 476},      NamedCode{CMD_Q_I_EX, 478},
           NamedCode{CMD_Q_NL_SP, 482},     NamedCode{CMD_Q_NL_SP2, 483},
           NamedCode{CMD_Q_TILDE_SL, 485},  NamedCode{CMD_Q_W_EX, 486},
           NamedCode{CMD_Q_R_EX, 493},      NamedCode{CMD_Q_X_EX, 494},
           NamedCode{CMD_Q_BSL_EX, 495},    NamedCode{CMD_Q_BL_EX, 496},
           NamedCode{CMD_Q_CL_EX, 497},     NamedCode{CMD_Q_FL_EX, 498},
           NamedCode{CMD_Q_OL_SP, 500},     NamedCode{CMD_Q_RBR_EX, 506},
           NamedCode{CMD_Q_BAR_SL, 509},    NamedCode{CMD_Q_E_SL, 510},
           NamedCode{CMD_Q_F_SL, 511},      NamedCode{CMD_TEXT_ASCII, 512},
           NamedCode{CMD_Q_G_SL, 513},      NamedCode{CMD_Q_H_SL, 514},
           NamedCode{CMD_Q_I_SL, 515},      NamedCode{CMD_Q_U_SL, 516},
           NamedCode{CMD_Q_V_SL, 517},      NamedCode{CMD_Q_W_SL, 518},
           NamedCode{CMD_Q_X_SL, 519},      NamedCode{CMD_Q_BQ_SL, 520},
           NamedCode{CMD_Q_BL_SL, 522},     NamedCode{CMD_Q_RBRACE_SL, 523},
           NamedCode{CMD_IGNORE, 766},      NamedCode{CMD_TEXT_RAW, 767},
           NamedCode{CMD_TEXT_MB, 768},     NamedCode{CMD_TEXT_SS2, 1024},
           NamedCode{CMD_TEXT_BAD, 3840},
       }) {
    EXPECT_EQ(static_cast<std::uint32_t>(code.name), code.number);
  }
}

}  // namespace
}  // namespace rlx
