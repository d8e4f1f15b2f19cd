#ifndef ORVSDK_HOST_MATH_ORVAMATRIX_H
#define ORVSDK_HOST_MATH_ORVAMATRIX_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/math/OrvVector4.h"

namespace orvsdk {

/// Affine 4x4 matrix of doubles, identity by default. Column-vector convention: (A * B) applied
/// to a point is A applied to (B applied to the point); the translation is the last column.
/// All angles are in degrees.
class ORVHOST_API OrvAMatrix
{
public:
    /// The identity; inline, as matrices are made per bone and frame.
    OrvAMatrix() = default;

    ///@{
    /// Element at row pRow and column pColumn (0 to 3).
    double& operator()(int pRow, int pColumn) { return mData[pRow][pColumn]; }
    double operator()(int pRow, int pColumn) const { return mData[pRow][pColumn]; }
    ///@}

    /// Makes this the identity.
    void SetIdentity();

    ///@{
    /// Translation part (X, Y, Z of the last column); W of the result is 1.
    OrvVector4 GetT() const;
    void SetT(const OrvVector4& pTranslation);
    ///@}

    ///@{
    /// Makes the 3x3 part the rotation given by the Euler angles pAngles, taken in the sequence of
    /// pOrder (an OrvEuler::EOrder value 0 to 5): with (a0, a1, a2) = AxisTable[pOrder], pAngles[k]
    /// is the angle about axis ak and the rotation is R_a2(pAngles[2]) * R_a1(pAngles[1]) *
    /// R_a0(pAngles[0]). The translation is kept. Order 0 is X, Y, Z: SetR((x, y, z)) gives
    /// Rz(z) * Ry(y) * Rx(x). An order outside 0 to 5 is taken as 0.
    void SetR(const OrvVector4& pAngles, int pOrder);
    void SetR(const OrvVector4& pAngles) { SetR(pAngles, 0); }
    ///@}
    /// Makes the 3x3 part the rotation of the X, Y, Z angles pXyzAngles applied in the sequence of
    /// pOrder (0 to 5): SetR of the angles picked from pXyzAngles along AxisTable[pOrder].
    void SetRInOrder(const OrvVector4& pXyzAngles, int pOrder);

    ///@{
    /// Inverse of SetR: the Euler angles of the 3x3 part's rotation in pOrder's own sequence
    /// (component k belongs to the k-th rotation of the order), so SetR(GetR(o), o) rebuilds the
    /// rotation. Angles lie in (-180, 180], the middle one in [-90, 90]. At gimbal lock (middle
    /// angle at +/-90 degrees) the third angle is 0 and the first carries the remaining rotation.
    /// Columns are normalised first, so a scaled matrix yields its rotation's angles. W is 0.
    OrvVector4 GetR(int pOrder) const;
    OrvVector4 GetR() const { return GetR(0); }
    ///@}
    /// GetR for a 3x3 part that is a rotation (a product of rotations, within rounding): no
    /// normalisation, and the third angle's sine and cosine taken from the entries rather than
    /// computed from the angle. Cheaper; agrees with GetR within a few units in the last place.
    OrvVector4 GetRotationAngles(int pOrder) const;

    /// Makes the 3x3 part a diagonal scaling by X, Y, Z of pScale; the translation is kept.
    void SetS(const OrvVector4& pScale);

    /// The product this * pOther: pOther applies first to a column vector.
    OrvAMatrix operator*(const OrvAMatrix& pOther) const;

    /// Makes this matrix B * this, where B is the rotation that SetR builds from pDegrees about axis
    /// pAxis (0 X, 1 Y, 2 Z) and 0 about the other two. The result holds the same values as
    /// `B.SetR(angles); *this = B * *this` (a zero entry may differ in sign only), for one sine and
    /// cosine and 16 products instead of three sines and cosines and three full products. Falls
    /// back to that very computation when the angle or an entry is not finite.
    void PreRotate(int pAxis, double pDegrees);

    /// The rotation part of *this * pOther: a matrix whose 3x3 part holds the same values as that
    /// of the full product (a zero entry may differ in sign only) and whose translation is zero.
    /// Costs 36 products instead of 64; for callers that read only the rotation (GetR).
    OrvAMatrix MultR(const OrvAMatrix& pOther) const;

    /// *this * pOther for two affine matrices (last row 0, 0, 0, 1): the same values as operator*
    /// when every entry is finite (a zero entry may differ in sign only), for 36 products
    /// instead of 64. For chains of transforms evaluated per frame.
    OrvAMatrix MultAffine(const OrvAMatrix& pOther) const;

    /// The point pPoint (X, Y, Z; W is ignored and kept) transformed by this matrix. Inline: the
    /// sampling of every bone and frame calls it.
    OrvVector4 MultT(const OrvVector4& pPoint) const
    {
        OrvVector4 lResult(0.0, 0.0, 0.0, pPoint[3]);
        for (int lRow = 0; lRow < 3; ++lRow)
            lResult[lRow] = mData[lRow][0] * pPoint[0] + mData[lRow][1] * pPoint[1] + mData[lRow][2] * pPoint[2] +
                            mData[lRow][3];
        return lResult;
    }

    /// The inverse affine transform. A singular 3x3 part yields the identity in that part.
    OrvAMatrix Inverse() const;

    ///@{
    /// Exact comparison of all sixteen entries.
    bool operator==(const OrvAMatrix& pOther) const;
    bool operator!=(const OrvAMatrix& pOther) const { return !(*this == pOther); }
    ///@}

private:
    double mData[4][4] = {{1.0, 0.0, 0.0, 0.0}, {0.0, 1.0, 0.0, 0.0}, {0.0, 0.0, 1.0, 0.0}, {0.0, 0.0, 0.0, 1.0}};
};

} // namespace orvsdk

#endif
