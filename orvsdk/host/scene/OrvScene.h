#ifndef ORVSDK_HOST_SCENE_ORVSCENE_H
#define ORVSDK_HOST_SCENE_ORVSCENE_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/scene/OrvGlobalSettings.h"
#include "orvsdk/host/scene/OrvObject.h"

#include <memory>
#include <vector>

namespace orvsdk {

class OrvNode;
class OrvAnimStack;

/// A scene: the container and owner of host objects. Every object created in the scene (the
/// classes' Create with the scene, or an object of the scene, as container) belongs to it until
/// the object's Destroy, and is connected to it as a source of the scene's root property. A
/// scene is its own container and its own scene. It has a root node from its creation, its
/// own settings, and a current animation stack (none at first).
class ORVHOST_API OrvScene : public OrvObject
{
public:
    ///@{
    /// Class identity (see OrvObject::ClassId).
    static const OrvClassId ClassId;
    const OrvClassId& GetClassId() const override { return ClassId; }
    ///@}

    /// A new, empty scene named pName with its root node "RootNode". The caller owns it and
    /// releases it with Destroy.
    static OrvScene* Create(const char* pName);

    /// Frees every object of the scene, then the scene itself. pRecursive makes no difference.
    /// Costs the number of objects.
    void Destroy(bool pRecursive = false) override;

    /// The root of the scene's node hierarchy; it lives as long as the scene.
    OrvNode* GetRootNode() const { return mRootNode; }

    ///@{
    /// The stack that animation queries use when given none; null when unset. Setting a stack of
    /// another scene is ignored. Destroying the current stack unsets it.
    OrvAnimStack* GetCurrentAnimationStack() const { return mCurrentStack; }
    void SetCurrentAnimationStack(OrvAnimStack* pStack);
    ///@}

    ///@{
    /// This scene's settings, changed in place.
    OrvGlobalSettings& GetGlobalSettings() { return mGlobalSettings; }
    const OrvGlobalSettings& GetGlobalSettings() const { return mGlobalSettings; }
    ///@}

    /// Number of objects the scene owns, itself not counted (the root node is counted).
    int GetObjectCount() const { return static_cast<int>(mObjects.size()); }

    /// Creation used by the classes' Create: a new T named pName in pContainer's scene,
    /// connected to that scene, and, when pContainer is an object other than the scene, also as
    /// a source of pContainer. Null when pContainer is null.
    template <typename T>
    static T* CreateObject(OrvObject* pContainer, const char* pName)
    {
        if (!pContainer) return nullptr;
        OrvScene& lScene = *pContainer->GetScene();
        T* lObject = new T(lScene, pName);
        lScene.Adopt(OwnedObject(lObject), *pContainer);
        return lObject;
    }

private:
    friend class OrvObject;

    struct ObjectDeleter
    {
        void operator()(OrvObject* pObject) const { DeleteObject(pObject); }
    };

    explicit OrvScene(const char* pName);
    ~OrvScene() override;

    using OwnedObject = std::unique_ptr<OrvObject, ObjectDeleter>;

    static void DeleteObject(OrvObject* pObject);
    void Adopt(OwnedObject pObject, OrvObject& pContainer);
    // Frees pObject, which must be disconnected already; called by OrvObject::Destroy.
    void Release(OrvObject& pObject);

    std::vector<OwnedObject> mObjects;
    OrvNode* mRootNode = nullptr;
    OrvAnimStack* mCurrentStack = nullptr;
    OrvGlobalSettings mGlobalSettings;
};

/// Scoped owner of a host scene: destroys it, with every object it owns, when it goes.
struct OrvSceneDeleter
{
    /// Destroys pScene (not null) and every object it owns.
    void operator()(OrvScene* pScene) const { pScene->Destroy(); }
};
/// A scene owned by a scoped pointer, destroyed with everything it owns when the pointer goes.
using OrvScenePtr = std::unique_ptr<OrvScene, OrvSceneDeleter>;

/// A new, empty scene named pName, owned by the returned pointer.
inline OrvScenePtr OrvCreateScene(const char* pName)
{
    return OrvScenePtr(OrvScene::Create(pName));
}

} // namespace orvsdk

#endif
