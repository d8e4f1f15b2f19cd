#ifndef ORVSDK_SKELETON_ORVROTATIONORDER_H
#define ORVSDK_SKELETON_ORVROTATIONORDER_H

#include "orvsdk/OrvSdkExport.h"
#include "orvsdk/host/math/OrvEuler.h"

namespace orvsdk {

// A bone's rotation order is not stored as such: it is the order in which the rotation codes
// (IsRotationDof: rz, ry, rx) appear in its degree-of-freedom list, first listed applying first.
// Every other code carries no order and is passed over.

/// The rotation order implied by the first pCount codes of pBuf. Only the last two rotation codes
/// decide; with a single rotation the order ends with that axis, and without any the result is
/// 0 (X, Y, Z). Reads only; never fails.
ORVSDK_API int EulerOrderFromOrderBuf(const int* pBuf, int pCount);

/// Writes the three rotation codes of pOrder, in application order, into the entries pCount - 3
/// to pCount - 1 of pBuf (pCount >= 3; translation codes, if any, come before them). Any order
/// outside 0 to 5 leaves the list unchanged.
ORVSDK_API void OrderBufFromEulerOrder(int* pBuf, int pCount, OrvEuler::EOrder pOrder);

} // namespace orvsdk

#endif
