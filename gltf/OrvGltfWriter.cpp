#include "gltf/OrvGltfWriter.h"

#include "gltf/OrvGltfMath.h"
#include "gltf/OrvGltfModel.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/host/io/OrvTextFile.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>

namespace orvasf {

namespace {

using orvsdk::OrvAMatrix;
using orvsdk::OrvVector4;

// glTF lengths are metres; the host's are centimetres.
constexpr double kMetresPerUnit = 0.01;
// JOINTS_0 holds unsigned shorts.
constexpr size_t kMaxJoints = 65536;
// Motion smaller than this (metres, or quaternion components) counts as none.
constexpr double kStill = 1e-7;

// The joints among the evaluator's nodes: the root and every node with a skeleton attribute whose
// parent is a joint. Indices into the evaluator's nodes, parents before children.
std::vector<int> SelectJoints(const orvsdk::OrvPoseEvaluator& pEvaluator)
{
    const std::vector<orvsdk::OrvNode*>& lNodes = pEvaluator.GetNodes();
    std::vector<bool> lIsJoint(lNodes.size(), false);
    std::vector<int> lJoints;
    for (size_t i = 0; i < lNodes.size(); ++i)
    {
        const int lParent = pEvaluator.GetParents()[i];
        lIsJoint[i] = lParent < 0 || (lIsJoint[static_cast<size_t>(lParent)] && lNodes[i]->GetSkeleton());
        if (lIsJoint[i]) lJoints.push_back(static_cast<int>(i));
    }
    return lJoints;
}

// pLocal with its translation turned into metres.
OrvAMatrix InMetres(OrvAMatrix pLocal)
{
    for (int lRow = 0; lRow < 3; ++lRow) pLocal(lRow, 3) *= kMetresPerUnit;
    return pLocal;
}

std::vector<double> ToVector(const OrvVector4& pValue, int pCount)
{
    return std::vector<double>(&pValue[0], &pValue[0] + pCount);
}

// The glTF nodes of the joints (same indices as pJoints) with their rest transforms, and the
// joints' world transforms at rest, in metres.
void AddJointNodes(const orvsdk::OrvPoseEvaluator& pEvaluator, const std::vector<int>& pJoints,
                   tinygltf::Model& pModel, std::vector<OrvAMatrix>& pBindWorlds)
{
    std::vector<OrvAMatrix> lRest(static_cast<size_t>(pEvaluator.GetNodeCount()));
    pEvaluator.EvaluateRestLocals(lRest.data());
    std::vector<int> lJointOfNode(lRest.size(), -1);
    pBindWorlds.resize(pJoints.size());
    for (size_t j = 0; j < pJoints.size(); ++j)
    {
        const size_t lNodeIndex = static_cast<size_t>(pJoints[j]);
        lJointOfNode[lNodeIndex] = static_cast<int>(j);
        const OrvAMatrix lLocal = InMetres(lRest[lNodeIndex]);
        const GltfTrs lTrs = DecomposeTrs(lLocal);
        tinygltf::Node lNode;
        lNode.name = Utf8Name(pEvaluator.GetNodes()[lNodeIndex]->GetName());
        lNode.translation = ToVector(lTrs.mTranslation, 3);
        lNode.rotation = std::vector<double>(lTrs.mRotation.begin(), lTrs.mRotation.end());
        lNode.scale = ToVector(lTrs.mScale, 3);
        const int lParent = pEvaluator.GetParents()[lNodeIndex];
        if (j > 0)
        {
            const int lParentJoint = lJointOfNode[static_cast<size_t>(lParent)];
            pModel.nodes[static_cast<size_t>(lParentJoint)].children.push_back(static_cast<int>(j));
            pBindWorlds[j] = pBindWorlds[static_cast<size_t>(lParentJoint)] * lLocal;
        }
        else
            pBindWorlds[j] = lLocal;
        pModel.nodes.push_back(std::move(lNode));
    }
}

void AddSkin(const std::vector<OrvAMatrix>& pBindWorlds, GltfBufferBuilder& pBuffer, tinygltf::Model& pModel)
{
    std::vector<float> lInverseBinds;
    for (const OrvAMatrix& lWorld : pBindWorlds)
    {
        const OrvAMatrix lInverse = lWorld.Inverse();
        for (int lColumn = 0; lColumn < 4; ++lColumn)
            for (int lRow = 0; lRow < 4; ++lRow) lInverseBinds.push_back(static_cast<float>(lInverse(lRow, lColumn)));
    }
    tinygltf::Skin lSkin;
    lSkin.inverseBindMatrices =
        pBuffer.AddFloats(pModel, lInverseBinds, TINYGLTF_TYPE_MAT4, GltfBufferBuilder::eNoTarget, false);
    lSkin.skeleton = 0;
    for (size_t j = 0; j < pBindWorlds.size(); ++j) lSkin.joints.push_back(static_cast<int>(j));
    pModel.skins.push_back(std::move(lSkin));
}

// The mesh of tapered boxes, one per joint and child joint, and the node that shows it skinned.
void AddFigure(const std::vector<OrvAMatrix>& pBindWorlds, GltfBufferBuilder& pBuffer, tinygltf::Model& pModel)
{
    GltfBoneMesh lMesh;
    for (size_t j = 0; j < pModel.nodes.size(); ++j)
        for (int lChild : pModel.nodes[j].children)
            lMesh.AddBone(pBindWorlds[j].GetT(), pBindWorlds[static_cast<size_t>(lChild)].GetT(), static_cast<int>(j));
    if (lMesh.IsEmpty()) lMesh.AddMarker(pBindWorlds.front().GetT(), 0);

    tinygltf::Primitive lPrimitive;
    lPrimitive.mode = TINYGLTF_MODE_TRIANGLES;
    lPrimitive.attributes["POSITION"] =
        pBuffer.AddFloats(pModel, lMesh.mPositions, TINYGLTF_TYPE_VEC3, GltfBufferBuilder::eVertices, true);
    lPrimitive.attributes["NORMAL"] =
        pBuffer.AddFloats(pModel, lMesh.mNormals, TINYGLTF_TYPE_VEC3, GltfBufferBuilder::eVertices, false);
    lPrimitive.attributes["JOINTS_0"] = pBuffer.AddJointIndices(pModel, lMesh.mJoints);
    lPrimitive.attributes["WEIGHTS_0"] =
        pBuffer.AddFloats(pModel, lMesh.mWeights, TINYGLTF_TYPE_VEC4, GltfBufferBuilder::eVertices, false);
    lPrimitive.indices = pBuffer.AddIndices(pModel, lMesh.mIndices);
    tinygltf::Mesh lGltfMesh;
    lGltfMesh.name = "figure";
    lGltfMesh.primitives.push_back(std::move(lPrimitive));
    pModel.meshes.push_back(std::move(lGltfMesh));

    tinygltf::Node lNode;
    lNode.name = "figure";
    lNode.mesh = 0;
    lNode.skin = 0;
    pModel.nodes.push_back(std::move(lNode));
}

// Every joint's local translation and rotation at every frame.
struct JointTracks
{
    std::vector<float> mTranslations; // 3 per frame
    std::vector<float> mRotations;    // 4 per frame, each in the previous one's hemisphere
    bool mMoves = false;
    bool mTurns = false;
    GltfQuaternion mLastRotation;     // the previous frame's, at first the rest rotation

    // Appends one frame's local transform, compared with the joint's rest transform pRest.
    void Add(const GltfTrs& pTrs, const tinygltf::Node& pRest)
    {
        GltfQuaternion lRotation = pTrs.mRotation;
        KeepHemisphere(mLastRotation.data(), lRotation);
        mLastRotation = lRotation;
        for (int a = 0; a < 3; ++a)
        {
            mTranslations.push_back(static_cast<float>(pTrs.mTranslation[a]));
            mMoves = mMoves || std::fabs(pTrs.mTranslation[a] - pRest.translation[static_cast<size_t>(a)]) > kStill;
        }
        for (size_t a = 0; a < 4; ++a)
        {
            mRotations.push_back(static_cast<float>(lRotation[a]));
            mTurns = mTurns || std::fabs(lRotation[a] - pRest.rotation[a]) > kStill;
        }
    }
};

std::vector<JointTracks> SampleTracks(const orvsdk::OrvPoseEvaluator& pEvaluator, const std::vector<int>& pJoints,
                                      const tinygltf::Model& pModel, const OrvGltfWriteSettings& pSettings)
{
    std::vector<JointTracks> lTracks(pJoints.size());
    for (size_t j = 0; j < pJoints.size(); ++j)
        std::copy(pModel.nodes[j].rotation.begin(), pModel.nodes[j].rotation.end(), lTracks[j].mLastRotation.begin());
    std::vector<OrvAMatrix> lLocals(static_cast<size_t>(pEvaluator.GetNodeCount()));
    for (int lFrame = 0; lFrame < pSettings.mFrameCount; ++lFrame)
    {
        pEvaluator.EvaluateLocals(orvsdk::OrvTime::FromFrame(lFrame, pSettings.mFramesPerSecond), lLocals.data());
        for (size_t j = 0; j < pJoints.size(); ++j)
            lTracks[j].Add(DecomposeTrs(InMetres(lLocals[static_cast<size_t>(pJoints[j])])), pModel.nodes[j]);
    }
    return lTracks;
}

void AddChannel(tinygltf::Animation& pAnimation, int pTimes, int pValues, int pNode, const char* pPath)
{
    tinygltf::AnimationSampler lSampler;
    lSampler.input = pTimes;
    lSampler.output = pValues;
    lSampler.interpolation = "LINEAR";
    tinygltf::AnimationChannel lChannel;
    lChannel.sampler = static_cast<int>(pAnimation.samplers.size());
    lChannel.target_node = pNode;
    lChannel.target_path = pPath;
    pAnimation.samplers.push_back(std::move(lSampler));
    pAnimation.channels.push_back(std::move(lChannel));
}

void AddAnimation(const std::vector<JointTracks>& pTracks, const OrvGltfWriteSettings& pSettings,
                  GltfBufferBuilder& pBuffer, tinygltf::Model& pModel)
{
    tinygltf::Animation lAnimation;
    lAnimation.name = Utf8Name(pSettings.mAnimationName.c_str());
    std::vector<float> lTimes;
    for (int lFrame = 0; lFrame < pSettings.mFrameCount; ++lFrame)
        lTimes.push_back(static_cast<float>(lFrame / pSettings.mFramesPerSecond));
    int lTimeAccessor = -1;
    for (size_t j = 0; j < pTracks.size(); ++j)
    {
        if (!pTracks[j].mMoves && !pTracks[j].mTurns) continue;
        if (lTimeAccessor < 0)
            lTimeAccessor = pBuffer.AddFloats(pModel, lTimes, TINYGLTF_TYPE_SCALAR, GltfBufferBuilder::eNoTarget, true);
        const int lNode = static_cast<int>(j);
        if (pTracks[j].mMoves)
            AddChannel(lAnimation, lTimeAccessor,
                       pBuffer.AddFloats(pModel, pTracks[j].mTranslations, TINYGLTF_TYPE_VEC3,
                                         GltfBufferBuilder::eNoTarget, false),
                       lNode, "translation");
        if (pTracks[j].mTurns)
            AddChannel(lAnimation, lTimeAccessor,
                       pBuffer.AddFloats(pModel, pTracks[j].mRotations, TINYGLTF_TYPE_VEC4,
                                         GltfBufferBuilder::eNoTarget, false),
                       lNode, "rotation");
    }
    if (!lAnimation.channels.empty()) pModel.animations.push_back(std::move(lAnimation));
}

bool AllFinite(const std::vector<tinygltf::Node>& pNodes)
{
    const auto lFinite = [](const std::vector<double>& pValues) {
        return std::all_of(pValues.begin(), pValues.end(), [](double pValue) { return std::isfinite(pValue); });
    };
    return std::all_of(pNodes.begin(), pNodes.end(), [&lFinite](const tinygltf::Node& pNode) {
        return lFinite(pNode.translation) && lFinite(pNode.rotation) && lFinite(pNode.scale);
    });
}

// The model of the skeleton below pRoot; false, with pProblem set, when it cannot be written.
bool BuildModel(orvsdk::OrvNode* pRoot, orvsdk::OrvAnimStack* pTake, const OrvGltfWriteSettings& pSettings,
                tinygltf::Model& pModel, std::string& pProblem)
{
    const orvsdk::OrvPoseEvaluator lEvaluator(pRoot, pTake);
    const std::vector<int> lJoints = SelectJoints(lEvaluator);
    if (lJoints.size() > kMaxJoints)
    {
        pProblem = "A glTF skin holds at most 65536 joints; the skeleton has " + std::to_string(lJoints.size());
        return false;
    }
    pModel.asset.version = "2.0";
    pModel.asset.generator = pSettings.mGenerator;
    std::vector<OrvAMatrix> lBindWorlds;
    AddJointNodes(lEvaluator, lJoints, pModel, lBindWorlds);
    GltfBufferBuilder lBuffer;
    AddSkin(lBindWorlds, lBuffer, pModel);
    AddFigure(lBindWorlds, lBuffer, pModel);
    AddAnimation(SampleTracks(lEvaluator, lJoints, pModel, pSettings), pSettings, lBuffer, pModel);
    const bool lFinite = lBuffer.AllFinite();
    lBuffer.Finish(pModel);

    tinygltf::Scene lScene;
    lScene.nodes = {0, static_cast<int>(pModel.nodes.size()) - 1};
    pModel.scenes.push_back(std::move(lScene));
    pModel.defaultScene = 0;
    if (lFinite && AllFinite(pModel.nodes)) return true;
    pProblem = "The skeleton's transforms overflow to numbers that are not finite";
    return false;
}

// Writes pBytes to pPath atomically; messages go to pMessages.
bool WriteBytes(const std::string& pPath, const char* pFileType, const std::string& pBytes,
                std::vector<orvsdk::OrvMessage>& pMessages)
{
    orvsdk::OrvTextFile lFile(pFileType, " ", "", false, false);
    bool lWritten = lFile.Create(pPath.c_str()) && lFile.Write(pBytes.data(), pBytes.size());
    lWritten = lFile.Close() && lWritten;
    pMessages.insert(pMessages.end(), lFile.GetMessages().begin(), lFile.GetMessages().end());
    return lWritten;
}

// The JSON of pModel, which names pBinName as its buffer's file instead of holding the data.
std::string JsonWithSeparateBuffer(tinygltf::Model& pModel, const std::string& pBinName)
{
    std::vector<unsigned char> lData;
    lData.swap(pModel.buffers.front().data);
    std::ostringstream lStream;
    tinygltf::TinyGLTF().WriteGltfSceneToStream(&pModel, lStream, true, false);
    nlohmann::json lJson = nlohmann::json::parse(lStream.str());
    lJson["buffers"][0] = {{"byteLength", lData.size()}, {"uri", pBinName}};
    lData.swap(pModel.buffers.front().data);
    return lJson.dump(2);
}

// BuildModel, with its problem reported as an error of pName in pMessages.
bool BuildModelOrReport(const std::string& pName, orvsdk::OrvNode* pRoot, orvsdk::OrvAnimStack* pTake,
                        const OrvGltfWriteSettings& pSettings, tinygltf::Model& pModel,
                        std::vector<orvsdk::OrvMessage>& pMessages)
{
    std::string lProblem;
    if (BuildModel(pRoot, pTake, pSettings, pModel, lProblem)) return true;
    pMessages.push_back(orvsdk::OrvMessage{orvsdk::OrvMessage::eError, pName, 0, lProblem});
    return false;
}

} // namespace

bool OrvGltfWriter::Write(const std::string& pPath, orvsdk::OrvNode* pRoot, orvsdk::OrvAnimStack* pTake,
                          const OrvGltfWriteSettings& pSettings)
{
    mMessages.clear();
    tinygltf::Model lModel;
    if (!BuildModelOrReport(pPath, pRoot, pTake, pSettings, lModel, mMessages)) return false;
    if (pSettings.mContainer == OrvGltfContainer::eSeparate)
    {
        const std::filesystem::path lBinPath = std::filesystem::path(pPath).replace_extension(".bin");
        const std::string& lData = std::string(lModel.buffers.front().data.begin(), lModel.buffers.front().data.end());
        return WriteBytes(lBinPath.string(), "glTF buffer", lData, mMessages) &&
               WriteBytes(pPath, "glTF", JsonWithSeparateBuffer(lModel, lBinPath.filename().string()), mMessages);
    }
    const bool lBinary = pSettings.mContainer == OrvGltfContainer::eBinary;
    std::ostringstream lStream;
    tinygltf::TinyGLTF().WriteGltfSceneToStream(&lModel, lStream, !lBinary, lBinary);
    return WriteBytes(pPath, "glTF", lStream.str(), mMessages);
}

bool OrvGltfWriter::WriteBinary(std::string& pBytes, const std::string& pName, orvsdk::OrvNode* pRoot,
                                orvsdk::OrvAnimStack* pTake, const OrvGltfWriteSettings& pSettings)
{
    mMessages.clear();
    tinygltf::Model lModel;
    if (!BuildModelOrReport(pName, pRoot, pTake, pSettings, lModel, mMessages)) return false;
    std::ostringstream lStream;
    tinygltf::TinyGLTF().WriteGltfSceneToStream(&lModel, lStream, false, true);
    pBytes = lStream.str();
    return true;
}

} // namespace orvasf
