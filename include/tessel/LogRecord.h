/// @file
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>

#include <tessel/Export.h>
#include <tessel/LogLevel.h>
#include <tessel/LogRecordType.h>

namespace tessel {

class NYXException;

/// One trace point or event on its way to the log handlers.
///
/// Belongs to the thread that made it; handlers get it by reference and never keep it.
class TESSEL_API LogRecord {
 public:
  /// Takes the current time, to a step of the system's coarse clock (about 16 ms), and the number of records already
  /// made in this second.
  LogRecord(const LogLevel& level, const LogRecordType& type, const std::string& message);
  LogRecord(const LogRecord& other);
  virtual ~LogRecord();

  const LogLevel& getLogLevel() const;
  const LogRecordType& getType() const;
  const std::string& getSourceClassName() const;
  const std::string& getSourceMethodName() const;
  /// @return the text given at construction; trace records build theirs from method and arguments.
  virtual std::string getMessage() const;
  /// @return the object on whose behalf the record was made, or null.
  const void* getObjectReference() const;
  /// @return seconds since the epoch.
  std::int64_t getLogTime() const;
  /// @return operating-system thread id.
  unsigned long getThreadId() const;
  /// @return the number of arguments as given to setArguments, which may be above five.
  unsigned getNumArguments() const;
  /// @return the argument, or the empty string at or past the count and beyond the five that are kept.
  std::string getArgument(unsigned index) const;
  const std::string& getMethodReturnType() const;
  /// @return the exception of a THROWING record, not owned, or null.
  const NYXException* getThrown() const;

  void setSourceClassName(const std::string& name);
  void setSourceMethodName(const std::string& name);
  void setObjectReference(const void* object);
  void setThreadId(unsigned long threadId);
  /// Copies at most the first five texts. @param args at least min(count, 5) texts.
  void setArguments(unsigned count, std::string* args);
  void setMethodReturnType(const std::string& type);
  /// @param thrown not owned; must live until the record is published.
  void setThrown(const NYXException* thrown);

  /// @return local time as HH:MM:SS.nnn.XX. The part behind the seconds counts the records of that second (in
  ///         steps of 256, then two hexadecimal digits); it is not a fraction of a second.
  std::string getTimestamp() const;

  /// @return local time as DD/MM/YYYY HH:MM:SS.nnn and the zone name, "???" when the system names none.
  std::string getDateTimestamp() const;

  /// Appends what goes to a stream.
  void appendTo(std::string& line) const;

  /// @return the two heading lines of a trace file, without the last line end.
  static std::string getLogRecordOutputHeader();

 protected:
  /// @name For the texts of trace records
  /// @{
  /// Appends the message given at construction, a blank and the method.
  void appendMethod(std::string& text) const;
  /// Appends each argument in brackets, separated by single blanks.
  void appendArguments(std::string& text) const;
  /// @}

 private:
  friend class Trace;
  friend struct LogRecordTest;

  // The same text as getMessage(); the records of trace append it part by part, to save a copy of it.
  virtual void appendMessage(std::string& text) const;
  void appendTimestamp(std::string& text) const;
  void appendDateTimestamp(std::string& text) const;

  // Not supported: captured as a failure, changes nothing.
  LogRecord& operator=(const LogRecord& other);

  static constexpr unsigned kMaxArguments = 5;

  LogLevel level_;
  LogRecordType type_;
  std::string sourceClassName_;
  std::string sourceMethodName_;
  std::string message_;
  const void* objectReference_ = nullptr;
  std::int64_t logTime_ = 0;
  std::uint32_t sequence_ = 0;
  std::uint32_t threadId_ = 0;
  std::uint32_t numArguments_ = 0;
  std::array<std::string, kMaxArguments> arguments_;
  std::string methodReturnType_;
  const NYXException* thrown_ = nullptr;
};

/// Writes the record as one line without a line end: the bracketed form for an event, fixed columns for trace.
TESSEL_API std::ostream& operator<<(std::ostream& stream, const LogRecord& record);

}  // namespace tessel
