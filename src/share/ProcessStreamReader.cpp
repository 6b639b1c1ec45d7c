#include <tessel/ProcessStreamReader.h>

#include <exception>

#include <tessel/FFDC.h>
#include <tessel/NYXException.h>
#include <tessel/ProcessStreamReaderListener.h>
#include <tessel/RasDescriptor.h>

#include "internal/Bundles.h"

namespace tessel {

const RasDescriptor ProcessStreamReader::rd("ProcessStreamReader", internal::kMessages);

ProcessStreamReader::ProcessStreamReader(ProcessStreamReaderListener& listener) : listener_(listener) {}

ProcessStreamReader::~ProcessStreamReader() = default;

void ProcessStreamReader::deliver(const std::string& data) noexcept {
  try {
    listener_.processOutput(data);
  } catch (const NYXException& exception) {
    capture(exception);
  } catch (const std::exception& exception) {
    capture(NYXException(exception.what()));
  } catch (...) {
    capture(NYXException("an exception that is no std::exception"));
  }
}

void ProcessStreamReader::capture(const NYXException& exception) noexcept {
  if (captured_) return;
  captured_ = true;
  FFDC::capture(rd, "processOutput", FFDC::PROBE_001(), &exception);
}

}  // namespace tessel
