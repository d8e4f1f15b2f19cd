// glTF files in and out of the host scene: skeletons written and read back keep every joint's
// world position, samplers are followed as glTF defines them (checked against the closed-form
// interpolations), and broken files are refused without building anything.
#include "gltf/OrvGltfReader.h"
#include "gltf/OrvGltfWriter.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"

#include "support/HostSceneSupport.h"
#include "support/ScratchFiles.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace orvsdk;
using namespace orvsdk::hosttest;
using nlohmann::json;

constexpr double kFramesPerSecond = 30.0;
constexpr int kFrames = 12;

// The world positions (cm) of every node below pRoot at every frame, frame after frame.
std::vector<double> Positions(OrvNode* pRoot, OrvAnimStack* pTake, int pFrames, double pFramesPerSecond)
{
    const OrvPoseEvaluator lEvaluator(pRoot, pTake);
    std::vector<double> lPositions(static_cast<size_t>(pFrames * lEvaluator.GetNodeCount() * 3));
    lEvaluator.EvaluatePositionFrames(0, pFrames, pFramesPerSecond, lPositions.data());
    return lPositions;
}

// root (moves and turns in X, Y, Z order)
//  └─ spine (pre-rotation, turns in Z, X, Y order, scaled 1.5 along Y)
//      ├─ arm (rest translation 10, 0, 0; turns)
//      │   └─ arm_End (rest translation 8, 0, 0)
//      └─ head (rest translation 0, 20, 0; no motion)
OrvNode* BuildFigure(OrvScene* pScene)
{
    OrvNode* lRoot = AddNode(pScene->GetRootNode(), "root");
    SetRotation(lRoot, OrvEuler::eOrderXYZ);
    OrvNode* lSpine = AddNode(lRoot, "spine");
    SetRotation(lSpine, OrvEuler::eOrderZXY, OrvVector4(0.0, 0.0, 30.0));
    SetProperty(lSpine->LclTranslation, OrvVector4(0.0, 12.0, 0.0));
    SetProperty(lSpine->LclScaling, OrvVector4(1.0, 1.5, 1.0));
    OrvNode* lArm = AddNode(lSpine, "arm");
    lArm->SetRotationOffset(OrvNode::eSourcePivot, OrvVector4(10.0, 0.0, 0.0));
    SetRotation(lArm, OrvEuler::eOrderXYZ);
    AddNode(lArm, "arm_End")->SetRotationOffset(OrvNode::eSourcePivot, OrvVector4(8.0, 0.0, 0.0));
    SetProperty(AddNode(lSpine, "head")->LclTranslation, OrvVector4(0.0, 20.0, 0.0));

    std::vector<OrvVector4> lRootMoves, lRootTurns, lSpineTurns, lArmTurns;
    for (int f = 0; f < kFrames; ++f)
    {
        lRootMoves.emplace_back(3.0 * f, 90.0 + std::sin(f), -2.0 * f);
        // The root spins past 180 degrees, so the quaternions must keep one hemisphere.
        lRootTurns.emplace_back(5.0 * f, 35.0 * f, -10.0);
        lSpineTurns.emplace_back(-4.0 * f, 2.0 * f, 7.0 * f);
        lArmTurns.emplace_back(0.0, 0.0, 80.0 - 15.0 * f);
    }
    Animate(lRoot->LclTranslation, lRootMoves, kFramesPerSecond);
    Animate(lRoot->LclRotation, lRootTurns, kFramesPerSecond);
    Animate(lSpine->LclRotation, lSpineTurns, kFramesPerSecond);
    Animate(lArm->LclRotation, lArmTurns, kFramesPerSecond);
    return lRoot;
}

// A scene with an empty take, for reading into.
struct Target
{
    OrvScenePtr mScene = CreateHostScene();
    OrvAnimStack* mTake = mScene->GetCurrentAnimationStack();
};

class GltfRoundTrip : public ::testing::TestWithParam<orvasf::OrvGltfContainer>
{
};

TEST_P(GltfRoundTrip, KeepsEveryJointsWorldPositionAtEveryFrame)
{
    const OrvScenePtr lSource = CreateHostScene();
    OrvNode* lRoot = BuildFigure(lSource.get());
    const std::string lPath =
        testfiles::ScratchPath(GetParam() == orvasf::OrvGltfContainer::eBinary ? "figure.glb" : "figure.gltf");
    orvasf::OrvGltfWriteSettings lSettings;
    lSettings.mContainer = GetParam();
    lSettings.mFramesPerSecond = kFramesPerSecond;
    lSettings.mFrameCount = kFrames;
    orvasf::OrvGltfWriter lWriter;
    ASSERT_TRUE(lWriter.Write(lPath, lRoot, nullptr, lSettings));

    Target lTarget;
    orvasf::OrvGltfReader lReader;
    const orvasf::OrvGltfReadResult lRead =
        lReader.Read(lPath, lTarget.mScene->GetRootNode(), lTarget.mTake, orvasf::OrvGltfReadSettings());
    ASSERT_TRUE(lRead.mSucceeded) << (lReader.GetMessages().empty() ? "" : lReader.GetMessages()[0].mText);
    EXPECT_TRUE(lReader.GetMessages().empty());
    EXPECT_EQ(lRead.mJointCount, 5);
    EXPECT_EQ(lRead.mFrameCount, kFrames);
    EXPECT_EQ(lRead.mFramesPerSecond, kFramesPerSecond);
    ASSERT_STREQ(lRead.mRoot->GetName(), "root");

    const std::vector<double> lExpected = Positions(lRoot, nullptr, kFrames, kFramesPerSecond);
    const std::vector<double> lActual = Positions(lRead.mRoot, lTarget.mTake, kFrames, kFramesPerSecond);
    ASSERT_EQ(lActual.size(), lExpected.size());
    for (size_t i = 0; i < lExpected.size(); ++i)
        EXPECT_NEAR(lActual[i], lExpected[i], 1e-3) << "coordinate " << i % 3 << " of node " << i / 3 % 5
                                                    << " at frame " << i / 15;
    std::remove(lPath.c_str());
    std::remove(testfiles::ScratchPath("figure.bin").c_str());
}

// The rotation keys as the file holds them, read from the .glb's chunks without the reader:
// unit quaternions, each within 90 degrees of turn space of the previous one (a non-negative dot
// product), so that LINEAR interpolation between two frames takes the short way.
TEST(GltfWriter, RotationKeysAreUnitAndStayInOneHemisphere)
{
    const OrvScenePtr lSource = CreateHostScene();
    OrvNode* lRoot = BuildFigure(lSource.get());
    const std::string lPath = testfiles::ScratchPath("hemisphere.glb");
    orvasf::OrvGltfWriteSettings lSettings;
    lSettings.mFramesPerSecond = kFramesPerSecond;
    lSettings.mFrameCount = kFrames;
    ASSERT_TRUE(orvasf::OrvGltfWriter().Write(lPath, lRoot, nullptr, lSettings));
    const std::string lFile = testfiles::ReadFile(lPath);
    std::remove(lPath.c_str());
    uint32_t lJsonSize = 0;
    std::memcpy(&lJsonSize, lFile.data() + 12, 4);
    const json lJson = json::parse(lFile.substr(20, lJsonSize));
    const char* lBinary = lFile.data() + 20 + lJsonSize + 8;

    int lChecked = 0;
    for (const json& lChannel : lJson["animations"][0]["channels"])
    {
        if (lChannel["target"]["path"] != "rotation") continue;
        const json& lSampler = lJson["animations"][0]["samplers"][lChannel["sampler"].get<int>()];
        const json& lAccessor = lJson["accessors"][lSampler["output"].get<int>()];
        const json& lView = lJson["bufferViews"][lAccessor["bufferView"].get<int>()];
        std::vector<float> lKeys(lAccessor["count"].get<size_t>() * 4);
        std::memcpy(lKeys.data(), lBinary + lView.value("byteOffset", 0) + lAccessor.value("byteOffset", 0),
                    lKeys.size() * sizeof(float));
        ASSERT_EQ(lKeys.size(), static_cast<size_t>(kFrames * 4));
        for (size_t k = 0; k < lKeys.size(); k += 4)
        {
            const float* lKey = &lKeys[k];
            EXPECT_NEAR(std::hypot(std::hypot(lKey[0], lKey[1]), std::hypot(lKey[2], lKey[3])), 1.0, 1e-6);
            if (k == 0) continue;
            const float lDot = lKey[0] * lKey[-4] + lKey[1] * lKey[-3] + lKey[2] * lKey[-2] + lKey[3] * lKey[-1];
            EXPECT_GE(lDot, 0.0f) << "node " << lChannel["target"]["node"] << " between keys " << k / 4 - 1 << " and "
                                  << k / 4;
        }
        ++lChecked;
    }
    // root, spine and arm turn.
    EXPECT_EQ(lChecked, 3);
}

INSTANTIATE_TEST_SUITE_P(Containers, GltfRoundTrip,
                         ::testing::Values(orvasf::OrvGltfContainer::eBinary, orvasf::OrvGltfContainer::eEmbedded,
                                           orvasf::OrvGltfContainer::eSeparate));

// ---- Files built in the test -----------------------------------------------------------------

// pJson and pBinary as a binary glTF file: header, JSON chunk (space-padded), BIN chunk.
std::string Glb(const json& pJson, std::string pBinary)
{
    std::string lText = pJson.dump();
    lText.resize((lText.size() + 3) / 4 * 4, ' ');
    pBinary.resize((pBinary.size() + 3) / 4 * 4, '\0');
    std::string lFile = "glTF";
    const auto lWord = [&lFile](uint32_t pValue) { lFile.append(reinterpret_cast<const char*>(&pValue), 4); };
    lWord(2);
    lWord(static_cast<uint32_t>(12 + 8 + lText.size() + 8 + pBinary.size()));
    lWord(static_cast<uint32_t>(lText.size()));
    lFile += "JSON" + lText;
    lWord(static_cast<uint32_t>(pBinary.size()));
    lFile += std::string("BIN\0", 4) + pBinary;
    return lFile;
}

std::string Floats(const std::vector<float>& pValues)
{
    return std::string(reinterpret_cast<const char*>(pValues.data()), pValues.size() * sizeof(float));
}

// hips (rest translation 0, 1, 0 m) └─ tip (rest translation 0.1, 0, 0 m), without a skin. The
// animation "motion" has a translation sampler on hips (keys at 0, 0.5 and 1 s, pInterpolation)
// and a LINEAR rotation sampler turning hips about Z from 0 to 120 degrees over 1 s.
struct SamplerFile
{
    json mJson;
    std::string mBinary;
};

SamplerFile MakeSamplerFile(const std::string& pInterpolation, const std::vector<float>& pTranslations)
{
    const float lHalfTurn = static_cast<float>(std::sin(60.0 * M_PI / 180.0));
    const float lHalfTurnW = static_cast<float>(std::cos(60.0 * M_PI / 180.0));
    const std::vector<std::string> lPieces = {Floats({0.0f, 0.5f, 1.0f}), Floats(pTranslations), Floats({0.0f, 1.0f}),
                                              Floats({0, 0, 0, 1, 0, 0, lHalfTurn, lHalfTurnW})};
    SamplerFile lFile;
    json lViews = json::array();
    for (const std::string& lPiece : lPieces)
    {
        lViews.push_back({{"buffer", 0}, {"byteOffset", lFile.mBinary.size()}, {"byteLength", lPiece.size()}});
        lFile.mBinary += lPiece;
    }
    const auto lAccessor = [](int pView, size_t pCount, const char* pType) {
        return json{{"bufferView", pView}, {"componentType", 5126}, {"count", pCount}, {"type", pType}};
    };
    lFile.mJson = {
        {"asset", {{"version", "2.0"}}},
        {"scene", 0},
        {"scenes", {{{"nodes", {0}}}}},
        {"nodes", {{{"name", "hips"}, {"translation", {0, 1, 0}}, {"children", {1}}},
                   {{"name", "tip"}, {"translation", {0.1, 0, 0}}}}},
        {"buffers", {{{"byteLength", lFile.mBinary.size()}}}},
        {"bufferViews", lViews},
        {"accessors",
         {lAccessor(0, 3, "SCALAR"), lAccessor(1, pTranslations.size() / 3, "VEC3"), lAccessor(2, 2, "SCALAR"),
          lAccessor(3, 2, "VEC4")}},
        {"animations",
         {{{"name", "motion"},
           {"samplers",
            {{{"input", 0}, {"output", 1}, {"interpolation", pInterpolation}},
             {{"input", 2}, {"output", 3}, {"interpolation", "LINEAR"}}}},
           {"channels",
            {{{"sampler", 0}, {"target", {{"node", 0}, {"path", "translation"}}}},
             {{"sampler", 1}, {"target", {{"node", 0}, {"path", "rotation"}}}}}}}}}};
    return lFile;
}

struct ReadOutcome
{
    orvasf::OrvGltfReadResult mResult;
    std::vector<OrvMessage> mMessages;
    int mNodesBuilt = 0;
};

ReadOutcome ReadBytes(Target& pTarget, const std::string& pBytes, const orvasf::OrvGltfReadSettings& pSettings = {})
{
    orvasf::OrvGltfReader lReader;
    ReadOutcome lOutcome;
    lOutcome.mResult = lReader.Read(reinterpret_cast<const unsigned char*>(pBytes.data()), pBytes.size(), "in.glb",
                                    pTarget.mScene->GetRootNode(), pTarget.mTake, pSettings);
    lOutcome.mMessages = lReader.GetMessages();
    lOutcome.mNodesBuilt = pTarget.mScene->GetRootNode()->GetChildCount(true);
    return lOutcome;
}

// One sampler kind: its key values (hips' Y in metres; cubic splines hold in-tangent, value and
// out-tangent per key) and hips' Y at time t as glTF defines the interpolation.
struct SamplerCase
{
    const char* mInterpolation;
    std::vector<float> mKeys;
    double (*mExpectedY)(double pTime);
    const char* mWarning; // a word of the expected warning, or null
};

void PrintTo(const SamplerCase& pCase, std::ostream* pStream)
{
    *pStream << pCase.mInterpolation;
}

class GltfSampler : public ::testing::TestWithParam<SamplerCase>
{
};

TEST_P(GltfSampler, ResamplesTheTranslationAsGltfDefinesItAndTurnsSpherically)
{
    const SamplerCase& lCase = GetParam();
    const SamplerFile lFile = MakeSamplerFile(lCase.mInterpolation, lCase.mKeys);
    Target lTarget;
    orvasf::OrvGltfReadSettings lSettings;
    lSettings.mFramesPerSecond = 8.0;  // samples fall between the keys
    const ReadOutcome lRead = ReadBytes(lTarget, Glb(lFile.mJson, lFile.mBinary), lSettings);
    ASSERT_TRUE(lRead.mResult.mSucceeded);
    ASSERT_EQ(lRead.mResult.mFrameCount, 9);
    if (lCase.mWarning)
    {
        ASSERT_EQ(lRead.mMessages.size(), 1u);
        EXPECT_NE(lRead.mMessages[0].mText.find(lCase.mWarning), std::string::npos) << lRead.mMessages[0].mText;
    }
    else
        EXPECT_TRUE(lRead.mMessages.empty());

    const std::vector<double> lPositions = Positions(lRead.mResult.mRoot, lTarget.mTake, 9, 8.0);
    for (int f = 0; f < 9; ++f)
    {
        const double lTime = f / 8.0;
        const double lY = 100.0 * lCase.mExpectedY(lTime);
        // Hips turn the tip about Z at a constant rate: 120 degrees a second.
        const double lAngle = 120.0 * lTime * M_PI / 180.0;
        const double* lHips = &lPositions[static_cast<size_t>(f) * 6];
        EXPECT_NEAR(lHips[1], lY, 1e-4) << "hips at " << lTime << " s";
        EXPECT_NEAR(lHips[3], 10.0 * std::cos(lAngle), 1e-4) << "tip at " << lTime << " s";
        EXPECT_NEAR(lHips[4], lY + 10.0 * std::sin(lAngle), 1e-4) << "tip at " << lTime << " s";
    }
}

INSTANTIATE_TEST_SUITE_P(
    Interpolations, GltfSampler,
    ::testing::Values(
        SamplerCase{"LINEAR", {0, 0, 0, 0, 2, 0, 0, 1, 0},
                    [](double pTime) { return pTime <= 0.5 ? 4.0 * pTime : 2.0 - 2.0 * (pTime - 0.5); }, nullptr},
        SamplerCase{"STEP", {0, 0, 0, 0, 2, 0, 0, 1, 0},
                    [](double pTime) { return pTime < 0.5 ? 0.0 : pTime < 1.0 ? 2.0 : 1.0; }, "STEP"},
        // Keys 0, 2, 1 with out-tangent 4 at the first and in-tangent -2 at the second key,
        // the rest 0: the Hermite polynomials of each half second.
        SamplerCase{"CUBICSPLINE",
                    {0, 0, 0, 0, 0, 0, 0, 4, 0, 0, -2, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0},
                    [](double pTime) {
                        const double s = pTime <= 0.5 ? pTime / 0.5 : (pTime - 0.5) / 0.5;
                        const double h00 = 2 * s * s * s - 3 * s * s + 1, h10 = s * s * s - 2 * s * s + s;
                        const double h01 = -2 * s * s * s + 3 * s * s, h11 = s * s * s - s * s;
                        return pTime <= 0.5 ? h10 * 0.5 * 4.0 + h01 * 2.0 + h11 * 0.5 * -2.0 : h00 * 2.0 + h01 * 1.0;
                    },
                    "CUBICSPLINE"}));

// ---- Refusals --------------------------------------------------------------------------------

struct RefusalCase
{
    const char* mName;
    void (*mBreak)(json& pJson, std::string& pBinary);
    const char* mError; // a part of the expected error
};

void PrintTo(const RefusalCase& pCase, std::ostream* pStream)
{
    *pStream << pCase.mName;
}

class GltfRefusal : public ::testing::TestWithParam<RefusalCase>
{
};

TEST_P(GltfRefusal, NamesTheFaultAndBuildsNothing)
{
    SamplerFile lFile = MakeSamplerFile("LINEAR", {0, 0, 0, 0, 2, 0, 0, 1, 0});
    GetParam().mBreak(lFile.mJson, lFile.mBinary);
    Target lTarget;
    const std::string lBytes =
        std::string(GetParam().mName) == "truncated binary file" ? lFile.mBinary : Glb(lFile.mJson, lFile.mBinary);
    const ReadOutcome lRead = ReadBytes(lTarget, lBytes);
    EXPECT_FALSE(lRead.mResult.mSucceeded);
    EXPECT_EQ(lRead.mNodesBuilt, 0);
    ASSERT_FALSE(lRead.mMessages.empty());
    const OrvMessage& lLast = lRead.mMessages.back();
    EXPECT_EQ(lLast.mKind, OrvMessage::eError);
    EXPECT_EQ(OrvFormatMessage(lLast).rfind("in.glb: error: ", 0), 0u) << OrvFormatMessage(lLast);
    EXPECT_NE(lLast.mText.find(GetParam().mError), std::string::npos) << lLast.mText;
}

INSTANTIATE_TEST_SUITE_P(
    BrokenFiles, GltfRefusal,
    ::testing::Values(
        RefusalCase{"not glTF", [](json& j, std::string&) { j = json::array({1, 2}); }, ""},
        RefusalCase{"truncated binary file",
                    [](json& j, std::string& b) { b = Glb(j, b).substr(0, 40); }, ""},
        RefusalCase{"accessor index outside the accessors",
                    [](json& j, std::string&) { j["animations"][0]["samplers"][1]["output"] = 17; },
                    "Accessor 17 does not exist"},
        RefusalCase{"buffer shorter than its views",
                    [](json& j, std::string& b) {
                        b.resize(40);
                        j["buffers"][0]["byteLength"] = 40;
                    },
                    ""},
        RefusalCase{"accessor beyond its buffer view",
                    [](json& j, std::string&) { j["accessors"][1]["count"] = 4; }, "reaches beyond the end"},
        RefusalCase{"rotation of three numbers",
                    [](json& j, std::string&) { j["accessors"][3]["type"] = "VEC3"; }, "needs VEC4"},
        RefusalCase{"keyframe times that go back",
                    [](json& j, std::string& b) {
                        const float lBack = 0.25f;
                        b.replace(8, 4, reinterpret_cast<const char*>(&lBack), 4);
                        (void)j;
                    },
                    "do not increase"},
        RefusalCase{"node of two parents",
                    [](json& j, std::string&) { j["nodes"][1]["children"] = {1}; }, "more than one node"},
        RefusalCase{"cycle of nodes",
                    [](json& j, std::string&) {
                        j["nodes"][1]["children"] = {0};
                        j["scenes"][0]["nodes"] = json::array();
                    },
                    "cycle"},
        RefusalCase{"no skin and no scene", [](json& j, std::string&) { j.erase("scenes"); }, "no joints to read"},
        RefusalCase{"skin joint outside the nodes",
                    [](json& j, std::string&) { j["skins"] = {{{"joints", {0, 9}}}}; }, "Joint node 9 does not exist"},
        RefusalCase{"sparse sampler output",
                    [](json& j, std::string&) {
                        j["accessors"][1]["sparse"] = {{"count", 1},
                                                       {"indices", {{"bufferView", 0}, {"componentType", 5125}}},
                                                       {"values", {{"bufferView", 1}}}};
                    },
                    "sparse"}),
    [](const ::testing::TestParamInfo<RefusalCase>& pInfo) {
        std::string lName = pInfo.param.mName;
        for (char& lChar : lName)
            if (!std::isalnum(static_cast<unsigned char>(lChar))) lChar = '_';
        return lName;
    });

TEST(GltfAnimationChoice, ReadsTheNamedAnimationAndRefusesAMissingName)
{
    SamplerFile lFile = MakeSamplerFile("LINEAR", {0, 0, 0, 0, 2, 0, 0, 1, 0});
    json lStill = lFile.mJson["animations"][0];
    lStill["name"] = "still";
    lStill["channels"].erase(1);
    lStill["channels"][0]["target"]["node"] = 1;
    lFile.mJson["animations"].push_back(lStill);

    Target lNamed;
    orvasf::OrvGltfReadSettings lSettings;
    lSettings.mAnimationName = "still";
    const ReadOutcome lRead = ReadBytes(lNamed, Glb(lFile.mJson, lFile.mBinary), lSettings);
    ASSERT_TRUE(lRead.mResult.mSucceeded);
    // Only tip moves in "still": hips stays at its rest height at the last key.
    const std::vector<double> lPositions = Positions(lRead.mResult.mRoot, lNamed.mTake, 3, 2.0);
    EXPECT_NEAR(lPositions[2 * 6 + 1], 100.0, 1e-9);
    EXPECT_NEAR(lPositions[2 * 6 + 4], 200.0, 1e-4);

    Target lMissing;
    lSettings.mAnimationName = "walk";
    const ReadOutcome lRefused = ReadBytes(lMissing, Glb(lFile.mJson, lFile.mBinary), lSettings);
    EXPECT_FALSE(lRefused.mResult.mSucceeded);
    EXPECT_EQ(lRefused.mNodesBuilt, 0);
    ASSERT_FALSE(lRefused.mMessages.empty());
    EXPECT_EQ(lRefused.mMessages.back().mText,
              "The file has no animation named \"walk\" (it has \"motion\", \"still\")");
}

} // namespace
