#ifndef ORVSDK_HOST_SCENE_ORVPOSEEVALUATOR_H
#define ORVSDK_HOST_SCENE_ORVPOSEEVALUATOR_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/host/math/OrvAMatrix.h"

#include <atomic>
#include <memory>
#include <vector>

namespace orvsdk {

class OrvAnimCurve;
class OrvAnimStack;
class OrvNode;

/// Evaluates the whole pose of a hierarchy at once. Construction resolves, once, every node's
/// channel curves in a stack and its static values and rotation settings; each evaluation then
/// computes every node's local transform with the node's own formula (the operations of
/// OrvNode::EvaluateLocalTransform, in the same order, so locals agree to the bit) and its global
/// transform from its parent's in one top-down pass: O(nodes) work per time and no allocation.
/// Nodes without curves keep the local transform computed once; products skip the identity and the
/// constant last row of affine matrices, which leaves every value unchanged (a zero may differ in
/// sign). Each curve remembers where the last evaluation found its time, so frames evaluated in
/// order cost constant time per curve. Globals agree with OrvNode::EvaluateGlobalTransform up to
/// rounding, as that one multiplies from the node upwards.
///
/// The evaluator reads the nodes and curves it resolved: they must outlive it, and the hierarchy,
/// the curves' keys and the nodes' settings must not change while it is used. One evaluator may be
/// used by several threads at a time, each with its own buffers.
class ORVHOST_API OrvPoseEvaluator
{
public:
    /// Resolves pRoot and every node below it, a node before its children, children in order,
    /// against pStack's base layer (null: the scene's current stack). pRoot's ancestors count in
    /// the globals as in EvaluateGlobalTransform. Costs the number of nodes and curves.
    explicit OrvPoseEvaluator(OrvNode* pRoot, OrvAnimStack* pStack = nullptr);

    ///@{
    /// The nodes in evaluation order, and each one's parent as an index into them (-1 for pRoot).
    const std::vector<OrvNode*>& GetNodes() const { return mNodes; }
    const std::vector<int>& GetParents() const { return mParents; }
    int GetNodeCount() const { return static_cast<int>(mNodes.size()); }
    ///@}

    /// Fills pLocals (GetNodeCount() entries) with every node's local transform at pTime.
    void EvaluateLocals(OrvTime pTime, OrvAMatrix* pLocals) const;
    /// Fills pLocals (GetNodeCount() entries) with every node's local transform at rest: the same
    /// formula with the properties' own values, every curve left out.
    void EvaluateRestLocals(OrvAMatrix* pLocals) const;
    /// The local translation property of node pIndex at pTime, as OrvNode::EvaluateLocalTranslation
    /// gives it (without the rotation offset).
    OrvVector4 EvaluateLocalTranslation(int pIndex, OrvTime pTime) const;
    /// Fills pGlobals (GetNodeCount() entries) with every node's global transform at pTime.
    void EvaluateGlobals(OrvTime pTime, OrvAMatrix* pGlobals) const;
    /// Fills pPositions with X, Y, Z of every node's world position at pTime (3 per node);
    /// pScratch holds GetNodeCount() matrices of working room.
    void EvaluatePositions(OrvTime pTime, OrvAMatrix* pScratch, double* pPositions) const;
    /// World positions of frames pFirst to pFirst + pCount - 1 at pFramesPerSecond, frame after
    /// frame: pCount * GetNodeCount() * 3 doubles. Allocates its working room once.
    void EvaluatePositionFrames(int pFirst, int pCount, double pFramesPerSecond, double* pPositions) const;

private:
    // One property (translation, rotation or scaling) of a node: per channel, the curve that
    // drives it (null when none has keys) and the value used without one; under a curve, the
    // value is the property's own (the rest value).
    struct Channels
    {
        const OrvAnimCurve* mCurve[3] = {nullptr, nullptr, nullptr};
        int mHint[3] = {0, 0, 0};  // each curve's slot in mCurveHints
        double mValue[3] = {0.0, 0.0, 0.0};
    };

    // What a node's local transform needs, resolved once.
    struct NodeRecipe
    {
        Channels mTranslation;
        Channels mRotation;
        Channels mScaling;
        OrvVector4 mRotationOffset;
        int mOrder = 0;
        OrvAMatrix mPreRotation;
        OrvAMatrix mPostRotationInverse;
        bool mHasPreRotation = false;   // mPreRotation is not the identity
        bool mHasPostRotation = false;  // mPostRotationInverse is not the identity
        bool mHasScaling = false;       // scaling is animated or not 1, 1, 1
        bool mIsStatic = false;         // no curve drives the node: mLocal holds its local transform
        OrvAMatrix mLocal;
    };

    NodeRecipe Resolve(OrvNode& pNode, OrvAnimStack* pStack);
    OrvVector4 ValueAt(const Channels& pChannels, OrvTime pTime) const;
    OrvAMatrix LocalTransform(const NodeRecipe& pRecipe, OrvTime pTime) const;
    // The node's formula with each property's X, Y, Z from pValueOf(const Channels&).
    template <typename TValueOf>
    static OrvAMatrix Compose(const NodeRecipe& pRecipe, const TValueOf& pValueOf);
    // pRoot's parent's global transform at pTime (the identity without a parent).
    OrvAMatrix RootParentGlobal(OrvTime pTime) const;

    std::vector<OrvNode*> mNodes;
    std::vector<int> mParents;
    std::vector<NodeRecipe> mRecipes;
    OrvNode* mRootParent = nullptr;  // pRoot's parent, whose global transform precedes pRoot's
    bool mRootParentIsStatic = true; // no curve drives pRoot's ancestors: mRootParentGlobal holds theirs
    OrvAMatrix mRootParentGlobal;
    // Per curve, the key index where its last evaluation found the time: a guess that any thread
    // may read or replace, so relaxed atomics suffice.
    std::unique_ptr<std::atomic<int>[]> mCurveHints;
    int mCurveCount = 0;
};

} // namespace orvsdk

#endif
