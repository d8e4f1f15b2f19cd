// Small 3D maths for the independent kinematics of the tests: plain arrays and loops, on purpose
// sharing nothing with the library's own vector and matrix types.
#ifndef ORVASF_TESTS_SUPPORT_MATH3_H
#define ORVASF_TESTS_SUPPORT_MATH3_H

#include <array>
#include <cmath>

namespace math3 {

using Vec3 = std::array<double, 3>;
using Mat3 = std::array<Vec3, 3>;  // rows; column-vector convention

inline Mat3 Identity()
{
    return Mat3{{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
}

inline Mat3 Multiply(const Mat3& pA, const Mat3& pB)
{
    Mat3 lProduct{};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            for (int k = 0; k < 3; ++k) lProduct[r][c] += pA[r][k] * pB[k][c];
    return lProduct;
}

// The inverse of a rotation.
inline Mat3 Transpose(const Mat3& pA)
{
    Mat3 lT{};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) lT[r][c] = pA[c][r];
    return lT;
}

inline Vec3 Apply(const Mat3& pA, const Vec3& pV)
{
    Vec3 lResult{};
    for (int r = 0; r < 3; ++r) lResult[r] = pA[r][0] * pV[0] + pA[r][1] * pV[1] + pA[r][2] * pV[2];
    return lResult;
}

inline Vec3 Add(const Vec3& pA, const Vec3& pB)
{
    return Vec3{pA[0] + pB[0], pA[1] + pB[1], pA[2] + pB[2]};
}

inline Vec3 Scale(const Vec3& pV, double pFactor)
{
    return Vec3{pV[0] * pFactor, pV[1] * pFactor, pV[2] * pFactor};
}

inline double Distance(const Vec3& pA, const Vec3& pB)
{
    return std::sqrt((pA[0] - pB[0]) * (pA[0] - pB[0]) + (pA[1] - pB[1]) * (pA[1] - pB[1]) +
                     (pA[2] - pB[2]) * (pA[2] - pB[2]));
}

// The largest difference between corresponding elements; NaN when any element is NaN.
inline double LargestDifference(const Mat3& pA, const Mat3& pB)
{
    double lLargest = 0.0;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
        {
            const double lDifference = std::fabs(pA[r][c] - pB[r][c]);
            if (!(lDifference <= lLargest)) lLargest = lDifference;
        }
    return lLargest;
}

// Right-handed rotation by pDegrees about axis pAxis (0 X, 1 Y, 2 Z).
inline Mat3 AxisRotation(int pAxis, double pDegrees)
{
    const double lRadians = pDegrees * 3.14159265358979323846 / 180.0;
    const double lC = std::cos(lRadians);
    const double lS = std::sin(lRadians);
    const int lU = (pAxis + 1) % 3;
    const int lV = (pAxis + 2) % 3;
    Mat3 lR = Identity();
    lR[lU][lU] = lC;
    lR[lU][lV] = -lS;
    lR[lV][lU] = lS;
    lR[lV][lV] = lC;
    return lR;
}

} // namespace math3

#endif
