#include "internal/ArgumentText.h"

namespace tessel::internal {

std::string bracketedArguments(const LogRecord& record) {
  std::string text;
  for (unsigned i = 0; i < record.getNumArguments(); ++i) {
    if (i > 0) text += ' ';
    text += '[';
    text += record.getArgument(i);
    text += ']';
  }
  return text;
}

}  // namespace tessel::internal
