// A folder with the files of a SecureFileHandler.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <tessel/SecureFileHandler.h>

#include "support/Files.h"
#include "support/TempFolder.h"

namespace tessel::test {

struct HandlerOptions {
  int limit = 1000000;
  int count = 3;
  bool append = true;
  bool canRead = false;
};

class LogFolder {
 public:
  std::string path(const std::string& name) const { return (folder_.path() / name).string(); }
  std::string write(const std::string& name, const std::string& bytes) const {
    return folder_.write(name, bytes).string();
  }
  std::string bytes(const std::string& name) const { return bytesOf(folder_.path() / name); }
  std::vector<std::string> names() const { return namesIn(folder_.path()); }

  std::unique_ptr<SecureFileHandler> open(const HandlerOptions& options = {},
                                          const std::string& pattern = "t%g.log") const {
    return std::make_unique<SecureFileHandler>(path(pattern), options.limit, options.count, options.append,
                                               options.canRead, 0);
  }

 private:
  TempFolder folder_;
};

}  // namespace tessel::test
