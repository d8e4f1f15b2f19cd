#ifndef ORVSDK_SKELETON_ORVASFNODE_H
#define ORVSDK_SKELETON_ORVASFNODE_H

#include "orvsdk/OrvSdkExport.h"
#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/core/OrvArray.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/host/math/OrvVector4.h"
#include "orvsdk/skeleton/OrvAsfDof.h"

#include <vector>

namespace orvsdk {

class OrvAnimCurve;
class OrvAnimCurveNode;
class OrvNode;
class OrvScene;

/// One bone of an ASF skeleton tree.
///
/// Bones live in host memory: Create allocates and constructs one, Destroy runs the destructor
/// and frees it. A bone owns its children (destroying it destroys its subtree) and, until it
/// hands them to a host node, its six animation curves. mParent, mScene and the cached curve-node
/// pointers never own. The fields are public: the reader, the writer, the set-up and the
/// conversions to and from the host scene all fill and read them directly.
///
/// Degrees of freedom are held as EOrvAsfDof codes: "tx" 0, "ty" 1, "tz" 2, "rz" 3, "ry" 4,
/// "rx" 5. Limits are indexed by code, not by position in mDof.
///
/// Where the members are defined, by group: creation, memory and tree operations in
/// skeleton/OrvAsfNode.cpp; rest pose in skeleton/OrvAsfBindPose.cpp; simplification in
/// skeleton/OrvAsfSimplify.cpp; curve creation and binding (CreateDataFromDOF, SetCurves,
/// GetCurveNodePointers) in import/OrvAsfCurveBinding.cpp; rotation settings and limits (SetDoFs,
/// SetLimits) in import/OrvAsfDofs.cpp; node building (ASFToORV, MergeASFToORV) in
/// import/OrvAsfNodeBuilding.cpp; sampling (StartSamplingData, AddSampleFromDOF) in
/// sampling/OrvAsfSampling.cpp and its flush (StopSamplingData) in sampling/OrvAsfCurveFlush.cpp.
class ORVSDK_API OrvAsfNode
{
public:
    /// Most DOF entries a bone holds.
    static constexpr int kMaxDofs = 7;
    static constexpr int kDofCodes = eOrvDofRx + 1;  ///< size of the tables indexed by DOF code
    /// Size of the name buffer, terminator included.
    static constexpr int kNameSize = 256;

    /// A new bone with the defaults below, in host memory; null when memory runs out. The caller
    /// owns it until it is attached to a parent or stored as a scene's root.
    static OrvAsfNode* Create();
    /// Destroys pBone and its whole subtree and frees its memory; null is accepted. The bone must
    /// no longer be listed in a parent's children.
    static void Destroy(OrvAsfNode* pBone);

    /// Empty name, no degrees of freedom, no active limits, zero vectors, identity matrices, no
    /// parent, no children, no host links.
    OrvAsfNode();
    ///@{
    /// Destroys the curves the bone still owns (through the host), then every child, depth
    /// first (each bone's curves before its children's, children in index order), then releases
    /// the children storage. The parent is not told. Works at any depth (no recursion) and
    /// allocates nothing.
    ~OrvAsfNode();
    OrvAsfNode(const OrvAsfNode&) = delete;
    OrvAsfNode& operator=(const OrvAsfNode&) = delete;
    ///@}

    // --- Tree operations -------------------------------------------------------------------

    /// Stores the host scene the bone's curves belong to; nothing else.
    void SetScene(OrvScene* pScene);
    /// The first bone of this subtree, in depth-first pre-order (a bone before its children,
    /// children in index order), whose name equals pName byte by byte; null when none does.
    /// Cost: linear in the subtree's size; works at any depth (no recursion).
    OrvAsfNode* Find(const char* pName);
    /// Calls pVisit(OrvAsfNode*) on this bone and every bone below it in depth-first pre-order,
    /// with an explicit stack instead of recursion, so the tree's depth does not matter. A bone's
    /// children are read after pVisit returned for it, so pVisit may change them (and only them).
    /// Returns the first bone for which pVisit returned true, which ends the walk; null when it
    /// never did. Cost: the subtree's size, plus a stack as large as the widest path.
    template <typename TVisit>
    OrvAsfNode* VisitPreOrder(TVisit pVisit);
    /// The child at pIndex (>= 0), or null when the index is not below the child count.
    OrvAsfNode* GetChild(int pIndex);
    /// Appends pBone to the children and makes this bone its parent; true on success. When the
    /// children array cannot grow nothing changes (pBone keeps its parent link, the existing
    /// children stay) and the result is false, so the caller still owns pBone. No duplicate test,
    /// and pBone is not taken out of a previous parent's children.
    bool AddChild(OrvAsfNode* pBone);
    /// Clears pBone's parent link and, when pBone is among the children, takes its first entry
    /// out, keeping the order of the others. pBone is not destroyed; the caller owns it.
    void RemoveChild(OrvAsfNode* pBone);

    // --- Rest pose -------------------------------------------------------------------------

    /// Derives, for this bone and then its whole subtree (pre-order), the offset from the parent's
    /// joint, the copy of the parent's frame and the rest translation and rotation relative to
    /// the parent, from the global description the reader filled in. With pUseRotationOffset set
    /// the rest translation is left to the host node's rotation offset and not computed; with
    /// pUsePreRotation set the rest rotation is left to its pre-rotation. With both set both rest
    /// values are zero and every bone's position becomes its bone vector. Cannot fail; works at
    /// any depth (no recursion).
    void SetupPosition(bool pUseRotationOffset, bool pUsePreRotation);
    /// Rest rotation from pRelativeFrame (this bone's frame in its parent's frame), decomposed in
    /// the bone's rotation order and stored in the X, Y, Z slots of mLocalRotation.
    void SetLocalRotationFrom(const OrvAMatrix& pRelativeFrame);

    // --- Simplification --------------------------------------------------------------------

    /// Removes every bone below this one that has no degree of freedom and hands its children
    /// to the dummy's parent (appended in reverse order), keeping their global joint positions
    /// and frames; rest values are recomputed as SetupPosition would with the same flags, which
    /// must be the ones SetupPosition ran with. This bone itself always stays. When a parent's
    /// children array cannot take a dummy's children, that dummy and its children stay as they
    /// are. Cost: linear in the subtree's size; works at any depth (no recursion).
    void RemoveDummy(bool pUseRotationOffset, bool pUsePreRotation);
    /// Removes below this bone the leaves of length exactly 0 whose cached translation and
    /// rotation curve nodes are absent or not animated. A bone that becomes such a leaf only by
    /// this removal stays. This bone itself always stays. Works at any depth (no recursion).
    void RemoveEndSite();

    // --- Import: curves and host nodes ---------------------------------------------------------

    /// Records pScene in this bone and its whole subtree and creates, in that scene, each bone's
    /// three translation curves when it has a translation DOF and three rotation curves when it
    /// has a rotation DOF, named after the bone ("_tx" ... "_rz"). The bone owns them until
    /// SetCurves hands them over; curves held before are forgotten, not destroyed. Bones are
    /// taken in pre-order; works at any depth (no recursion).
    void CreateDataFromDOF(OrvScene* pScene);
    /// Writes the rest translation and rotation into pNode and connects the owned curves to its
    /// channels in the animation stack named pTakeName, replacing curves already there; the bone
    /// owns no curves afterwards. This bone only; mScene must be set.
    void SetCurves(OrvNode* pNode, const char* pTakeName);
    /// Caches pNode's rotation offset, pre- and post-rotation and its translation, rotation and
    /// scaling curve nodes on the current animation layer (none created; null where absent). Sets
    /// mScene from the node when still null. A null pNode changes nothing. This bone only.
    void GetCurveNodePointers(OrvNode* pNode);

    /// Marks the start of a sampling run on this subtree; changes nothing.
    void StartSamplingData();
    /// Adds one key at pTime to each owned curve from this bone's pValues (one value per entry of
    /// mDof, in order), translations scaled by pTranslationFactor, rotations by pRotationFactor,
    /// expressed relative to the parent as the set-up flags require (same flags as the read and
    /// the node building). This bone only; nothing in the skeleton changes.
    void AddSampleFromDOF(double* pValues, OrvTime& pTime, double pTranslationFactor, double pRotationFactor,
                          bool pUseRotationOffset, bool pUsePreRotation);
    /// Ends a sampling run on this bone and its subtree, bone by bone in pre-order: destroys
    /// curves that got at most one key and applies the host's rotation filter and constant-key
    /// reducer as its global settings ask. Works at any depth (no recursion).
    void StopSamplingData();

    /// Sets pNode's rotation order, rotation offset and pre-rotation from this bone, following
    /// the two set-up flags.
    void SetDoFs(OrvNode* pNode, bool pUseRotationOffset, bool pUsePreRotation);
    /// Sets pNode's translation limits (only with pUseRotationOffset) and rotation limits (only
    /// with pUsePreRotation) from this bone's active limits.
    void SetLimits(OrvNode* pNode, bool pUseRotationOffset, bool pUsePreRotation);

    /// Builds, in pScene, the host node of this bone and the hierarchy of its subtree (plus an
    /// "_End" node under each leaf of positive length) and hands the curves over to the stack
    /// named pTakeName. Nodes are created in pre-order, each joining its parent once its own
    /// subtree is complete. Returns the node, attached to no parent; the caller attaches it. The
    /// scene owns the created objects once they are connected. Works at any depth (no recursion).
    OrvNode* ASFToORV(OrvScene* pScene, const char* pTakeName, bool pUseLimits, bool pUseRotationOffset,
                      bool pUsePreRotation);
    /// Like ASFToORV, but among the children of pParent: a host node named like a bone is reused,
    /// only what has no match is built. Works at any depth (no recursion).
    void MergeASFToORV(OrvScene* pScene, OrvNode* pParent, const char* pTakeName, bool pUseLimits,
                       bool pUseRotationOffset, bool pUsePreRotation);

    // --- Fields ----------------------------------------------------------------------------

    char mName[kNameSize];         ///< NUL-terminated; the reader names the root "root"
    int mDofCount;                 ///< valid entries of mDof
    int mDof[kMaxDofs];            ///< DOF codes in file order; for the root, its "order" list
    double mLimitMin[kDofCodes];   ///< lower bound per DOF code, meaningful where active
    double mLimitMax[kDofCodes];   ///< upper bound per DOF code, meaningful where active
    bool mLimitMinActive[kDofCodes]; ///< the lower bound per DOF code applies
    bool mLimitMaxActive[kDofCodes]; ///< the upper bound per DOF code applies
    int mAxisOrder;                ///< OrvEuler::EOrder in which mAxis applies
    OrvVector4 mAxis;              ///< orientation of the local frame, degrees
    OrvVector4 mPosition;          ///< root: file position; others: joint-to-end vector, global axes
    OrvVector4 mDirection;         ///< unit direction, global axes
    double mLength;                ///< centimetres once read; in the file's length unit once SetupNode set it
    OrvAsfNode* mParent;           ///< not owned; null for the root and detached bones
    OrvArray<OrvAsfNode*, 16> mChildren;  ///< owned, in order; entries never null
    OrvAMatrix mAxisMatrix;        ///< local frame in global axes
    OrvAMatrix mAxisMatrixInverse; ///< inverse of mAxisMatrix
    OrvAMatrix mParentAxisMatrix;  ///< copy of the parent's frame; identity for the root
    OrvAMatrix mParentAxisMatrixInverse; ///< inverse of mParentAxisMatrix
    OrvVector4 mParentOffset;      ///< parent's joint to this joint, global axes
    OrvVector4 mLocalTranslation;  ///< rest translation in the parent's frame
    OrvVector4 mLocalRotation;     ///< rest rotation relative to the parent, X, Y, Z degrees
    OrvAnimCurveNode* mTranslationCurveNode;  ///< not owned
    OrvAnimCurveNode* mRotationCurveNode;     ///< not owned
    OrvAnimCurveNode* mScalingCurveNode;      ///< not owned; cached only
    OrvVector4 mRotationOffset;    ///< host rotation offset; for a read root, its position
    OrvVector4 mPreRotation;       ///< host pre-rotation, X, Y, Z degrees
    OrvVector4 mPostRotation;      ///< host post-rotation, X, Y, Z degrees
    OrvAnimCurve* mTranslationCurve[3];  ///< owned until handed to a host node
    OrvAnimCurve* mRotationCurve[3];     ///< owned until handed to a host node
    bool mIgnoreLimits;            ///< the writer prints every bound as unbounded
    OrvScene* mScene;              ///< not owned

private:
    void DestroyOwnCurves();
    // Puts the children in reverse order, so that taking them from the end yields index order.
    void ReverseChildren();
};

template <typename TVisit>
OrvAsfNode* OrvAsfNode::VisitPreOrder(TVisit pVisit)
{
    std::vector<OrvAsfNode*> lPending{this};
    while (!lPending.empty())
    {
        OrvAsfNode* lBone = lPending.back();
        lPending.pop_back();
        if (pVisit(lBone)) return lBone;
        for (int i = lBone->mChildren.GetCount() - 1; i >= 0; --i) lPending.push_back(lBone->mChildren[i]);
    }
    return nullptr;
}

} // namespace orvsdk

#endif
