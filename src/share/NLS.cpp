#include <tessel/NLS.h>

#include <array>
#include <cstdarg>

#include <tessel/FFDC.h>
#include <tessel/NYXException.h>
#include <tessel/RasDescriptor.h>
#include <tessel/ResourceBundle.h>

#include "internal/MessageText.h"

namespace tessel {
namespace {

constexpr int kMaxInserts = 16;
using Inserts = std::array<const std::string*, kMaxInserts>;

std::string keyAndInserts(const std::string& key, const Inserts& inserts, int count) {
  std::string text = key;
  for (int i = 0; i < count; ++i) {
    const std::string* insert = inserts.at(static_cast<std::size_t>(i));
    text += ' ';
    text += insert ? *insert : "null";
  }
  return text;
}

// The message with room for its inserts: filling it allocates nothing more.
std::string withRoom(const std::string& message, const Inserts& inserts, int count) {
  std::size_t size = message.size();
  for (int i = 0; i < count; ++i) {
    const std::string* insert = inserts.at(static_cast<std::size_t>(i));
    if (insert) size += insert->size();
  }
  std::string text;
  text.reserve(size);
  text = message;
  return text;
}

const std::string& unknownClass() {
  static const std::string& name = *new std::string("Unknown");
  return name;
}

}  // namespace

NLS::NLS() = default;
NLS::NLS(const NLS&) = default;
NLS& NLS::operator=(const NLS&) = default;
NLS::~NLS() = default;

const NLS& NLS::getInstance() {
  static const NLS& instance = *new NLS;
  return instance;
}

std::string NLS::format(const std::string& bundle, const std::string& key) {
  return getInstance().internalFormat(unknownClass(), bundle, key, 0);
}

std::string NLS::format(const RasDescriptor& descriptor, const std::string& key) {
  return getInstance().internalFormat(descriptor.className_, descriptor.messageBundle_, key, 0);
}

std::string NLS::format(const RasDescriptor& descriptor, const std::string& key, const std::string& insert0) {
  return getInstance().internalFormat(descriptor.className_, descriptor.messageBundle_, key, 1, &insert0);
}

std::string NLS::format(const RasDescriptor& descriptor, const std::string& key, const std::string& insert0,
                        const std::string& insert1) {
  return getInstance().internalFormat(descriptor.className_, descriptor.messageBundle_, key, 2, &insert0, &insert1);
}

std::string NLS::format(const RasDescriptor& descriptor, const std::string& key, const std::string& insert0,
                        const std::string& insert1, const std::string& insert2) {
  return getInstance().internalFormat(descriptor.className_, descriptor.messageBundle_, key, 3, &insert0, &insert1,
                                      &insert2);
}

std::string NLS::format(const RasDescriptor& descriptor, const std::string& key, const std::string& insert0,
                        const std::string& insert1, const std::string& insert2, const std::string& insert3) {
  return getInstance().internalFormat(descriptor.className_, descriptor.messageBundle_, key, 4, &insert0, &insert1,
                                      &insert2, &insert3);
}

// NOLINTNEXTLINE(cert-dcl50-cpp): the worker's signature
std::string NLS::internalFormat(const std::string& className, const std::string& bundle, const std::string& key,
                                int count, ...) const {
  Inserts inserts{};
  std::va_list list;
  va_start(list, count);
  for (int i = 0; i < count; ++i) {
    inserts.at(static_cast<std::size_t>(i)) = va_arg(list, const std::string*);
  }
  va_end(list);

  const ResourceBundle catalogue = ResourceBundle::getBundle(bundle);
  const std::string& message = catalogue.find(key);
  if (message == key) return keyAndInserts(key, inserts, count);
  std::string text = withRoom(message, inserts, count);
  internal::collapseApostrophes(text);
  const internal::Filled filled = internal::fillPlaceholders(text, inserts.data(), count);
  if (filled.match == internal::Match::complete) return text;

  const bool missing = filled.match == internal::Match::insertsMissing;
  const std::string supplied = std::to_string(count) + " were supplied";
  const NYXException report(
      "NLS::format() call from class: " + className + " for key " + key +
      (missing ? " - insufficient inserts (" + supplied + ")"
               : " - Not all inserts matched (" + supplied + ", only " + std::to_string(filled.used) + " used)"));
  FFDC::internalCapture("NLS", nullptr, "internalFormat", missing ? FFDC::PROBE_002() : FFDC::PROBE_001(), &report, 0);
  return text;
}

}  // namespace tessel
