#ifndef ORVASF_BVH_ORVBVHCHANNELS_H
#define ORVASF_BVH_ORVBVHCHANNELS_H

#include "bvh/OrvBvhExport.h"
#include "orvsdk/host/math/OrvEuler.h"

// The channels of a BVH joint and how its rotation channels map to a host rotation order.
//
// A BVH joint lists its rotation channels outermost first: its rotation matrix is the product of
// the single-axis rotations in list order, so the last listed axis applies first to a vector.
// A host rotation order names its axes in the sequence in which they apply. The two sequences
// are therefore each other's reverse: "Zrotation Yrotation Xrotation" is the host order X, Y, Z.

namespace orvasf {

/// Channel codes; a code's axis (0 X, 1 Y, 2 Z) is the code modulo 3.
enum EBvhChannel
{
    eBvhXposition = 0,
    eBvhYposition = 1,
    eBvhZposition = 2,
    eBvhXrotation = 3,
    eBvhYrotation = 4,
    eBvhZrotation = 5,
    eBvhChannelCount = 6
};

/// The channel's name as BVH files write it ("Xposition" ... "Zrotation"); pChannel must be a code.
ORVBVH_API const char* BvhChannelName(int pChannel);

/// The code of a channel name, compared without regard to ASCII case; -1 for any other text.
ORVBVH_API int BvhChannelFromName(const char* pName);

/// The host rotation order that reproduces a joint's rotation channels: pAxes holds the axes of its
/// pCount (0 to 3, distinct) rotation channels in list order. Axes the joint does not rotate about
/// are placed where they change nothing (their angle is always 0). No rotation channel gives X, Y, Z.
ORVBVH_API orvsdk::OrvEuler::EOrder HostOrderFromBvhAxes(const int* pAxes, int pCount);

/// The axes of the three rotation channels a BVH joint lists for host order pOrder (0 to 5), in
/// list order: the reverse of the order's sequence.
ORVBVH_API void BvhAxesFromHostOrder(orvsdk::OrvEuler::EOrder pOrder, int pAxes[3]);

} // namespace orvasf

#endif
