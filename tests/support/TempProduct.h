// A product root of its own, with the message catalogues that a test wants.
#pragma once

#include <string>

#include <tessel/NYXUtils.h>

#include "support/TempFolder.h"

namespace tessel::test {

// Is the product root for as long as it lives. A catalogue is read once per process: each test takes bundle names
// that no other test uses.
class TempProduct {
 public:
  TempProduct() : former_(NYXUtils::getenv("KTB_PROD")) { NYXUtils::setenv("KTB_PROD", root()); }
  ~TempProduct() { NYXUtils::setenv("KTB_PROD", former_); }
  TempProduct(const TempProduct&) = delete;
  TempProduct& operator=(const TempProduct&) = delete;

  std::string root() const { return folder_.path().string(); }

  // Writes the English catalogue, for example of "x.y.Msgs1" with the name "Msgs1".
  void writeCatalogue(const std::string& name, const std::string& bytes) const {
    folder_.write("lib/messages/" + name + ".properties", bytes);
  }

 private:
  TempFolder folder_;
  std::string former_;
};

}  // namespace tessel::test
