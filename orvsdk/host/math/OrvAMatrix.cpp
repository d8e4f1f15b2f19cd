#include "orvsdk/host/math/OrvAMatrix.h"

#include "orvsdk/host/math/OrvEuler.h"

#include <cmath>

namespace orvsdk {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kDegreesToRadians = kPi / 180.0;
constexpr double kRadiansToDegrees = 180.0 / kPi;
// Below this |cos| of the middle angle the first and third axes coincide (gimbal lock).
constexpr double kGimbalLockCosine = 1e-12;

using Matrix3 = double[3][3];

// Sine and cosine of pDegrees when it is a whole multiple of 90 degrees (exact values, so that
// right angles give clean matrices and an exact gimbal lock); false otherwise.
bool RightAngleSinCos(double pDegrees, double& pSin, double& pCos)
{
    // fmod returns an angle of less than a full turn unchanged, so the call is skipped for those.
    const double lReduced = std::fabs(pDegrees) < 360.0 ? pDegrees : std::fmod(pDegrees, 360.0);
    if (!std::isfinite(lReduced)) return false;
    // A whole number of quarters times the rounded 1/90 lies within an ulp of that number: the
    // product tells most other angles apart without the division below.
    const double lApproximate = lReduced * (1.0 / 90.0);
    const double lNearest = static_cast<double>(static_cast<int>(lApproximate + (lApproximate < 0.0 ? -0.5 : 0.5)));
    if (std::fabs(lApproximate - lNearest) > 1e-9) return false;
    // The quotient lies within (-4, 4); the cast tells a whole one without a call to floor.
    const double lQuarters = lReduced / 90.0;
    if (!std::isfinite(lQuarters) || static_cast<double>(static_cast<int>(lQuarters)) != lQuarters) return false;
    static const double sSin[4] = {0.0, 1.0, 0.0, -1.0};
    const int lQuarter = (static_cast<int>(lQuarters) + 4) % 4;
    pSin = sSin[lQuarter];
    pCos = sSin[(lQuarter + 1) % 4];
    return true;
}

// Sine and cosine of an angle in degrees; exact at multiples of 90 degrees.
void SinCosDegrees(double pDegrees, double& pSin, double& pCos)
{
    if (RightAngleSinCos(pDegrees, pSin, pCos)) return;
    pSin = std::sin(pDegrees * kDegreesToRadians);
    pCos = std::cos(pDegrees * kDegreesToRadians);
}

// Rotation by pDegrees about axis pAxis (0 X, 1 Y, 2 Z), right-handed.
void AxisRotation(int pAxis, double pDegrees, Matrix3& pResult)
{
    double lSin = 0.0;
    double lCos = 1.0;
    SinCosDegrees(pDegrees, lSin, lCos);
    const int j = (pAxis + 1) % 3;
    const int k = (pAxis + 2) % 3;
    for (int lRow = 0; lRow < 3; ++lRow)
        for (int lColumn = 0; lColumn < 3; ++lColumn) pResult[lRow][lColumn] = 0.0;
    pResult[pAxis][pAxis] = 1.0;
    pResult[j][j] = lCos;
    pResult[j][k] = -lSin;
    pResult[k][j] = lSin;
    pResult[k][k] = lCos;
}

// Makes the first pColumns columns of pRows R * pRows, R the rotation by pDegrees about axis
// Axis: R leaves row Axis alone and mixes the other two, so only their entries are computed.
// For finite entries each is the value the full product gives (its other terms are exact
// zeros), but for the sign of a zero.
template <int Axis, typename TRows>
void PreRotateRowsAbout(double pDegrees, TRows& pRows, int pColumns)
{
    double lSin = 0.0;
    double lCos = 1.0;
    SinCosDegrees(pDegrees, lSin, lCos);
    constexpr int j = (Axis + 1) % 3;
    constexpr int k = (Axis + 2) % 3;
    for (int lColumn = 0; lColumn < pColumns; ++lColumn)
    {
        const double lJ = pRows[j][lColumn];
        const double lK = pRows[k][lColumn];
        pRows[j][lColumn] = lCos * lJ - lSin * lK;
        pRows[k][lColumn] = lSin * lJ + lCos * lK;
    }
}

template <typename TRows>
void PreRotateRows(int pAxis, double pDegrees, TRows& pRows, int pColumns)
{
    if (pAxis == 0)
        PreRotateRowsAbout<0>(pDegrees, pRows, pColumns);
    else if (pAxis == 1)
        PreRotateRowsAbout<1>(pDegrees, pRows, pColumns);
    else
        PreRotateRowsAbout<2>(pDegrees, pRows, pColumns);
}

// The rotation of finite angles pAngles taken about axes I, J, K in turn, built directly: the
// first axis's rotation, then the other two applied two rows at a time.
template <int I, int J, int K>
void BuildRotation(const OrvVector4& pAngles, Matrix3& pResult)
{
    AxisRotation(I, pAngles[0], pResult);
    PreRotateRowsAbout<J>(pAngles[1], pResult, 3);
    PreRotateRowsAbout<K>(pAngles[2], pResult, 3);
}

void Multiply3(const Matrix3& pLeft, const Matrix3& pRight, Matrix3& pResult)
{
    for (int lRow = 0; lRow < 3; ++lRow)
        for (int lColumn = 0; lColumn < 3; ++lColumn)
            pResult[lRow][lColumn] = pLeft[lRow][0] * pRight[0][lColumn] + pLeft[lRow][1] * pRight[1][lColumn] +
                                     pLeft[lRow][2] * pRight[2][lColumn];
}

// atan2 in degrees within (-180, 180].
double AngleDegrees(double pY, double pX)
{
    const double lDegrees = std::atan2(pY, pX) * kRadiansToDegrees;
    return lDegrees <= -180.0 ? lDegrees + 360.0 : lDegrees + 0.0;
}

int ValidOrder(int pOrder)
{
    return pOrder >= 0 && pOrder < 6 ? pOrder : 0;
}

// True when every element is finite: a sum is finite only then (NaN and infinities stay in it).
// A sum that overflows from finite elements merely answers false, which costs the caller speed,
// not correctness. Summed by columns, so that the additions go in pairs.
bool AllFinite(const double (&pData)[4][4])
{
    double lColumnSums[4] = {0.0, 0.0, 0.0, 0.0};
    for (const auto& lRow : pData)
        for (int lColumn = 0; lColumn < 4; ++lColumn) lColumnSums[lColumn] += lRow[lColumn];
    return std::isfinite(lColumnSums[0] + lColumnSums[1] + lColumnSums[2] + lColumnSums[3]);
}

// The angles of rotation pM in pOrder's sequence (see GetR). With i, j, k the order's axes and
// M = R_k(g) R_j(b) R_i(a), s is +1 when (i, j, k) is a cyclic permutation of (X, Y, Z) and -1
// otherwise. Column i of M is R_k(g) applied to (cos b, 0, -s sin b) in the (i, j, k) frame,
// which gives b and g. Undoing R_k(g) leaves N = R_j(b) R_i(a), whose row j is
// (0, cos a, -s sin a); reading a from N rather than from M keeps the three angles consistent
// near gimbal lock, where g is set to 0. pSinCosFromEntries takes g's sine and cosine from
// column i (exact for a rotation) instead of from g itself, but for right angles.
OrvVector4 RotationAngles(const Matrix3& pM, int pOrder, bool pSinCosFromEntries)
{
    const int* lAxes = OrvEuler::AxisTable[ValidOrder(pOrder)];
    const int i = lAxes[0];
    const int j = lAxes[1];
    const int k = lAxes[2];
    const double lSign = (j == (i + 1) % 3) ? 1.0 : -1.0;

    // g is computed before the gimbal-lock test needs b: the two arc tangents then overlap.
    const double lFreeG = AngleDegrees(lSign * pM[j][i], pM[i][i]);
    const double lCosB = std::hypot(pM[i][i], pM[j][i]);
    const double lB = AngleDegrees(-lSign * pM[k][i], lCosB);
    const double lG = lCosB < kGimbalLockCosine ? 0.0 : lFreeG;

    double lSinG = 0.0;
    double lCosG = 1.0;
    if (!pSinCosFromEntries)
    {
        SinCosDegrees(lG, lSinG, lCosG);
    }
    else if (!RightAngleSinCos(lG, lSinG, lCosG))
    {
        lSinG = lSign * pM[j][i] / lCosB;
        lCosG = pM[i][i] / lCosB;
    }
    const double lNjj = -lSign * lSinG * pM[i][j] + lCosG * pM[j][j];
    const double lNjk = -lSign * lSinG * pM[i][k] + lCosG * pM[j][k];
    const double lA = AngleDegrees(-lSign * lNjk, lNjj);
    return OrvVector4(lA, lB, lG, 0.0);
}

} // namespace

void OrvAMatrix::SetIdentity()
{
    for (int lRow = 0; lRow < 4; ++lRow)
        for (int lColumn = 0; lColumn < 4; ++lColumn) mData[lRow][lColumn] = lRow == lColumn ? 1.0 : 0.0;
}

OrvVector4 OrvAMatrix::GetT() const
{
    return OrvVector4(mData[0][3], mData[1][3], mData[2][3], 1.0);
}

void OrvAMatrix::SetT(const OrvVector4& pTranslation)
{
    for (int lRow = 0; lRow < 3; ++lRow) mData[lRow][3] = pTranslation[lRow];
}

void OrvAMatrix::SetR(const OrvVector4& pAngles, int pOrder)
{
    const int lOrder = ValidOrder(pOrder);
    const int* lAxes = OrvEuler::AxisTable[lOrder];
    Matrix3 lRotation;
    // Finite angles: the rotation is built directly, one axis after the other, two rows at a
    // time. A non-finite angle spreads through the full products' zero terms: keep those.
    const bool lFinite = std::isfinite(pAngles[0]) && std::isfinite(pAngles[1]) && std::isfinite(pAngles[2]);
    using Builder = void (*)(const OrvVector4&, Matrix3&);
    static constexpr Builder sBuilders[6] = {BuildRotation<0, 1, 2>, BuildRotation<0, 2, 1>, BuildRotation<1, 2, 0>,
                                             BuildRotation<1, 0, 2>, BuildRotation<2, 0, 1>, BuildRotation<2, 1, 0>};
    if (lFinite)
        sBuilders[lOrder](pAngles, lRotation);
    else
        AxisRotation(lAxes[0], pAngles[0], lRotation);
    for (int lStep = 1; lStep < 3 && !lFinite; ++lStep)
    {
        Matrix3 lAxisRotation;
        Matrix3 lProduct;
        AxisRotation(lAxes[lStep], pAngles[lStep], lAxisRotation);
        Multiply3(lAxisRotation, lRotation, lProduct);
        for (int lRow = 0; lRow < 3; ++lRow)
            for (int lColumn = 0; lColumn < 3; ++lColumn) lRotation[lRow][lColumn] = lProduct[lRow][lColumn];
    }
    for (int lRow = 0; lRow < 3; ++lRow)
        for (int lColumn = 0; lColumn < 3; ++lColumn) mData[lRow][lColumn] = lRotation[lRow][lColumn];
}

void OrvAMatrix::SetRInOrder(const OrvVector4& pXyzAngles, int pOrder)
{
    const int* lAxes = OrvEuler::AxisTable[ValidOrder(pOrder)];
    SetR(OrvVector4(pXyzAngles[lAxes[0]], pXyzAngles[lAxes[1]], pXyzAngles[lAxes[2]]), pOrder);
}

OrvVector4 OrvAMatrix::GetR(int pOrder) const
{
    Matrix3 lM;
    for (int lColumn = 0; lColumn < 3; ++lColumn)
    {
        const double lLength = std::hypot(mData[0][lColumn], mData[1][lColumn], mData[2][lColumn]);
        const double lFactor = lLength > 0.0 ? 1.0 / lLength : 1.0;
        for (int lRow = 0; lRow < 3; ++lRow) lM[lRow][lColumn] = mData[lRow][lColumn] * lFactor;
    }
    return RotationAngles(lM, pOrder, false);
}

OrvVector4 OrvAMatrix::GetRotationAngles(int pOrder) const
{
    Matrix3 lM;
    for (int lRow = 0; lRow < 3; ++lRow)
        for (int lColumn = 0; lColumn < 3; ++lColumn) lM[lRow][lColumn] = mData[lRow][lColumn];
    return RotationAngles(lM, pOrder, true);
}

void OrvAMatrix::SetS(const OrvVector4& pScale)
{
    for (int lRow = 0; lRow < 3; ++lRow)
        for (int lColumn = 0; lColumn < 3; ++lColumn) mData[lRow][lColumn] = lRow == lColumn ? pScale[lRow] : 0.0;
}

OrvAMatrix OrvAMatrix::operator*(const OrvAMatrix& pOther) const
{
    OrvAMatrix lProduct;
    for (int lRow = 0; lRow < 4; ++lRow)
        for (int lColumn = 0; lColumn < 4; ++lColumn)
        {
            double lSum = 0.0;
            for (int n = 0; n < 4; ++n) lSum += mData[lRow][n] * pOther.mData[n][lColumn];
            lProduct.mData[lRow][lColumn] = lSum;
        }
    return lProduct;
}

void OrvAMatrix::PreRotate(int pAxis, double pDegrees)
{
    if (!std::isfinite(pDegrees) || !AllFinite(mData))
    {
        // Non-finite values spread through the zero entries of the full product: keep its result.
        OrvVector4 lAngles;
        lAngles[pAxis] = pDegrees;
        OrvAMatrix lStep;
        lStep.SetR(lAngles);
        *this = lStep * *this;
        return;
    }
    PreRotateRows(pAxis, pDegrees, mData, 4);
}

OrvAMatrix OrvAMatrix::MultR(const OrvAMatrix& pOther) const
{
    // The terms and their order are those of operator*, without its leading 0.0.
    OrvAMatrix lProduct;
    for (int lRow = 0; lRow < 3; ++lRow)
        for (int lColumn = 0; lColumn < 3; ++lColumn)
            lProduct.mData[lRow][lColumn] =
                mData[lRow][0] * pOther.mData[0][lColumn] + mData[lRow][1] * pOther.mData[1][lColumn] +
                mData[lRow][2] * pOther.mData[2][lColumn] + mData[lRow][3] * pOther.mData[3][lColumn];
    return lProduct;
}

OrvAMatrix OrvAMatrix::MultAffine(const OrvAMatrix& pOther) const
{
    // operator*'s terms in its order, less those that multiply by the zeros of the last rows.
    OrvAMatrix lProduct;
    for (int lRow = 0; lRow < 3; ++lRow)
    {
        const double* lLeft = mData[lRow];
        for (int lColumn = 0; lColumn < 3; ++lColumn)
            lProduct.mData[lRow][lColumn] = lLeft[0] * pOther.mData[0][lColumn] + lLeft[1] * pOther.mData[1][lColumn] +
                                            lLeft[2] * pOther.mData[2][lColumn];
        lProduct.mData[lRow][3] = lLeft[0] * pOther.mData[0][3] + lLeft[1] * pOther.mData[1][3] +
                                  lLeft[2] * pOther.mData[2][3] + lLeft[3];
    }
    return lProduct;
}

OrvAMatrix OrvAMatrix::Inverse() const
{
    const auto& lM = mData;
    const Matrix3 lAdjugate = {
        {lM[1][1] * lM[2][2] - lM[1][2] * lM[2][1], lM[0][2] * lM[2][1] - lM[0][1] * lM[2][2],
         lM[0][1] * lM[1][2] - lM[0][2] * lM[1][1]},
        {lM[1][2] * lM[2][0] - lM[1][0] * lM[2][2], lM[0][0] * lM[2][2] - lM[0][2] * lM[2][0],
         lM[0][2] * lM[1][0] - lM[0][0] * lM[1][2]},
        {lM[1][0] * lM[2][1] - lM[1][1] * lM[2][0], lM[0][1] * lM[2][0] - lM[0][0] * lM[2][1],
         lM[0][0] * lM[1][1] - lM[0][1] * lM[1][0]}};
    const double lDeterminant = lM[0][0] * lAdjugate[0][0] + lM[0][1] * lAdjugate[1][0] + lM[0][2] * lAdjugate[2][0];

    OrvAMatrix lInverse;
    bool lFinite = lDeterminant != 0.0;
    for (int lRow = 0; lRow < 3 && lFinite; ++lRow)
        for (int lColumn = 0; lColumn < 3; ++lColumn)
        {
            lInverse.mData[lRow][lColumn] = lAdjugate[lRow][lColumn] / lDeterminant;
            lFinite = lFinite && std::isfinite(lInverse.mData[lRow][lColumn]);
        }
    if (!lFinite) lInverse.SetIdentity();

    for (int lRow = 0; lRow < 3; ++lRow)
    {
        double* lInverseRow = lInverse.mData[lRow];
        lInverseRow[3] = -(lInverseRow[0] * lM[0][3] + lInverseRow[1] * lM[1][3] + lInverseRow[2] * lM[2][3]);
    }
    return lInverse;
}

bool OrvAMatrix::operator==(const OrvAMatrix& pOther) const
{
    for (int lRow = 0; lRow < 4; ++lRow)
        for (int lColumn = 0; lColumn < 4; ++lColumn)
            if (mData[lRow][lColumn] != pOther.mData[lRow][lColumn]) return false;
    return true;
}

} // namespace orvsdk
