#ifndef ORVSDK_HOST_MATH_ORVEULER_H
#define ORVSDK_HOST_MATH_ORVEULER_H

#include "orvsdk/host/OrvHostExport.h"

namespace orvsdk {

/// Euler rotation orders. An order names its axes in the sequence in which they apply: with
/// (a0, a1, a2) = AxisTable[order] the rotation is R_a2 * R_a1 * R_a0 (column vectors), so the
/// first axis applies first. eOrderSphericXYZ only exists as a value; no rotation uses it.
class ORVHOST_API OrvEuler
{
public:
    /// The orders, by the sequence in which their axes apply.
    enum EOrder
    {
        eOrderXYZ = 0,
        eOrderXZY = 1,
        eOrderYZX = 2,
        eOrderYXZ = 3,
        eOrderZXY = 4,
        eOrderZYX = 5,
        eOrderSphericXYZ = 6
    };

    /// The axes (0 X, 1 Y, 2 Z) of each order 0 to 5, in the sequence in which they apply.
    static const int AxisTable[6][3];
};

} // namespace orvsdk

#endif
