#ifndef ORVSDK_HOST_MATH_ORVVECTOR4_H
#define ORVSDK_HOST_MATH_ORVVECTOR4_H

#include "orvsdk/host/OrvHostExport.h"

namespace orvsdk {

/// Four doubles (X, Y, Z, W), all zero by default. Used for points, vectors and Euler angles in
/// degrees; Length and Normalize look at X, Y and Z only.
class ORVHOST_API OrvVector4
{
public:
    ///@{
    /// Zeros, or the components given.
    OrvVector4() = default;
    OrvVector4(double pX, double pY, double pZ, double pW = 0.0) : mData{pX, pY, pZ, pW} {}
    ///@}

    ///@{
    /// Component pIndex: 0 X, 1 Y, 2 Z, 3 W.
    double& operator[](int pIndex) { return mData[pIndex]; }
    const double& operator[](int pIndex) const { return mData[pIndex]; }
    ///@}
    ///@{
    /// The four components in order, for readers that fill X, Y, Z in place.
    double* Buffer() { return mData; }
    const double* Buffer() const { return mData; }
    ///@}

    ///@{
    /// Component-wise sums; inline, for the per-frame paths.
    OrvVector4 operator+(const OrvVector4& pOther) const
    {
        OrvVector4 lSum = *this;
        lSum += pOther;
        return lSum;
    }
    OrvVector4& operator+=(const OrvVector4& pOther)
    {
        for (int i = 0; i < 4; ++i) mData[i] += pOther.mData[i];
        return *this;
    }
    OrvVector4 operator-(const OrvVector4& pOther) const;
    OrvVector4 operator*(double pFactor) const;  ///< all four components
    OrvVector4& operator*=(const OrvVector4& pOther);  ///< component-wise
    bool operator==(const OrvVector4& pOther) const;  ///< exact, all four components
    bool operator!=(const OrvVector4& pOther) const { return !(*this == pOther); }
    ///@}

    /// Euclidean length of X, Y, Z.
    double Length() const;
    /// Scales X, Y, Z to unit length and returns the old length; a zero (or non-finite) vector is
    /// left unchanged, never turned into NaN.
    double Normalize();

private:
    double mData[4] = {0.0, 0.0, 0.0, 0.0};
};

/// Three values of one type, X, Y, Z; used for limits.
template <typename T>
class OrvVectorTemplate3
{
public:
    ///@{
    /// Value-initialised components, or the ones given.
    OrvVectorTemplate3() : mData{T(), T(), T()} {}
    OrvVectorTemplate3(T pX, T pY, T pZ) : mData{pX, pY, pZ} {}
    ///@}
    ///@{
    /// Component pIndex: 0 X, 1 Y, 2 Z.
    T& operator[](int pIndex) { return mData[pIndex]; }
    const T& operator[](int pIndex) const { return mData[pIndex]; }
    ///@}
    /// Component-wise equality.
    bool operator==(const OrvVectorTemplate3& pOther) const
    {
        return mData[0] == pOther.mData[0] && mData[1] == pOther.mData[1] && mData[2] == pOther.mData[2];
    }

private:
    T mData[3];
};

} // namespace orvsdk

#endif
