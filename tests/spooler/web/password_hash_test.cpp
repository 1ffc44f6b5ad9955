#include "rlx-printer-app/web/password_hash.h"

#include <gtest/gtest.h>

namespace rlx::printer_app {
namespace {

// printf '0123456789abcdef:Lines2Print' | sha256sum
constexpr const char* kKept =
    "0123456789abcdef~b04193361daf782edcb686201ea90c42a15ab8a48211d4ad03047ddc89d38d81";

TEST(PasswordHash, TheSameNonceAndPasswordAreTheSameHash) {
  EXPECT_EQ(password_hash(kKept, "Lines2Print"), kKept);
}

TEST(PasswordHash, AnotherPasswordIsAnother) {
  for (const char* const password : {"", "wrong", "Lines2Prin", "Lines2Print ", "lines2print"}) {
    EXPECT_NE(password_hash(kKept, password), kKept) << password;
  }
}

TEST(PasswordHash, ANewOneHasANonceOfItsOwn) {
  const std::string first = password_hash("", "Lines2Print");
  const std::string second = password_hash("", "Lines2Print");
  EXPECT_NE(first, second);
  EXPECT_EQ(first.find('~'), 16U);
  EXPECT_EQ(first.size(), 81U);
  EXPECT_EQ(password_hash(first, "Lines2Print"), first);
  EXPECT_NE(password_hash(first, "Lines3Print"), first);
}

}  // namespace
}  // namespace rlx::printer_app
