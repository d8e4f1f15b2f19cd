#ifndef ORVSDK_TESTS_ASFTESTSUPPORT_H
#define ORVSDK_TESTS_ASFTESTSUPPORT_H

// Helpers shared by the ASF skeleton tests: reading from text, the real skeleton files, and
// small hand-built trees.

#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace orvsdk {
namespace asftest {

// The two set-up flags of a skeleton read, a motion read and node building.
struct SetupFlags
{
    bool mUseRotationOffset;
    bool mUsePreRotation;
};

inline constexpr SetupFlags kAllSetupFlags[] = {{false, false}, {true, false}, {false, true}, {true, true}};

inline std::string FlagsText(const SetupFlags& pFlags)
{
    return std::string("rotation offset ") + (pFlags.mUseRotationOffset ? "on" : "off") + ", pre-rotation " +
           (pFlags.mUsePreRotation ? "on" : "off");
}

// A skeleton file and what was read from it.
struct AsfRead
{
    OrvFileAcclaimAsf mFile{false};
    OrvAsfScene mScene;
    bool mRead = false;
};

inline std::unique_ptr<AsfRead> ReadAsfText(const std::string& pText, bool pRemoveDummy = false,
                                            SetupFlags pFlags = {false, false})
{
    auto lRead = std::make_unique<AsfRead>();
    lRead->mFile.Open(pText.data(), pText.size(), "test.asf");
    lRead->mRead = lRead->mFile.Read(&lRead->mScene, pRemoveDummy, pFlags.mUseRotationOffset, pFlags.mUsePreRotation);
    return lRead;
}

inline std::unique_ptr<AsfRead> ReadAsfFile(const std::string& pPath, bool pRemoveDummy = false,
                                            SetupFlags pFlags = {false, false})
{
    auto lRead = std::make_unique<AsfRead>();
    lRead->mRead = lRead->mFile.Open(pPath.c_str()) &&
                   lRead->mFile.Read(&lRead->mScene, pRemoveDummy, pFlags.mUseRotationOffset, pFlags.mUsePreRotation);
    return lRead;
}

// An ASF bone block with the three required lines (direction 0 0 2, length 2) and pExtra after them.
inline std::string BoneBlock(const std::string& pName, const std::string& pExtra = "")
{
    return "  begin\n    name " + pName + "\n    direction 0 0 2\n    length 2.0\n" + pExtra + "  end\n";
}

// The bone's DOF codes in list order.
inline std::vector<int> Dofs(const OrvAsfNode& pBone)
{
    return std::vector<int>(pBone.mDof, pBone.mDof + pBone.mDofCount);
}

// The texts of the file's messages, each with its kind: "W: text" or "E: text".
inline std::vector<std::string> Messages(const OrvTextFile& pFile)
{
    std::vector<std::string> lTexts;
    for (const OrvMessage& lMessage : pFile.GetMessages())
        lTexts.push_back((lMessage.mKind == OrvMessage::eError ? "E: " : "W: ") + lMessage.mText);
    return lTexts;
}

// The ASF files of the shared data folder, sorted; empty when the folder is absent.
inline std::vector<std::filesystem::path> RealAsfFiles()
{
    std::vector<std::filesystem::path> lFiles;
    const std::filesystem::path lFolder = std::filesystem::path(ORV_SHARED_DATA_DIR) / "asf";
    std::error_code lError;
    for (const auto& lEntry : std::filesystem::directory_iterator(lFolder, lError))
        if (lEntry.path().extension() == ".asf") lFiles.push_back(lEntry.path());
    std::sort(lFiles.begin(), lFiles.end());
    return lFiles;
}

// A bone in host memory named pName, with the given DOF codes, attached under pParent when given.
inline OrvAsfNode* MakeBone(const char* pName, std::vector<int> pDofs = {}, OrvAsfNode* pParent = nullptr)
{
    OrvAsfNode* lBone = OrvAsfNode::Create();
    std::strncpy(lBone->mName, pName, OrvAsfNode::kNameSize - 1);
    for (int lCode : pDofs) lBone->mDof[lBone->mDofCount++] = lCode;
    if (pParent) pParent->AddChild(lBone);
    return lBone;
}

// Sets pBone's limit flags and values of DOF code pCode.
inline void SetLimit(OrvAsfNode* pBone, int pCode, bool pMinActive, double pMin, bool pMaxActive, double pMax)
{
    pBone->mLimitMinActive[pCode] = pMinActive;
    pBone->mLimitMin[pCode] = pMin;
    pBone->mLimitMaxActive[pCode] = pMaxActive;
    pBone->mLimitMax[pCode] = pMax;
}

// The subtree as text, children in parentheses: "root(a(c) b)". A child whose parent link does
// not point back is marked with '!'.
inline std::string TreeText(const OrvAsfNode* pBone)
{
    std::string lText = pBone->mName;
    const int lCount = pBone->mChildren.GetCount();
    for (int i = 0; i < lCount; ++i)
    {
        const OrvAsfNode* lChild = pBone->mChildren[i];
        lText += (i == 0 ? "(" : " ") + TreeText(lChild) + (lChild->mParent == pBone ? "" : "!");
    }
    return lCount > 0 ? lText + ")" : lText;
}

// Every bone of the subtree in depth-first pre-order.
inline std::vector<OrvAsfNode*> AllBones(OrvAsfNode* pRoot)
{
    std::vector<OrvAsfNode*> lBones;
    pRoot->VisitPreOrder([&lBones](OrvAsfNode* pBone) { return lBones.push_back(pBone), false; });
    return lBones;
}

} // namespace asftest
} // namespace orvsdk

#endif
