// ASF reader on arbitrary bytes. The first byte chooses the three reading flags (its low three
// bits), the rest is the file. A skeleton that reads is written out and read back with the same
// flags: the second read must succeed and give the same bones in the same tree with the same DOF
// lists. Names that occur twice are the exception: the file format cannot tell such bones apart
// (a hierarchy line always means the first bone of that name), so only the read itself counts.
// An unnamed skeleton is named before it is written (see WriteAndReadBack).

#include "FuzzSupport.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <unordered_map>
#include <unordered_set>

namespace {

using orvsdk::OrvAsfNode;
using orvsdk::OrvAsfScene;
using orvsdk::OrvFileAcclaimAsf;

// A bone as the round trip must keep it: its name, its parent's index in pre-order (-1 for the
// root) and its DOF codes.
struct BoneShape
{
    std::string mName;
    int mParent;
    std::vector<int> mDofs;

    bool operator==(const BoneShape& pOther) const
    {
        return mName == pOther.mName && mParent == pOther.mParent && mDofs == pOther.mDofs;
    }
};

std::vector<BoneShape> Shape(const OrvAsfNode* pRoot)
{
    std::unordered_map<const OrvAsfNode*, int> lIndex{{nullptr, -1}};
    std::vector<BoneShape> lShape;
    for (const OrvAsfNode* lBone : orvfuzz::BonesInPreOrder(pRoot))
    {
        lShape.push_back(BoneShape{lBone->mName, lIndex.at(lBone->mParent),
                                   std::vector<int>(lBone->mDof, lBone->mDof + lBone->mDofCount)});
        lIndex.emplace(lBone, static_cast<int>(lIndex.size()) - 1);
    }
    return lShape;
}

bool NamesAreUnique(const std::vector<BoneShape>& pShape)
{
    std::unordered_set<std::string> lNames;
    for (const BoneShape& lBone : pShape)
        if (!lNames.insert(lBone.mName).second) return false;
    return true;
}

// The round-trip file of this process, in memory-backed /dev/shm when there is one. Each input
// removes it again, so nothing is left behind when the fuzzer ends.
std::string RoundTripPath()
{
    const char* lFolder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    return std::string(lFolder) + "/orvasf-fuzz-" + std::to_string(getpid()) + ".asf";
}

void WriteAndReadBack(OrvAsfScene& pScene, const orvasf::OrvImportSettings& pFlags)
{
    // The writer prints an empty skeleton name as it is, and the reader refuses a ":name" line
    // without a name; both follow the format's rules, so an unnamed skeleton gets a name first.
    if (pScene.mName[0] == '\0') std::strcpy(pScene.mName, "unnamed");
    const std::string lPath = RoundTripPath();
    {
        OrvFileAcclaimAsf lOut(false);
        orvfuzz::Require(lOut.Create(lPath.c_str()), "cannot create the round-trip file");
        orvfuzz::Require(lOut.Write(&pScene), "writing failed");
        orvfuzz::Require(lOut.Close(), "closing the written file failed");
    }
    OrvAsfScene lAgain;
    OrvFileAcclaimAsf lIn(false);
    const bool lOpened = lIn.Open(lPath.c_str());
    unlink(lPath.c_str());
    orvfuzz::Require(lOpened, "cannot open the written file");
    if (!lIn.Read(&lAgain, pFlags.mRemoveDummy, pFlags.mUseRotationOffset, pFlags.mUsePreRotation))
    {
        for (const orvsdk::OrvMessage& lMessage : lIn.GetMessages())
            std::fprintf(stderr, "%s\n", orvsdk::OrvFormatMessage(lMessage).c_str());
        orvfuzz::Fail("the written skeleton does not read back");
    }
    const std::vector<BoneShape> lBefore = Shape(pScene.mRoot);
    if (NamesAreUnique(lBefore)) orvfuzz::Require(Shape(lAgain.mRoot) == lBefore, "the skeleton changed on the way");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t pSize)
{
    if (pSize == 0) return 0;
    const orvasf::OrvImportSettings lFlags = orvfuzz::SettingsFromByte(pData[0]);
    OrvAsfScene lScene;
    if (orvfuzz::ReadSkeleton(pData + 1, pSize - 1, lFlags, lScene)) WriteAndReadBack(lScene, lFlags);
    return 0;
}
