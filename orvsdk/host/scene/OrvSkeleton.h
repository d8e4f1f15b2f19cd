#ifndef ORVSDK_HOST_SCENE_ORVSKELETON_H
#define ORVSDK_HOST_SCENE_ORVSKELETON_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/scene/OrvNodeAttribute.h"

namespace orvsdk {

/// Node attribute marking a node as a joint of a skeleton.
class ORVHOST_API OrvSkeleton : public OrvNodeAttribute
{
public:
    ///@{
    /// Class identity (see OrvObject::ClassId).
    static const OrvClassId ClassId;
    const OrvClassId& GetClassId() const override { return ClassId; }
    ///@}

    /// Kinds of skeleton node: eRoot the top of a skeleton, eLimb a segment with a length,
    /// eLimbNode a joint whose segment is given by its child's offset (the kind importers give
    /// every joint they build), eEffector the end of a chain.
    enum EType
    {
        eRoot = 0,
        eLimb = 1,
        eLimbNode = 2,
        eEffector = 3
    };

    /// A skeleton attribute of type eRoot named pName in pContainer's scene; null when
    /// pContainer is null.
    static OrvSkeleton* Create(OrvObject* pContainer, const char* pName);

    ///@{
    /// The kind; a value outside EType is stored as given.
    void SetSkeletonType(EType pType) { mType = pType; }
    EType GetSkeletonType() const { return mType; }
    ///@}

protected:
    friend class OrvScene;
    /// An object of pScene named pName; objects are made through Create, which hands them to the scene.
    OrvSkeleton(OrvScene& pScene, const char* pName) : OrvNodeAttribute(pScene, pName) {}

private:
    EType mType = eRoot;
};

} // namespace orvsdk

#endif
