// Mends PAPPL's function of this name, in whose place the dynamic linker puts it: a program's own
// functions come before those of libraries.
//
// PAPPL 1.3.1 writes a hash as NONCE~HASH and looks for the nonce's end as a ':'. To check a
// password it then gets what begins with the hash that it compares with, so every password is the
// right one, and to change a password no old one is.
#include "rlx-printer-app/web/password_hash.h"

#include <cups/cups.h>
#include <pappl/pappl.h>

#include <array>
#include <cstdio>
#include <random>

namespace rlx::printer_app {

namespace {

constexpr char kMark = '~';
constexpr std::size_t kHashBytes = 32;

std::string new_nonce() {
  std::random_device random;
  std::array<char, 17> digits{};
  std::snprintf(digits.data(), digits.size(), "%08x%08x", random(), random());
  return digits.data();
}

}  // namespace

std::string password_hash(const std::string& kept, const std::string& password) {
  const std::size_t end = kept.find(kMark);
  const std::string nonce = end == std::string::npos ? new_nonce() : kept.substr(0, end);
  const std::string text = nonce + ':' + password;
  std::array<unsigned char, kHashBytes> hash{};
  std::array<char, 2 * kHashBytes + 1> digits{};
  if (cupsHashData("sha2-256", text.data(), text.size(), hash.data(), hash.size()) < 0 ||
      cupsHashString(hash.data(), hash.size(), digits.data(), digits.size()) == nullptr) {
    return {};
  }
  return nonce + kMark + digits.data();
}

}  // namespace rlx::printer_app

extern "C" char* papplSystemHashPassword(pappl_system_t* system, const char* salt,
                                         const char* password, char* buffer, size_t bufsize) {
  if (buffer == nullptr || bufsize == 0) {
    return buffer;
  }
  std::string hash;
  if (system != nullptr && password != nullptr) {
    hash = rlx::printer_app::password_hash(salt == nullptr ? "" : salt, password);
  }
  // One that is cut, or none, must be equal to nothing that is kept.
  const bool fits = !hash.empty() && hash.size() < bufsize;
  std::snprintf(buffer, bufsize, "%s", fits ? hash.c_str() : "");
  return buffer;
}
