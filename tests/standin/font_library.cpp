// A stand-in for the font access library, with its seven entry points. What it does is told by a
// description file, and it keeps a log of every call; both are found relative to the current
// directory, so that tests of the whole program can use it too. support/standin_font_library.h says
// what the two files hold. It needs the C library alone, as the filter does, so it goes with every
// build of the filter.

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fonts/fal_api.h"
#include "standin/glyph_dots.h"

namespace rlx {

struct FalFontList {
  int number;
};

}  // namespace rlx

extern "C" {
int fal_utyerror;
int fal_utyderror;
int fal_utyexists;
}

namespace {

constexpr const char* kDescription = "sandbox/standin/description";
constexpr const char* kLog = "sandbox/standin/log";

int lists_handed_out = 0;
/// The pattern of the last read, of exactly its size, so that a reader behind it is caught.
std::uint8_t* last_pattern = nullptr;

__attribute__((format(printf, 1, 2))) void log_call(const char* format, ...) {
  std::FILE* const log = std::fopen(kLog, "a");
  if (log == nullptr) {
    return;
  }
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(log, format, arguments);
  va_end(arguments);
  static_cast<void>(std::fclose(log));
}

/// Tells of its own loading and unloading.
struct Lifetime {
  Lifetime() { log_call("load\n"); }
  ~Lifetime() {
    std::free(last_pattern);
    log_call("unload\n");
  }
} lifetime;

/// Hands every line of the description to a function.
template <typename Function>
void for_each_line(Function&& take_line) {
  std::FILE* const description = std::fopen(kDescription, "r");
  if (description == nullptr) {
    return;
  }
  char line[256];
  while (std::fgets(line, sizeof line, description) != nullptr) {
    take_line(line);
  }
  static_cast<void>(std::fclose(description));
}

bool is_line(const char* line, const char* text) {
  const std::size_t length = std::strlen(text);
  return std::strncmp(line, text, length) == 0 && line[length] == '\n';
}

/// What the description says about one query.
struct OpenAnswer {
  std::int32_t font_id = rlx::kFalNoFont;
  int error_class = 0;
  int error_detail = 0;
  bool with_list = false;
};

OpenAnswer answer_to(const rlx::FalFontQuery& query) {
  OpenAnswer answer;
  for_each_line([&](const char* line) {
    int style = 0;
    int code_set = 0;
    int dots = 0;
    int letter = 0;
    int first = 0;
    int second = 0;
    const auto matches = [&] {
      return style == query.style && code_set == query.code_set && dots == query.size_width &&
             letter == query.letter_width;
    };
    if (is_line(line, "every-font")) {
      answer.font_id = query.style * 100000 + query.code_set * 10000 + query.size_width * 100 +
                       query.letter_width;
    } else if (is_line(line, "missing-list")) {
      answer.with_list = true;
    } else if (std::sscanf(line, "font %d %d %d %d %d", &style, &code_set, &dots, &letter,
                           &first) == 5) {
      answer.font_id = matches() ? first : answer.font_id;
    } else if (std::sscanf(line, "no-font %d %d %d %d", &style, &code_set, &dots, &letter) == 4) {
      answer.font_id = matches() ? rlx::kFalNoFont : answer.font_id;
    } else if (std::sscanf(line, "open-error %d %d %d %d %d %d", &style, &code_set, &dots, &letter,
                           &first, &second) == 6 &&
               matches()) {
      answer.font_id = rlx::kFalOpenError;
      answer.error_class = first;
      answer.error_detail = second;
    }
  });
  return answer;
}

enum class ReadResult { kPattern, kUndefined, kUndefinedWithPattern, kError, kNull };

/// What the description says about one character.
struct ReadAnswer {
  ReadResult result = ReadResult::kPattern;
  int error_class = 0;
  int error_detail = 0;
};

ReadAnswer answer_to(std::uint32_t asked) {
  ReadAnswer answer;
  for_each_line([&](const char* line) {
    unsigned code = 0;
    int first = 0;
    int second = 0;
    if (std::sscanf(line, "undefined %x", &code) == 1 && code == asked) {
      answer.result = ReadResult::kUndefined;
    } else if (std::sscanf(line, "undefined-with-pattern %x", &code) == 1 && code == asked) {
      answer.result = ReadResult::kUndefinedWithPattern;
    } else if (std::sscanf(line, "read-error %x %d %d", &code, &first, &second) == 3 &&
               code == asked) {
      answer = {ReadResult::kError, first, second};
    } else if (std::sscanf(line, "read-null %x %d %d", &code, &first, &second) == 3 &&
               code == asked) {
      answer = {ReadResult::kNull, first, second};
    }
  });
  return answer;
}

const std::uint8_t* pattern_of(std::int32_t font_id, std::uint32_t code, std::int32_t width,
                               std::int32_t height) {
  const std::int32_t row_bytes = (width + 7) / 8;
  std::free(last_pattern);
  last_pattern =
      static_cast<std::uint8_t*>(std::calloc(static_cast<std::size_t>(row_bytes * height), 1));
  if (last_pattern == nullptr) {
    std::abort();
  }
  for (std::int32_t row = 0; row < height; ++row) {
    for (std::int32_t column = 0; column < row_bytes * 8; ++column) {
      if (rlx::testing::glyph_dot(font_id, code, row, column)) {
        const auto position = static_cast<std::size_t>(row * row_bytes + column / 8);
        last_pattern[position] =
            static_cast<std::uint8_t>(last_pattern[position] | 0x80U >> (column % 8));
      }
    }
  }
  return last_pattern;
}

const char* variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "unset" : value;
}

}  // namespace

extern "C" std::int32_t FalOpenSysFont(const rlx::FalFontQuery* query, std::uint32_t mask,
                                       rlx::FalFontList** missing) {
  const OpenAnswer answer = answer_to(*query);
  fal_utyerror = answer.error_class;
  fal_utyderror = answer.error_detail;
  log_call(
      "open style=%d,%s shape=%d,%s set=%d,%s,%d final=%d size=%dx%d letter=%dx%d offset=%d,%d "
      "mask=%x LANG=%s FAL_LANG=%s -> %d",
      query->style, query->style_name, query->shape, query->shape_name, query->code_set,
      query->code_set_name, query->code_set_again, query->final_number, query->size_width,
      query->size_height, query->letter_width, query->letter_height, query->letter_offset_h,
      query->letter_offset_v, mask, variable("LANG"), variable("FAL_LANG"), answer.font_id);
  if (answer.with_list) {
    *missing = static_cast<rlx::FalFontList*>(std::malloc(sizeof(rlx::FalFontList)));
    if (*missing == nullptr) {
      std::abort();
    }
    (*missing)->number = ++lists_handed_out;
    log_call(" list %d", lists_handed_out);
  }
  log_call("\n");
  return answer.font_id;
}

extern "C" const std::uint8_t* FalReadFont(std::int32_t font_id, std::uint32_t code,
                                           std::int32_t width, std::int32_t height) {
  log_call("read %d %x %dx%d\n", font_id, code, width, height);
  const ReadAnswer answer = answer_to(code);
  fal_utyerror = answer.error_class;
  fal_utyderror = answer.error_detail;
  fal_utyexists = 0;
  switch (answer.result) {
    case ReadResult::kPattern:
      return pattern_of(font_id, code, width, height);
    case ReadResult::kUndefined:
      fal_utyexists = 1;
      return nullptr;
    case ReadResult::kUndefinedWithPattern:
      fal_utyexists = 1;
      return pattern_of(font_id, code, width, height);
    case ReadResult::kError:
      return reinterpret_cast<const std::uint8_t*>(UINTPTR_MAX);
    case ReadResult::kNull:
      break;
  }
  return nullptr;
}

extern "C" int FalCloseFont(std::int32_t font_id) {
  log_call("close %d\n", font_id);
  return 0;
}

extern "C" void FalFreeFontList(rlx::FalFontList* list) {
  log_call("free-list %d\n", list->number);
  // Whoever wants the error has to look before.
  fal_utyerror = 0;
  fal_utyderror = 0;
  std::free(list);
}
