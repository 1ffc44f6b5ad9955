#include "rlx_reader/sequence.h"

#include <gtest/gtest.h>

#include "rlx_reader/job_parameters.h"
#include "rlx_reader/sequence_shape.h"
#include "support/escaped_bytes.h"
#include "tools/read_job.h"

namespace rlx::testing {
namespace {

/// "NAME: parameter value, ..." of an escaped sequence.
std::string described(std::string_view escaped) {
  const std::string bytes = decode_escaped(escaped).value();
  const reader::SequenceInfo info = reader::describe_sequence(reader_bytes(bytes));
  std::string all = info.name;
  for (const reader::Parameter& parameter : info.parameters) {
    all += (&parameter == info.parameters.data() ? ": " : ", ") + parameter.name + " " +
           parameter.value;
  }
  return all;
}

struct Meaning {
  const char* escaped;
  const char* described;
};

TEST(Sequences, OfPageHeadersAreDecoded) {
  const Meaning meanings[] = {
      {R"(\eQ240!A)", "density: dots per inch 240"},
      {R"(\eQ1;7200!C)", "unit: length 1/7200 in"},
      {R"(\eQ2;300!C)", "unit: length 2/300 in"},
      {R"(\eQ12!C)", "unit: length ?"},
      {R"(\eQ1;0!C)", "unit: length ?"},
      {R"(\eQ0;4;1;1!@)", "paper: size A4, tray P2, orientation landscape"},
      {R"(\eQ0;3;0;0!@)", "paper: size A3, tray P1, orientation portrait"},
      {R"(\eQ1;5;3;0!@)", "paper: size B5, tray P3, orientation portrait"},
      {R"(\eQ3;4;4;1!@)", "paper: size letter, tray P4, orientation landscape"},
      {R"(\eQ2;4;2;2!@)", "paper: size ?, tray ?, orientation ?"},
      {R"(\eQ1;4;0!F)", "paper: size B4, orientation portrait"},
      {R"(\eQ10;;00110;!\\)", "form length: length 11 in"},
      {R"(\eQ10;;00035;!\\)", "form length: length 3.5 in"},
      {R"(\eQ100;100!I)", "full size: width 100 %, height 100 %"},
      {R"(\eQ66;80!I)", "reduction: width 66 %, height 80 %"},
      {R"(\eQ66;120!I)", "scale: width 66 %, height 120 %"},
      {R"(\eQ2;2;00500;00000!W)", "duplex: binding edge upper, binding margin 500/7200 in"},
      {R"(\eQ2;0;00000;00000!W)", "duplex: binding edge left, binding margin 0/7200 in"},
      {R"(\eQ0;;;!W)", "simplex"},
      {R"(\eQ1440;;;!H)", "offsets: first 1440/7200 in, second none"},
      {R"(\eQ;2000;;!H)", "offsets: first none, second 2000/7200 in"},
      {R"(\eQ;;;!H)", "offsets: first none, second none"},
  };
  for (const Meaning& meaning : meanings) {
    EXPECT_EQ(described(meaning.escaped), meaning.described) << meaning.escaped;
  }
}

TEST(Sequences, OfPageDataAreDecoded) {
  const Meaning meanings[] = {
      {R"(\e$@)", "double-byte set"},
      {R"(\e(H)", "single-byte set"},
      {R"(\e$D)", "download set"},
      {R"(\e$B)", "passed on"},
      {R"(\ec)", "passed on"},
      {R"(\e\x7f\x00\x00\x01\x06)", "job start"},
      {R"(\e\x7f\x00\x00\x01\x00)", "job end"},
      {R"(\e\x7f1234)", "passed on"},
      {R"(\s%"$ p)", "line pitch: pitch 2400/7200 in = 24/72 in, 3 lines per inch"},
      {R"(\s%!( p)", "line pitch: pitch 1800/7200 in = 18/72 in, 4 lines per inch"},
      {R"(\s%!" p)", "line pitch: pitch 1200/7200 in = 12/72 in, 6 lines per inch"},
      {R"(\s%) p)", "line pitch: pitch 900/7200 in = 9/72 in, 8 lines per inch"},
      {R"(\s%& p)", "line pitch: pitch 600/7200 in = 6/72 in, 12 lines per inch"},
      {R"(\s%!!!q)", "line pitch: pitch 1111/7200 in = 11.11/72 in, 6.48 lines per inch"},
      {R"(\s%p)", "line pitch: pitch 0/7200 in = 0/72 in"},
      {R"(\s%!ap)", "line pitch"},
      {R"(\s$!$$p)", "double-byte pitch: pitch 1440/7200 in, 5 per inch"},
      {R"(\s&! u)", "character spacing: spacing 105"},
      {R"(\s&!"p)", "character spacing: spacing 120"},
      {R"(\s(`q)", "standard state"},
      {R"(\s(ap)", "standard state"},
      {R"(\s(!p)", "passed on"},
      {R"(\s"!p)", "passed on"},
      {R"(\s*!p)", "passed on"},
      {R"(\sJ)", "passed on"},
      {R"(\sK)", "passed on"},
      {R"(\s0"r)", "glyph size: rows 22"},
      {R"(\e[12`)", "to column position: position 12/7200 in"},
      {R"(\e[12a)", "right by: distance 12/7200 in"},
      {R"(\e[12d)", "to line position: position 12/7200 in"},
      {R"(\e[12e)", "down by: distance 12/7200 in"},
      {R"(\e[e)", "down by: distance ?"},
      {R"(\e[12 E)", "passed on"},
      {R"(\eQ1 y)", "character size: set single-byte"},
      {R"(\eQ2 y)", "character size: set double-byte"},
      {R"(\eQ3 y)", "character size: set ?"},
      {R"(\eQ0;0720/G)", "character pitch: pitch 720/7200 in, 10 per inch"},
      {R"(\eQ1;!f)", "standard state"},
      {R"(\eQ2;!f)", "passed on"},
      {R"(\eQ1;5!a)", "content: data 5 bytes"},
      {R"(\eQ1;1!a)", "content: data 1 byte"},
      {R"(\eQ1;2!x)", "content"},
      {R"(\eQ1;2!y)", "content"},
      {R"(\eQ1;2!z)", "content"},
      {R"(\eQ1;2!\x7f)", "content: data 2 bytes"},
      {R"(\eQ1;2;3;4;3/~)", "content: data 3 bytes"},
      {R"(\eQ1;2!p)", "passed on: data 32 bytes"},
      {R"(\eQ9;3 n)", "for the operator: data 3 bytes"},
      {R"(\eQ0;0000000043/`)", "pass through"},
  };
  for (const Meaning& meaning : meanings) {
    EXPECT_EQ(described(meaning.escaped), meaning.described) << meaning.escaped;
  }
}

TEST(Sequences, WithoutAMeaningArePassedOn) {
  // Every other one of the language, with its separator.
  for (const char* const end : {" p", " x", " ~", "!D", "!R", "!X", "!Y", "!]", "!b", "!c", "!f",
                                "!j", "!k", "!l", "!m", "!n", "!q", "!s", "!u", "!v", "!~", "/E",
                                "/F", "/H", "/I", "/U", "/V", "/W", "/X", "/b", "/p", "/|", "/}"}) {
    EXPECT_EQ(described(std::string("\\eQ1;2") + end), "passed on") << end;
  }
}

TEST(Sequences, CarryTheirNumbers) {
  const auto info = reader::describe_sequence(reader_bytes("\x1c%!\" p"));
  ASSERT_EQ(info.parameters.size(), 1U);
  EXPECT_EQ(info.parameters[0].number, 1200U);
  EXPECT_EQ(info.spelled, "FS \"%!\\\" p\"");
}

TEST(NumericForm, HasEachDigitAsAByte) {
  const auto number = [](std::string_view text) {
    return reader::numeric_form(reader_bytes(text));
  };
  EXPECT_EQ(number("!\" p"), 1200U);
  EXPECT_EQ(number("p"), 0U);
  EXPECT_EQ(number("y"), 9U);
  EXPECT_EQ(number("    y"), 9U);
  EXPECT_EQ(number(")))))))))))))))))y"), 999999999999999999U);
  EXPECT_FALSE(number("))))))))))))))))))y").has_value());
  EXPECT_FALSE(number("").has_value());
  EXPECT_FALSE(number("!").has_value());
  EXPECT_FALSE(number("z").has_value());
  EXPECT_FALSE(number("*p").has_value());
  EXPECT_FALSE(number("pp").has_value());
  EXPECT_FALSE(number("\x1fp").has_value());
}

TEST(CountedData, IsAsLongAsItsCountSays) {
  const auto count = [](std::string_view escaped) {
    return reader::counted_data(reader_bytes(decode_escaped(escaped).value()));
  };
  EXPECT_EQ(count(R"(\eQ1;5!a)"), 5U);
  EXPECT_EQ(count(R"(\eQ1;0000000000000000000000012!a)"), 12U);
  EXPECT_EQ(count(R"(\eQ1;9999999!a)"), 9999999U);
  EXPECT_EQ(count(R"(\eQ1;12345678!a)"), 0U);
  EXPECT_EQ(count(R"(\eQ1;!a)"), 0U);
  EXPECT_EQ(count(R"(\eQ5!a)"), 0U);
  EXPECT_EQ(count(R"(\eQ1!2;5!a)"), 0U);
  EXPECT_EQ(count(R"(\eQ1;5;6!a)"), 0U);
  EXPECT_EQ(count(R"(\eQ1;5!6!a)"), 5U);
  EXPECT_EQ(count(R"(\eQ1;5/a)"), 0U);
  EXPECT_EQ(count(R"(\eQ1;5!\x7f)"), 5U);
  EXPECT_EQ(count(R"(\eQ1;5;77!\x7f)"), 5U);
  EXPECT_EQ(count(R"(\eQ5!\x7f)"), 0U);
  EXPECT_EQ(count(R"(\eQ1;2!p)"), 32U);
  EXPECT_EQ(count(R"(\eQ!p)"), 32U);
  EXPECT_EQ(count(R"(\eQ1;2/p)"), 0U);
  EXPECT_EQ(count(R"(\eQ1;2 p)"), 0U);
  EXPECT_EQ(count(R"(\eQ9;7 n)"), 7U);
  EXPECT_EQ(count(R"(\eQ9;7!n)"), 0U);
  EXPECT_EQ(count(R"(\eQ1;2;3;4;6/~)"), 6U);
  EXPECT_EQ(count(R"(\eQ1;2;3;6/~)"), 0U);
  EXPECT_EQ(count(R"(\eQ1;2;3;4;6;7/~)"), 0U);
  EXPECT_EQ(count(R"(\eQ1;2;3;4;6 ~)"), 0U);
  EXPECT_EQ(count(R"(\eQ1;5!b)"), 0U);
  EXPECT_EQ(count(R"(\s%!" p)"), 0U);
  EXPECT_EQ(count(R"(\ec)"), 0U);
}

TEST(SequenceShapes, TellWhereASequenceEnds) {
  const auto length = [](std::string_view escaped) {
    return reader::sequence_length(reader_bytes(decode_escaped(escaped).value()));
  };
  EXPECT_EQ(length(R"(\e)"), 0U);
  EXPECT_EQ(length(R"(\ec12)"), 2U);
  EXPECT_EQ(length(R"(\e$)"), 0U);
  EXPECT_EQ(length(R"(\e$@A)"), 3U);
  EXPECT_EQ(length(R"(\e\x7f123)"), 0U);
  EXPECT_EQ(length(R"(\e\x7f1234)"), 6U);
  EXPECT_EQ(length(R"(\e[1\n;2\x7f`A)"), 8U);
  EXPECT_EQ(length(R"(\sJA)"), 2U);
  EXPECT_EQ(length(R"(\s%AZzop)"), 7U);
  EXPECT_EQ(length(R"(\s%AZzo)"), 0U);
  EXPECT_EQ(length(R"(\eQ1;2)"), 0U);
}

TEST(SequenceShapes, TellWhereAJobIsPassedThrough) {
  const auto length = [](std::string_view escaped) {
    return reader::pass_through_length(reader_bytes(decode_escaped(escaped).value()));
  };
  EXPECT_EQ(length(R"(\eQ/`)"), 4U);
  EXPECT_EQ(length(R"(\eQ0;0000000043/`%%)"), 16U);
  EXPECT_EQ(length(R"(\eQ1 `)"), 0U);
  EXPECT_EQ(length(R"(\eQ1/a)"), 0U);
  EXPECT_EQ(length(R"(\eQ`)"), 0U);
  EXPECT_EQ(length(R"(A\eQ/`)"), 0U);
}

TEST(Spelling, NamesBytesAndQuotesText) {
  const auto spelled = [](std::string_view escaped) {
    return reader::spell(reader_bytes(decode_escaped(escaped).value()));
  };
  EXPECT_EQ(spelled(R"(\eQ1 y)"), R"(ESC "Q1 y")");
  EXPECT_EQ(spelled(R"(\s%!" p)"), R"(FS "%!\" p")");
  EXPECT_EQ(spelled(R"(\n\f\r\x7f\x00\x01\xff)"), "LF FF CR DEL NUL 01 ff");
  EXPECT_EQ(spelled(R"(A\nB)"), R"("A" LF "B")");
  EXPECT_EQ(spelled(R"(\\)"), R"("\\")");
  EXPECT_EQ(spelled(""), "");
}

TEST(JobParameters, AreExplained) {
  const auto explained = [](const char* line) {
    const reader::JobParameter parameter = reader::describe_job_parameter(line);
    return parameter.key + "|" + parameter.value + "|" + parameter.name + "|" + parameter.meaning;
  };
  EXPECT_EQ(explained("DCH=240"), "DCH|240|dots per inch|");
  EXPECT_EQ(explained("DUP=1"), "DUP|1|duplex|yes");
  EXPECT_EQ(explained("DUP=0"), "DUP|0|duplex|no");
  EXPECT_EQ(explained("ORT=4"), "ORT|4|orientation|LP, portrait, reduced");
  EXPECT_EQ(explained("ORT=9"), "ORT|9|orientation|");
  EXPECT_EQ(explained("BIN=2"), "BIN|2|tray|P2");
  EXPECT_EQ(explained("BIN=A"), "BIN|A|tray|P, any");
  EXPECT_EQ(explained("PSZ=LT"), "PSZ|LT|paper size|letter");
  EXPECT_EQ(explained("PSZ=A4"), "PSZ|A4|paper size|");
  EXPECT_EQ(explained("FFL=110"), "FFL|110|form length|11 in");
  EXPECT_EQ(explained("FFL=35"), "FFL|35|form length|3.5 in");
  EXPECT_EQ(explained("FFL=99999999999"), "FFL|99999999999|form length|");
  EXPECT_EQ(explained("CPS=-7"), "CPS|-7|copies|");
  EXPECT_EQ(explained("FOV=A=B"), "FOV|A=B|form overlay|");
  EXPECT_EQ(explained("XYZ=1"), "XYZ|1||");
  EXPECT_EQ(explained("%%%=Pji,0101,UNIC"), "%%%|Pji,0101,UNIC|fixed line|");
  EXPECT_EQ(explained("nothing"), "|nothing||");
  EXPECT_EQ(explained(""), "|||");
}

}  // namespace
}  // namespace rlx::testing
