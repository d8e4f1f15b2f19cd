#ifndef ORVSDK_HOST_SCENE_ORVGLOBALSETTINGS_H
#define ORVSDK_HOST_SCENE_ORVGLOBALSETTINGS_H

namespace orvsdk {

/// Settings of one scene that importers consult. Each OrvScene holds its own (there is no
/// process-wide copy), so imports into different scenes may run on different threads.
class OrvGlobalSettings
{
public:
    ///@{
    /// Rotation filter that importers run on sampled rotation curves: 0 none (the default),
    /// 1 the gimbal killer, 2 unroll. Any value is stored as given; importers treat values other
    /// than 1 and 2 as none.
    int GetRotationFilterToApply() const { return mRotationFilterToApply; }
    void SetRotationFilterToApply(int pFilter) { mRotationFilterToApply = pFilter; }
    ///@}

    ///@{
    /// Whether importers run the constant-key reducer on sampled curves; false by default.
    bool GetUseConstantKeyReducer() const { return mUseConstantKeyReducer; }
    void SetUseConstantKeyReducer(bool pUse) { mUseConstantKeyReducer = pUse; }
    ///@}

private:
    int mRotationFilterToApply = 0;
    bool mUseConstantKeyReducer = false;
};

} // namespace orvsdk

#endif
