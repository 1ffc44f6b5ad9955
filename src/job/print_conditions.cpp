#include "job/print_conditions.h"

namespace rlx {

PrintConditions print_conditions;

void reset_print_conditions() {
  print_conditions = PrintConditions{};
}

}  // namespace rlx
