#include <tessel/VXBiface.h>

namespace tessel {

VXBiface::VXBiface() = default;

VXBiface::~VXBiface() = default;

}  // namespace tessel
