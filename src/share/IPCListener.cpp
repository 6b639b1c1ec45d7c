#include <tessel/IPCListener.h>

namespace tessel {

IPCListener::IPCListener() = default;
IPCListener::IPCListener(const IPCListener&) = default;
IPCListener& IPCListener::operator=(const IPCListener&) = default;
IPCListener::~IPCListener() = default;

}  // namespace tessel
