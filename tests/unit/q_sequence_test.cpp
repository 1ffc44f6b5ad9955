#include "input/q_sequence.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "input/byte_source.h"
#include "job/command_record.h"
#include "job/settings.h"
#include "job/status.h"
#include "support/descriptors.h"
#include "support/filter_state.h"
#include "support/input_stream.h"
#include "support/the_filter.h"

namespace rlx {
namespace {

using namespace rlx::testing;

const std::string kEscQ = "\x1bQ";
/// What a final byte makes with each separator; 0 is a separator that it does not take.
struct Final {
  char final;
  std::uint32_t space;
  std::uint32_t exclamation;
  std::uint32_t slash;
};

constexpr std::array kFinals{
    Final{'@', 0, CMD_Q_AT_EX, 0},
    Final{'A', 0, CMD_Q_A_EX, 0},
    Final{'C', 0, CMD_Q_C_EX, 0},
    Final{'D', 0, CMD_Q_D_EX, 0},
    Final{'E', 0, 0, CMD_Q_E_SL},
    Final{'F', 0, CMD_Q_F_EX, CMD_Q_F_SL},
    Final{'G', 0, 0, CMD_Q_G_SL},
    Final{'H', 0, CMD_Q_H_EX, CMD_Q_H_SL},
    Final{'I', 0, CMD_Q_I_EX, CMD_Q_I_SL},
    Final{'R', 0, CMD_Q_R_EX, 0},
    Final{'U', 0, 0, CMD_Q_U_SL},
    Final{'V', 0, 0, CMD_Q_V_SL},
    Final{'W', 0, CMD_Q_W_EX, CMD_Q_W_SL},
    Final{'X', 0, CMD_Q_X_EX, CMD_Q_X_SL},
    Final{'Y', 0, CMD_Q_Y_EX, 0},
    Final{'\\', 0, CMD_Q_BSL_EX, 0},
    Final{']', 0, CMD_Q_RBR_EX, 0},
    Final{'`', 0, 0, CMD_Q_BQ_SL},
    Final{'a', 0, CMD_Q_AL_EX, 0},
    Final{'b', 0, CMD_Q_BL_EX, CMD_Q_BL_SL},
    Final{'c', 0, CMD_Q_CL_EX, 0},
    Final{'f', 0, CMD_Q_FL_EX, 0},
    Final{'j', 0, CMD_Q_JL_EX, 0},
    Final{'k', 0, CMD_Q_KL_EX, 0},
    Final{'l', 0, CMD_Q_LL_EX, 0},
    Final{'m', 0, CMD_Q_ML_EX, 0},
    Final{'n', CMD_Q_NL_SP, CMD_Q_NL_EX, 0},
    Final{'o', CMD_Q_OL_SP, 0, 0},
    Final{'p', CMD_Q_PL_SP, CMD_Q_PL_EX, CMD_Q_PL_EX},
    Final{'q', 0, CMD_Q_QL_EX, 0},
    Final{'s', 0, CMD_Q_SL_EX, 0},
    Final{'u', 0, CMD_Q_UL_EX, 0},
    Final{'v', 0, CMD_Q_VL_EX, 0},
    Final{'x', CMD_Q_XL_SP, CMD_Q_XL_EX, 0},
    Final{'y', CMD_Q_YL_SP, CMD_Q_YL_EX, 0},
    Final{'z', 0, CMD_Q_ZL_EX, 0},
    Final{'|', 0, 0, CMD_Q_BAR_SL},
    Final{'}', 0, 0, CMD_Q_RBRACE_SL},
    Final{'~', CMD_Q_TILDE_SP, CMD_Q_TILDE_SP, CMD_Q_TILDE_SL},
    Final{'\x7f', 0, CMD_Q_DEL_EX, 0},
};

std::uint32_t expected_code(int final, int separator) {
  for (const Final& row : kFinals) {
    if (row.final == final) {
      const std::uint32_t code = separator == ' '   ? row.space
                                 : separator == '!' ? row.exclamation
                                 : separator == '/' ? row.slash
                                                    : 0;
      return code == 0 ? CMD_IGNORE : code;
    }
  }
  return CMD_IGNORE;
}

/// Parameters that are good for every final byte: the count of each form is 0.
std::string parameters_for(int final) {
  return final == '~' ? "1;2;3;4;0" : "1;0";
}

class QSequence : public FilterTest {
 protected:
  static void restart() {
    reset_filter();
    the_filter().command_line.extended_parameters = 1;
  }

  /// The sequence is the whole record; a byte behind it stays.
  static void expect_whole(const std::string& sequence, std::uint32_t code,
                           std::uint32_t pending = 0) {
    expect_front(sequence, sequence.size(), code, pending);
  }

  /// The first `length` bytes are the record.
  static void expect_front(const std::string& input_bytes, std::size_t length, std::uint32_t code,
                           std::uint32_t pending = 0) {
    SCOPED_TRACE(encode_escaped_line(input_bytes.substr(0, 60)));
    restart();
    const StandardInput input(input_bytes + "\x1b");
    EXPECT_EQ(next_token(), (Token{ST_OK, code, input_bytes.substr(0, length), pending}));
    EXPECT_TRUE(rest_of_input() == input_bytes.substr(length) + "\x1b");
  }

  /// A count field of a form: what stands in front of it, and behind it with the final byte.
  struct CountForm {
    std::string front;
    std::string back;
    std::uint32_t code;
  };

  static const std::vector<CountForm>& count_forms() {
    static const std::vector<CountForm> forms{
        {kEscQ + "1;", "!a", CMD_Q_AL_EX},       {kEscQ + "1;", " n", CMD_Q_NL_SP},
        {kEscQ + "2;", " n", CMD_Q_NL_SP2},      {kEscQ + "9;", " n", CMD_Q_NL_SP9},
        {kEscQ + "6;", " o", CMD_Q_OL_SP},       {kEscQ + "1;", "!\x7f", CMD_Q_DEL_EX},
        {kEscQ + "1;", ";!\x7f", CMD_Q_DEL_EX},  {kEscQ + "1;2;3;4;", "/~", CMD_Q_TILDE_SL},
        {kEscQ + ";;;;", "/~", CMD_Q_TILDE_SL},  {kEscQ + ";", "!a", CMD_Q_AL_EX},
        {kEscQ + ";", " n", CMD_Q_NL_SP},        {kEscQ + ";", " o", CMD_Q_OL_SP},
        {kEscQ + ";", "!\x7f", CMD_Q_DEL_EX},    {kEscQ + "1;", "!9!a", CMD_Q_AL_EX},
        {kEscQ + "1;", " 77 n", CMD_Q_NL_SP},    {kEscQ + "1;", " ; o", CMD_Q_OL_SP},
        {kEscQ + "1;", "!1!\x7f", CMD_Q_DEL_EX}, {kEscQ + "1;2;3;4;", "/5;/~", CMD_Q_TILDE_SL},
        {kEscQ + "\x7f;", "!a", CMD_Q_AL_EX},
    };
    return forms;
  }
};

TEST_F(QSequence, Params12ExclamationCIs448WithSixBytes) {
  expect_whole("\x1bQ12!C", CMD_Q_C_EX);
}

TEST_F(QSequence, Params12SpaceCIsIgnored) {
  expect_whole("\x1bQ12 C", CMD_IGNORE);
}

TEST_F(QSequence, Count5AppendsFiveBytesOfData) {
  restart();
  const StandardInput input(
      "\x1bQ1;5!a"
      "abcdeZ");
  EXPECT_EQ(next_token(), (Token{ST_OK, CMD_Q_AL_EX,
                                 "\x1bQ1;5!a"
                                 "abcde",
                                 0}));
  EXPECT_EQ(rest_of_input(), "Z");
}

TEST_F(QSequence, Count5000IsPending) {
  expect_front("\x1bQ1;5000!a" + std::string(5000, 'd'), 10, CMD_Q_AL_EX, 5000);
}

TEST_F(QSequence, NWithSpaceAndFirstParameter2Is483) {
  expect_whole("\x1bQ2;0 n", CMD_Q_NL_SP2);
  expect_whole("\x1bQ2;3 nabc", CMD_Q_NL_SP2);
}

TEST_F(QSequence, MoreThan4095ParameterDigitsAreConsumedAndIgnored) {
  restart();
  const StandardInput input(kEscQ + std::string(5000, '1') + "!CZ");
  const Token token = next_token();
  EXPECT_EQ(token.status, ST_OK);
  EXPECT_EQ(token.code, CMD_IGNORE);
  EXPECT_EQ(rest_of_input(), "Z");
}

TEST_F(QSequence, EndOfInputRightAfterQ1) {
  const StandardInput input("\x1bQ1");
  EXPECT_EQ(next_token(), (Token{ST_OK, CMD_IGNORE, "\x1bQ1", 0}));
  EXPECT_EQ(next_token(), kEndOfInput);
}

TEST_F(QSequence, EveryFinalByteWithEverySeparator) {
  for (int final = 0x40; final <= 0x7e; ++final) {
    for (int separator = 0; separator < 256; ++separator) {
      if (separator >= 0x40 && separator <= 0x7f) {
        continue;
      }
      const std::string sequence = kEscQ + parameters_for(final) + one(separator) + one(final) +
                                   (final == 'p' && separator == '!' ? std::string(32, 'd') : "");
      expect_whole(sequence, expected_code(final, separator));
    }
  }
}

TEST_F(QSequence, DelEndsASequenceOnlyBehindAnExclamationMark) {
  for (int separator = 0; separator < 256; ++separator) {
    if (separator >= 0x40 && separator <= 0x7f) {
      continue;
    }
    const std::string sequence = kEscQ + "1;0" + one(separator) + "\x7f";
    if (separator == '!') {
      expect_whole(sequence, CMD_Q_DEL_EX);
    } else {
      expect_whole(sequence + "2!C", CMD_Q_C_EX);
    }
  }
}

TEST_F(QSequence, OnlyTheFirstDelCanEndTheSequence) {
  expect_whole(kEscQ +
                   "1\x7f"
                   "2;0!\x7f"
                   "3!C",
               CMD_Q_C_EX);
  expect_whole(kEscQ +
                   "\x7f"
                   "!C",
               CMD_Q_C_EX);
  expect_whole(kEscQ +
                   "\x7f"
                   "C",
               CMD_IGNORE);
  expect_whole(kEscQ + "1!2\x7f\x7f!C", CMD_Q_C_EX);
}

TEST_F(QSequence, EveryFinalByteWithoutParameters) {
  for (int final = 0x40; final <= 0x7e; ++final) {
    for (const char separator : {' ', '!', '/', '#', '0'}) {
      std::uint32_t code = expected_code(final, separator);
      if ((final == 'n' && separator == ' ') || final == 'o' ||
          (final == '~' && separator == '/')) {
        code = CMD_IGNORE;  // the count is missing
      }
      const std::string data = final == 'p' && separator == '!' ? std::string(32, 'd') : "";
      expect_whole((kEscQ + separator).append(one(final)).append(data), code);
    }
  }
  expect_whole(kEscQ + "!\x7f", CMD_IGNORE);
}

TEST_F(QSequence, EveryFinalByteRightBehindTheQIsIgnored) {
  for (int final = 0x40; final <= 0x7e; ++final) {
    expect_whole(kEscQ + one(final), CMD_IGNORE);
  }
}

TEST_F(QSequence, ParametersOfSequencesWithoutDataAreNotChecked) {
  for (const char* parameters :
       {"", "0", ";;;;", "1!2/3 4", "\n\r\f\x1b\x1c", "\x80\xff", "-+*", "\x7f"}) {
    expect_whole(kEscQ + parameters + "!C", CMD_Q_C_EX);
    expect_whole(kEscQ + parameters + "!x", CMD_Q_XL_EX);
    expect_whole(kEscQ + parameters + " y", CMD_Q_YL_SP);
    expect_whole(kEscQ + parameters + "/G", CMD_Q_G_SL);
    expect_whole(kEscQ + parameters + "/F", CMD_Q_F_SL);
    expect_whole(kEscQ + parameters + "!F", CMD_Q_F_EX);
    expect_whole(kEscQ + parameters + " p", CMD_Q_PL_SP);
    expect_whole(kEscQ + parameters + "/p", CMD_Q_PL_EX);
    expect_whole(kEscQ + parameters + "!n", CMD_Q_NL_EX);
    expect_whole(kEscQ + parameters + "!~", CMD_Q_TILDE_SP);
    expect_whole(kEscQ + parameters + " ~", CMD_Q_TILDE_SP);
  }
}

TEST_F(QSequence, CountsOfEveryLength) {
  for (const CountForm& form : count_forms()) {
    // An empty count, zeros and leading zeros.
    expect_whole(form.front + form.back, form.code);
    expect_whole(form.front + "0" + form.back, form.code);
    expect_whole(form.front + std::string(30, '0') + form.back, form.code);
    expect_whole(form.front + "1" + form.back + "d", form.code);
    expect_whole(form.front + "12" + form.back +
                     "\x1b\n!a;/ ~\x7f\xff"
                     "12",
                 form.code);
    expect_whole(form.front + std::string(30, '0') + "3" + form.back + "ddd", form.code);
    // Seven significant digits are the most.
    for (const char* seven : {"1000000", "9999999", "0001000000", "0000000000009999999"}) {
      const std::string sequence = form.front + seven + form.back;
      expect_front(sequence + "Z", sequence.size(), form.code,
                   static_cast<std::uint32_t>(std::stoul(seven)));
    }
    for (const char* eight : {"10000000", "99999999", "0010000000", "123456789012345678901234"}) {
      expect_whole(form.front + eight + form.back, CMD_IGNORE);
    }
  }
}

TEST_F(QSequence, EveryByteInACount) {
  for (const CountForm& form :
       {CountForm{kEscQ + "1;", "!a", CMD_Q_AL_EX}, CountForm{kEscQ + "1;", " n", CMD_Q_NL_SP},
        CountForm{kEscQ + "1;", " o", CMD_Q_OL_SP}, CountForm{kEscQ + "1;", "!\x7f", CMD_Q_DEL_EX},
        CountForm{kEscQ + "1;2;3;4;", "/~", CMD_Q_TILDE_SL}}) {
    for (int value = 0; value < 256; ++value) {
      if (value >= 0x40 && value <= 0x7f) {
        continue;
      }
      const bool digit = value >= '0' && value <= '9';
      const bool ends = value == form.back[0] || (form.code == CMD_Q_DEL_EX && value == ';');
      // In front of the digit, and behind it.
      const std::string behind = form.front + "1" + one(value) + form.back;
      const std::string before = form.front + one(value) + "1" + form.back;
      if (digit) {
        expect_whole(behind + std::string(static_cast<std::size_t>(10 + value - '0'), 'd'),
                     form.code);
        expect_whole(before + std::string(static_cast<std::size_t>((value - '0') * 10 + 1), 'd'),
                     form.code);
      } else if (ends) {
        expect_whole(behind + "d", form.code);
        expect_whole(before, form.code);
      } else {
        expect_whole(behind, CMD_IGNORE);
        expect_whole(before, CMD_IGNORE);
      }
    }
  }
}

TEST_F(QSequence, ACountIsCheckedThroughTheSevenDigits) {
  expect_whole(kEscQ + "1;12345678:!a", CMD_IGNORE);
  expect_whole(kEscQ + "1;1234567:!a", CMD_IGNORE);
  expect_whole(kEscQ + "1;-1!a", CMD_IGNORE);
  expect_whole(kEscQ + "1;+1!a", CMD_IGNORE);
}

TEST_F(QSequence, EveryByteAsFirstFieldWithASemicolonBehind) {
  for (int value = 0; value < 256; ++value) {
    if (value >= 0x40 && value <= 0x7f) {
      continue;
    }
    const std::string field = one(value);
    const std::string longer_field = "1" + field;
    // "!" in front of the first ";" ends what is looked at, without data.
    if (value == '!') {
      expect_whole(kEscQ + "!;2!a", CMD_Q_AL_EX);
      expect_whole(kEscQ + "1!;2!a", CMD_Q_AL_EX);
      expect_whole(kEscQ + "!;2!\x7f", CMD_IGNORE);
      expect_whole(kEscQ + "1!;2!\x7f", CMD_IGNORE);
    } else if (value != ';') {
      expect_whole(kEscQ + field + ";2!add", CMD_Q_AL_EX);
      expect_whole(kEscQ + longer_field + ";2!add", CMD_Q_AL_EX);
      expect_whole(kEscQ + field +
                       ";2!\x7f"
                       "dd",
                   CMD_Q_DEL_EX);
      expect_whole(kEscQ + longer_field +
                       ";2!\x7f"
                       "dd",
                   CMD_Q_DEL_EX);
    }
    if (value == ' ') {
      expect_whole(kEscQ + " ;2 n", CMD_IGNORE);
      expect_whole(kEscQ + "1 ;2 n", CMD_IGNORE);
    } else if (value != ';') {
      expect_whole(kEscQ + field + ";2 ndd", value == '2'   ? CMD_Q_NL_SP2
                                             : value == '9' ? CMD_Q_NL_SP9
                                                            : CMD_Q_NL_SP);
      expect_whole(kEscQ + longer_field + ";2 ndd", CMD_Q_NL_SP);
    }
    if (value != ';') {
      expect_whole(kEscQ + field + ";2 odd", CMD_Q_OL_SP);
      expect_whole(kEscQ + longer_field + ";2 odd", CMD_Q_OL_SP);
    }
  }
}

TEST_F(QSequence, TheFirstParameterByteChoosesThePrintConditionCode) {
  for (int digit = '0'; digit <= '9'; ++digit) {
    const std::uint32_t code = digit == '2'   ? CMD_Q_NL_SP2
                               : digit == '9' ? CMD_Q_NL_SP9
                                              : CMD_Q_NL_SP;
    expect_whole(kEscQ + one(digit) + ";3 nabc", code);
    expect_whole(kEscQ + one(digit) + "7;3 nabc", code);
    expect_whole(kEscQ + "0" + one(digit) + ";3 nabc", CMD_Q_NL_SP);
    expect_whole(kEscQ + one(digit) + "!n", CMD_Q_NL_EX);
    expect_whole(kEscQ + one(digit) + "/n", CMD_IGNORE);
  }
}

TEST_F(QSequence, PrintConditionAndFormParameterNeedASemicolon) {
  for (const char* parameters : {"", "1", "2", "9", "12", "1 2"}) {
    expect_whole(kEscQ + parameters + " n", CMD_IGNORE);
    expect_whole(kEscQ + parameters + " o", CMD_IGNORE);
  }
}

TEST_F(QSequence, ASpaceInTheFirstFieldMattersToPrintConditionsOnly) {
  expect_whole(kEscQ + "1 2;3 n", CMD_IGNORE);
  expect_whole(kEscQ + "1 2;3 oabc", CMD_Q_OL_SP);
}

TEST_F(QSequence, OptionalDataWithoutASemicolonIsACommandWithoutData) {
  for (const char* parameters : {"", "1", "5", "123", "1!2;3"}) {
    expect_whole(kEscQ + parameters + "!a", CMD_Q_AL_EX);
  }
}

TEST_F(QSequence, DelDataWithoutASemicolonIsIgnored) {
  for (const char* parameters : {"", "1", "5", "!", "!1;2", "1!2;3"}) {
    expect_whole(kEscQ + parameters + "!\x7f", CMD_IGNORE);
  }
}

TEST_F(QSequence, TransparentTakes32BytesWithAnExclamationMarkOnly) {
  const std::string data = "\x1b\n\f!a0123456789abcdef0123456789\xff";
  ASSERT_EQ(data.size(), 32U);
  expect_whole(kEscQ + "1!p" + data, CMD_Q_PL_EX);
  expect_front(kEscQ + "1!p" + data + "Z", 5 + 32, CMD_Q_PL_EX);
  expect_front(kEscQ + "1 p" + data, 5, CMD_Q_PL_SP);
  expect_front(kEscQ + "1/p" + data, 5, CMD_Q_PL_EX);
}

TEST_F(QSequence, TransparentDataAroundTheRecordsEnd) {
  for (std::size_t before = 4060; before <= 4070; ++before) {
    const std::string sequence = kEscQ + std::string(before - 4, '1') + "!p";
    const std::string data(32, 'd');
    if (before + 32 <= 4096) {
      expect_whole(sequence + data, CMD_Q_PL_EX);
    } else {
      expect_front(sequence + data, before, CMD_Q_PL_EX, 32);
    }
  }
}

TEST_F(QSequence, FifthFieldCountNeedsFourFieldsInFront) {
  expect_whole(kEscQ + "1;2;3;4;2/~dd", CMD_Q_TILDE_SL);
  expect_whole(kEscQ + " ;!;#;\n;2/~dd", CMD_Q_TILDE_SL);
  for (const char* few : {"", "2", "1;2", "1;2;2", "1;2;3;2"}) {
    expect_whole(kEscQ + few + "/~", CMD_IGNORE);
  }
  expect_whole(kEscQ + "1;2;3;4;5;6/~", CMD_IGNORE);
  // A "/" in each of the four fields, in front of the field and behind it.
  for (const char* slash : {"/1;2;3;4;0", "1/;2;3;4;0", "1;/2;3;4;0", "1;2/;3;4;0", "1;2;/3;4;0",
                            "1;2;3/;4;0", "1;2;3;/4;0", "1;2;3;4/;0"}) {
    expect_whole(kEscQ + slash + "/~", CMD_IGNORE);
  }
}

TEST_F(QSequence, FifthFieldCountIsIgnoredBehindItsDataWithTheSwitchOff) {
  for (const std::size_t count : {0UL, 1UL, 5UL, 4078UL, 4079UL, 4080UL, 9999UL, 70000UL}) {
    reset_filter();
    const std::string sequence = kEscQ + "1;2;3;4;" + std::to_string(count) + "/~";
    const std::string data(count, 'd');
    const StandardInput input(sequence + data + "Z");
    const Token token = next_token();
    EXPECT_EQ(token.status, ST_OK);
    EXPECT_EQ(token.code, CMD_IGNORE);
    EXPECT_EQ(token.pending, 0U) << count;
    EXPECT_TRUE(token.bytes == sequence + (sequence.size() + count <= 4096 ? data : std::string()))
        << count;
    EXPECT_EQ(rest_of_input(), "Z") << count;
  }
}

TEST_F(QSequence, DiscardedDataThatIsCutGivesTheReadersStatus) {
  const std::string sequence = kEscQ + "1;2;3;4;5000/~";
  {
    const StandardInput input(sequence + std::string(4999, 'd'));
    EXPECT_EQ(next_token(), (Token{ST_OK, CMD_IGNORE, sequence, 0}));
    EXPECT_EQ(next_token(), kEndOfInput);
  }
  reset_filter();
  {
    const FailingInput input(sequence + std::string(4999, 'd'));
    const CaptureDescriptor messages(2);
    EXPECT_EQ(next_token(), (Token{ST_IOERR, CMD_IGNORE, sequence, 0}));
  }
  reset_filter();
  the_filter().command_line.framed_output = 1;
  const StandardInput input(end_frame(sequence + std::string(4999, 'd')));
  EXPECT_EQ(next_token(), (Token{ST_CUT, CMD_IGNORE, sequence, 0}));
  EXPECT_EQ(next_token(), kEndOfInput);
}

TEST_F(QSequence, FifthFieldCountWithTheSwitchOnLeavesLargeDataPending) {
  const std::string sequence = kEscQ + "1;2;3;4;5000/~";
  expect_front(sequence + std::string(5000, 'd'), sequence.size(), CMD_Q_TILDE_SL, 5000);
}

TEST_F(QSequence, TheSwitchMattersToTheSlashOnly) {
  reset_filter();
  const StandardInput input(kEscQ + "1 ~" + kEscQ + "1!~" + kEscQ + "1;2;3;4;0/~");
  EXPECT_EQ(next_token().code, CMD_Q_TILDE_SP);
  EXPECT_EQ(next_token().code, CMD_Q_TILDE_SP);
  EXPECT_EQ(next_token().code, CMD_IGNORE);
}

TEST_F(QSequence, DataThatJustFitsIsReadAndOneByteMoreIsPending) {
  for (const CountForm& form : count_forms()) {
    const std::size_t head = form.front.size() + 4 + form.back.size();
    for (const int more : {-1, 0, 1, 2}) {
      const auto count = static_cast<std::size_t>(4096 - static_cast<int>(head) + more);
      const std::string sequence = form.front + std::to_string(count) + form.back;
      ASSERT_EQ(sequence.size(), head);
      const std::string data(count, 'd');
      if (more <= 0) {
        expect_whole(sequence + data, form.code);
      } else {
        expect_front(sequence + data, head, form.code, static_cast<std::uint32_t>(count));
      }
    }
  }
}

TEST_F(QSequence, AFullRecordTakesDataOfNoBytesOnly) {
  const std::string filling(4096 - 6, '1');
  expect_whole(kEscQ + filling +
                   ";"
                   "0"
                   "!a",
               CMD_Q_AL_EX);
  expect_front(kEscQ + filling +
                   ";"
                   "1"
                   "!a"
                   "d",
               4096, CMD_Q_AL_EX, 1);
}

TEST_F(QSequence, ShortDataAtTheEndOfTheInputIsIgnored) {
  for (const CountForm& form : count_forms()) {
    for (const std::size_t given : {0UL, 1UL, 4UL}) {
      restart();
      const std::string all = form.front + "5" + form.back + std::string(given, 'd');
      const StandardInput input(all);
      EXPECT_EQ(next_token(), (Token{ST_OK, CMD_IGNORE, all, 0}));
      EXPECT_EQ(next_token(), kEndOfInput);
    }
  }
}

TEST_F(QSequence, ShortDataAtTheEndOfTheEndFrameIsCut) {
  for (const CountForm& form : count_forms()) {
    for (const std::size_t given : {0UL, 1UL, 4UL}) {
      restart();
      the_filter().command_line.framed_output = 1;
      const std::string all = form.front + "5" + form.back + std::string(given, 'd');
      const StandardInput input(end_frame(all));
      EXPECT_EQ(next_token(), (Token{ST_CUT, CMD_IGNORE, all, 0}));
      EXPECT_EQ(next_token(), kEndOfInput);
    }
  }
}

TEST_F(QSequence, ShortDataAtAReadErrorIsIgnored) {
  const CaptureDescriptor messages(2);
  for (const CountForm& form : count_forms()) {
    restart();
    const std::string all = form.front + "5" + form.back + "dd";
    const FailingInput input(all);
    EXPECT_EQ(next_token(kQuiet), (Token{ST_IOERR, CMD_IGNORE, all, 0}));
  }
  EXPECT_EQ(messages.text(), "");
}

TEST_F(QSequence, NoDataNeedsNoByteBehindTheEndFrame) {
  for (const CountForm& form : count_forms()) {
    restart();
    the_filter().command_line.framed_output = 1;
    const std::string all = form.front + "0" + form.back;
    const StandardInput input(end_frame(all));
    EXPECT_EQ(next_token(), (Token{ST_OK, form.code, all, 0}));
  }
}

TEST_F(QSequence, LargeDataStaysPendingBehindTheEndFrame) {
  restart();
  the_filter().command_line.framed_output = 1;
  const StandardInput input(end_frame(kEscQ + "1;5000!a"));
  EXPECT_EQ(next_token(), (Token{ST_OK, CMD_Q_AL_EX, kEscQ + "1;5000!a", 5000}));
  EXPECT_EQ(next_token(), kEndOfInput);
}

TEST_F(QSequence, DataGoesOnAcrossFrames) {
  restart();
  the_filter().command_line.framed_output = 1;
  const StandardInput input(cnt_frame(kEscQ + "1;5!aab") + cnt_frame("c") + end_frame("deZ"));
  EXPECT_EQ(next_token(), (Token{ST_OK, CMD_Q_AL_EX, kEscQ + "1;5!aabcde", 0}));
  EXPECT_EQ(rest_of_input(), "Z");
}

TEST_F(QSequence, AnOverlongSequenceEndsAtItsFirstByteFrom40To7f) {
  for (int value = 0; value < 256; ++value) {
    for (const std::size_t behind : {4097UL, 4098UL, 5000UL}) {
      // The byte stands at this place, no "!" in front of it.
      const std::string sequence = kEscQ + std::string(behind - 3, '1') + one(value) +
                                   (value >= 0x40 && value <= 0x7f ? "" : "A");
      restart();
      const StandardInput input(sequence + "Z");
      EXPECT_EQ(next_token(), (Token{ST_OK, CMD_IGNORE, sequence.substr(4096), 0})) << value;
      EXPECT_EQ(rest_of_input(), "Z");
    }
  }
}

TEST_F(QSequence, ADelAsTheLastByteThatFitsIsAParameter) {
  // It is the 4096th byte and no "!" stands in front, so the sequence goes on, and overflows; a
  // further DEL does not end it.
  const std::string sequence = kEscQ + std::string(4093, '1') +
                               "\x7f"
                               "2\x7f"
                               "3A";
  restart();
  const StandardInput input(sequence + "Z");
  EXPECT_EQ(next_token(), (Token{ST_OK, CMD_IGNORE,
                                 "2\x7f"
                                 "3A",
                                 0}));
  EXPECT_EQ(rest_of_input(), "Z");
}

TEST_F(QSequence, AnEndingDelAroundTheRecordsCapacity) {
  for (const std::size_t total : {4095UL, 4096UL, 4097UL, 4098UL}) {
    const std::string sequence = kEscQ + "1;0;" + std::string(total - 8, '1') + "!\x7f";
    restart();
    const StandardInput input(sequence + "Z");
    const Token expected = total <= 4096 ? Token{ST_OK, CMD_Q_DEL_EX, sequence, 0}
                                         : Token{ST_OK, CMD_IGNORE, sequence.substr(4096), 0};
    EXPECT_TRUE(next_token() == expected) << total;
    EXPECT_EQ(rest_of_input(), "Z");
  }
}

TEST_F(QSequence, AnOverlongSequenceNeverReadsData) {
  for (const char* end : {"1;2!a", "!p", "1;2 n", "1;2 o", "1;2!\x7f", "1;2;3;4;2/~"}) {
    restart();
    const StandardInput input(kEscQ + std::string(4094, '1') + end + "ddZ");
    EXPECT_EQ(next_token(), (Token{ST_OK, CMD_IGNORE, end, 0}));
    EXPECT_EQ(rest_of_input(), "ddZ");
  }
}

}  // namespace
}  // namespace rlx
