#include "faults/shim.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace rlx::testing {

namespace {

constexpr std::size_t kDescriptors = 64;

struct Shim {
  FaultBoard* board = nullptr;
  std::uintptr_t program_begin = 0;
  std::uintptr_t program_end = 0;
  std::array<Role, kDescriptors> roles{};
};

Shim shim;

/// dlsym has been taken as well; its version, which tells the real one apart, is another on each
/// machine.
void* real_dlsym() {
  for (const char* const version : {"GLIBC_2.34", "GLIBC_2.2.5", "GLIBC_2.17", "GLIBC_2.27",
                                    "GLIBC_2.0", "GLIBC_2.4", "GLIBC_2.2", "GLIBC_2.36"}) {
    if (void* const found = dlvsym(RTLD_NEXT, "dlsym", version); found != nullptr) {
      return found;
    }
  }
  return nullptr;
}

struct RoleName {
  std::string_view part;
  Role role;
};

constexpr std::array kRolesByPath{
    RoleName{"/fcbe/", Role::form},        RoleName{"wrmtkenv", Role::environment},
    RoleName{"g1gaiji", Role::g1_range},   RoleName{"libfal.so", Role::font_library},
    RoleName{"wrmtk64log.txt", Role::log},
};

/// The program is the first object that the loader knows.
int take_program(dl_phdr_info* object, std::size_t /*size*/, void* /*data*/) {
  for (int i = 0; i < object->dlpi_phnum; ++i) {
    const auto& segment = object->dlpi_phdr[i];
    if (segment.p_type == PT_LOAD && (segment.p_flags & PF_X) != 0) {
      shim.program_begin = object->dlpi_addr + segment.p_vaddr;
      shim.program_end = shim.program_begin + segment.p_memsz;
    }
  }
  return 1;
}

/// By system calls: open and close have been taken.
void map_board() {
  const long file = syscall(SYS_openat, AT_FDCWD, kBoardFile, O_RDWR | O_CLOEXEC);
  if (file < 0) {
    std::abort();
  }
  void* const board = mmap(nullptr, sizeof(FaultBoard), PROT_READ | PROT_WRITE, MAP_SHARED,
                           static_cast<int>(file), 0);
  syscall(SYS_close, file);
  if (board == MAP_FAILED) {
    std::abort();
  }
  shim.board = static_cast<FaultBoard*>(board);
}

void ignore_signal(int /*signal*/) {}

/// Without SA_RESTART, so that the signal ends what waits.
void accept_signals() {
  struct sigaction action {};
  action.sa_handler = ignore_signal;
  sigaction(SIGUSR1, &action, nullptr);
}

/// What the test program itself was started with may be open as well.
void limit_descriptors(rlim_t count) {
  for (std::size_t descriptor = STDERR_FILENO + 1; descriptor < kDescriptors; ++descriptor) {
    syscall(SYS_close, descriptor);
  }
  const rlimit limit{count, count};
  setrlimit(RLIMIT_NOFILE, &limit);
}

__attribute__((constructor)) void start_shim() {
  if (std::getenv(kBoardVariable) == nullptr) {
    return;
  }
  dl_iterate_phdr(take_program, nullptr);
  shim.roles.fill(Role::other);
  shim.roles[STDIN_FILENO] = Role::input;
  shim.roles[STDOUT_FILENO] = Role::output;
  shim.roles[STDERR_FILENO] = Role::messages;
  map_board();
  alarm(shim.board->time_limit_seconds);
  if (shim.board->plan.interruptible) {
    accept_signals();
  }
  if (shim.board->plan.descriptors != 0) {
    limit_descriptors(shim.board->plan.descriptors);
  }
  shim.board->tally.shim_stands = true;
}

bool meets(const Fault& fault, Call call, Role role, std::uint32_t number) {
  return fault.first != 0 && fault.call == call && fault.role == role && number >= fault.first &&
         number - fault.first < fault.times;
}

}  // namespace

void* next_function(const char* name) {
  using Dlsym = void* (*)(void*, const char*);
  static const auto find = reinterpret_cast<Dlsym>(real_dlsym());
  return find(RTLD_NEXT, name);
}

bool watched(const void* return_address) {
  const auto address = reinterpret_cast<std::uintptr_t>(return_address);
  return shim.board != nullptr && address >= shim.program_begin && address < shim.program_end;
}

const Fault* meet_fault(Call call, Role role) {
  Tally& tally = shim.board->tally;
  const std::uint32_t number =
      ++tally.calls[static_cast<std::size_t>(call)][static_cast<std::size_t>(role)];
  for (const Fault& fault : shim.board->plan.faults) {
    if (meets(fault, call, role, number)) {
      if (tally.faults_met++ == 0) {
        tally.written_before_fault = tally.written;
      }
      errno = fault.error;
      return &fault;
    }
  }
  return nullptr;
}

Role role_of_path(const char* path) {
  const auto* const known =
      std::find_if(kRolesByPath.begin(), kRolesByPath.end(), [path](const RoleName& name) {
        return std::string_view(path).find(name.part) != std::string_view::npos;
      });
  return known == kRolesByPath.end() ? Role::other : known->role;
}

Role role_of_descriptor(int descriptor) {
  const auto index = static_cast<std::size_t>(descriptor);
  return index < kDescriptors ? shim.roles[index] : Role::other;
}

void remember_role(int descriptor, Role role) {
  const auto index = static_cast<std::size_t>(descriptor);
  if (index < kDescriptors) {
    shim.roles[index] = role;
  }
}

std::size_t limited(Call call, std::size_t count) {
  const Plan& plan = shim.board->plan;
  const std::size_t limit = call == Call::write ? plan.write_limit : plan.read_limit;
  return limit == 0 ? count : std::min(count, limit);
}

void note_written(Role role, long count) {
  if (role == Role::output && count > 0) {
    shim.board->tally.written += static_cast<std::uint64_t>(count);
  }
}

bool input_never_ready() {
  return shim.board->plan.input_never_ready;
}

}  // namespace rlx::testing
