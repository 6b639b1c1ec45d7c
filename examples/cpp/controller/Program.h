// The program to run, as a process object takes it.
#pragma once

#include <string>
#include <vector>

namespace controller {

class Program {
 public:
  // The program is looked for in the search path; its arguments reach it as they are given here.
  // Throws std::runtime_error when it cannot be found.
  explicit Program(std::vector<std::string> words);

  const std::string& name() const { return words_.front(); }
  int count() const { return static_cast<int>(words_.size()); }
  // One for each word, valid while the object lives.
  std::vector<char*> words();

 private:
  std::vector<std::string> words_;
};

}  // namespace controller
