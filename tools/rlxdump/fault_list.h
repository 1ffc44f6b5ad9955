#pragma once

#include "rlx_reader/job_visitor.h"
#include "rlxdump/output.h"

namespace rlx::dump {

/// Writes a line for each fault: OFFSET: what. Nothing when there is none.
class FaultList : public reader::JobVisitor {
 public:
  FaultList(Output& output, const Painter& painter) : output_(output), painter_(painter) {}

  void fault(const reader::Fault& fault) override;

  bool any() const { return any_; }

 private:
  Output& output_;
  const Painter& painter_;
  bool any_ = false;
};

}  // namespace rlx::dump
