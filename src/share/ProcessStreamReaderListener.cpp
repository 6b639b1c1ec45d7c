#include <tessel/ProcessStreamReaderListener.h>

namespace tessel {

ProcessStreamReaderListener::ProcessStreamReaderListener() = default;

ProcessStreamReaderListener::ProcessStreamReaderListener(const ProcessStreamReaderListener& other) = default;

ProcessStreamReaderListener& ProcessStreamReaderListener::operator=(const ProcessStreamReaderListener& other) = default;

ProcessStreamReaderListener::~ProcessStreamReaderListener() = default;

}  // namespace tessel
