#ifndef ORVSDK_HOST_SCENE_ORVOBJECT_H
#define ORVSDK_HOST_SCENE_ORVOBJECT_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/scene/OrvClassId.h"
#include "orvsdk/host/scene/OrvProperty.h"
#include "orvsdk/host/core/OrvString.h"

#include <vector>

namespace orvsdk {

class OrvScene;

/// Base of every host scene object. An object lives in exactly one scene, which owns it from
/// its creation (the classes' static Create) until Destroy; the object is connected to its scene
/// as a source of the scene's root property. Objects connect to properties of other objects of
/// the same scene (see OrvProperty); connections never own.
///
/// Objects are used by one thread at a time per scene; different scenes share nothing.
class ORVHOST_API OrvObject
{
public:
    ///@{
    /// The identity of this class; GetClassId answers the identity of the object's own class
    /// (each derived class has its ClassId and overrides GetClassId the same way).
    static const OrvClassId ClassId;
    virtual const OrvClassId& GetClassId() const { return ClassId; }
    ///@}
    /// True when the object is of class pClassId or of a class derived from it.
    bool Is(const OrvClassId& pClassId) const { return GetClassId().Is(pClassId); }

    OrvObject(const OrvObject&) = delete;
    OrvObject& operator=(const OrvObject&) = delete;

    ///@{
    /// The object's name, valid until the next SetName; SetName copies (null counts as "").
    const char* GetName() const { return mName.Buffer(); }
    void SetName(const char* pName) { mName = OrvString(pName); }
    ///@}
    /// The name after its last ':' (the whole name when it has none).
    OrvString GetNameWithoutNameSpacePrefix() const;

    /// The scene the object lives in; a scene answers itself.
    OrvScene* GetScene() const { return mScene; }

    /// Disconnects the object from everything (both the objects connected to it and those it
    /// is connected to) and frees it; the scene forgets it and every pointer to it becomes
    /// invalid. With pRecursive, the objects connected to any of its properties are destroyed
    /// the same way first, and theirs in turn, at any depth (no recursion). A scene's root node
    /// ignores Destroy; a scene's Destroy frees the whole scene (see OrvScene). Costs the object's
    /// connections plus the number of objects in the scene.
    virtual void Destroy(bool pRecursive = false);

    ///@{
    /// The properties this object is connected to, in connection order, the scene's root
    /// property first.
    int GetDstPropertyCount() const { return static_cast<int>(mDstProperties.size()); }
    OrvProperty* GetDstProperty(int pIndex) const;
    ///@}

protected:
    friend class OrvProperty;
    friend class OrvScene;

    ///@{
    /// An object of pScene named pName; only OrvScene's creation makes objects.
    OrvObject(OrvScene& pScene, const char* pName);
    virtual ~OrvObject();
    ///@}

    /// Makes pSource a source of pDestination (at the front of its sources with pInFront).
    /// False, with nothing changed, when the connection already exists or the two live in
    /// different scenes.
    static bool Connect(OrvObject& pSource, OrvProperty& pDestination, bool pInFront = false);
    /// Removes that connection; false when it did not exist.
    static bool Disconnect(OrvObject& pSource, OrvProperty& pDestination);

private:
    void DisconnectFromDestinations();
    void DisconnectSources();
    void DestroySources();

    // Declared before RootProperty: every property registers itself here when constructed.
    std::vector<OrvProperty*> mProperties;     // this object's properties, root first
    std::vector<OrvProperty*> mDstProperties;  // properties this object is connected to
    OrvScene* mScene;
    OrvString mName;
    size_t mSceneSlot = 0;                     // index in the scene's object list

public:
    /// The root property: the end point of object-to-object connections.
    OrvProperty RootProperty;
};

} // namespace orvsdk

#endif
