#include "mapping/charsets.h"

#include <iconv.h>

#include <cstdint>

#include "mapping/words.h"

namespace rlx::spooler {

bool is_known_charset(const std::string& name) {
  if (name.find('/') != std::string::npos) {
    return false;
  }
  iconv_t conversion = iconv_open("UTF-8", name.c_str());
  const bool known = reinterpret_cast<std::intptr_t>(conversion) != -1;
  if (known) {
    iconv_close(conversion);
  }
  return known;
}

bool is_utf_8(std::string_view name) {
  return same_word(name, "UTF-8") || same_word(name, "UTF8");
}

}  // namespace rlx::spooler
