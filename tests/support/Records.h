// Looking at what a RecordingHandler got.
#pragma once

#include <string>
#include <vector>

#include "support/RecordingHandler.h"

namespace tessel::test {

// The records of one type, in order; with a method name those of that method.
inline std::vector<Recorded> recordsOf(const RecordingHandler& handler, const LogRecordType& type,
                                       const std::string& method = std::string()) {
  std::vector<Recorded> records = handler.records();
  std::erase_if(records, [&](const Recorded& record) {
    return record.type != type || (!method.empty() && record.methodName != method);
  });
  return records;
}

}  // namespace tessel::test
