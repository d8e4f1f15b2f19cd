#include "orvsdk/host/math/OrvEuler.h"

namespace orvsdk {

const int OrvEuler::AxisTable[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 2, 0}, {1, 0, 2}, {2, 0, 1}, {2, 1, 0}};

} // namespace orvsdk
