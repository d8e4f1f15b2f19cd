#ifndef ORVSDK_HOST_SCENE_ORVNODE_H
#define ORVSDK_HOST_SCENE_ORVNODE_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/scene/OrvLimits.h"
#include "orvsdk/host/scene/OrvObject.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/host/math/OrvVector4.h"

namespace orvsdk {

class OrvNodeAttribute;
class OrvSkeleton;

/// A node of the scene hierarchy: a local transform (translation, rotation, scaling properties
/// plus rotation settings), an optional attribute and ordered children. A node's children are
/// the nodes connected to its root property; its parent is the node it is connected to. All
/// angles are in degrees.
///
/// Local transform at time t, with the settings of pivot set 0:
///   T(translation(t) + rotation offset) * Rpre * R(rotation(t), order) * inverse(Rpost) * S(scaling(t))
/// where Rpre and Rpost are the rotations of the pre- and post-rotation angles taken in order
/// X, Y, Z (OrvAMatrix::SetR with order 0), and R(r, o) is OrvAMatrix::SetR of the angles
/// (r[a0], r[a1], r[a2]) with (a0, a1, a2) = OrvEuler::AxisTable[o]: the rotation property holds
/// the X, Y, Z angles and the order says in which sequence they apply. While rotation is not
/// active, pre- and post-rotation are ignored and the order is taken as X, Y, Z.
class ORVHOST_API OrvNode : public OrvObject
{
public:
    ///@{
    /// Class identity (see OrvObject::ClassId).
    static const OrvClassId ClassId;
    const OrvClassId& GetClassId() const override { return ClassId; }
    ///@}

    /// Two independent sets of rotation settings; evaluation uses eSourcePivot. Any other value
    /// is taken as eSourcePivot.
    enum EPivotSet
    {
        eSourcePivot = 0,
        eDestinationPivot = 1
    };

    /// A node named pName in pContainer's scene, with an identity transform and no attribute.
    /// When pContainer is a node, the new node is its last child. Null when pContainer is null.
    static OrvNode* Create(OrvObject* pContainer, const char* pName);

    // --- Hierarchy -------------------------------------------------------------------------

    /// Makes pNode this node's last child, taking it away from its previous parent. True when
    /// pNode is (now) a child; false, with nothing changed, when pNode is null, this node or one
    /// of its ancestors, the scene's root node, or of another scene. Adding a child again
    /// leaves the order unchanged.
    bool AddChild(OrvNode* pNode);
    /// Detaches pNode from this node; returns it, or null when it was not a child.
    OrvNode* RemoveChild(OrvNode* pNode);
    /// The pIndex-th child, null when out of range.
    OrvNode* GetChild(int pIndex) const;
    /// The number of children, or with pRecursive of all descendants (at any depth).
    int GetChildCount(bool pRecursive = false) const;
    /// The parent, null for a node without one.
    OrvNode* GetParent() const;
    /// A node named exactly pName (case-sensitive) below this node, null when none. Without
    /// pRecursive only the direct children are searched; with it, the direct children first,
    /// then each child's subtree in child order, the same way, at any depth. pInitial is accepted
    /// for compatibility and changes nothing: names are compared as they stand.
    OrvNode* FindChild(const char* pName, bool pRecursive = true, bool pInitial = false) const;

    // --- Attribute -------------------------------------------------------------------------

    ///@{
    /// Makes pAttribute (of this scene) the node's attribute, replacing the previous one (which
    /// stays in the scene); null removes it. False, with nothing changed, for an attribute of
    /// another scene.
    bool SetNodeAttribute(OrvNodeAttribute* pAttribute);
    OrvNodeAttribute* GetNodeAttribute() const;
    ///@}
    /// The attribute when it is a skeleton, otherwise null.
    OrvSkeleton* GetSkeleton() const;

    // --- Rotation settings -----------------------------------------------------------------

    ///@{
    /// Whether rotation order, pre- and post-rotation take part in the transform; false at first.
    void SetRotationActive(bool pActive) { mRotationActive = pActive; }
    bool GetRotationActive() const { return mRotationActive; }
    ///@}

    ///@{
    /// Rotation order of a pivot set; eOrderXYZ at first. A value outside 0 to 5 is stored as
    /// given and evaluated as eOrderXYZ.
    void SetRotationOrder(EPivotSet pPivotSet, OrvEuler::EOrder pOrder);
    void GetRotationOrder(EPivotSet pPivotSet, OrvEuler::EOrder& pOrder) const;
    ///@}

    ///@{
    /// Rotation offset (added to the translation), pre- and post-rotation (degrees, X, Y, Z)
    /// of a pivot set; zero at first. W is stored as given and not used.
    void SetRotationOffset(EPivotSet pPivotSet, OrvVector4 pOffset);
    const OrvVector4& GetRotationOffset(EPivotSet pPivotSet) const;
    void SetPreRotation(EPivotSet pPivotSet, OrvVector4 pRotation);
    const OrvVector4& GetPreRotation(EPivotSet pPivotSet) const;
    void SetPostRotation(EPivotSet pPivotSet, OrvVector4 pRotation);
    const OrvVector4& GetPostRotation(EPivotSet pPivotSet) const;
    ///@}

    ///@{
    /// The node's limit records, changed in place; see OrvLimits.
    OrvLimits& GetTranslationLimits() { return mTranslationLimits; }
    OrvLimits& GetRotationLimits() { return mRotationLimits; }
    const OrvLimits& GetTranslationLimits() const { return mTranslationLimits; }
    const OrvLimits& GetRotationLimits() const { return mRotationLimits; }
    ///@}

    // --- Transform -------------------------------------------------------------------------

    ///@{
    /// Local translation, rotation (X, Y, Z degrees) and scaling: three doubles each (type
    /// eOrvDouble3); translation and rotation start at 0, scaling at 1.
    OrvProperty LclTranslation;
    OrvProperty LclRotation;
    OrvProperty LclScaling;
    ///@}

    ///@{
    /// The value of the local property at pTime: per channel, the first curve connected to that
    /// channel of the property's curve node in the current stack's base layer when that curve
    /// has keys, otherwise the channel's value, otherwise (no curve node) the property's value.
    /// No offset, pre- or post-rotation is applied. pPivotSet, pApplyTarget and pForceEval are
    /// accepted for compatibility and change nothing. W is 0.
    OrvVector4 EvaluateLocalTranslation(OrvTime pTime = OrvTime(), EPivotSet pPivotSet = eSourcePivot,
                                        bool pApplyTarget = false, bool pForceEval = false);
    OrvVector4 EvaluateLocalRotation(OrvTime pTime = OrvTime(), EPivotSet pPivotSet = eSourcePivot,
                                     bool pApplyTarget = false, bool pForceEval = false);
    OrvVector4 EvaluateLocalScaling(OrvTime pTime = OrvTime(), EPivotSet pPivotSet = eSourcePivot,
                                    bool pApplyTarget = false, bool pForceEval = false);
    ///@}

    /// The local transform at pTime (see the class comment), with pivot set eSourcePivot.
    OrvAMatrix EvaluateLocalTransform(OrvTime pTime = OrvTime());
    /// The product of the local transforms from the topmost ancestor down to this node.
    /// Costs the node's depth.
    OrvAMatrix EvaluateGlobalTransform(OrvTime pTime = OrvTime());

protected:
    friend class OrvScene;
    /// An object of pScene named pName; objects are made through Create, which hands them to the scene.
    OrvNode(OrvScene& pScene, const char* pName);

private:
    struct PivotSettings
    {
        OrvEuler::EOrder mRotationOrder = OrvEuler::eOrderXYZ;
        OrvVector4 mRotationOffset;
        OrvVector4 mPreRotation;
        OrvVector4 mPostRotation;
    };

    PivotSettings& Pivot(EPivotSet pPivotSet);
    const PivotSettings& Pivot(EPivotSet pPivotSet) const;
    bool IsSelfOrAncestorOf(const OrvNode& pNode) const;
    OrvVector4 EvaluateProperty(OrvProperty& pProperty, OrvTime pTime);

    bool mRotationActive = false;
    PivotSettings mPivots[2];
    OrvLimits mTranslationLimits;
    OrvLimits mRotationLimits;
};

} // namespace orvsdk

#endif
