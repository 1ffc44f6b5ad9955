#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "job/bytes.h"

namespace rlx {

/// Bytes of one command that a CommandRecord holds.
inline constexpr std::int32_t kRecordCapacity = 4096;

/// Where the parameters of a sequence begin: behind ESC and "Q", or two other bytes.
inline constexpr std::size_t kFirstParameter = 2;
/// Significant digits that a number among the parameters may have.
inline constexpr int kMaxParameterDigits = 7;

/// What kind of command a record holds. Codes are fixed numbers; the names of the ESC Q codes are
/// the final character (lower-case letters with a trailing L, AT for "@", BSL for the backslash,
/// RBR for "]", BQ for the grave accent, BAR for "|", RBRACE for "}", TILDE, DEL) and the separator
/// before it: SP for a space, EX for "!", SL for "/".
enum CommandCode : std::uint32_t {
  CMD_NONE = 0,             ///< no command yet
  CMD_CTRL = 256,           ///< a control byte 0x00-0x1f other than LF, FF, CR, ESC and FS
  CMD_LF = 260,             ///< LF
  CMD_FF = 262,             ///< FF
  CMD_CR = 263,             ///< CR
  CMD_DEL = 268,            ///< DEL
  CMD_ESC_DOLLAR_AT = 289,  ///< ESC $ @: double-byte character set
  CMD_ESC_PAREN_H = 292,    ///< ESC ( H: single-byte character set
  CMD_ESC_C = 298,          ///< ESC c
  CMD_ESC_DEL4 = 302,       ///< ESC DEL and four bytes of any value
  CMD_FS_QUOTE = 322,       ///< FS " parameters p-y
  CMD_FS_DOLLAR = 324,      ///< FS $ parameters p-y
  CMD_FS_PERCENT = 325,     ///< FS % parameters p-y: line pitch
  CMD_FS_AMP = 326,         ///< FS & parameters p-y
  CMD_FS_PAREN = 328,       ///< FS ( parameters p-y
  CMD_FS_STAR = 330,        ///< FS * parameters p-y
  CMD_FS_J = 347,           ///< FS J
  CMD_FS_K = 348,           ///< FS K
  CMD_CSI_BQ = 385,         ///< ESC [ parameters `
  CMD_CSI_AL = 386,         ///< ESC [ parameters a
  CMD_CSI_DL = 387,         ///< ESC [ parameters d
  CMD_CSI_EL = 388,         ///< ESC [ parameters e
  CMD_CSI_SP_E = 396,       ///< ESC [ parameters space E
  CMD_Q_NL_SP9 = 416,       ///< ESC Q 9 ... n: print-condition command that is only passed on
  CMD_Q_Y_EX = 428,
  CMD_Q_PL_SP = 437,
  CMD_Q_XL_SP = 440,
  CMD_Q_YL_SP = 441,  ///< character size
  CMD_Q_AT_EX = 445,
  CMD_Q_A_EX = 446,
  CMD_Q_C_EX = 448,
  CMD_Q_D_EX = 449,
  CMD_Q_H_EX = 453,
  CMD_Q_AL_EX = 456,
  CMD_Q_JL_EX = 457,
  CMD_Q_KL_EX = 458,
  CMD_Q_LL_EX = 459,
  CMD_Q_ML_EX = 460,
  CMD_Q_NL_EX = 461,
  CMD_Q_PL_EX = 462,
  CMD_Q_QL_EX = 463,
  CMD_Q_SL_EX = 464,
  CMD_Q_UL_EX = 465,
  CMD_Q_VL_EX = 466,
  CMD_Q_XL_EX = 468,
  CMD_Q_YL_EX = 469,
  CMD_Q_ZL_EX = 470,
  CMD_Q_TILDE_SP = 474,
  CMD_Q_DEL_EX = 475,
  CMD_Q_F_EX = 476,
  CMD_Q_I_EX = 478,
  CMD_Q_NL_SP = 482,   ///< print-condition command
  CMD_Q_NL_SP2 = 483,  ///< form name command
  CMD_Q_TILDE_SL = 485,
  CMD_Q_W_EX = 486,
  CMD_Q_R_EX = 493,
  CMD_Q_X_EX = 494,
  CMD_Q_BSL_EX = 495,
  CMD_Q_BL_EX = 496,
  CMD_Q_CL_EX = 497,
  CMD_Q_FL_EX = 498,
  CMD_Q_OL_SP = 500,  ///< form parameter
  CMD_Q_RBR_EX = 506,
  CMD_Q_BAR_SL = 509,
  CMD_Q_E_SL = 510,
  CMD_Q_F_SL = 511,
  CMD_Q_G_SL = 513,
  CMD_Q_H_SL = 514,
  CMD_Q_I_SL = 515,
  CMD_Q_U_SL = 516,
  CMD_Q_V_SL = 517,
  CMD_Q_W_SL = 518,
  CMD_Q_X_SL = 519,
  CMD_Q_BQ_SL = 520,  ///< job parameter block: the job is in the printer's language already
  CMD_Q_BL_SL = 522,
  CMD_Q_RBRACE_SL = 523,
  CMD_TEXT_ASCII = 512,  ///< one printable byte 0x20-0x7e
  CMD_IGNORE = 766,      ///< unknown, malformed, over-long or cut-off sequence
  CMD_TEXT_RAW = 767,    ///< a text byte that is not classified yet
  CMD_TEXT_MB = 768,     ///< a multi-byte character
  CMD_TEXT_SS2 = 1024,   ///< 0x8e and the character after it
  CMD_TEXT_BAD = 3840,   ///< an invalid or cut-off character

  // Codes that the routing knows and no input produces: no row of the tables in
  // input/command_tables.h has them. What is known of them is what the routing does with them, and
  // by the way the codes are numbered where they would come from.

  // From the control byte, 250 less than the code, if it had a row of its own in the first-byte
  // table; today it is CMD_CTRL.
  CMD_BS = 258,   ///< 0x08: starts the page and releases held movement
  CMD_HT = 259,   ///< 0x09: the same
  CMD_VT = 261,   ///< 0x0b: the same
  CMD_SO = 264,   ///< 0x0e: converted as text, to one NUL
  CMD_SI = 265,   ///< 0x0f: the same
  CMD_DC1 = 267,  ///< 0x11: content

  // From an ESC sequence, or FS and one of - . / R, if their tables had the rows.
  CMD_CONTENT_301 = 301,
  CMD_SETTINGS_333 = 333,   ///< changes print settings
  CMD_DROP_HELD_334 = 334,  ///< drops a held command
  CMD_DROP_HELD_335 = 335,  ///< the same
  CMD_STATE_355 = 355,      ///< begins a new state of the page

  // From ESC [ with another final byte.
  CMD_FORM_PITCH_397 = 397,  ///< sends the line pitch of the form's current line
  CMD_FORM_PITCH_421 = 421,  ///< the same

  // From ESC Q with a final byte, or a separator, that its table does not have. CONTENT puts
  // something on the page, STATE begins a new state of it.
  CMD_STATE_418 = 418,
  CMD_STATE_419 = 419,
  CMD_CONTENT_425 = 425,
  CMD_CONTENT_426 = 426,
  CMD_CONTENT_427 = 427,
  CMD_CONTENT_434 = 434,
  CMD_CONTENT_435 = 435,
  CMD_CONTENT_436 = 436,
  CMD_STATE_447 = 447,
  CMD_CONTENT_471 = 471,
  CMD_CONTENT_472 = 472,
  CMD_CONTENT_473 = 473,
  CMD_LINE_UNIT_479 = 479,    ///< resets the line unit, as the emulation mode judges it
  CMD_SINGLE_BYTE_481 = 481,  ///< content of the single-byte set, which is selected first
  CMD_DROP_HELD_487 = 487,    ///< drops a held command
  CMD_HOLD_488 = 488,         ///< kept back until the next command, on printers of class F1
  CMD_RESOLUTION_489 = 489,   ///< switches between the fonts of 240 and 400 dots per inch
  CMD_STATE_491 = 491,
  CMD_SECOND_VARIANT_492 = 492,  ///< a state, on or off, for user-defined characters
  CMD_DOWNLOAD_499 = 499,        ///< download data follows it
  CMD_CONTENT_501 = 501,
  CMD_STATE_502 = 502,
  CMD_STATE_503 = 503,
  CMD_STATE_505 = 505,
  CMD_STATE_507 = 507,
  CMD_STATE_508 = 508,

  /// From a classifier that knows user-defined characters; today's knows none.
  CMD_TEXT_GAIJI = 1280,
};

/// The highest command code, for tables that are indexed by code.
inline constexpr std::uint32_t kHighestCommandCode = CMD_TEXT_BAD;

/// One token of the input. One instance lives for the whole job and is filled again by every read.
struct CommandRecord {
  /// A CommandCode.
  std::uint32_t code = CMD_NONE;
  /// Number of bytes in `bytes`.
  std::int32_t length = 0;
  /// Count of data bytes that belong to the command but did not fit; they still stand in the input
  /// and whoever handles the command reads them there.
  std::uint32_t pending = 0;
  /// Cleared by every read; reserved.
  std::uint64_t extra = 0;
  /// The command as it was read, from its introducer (ESC, FS, control byte or lead byte) to its
  /// last parameter or data byte. Only the first `length` bytes mean anything.
  std::array<std::uint8_t, kRecordCapacity> bytes;

  /// The bytes that mean something.
  Bytes content() const { return Bytes(bytes).first(static_cast<std::size_t>(length)); }
};

}  // namespace rlx
