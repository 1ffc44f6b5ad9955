#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "job/command_record.h"
#include "job/control_bytes.h"

namespace rlx {

// Which bytes make which command. Each table ends with a row of key kNoKey, which supplies the form
// and the code of every byte that no other row names.

/// A key that no byte has.
inline constexpr std::uint32_t kNoKey = 255;

/// Final bytes; a byte between them ends a sequence, unless its table says otherwise.
inline constexpr std::uint8_t kFirstFinal = 0x40;
inline constexpr std::uint8_t kLastFinal = 0x7e;

struct TableRow {
  std::uint32_t key;   ///< the byte
  std::uint32_t form;  ///< how the sequence goes on; each table has its own forms
  std::uint32_t code;  ///< CommandCode
};

enum FirstByteForm : std::uint32_t {
  kFirstAlone = 0,     ///< the byte is the command
  kFirstEsc = 1,       ///< a sequence after ESC
  kFirstFs = 2,        ///< a sequence after FS
  kFirstControl = 15,  ///< any other control byte; the byte is the command
};

/// Control bytes, and DEL.
inline constexpr auto kFirstByteTable = std::to_array({
    TableRow{kLineFeed, kFirstAlone, CMD_LF},
    TableRow{kFormFeed, kFirstAlone, CMD_FF},
    TableRow{kCarriageReturn, kFirstAlone, CMD_CR},
    TableRow{kEsc, kFirstEsc, CMD_NONE},
    TableRow{kFs, kFirstFs, CMD_NONE},
    TableRow{kDel, kFirstAlone, CMD_DEL},
    TableRow{kNoKey, kFirstControl, CMD_CTRL},
});

enum EscForm : std::uint32_t {
  kEscDollar = 0,       ///< "@" must follow
  kEscParen = 1,        ///< "H" must follow
  kEscNothingMore = 3,  ///< complete
  kEscQ = 4,            ///< a parameterised sequence
  kEscCsi = 5,          ///< parameters up to a final byte
  kEscDel = 9,          ///< four bytes of any value
  kEscUnknown = 15,
};

/// The byte after ESC.
inline constexpr auto kEscTable = std::to_array({
    TableRow{'$', kEscDollar, CMD_ESC_DOLLAR_AT},
    TableRow{'(', kEscParen, CMD_ESC_PAREN_H},
    TableRow{'Q', kEscQ, CMD_NONE},
    TableRow{'[', kEscCsi, CMD_NONE},
    TableRow{'c', kEscNothingMore, CMD_ESC_C},
    TableRow{kDel, kEscDel, CMD_ESC_DEL4},
    TableRow{kNoKey, kEscUnknown, CMD_IGNORE},
});

enum CsiForm : std::uint32_t {
  kCsiPlain = 0,
  kCsiAfterSpace = 1,  ///< a space must stand before the final byte
  kCsiUnknown = 15,
};

/// The final byte of ESC "[".
inline constexpr auto kCsiTable = std::to_array({
    TableRow{'E', kCsiAfterSpace, CMD_CSI_SP_E},
    TableRow{'`', kCsiPlain, CMD_CSI_BQ},
    TableRow{'a', kCsiPlain, CMD_CSI_AL},
    TableRow{'d', kCsiPlain, CMD_CSI_DL},
    TableRow{'e', kCsiPlain, CMD_CSI_EL},
    TableRow{kNoKey, kCsiUnknown, CMD_IGNORE},
});

enum FsForm : std::uint32_t {
  kFsParameters = 0,   ///< parameters up to a terminator "p" to "y"
  kFsNothingMore = 3,  ///< complete
  kFsUnknown = 15,
};

/// Parameters of FS sequences end with a byte in this range.
inline constexpr std::uint8_t kFirstFsTerminator = 'p';
inline constexpr std::uint8_t kLastFsTerminator = 'y';

/// The byte after FS.
inline constexpr auto kFsTable = std::to_array({
    TableRow{'"', kFsParameters, CMD_FS_QUOTE},
    TableRow{'$', kFsParameters, CMD_FS_DOLLAR},
    TableRow{'%', kFsParameters, CMD_FS_PERCENT},
    TableRow{'&', kFsParameters, CMD_FS_AMP},
    TableRow{'(', kFsParameters, CMD_FS_PAREN},
    TableRow{'*', kFsParameters, CMD_FS_STAR},
    TableRow{'J', kFsNothingMore, CMD_FS_J},
    TableRow{'K', kFsNothingMore, CMD_FS_K},
    TableRow{kNoKey, kFsUnknown, CMD_IGNORE},
});

/// How an ESC "Q" sequence goes on, by its final byte: the separators it accepts before the final,
/// the shape of its parameters, and the data behind it. A *count* is a decimal field of up to seven
/// significant digits; so many bytes of data follow the final byte.
enum QForm : std::uint32_t {
  kQSpaceOrExclamation = 0,   ///< space or "!"; no data
  kQExclamation = 3,          ///< "!"; no data
  kQTransparent = 4,          ///< space, "!" or "/"; with "!" 32 bytes of data
  kQDelData = 6,              ///< "!"; field ";" count ("!" or ";")
  kQPrintCondition = 9,       ///< space: field ";" count; "!": no data
  kQFifthFieldCount = 11,     ///< "/": four fields, then a count; space or "!": no data
  kQFormParameter = 14,       ///< space; field ";" count
  kQUnknown = 15,             ///< never accepted
  kQExclamationOrSlash = 18,  ///< "!" or "/"; no data
  kQSlash = 19,               ///< "/"; no data
  kQOptionalData = 20,        ///< "!"; field ";" count, or no ";" and no data
};

struct QRow {
  std::uint32_t key;
  std::uint32_t form;
  std::uint32_t code_space;        ///< code with a space before the final byte
  std::uint32_t code_exclamation;  ///< with "!"
  std::uint32_t code_slash;        ///< with "/"
};

/// The final byte of ESC "Q". A code that the row's form never selects is CMD_IGNORE.
inline constexpr auto kQTable = std::to_array({
    QRow{'@', kQExclamation, CMD_IGNORE, CMD_Q_AT_EX, CMD_IGNORE},
    QRow{'A', kQExclamation, CMD_IGNORE, CMD_Q_A_EX, CMD_IGNORE},
    QRow{'C', kQExclamation, CMD_IGNORE, CMD_Q_C_EX, CMD_IGNORE},
    QRow{'D', kQExclamation, CMD_IGNORE, CMD_Q_D_EX, CMD_IGNORE},
    QRow{'E', kQSlash, CMD_IGNORE, CMD_IGNORE, CMD_Q_E_SL},
    QRow{'F', kQExclamationOrSlash, CMD_IGNORE, CMD_Q_F_EX, CMD_Q_F_SL},
    QRow{'G', kQSlash, CMD_IGNORE, CMD_IGNORE, CMD_Q_G_SL},
    QRow{'H', kQExclamationOrSlash, CMD_IGNORE, CMD_Q_H_EX, CMD_Q_H_SL},
    QRow{'I', kQExclamationOrSlash, CMD_IGNORE, CMD_Q_I_EX, CMD_Q_I_SL},
    QRow{'R', kQExclamation, CMD_IGNORE, CMD_Q_R_EX, CMD_IGNORE},
    QRow{'U', kQSlash, CMD_IGNORE, CMD_IGNORE, CMD_Q_U_SL},
    QRow{'V', kQSlash, CMD_IGNORE, CMD_IGNORE, CMD_Q_V_SL},
    QRow{'W', kQExclamationOrSlash, CMD_IGNORE, CMD_Q_W_EX, CMD_Q_W_SL},
    QRow{'X', kQExclamationOrSlash, CMD_IGNORE, CMD_Q_X_EX, CMD_Q_X_SL},
    QRow{'Y', kQExclamation, CMD_IGNORE, CMD_Q_Y_EX, CMD_IGNORE},
    QRow{'\\', kQExclamation, CMD_IGNORE, CMD_Q_BSL_EX, CMD_IGNORE},
    QRow{']', kQExclamation, CMD_IGNORE, CMD_Q_RBR_EX, CMD_IGNORE},
    QRow{'`', kQSlash, CMD_IGNORE, CMD_IGNORE, CMD_Q_BQ_SL},
    QRow{'a', kQOptionalData, CMD_IGNORE, CMD_Q_AL_EX, CMD_IGNORE},
    QRow{'b', kQExclamationOrSlash, CMD_IGNORE, CMD_Q_BL_EX, CMD_Q_BL_SL},
    QRow{'c', kQExclamation, CMD_IGNORE, CMD_Q_CL_EX, CMD_IGNORE},
    QRow{'f', kQExclamation, CMD_IGNORE, CMD_Q_FL_EX, CMD_IGNORE},
    QRow{'j', kQExclamation, CMD_IGNORE, CMD_Q_JL_EX, CMD_IGNORE},
    QRow{'k', kQExclamation, CMD_IGNORE, CMD_Q_KL_EX, CMD_IGNORE},
    QRow{'l', kQExclamation, CMD_IGNORE, CMD_Q_LL_EX, CMD_IGNORE},
    QRow{'m', kQExclamation, CMD_IGNORE, CMD_Q_ML_EX, CMD_IGNORE},
    QRow{'n', kQPrintCondition, CMD_Q_NL_SP, CMD_Q_NL_EX, CMD_IGNORE},
    QRow{'o', kQFormParameter, CMD_Q_OL_SP, CMD_IGNORE, CMD_IGNORE},
    QRow{'p', kQTransparent, CMD_Q_PL_SP, CMD_Q_PL_EX, CMD_Q_PL_EX},
    QRow{'q', kQExclamation, CMD_IGNORE, CMD_Q_QL_EX, CMD_IGNORE},
    QRow{'s', kQExclamation, CMD_IGNORE, CMD_Q_SL_EX, CMD_IGNORE},
    QRow{'u', kQExclamation, CMD_IGNORE, CMD_Q_UL_EX, CMD_IGNORE},
    QRow{'v', kQExclamation, CMD_IGNORE, CMD_Q_VL_EX, CMD_IGNORE},
    QRow{'x', kQSpaceOrExclamation, CMD_Q_XL_SP, CMD_Q_XL_EX, CMD_IGNORE},
    QRow{'y', kQSpaceOrExclamation, CMD_Q_YL_SP, CMD_Q_YL_EX, CMD_IGNORE},
    QRow{'z', kQExclamation, CMD_IGNORE, CMD_Q_ZL_EX, CMD_IGNORE},
    QRow{'|', kQSlash, CMD_IGNORE, CMD_IGNORE, CMD_Q_BAR_SL},
    QRow{'}', kQSlash, CMD_IGNORE, CMD_IGNORE, CMD_Q_RBRACE_SL},
    QRow{'~', kQFifthFieldCount, CMD_Q_TILDE_SP, CMD_Q_TILDE_SP, CMD_Q_TILDE_SL},
    QRow{kDel, kQDelData, CMD_IGNORE, CMD_Q_DEL_EX, CMD_IGNORE},
    QRow{kNoKey, kQUnknown, CMD_IGNORE, CMD_IGNORE, CMD_IGNORE},
});
static_assert(kQTable.size() == 41);

/// The code that a separator selects; CMD_IGNORE when the final byte does not go with it.
constexpr std::uint32_t code_for_separator(const QRow& row, std::uint8_t separator) {
  switch (separator) {
    case ' ':
      return row.code_space;
    case '!':
      return row.code_exclamation;
    case '/':
      return row.code_slash;
    default:
      return CMD_IGNORE;
  }
}

/// For each 7-bit byte the number of its row; the last row for a byte that no row names.
template <typename Row, std::size_t N>
constexpr std::array<std::uint8_t, 128> index_rows(const std::array<Row, N>& table) {
  std::array<std::uint8_t, 128> index{};
  index.fill(static_cast<std::uint8_t>(N - 1));
  for (std::size_t i = 0; i + 1 < N; ++i) {
    index[table[i].key] = static_cast<std::uint8_t>(i);
  }
  return index;
}

template <const auto& Table>
inline constexpr std::array<std::uint8_t, 128> kRowIndex = index_rows(Table);

/// The row of a byte.
template <const auto& Table>
constexpr const auto& row_of(std::uint8_t byte) {
  return Table[byte < 128 ? kRowIndex<Table>[byte] : Table.size() - 1];
}

}  // namespace rlx
