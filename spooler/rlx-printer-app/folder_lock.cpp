#include "rlx-printer-app/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace rlx::printer_app {

namespace {

std::string lock_of(const std::string& folder) {
  return folder + "/lock";
}

/// What the file holds: a number, and an end of line.
std::string holder_of(int file) {
  std::array<char, 32> text{};
  const ssize_t count = pread(file, text.data(), text.size(), 0);
  const std::string number(text.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  return number.substr(0, number.find_first_not_of("0123456789"));
}

}  // namespace

FolderLock::FolderLock(const std::string& folder)
    : file_(open(lock_of(folder).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644)) {
  if (!file_.is_open()) {
    throw std::runtime_error(lock_of(folder) + " cannot be written: " + std::strerror(errno));
  }
  if (flock(file_.number(), LOCK_EX | LOCK_NB) != 0) {
    throw std::runtime_error("another server uses " + folder + ": process " +
                             holder_of(file_.number()));
  }
  const std::string text = std::to_string(getpid()) + '\n';
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  if (ftruncate(file_.number(), 0) != 0 ||
      spooler::write_all(file_.number(), {bytes, text.size()}) != 0) {
    throw std::runtime_error(lock_of(folder) + " cannot be written");
  }
}

bool is_anothers(const std::string& folder) {
  const spooler::Descriptor file(open(lock_of(folder).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  struct stat status {};
  return file.is_open() && fstat(file.number(), &status) == 0 && status.st_uid != geteuid() &&
         flock(file.number(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

}  // namespace rlx::printer_app
