#include "spooler/fuzz/chance.h"

#include <algorithm>

namespace rlx::testing {

namespace {

void spoil_once(std::string& bytes, Chance& chance) {
  const std::size_t at = chance.below(bytes.size());
  switch (chance.below(8)) {
    case 0:
      bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^
                                    (1U << static_cast<unsigned>(chance.below(8))));
      break;
    case 1:
      bytes[at] = chance.byte();
      break;
    case 2:
      bytes.insert(at, chance.bytes(1 + chance.below(20)));
      break;
    case 3:
      bytes.erase(at, 1 + chance.below(20));
      break;
    case 4:
      bytes.insert(at, bytes.substr(at, 1 + chance.below(40)));
      break;
    case 5: {
      // Two bytes may be a length.
      constexpr std::array<std::string_view, 4> kLengths{"\xff\xff", "\x7f\xff", "\x80", "@"};
      const std::string_view length = chance.of(kLengths);
      bytes.replace(at, length.size(), length);
      break;
    }
    case 6:
      bytes.replace(at, 2, 2, '\0');
      break;
    default:
      bytes.resize(at);
      break;
  }
}

}  // namespace

void spoil(std::string& bytes, Chance& chance) {
  for (std::size_t times = 1 + chance.below(4); times > 0 && !bytes.empty(); --times) {
    spoil_once(bytes, chance);
  }
}

std::string path_out(Chance& chance) {
  constexpr std::array<std::string_view, 12> kFronts{"../",     "../../", "../../../../../../tmp/",
                                                     "/tmp/",   "/",      R"(..\)",
                                                     "%2e%2e/", "..%2f",  "a/../../",
                                                     "./",      "\0../",  "....//"};
  return std::string(chance.of(kFronts)) + std::string(kMark) + std::to_string(chance.below(10));
}

std::string odd_text(Chance& chance) {
  switch (chance.below(9)) {
    case 0:
      return {};
    case 1:
      return std::string(1 + chance.below(300), 'x');
    case 2:
      return std::string(1000 + chance.below(31000), 'L');
    case 3:
      return chance.bytes(1 + chance.below(64));
    case 4:
      return path_out(chance);
    case 5:
      return "%s%n%p{0}{99}";
    case 6:
      return std::string("a\0b", 3);
    case 7:
      return "\"><script>alert(1)</script>' \\ \n</Printer>\nNextJobId 7";
    default:
      return "\xe6\x97\xa5\xe6\x9c\xac \xc3( \xff\xfe \xed\xa0\x80";
  }
}

}  // namespace rlx::testing
