// A server whose listener fails for a reason of the system's, which the event log and the client then name.
//
// usage: language_server SERVICE LOG_FOLDER PATH
#include <windows.h>

#include <iostream>
#include <memory>
#include <string>

#include <tessel/tessel.h>

namespace {

using namespace tessel;

const RasDescriptor rd("LanguageServer", "com.kelvo.tessel.nativ.common.KTBNVMessages");

// Checks a file that does not exist.
class Failing : public IPCListener {
 public:
  explicit Failing(std::string path) : path_(std::move(path)) {}

  IPCMessage onMessage(const IPCMessage& request) override {
    try {
      NYXUtils::checkFilePermissions(path_);
    } catch (const NYXException& exception) {
      EventLog::errorNoFormat(rd, exception.getMessage());
      throw;
    }
    return request;
  }

 private:
  std::string path_;
};

LogFileProperties properties(const std::string& pattern) { return {pattern, 1 << 20, 2, false, false}; }

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::string folder = argv[2];
  NYXEnvironment::setProperty("com.kelvo.tessel.native.logdir", folder);
  RAS::initialize(RASEnvironment::DAEMON, properties(folder + "/event%g.log"), properties(folder + "/trace%g.log"), "");
  Failing listener(argv[3]);
  const std::unique_ptr<IPCServer> server(IPCServer::newInstance(argv[1], listener, -1));
  server->connect();
  std::cout << "ready" << std::endl;
  std::string line;
  std::getline(std::cin, line);
  server->disconnect();
  RAS::shutdown();
  return 0;
}
