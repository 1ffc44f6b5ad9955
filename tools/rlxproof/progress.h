#pragma once

#include <cstdint>
#include <functional>

namespace rlx::proof {

/// A bar on the terminal at standard error, for jobs of more than kFirstPage pages. Without a
/// terminal there there is nothing.
class Progress {
 public:
  static constexpr std::uint64_t kFirstPage = 100;

  /// @param total  bytes of the job; 0 when that is not known: then pages are counted alone.
  /// @param done   tells how many of them were read.
  Progress(std::uint64_t total, std::function<std::uint64_t()> done);
  /// Wipes the bar away.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// A page was laid out.
  void page(std::uint64_t number);

 private:
  std::uint64_t total_;
  std::function<std::uint64_t()> done_;
  bool is_terminal_;
  bool is_shown_ = false;
};

}  // namespace rlx::proof
