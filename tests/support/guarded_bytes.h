#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace rlx::testing {

/// A page of memory between two pages that nobody may touch.
class GuardedBytes {
 public:
  GuardedBytes() : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    void* const pages = mmap(nullptr, 3 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(pages, MAP_FAILED);
    bytes_ = static_cast<std::uint8_t*>(pages) + page_;
    EXPECT_EQ(mprotect(bytes_, page_, PROT_READ | PROT_WRITE), 0);
  }
  ~GuardedBytes() { munmap(bytes_ - page_, 3 * page_); }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;

  /// The bytes, so that the first one behind them cannot be read.
  const std::uint8_t* at_end(std::string_view bytes) {
    std::uint8_t* const place = bytes_ + page_ - bytes.size();
    std::memcpy(place, bytes.data(), bytes.size());
    return place;
  }
  /// The bytes, so that the one before them cannot be read.
  const std::uint8_t* at_start(std::string_view bytes) {
    std::memcpy(bytes_, bytes.data(), bytes.size());
    return bytes_;
  }

 private:
  std::size_t page_;
  std::uint8_t* bytes_ = nullptr;
};

}  // namespace rlx::testing
