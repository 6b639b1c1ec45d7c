#include <tessel/NYXThread.h>

namespace tessel {

NYXThread::NYXThread(NYXRunnable* runnable) : runnable_(runnable) {}

NYXThread::NYXThread(const NYXThread& other) = default;

NYXThread& NYXThread::operator=(const NYXThread& other) = default;

NYXThread::~NYXThread() = default;

NYXRunnable* NYXThread::getRunnable() { return runnable_; }

}  // namespace tessel
