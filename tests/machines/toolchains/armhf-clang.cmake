# 32 bits, little-endian; plain char has no sign, and size_t is shorter than std::uint64_t.
# The C library, the C++ library and the linker are those of g++'s packages.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET arm-linux-gnueabihf)
foreach(tool IN ITEMS AR NM OBJDUMP RANLIB READELF)
  string(TOLOWER ${tool} program)
  set(CMAKE_${tool} /usr/bin/arm-linux-gnueabihf-${program})
endforeach()
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm-static -L /usr/arm-linux-gnueabihf)
