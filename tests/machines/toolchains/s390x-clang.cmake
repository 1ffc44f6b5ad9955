# 64 bits, big-endian; plain char has no sign.
# The C library, the C++ library and the linker are those of g++'s packages.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET s390x-linux-gnu)
foreach(tool IN ITEMS AR NM OBJDUMP RANLIB READELF)
  string(TOLOWER ${tool} program)
  set(CMAKE_${tool} /usr/bin/s390x-linux-gnu-${program})
endforeach()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-s390x-static -L /usr/s390x-linux-gnu)
