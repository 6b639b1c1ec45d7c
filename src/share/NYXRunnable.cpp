#include <tessel/NYXRunnable.h>

namespace tessel {

NYXRunnable::NYXRunnable() = default;
NYXRunnable::NYXRunnable(const NYXRunnable&) = default;
NYXRunnable& NYXRunnable::operator=(const NYXRunnable&) = default;
NYXRunnable::~NYXRunnable() = default;

}  // namespace tessel
