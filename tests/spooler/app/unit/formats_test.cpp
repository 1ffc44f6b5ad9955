#include "rlx-printer-app/formats.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace rlx::printer_app {
namespace {

std::string detected(std::string_view front) {
  const char* const format =
      detect_format(reinterpret_cast<const unsigned char*>(front.data()), front.size(), nullptr);
  return format == nullptr ? "none" : format;
}

TEST(Formats, ThreeArePrinted) {
  for (const char* const format :
       {"text/plain", "application/vnd.rlx-lines", "application/vnd.rlx"}) {
    EXPECT_TRUE(is_printable(format)) << format;
  }
  for (const char* const format : {"application/pdf", "text/html", "image/jpeg", "text/plai",
                                   "application/octet-stream", ""}) {
    EXPECT_FALSE(is_printable(format)) << format;
  }
  EXPECT_FALSE(is_printable(nullptr));
}

TEST(Formats, TextIsText) {
  EXPECT_EQ(detected("PLAIN\tTEXT\r\n\f"), kText);
  EXPECT_EQ(detected("\xe6\x97\xa5\xe6\x9c\xac"), kText) << "UTF-8";
  EXPECT_EQ(detected(""), kText);
}

TEST(Formats, SequencesAreLines) {
  EXPECT_EQ(detected("TEXT\033Q1"), kLines);
  EXPECT_EQ(detected("\x1cTEXT"), kLines);
}

TEST(Formats, AJobParameterBlockIsThePrintersLanguage) {
  EXPECT_EQ(detected("\033Q0;0123456789/`and more"), kPrinterLanguage);
  EXPECT_EQ(detected("\033Q0;0123456789/"), kLines) << "cut";
}

TEST(Formats, OtherControlBytesAreNothing) {
  EXPECT_EQ(detected(std::string_view("\0\1\2", 3)), "none");
  EXPECT_EQ(detected("A\x7f"), "none");
}

}  // namespace
}  // namespace rlx::printer_app
