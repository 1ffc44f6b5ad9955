// The functions on memory, libraries, the clock and messages, as the program meets them.

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <ctime>

#include "faults/shim.h"

#define SHIM_NAME(name) __asm__(name) __attribute__((visibility("default"), noinline))
#define CALLED_BY_PROGRAM watched(__builtin_return_address(0))

namespace rlx::testing {
namespace {

int print(bool is_watched, std::FILE* stream, const char* format, std::va_list arguments) {
  return is_watched && fails(Call::message, Role::messages)
             ? -1
             : std::vfprintf(stream, format, arguments);
}

}  // namespace

extern "C" {

/// The C library's own name of malloc: the loader calls malloc before names can be looked up.
void* real_malloc(std::size_t size) __asm__("__libc_malloc");

void* shim_malloc(std::size_t size) SHIM_NAME("malloc");
void* shim_malloc(std::size_t size) {
  return CALLED_BY_PROGRAM && fails(Call::malloc, Role::none) ? nullptr : real_malloc(size);
}

void* shim_dlopen(const char* path, int mode) SHIM_NAME("dlopen");
void* shim_dlopen(const char* path, int mode) {
  static const auto real = next<void* (*)(const char*, int)>("dlopen");
  return CALLED_BY_PROGRAM && fails(Call::dlopen, Role::none) ? nullptr : real(path, mode);
}

void* shim_dlsym(void* library, const char* name) SHIM_NAME("dlsym");
void* shim_dlsym(void* library, const char* name) {
  static const auto real = next<void* (*)(void*, const char*)>("dlsym");
  return CALLED_BY_PROGRAM && fails(Call::dlsym, Role::none) ? nullptr : real(library, name);
}

// A dlclose that fails has not released the library.
int shim_dlclose(void* library) SHIM_NAME("dlclose");
int shim_dlclose(void* library) {
  static const auto real = next<int (*)(void*)>("dlclose");
  return CALLED_BY_PROGRAM && fails(Call::dlclose, Role::none) ? -1 : real(library);
}

int shim_putenv(char* setting) SHIM_NAME("putenv");
int shim_putenv(char* setting) {
  static const auto real = next<int (*)(char*)>("putenv");
  return CALLED_BY_PROGRAM && fails(Call::putenv, Role::none) ? -1 : real(setting);
}

std::time_t shim_time(std::time_t* place) SHIM_NAME("time");
std::time_t shim_time(std::time_t* place) {
  static const auto real = next<std::time_t (*)(std::time_t*)>("time");
  return CALLED_BY_PROGRAM && fails(Call::time, Role::none) ? -1 : real(place);
}

char* shim_ctime(const std::time_t* moment) SHIM_NAME("ctime");
char* shim_ctime(const std::time_t* moment) {
  static const auto real = next<char* (*)(const std::time_t*)>("ctime");
  return CALLED_BY_PROGRAM && fails(Call::ctime, Role::none) ? nullptr : real(moment);
}

int shim_fprintf(std::FILE* stream, const char* format, ...) SHIM_NAME("fprintf");
int shim_fprintf(std::FILE* stream, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = print(CALLED_BY_PROGRAM, stream, format, arguments);
  va_end(arguments);
  return result;
}

int shim_fprintf_chk(std::FILE* stream, int flag, const char* format, ...)
    SHIM_NAME("__fprintf_chk");
int shim_fprintf_chk(std::FILE* stream, int /*flag*/, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = print(CALLED_BY_PROGRAM, stream, format, arguments);
  va_end(arguments);
  return result;
}

std::size_t shim_fwrite(const void* bytes, std::size_t size, std::size_t count, std::FILE* stream)
    SHIM_NAME("fwrite");
std::size_t shim_fwrite(const void* bytes, std::size_t size, std::size_t count, std::FILE* stream) {
  static const auto real =
      next<std::size_t (*)(const void*, std::size_t, std::size_t, std::FILE*)>("fwrite");
  return CALLED_BY_PROGRAM && fails(Call::message, Role::messages)
             ? 0
             : real(bytes, size, count, stream);
}

int shim_fputs(const char* text, std::FILE* stream) SHIM_NAME("fputs");
int shim_fputs(const char* text, std::FILE* stream) {
  static const auto real = next<int (*)(const char*, std::FILE*)>("fputs");
  return CALLED_BY_PROGRAM && fails(Call::message, Role::messages) ? EOF : real(text, stream);
}

int shim_fputc(int byte, std::FILE* stream) SHIM_NAME("fputc");
int shim_fputc(int byte, std::FILE* stream) {
  static const auto real = next<int (*)(int, std::FILE*)>("fputc");
  return CALLED_BY_PROGRAM && fails(Call::message, Role::messages) ? EOF : real(byte, stream);
}

void shim_perror(const char* prefix) SHIM_NAME("perror");
void shim_perror(const char* prefix) {
  static const auto real = next<void (*)(const char*)>("perror");
  if (!CALLED_BY_PROGRAM || !fails(Call::message, Role::messages)) {
    real(prefix);
  }
}
}

}  // namespace rlx::testing
