// What a call throws, exactly.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include <tessel/NLS.h>
#include <tessel/NYXException.h>
#include <tessel/RasDescriptor.h>

#include "internal/UnicodeEscapes.h"

namespace tessel::test {

// The text that the catalogue gives for a key and its inserts.
template <class... Inserts>
std::string messageText(const std::string& key, const Inserts&... inserts) {
  const RasDescriptor descriptor("Test", "com.kelvo.tessel.nativ.common.KTBNVMessages", nullptr);
  return NLS::format(descriptor, key, inserts...);
}

// The same as the log files and the standard streams show it.
template <class... Inserts>
std::string shownMessage(const std::string& key, const Inserts&... inserts) {
  return internal::withoutEscapes(messageText(key, inserts...));
}

// A fixed text of the diagnostics as the log files show it.
template <class... Inserts>
std::string shownElement(const std::string& key, const Inserts&... inserts) {
  const RasDescriptor descriptor("Test", "com.kelvo.tessel.nativ.common.KTBNVElements", nullptr);
  return internal::withoutEscapes(NLS::format(descriptor, key, inserts...));
}

// The message of the exception that the call throws; fails unless its class is exactly `Exception`.
template <class Exception, class Call>
std::string thrownBy(const Call& call) {
  try {
    call();
  } catch (const NYXException& exception) {
    EXPECT_TRUE(typeid(exception) == typeid(Exception)) << exception.toString();
    return exception.getMessage();
  }
  ADD_FAILURE() << "nothing was thrown";
  return std::string();
}

}  // namespace tessel::test
