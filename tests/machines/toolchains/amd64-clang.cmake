# This machine's kind, with the other compiler.
set(CMAKE_CXX_COMPILER clang++)
