#include "rlxdump/fault_list.h"

namespace rlx::dump {

void FaultList::fault(const reader::Fault& fault) {
  any_ = true;
  output_.put(painter_.paint(Look::bold, std::to_string(fault.offset)) + ": " + fault.what + '\n');
}

}  // namespace rlx::dump
