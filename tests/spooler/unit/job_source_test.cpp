#include "running/job_source.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

#include "spooler/unit/spooler_rig.h"
#include "support/descriptors.h"
#include "support/escaped_bytes.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;

constexpr std::size_t kRoomForAll = 65536;

TEST(DescriptorSource, GivesWhatIsThereToTheEnd) {
  const Cancellation never;
  const Descriptor file = memory_file(std::string(100000, 'x') + "end");
  DescriptorSource source(file.number(), never);
  EXPECT_TRUE(read_all(source, 777) == std::string(100000, 'x') + "end");
}

TEST(DescriptorSource, EndsWhenTheJobIsCancelled) {
  Cancellation cancellation;
  const Pipe pipe = make_pipe();
  put_bytes(pipe.write_end.number(), "abc");
  DescriptorSource source(pipe.read_end.number(), cancellation);
  std::vector<std::uint8_t> room(2);
  EXPECT_EQ(source.read(room), 2U);
  std::thread asker([&cancellation] {
    usleep(20000);
    cancellation.ask();
  });
  EXPECT_EQ(source.read(room), 1U);
  EXPECT_EQ(source.read(room), 0U);
  asker.join();
  // Even when there is more.
  put_bytes(pipe.write_end.number(), "abc");
  EXPECT_EQ(source.read(room), 0U);
}

TEST(DescriptorSource, TellsWhatCannotBeRead) {
  const Cancellation never;
  DescriptorSource source(-1, never);
  std::vector<std::uint8_t> room(2);
  EXPECT_THROW(source.read(room), std::exception);
}

TEST(TextInFront, ComesFirst) {
  for (const std::size_t room : {1U, 2U, 3U, 4U, 7U, 100U}) {
    PortionSource rest("the rest", 5);
    TextInFront source("front|", rest);
    EXPECT_EQ(read_all(source, room), "front|the rest");
  }
}

TEST(TextInFront, CanBeEmpty) {
  PortionSource rest("the rest", 5);
  TextInFront source("", rest);
  EXPECT_EQ(read_all(source), "the rest");
  PortionSource nothing("", 5);
  TextInFront alone("front", nothing);
  EXPECT_EQ(read_all(alone), "front");
}

std::string convert(const std::string& charset, const std::string& text,
                    std::size_t portion = kRoomForAll, std::size_t room = kRoomForAll) {
  PortionSource bytes(text, portion);
  ConvertedText converted(charset, bytes);
  return read_all(converted, room);
}

std::string fault_of(const std::string& charset, const std::string& text,
                     std::size_t portion = kRoomForAll, std::size_t room = kRoomForAll) {
  try {
    convert(charset, text, portion, room);
  } catch (const ConversionFault& fault) {
    return fault.what();
  }
  return "no fault";
}

/// A text in an encoding, and the same in UTF-8.
struct Sample {
  const char* charset;
  std::string text;
  std::string utf8;
};

const std::string kNihonA =
    "\xe6\x97\xa5\xe6\x9c\xac"
    "A\n";

const std::vector<Sample>& samples() {
  static const std::vector<Sample> all{
      {"Shift_JIS", "\x93\xfa\x96{A\n", kNihonA},
      {"EUC-JP",
       "\xc6\xfc\xcb\xdc"
       "A\n",
       kNihonA},
      {"ISO-2022-JP", "\033$BF|K\\\033(BA\n", kNihonA},
      {"ISO-2022-JP", "\033$BF|\033(B\033$BK\\\033(BA\n", kNihonA},
      {"UTF-16LE", bytes("\xe5\x65\x2c\x67\x41\x00\x0a\x00"), kNihonA},
      {"UTF-16BE", bytes("\x65\xe5\x67\x2c\x00\x41\x00\x0a"), kNihonA},
      {"UTF-16", bytes("\xff\xfe\xe5\x65\x2c\x67\x41\x00\x0a\x00"), kNihonA},
      // Halfwidth katakana, in one byte and in two.
      {"Shift_JIS", "\xb1\n", "\xef\xbd\xb1\n"},
      {"EUC-JP", "\x8e\xb1\n", "\xef\xbd\xb1\n"},
      // JIS X 0212, in three.
      {"EUC-JP", "\x8f\xb0\xa1\n", "\xe4\xb8\x82\n"},
      // What is no sequence though a byte of it is ESC or FS: U+1B1C, U+1C1B.
      {"UTF-16LE", bytes("\x1c\x1b\x1b\x1c\x41\x00"),
       "\xe1\xac\x9c\xe1\xb0\x9b"
       "A"},
      {"UTF-16BE", bytes("\x1b\x1c\x1c\x1b\x00\x41"),
       "\xe1\xac\x9c\xe1\xb0\x9b"
       "A"},
      {"UTF-16BE", bytes("\xd8\x1b\xdc\x1c"), "\xf0\x96\xb0\x9c"},
      // Characters that are held back, for another one may be put on them; the last one, too.
      {"EUC-JISX0213", "\xa4\xab\xa4\xab", "\xe3\x81\x8b\xe3\x81\x8b"},
      {"EUC-JISX0213", "\xa4\xf7\xa4\xab", "\xe3\x81\x8b\xe3\x82\x9a\xe3\x81\x8b"},
      {"Shift_JISX0213", "A\x82\xa9", "A\xe3\x81\x8b"},
      {"ISO-8859-1", "\xe9\f\r\n", "\xc3\xa9\f\r\n"},
      {"IBM037", "\xc1\x25", "A\n"},
      {"Shift_JIS", "", ""},
  };
  return all;
}

TEST(ConvertedText, IsUtf8) {
  for (const Sample& sample : samples()) {
    EXPECT_EQ(convert(sample.charset, sample.text), sample.utf8) << sample.charset;
  }
}

TEST(ConvertedText, IsTheSameInPortionsAndRoomsOfAnySize) {
  for (const Sample& sample : samples()) {
    for (std::size_t portion = 1; portion <= 10; ++portion) {
      for (const std::size_t room : {1U, 2U, 3U, 4U, 5U, 63U, 64U, 65536U}) {
        ASSERT_EQ(convert(sample.charset, sample.text, portion, room), sample.utf8)
            << sample.charset << ' ' << portion << ' ' << room;
      }
    }
  }
}

TEST(ConvertedText, OfAnyLengthIsWhole) {
  // Characters lie over the borders of whatever is read at once.
  for (const std::size_t lead : {0U, 1U}) {
    std::string text(lead, 'x');
    std::string expected(lead, 'x');
    for (int i = 0; i < 40000; ++i) {
      text += "\xc6\xfc";
      expected += "\xe6\x97\xa5";
    }
    EXPECT_TRUE(convert("EUC-JP", text) == expected);
    EXPECT_TRUE(convert("EUC-JP", text, 4097, 1000) == expected);
  }
  std::string shifts;
  std::string expected;
  for (int i = 0; i < 20000; ++i) {
    shifts += "\033$BF|\033(BA";
    expected +=
        "\xe6\x97\xa5"
        "A";
  }
  EXPECT_TRUE(convert("ISO-2022-JP", shifts) == expected);
}

struct Faulty {
  const char* charset;
  std::string text;
  const char* fault;
};

const std::vector<Faulty>& faulty_texts() {
  static const std::vector<Faulty> all{
      {"EUC-JP", "AB\xff", "byte 2 of the job: this is no character of EUC-JP"},
      {"EUC-JP", "\xff", "byte 0 of the job: this is no character of EUC-JP"},
      {"EUC-JP",
       "\xc6\xfc\xcb"
       "A",
       "byte 2 of the job: this is no character of EUC-JP"},
      {"EUC-JP", "A\xc6\xfc\xcb", "byte 3 of the job: the job ends inside a character of EUC-JP"},
      {"EUC-JP", "\xcb", "byte 0 of the job: the job ends inside a character of EUC-JP"},
      {"Shift_JIS", "A\x93", "byte 1 of the job: the job ends inside a character of Shift_JIS"},
      {"UTF-16LE", "A", "byte 0 of the job: the job ends inside a character of UTF-16LE"},
      {"ISO-2022-JP", "A\033$B\xff\xff", "byte 4 of the job: this is no character of ISO-2022-JP"},
      // An ESC that begins no shift of the encoding.
      {"ISO-2022-JP", "A\033Q1;7200!C",
       "byte 1 of the job: a control sequence; only text without them can be converted from "
       "ISO-2022-JP"},
      {"ISO-2022-JP", "A\033$",
       "byte 1 of the job: the job ends inside a character of ISO-2022-JP"},
      {"EUC-JP", "AB\033Q1;2 n",
       "byte 2 of the job: a control sequence; only text without them can be converted from "
       "EUC-JP"},
      {"EUC-JP", "AB\xc6\xfc\034K",
       "byte 4 of the job: a control sequence; only text without them can be converted from "
       "EUC-JP"},
      {"EUC-JP", "\033",
       "byte 0 of the job: a control sequence; only text without them can be converted from "
       "EUC-JP"},
      {"UTF-16LE", bytes("A\0\x1b\0B\0"),
       "byte 2 of the job: a control sequence; only text without them can be converted from "
       "UTF-16LE"},
      {"UTF-16BE", bytes("\0A\0B\0\x1c\0B"),
       "byte 4 of the job: a control sequence; only text without them can be converted from "
       "UTF-16BE"},
      {"UTF-16BE", bytes("\xd8\x1b\0\x1b\0A"),
       "byte 0 of the job: this is no character of UTF-16BE"},
  };
  return all;
}

TEST(ConvertedText, RefusesWhatIsNoText) {
  for (const Faulty& faulty : faulty_texts()) {
    for (std::size_t portion = 1; portion <= 12; ++portion) {
      for (const std::size_t room : {1U, 3U, 65536U}) {
        ASSERT_EQ(fault_of(faulty.charset, faulty.text, portion, room), faulty.fault)
            << encode_escaped_line(faulty.text) << ' ' << portion << ' ' << room;
      }
    }
  }
}

TEST(ConvertedText, CountsBytesFromTheBeginningOfTheJob) {
  EXPECT_EQ(fault_of("EUC-JP", std::string(100000, 'x') + "\xff"),
            "byte 100000 of the job: this is no character of EUC-JP");
  EXPECT_EQ(fault_of("EUC-JP", std::string(99999, 'x') + "\033(H", 4096, 100).substr(0, 22),
            "byte 99999 of the job:");
}

/// ESC is 27 there: the place is not exact, but it is refused.
TEST(ConvertedText, RefusesSequencesInEbcdic) {
  EXPECT_NE(fault_of("IBM037", "\xc1\x27\xd8").find("a control sequence"), std::string::npos);
}

}  // namespace
}  // namespace rlx::spooler
