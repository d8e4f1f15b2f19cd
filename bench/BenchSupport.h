#ifndef ORVASF_BENCH_BENCHSUPPORT_H
#define ORVASF_BENCH_BENCHSUPPORT_H

// Inputs of the benchmarks: the files to read, skeletons read from text, host scenes with a take,
// and motions split into values ahead of time, so that a benchmark times one stage alone.

#include "amc/OrvAmcReader.h"
#include "driver/OrvImportDriver.h"
#include "orvsdk/asf/OrvFileAcclaimAsf.h"
#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimLayer.h"
#include "orvsdk/host/anim/OrvAnimStack.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/skeleton/OrvAsfNode.h"
#include "orvsdk/skeleton/OrvAsfScene.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace orvbench {

namespace fs = std::filesystem;

constexpr const char* kTake = "Take 001";
constexpr double kFramesPerSecond = 120.0;

struct MotionPair
{
    std::string mSkeleton;
    std::string mMotion;
};

// The pair to import: ORV_BENCH_SKELETON and ORV_BENCH_MOTION when both are set (bench/scaling.sh
// uses them), else the longest shared motion, else the bundled sample.
inline MotionPair ImportPair()
{
    const char* lSkeleton = std::getenv("ORV_BENCH_SKELETON");
    const char* lMotion = std::getenv("ORV_BENCH_MOTION");
    if (lSkeleton && lMotion) return {lSkeleton, lMotion};
    const fs::path lShared = fs::path(ORV_SHARED_DATA_DIR);
    if (fs::exists(lShared / "amc" / "mo_135_02.amc"))
        return {(lShared / "asf" / "mo_martialwalk.asf").string(), (lShared / "amc" / "mo_135_02.amc").string()};
    const fs::path lExamples = fs::path(ORV_SOURCE_DIR) / "examples";
    return {(lExamples / "walker.asf").string(), (lExamples / "walker.amc").string()};
}

// Every shared skeleton, or the bundled one.
inline std::vector<std::string> SkeletonFiles()
{
    std::vector<std::string> lFiles;
    const fs::path lFolder = fs::path(ORV_SHARED_DATA_DIR) / "asf";
    if (fs::is_directory(lFolder))
        for (const auto& lEntry : fs::directory_iterator(lFolder)) lFiles.push_back(lEntry.path().string());
    if (lFiles.empty()) lFiles.push_back((fs::path(ORV_SOURCE_DIR) / "examples" / "walker.asf").string());
    std::sort(lFiles.begin(), lFiles.end());
    return lFiles;
}

inline std::string ReadWhole(const std::string& pPath)
{
    std::ifstream lIn(pPath, std::ios::binary);
    std::ostringstream lText;
    lText << lIn.rdbuf();
    return lText.str();
}

inline bool ReadSkeleton(const std::string& pText, orvsdk::OrvAsfScene& pScene, bool pUseRotationOffset = false,
                         bool pUsePreRotation = false)
{
    orvsdk::OrvFileAcclaimAsf lFile(false);
    return lFile.Open(pText.data(), pText.size(), "skeleton") &&
           lFile.Read(&pScene, false, pUseRotationOffset, pUsePreRotation);
}

// A host scene with a current take, as an import makes it. Destroyed after any skeleton declared
// later, whose bones may still own curves of it.
struct HostScene
{
    explicit HostScene(int pRotationFilter = 0, bool pUseConstantKeyReducer = false)
        : mScene(orvsdk::OrvCreateScene("bench"))
    {
        mScene->GetGlobalSettings().SetRotationFilterToApply(pRotationFilter);
        mScene->GetGlobalSettings().SetUseConstantKeyReducer(pUseConstantKeyReducer);
        orvsdk::OrvAnimStack* lStack = orvsdk::OrvAnimStack::Create(mScene.get(), kTake);
        orvsdk::OrvAnimLayer::Create(lStack, "Base Layer");
        mScene->SetCurrentAnimationStack(lStack);
    }
    orvsdk::OrvScenePtr mScene;
};

// One bone line of a motion, split into values.
struct BoneSample
{
    orvsdk::OrvAsfNode* mBone;
    size_t mFirstValue;  // index into Motion::mValues
};

// A motion split into values for one skeleton: every bone line of every frame, in file order.
struct Motion
{
    std::vector<BoneSample> mSamples;
    std::vector<size_t> mFrameStarts;  // index of each frame's first sample
    std::vector<double> mValues;

    size_t FrameOf(size_t pSample) const
    {
        return static_cast<size_t>(std::upper_bound(mFrameStarts.begin(), mFrameStarts.end(), pSample) -
                                   mFrameStarts.begin()) - 1;
    }
};

// The blank-separated tokens of pLine, up to a '#'.
inline std::vector<std::string_view> SplitLine(std::string_view pLine)
{
    std::vector<std::string_view> lTokens;
    size_t lAt = 0;
    for (;;)
    {
        lAt = pLine.find_first_not_of(" \t\r", lAt);
        if (lAt == std::string_view::npos || pLine[lAt] == '#') return lTokens;
        const size_t lEnd = std::min(pLine.find_first_of(" \t\r", lAt), pLine.size());
        lTokens.push_back(pLine.substr(lAt, lEnd - lAt));
        lAt = lEnd;
    }
}

// Splits pText (a plain AMC file in degrees) into values for pScene's bones; at most pMaxFrames
// frames. Lines of unknown bones are left out.
inline Motion SplitMotion(std::string_view pText, orvsdk::OrvAsfScene& pScene, size_t pMaxFrames = SIZE_MAX)
{
    Motion lMotion;
    for (size_t lAt = 0; lAt < pText.size();)
    {
        const size_t lEnd = std::min(pText.find('\n', lAt), pText.size());
        const std::vector<std::string_view> lTokens = SplitLine(pText.substr(lAt, lEnd - lAt));
        lAt = lEnd + 1;
        if (lTokens.empty() || lTokens[0][0] == ':') continue;
        if (std::isdigit(static_cast<unsigned char>(lTokens[0][0])))
        {
            if (lMotion.mFrameStarts.size() == pMaxFrames) break;
            lMotion.mFrameStarts.push_back(lMotion.mSamples.size());
            continue;
        }
        orvsdk::OrvAsfNode* lBone = pScene.mRoot->Find(std::string(lTokens[0]).c_str());
        if (!lBone || lMotion.mFrameStarts.empty()) continue;
        lMotion.mSamples.push_back({lBone, lMotion.mValues.size()});
        for (int i = 0; i < lBone->mDofCount; ++i)
        {
            double lValue = 0.0;
            if (static_cast<size_t>(i) + 1 < lTokens.size()) orvasf::OrvAmcReader::ParseValue(lTokens[i + 1], lValue);
            lMotion.mValues.push_back(lValue);
        }
    }
    return lMotion;
}

// Feeds every sample of pMotion to its bone, as the AMC reader does (degrees, centimetres).
inline void SampleMotion(Motion& pMotion, const orvsdk::OrvAsfScene& pScene, bool pUseRotationOffset,
                         bool pUsePreRotation)
{
    const double lTranslationFactor = pScene.mLengthUnit > 0.0 ? 2.54 / pScene.mLengthUnit : 1.0;
    size_t lFrame = 0;
    orvsdk::OrvTime lTime;
    for (size_t s = 0; s < pMotion.mSamples.size(); ++s)
    {
        if (lFrame < pMotion.mFrameStarts.size() && pMotion.mFrameStarts[lFrame] == s)
            lTime = orvsdk::OrvTime::FromFrame(static_cast<double>(lFrame++), kFramesPerSecond);
        const BoneSample& lSample = pMotion.mSamples[s];
        lSample.mBone->AddSampleFromDOF(&pMotion.mValues[lSample.mFirstValue], lTime, lTranslationFactor,
                                        pScene.mAngleUnit, pUseRotationOffset, pUsePreRotation);
    }
}

// Calls pVisit on pRoot and every bone below it.
template <typename TVisit>
void ForEachBone(orvsdk::OrvAsfNode* pRoot, TVisit pVisit)
{
    std::vector<orvsdk::OrvAsfNode*> lPending{pRoot};
    while (!lPending.empty())
    {
        orvsdk::OrvAsfNode* lBone = lPending.back();
        lPending.pop_back();
        pVisit(*lBone);
        for (int i = 0; i < lBone->mChildren.GetCount(); ++i) lPending.push_back(lBone->mChildren[i]);
    }
}

// Calls pVisit on every curve the skeleton owns.
template <typename TVisit>
void ForEachCurve(orvsdk::OrvAsfNode* pRoot, TVisit pVisit)
{
    ForEachBone(pRoot, [&pVisit](orvsdk::OrvAsfNode& pBone) {
        for (int j = 0; j < 3; ++j)
        {
            if (pBone.mTranslationCurve[j]) pVisit(*pBone.mTranslationCurve[j]);
            if (pBone.mRotationCurve[j]) pVisit(*pBone.mRotationCurve[j]);
        }
    });
}

} // namespace orvbench

#endif
