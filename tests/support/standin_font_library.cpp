#include "support/standin_font_library.h"

#include <filesystem>
#include <sstream>

#include "fonts/fal_library.h"
#include "fonts/font_sets.h"
#include "fonts/gaiji.h"
#include "job/fixed_paths.h"
#include "job/settings.h"
#include "support/tested_filter.h"
#include "support/the_filter.h"

namespace rlx::testing {

namespace {

constexpr const char* kDescription = "sandbox/standin/description";
constexpr const char* kLog = "sandbox/standin/log";

void install(const std::filesystem::path& library) {
  ASSERT_TRUE(std::filesystem::exists(library)) << library;
  const std::filesystem::path place(fixed_paths::kFontLibrary);
  std::filesystem::create_directories(place.parent_path());
  std::filesystem::remove(place);
  std::filesystem::create_symlink(std::filesystem::absolute(library), place);
  write_file(kLog, "");
}

}  // namespace

void install_font_library() {
  install(tested_font_library());
}

void install_font_library_without(std::string_view entry_point) {
  const std::filesystem::path complete(tested_font_library());
  install(complete.parent_path() / ("libfal_without_" + std::string(entry_point) + ".so"));
}

void describe_fonts(std::string_view lines) {
  write_file(kDescription, lines);
}

std::vector<std::string> take_font_calls() {
  std::istringstream log(read_file(kLog));
  write_file(kLog, "");
  std::vector<std::string> calls;
  for (std::string call; std::getline(log, call);) {
    calls.push_back(call);
  }
  return calls;
}

FontLibraryTest::FontLibraryTest() {
  restart_settings();
  fal_unload(the_filter().library);
  the_filter().fonts.sets = {};
  restart_gaiji();
  the_filter().messages.program_name = "filter";
}

FontLibraryTest::~FontLibraryTest() {
  restart_gaiji();
  the_filter().fonts.sets = {};
  fal_unload(the_filter().library);
  restart_settings();
}

void FontLibraryTest::load(std::string_view description) {
  install_font_library();
  describe_fonts(description);
  ASSERT_EQ(fal_load(the_filter().library), 0);
  the_filter().job.font_library_loaded = 1;
}

}  // namespace rlx::testing
