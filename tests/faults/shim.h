#pragma once

#include <cstddef>

#include "faults/fault_board.h"

namespace rlx::testing {

// The inside of the preloaded shim. It runs in the program under test, before and below it: it
// needs nothing but the C library, and none of the functions it stands in front of.

/// The real function of a name that the shim has taken.
void* next_function(const char* name);

template <typename Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(next_function(name));
}

/// True when a call is to be counted: there is a board, and the caller is the program itself.
bool watched(const void* return_address);

/// Counts a call. @return the fault that it meets, with errno set; null when it goes on as usual.
const Fault* meet_fault(Call call, Role role);

/// meet_fault of a call that either works or fails. @return true when it fails.
inline bool fails(Call call, Role role) {
  return meet_fault(call, role) != nullptr;
}

Role role_of_path(const char* path);
Role role_of_descriptor(int descriptor);
void remember_role(int descriptor, Role role);

/// Most bytes that a transfer moves in the plan that has no fault for it.
std::size_t limited(Call call, std::size_t count);

/// Adds to what was written to standard output.
void note_written(Role role, long count);

bool input_never_ready();

}  // namespace rlx::testing
