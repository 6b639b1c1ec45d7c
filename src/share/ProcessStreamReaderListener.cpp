#include <tessel/ProcessStreamReaderListener.h>

namespace tessel {

ProcessStreamReaderListener::ProcessStreamReaderListener() = default;

ProcessStreamReaderListener::ProcessStreamReaderListener(const ProcessStreamReaderListener&) = default;

ProcessStreamReaderListener& ProcessStreamReaderListener::operator=(const ProcessStreamReaderListener&) = default;

ProcessStreamReaderListener::~ProcessStreamReaderListener() = default;

}  // namespace tessel
