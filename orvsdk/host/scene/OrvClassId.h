#ifndef ORVSDK_HOST_SCENE_ORVCLASSID_H
#define ORVSDK_HOST_SCENE_ORVCLASSID_H

namespace orvsdk {

/// Identity of a host object class. Every class has exactly one instance (its static ClassId);
/// identities compare by address. mParent is the base class's identity (null for OrvObject), so
/// a class id knows the classes it derives from.
struct OrvClassId
{
    const char* mName;          ///< the class's name
    const OrvClassId* mParent;  ///< the base class's identity; null for OrvObject

    /// True when this class is pOther or derives from it. Costs the depth of the class hierarchy.
    bool Is(const OrvClassId& pOther) const
    {
        for (const OrvClassId* lClass = this; lClass; lClass = lClass->mParent)
            if (lClass == &pOther) return true;
        return false;
    }

    ///@{
    /// Identity: the same class.
    bool operator==(const OrvClassId& pOther) const { return this == &pOther; }
    bool operator!=(const OrvClassId& pOther) const { return this != &pOther; }
    ///@}
};

} // namespace orvsdk

#endif
