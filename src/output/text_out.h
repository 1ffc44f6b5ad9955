#pragma once

#include <array>
#include <cstdint>

#include "job/bytes.h"
#include "job/character_set.h"
#include "job/command_record.h"
#include "job/control_bytes.h"
#include "job/output_buffer.h"
#include "output/carried_settings.h"

namespace rlx {

inline constexpr std::int32_t kSizeSequenceBytes = 5;
inline constexpr std::int32_t kSetSequenceBytes = 3;

/// The printer has a single-byte and a double-byte character set. A switch selects the size, then
/// the set: ESC "Q1 y" ESC "(H" for the single-byte set, ESC "Q2 y" ESC "$@" for the double-byte
/// set. A switch that follows an invalid character's leaves the size out.
struct SetSwitch {
  std::array<std::uint8_t, 8> bytes;
  std::uint32_t set_command;  ///< the command that the last three bytes are

  /// The first sequence, which selects the size.
  Bytes size_sequence() const { return Bytes(bytes).first(kSizeSequenceBytes); }
  /// The second one, which selects the set.
  Bytes set_sequence() const { return Bytes(bytes).subspan(kSizeSequenceBytes); }
};

inline constexpr SetSwitch kToSingleByte{{kEsc, 'Q', '1', ' ', 'y', kEsc, '(', 'H'},
                                         CMD_ESC_PAREN_H};
inline constexpr SetSwitch kToDoubleByte{{kEsc, 'Q', '2', ' ', 'y', kEsc, '$', '@'},
                                         CMD_ESC_DOLLAR_AT};

/// Turns a text record into its output.
/// @param record  CMD_TEXT_ASCII, CMD_TEXT_MB, CMD_TEXT_SS2 or CMD_TEXT_BAD; any other code becomes
///                one NUL byte.
/// @param out     cleared, then filled: a switch if the character is of the other set, and the
///                character as it arrived (without its 0x8e prefix). Has room for every record.
/// @param state   the set that is selected; changed with a switch. The switch sequences are kept in
///                the carried settings at once, so before the record is written.
void text_out(CarriedSettings& carried, const CommandRecord& record, OutputBuffer& out,
              CharacterSetState& state);

}  // namespace rlx
