#ifndef ORVSDK_HOST_ANIM_ORVANIMLAYER_H
#define ORVSDK_HOST_ANIM_ORVANIMLAYER_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/scene/OrvObject.h"

namespace orvsdk {

/// A layer of an animation stack. The curve nodes of the layer are its source objects. Create
/// it with its stack as container to make it one of the stack's layers.
class ORVHOST_API OrvAnimLayer : public OrvObject
{
public:
    ///@{
    /// Class identity (see OrvObject::ClassId).
    static const OrvClassId ClassId;
    const OrvClassId& GetClassId() const override { return ClassId; }
    ///@}

    /// An empty layer named pName in pContainer's scene; when pContainer is a stack, the layer
    /// is appended to its layers. Null when pContainer is null.
    static OrvAnimLayer* Create(OrvObject* pContainer, const char* pName);

protected:
    friend class OrvScene;
    /// An object of pScene named pName; objects are made through Create, which hands them to the scene.
    OrvAnimLayer(OrvScene& pScene, const char* pName) : OrvObject(pScene, pName) {}
};

} // namespace orvsdk

#endif
