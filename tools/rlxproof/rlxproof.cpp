// Draws proof sheets of print jobs: the program.
#include <csignal>
#include <variant>

#include "rlxproof/options.h"
#include "rlxproof/proof_run.h"

int main(int argc, char** argv) {
  // A filter that ends early, or a reader of the PDF, is told by the failed write.
  std::signal(SIGPIPE, SIG_IGN);
  const auto options = rlx::proof::read_options(argc, argv);
  if (const int* const status = std::get_if<int>(&options)) {
    return *status;
  }
  return rlx::proof::run_proof(std::get<rlx::proof::Options>(options));
}
