#include "rlx-printer-app/web/form_data.h"

#include <gtest/gtest.h>

namespace rlx::printer_app {
namespace {

constexpr const char* kMultipart = "multipart/form-data; boundary=xYz";

std::string part(const std::string& header, const std::string& value) {
  return "--xYz\r\nContent-Disposition: form-data; " + header + "\r\n\r\n" + value + "\r\n";
}

TEST(FormData, ReadsQueries) {
  const FormData data = FormData::from_query("name=INV%4f+ICE&part=2&empty=&alone&x=1=2&bad=%zz%4");
  EXPECT_EQ(data.value("name"), "INVO ICE");
  EXPECT_EQ(data.value("part"), "2");
  EXPECT_EQ(data.value("x"), "1=2");
  EXPECT_EQ(data.value("bad"), "%zz%4");
  ASSERT_NE(data.find("empty"), nullptr);
  ASSERT_NE(data.find("alone"), nullptr);
  EXPECT_EQ(data.find("other"), nullptr);
  EXPECT_EQ(data.value("other"), "");
}

TEST(FormData, ReadsFilesWithAnyBytes) {
  const std::string bytes = std::string("a\0b\r\n--xY\r\n\r\n\xFF", 15);
  const std::string body =
      part("name=\"session\"", "token") +
      part("name=\"file\"; filename=\"C:\\\\forms\\\\A/B.txt\"\r\nContent-Type: x/y", bytes) +
      "--xYz--\r\n";
  const auto data = FormData::from_body(kMultipart, body);
  ASSERT_TRUE(data);
  EXPECT_EQ(data->value("session"), "token");
  ASSERT_NE(data->find("file"), nullptr);
  EXPECT_EQ(data->find("file")->value, bytes);
  EXPECT_EQ(data->find("file")->file_name, "B.txt");
}

TEST(FormData, RefusesEachBodyThatIsCut) {
  const std::string body = part("name=\"a\"", "1") + part("name=\"b\"", "2") + "--xYz--";
  ASSERT_TRUE(FormData::from_body(kMultipart, body));
  for (std::size_t length = 0; length < body.size(); ++length) {
    EXPECT_FALSE(FormData::from_body(kMultipart, body.substr(0, length))) << length;
  }
}

TEST(FormData, RefusesOtherBodies) {
  EXPECT_FALSE(FormData::from_body("application/json", "{}"));
  EXPECT_FALSE(FormData::from_body("", "a=1"));
  EXPECT_FALSE(FormData::from_body("multipart/form-data", part("name=\"a\"", "1") + "--xYz--"));
  EXPECT_FALSE(FormData::from_body(kMultipart, part("filename=\"a\"", "1") + "--xYz--"));
  EXPECT_FALSE(FormData::from_body(kMultipart, "--xYz\r\nX: y\r\n--xYz--"));
  EXPECT_TRUE(FormData::from_body("application/x-www-form-urlencoded; charset=UTF-8", "a=1"));
}

TEST(FormData, TakesNoMoreFieldsThanItSays) {
  std::string body;
  for (std::size_t i = 0; i < FormData::kMostFields; ++i) {
    body += part("name=\"a" + std::to_string(i) + "\"", "1");
  }
  EXPECT_TRUE(FormData::from_body(kMultipart, body + "--xYz--"));
  body += part("name=\"more\"", "1");
  EXPECT_FALSE(FormData::from_body(kMultipart, body + "--xYz--"));
}

}  // namespace
}  // namespace rlx::printer_app
