#ifndef ORVSDK_HOST_SCENE_ORVNODEATTRIBUTE_H
#define ORVSDK_HOST_SCENE_ORVNODEATTRIBUTE_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/scene/OrvObject.h"

namespace orvsdk {

/// What a node stands for (a skeleton joint, ...). The scene owns the attribute; a node refers
/// to it through a connection (OrvNode::SetNodeAttribute), and several nodes may share one.
class ORVHOST_API OrvNodeAttribute : public OrvObject
{
public:
    ///@{
    /// Class identity (see OrvObject::ClassId).
    static const OrvClassId ClassId;
    const OrvClassId& GetClassId() const override { return ClassId; }
    ///@}

    /// A plain attribute named pName in pContainer's scene (see OrvScene::CreateObject); null
    /// when pContainer is null.
    static OrvNodeAttribute* Create(OrvObject* pContainer, const char* pName);

protected:
    friend class OrvScene;
    /// An object of pScene named pName; objects are made through Create, which hands them to the scene.
    OrvNodeAttribute(OrvScene& pScene, const char* pName) : OrvObject(pScene, pName) {}
};

} // namespace orvsdk

#endif
