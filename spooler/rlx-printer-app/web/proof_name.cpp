#include "rlx-printer-app/web/proof_name.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <limits>
#include <system_error>

#include "mapping/words.h"

namespace rlx::printer_app {

namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::size_t kTrialBytes = 16;
constexpr unsigned kMostId = std::numeric_limits<int>::max();

}  // namespace

bool ProofName::read(const std::string& text) {
  *this = {};
  if (text.starts_with('t')) {
    const bool is_trial = text.size() == 1 + 2 * kTrialBytes &&
                          text.find_first_not_of(kHexDigits, 1) == std::string::npos;
    trial = is_trial ? text : "";
    return is_trial;
  }
  const std::size_t dash = text.find('-');
  if (dash == std::string::npos) {
    return false;
  }
  printer_id = spooler::whole_number(text.substr(0, dash), kMostId).value_or(0);
  job_id = spooler::whole_number(text.substr(dash + 1), kMostId).value_or(0);
  return printer_id > 0 && job_id > 0;
}

std::string new_trial_name() {
  std::array<std::uint8_t, kTrialBytes> bytes{};
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    throw std::system_error(errno, std::generic_category(), "random numbers");
  }
  std::string name = "t";
  for (const std::uint8_t byte : bytes) {
    name += {kHexDigits[byte >> 4U], kHexDigits[byte & 15U]};
  }
  return name;
}

}  // namespace rlx::printer_app
