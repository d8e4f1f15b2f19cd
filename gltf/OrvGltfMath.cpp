#include "gltf/OrvGltfMath.h"

#include <cmath>

namespace orvasf {

namespace {

// The unit quaternion of the rotation matrix pR (rows, columns 0 to 2), by the largest of its
// four candidate components, which keeps the division well away from zero.
GltfQuaternion QuaternionOf(const double pR[3][3])
{
    const double lTrace = pR[0][0] + pR[1][1] + pR[2][2];
    GltfQuaternion lQ;
    if (lTrace > 0.0)
    {
        const double s = 2.0 * std::sqrt(lTrace + 1.0);
        lQ = {(pR[2][1] - pR[1][2]) / s, (pR[0][2] - pR[2][0]) / s, (pR[1][0] - pR[0][1]) / s, 0.25 * s};
    }
    else if (pR[0][0] > pR[1][1] && pR[0][0] > pR[2][2])
    {
        const double s = 2.0 * std::sqrt(1.0 + pR[0][0] - pR[1][1] - pR[2][2]);
        lQ = {0.25 * s, (pR[0][1] + pR[1][0]) / s, (pR[0][2] + pR[2][0]) / s, (pR[2][1] - pR[1][2]) / s};
    }
    else if (pR[1][1] > pR[2][2])
    {
        const double s = 2.0 * std::sqrt(1.0 + pR[1][1] - pR[0][0] - pR[2][2]);
        lQ = {(pR[0][1] + pR[1][0]) / s, 0.25 * s, (pR[1][2] + pR[2][1]) / s, (pR[0][2] - pR[2][0]) / s};
    }
    else
    {
        const double s = 2.0 * std::sqrt(1.0 + pR[2][2] - pR[0][0] - pR[1][1]);
        lQ = {(pR[0][2] + pR[2][0]) / s, (pR[1][2] + pR[2][1]) / s, 0.25 * s, (pR[1][0] - pR[0][1]) / s};
    }
    return Normalized(lQ);
}

double Dot(const double* pA, const double* pB)
{
    return pA[0] * pB[0] + pA[1] * pB[1] + pA[2] * pB[2] + pA[3] * pB[3];
}

} // namespace

GltfTrs DecomposeTrs(const orvsdk::OrvAMatrix& pMatrix)
{
    GltfTrs lTrs;
    lTrs.mTranslation = pMatrix.GetT();
    lTrs.mTranslation[3] = 0.0;
    double lR[3][3];
    for (int c = 0; c < 3; ++c)
        lTrs.mScale[c] = std::sqrt(pMatrix(0, c) * pMatrix(0, c) + pMatrix(1, c) * pMatrix(1, c) +
                                   pMatrix(2, c) * pMatrix(2, c));
    if (lTrs.mScale[0] == 0.0 || lTrs.mScale[1] == 0.0 || lTrs.mScale[2] == 0.0) return lTrs;
    const double lDeterminant = pMatrix(0, 0) * (pMatrix(1, 1) * pMatrix(2, 2) - pMatrix(2, 1) * pMatrix(1, 2)) -
                                pMatrix(0, 1) * (pMatrix(1, 0) * pMatrix(2, 2) - pMatrix(2, 0) * pMatrix(1, 2)) +
                                pMatrix(0, 2) * (pMatrix(1, 0) * pMatrix(2, 1) - pMatrix(2, 0) * pMatrix(1, 1));
    if (lDeterminant < 0.0) lTrs.mScale[0] = -lTrs.mScale[0];
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) lR[r][c] = pMatrix(r, c) / lTrs.mScale[c];
    lTrs.mRotation = QuaternionOf(lR);
    return lTrs;
}

orvsdk::OrvAMatrix ComposeTrs(const GltfTrs& pTrs)
{
    const auto& [x, y, z, w] = pTrs.mRotation;
    const double lR[3][3] = {{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)},
                             {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)},
                             {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)}};
    orvsdk::OrvAMatrix lMatrix;
    for (int r = 0; r < 3; ++r)
    {
        for (int c = 0; c < 3; ++c) lMatrix(r, c) = lR[r][c] * pTrs.mScale[c];
        lMatrix(r, 3) = pTrs.mTranslation[r];
    }
    return lMatrix;
}

GltfQuaternion Normalized(GltfQuaternion pRotation)
{
    const double lLength = std::sqrt(Dot(pRotation.data(), pRotation.data()));
    if (!(lLength > 0.0) || !std::isfinite(lLength)) return {0.0, 0.0, 0.0, 1.0};
    for (double& lValue : pRotation) lValue /= lLength;
    return pRotation;
}

void KeepHemisphere(const double* pPrevious, GltfQuaternion& pRotation)
{
    if (Dot(pPrevious, pRotation.data()) >= 0.0) return;
    for (double& lValue : pRotation) lValue = -lValue;
}

GltfQuaternion Slerp(const GltfQuaternion& pFrom, GltfQuaternion pTo, double pWeight)
{
    KeepHemisphere(pFrom.data(), pTo);
    const double lCos = Dot(pFrom.data(), pTo.data());
    double lFromWeight = 1.0 - pWeight;
    double lToWeight = pWeight;
    // Nearly equal rotations: the linear blend is exact to rounding and avoids dividing by ~0.
    if (lCos < 0.9999)
    {
        const double lAngle = std::acos(lCos);
        const double lSin = std::sin(lAngle);
        lFromWeight = std::sin((1.0 - pWeight) * lAngle) / lSin;
        lToWeight = std::sin(pWeight * lAngle) / lSin;
    }
    GltfQuaternion lResult;
    for (int i = 0; i < 4; ++i) lResult[i] = lFromWeight * pFrom[i] + lToWeight * pTo[i];
    return Normalized(lResult);
}

} // namespace orvasf
