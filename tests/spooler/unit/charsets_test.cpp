#include "mapping/charsets.h"

#include <gtest/gtest.h>

namespace rlx::spooler {
namespace {

TEST(Charsets, AreKnownByTheNamesOfIconv) {
  for (const char* name : {"EUC-JP", "euc-jp", "Shift_JIS", "SJIS", "CP932", "ISO-2022-JP",
                           "UTF-16LE", "ISO-8859-1", "UTF-8", "US-ASCII", "EUC-JISX0213"}) {
    EXPECT_TRUE(is_known_charset(name)) << name;
  }
}

TEST(Charsets, OfOtherNamesAreUnknown) {
  for (const char* name :
       {"EUC", "Shift JIS", "EUC-JP2", "binary", "../../tmp/EUC-JP", "/", "//"}) {
    EXPECT_FALSE(is_known_charset(name)) << name;
  }
}

TEST(Charsets, TakeNoWordAboutFaults) {
  for (const char* name : {"EUC-JP//", "EUC-JP//TRANSLIT", "EUC-JP//IGNORE", "//IGNORE"}) {
    EXPECT_FALSE(is_known_charset(name)) << name;
  }
}

TEST(Charsets, ThatAreUtf8AsTheyAre) {
  for (const char* name : {"UTF-8", "utf-8", "UTF8", "utf8"}) {
    EXPECT_TRUE(is_utf_8(name)) << name;
  }
  for (const char* name : {"", "UTF", "UTF-16", "US-ASCII", "UTF-8-MAC", "ISO-8859-1", "EUC-JP"}) {
    EXPECT_FALSE(is_utf_8(name)) << name;
  }
}

}  // namespace
}  // namespace rlx::spooler
