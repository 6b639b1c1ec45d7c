#include <tessel/NYXProcess.h>

namespace tessel {

NYXProcess::NYXProcess() = default;

NYXProcess::~NYXProcess() = default;

// Backslashes stand for themselves unless a quotation mark follows: the closing one, too.
std::string NYXProcess::quoteArgument(const std::string& argument) {
  std::string quoted = "\"";
  std::size_t backslashes = 0;
  for (const char c : argument) {
    if (c == '"') quoted.append(backslashes + 1, '\\');
    backslashes = c == '\\' ? backslashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(backslashes, '\\') + '"';
}

}  // namespace tessel
