# 64 bits, little-endian; plain char has no sign.
# The C library, the C++ library and the linker are those of g++'s packages.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
foreach(tool IN ITEMS AR NM OBJDUMP RANLIB READELF)
  string(TOLOWER ${tool} program)
  set(CMAKE_${tool} /usr/bin/aarch64-linux-gnu-${program})
endforeach()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64-static -L /usr/aarch64-linux-gnu)
