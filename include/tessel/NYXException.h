/// @file
#pragma once

#include <iosfwd>
#include <string>

#include <tessel/Export.h>

namespace tessel {

/// Root of every failure that the library reports.
///
/// Carries one translated message and, optionally, an owned copy of the exception that caused it. Thrown by
/// value, caught by reference. Subclasses add no data: they exist so that callers can tell kinds of failure
/// apart by type. No move operations are declared, so that a thrown object always owns its own chain.
///
/// An object may be read from several threads; it must not be changed while it is read.
class TESSEL_API NYXException {
 public:
  /// @param message the complete, already translated text; copied.
  explicit NYXException(const std::string& message);

  /// @param message the complete, already translated text; copied.
  /// @param cause copied with its whole chain, or null. The copy is always a plain NYXException: the type of
  ///        the cause is lost on purpose, since only its text is ever shown.
  NYXException(const std::string& message, const NYXException* cause);

  /// Copies the message and the whole chain of causes.
  NYXException(const NYXException& other);

  virtual ~NYXException();

  /// Copies the message and takes over the other object's cause pointer as it stands.
  ///
  /// Afterwards both objects refer to the same cause and the cause held before is not released. Never assign an
  /// exception that has a cause and let both objects die: build a copy instead. Nothing in the library assigns
  /// exceptions.
  NYXException& operator=(const NYXException& other);

  /// @return a copy of the message.
  std::string getMessage() const;

  /// @return a copy of the cause. Only for an exception that has one: there is no query for that, and calling
  ///         this without a cause is undefined.
  NYXException getCause() const;

  /// "class ", the unqualified class name, ": " and the message; for each cause a blank, the translated
  /// caused-by phrase, a blank and the cause's own text. One line.
  virtual std::string toString() const;

 private:
  std::string message_;
  NYXException* cause_;
};

/// Writes `exception.toString()`.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const NYXException& exception);

}  // namespace tessel
