#include "rlx-printer-app/folder_lock.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

#include "support/descriptors.h"

namespace rlx::printer_app {
namespace {

TEST(FolderLock, OneServerHasAFolder) {
  const testing::ScratchDirectory scratch;
  std::optional<FolderLock> first(std::in_place, ".");
  try {
    const FolderLock second(".");
    FAIL() << "a second one has it, too";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(), "another server uses .: process " + std::to_string(getpid()));
  }
  first.reset();
  EXPECT_NO_THROW(FolderLock("."));
}

TEST(FolderLock, AFolderThatCannotBeWrittenIsAnError) {
  const testing::ScratchDirectory scratch;
  EXPECT_THROW(FolderLock("nowhere"), std::runtime_error);
}

TEST(FolderLock, OnesOwnAndAFreeFolderAreNotAnothers) {
  const testing::ScratchDirectory scratch;
  EXPECT_FALSE(is_anothers("."));
  const FolderLock lock(".");
  EXPECT_FALSE(is_anothers("."));
  if (geteuid() == 0) {
    ASSERT_EQ(chown("lock", 1, 1), 0);
    EXPECT_TRUE(is_anothers("."));
  }
}

}  // namespace
}  // namespace rlx::printer_app
