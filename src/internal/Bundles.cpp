#include "internal/Bundles.h"

namespace tessel::internal {

const std::string& messagesBundle() {
  static const std::string& name = *new std::string(kMessages);
  return name;
}

const std::string& elementsBundle() {
  static const std::string& name = *new std::string(kElements);
  return name;
}

}  // namespace tessel::internal
