#include <tessel/NYXEnvironment.h>

#include <map>

#include <tessel/NYXThreadSyncImpl.h>
#include <tessel/PropertyNotFoundException.h>
#include <tessel/Synchronize.h>

namespace tessel {
namespace {

// The lock is a leaf: nothing is called while it is held.
struct Environment {
  NYXThreadSyncImpl lock;
  std::map<std::string, std::string> properties;
};

Environment& environment() {
  static Environment& instance = *new Environment;
  return instance;
}

}  // namespace

std::string NYXEnvironment::getProperty(const std::string& key) {
  Environment& all = environment();
  {
    const Synchronize guard(&all.lock);
    const auto known = all.properties.find(key);
    if (known != all.properties.end()) return known->second;
  }
  throw PropertyNotFoundException(key);
}

void NYXEnvironment::setProperty(const std::string& key, const std::string& value) {
  Environment& all = environment();
  const Synchronize guard(&all.lock);
  all.properties.emplace(key, value);
}

}  // namespace tessel
