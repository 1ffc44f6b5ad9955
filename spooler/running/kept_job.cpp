#include "running/kept_job.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <system_error>
#include <vector>

namespace rlx::spooler {

namespace {

[[noreturn]] void fail(int error, const std::string& what) {
  throw std::system_error(error, std::generic_category(), what);
}

std::string temporary_folder() {
  const char* const folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

Descriptor make_unnamed_file(const std::string& folder) {
  std::string path = folder + "/rlx-job-XXXXXX";
  Descriptor file(mkostemp(path.data(), O_CLOEXEC));
  if (!file.is_open()) {
    fail(errno, "the job cannot be kept in " + folder);
  }
  unlink(path.c_str());
  return file;
}

}  // namespace

KeptJob::KeptJob(int descriptor, const Cancellation& cancellation) : descriptor_(descriptor) {
  if (const off_t begin = lseek(descriptor, 0, SEEK_CUR); begin >= 0) {
    begin_ = begin;
    return;
  }
  const std::string folder = temporary_folder();
  copy_ = make_unnamed_file(folder);
  std::vector<std::uint8_t> portion(std::size_t{1} << 16);
  while (cancellation.wait_for(descriptor, POLLIN)) {
    const std::size_t count = read_some(descriptor, portion, "the job");
    if (count == 0) {
      break;
    }
    if (const int error = write_all(copy_.number(), std::span(portion).first(count)); error != 0) {
      fail(error, "the job cannot be kept in " + folder);
    }
  }
  descriptor_ = copy_.number();
}

int KeptJob::rewind() const {
  if (lseek(descriptor_, begin_, SEEK_SET) < 0) {
    fail(errno, "the job");
  }
  return descriptor_;
}

}  // namespace rlx::spooler
