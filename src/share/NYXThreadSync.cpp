#include <tessel/NYXThreadSync.h>

namespace tessel {

NYXThreadSync::NYXThreadSync() = default;
NYXThreadSync::NYXThreadSync(const NYXThreadSync&) = default;
NYXThreadSync& NYXThreadSync::operator=(const NYXThreadSync&) = default;
NYXThreadSync::~NYXThreadSync() = default;

}  // namespace tessel
