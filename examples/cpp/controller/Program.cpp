#include "Program.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <tessel/NYXProcess.h>

namespace controller {
namespace {

std::string find(const std::string& name) {
  constexpr DWORD kLongestPath = 32768;
  const std::string extension = ".exe";
  std::string path(kLongestPath, '\0');
  path.resize(SearchPathA(nullptr, name.c_str(), extension.c_str(), kLongestPath, path.data(), nullptr));
  if (path.empty()) throw std::runtime_error("cannot find the program " + name);
  // The case of a name does not matter to the system, but that of its end does to a process object.
  const std::size_t end = path.size() - std::min(path.size(), extension.size());
  if (lstrcmpiA(path.c_str() + end, extension.c_str()) == 0) path.replace(end, std::string::npos, extension);
  return path;
}

}  // namespace

Program::Program(std::vector<std::string> words) : words_(std::move(words)) {
  words_.at(0) = find(words_[0]);
  for (std::size_t i = 1; i < words_.size(); ++i) words_[i] = tessel::NYXProcess::quoteArgument(words_[i]);
}

std::vector<char*> Program::words() {
  std::vector<char*> pointers;
  for (std::string& word : words_) pointers.push_back(word.data());
  return pointers;
}

}  // namespace controller
