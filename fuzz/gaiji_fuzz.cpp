// User-defined characters, with a font library of this target's own that answers as the input says:
// fonts that are missing or fail to open, characters that are missing or fail to be read, patterns
// of exactly the size that was asked for.
//
// Input: a byte of switches, then operations: characters, changes of size and typeface, reloads.

#include <dlfcn.h>

#include <set>

#include "fresh_filter.h"
#include "support/the_filter.h"

namespace rlx::fuzzing {
namespace {

/// What the font library does next, and what it has handed out.
struct Library {
  Choices* choices = nullptr;
  std::set<std::int32_t> open_fonts;
  std::int32_t last_font = 0;
  int lists = 0;
  std::unique_ptr<std::uint8_t[]> pattern;
  int error_class = 0;
  int error_detail = 0;
  int missing_glyph = 0;
};

Library library;

int fail_with(std::uint8_t choice) {
  library.error_class = choice % 12 - 1;
  library.error_detail = choice;
  return kFalOpenError;
}

std::int32_t open_font(const FalFontQuery* query, std::uint32_t mask, FalFontList** missing) {
  require(mask == kFalQueryMask && query->size_width == query->size_height, "font query");
  const std::uint8_t choice = library.choices->byte();
  if ((choice & 0x30) == 0x10) {
    *missing = reinterpret_cast<FalFontList*>(&library.lists);
    ++library.lists;
  }
  if (choice >= 0xf8) {
    return fail_with(choice);
  }
  if (choice >= 0xc0) {
    return kFalNoFont;
  }
  library.open_fonts.insert(++library.last_font);
  return library.last_font;
}

const std::uint8_t* read_font(std::int32_t font, std::uint32_t code, std::int32_t width,
                              std::int32_t height) {
  require(library.open_fonts.count(font) == 1, "a closed font is read");
  require(width >= 1 && width <= kMaxPatternDots && height >= 1 && height <= kMaxPatternDots,
          "size of a pattern");
  const std::uint8_t choice = library.choices->byte();
  library.missing_glyph = choice >= 0xe0 ? kFalGlyphMissing : 0;
  if (choice % 64 == 63) {
    fail_with(choice);
    return choice < 128 ? nullptr : reinterpret_cast<const std::uint8_t*>(UINTPTR_MAX);
  }
  const auto size = static_cast<std::size_t>((width + 7) / 8 * height);
  library.pattern = std::make_unique<std::uint8_t[]>(size);
  for (std::size_t i = 0; i < size; ++i) {
    library.pattern[i] = static_cast<std::uint8_t>(code * 31 + i * choice);
  }
  return library.pattern.get();
}

int close_font(std::int32_t font) {
  require(library.open_fonts.erase(font) == 1, "a font is closed twice");
  return 0;
}

void free_list(FalFontList* list) {
  require(reinterpret_cast<int*>(list) == &library.lists && library.lists > 0, "a freed list");
  --library.lists;
}

void install(Choices& choices) {
  library = {};
  library.choices = &choices;
  the_filter().library.handle = dlopen(nullptr, RTLD_LAZY);
  the_filter().library.open_sys_font = open_font;
  the_filter().library.read_font = read_font;
  the_filter().library.close_font = close_font;
  the_filter().library.free_font_list = free_list;
  the_filter().library.error_class = &library.error_class;
  the_filter().library.error_detail = &library.error_detail;
  the_filter().library.missing_glyph = &library.missing_glyph;
  the_filter().job.font_library_loaded = 1;
}

/// Opens the fonts of the job's class. @return false when the library failed; then none is open.
bool open_fonts(std::uint8_t switches) {
  const Status status =
      fonts_open(the_filter().fonts, the_filter().command_line.font_variant,
                 the_filter().job.high_resolution_fonts, switches & 1, switches >> 1 & 1);
  require(status == 0 || status == ST_FONT_ERROR, "status of the fonts");
  require(status == 0 || library.open_fonts.empty(), "a font is left open");
  require(library.lists == 0, "a list is not freed");
  gaiji_reset_cache(the_filter().gaiji);
  return status == 0;
}

bool is_download_code(std::string_view code) {
  return (code[0] == 'u' || code[0] == 'v') && code[1] >= '!' && code[1] <= '~';
}

/// The longest output: set, size, introducer, code, dots, code.
constexpr std::int32_t kLongest = 3 + 4 + 5 + 2 + 72 * 18 + 2;

struct Put {
  Status status;
  std::string text;
};

Put put(const CommandRecord& record, UndefinedGaijiRule rule, CharacterSetState& state) {
  static OutputBuffer out;
  out.length = 4711;
  const Status status = gaiji_put(the_filter().gaiji, record, rule, state, out);
  const bool in_range = the_filter().job.gaiji_typeface < kTypefaces;
  require(status == 0 || status == (in_range ? ST_FONT_ERROR : kGlyphOutOfRange),
          "status of a character");
  require(out.length >= 0 && out.length <= kLongest, "length of a download");
  require((status == 0) == (out.length != 0), "output of a character");
  return {status, std::string(text_of(out.bytes.data(), static_cast<std::size_t>(out.length)))};
}

void check_put(const CommandRecord& record, UndefinedGaijiRule rule, CharacterSetState& state) {
  const bool selected = state.set == CharacterSetState::kDoubleByte &&
                        state.designation == CharacterSetState::kDownloadDesignation;
  Put first = put(record, rule, state);
  if (first.status != 0) {
    return;
  }
  if (!selected) {
    require(first.text.starts_with("\x1b$D"), "the download set is not selected");
    first.text.erase(0, 3);
  }
  if (first.text.ends_with("\x1b$B\x1b(H_")) {
    require(rule == UndefinedGaijiRule::ubar && state.set == CharacterSetState::kSingleByte,
            "an undefined character");
    return;
  }
  require(state.designation == CharacterSetState::kDownloadDesignation, "the set behind it");
  if (first.text == "!!") {
    require(rule == UndefinedGaijiRule::space, "an undefined character");
    return;
  }
  const std::string code = first.text.substr(first.text.size() - 2);
  require(is_download_code(code), "download code");
  require(put(record, rule, state).text == code, "a character that the printer holds");
}

void put_character(Choices& choices, std::uint8_t switches, CharacterSetState& state) {
  static CommandRecord record;
  const std::string_view bytes = choices.bytes(1 + switches / 8 % 4);
  record.code = CMD_TEXT_GAIJI;
  record.length = static_cast<std::int32_t>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), record.bytes.begin());
  check_put(record, (switches & 0x80) != 0 ? UndefinedGaijiRule::ubar : UndefinedGaijiRule::space,
            state);
}

/// Puts so many characters that codes are given a second time.
void put_many(Choices& choices, CharacterSetState& state) {
  static CommandRecord record;
  record.code = CMD_TEXT_GAIJI;
  record.length = 2;
  record.bytes[0] = choices.byte();
  for (std::uint8_t c2 = 0; c2 < 200; ++c2) {
    record.bytes[1] = c2;
    check_put(record, UndefinedGaijiRule::space, state);
  }
}

void change_class(std::uint8_t switches) {
  constexpr int kClasses[][2] = {{0, 0}, {0, 1}, {1, 0}, {1, 1}, {2, 1}};
  const auto& chosen = kClasses[switches % 5];
  the_filter().command_line.font_variant = chosen[0];
  the_filter().job.high_resolution_fonts = chosen[1];
  the_filter().command_line.printer_class =
      (switches & 0x40) != 0 ? kPrinterClassF1 : kPrinterClassF0;
}

bool take_operation(Choices& choices, CharacterSetState& state) {
  const std::uint8_t what = choices.byte();
  switch (what % 8) {
    case 0:
      the_filter().job.gaiji_size_index = what / 8 % 7;
      return true;
    case 1:
      the_filter().job.gaiji_typeface = what / 8 % 3;
      return true;
    case 2:
      fonts_close(the_filter().fonts);
      require(library.open_fonts.empty(), "a font is left open");
      change_class(choices.byte());
      return open_fonts(what >> 3);
    case 3:
      state.select_single_byte();
      gaiji_reset_size(the_filter().gaiji);
      return true;
    case 4:
      if (what == 4) {
        put_many(choices, state);
      } else {
        state.select_double_byte();
      }
      return true;
    default:
      put_character(choices, what, state);
      return true;
  }
}

void run(Choices& choices) {
  change_class(choices.byte());
  CharacterSetState state;
  bool open = open_fonts(choices.byte());
  while (open && !choices.empty()) {
    open = take_operation(choices, state);
  }
  fonts_close(the_filter().fonts);
  require(library.open_fonts.empty(), "a font is left open");
}

}  // namespace
}  // namespace rlx::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rlx::fuzzing;
  Choices choices(data, std::min<std::size_t>(size, 2000));
  reset_filter();
  install(choices);
  const Messages messages;
  run(choices);
  static_cast<void>(rlx::fal_unload(the_filter().library));
  return 0;
}
