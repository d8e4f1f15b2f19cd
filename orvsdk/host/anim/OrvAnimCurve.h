#ifndef ORVSDK_HOST_ANIM_ORVANIMCURVE_H
#define ORVSDK_HOST_ANIM_ORVANIMCURVE_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/scene/OrvObject.h"
#include "orvsdk/host/core/OrvTime.h"

#include <vector>

namespace orvsdk {

class OrvAnimCurveKey;

/// A function of time given by keys (time, float value), kept sorted by time with at most one
/// key per time, interpolated linearly. Curves animate properties by being connected to channels
/// of curve nodes (OrvAnimCurveNode::ConnectToChannel). Key indices run from 0 to
/// KeyGetCount() - 1 in time order.
class ORVHOST_API OrvAnimCurve : public OrvObject
{
public:
    ///@{
    /// Class identity (see OrvObject::ClassId).
    static const OrvClassId ClassId;
    const OrvClassId& GetClassId() const override { return ClassId; }
    ///@}

    /// An empty curve named pName in pContainer's scene (the scene itself, or an object of it);
    /// null when pContainer is null.
    static OrvAnimCurve* Create(OrvObject* pContainer, const char* pName);

    /// Adds a key with pKey's value at pTime (pKey's own time is not used); when a key exists
    /// at exactly pTime its value is replaced instead. Returns the key's index, or -1 for an
    /// empty record (see OrvAnimCurveKey). pLast, when given, receives the index. Appending
    /// after the last key costs amortised constant time; inserting elsewhere costs the number
    /// of keys.
    virtual int KeyAdd(OrvTime pTime, OrvAnimCurveKey& pKey, int* pLast = nullptr);

    /// Makes room for pCount keys in all, so that adding keys up to that count moves no key and
    /// allocates nothing; a hint for callers that know roughly how many keys will come. Room not
    /// yet filled costs address space, not memory. A count at or below the present room, or
    /// room that cannot be had, changes nothing.
    void KeyReserve(int pCount);

    /// Number of keys.
    virtual int KeyGetCount() const { return static_cast<int>(mTimes.size()); }
    ///@{
    /// Value and time of key pIndex; 0 and time 0 for an index out of range.
    virtual float KeyGetValue(int pIndex) const;
    virtual OrvTime KeyGetTime(int pIndex) const;
    ///@}
    /// Changes the value of key pIndex; an index out of range is ignored.
    virtual void KeySetValue(int pIndex, float pValue);
    /// Removes key pIndex (later keys move down); false for an index out of range. Costs the
    /// number of keys after it.
    virtual bool KeyRemove(int pIndex);
    /// Removes every key.
    virtual void KeyClear()
    {
        mTimes.clear();
        mValues.clear();
    }

    /// The value at pTime: linear between the two keys around it, the first key's value before
    /// the first key, the last key's after the last, 0 without keys. Costs log(keys).
    virtual float Evaluate(OrvTime pTime) const;
    /// The same value as Evaluate, found from a guess: pHint is the index of the first key after
    /// the time asked last (any value is a valid guess) and is updated. Constant time when times
    /// rise by at most a key per call, as when frames are evaluated in order; log(keys) otherwise.
    float EvaluateFromHint(OrvTime pTime, int& pHint) const;

protected:
    friend class OrvScene;
    /// An object of pScene named pName; objects are made through Create, which hands them to the scene.
    OrvAnimCurve(OrvScene& pScene, const char* pName) : OrvObject(pScene, pName) {}

private:
    // The value at pTime, where pAfter is the index of the first key later than pTime.
    float Interpolate(OrvTime pTime, size_t pAfter) const;

    // Key i is (mTimes[i], mValues[i]); two arrays rather than one of pairs, so that a key takes
    // 12 bytes instead of a padded 16.
    std::vector<OrvTime> mTimes;  // sorted, unique
    std::vector<float> mValues;
};

} // namespace orvsdk

#endif
