#include <tessel/LogFileProperties.h>

namespace tessel {

LogFileProperties::LogFileProperties(const std::string& pattern, int limit, int count, bool append, bool canRead)
    : pattern_(pattern), limit_(limit), count_(count), append_(append), canRead_(canRead) {}

const std::string& LogFileProperties::getPattern() const { return pattern_; }
int LogFileProperties::getLimit() const { return limit_; }
int LogFileProperties::getCount() const { return count_; }
bool LogFileProperties::isAppend() const { return append_; }
bool LogFileProperties::isCanRead() const { return canRead_; }

void LogFileProperties::addApplicationProperty(const std::string& key, const std::string& value) {
  applicationProperties_[key] = value;
}

const LogFileProperties::ApplicationProperties& LogFileProperties::getApplicationProperties() const {
  return applicationProperties_;
}

}  // namespace tessel
