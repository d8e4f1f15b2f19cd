#ifndef ORVSDK_HOST_FILTER_ORVROTATIONCURVES_H
#define ORVSDK_HOST_FILTER_ORVROTATIONCURVES_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/math/OrvVector4.h"

namespace orvsdk {

class OrvAnimCurve;
class OrvStatus;

/// The rotation filters' view of three curves holding the X, Y and Z angles (degrees) of one
/// rotation, keyed at the same times: key k of the set is the triple of the three curves' key k.
/// Also the Euler arithmetic the filters share. Holds pointers only; the curves must outlive it.
class ORVHOST_API OrvRotationCurves
{
public:
    /// True when pCurves holds exactly three non-null curves with the same key count and the
    /// same key times; otherwise false, with a message in pStatus when it is not null.
    static bool Check(OrvAnimCurve** pCurves, int pCount, OrvStatus* pStatus);

    /// pCurves must have passed Check.
    explicit OrvRotationCurves(OrvAnimCurve** pCurves) : mCurves{pCurves[0], pCurves[1], pCurves[2]} {}

    /// The key count the three curves share.
    int GetKeyCount() const;
    ///@{
    /// The X, Y, Z angles of key pIndex (W 0), and their replacement (narrowed to float).
    OrvVector4 GetKey(int pIndex) const;
    void SetKey(int pIndex, const OrvVector4& pAngles);
    ///@}

    /// pAngles plus the multiple of 360 closest to pReference, per component.
    static OrvVector4 Wrapped(const OrvVector4& pAngles, const OrvVector4& pReference);
    /// The triple giving the same rotation as pSequence, whose components are Euler angles in
    /// the sequence of some order, closest to pReference (same sequence): pSequence or its
    /// alternative (a0 + 180, 180 - a1, a2 + 180), each wrapped to pReference.
    static OrvVector4 ClosestEquivalent(const OrvVector4& pSequence, const OrvVector4& pReference);
    /// Squared distance of the X, Y, Z components.
    static double Distance2(const OrvVector4& pA, const OrvVector4& pB);

private:
    OrvAnimCurve* mCurves[3];
};

} // namespace orvsdk

#endif
