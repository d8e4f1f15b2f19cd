#ifndef ORVSDK_HOST_ANIM_ORVANIMSTACK_H
#define ORVSDK_HOST_ANIM_ORVANIMSTACK_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/scene/OrvObject.h"

namespace orvsdk {

class OrvAnimLayer;

/// An animation take: an ordered set of layers, which are its source objects (the first is its
/// base layer). A scene's stacks are found among the scene's source objects by name.
class ORVHOST_API OrvAnimStack : public OrvObject
{
public:
    ///@{
    /// Class identity (see OrvObject::ClassId).
    static const OrvClassId ClassId;
    const OrvClassId& GetClassId() const override { return ClassId; }
    ///@}

    /// An empty stack named pName in pContainer's scene; null when pContainer is null. It does
    /// not become the scene's current stack by itself.
    static OrvAnimStack* Create(OrvObject* pContainer, const char* pName);

    /// The first layer, null when the stack has none.
    OrvAnimLayer* GetBaseLayer() const;

protected:
    friend class OrvScene;
    /// An object of pScene named pName; objects are made through Create, which hands them to the scene.
    OrvAnimStack(OrvScene& pScene, const char* pName) : OrvObject(pScene, pName) {}
};

} // namespace orvsdk

#endif
