#include "orvsdk/skeleton/OrvRotationOrder.h"

#include "orvsdk/skeleton/OrvAsfDof.h"

namespace orvsdk {

namespace {

// Rotation order indexed by 3 * (axis of the last rotation) + (axis of the rotation before it),
// axes 0 X, 1 Y, 2 Z. Equal axes (a list naming one rotation twice) give an order that ends
// with that axis.
const int sEulerOrderBuf[9] = {5, 5, 2, 4, 4, 1, 3, 0, 0};

} // namespace

int EulerOrderFromOrderBuf(const int* pBuf, int pCount)
{
    if (pCount <= 0) return 0;
    int lAxes[2] = {2, 1};  // last axis, axis before it
    int lFound = 0;
    for (int i = pCount - 1; i >= 0 && lFound < 2; --i)
    {
        if (IsRotationDof(pBuf[i])) lAxes[lFound++] = DofAxis(pBuf[i]);
    }
    return sEulerOrderBuf[3 * lAxes[0] + lAxes[1]];
}

void OrderBufFromEulerOrder(int* pBuf, int pCount, OrvEuler::EOrder pOrder)
{
    if (pOrder < OrvEuler::eOrderXYZ || pOrder > OrvEuler::eOrderZYX) return;
    // The host's axis table lists an order's axes in application order, as the list does.
    for (int k = 0; k < 3; ++k) pBuf[pCount - 3 + k] = RotationDofOnAxis(OrvEuler::AxisTable[pOrder][k]);
}

} // namespace orvsdk
