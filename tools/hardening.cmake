# Hardening of all that is built, where compiler and linker have it: checks of the stack and of the
# C library's calls, indirect jumps to their targets only (CET), and all that the loader writes once
# is read-only afterwards. (That the program's address is its own each time is said in
# CMakeLists.txt: not all that is built is a program.) What it costs at start-up is measured by bench/compare.sh.
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)

# A compiler may know a flag and say that it has no use for it on this machine.
set(CMAKE_REQUIRED_FLAGS -Werror)
foreach(flag IN ITEMS -fstack-protector-strong -fstack-clash-protection -fcf-protection)
  string(MAKE_C_IDENTIFIER "have${flag}" have)
  check_cxx_compiler_flag(${flag} ${have})
  if(${have})
    add_compile_options(${flag})
  endif()
endforeach()
unset(CMAKE_REQUIRED_FLAGS)

# The checks of the C library's calls need an optimising build, and the sanitizers' own checks of the
# same calls stand in their way.
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()

foreach(flag IN ITEMS -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
  string(MAKE_C_IDENTIFIER "have${flag}" have)
  check_linker_flag(CXX ${flag} ${have})
  if(${have})
    add_link_options(${flag})
  endif()
endforeach()
