#pragma once

#include <string>

#include "rlx_reader/byte_input.h"
#include "rlxdump/output.h"

namespace rlx::dump {

/// A job that is compared.
struct NamedInput {
  std::string name;
  reader::ByteInput& input;
};

/// Writes what differs between two jobs, page by page: the number and the offset of each piece that
/// only one of them has, behind "-" for the first job and "+" for the second. Pages are compared by
/// their number.
/// @return true when the jobs are the same, byte for byte; nothing is written then.
/// @throws std::system_error when an input cannot be read, or the output not written.
bool compare_jobs(const NamedInput& first, const NamedInput& second, Output& output,
                  const Painter& painter);

}  // namespace rlx::dump
