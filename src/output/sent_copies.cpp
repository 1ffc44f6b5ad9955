#include "output/sent_copies.h"

#include "job/settings.h"

namespace rlx {

SentCopies sent_copies;

bool form_length_changed() {
  return job_settings.form_length_tenths != 0 &&
         job_settings.form_length_tenths != sent_copies.form_length_tenths;
}

bool duplex_changed() {
  const PrintConditions& now = print_conditions;
  const PrintConditions& sent = sent_copies.conditions;
  return now.condition_flag_3[0] != '\0' && (now.condition_flag_3 != sent.condition_flag_3 ||
                                             now.condition_value_3 != sent.condition_value_3 ||
                                             now.condition_flag_1 != sent.condition_flag_1 ||
                                             now.condition_flag_2 != sent.condition_flag_2);
}

}  // namespace rlx
