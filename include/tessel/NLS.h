/// @file
#pragma once

#include <string>

#include <tessel/Export.h>

namespace tessel {

class RasDescriptor;

/// Turns a message key and inserts into the final text of a message.
///
/// The placeholders {0}, {1}, ... are filled in order; two apostrophes stand for one. Only the first occurrence of a
/// placeholder is filled, and a placeholder that an insert brings into the text is filled like the message's own.
/// Never fails: an unknown key yields the key and the inserts, and when placeholders and inserts do not match, the
/// text is filled as far as possible and a failure capture names the calling class and the key. Any thread.
class TESSEL_API NLS {
 public:
  /// Without inserts, on behalf of the class "Unknown".
  static std::string format(const std::string& bundle, const std::string& key);

  /// With the catalogue of the descriptor, on behalf of its class. The inserts fill {0} to {3} in their order.
  static std::string format(const RasDescriptor& descriptor, const std::string& key);
  static std::string format(const RasDescriptor& descriptor, const std::string& key, const std::string& insert0);
  static std::string format(const RasDescriptor& descriptor, const std::string& key, const std::string& insert0,
                            const std::string& insert1);
  static std::string format(const RasDescriptor& descriptor, const std::string& key, const std::string& insert0,
                            const std::string& insert1, const std::string& insert2);
  static std::string format(const RasDescriptor& descriptor, const std::string& key, const std::string& insert0,
                            const std::string& insert1, const std::string& insert2, const std::string& insert3);

  NLS(const NLS& other);
  NLS& operator=(const NLS& other);
  virtual ~NLS();

 private:
  friend struct NLSTest;

  NLS();

  static const NLS& getInstance();

  // `count` pointers to std::string follow; null stands for a missing insert.
  std::string internalFormat(const std::string& className, const std::string& bundle, const std::string& key, int count,
                             ...) const;
};

}  // namespace tessel
