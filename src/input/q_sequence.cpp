#include "input/q_sequence.h"

#include <algorithm>

#include "input/command_tables.h"
#include "input/sequence_reader.h"
#include "job/control_bytes.h"
#include "job/settings.h"
#include "job/status.h"
#include "support/number.h"

namespace rlx {

namespace {

constexpr std::int32_t kTransparentDataBytes = 32;
constexpr int kFieldsBeforeCount = 4;

/// Walks the parameters, the separator behind them included, so that a field that ends with the
/// separator always finds its end.
class Parameters {
 public:
  explicit Parameters(const CommandRecord& record)
      : next_(record.bytes.data() + kFirstParameter),
        end_(record.bytes.data() + record.length - 1) {}

  std::uint8_t first() const { return next_ < end_ ? *next_ : std::uint8_t{0}; }

  /// Skips a field and its ";". @return false when `forbidden` comes first, or no ";" at all.
  bool skip_field(std::uint8_t forbidden) {
    while (next_ < end_ && *next_ != ';' && *next_ != forbidden) {
      ++next_;
    }
    const bool found = next_ < end_ && *next_ == ';';
    ++next_;
    return found;
  }

  /// Skips a field and its ";". @return false when there is no ";".
  bool skip_field() { return skip_field(';'); }

  /// Reads a count that ends with one of two bytes. @return false when it is malformed.
  bool read_count(std::uint8_t terminator, std::uint8_t other_terminator, std::int32_t& count) {
    int digits = 0;
    count = 0;
    for (; next_ < end_; ++next_) {
      if (*next_ == terminator || *next_ == other_terminator) {
        return true;
      }
      if (!is_digit(*next_)) {
        return false;
      }
      const bool leading_zero = digits == 0 && *next_ == '0';
      digits += leading_zero ? 0 : 1;
      if (digits > kMaxParameterDigits) {
        return false;
      }
      count = count * 10 + (*next_ - '0');
    }
    return false;
  }

  bool read_count(std::uint8_t terminator, std::int32_t& count) {
    return read_count(terminator, terminator, count);
  }

 private:
  const std::uint8_t* next_;
  const std::uint8_t* end_;
};

/// Appends counted data; data that does not fit stays in the input.
Status read_data(Tokenizer& tokenizer, int flags, CommandRecord& record, std::int32_t count,
                 std::uint32_t code) {
  if (count > kRecordCapacity - record.length) {
    record.pending = static_cast<std::uint32_t>(count);
    record.code = code;
    return ST_OK;
  }
  std::int32_t done = 0;
  const std::span<std::uint8_t> rest =
      std::span(record.bytes)
          .subspan(static_cast<std::size_t>(record.length), static_cast<std::size_t>(count));
  const Status status = zqrdata(tokenizer.source, flags, rest, done);
  record.length += done;
  record.code = status == ST_OK ? code : std::uint32_t{CMD_IGNORE};
  return status;
}

/// Consumes counted data of a sequence that is not accepted.
Status discard_data(Tokenizer& tokenizer, int flags, CommandRecord& record, std::int32_t count) {
  if (count <= kRecordCapacity - record.length) {
    return read_data(tokenizer, flags, record, count, CMD_IGNORE);
  }
  return ignore_command(record, skip_data(tokenizer.source, flags, count));
}

Status accept(CommandRecord& record, std::uint32_t code) {
  record.code = code;
  return ST_OK;
}

/// field ";" count, then data; `separator` ends the count.
Status read_field_and_data(Tokenizer& tokenizer, int flags, CommandRecord& record,
                           std::uint32_t code, std::uint8_t separator) {
  Parameters parameters(record);
  std::int32_t count = 0;
  if (!parameters.skip_field() || !parameters.read_count(separator, count)) {
    return ignore_command(record, ST_OK);
  }
  return read_data(tokenizer, flags, record, count, code);
}

Status parse_transparent(Tokenizer& tokenizer, int flags, CommandRecord& record,
                         std::uint8_t separator, std::uint32_t code) {
  return separator == '!' ? read_data(tokenizer, flags, record, kTransparentDataBytes, code)
                          : accept(record, code);
}

Status parse_del_data(Tokenizer& tokenizer, int flags, CommandRecord& record, std::uint32_t code) {
  Parameters parameters(record);
  std::int32_t count = 0;
  if (!parameters.skip_field('!') || !parameters.read_count('!', ';', count)) {
    return ignore_command(record, ST_OK);
  }
  return read_data(tokenizer, flags, record, count, code);
}

std::uint32_t print_condition_code(std::uint8_t first_parameter, std::uint32_t code) {
  switch (first_parameter) {
    case '2':
      return CMD_Q_NL_SP2;
    case '9':
      return CMD_Q_NL_SP9;
    default:
      return code;
  }
}

Status parse_print_condition(Tokenizer& tokenizer, int flags, CommandRecord& record,
                             std::uint8_t separator, std::uint32_t code) {
  if (separator == '!') {
    return accept(record, code);
  }
  Parameters parameters(record);
  const std::uint32_t actual_code = print_condition_code(parameters.first(), code);
  std::int32_t count = 0;
  if (!parameters.skip_field(' ') || !parameters.read_count(' ', count)) {
    return ignore_command(record, ST_OK);
  }
  return read_data(tokenizer, flags, record, count, actual_code);
}

/// With "/" the data is consumed in any case, but only options -C, -N and -P make it a command.
Status parse_fifth_field_count(Tokenizer& tokenizer, int flags, CommandRecord& record,
                               std::uint8_t separator, std::uint32_t code) {
  if (separator != '/') {
    return accept(record, code);
  }
  Parameters parameters(record);
  for (int i = 0; i < kFieldsBeforeCount; ++i) {
    if (!parameters.skip_field('/')) {
      return ignore_command(record, ST_OK);
    }
  }
  std::int32_t count = 0;
  if (!parameters.read_count('/', count)) {
    return ignore_command(record, ST_OK);
  }
  return tokenizer.command_line.extended_parameters != 0
             ? read_data(tokenizer, flags, record, count, code)
             : discard_data(tokenizer, flags, record, count);
}

/// Without a ";" before the first "!" there is no data.
Status parse_optional_data(Tokenizer& tokenizer, int flags, CommandRecord& record,
                           std::uint32_t code) {
  Parameters parameters(record);
  if (!parameters.skip_field('!')) {
    return accept(record, code);
  }
  std::int32_t count = 0;
  if (!parameters.read_count('!', count)) {
    return ignore_command(record, ST_OK);
  }
  return read_data(tokenizer, flags, record, count, code);
}

Status parse_form(Tokenizer& tokenizer, int flags, CommandRecord& record, const QRow& row,
                  std::uint8_t separator) {
  const std::uint32_t code = code_for_separator(row, separator);
  if (code == CMD_IGNORE) {
    return ignore_command(record, ST_OK);
  }
  switch (row.form) {
    case kQTransparent:
      return parse_transparent(tokenizer, flags, record, separator, code);
    case kQDelData:
      return parse_del_data(tokenizer, flags, record, code);
    case kQPrintCondition:
      return parse_print_condition(tokenizer, flags, record, separator, code);
    case kQFifthFieldCount:
      return parse_fifth_field_count(tokenizer, flags, record, separator, code);
    case kQFormParameter:
      return read_field_and_data(tokenizer, flags, record, code, ' ');
    case kQOptionalData:
      return parse_optional_data(tokenizer, flags, record, code);
    default:
      return accept(record, code);
  }
}

/// Reads parameters, separator and final byte. A DEL is a parameter byte unless "!" stands before
/// it.
Status read_to_final(Tokenizer& tokenizer, int flags, CommandRecord& record) {
  const Status status = zqrhandl(tokenizer.source, flags, &record, kFirstFinal, kDel);
  if (status != ST_OK || record.code == CMD_IGNORE) {
    return status;
  }
  const auto last = static_cast<std::size_t>(record.length - 1);
  if (record.bytes[last] == kDel && record.bytes[last - 1] != '!') {
    return zqrhandl(tokenizer.source, flags, &record, kFirstFinal, kLastFinal);
  }
  return ST_OK;
}

}  // namespace

Status zqqseq(Tokenizer& tokenizer, int flags, CommandRecord* record) {
  const Status status = read_to_final(tokenizer, flags, *record);
  if (status != ST_OK || record->code == CMD_IGNORE) {
    return status;
  }
  const auto last = static_cast<std::size_t>(record->length - 1);
  const QRow& row = row_of<kQTable>(record->bytes[last]);
  return parse_form(tokenizer, flags, *record, row, record->bytes[last - 1]);
}

}  // namespace rlx
