#ifndef ORVSDK_HOST_ANIM_ORVANIMCURVENODE_H
#define ORVSDK_HOST_ANIM_ORVANIMCURVENODE_H

#include "orvsdk/host/OrvHostExport.h"
#include "orvsdk/host/scene/OrvObject.h"

namespace orvsdk {

class OrvAnimCurve;

/// Animation of one property in one layer: three channels, 0 X, 1 Y, 2 Z, each with a value
/// (one double) and an ordered list of connected curves. The curve node is a source of the
/// animated property and of its layer (OrvProperty::GetCurveNode makes it so). Curves are
/// connected, never owned: the scene owns them.
class ORVHOST_API OrvAnimCurveNode : public OrvObject
{
public:
    ///@{
    /// Class identity (see OrvObject::ClassId).
    static const OrvClassId ClassId;
    const OrvClassId& GetClassId() const override { return ClassId; }
    ///@}

    /// A curve node named pName in pContainer's scene, channels at 0, animating nothing yet.
    /// Null when pContainer is null.
    static OrvAnimCurveNode* Create(OrvObject* pContainer, const char* pName);

    /// Always 3.
    unsigned GetChannelsCount() const { return kChannelCount; }

    ///@{
    /// The value property of channel pChannel (valid, one double). For an index outside the
    /// channels, an invalid property owned by this curve node, on which every operation fails.
    OrvProperty& GetChannel(unsigned pChannel);
    const OrvProperty& GetChannel(unsigned pChannel) const;
    ///@}

    /// The pIndex-th curve connected to channel pChannel, counting only curves named exactly
    /// pName when pName is not null; null when there is none or the channel does not exist.
    OrvAnimCurve* GetCurve(unsigned pChannel, unsigned pIndex = 0, const char* pName = nullptr) const;
    /// Number of curves on the channel; 0 for a channel that does not exist.
    int GetCurveCount(unsigned pChannel) const;

    /// Connects pCurve to channel pChannel, at the front of its curves with pInFront, else at the
    /// end. False, with nothing changed, when pCurve is null, already on that channel, of another
    /// scene, or the channel does not exist. A curve may sit on several channels.
    bool ConnectToChannel(OrvAnimCurve* pCurve, unsigned pChannel, bool pInFront = false);
    /// Removes pCurve from the channel; false when it was not connected there. The curve stays
    /// in the scene.
    bool DisconnectFromChannel(OrvAnimCurve* pCurve, unsigned pChannel);

    /// True when some channel has a connected curve holding at least one key. Curve nodes do
    /// not nest in this host, so pRecurse changes nothing.
    bool IsAnimated(bool pRecurse = false) const;

    /// The property this curve node animates, null when none (its owner was destroyed, or the
    /// curve node was created directly).
    OrvProperty* GetAnimatedProperty() const;

protected:
    friend class OrvScene;
    /// An object of pScene named pName; objects are made through Create, which hands them to the scene.
    OrvAnimCurveNode(OrvScene& pScene, const char* pName);

private:
    static constexpr unsigned kChannelCount = 3;

    OrvProperty mChannels[kChannelCount];
    OrvProperty mInvalidChannel;
};

} // namespace orvsdk

#endif
