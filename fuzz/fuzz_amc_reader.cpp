// AMC motion reader on arbitrary bytes, against a fixed small skeleton. The first byte chooses
// the flags (reading, set-up and node-building limits: its low four bits), the rest is the
// motion. Each input is a whole import: skeleton, curves, motion and, when the motion reads,
// the host nodes.

#include "FuzzSupport.h"

namespace {

// Left leg and lower back of the sample walker: a dummy bone, one to three rotations in
// different orders, a bone with translations, and limits.
const char kSkeleton[] = R"(:version 1.10
:name fuzz
:units
  mass 1.0
  length 0.45
  angle deg
:root
  order TX TY TZ RX RY RZ
  axis XYZ
  position 0 0 0
  orientation 0 0 0
:bonedata
  begin
    name lhipjoint
    direction 0.641413 -0.721589 0.260574
    length 2.4
    axis 0 0 0 XYZ
  end
  begin
    name lfemur
    direction 0.340136 -0.940376 0
    length 7.1
    axis 0 0 20 XYZ
    dof rx ry rz
    limits (-160.0 20.0)
           (-70.0 70.0)
           (-60.0 70.0)
  end
  begin
    name ltibia
    direction 0.340136 -0.940376 0
    length 7.3
    axis 0 0 20 XYZ
    dof rx
    limits (-10.0 170.0)
  end
  begin
    name lfoot
    direction 0 0 1
    length 2.3
    axis -90 7 20 XYZ
    dof rz rx
  end
  begin
    name lowerback
    direction 0 1 0
    length 2
    axis 0 0 0 XYZ
    dof rx ry rz
  end
  begin
    name ltoes
    direction 0 0 1
    length 1
    axis 0 90 0 ZYX
    dof tx ty tz ry
  end
:hierarchy
  begin
    root lhipjoint lowerback
    lhipjoint lfemur
    lfemur ltibia
    ltibia lfoot
    lfoot ltoes
  end
)";

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize)
{
    static const orvfuzz::ScratchFile sSkeleton(".asf");
    static const std::string sSkeletonPath =
        sSkeleton.Write(reinterpret_cast<const uint8_t*>(kSkeleton), sizeof kSkeleton - 1);
    static const orvfuzz::ScratchFile sMotion(".amc");
    if (pSize == 0) return 0;
    orvfuzz::Import(sSkeletonPath, sMotion.Write(pData + 1, pSize - 1), orvfuzz::SettingsFromByte(pData[0]));
    return 0;
}
