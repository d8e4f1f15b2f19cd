#ifndef ORVSDK_SKELETON_ORVASFSCENE_H
#define ORVSDK_SKELETON_ORVASFSCENE_H

#include "orvsdk/OrvSdkExport.h"
#include "orvsdk/host/math/OrvVector4.h"

namespace orvsdk {

class OrvAsfNode;
class OrvNode;
class OrvScene;

/// An ASF skeleton document: a name, three unit factors and the root bone, which it owns.
///
/// The caller creates a scene (in host memory when it is to be released with Destroy, or as a
/// plain object) and hands it to the reader, or fills it from a host hierarchy with ORVToASF.
///
/// Where the members are defined, by group: life, name and SetupNode in skeleton/OrvAsfScene.cpp;
/// node building (ASFToORV, MergeASFToORV) in import/OrvAsfNodeBuilding.cpp; extraction from a
/// host hierarchy (ORVToASF and its steps) in export/OrvAsfExport.cpp; binding to a host
/// hierarchy (MergeORVToASF) in export/OrvAsfMerge.cpp.
class ORVSDK_API OrvAsfScene
{
public:
    /// Size of the name buffer, terminator included.
    static constexpr int kNameSize = 1024;

    /// Empty name, all three units 1.0, no root.
    OrvAsfScene();
    ///@{
    /// Destroys the root and with it every bone.
    virtual ~OrvAsfScene();
    OrvAsfScene(const OrvAsfScene&) = delete;
    OrvAsfScene& operator=(const OrvAsfScene&) = delete;
    ///@}

    /// Runs the destructor, then frees the scene's own memory with OrvFree: only for a scene
    /// constructed in host memory.
    virtual void Destroy();

    /// The name buffer itself (kNameSize bytes), not a copy.
    char* GetName();

    /// Sets pBone's global frame, offset vector, direction and length from its bone vector
    /// pBoneVector (joint to end, in the bone's own frame, scaled component-wise by pScale) and
    /// its rest rotation pRotation relative to the parent (X, Y, Z degrees, default order). The
    /// caller has set pBone's mParentAxisMatrix (identity for the root). The length is converted
    /// to the file's unit with mLengthUnit. Offsets, rest values and children are not touched.
    void SetupNode(OrvAsfNode* pBone, OrvVector4 pBoneVector, OrvVector4 pRotation, OrvVector4 pScale);

    // --- Import -----------------------------------------------------------------------------

    /// Builds the host nodes of the whole skeleton in pScene (see OrvAsfNode::ASFToORV) and
    /// returns the root's node, attached to no parent.
    OrvNode* ASFToORV(OrvScene* pScene, const char* pTakeName, bool pUseLimits, bool pUseRotationOffset,
                      bool pUsePreRotation);
    /// Merges the skeleton onto the host hierarchy below pNode, matching bones to nodes by name
    /// and building only what has no match.
    void MergeASFToORV(OrvScene* pScene, OrvNode* pNode, const char* pTakeName, bool pUseLimits,
                       bool pUseRotationOffset, bool pUsePreRotation);

    // --- Export -----------------------------------------------------------------------------

    /// Builds into this scene, which must have no root yet, the skeleton of the host hierarchy
    /// below pRoot: named "ASF", length unit 1.0, a "root" bone with six DOFs, one bone per host
    /// joint, end sites removed. pTranslationDofs gives every joint bone tx, ty, tz as well;
    /// pScale scales every bone vector; pUseLocalTransform adds the joints' local transforms at
    /// time zero to their rest pose. Always true.
    bool ORVToASF(OrvNode* pRoot, bool pTranslationDofs, OrvVector4 pScale, bool pUseLocalTransform);
    /// Makes the "root" bone for pNode; the caller owns it until it is stored in mRoot.
    OrvAsfNode* CreateRoot(OrvNode* pNode);
    /// Makes the bones of pNode's skeleton children below pBone, and of their whole subtrees, in
    /// the order of a depth-first walk; pBone is already attached or is mRoot. Arguments as for
    /// ORVToASF. Works at any depth (an explicit stack, no recursion).
    void RecursiveCreate(OrvNode* pNode, OrvAsfNode* pBone, bool pTranslationDofs, OrvVector4 pScale,
                         bool pUseLocalTransform);
    /// Binds the existing skeleton (mRoot must be set) to pRoot and the nodes below it by bone
    /// name, refreshing each bound bone's cached curve nodes, pivots and parent frame. True.
    bool MergeORVToASF(OrvNode* pRoot);
    /// Binds the subtree below pBone to nodes below pNode, the node of pMatchedAncestor (the
    /// nearest bone at or above pBone that has a node), bones in pre-order. True. Works at any
    /// depth (an explicit stack, no recursion).
    bool RecursiveMerge(OrvNode* pNode, OrvAsfNode* pBone, OrvAsfNode* pMatchedAncestor);

    // --- Fields ----------------------------------------------------------------------------

    char mName[kNameSize];   ///< skeleton name, NUL-terminated
    double mMassUnit;        ///< mass factor from the units section
    double mLengthUnit;      ///< length factor from the units section
    double mAngleUnit;       ///< factor turning the file's angles into degrees
    OrvAsfNode* mRoot;       ///< owned; null until a root is read or built
};

} // namespace orvsdk

#endif
