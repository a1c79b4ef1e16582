// Writes a shell's completion script, for the build.
#include <iostream>
#include <string_view>

#include "host/completion/completion.hpp"

int main(int count, char** words) {
  const std::string_view shell = count == 2 ? words[1] : "";
  if (shell == "bash") {
    std::cout << orvane::host::BashCompletion();
  } else if (shell == "zsh") {
    std::cout << orvane::host::ZshCompletion();
  } else {
    std::cerr << "orvane-completions bash | zsh\n";
    return 64;
  }
  return std::cout.flush() ? 0 : 1;
}
