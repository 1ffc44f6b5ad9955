# Another C library: musl. Its packages have no C++ library, and the filter needs none at run time;
# it is built with the headers of g++'s own. Those ask which version of glibc there is: none.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER g++)
execute_process(COMMAND g++ -dumpversion OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE)
string(JOIN " " CMAKE_CXX_FLAGS_INIT
       -nostdinc++ -isystem /usr/include/c++/${version}
       -isystem /usr/include/x86_64-linux-gnu/c++/${version}
       -specs=/usr/lib/x86_64-linux-musl/musl-gcc.specs "\"-D__GLIBC_PREREQ(major,minor)=0\"")
