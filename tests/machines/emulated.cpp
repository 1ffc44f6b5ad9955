// Becomes a program for another machine, under its emulator and with the same arguments, argv[0]
// among them: tests start this one as if it were that program. The build says which
// (tests/machines/run): RLX_EMULATOR is a list of words, RLX_EMULATED a path.

#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

int main(int /*argc*/, char** argv) {
  std::vector<std::string> words{RLX_EMULATOR, "-0", argv[0], RLX_EMULATED};
  std::vector<char*> arguments;
  arguments.reserve(words.size());
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  for (char** argument = argv + 1; *argument != nullptr; ++argument) {
    arguments.push_back(*argument);
  }
  arguments.push_back(nullptr);
  execvp(arguments.front(), arguments.data());
  std::perror(arguments.front());
  return 126;
}
