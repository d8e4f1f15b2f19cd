// Transform arithmetic between the host's affine matrices and glTF's translation, rotation
// (quaternion X, Y, Z, W) and scale.
#ifndef ORVASF_GLTF_ORVGLTFMATH_H
#define ORVASF_GLTF_ORVGLTFMATH_H

#include "orvsdk/host/math/OrvAMatrix.h"

#include <array>

namespace orvasf {

using GltfQuaternion = std::array<double, 4>; // X, Y, Z, W

// A transform split into translation, unit rotation and scale, applied as T * R * S.
struct GltfTrs
{
    orvsdk::OrvVector4 mTranslation;
    GltfQuaternion mRotation{0.0, 0.0, 0.0, 1.0};
    orvsdk::OrvVector4 mScale{1.0, 1.0, 1.0};
};

// pMatrix split into T, R, S: the scale is each axis column's length, negated on X when the matrix
// mirrors; a zero scale leaves the rotation at identity. Exact for matrices without shear.
GltfTrs DecomposeTrs(const orvsdk::OrvAMatrix& pMatrix);

// T * R * S as a matrix.
orvsdk::OrvAMatrix ComposeTrs(const GltfTrs& pTrs);

// pRotation at unit length (identity when it has no length).
GltfQuaternion Normalized(GltfQuaternion pRotation);

// Negates pRotation when it lies in the other hemisphere than pPrevious (4 values), so that the
// two describe the same turn with the shortest way between them.
void KeepHemisphere(const double* pPrevious, GltfQuaternion& pRotation);

// Spherical interpolation from pFrom (pWeight 0) to pTo (pWeight 1) along the shorter arc.
GltfQuaternion Slerp(const GltfQuaternion& pFrom, GltfQuaternion pTo, double pWeight);

} // namespace orvasf

#endif
