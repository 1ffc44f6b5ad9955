#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "rlx_reader/job_visitor.h"

namespace rlx::spooler {

/// Pages that a printer gets, counted in its job.
struct PageCount {
  std::uint64_t pages = 0;
  std::uint64_t impressions = 0;  ///< each page as often as the printer makes copies of it
};

/// Told of a page that has ended. @param number  from 1. @param copies  what the job then asks for.
using PageListener = std::function<void(std::uint64_t number, unsigned copies)>;

/// Counts pages. The copies are those that the job asks the printer for (CPS in its parameters).
/// They last to the end of a job: another one behind it begins with what its own parameters say.
class PageCounter : public reader::JobVisitor {
 public:
  explicit PageCounter(PageListener listener) : listener_(std::move(listener)) {}

  void begin_block(const reader::Block& block) override;
  void payload(const reader::Block& block, reader::Bytes part) override;
  void end_block(const reader::Block& block) override;
  void begin_page(std::uint64_t number, const reader::Block& block) override;
  void end_page(std::uint64_t number) override;

  /// To be called behind the end of the job: its last page may have no end.
  void finish();

  const PageCount& count() const { return count_; }

 private:
  void count_page();

  PageListener listener_;
  PageCount count_;
  std::string parameters_;
  unsigned copies_ = 1;
  unsigned new_copies_ = 1;  ///< of the parameters behind the last page; 1 without any
  bool in_page_ = false;
};

}  // namespace rlx::spooler
