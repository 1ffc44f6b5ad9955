#include "running/kept_job.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>
#include <thread>

#include "spooler/unit/spooler_rig.h"
#include "support/descriptors.h"

namespace rlx::spooler {
namespace {

using namespace rlx::testing;
namespace fs = std::filesystem;

std::string read_again(const KeptJob& job) {
  const Cancellation never;
  DescriptorSource source(job.rewind(), never);
  return read_all(source);
}

/// $TMPDIR while it lives.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::string& path) {
    if (const char* const before = std::getenv("TMPDIR"); before != nullptr) {
      before_ = before;
    }
    setenv("TMPDIR", path.c_str(), 1);
  }
  ~TemporaryFolder() {
    if (before_) {
      setenv("TMPDIR", before_->c_str(), 1);
    } else {
      unsetenv("TMPDIR");
    }
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

 private:
  std::optional<std::string> before_;
};

TEST(KeptJob, OfAFileIsTheFile) {
  const Cancellation never;
  const Descriptor file = memory_file("the job");
  const KeptJob job(file.number(), never);
  EXPECT_EQ(job.rewind(), file.number());
  EXPECT_EQ(read_again(job), "the job");
  EXPECT_EQ(read_again(job), "the job");
}

TEST(KeptJob, BeginsWhereTheFileStood) {
  const Cancellation never;
  const Descriptor file = memory_file("read before|the job");
  lseek(file.number(), 12, SEEK_SET);
  const KeptJob job(file.number(), never);
  EXPECT_EQ(read_again(job), "the job");
  EXPECT_EQ(read_again(job), "the job");
}

TEST(KeptJob, OfAPipeIsACopyThatNobodySees) {
  const ScratchDirectory scratch;
  const TemporaryFolder folder(scratch.path());
  const Cancellation never;
  std::string text;
  for (int i = 0; i < 200000; ++i) {
    text += std::to_string(i) + '\n';
  }
  Pipe pipe = make_pipe();
  std::thread writer([&] {
    put_bytes(pipe.write_end.number(), text);
    pipe.write_end.reset();
  });
  const std::size_t before = open_descriptors();
  {
    const KeptJob job(pipe.read_end.number(), never);
    writer.join();
    EXPECT_TRUE(read_again(job) == text);
    EXPECT_TRUE(read_again(job) == text);
    EXPECT_TRUE(fs::is_empty(scratch.path()));
    EXPECT_EQ(fcntl(job.rewind(), F_GETFD), FD_CLOEXEC);
  }
  // The end of the pipe was closed meanwhile.
  EXPECT_EQ(open_descriptors(), before - 1);
}

TEST(KeptJob, IsKeptAsFarAsItCameWhenItIsCancelled) {
  Cancellation cancellation;
  const Pipe pipe = make_pipe();
  put_bytes(pipe.write_end.number(), "first part");
  std::thread asker([&cancellation] {
    usleep(50000);
    cancellation.ask();
  });
  const KeptJob job(pipe.read_end.number(), cancellation);
  asker.join();
  EXPECT_EQ(read_again(job), "first part");
}

std::string why_it_is_not_kept() {
  const Cancellation never;
  Pipe pipe = make_pipe();
  put_bytes(pipe.write_end.number(), std::string(60000, 'x'));
  pipe.write_end.reset();
  try {
    const KeptJob job(pipe.read_end.number(), never);
  } catch (const std::system_error& error) {
    return error.what();
  }
  return "kept";
}

TEST(KeptJob, NeedsAFolder) {
  const TemporaryFolder folder("/nowhere");
  EXPECT_EQ(why_it_is_not_kept(), "the job cannot be kept in /nowhere: No such file or directory");
}

TEST(KeptJob, NeedsRoom) {
  const ScratchDirectory scratch;
  if (mount("none", scratch.path().c_str(), "tmpfs", 0, "size=16k") != 0) {
    GTEST_SKIP() << "no right to mount";
  }
  {
    const TemporaryFolder folder(scratch.path());
    EXPECT_EQ(why_it_is_not_kept(),
              "the job cannot be kept in " + scratch.path() + ": No space left on device");
  }
  EXPECT_EQ(umount2(scratch.path().c_str(), MNT_DETACH), 0);
}

TEST(KeptJob, ThatCannotBeReadSaysSo) {
  const Cancellation never;
  EXPECT_THROW(KeptJob(-1, never), std::system_error);
}

}  // namespace
}  // namespace rlx::spooler
