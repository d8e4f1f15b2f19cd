#include "orvsdk/host/math/OrvVector4.h"

#include <cmath>

namespace orvsdk {

OrvVector4 OrvVector4::operator-(const OrvVector4& pOther) const
{
    OrvVector4 lDifference;
    for (int i = 0; i < 4; ++i) lDifference.mData[i] = mData[i] - pOther.mData[i];
    return lDifference;
}

OrvVector4 OrvVector4::operator*(double pFactor) const
{
    OrvVector4 lProduct;
    for (int i = 0; i < 4; ++i) lProduct.mData[i] = mData[i] * pFactor;
    return lProduct;
}

OrvVector4& OrvVector4::operator*=(const OrvVector4& pOther)
{
    for (int i = 0; i < 4; ++i) mData[i] *= pOther.mData[i];
    return *this;
}

bool OrvVector4::operator==(const OrvVector4& pOther) const
{
    for (int i = 0; i < 4; ++i)
        if (mData[i] != pOther.mData[i]) return false;
    return true;
}

double OrvVector4::Length() const
{
    // hypot does not overflow for large finite components.
    return std::hypot(mData[0], mData[1], mData[2]);
}

double OrvVector4::Normalize()
{
    const double lLength = Length();
    if (lLength > 0.0 && std::isfinite(lLength))
        for (int i = 0; i < 3; ++i) mData[i] /= lLength;
    return lLength;
}

} // namespace orvsdk
