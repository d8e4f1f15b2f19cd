#include "orvsdk/skeleton/OrvRotationOrder.h"

namespace orvsdk {

namespace {

// Rotation order indexed by 3 * (axis of the last rotation) + (axis of the rotation before it),
// axes 0 X, 1 Y, 2 Z. Equal axes (a list naming one rotation twice) give an order that ends
// with that axis.
const int sEulerOrderBuf[9] = {5, 5, 2, 4, 4, 1, 3, 0, 0};

// Rotation codes of orders 0 to 5, in list (application) order.
const int sOrderCodes[6][3] = {
    {5, 4, 3},  // rx ry rz
    {5, 3, 4},  // rx rz ry
    {4, 3, 5},  // ry rz rx
    {4, 5, 3},  // ry rx rz
    {3, 5, 4},  // rz rx ry
    {3, 4, 5},  // rz ry rx
};

const int kFirstRotationCode = 3;
const int kLastRotationCode = 5;

bool IsRotationCode(int pCode)
{
    return pCode >= kFirstRotationCode && pCode <= kLastRotationCode;
}

} // namespace

int EulerOrderFromOrderBuf(const int* pBuf, int pCount)
{
    if (pCount <= 0) return 0;
    int lAxes[2] = {2, 1};  // last axis, axis before it
    int lFound = 0;
    for (int i = pCount - 1; i >= 0 && lFound < 2; --i)
    {
        if (IsRotationCode(pBuf[i])) lAxes[lFound++] = kLastRotationCode - pBuf[i];
    }
    return sEulerOrderBuf[3 * lAxes[0] + lAxes[1]];
}

void OrderBufFromEulerOrder(int* pBuf, int pCount, OrvEuler::EOrder pOrder)
{
    if (pOrder < OrvEuler::eOrderXYZ || pOrder > OrvEuler::eOrderZYX) return;
    for (int k = 0; k < 3; ++k) pBuf[pCount - 3 + k] = sOrderCodes[pOrder][k];
}

} // namespace orvsdk
