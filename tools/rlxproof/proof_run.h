#pragma once

#include "rlxproof/options.h"

namespace rlx::proof {

/// Draws the proof that the command line asks for. What is wrong goes to standard error.
/// @return the exit status.
int run_proof(const Options& options);

}  // namespace rlx::proof
