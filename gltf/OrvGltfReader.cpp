#include "gltf/OrvGltfReader.h"

#include "gltf/OrvGltfMath.h"
#include "gltf/OrvGltfModel.h"
#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/anim/OrvAnimCurveKey.h"
#include "orvsdk/host/anim/OrvAnimCurveNode.h"
#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/host/scene/OrvSkeleton.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

namespace orvasf {

namespace {

using orvsdk::OrvAMatrix;
using orvsdk::OrvVector4;

constexpr double kUnitsPerMetre = 100.0;             // host centimetres per glTF metre
constexpr double kFallbackFramesPerSecond = 30.0;    // for uneven keyframe times
constexpr double kSameTime = 1e-6;                   // seconds within which keyframe times coincide
constexpr double kMaxFrames = 10'000'000.0;
constexpr size_t kMaxZeroElements = 10'000'000;
constexpr double kMaxSpan = 1e9;                      // seconds

// Why a file is refused; caught where the read began.
struct Refusal
{
    std::string mText;
};

[[noreturn]] void Refuse(std::string pText)
{
    throw Refusal{std::move(pText)};
}

template <typename T>
const T& At(const std::vector<T>& pItems, int pIndex, const char* pWhat)
{
    if (pIndex < 0 || static_cast<size_t>(pIndex) >= pItems.size())
        Refuse(std::string(pWhat) + " " + std::to_string(pIndex) + " does not exist (the file has " +
               std::to_string(pItems.size()) + ")");
    return pItems[static_cast<size_t>(pIndex)];
}

const char* TypeName(int pType)
{
    switch (pType)
    {
    case TINYGLTF_TYPE_SCALAR: return "SCALAR";
    case TINYGLTF_TYPE_VEC3: return "VEC3";
    case TINYGLTF_TYPE_VEC4: return "VEC4";
    case TINYGLTF_TYPE_MAT4: return "MAT4";
    default: return "another type";
    }
}

// One component at pBytes as a number: floats as they are, normalized integers scaled to [-1, 1]
// or [0, 1] as glTF defines them.
double ComponentValue(const unsigned char* pBytes, int pComponentType)
{
    switch (pComponentType)
    {
    case TINYGLTF_COMPONENT_TYPE_BYTE:
        return std::max(static_cast<signed char>(*pBytes) / 127.0, -1.0);
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
        return *pBytes / 255.0;
    case TINYGLTF_COMPONENT_TYPE_SHORT:
    {
        int16_t lValue;
        std::memcpy(&lValue, pBytes, sizeof lValue);
        return std::max(lValue / 32767.0, -1.0);
    }
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
    {
        uint16_t lValue;
        std::memcpy(&lValue, pBytes, sizeof lValue);
        return lValue / 65535.0;
    }
    default:
    {
        float lValue;
        std::memcpy(&lValue, pBytes, sizeof lValue);
        return lValue;
    }
    }
}

// The values of accessor pIndex, which must hold elements of pType: floats, or with
// pAllowNormalized also normalized integers. Every bound is checked against the buffer.
std::vector<double> ReadAccessor(const tinygltf::Model& pModel, int pIndex, int pType, bool pAllowNormalized,
                                 const char* pUse)
{
    const tinygltf::Accessor& lAccessor = At(pModel.accessors, pIndex, "Accessor");
    const std::string lName = "Accessor " + std::to_string(pIndex);
    if (lAccessor.sparse.isSparse) Refuse(lName + " is sparse, which a " + pUse + " cannot be");
    if (lAccessor.type != pType)
        Refuse(lName + " holds " + TypeName(lAccessor.type) + " elements; a " + pUse + " needs " + TypeName(pType));
    const int lComponentType = lAccessor.componentType;
    const bool lNormalizedInteger = lAccessor.normalized && lComponentType >= TINYGLTF_COMPONENT_TYPE_BYTE &&
                                    lComponentType <= TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT;
    if (lComponentType != TINYGLTF_COMPONENT_TYPE_FLOAT && !(pAllowNormalized && lNormalizedInteger))
        Refuse(lName + " holds components of type " + std::to_string(lComponentType) + "; a " + pUse +
               " needs floats" + (pAllowNormalized ? " or normalized integers" : ""));
    const size_t lComponents = static_cast<size_t>(tinygltf::GetNumComponentsInType(static_cast<uint32_t>(pType)));
    const size_t lComponentSize =
        static_cast<size_t>(tinygltf::GetComponentSizeInBytes(static_cast<uint32_t>(lComponentType)));
    const size_t lCount = lAccessor.count;
    // Without a buffer view every element is zero; the count alone then bounds the memory.
    if (lAccessor.bufferView < 0)
    {
        if (lCount > kMaxZeroElements) Refuse(lName + " holds too many elements: " + std::to_string(lCount));
        return std::vector<double>(lCount * lComponents, 0.0);
    }
    if (lCount == 0) return {};

    const tinygltf::BufferView& lView = At(pModel.bufferViews, lAccessor.bufferView, "Buffer view");
    const tinygltf::Buffer& lBuffer = At(pModel.buffers, lView.buffer, "Buffer");
    if (lView.byteOffset > lBuffer.data.size() || lView.byteLength > lBuffer.data.size() - lView.byteOffset)
        Refuse("Buffer view " + std::to_string(lAccessor.bufferView) + " reaches beyond the end of buffer " +
               std::to_string(lView.buffer) + " (" + std::to_string(lBuffer.data.size()) + " bytes)");
    const size_t lElementSize = lComponents * lComponentSize;
    const size_t lStride = lView.byteStride > 0 ? lView.byteStride : lElementSize;
    const size_t lRoom = lView.byteLength;
    if (lAccessor.byteOffset > lRoom || lElementSize > lRoom - lAccessor.byteOffset ||
        (lCount - 1) > (lRoom - lAccessor.byteOffset - lElementSize) / lStride)
        Refuse(lName + " (" + std::to_string(lCount) + " elements) reaches beyond the end of buffer view " +
               std::to_string(lAccessor.bufferView) + " (" + std::to_string(lRoom) + " bytes)");

    std::vector<double> lValues(lCount * lComponents, 0.0);
    const unsigned char* lData = lBuffer.data.data() + lView.byteOffset + lAccessor.byteOffset;
    for (size_t e = 0; e < lCount; ++e)
        for (size_t c = 0; c < lComponents; ++c)
        {
            const double lValue = ComponentValue(lData + e * lStride + c * lComponentSize, lComponentType);
            if (!std::isfinite(lValue)) Refuse(lName + " holds a value that is not a finite number");
            lValues[e * lComponents + c] = lValue;
        }
    return lValues;
}

// Each node's parent (-1 for none); refuses a child index outside the nodes, a node of two
// parents and a cycle.
std::vector<int> Parents(const tinygltf::Model& pModel)
{
    std::vector<int> lParents(pModel.nodes.size(), -1);
    for (size_t n = 0; n < pModel.nodes.size(); ++n)
        for (int lChild : pModel.nodes[n].children)
        {
            At(pModel.nodes, lChild, "Node");
            int& lParent = lParents[static_cast<size_t>(lChild)];
            if (lParent >= 0 || lChild == static_cast<int>(n))
                Refuse("Node " + std::to_string(lChild) + " is the child of more than one node");
            lParent = static_cast<int>(n);
        }
    // Every node whose ancestors end at a root is reached from that root; the others lie in a cycle.
    std::vector<bool> lReached(pModel.nodes.size(), false);
    std::vector<int> lPending;
    for (size_t n = 0; n < lParents.size(); ++n)
        if (lParents[n] < 0) lPending.push_back(static_cast<int>(n));
    while (!lPending.empty())
    {
        const int lNode = lPending.back();
        lPending.pop_back();
        lReached[static_cast<size_t>(lNode)] = true;
        for (int lChild : pModel.nodes[static_cast<size_t>(lNode)].children) lPending.push_back(lChild);
    }
    const auto lUnreached = std::find(lReached.begin(), lReached.end(), false);
    if (lUnreached != lReached.end())
        Refuse("Node " + std::to_string(lUnreached - lReached.begin()) + " lies in a cycle of the node hierarchy");
    return lParents;
}

// pTop and the nodes below it that pKeep marks (all, when pKeep is empty), a node before its
// children.
std::vector<int> PreOrder(const tinygltf::Model& pModel, int pTop, const std::vector<bool>& pKeep)
{
    std::vector<int> lOrder;
    std::vector<int> lPending{pTop};
    while (!lPending.empty())
    {
        const int lNode = lPending.back();
        lPending.pop_back();
        lOrder.push_back(lNode);
        const std::vector<int>& lChildren = pModel.nodes[static_cast<size_t>(lNode)].children;
        for (auto lChild = lChildren.rbegin(); lChild != lChildren.rend(); ++lChild)
            if (pKeep.empty() || pKeep[static_cast<size_t>(*lChild)]) lPending.push_back(*lChild);
    }
    return lOrder;
}

// The nodes to read, topmost first, a node before its children.
std::vector<int> SelectNodes(const tinygltf::Model& pModel, const std::vector<int>& pParents)
{
    if (pModel.skins.empty())
    {
        const int lScene = pModel.defaultScene >= 0 ? pModel.defaultScene : 0;
        if (pModel.scenes.empty() || At(pModel.scenes, lScene, "Scene").nodes.empty())
            Refuse("The file has no skin and no scene with nodes: there are no joints to read");
        const int lTop = pModel.scenes[static_cast<size_t>(lScene)].nodes.front();
        At(pModel.nodes, lTop, "Node");
        return PreOrder(pModel, lTop, {});
    }
    const tinygltf::Skin& lSkin = pModel.skins.front();
    if (lSkin.joints.empty()) Refuse("The first skin has no joints");
    std::vector<bool> lKeep(pModel.nodes.size(), false);
    for (int lJoint : lSkin.joints)
    {
        At(pModel.nodes, lJoint, "Joint node");
        for (int n = lJoint; n >= 0 && !lKeep[static_cast<size_t>(n)]; n = pParents[static_cast<size_t>(n)])
            lKeep[static_cast<size_t>(n)] = true;
    }
    std::vector<int> lTops;
    for (size_t n = 0; n < lKeep.size(); ++n)
        if (lKeep[n] && pParents[n] < 0) lTops.push_back(static_cast<int>(n));
    if (lTops.size() != 1)
        Refuse("The first skin's joints lie under " + std::to_string(lTops.size()) +
               " root nodes; they must share one");
    return PreOrder(pModel, lTops.front(), lKeep);
}

std::vector<double> CheckedVector(const std::vector<double>& pValues, size_t pSize, int pNode, const char* pWhat)
{
    if (pValues.size() != pSize)
        Refuse("Node " + std::to_string(pNode) + ": " + pWhat + " needs " + std::to_string(pSize) + " numbers");
    for (double lValue : pValues)
        if (!std::isfinite(lValue)) Refuse("Node " + std::to_string(pNode) + ": " + pWhat + " is not finite");
    return pValues;
}

// The node's rest transform, in metres.
GltfTrs RestTrs(const tinygltf::Node& pNode, int pIndex)
{
    if (!pNode.matrix.empty())
    {
        const std::vector<double> lColumns = CheckedVector(pNode.matrix, 16, pIndex, "matrix");
        OrvAMatrix lMatrix;
        for (int c = 0; c < 4; ++c)
            for (int r = 0; r < 4; ++r) lMatrix(r, c) = lColumns[static_cast<size_t>(4 * c + r)];
        return DecomposeTrs(lMatrix);
    }
    GltfTrs lTrs;
    if (!pNode.translation.empty())
    {
        const std::vector<double> lT = CheckedVector(pNode.translation, 3, pIndex, "translation");
        lTrs.mTranslation = OrvVector4(lT[0], lT[1], lT[2]);
    }
    if (!pNode.rotation.empty())
    {
        const std::vector<double> lR = CheckedVector(pNode.rotation, 4, pIndex, "rotation");
        lTrs.mRotation = Normalized({lR[0], lR[1], lR[2], lR[3]});
    }
    if (!pNode.scale.empty())
    {
        const std::vector<double> lS = CheckedVector(pNode.scale, 3, pIndex, "scale");
        lTrs.mScale = OrvVector4(lS[0], lS[1], lS[2]);
    }
    return lTrs;
}

// ---- Animation -------------------------------------------------------------------------------

enum class EInterpolation
{
    eLinear,
    eStep,
    eCubic
};

// One sampler's keys: times and, per key, the values (three per key for cubic splines: in-tangent,
// value, out-tangent).
struct Track
{
    std::vector<double> mTimes;
    std::vector<double> mValues;
    size_t mComponents = 3;
    EInterpolation mInterpolation = EInterpolation::eLinear;
    bool mRotation = false;
};

// Component pC of key pKey's value (pPart 0 in-tangent, 1 value, 2 out-tangent for cubic splines).
double KeyValue(const Track& pTrack, size_t pKey, size_t pPart, size_t pC)
{
    const size_t lParts = pTrack.mInterpolation == EInterpolation::eCubic ? 3 : 1;
    const size_t lPart = lParts == 3 ? pPart : 0;
    return pTrack.mValues[(pKey * lParts + lPart) * pTrack.mComponents + pC];
}

// The track's value at pTime, as glTF interpolates it; constant before the first and after the last key.
std::vector<double> Evaluate(const Track& pTrack, double pTime)
{
    const size_t lKeys = pTrack.mTimes.size();
    const size_t lAfter = static_cast<size_t>(
        std::upper_bound(pTrack.mTimes.begin(), pTrack.mTimes.end(), pTime) - pTrack.mTimes.begin());
    std::vector<double> lValue(pTrack.mComponents);
    const size_t lKey = lAfter == 0 ? 0 : lAfter - 1;
    if (lAfter == 0 || lAfter == lKeys || pTrack.mInterpolation == EInterpolation::eStep)
    {
        for (size_t c = 0; c < pTrack.mComponents; ++c) lValue[c] = KeyValue(pTrack, lKey, 1, c);
        return lValue;
    }
    const double lSpan = pTrack.mTimes[lAfter] - pTrack.mTimes[lKey];
    const double w = (pTime - pTrack.mTimes[lKey]) / lSpan;
    if (pTrack.mInterpolation == EInterpolation::eCubic)
    {
        const double w2 = w * w, w3 = w2 * w;
        for (size_t c = 0; c < pTrack.mComponents; ++c)
            lValue[c] = (2 * w3 - 3 * w2 + 1) * KeyValue(pTrack, lKey, 1, c) +
                        (w3 - 2 * w2 + w) * lSpan * KeyValue(pTrack, lKey, 2, c) +
                        (-2 * w3 + 3 * w2) * KeyValue(pTrack, lAfter, 1, c) +
                        (w3 - w2) * lSpan * KeyValue(pTrack, lAfter, 0, c);
    }
    else if (pTrack.mRotation)
    {
        GltfQuaternion lFrom, lTo;
        for (size_t c = 0; c < 4; ++c)
        {
            lFrom[c] = KeyValue(pTrack, lKey, 1, c);
            lTo[c] = KeyValue(pTrack, lAfter, 1, c);
        }
        const GltfQuaternion lBlend = Slerp(Normalized(lFrom), Normalized(lTo), w);
        return std::vector<double>(lBlend.begin(), lBlend.end());
    }
    else
        for (size_t c = 0; c < pTrack.mComponents; ++c)
            lValue[c] = (1.0 - w) * KeyValue(pTrack, lKey, 1, c) + w * KeyValue(pTrack, lAfter, 1, c);
    if (pTrack.mRotation)
    {
        const GltfQuaternion lRotation = Normalized({lValue[0], lValue[1], lValue[2], lValue[3]});
        lValue.assign(lRotation.begin(), lRotation.end());
    }
    return lValue;
}

// The tracks that animate one node.
struct NodeTracks
{
    const Track* mTranslation = nullptr;
    const Track* mRotation = nullptr;
    const Track* mScale = nullptr;
};

// The chosen animation's tracks on the nodes read, and what the sampling warns of.
struct Motion
{
    std::string mName; // of the animation read
    std::vector<Track> mTracks;
    std::map<int, NodeTracks> mByNode; // glTF node index to its tracks
    int mStepSamplers = 0;
    int mCubicSamplers = 0;
    int mScaleChannels = 0;
    int mWeightChannels = 0;
};

Track ReadTrack(const tinygltf::Model& pModel, const tinygltf::AnimationSampler& pSampler, int pType, bool pRotation)
{
    Track lTrack;
    lTrack.mRotation = pRotation;
    lTrack.mComponents = pType == TINYGLTF_TYPE_VEC4 ? 4 : 3;
    const std::string& lName = pSampler.interpolation;
    if (lName == "STEP")
        lTrack.mInterpolation = EInterpolation::eStep;
    else if (lName == "CUBICSPLINE")
        lTrack.mInterpolation = EInterpolation::eCubic;
    else if (!lName.empty() && lName != "LINEAR")
        Refuse("Unknown sampler interpolation \"" + lName + "\"");
    lTrack.mTimes = ReadAccessor(pModel, pSampler.input, TINYGLTF_TYPE_SCALAR, false, "sampler input");
    lTrack.mValues = ReadAccessor(pModel, pSampler.output, pType, pRotation, "sampler output");
    if (lTrack.mTimes.empty()) Refuse("Sampler input accessor " + std::to_string(pSampler.input) + " has no keys");
    for (size_t k = 1; k < lTrack.mTimes.size(); ++k)
        if (!(lTrack.mTimes[k] > lTrack.mTimes[k - 1]))
            Refuse("Sampler input accessor " + std::to_string(pSampler.input) + ": the keyframe times do not increase");
    const size_t lParts = lTrack.mInterpolation == EInterpolation::eCubic ? 3 : 1;
    if (lTrack.mValues.size() != lTrack.mTimes.size() * lParts * lTrack.mComponents)
        Refuse("Sampler output accessor " + std::to_string(pSampler.output) + " holds " +
               std::to_string(lTrack.mValues.size() / lTrack.mComponents) + " elements for " +
               std::to_string(lTrack.mTimes.size()) + " keyframe times");
    return lTrack;
}

const tinygltf::Animation* ChooseAnimation(const tinygltf::Model& pModel, const std::string& pName)
{
    if (pName.empty()) return pModel.animations.empty() ? nullptr : &pModel.animations.front();
    std::string lNames;
    for (const tinygltf::Animation& lAnimation : pModel.animations)
    {
        if (lAnimation.name == pName) return &lAnimation;
        lNames += (lNames.empty() ? "" : ", ") + ("\"" + lAnimation.name + "\"");
    }
    Refuse("The file has no animation named \"" + pName + "\"" +
           (lNames.empty() ? std::string(" (it has none)") : " (it has " + lNames + ")"));
}

Motion ReadMotion(const tinygltf::Model& pModel, const std::vector<bool>& pRead, const std::string& pName)
{
    Motion lMotion;
    const tinygltf::Animation* lAnimation = ChooseAnimation(pModel, pName);
    if (!lAnimation) return lMotion;
    lMotion.mName = lAnimation->name;
    // Tracks are addressed by index until every one is read: the vector may still grow.
    std::map<int, std::array<int, 3>> lTrackOfNode;
    for (const tinygltf::AnimationChannel& lChannel : lAnimation->channels)
    {
        const tinygltf::AnimationSampler& lSampler = At(lAnimation->samplers, lChannel.sampler, "Animation sampler");
        if (lChannel.target_node < 0) continue;
        At(pModel.nodes, lChannel.target_node, "Animated node");
        const std::string& lPath = lChannel.target_path;
        if (lPath == "weights") ++lMotion.mWeightChannels;
        if (!pRead[static_cast<size_t>(lChannel.target_node)] || lPath == "weights") continue;
        const int lSlot = lPath == "translation" ? 0 : lPath == "rotation" ? 1 : lPath == "scale" ? 2 : -1;
        if (lSlot < 0) Refuse("Unknown animation target path \"" + lPath + "\"");
        lMotion.mScaleChannels += lSlot == 2;
        lMotion.mTracks.push_back(ReadTrack(pModel, lSampler, lSlot == 1 ? TINYGLTF_TYPE_VEC4 : TINYGLTF_TYPE_VEC3,
                                            lSlot == 1));
        lMotion.mStepSamplers += lMotion.mTracks.back().mInterpolation == EInterpolation::eStep;
        lMotion.mCubicSamplers += lMotion.mTracks.back().mInterpolation == EInterpolation::eCubic;
        auto lSlots = lTrackOfNode.emplace(lChannel.target_node, std::array<int, 3>{-1, -1, -1}).first;
        lSlots->second[static_cast<size_t>(lSlot)] = static_cast<int>(lMotion.mTracks.size()) - 1;
    }
    const auto lTrack = [&lMotion](int pIndex) {
        return pIndex < 0 ? nullptr : &lMotion.mTracks[static_cast<size_t>(pIndex)];
    };
    for (const auto& [lNode, lSlots] : lTrackOfNode)
        lMotion.mByNode[lNode] = NodeTracks{lTrack(lSlots[0]), lTrack(lSlots[1]), lTrack(lSlots[2])};
    return lMotion;
}

// The times to sample and their frame rate.
struct Sampling
{
    std::vector<double> mTimes;
    double mFramesPerSecond = 0.0;
    bool mUneven = false;
};

// Whether every time of pKeys lies within a hundredth of a frame of its frame at pRate.
bool EvenlySpaced(const std::vector<double>& pKeys, double pRate)
{
    for (size_t k = 0; k < pKeys.size(); ++k)
        if (std::fabs(pKeys[k] - pKeys.front() - static_cast<double>(k) / pRate) > 0.01 / pRate) return false;
    return true;
}

Sampling PlanSampling(const Motion& pMotion, double pFramesPerSecond)
{
    std::vector<double> lKeys;
    for (const Track& lTrack : pMotion.mTracks) lKeys.insert(lKeys.end(), lTrack.mTimes.begin(), lTrack.mTimes.end());
    std::sort(lKeys.begin(), lKeys.end());
    lKeys.erase(std::unique(lKeys.begin(), lKeys.end(), [](double a, double b) { return b - a <= kSameTime; }),
                lKeys.end());
    Sampling lSampling;
    if (lKeys.empty()) return lSampling;
    const double lFirst = lKeys.front(), lSpan = lKeys.back() - lKeys.front();
    // Host times reach about 400 years.
    if (lSpan > kMaxSpan) Refuse("The keyframe times span " + std::to_string(lSpan) + " s, more than 1e9 s");
    lSampling.mFramesPerSecond = pFramesPerSecond;
    if (pFramesPerSecond <= 0.0)
    {
        // The keys' own rate, or the whole number near it when that fits the keys as well.
        const double lRate =
            lKeys.size() > 1 ? static_cast<double>(lKeys.size() - 1) / lSpan : kFallbackFramesPerSecond;
        for (double lCandidate : {std::round(lRate), lRate})
            if (std::fabs(lCandidate - lRate) <= 1e-4 * lRate && EvenlySpaced(lKeys, lCandidate))
            {
                lSampling.mFramesPerSecond = lCandidate;
                lSampling.mTimes = std::move(lKeys);
                return lSampling;
            }
        lSampling.mUneven = true;
        lSampling.mFramesPerSecond = kFallbackFramesPerSecond;
    }
    const double lFrames = std::floor(lSpan * lSampling.mFramesPerSecond + 1e-6) + 1.0;
    if (!(lFrames <= kMaxFrames))
        Refuse("Sampling " + std::to_string(lSpan) + " s of motion at " + std::to_string(lSampling.mFramesPerSecond) +
               " frames per second gives more than 10000000 frames");
    for (int f = 0; f < static_cast<int>(lFrames); ++f)
        lSampling.mTimes.push_back(lFirst + f / lSampling.mFramesPerSecond);
    return lSampling;
}

// ---- Host scene ------------------------------------------------------------------------------

orvsdk::OrvAnimCurve* AddCurve(orvsdk::OrvNode* pNode, orvsdk::OrvProperty& pProperty, orvsdk::OrvAnimStack* pStack,
                               const std::string& pName, unsigned pChannel)
{
    orvsdk::OrvAnimCurve* lCurve = orvsdk::OrvAnimCurve::Create(pNode->GetScene(), pName.c_str());
    pProperty.GetCurveNode(pStack, true)->ConnectToChannel(lCurve, pChannel);
    return lCurve;
}

// Euler angles X, Y, Z (degrees, order X, Y, Z) of pRotation, each moved by whole turns to lie
// within 180 degrees of pPrevious.
OrvVector4 EulerAngles(const GltfQuaternion& pRotation, const OrvVector4* pPrevious)
{
    GltfTrs lTrs;
    lTrs.mRotation = pRotation;
    OrvVector4 lAngles = ComposeTrs(lTrs).GetR(orvsdk::OrvEuler::eOrderXYZ);
    if (pPrevious)
        for (int a = 0; a < 3; ++a) lAngles[a] += 360.0 * std::round(((*pPrevious)[a] - lAngles[a]) / 360.0);
    return lAngles;
}

// Keys the node's animated properties at every sample time.
void BuildCurves(orvsdk::OrvNode* pNode, const NodeTracks& pTracks, const GltfTrs& pRest, const Sampling& pSampling,
                 orvsdk::OrvAnimStack* pStack)
{
    static const char* const kAxes[3] = {"X", "Y", "Z"};
    orvsdk::OrvAnimCurve* lCurves[3][3] = {};
    orvsdk::OrvProperty* lProperties[3] = {&pNode->LclTranslation, &pNode->LclRotation, &pNode->LclScaling};
    const Track* lTracks[3] = {pTracks.mTranslation, pTracks.mRotation, pTracks.mScale};
    static const char* const kKinds[3] = {"_T", "_R", "_S"};
    for (int p = 0; p < 3; ++p)
        for (unsigned a = 0; lTracks[p] && a < 3; ++a)
            lCurves[p][a] =
                AddCurve(pNode, *lProperties[p], pStack, pNode->GetName() + std::string(kKinds[p]) + kAxes[a], a);

    orvsdk::OrvAnimCurveKey lKey;
    OrvVector4 lAngles;
    for (size_t f = 0; f < pSampling.mTimes.size(); ++f)
    {
        const double lTime = pSampling.mTimes[f];
        OrvVector4 lValues[3];
        if (lTracks[0])
        {
            const std::vector<double> lT = Evaluate(*lTracks[0], lTime);
            for (int a = 0; a < 3; ++a) lValues[0][a] = (lT[a] - pRest.mTranslation[a]) * kUnitsPerMetre;
        }
        if (lTracks[1])
        {
            const std::vector<double> lR = Evaluate(*lTracks[1], lTime);
            lAngles = EulerAngles({lR[0], lR[1], lR[2], lR[3]}, f > 0 ? &lAngles : nullptr);
            lValues[1] = lAngles;
        }
        if (lTracks[2])
        {
            const std::vector<double> lS = Evaluate(*lTracks[2], lTime);
            lValues[2] = OrvVector4(lS[0], lS[1], lS[2]);
        }
        const orvsdk::OrvTime lKeyTime = orvsdk::OrvTime::FromFrame(static_cast<double>(f), pSampling.mFramesPerSecond);
        for (int p = 0; p < 3; ++p)
            for (int a = 0; lTracks[p] && a < 3; ++a)
            {
                lKey.Set(lKeyTime, static_cast<float>(lValues[p][a]));
                lCurves[p][a]->KeyAdd(lKeyTime, lKey);
            }
    }
}

orvsdk::OrvNode* BuildNode(const tinygltf::Model& pModel, int pIndex, bool pTop, const Motion& pMotion,
                           const Sampling& pSampling, orvsdk::OrvAnimStack* pStack, orvsdk::OrvScene* pScene)
{
    const tinygltf::Node& lGltfNode = pModel.nodes[static_cast<size_t>(pIndex)];
    const GltfTrs lRest = RestTrs(lGltfNode, pIndex);
    const std::string lName = lGltfNode.name.empty() ? "node" + std::to_string(pIndex) : lGltfNode.name;
    orvsdk::OrvNode* lNode = orvsdk::OrvNode::Create(pScene, lName.c_str());
    orvsdk::OrvSkeleton* lSkeleton = orvsdk::OrvSkeleton::Create(pScene, "");
    lSkeleton->SetSkeletonType(pTop ? orvsdk::OrvSkeleton::eRoot : orvsdk::OrvSkeleton::eLimbNode);
    lNode->SetNodeAttribute(lSkeleton);
    lNode->SetRotationOffset(orvsdk::OrvNode::eSourcePivot, lRest.mTranslation * kUnitsPerMetre);
    lNode->SetRotationActive(true);
    lNode->SetRotationOrder(orvsdk::OrvNode::eSourcePivot, orvsdk::OrvEuler::eOrderXYZ);
    const OrvVector4 lAngles = EulerAngles(lRest.mRotation, nullptr);
    lNode->LclRotation.Set(lAngles.Buffer(), orvsdk::eOrvDouble3);
    lNode->LclScaling.Set(lRest.mScale.Buffer(), orvsdk::eOrvDouble3);
    const auto lTracks = pMotion.mByNode.find(pIndex);
    if (lTracks != pMotion.mByNode.end()) BuildCurves(lNode, lTracks->second, lRest, pSampling, pStack);
    return lNode;
}

std::string Plural(int pCount, const char* pWord)
{
    return std::to_string(pCount) + " " + pWord + (pCount == 1 ? "" : "s");
}

// The lines of a tinygltf message, each a message of pKind.
void ReportLines(orvsdk::OrvDiagnostics& pDiagnostics, const std::string& pText, bool pError)
{
    std::istringstream lLines(pText);
    for (std::string lLine; std::getline(lLines, lLine);)
    {
        if (lLine.empty()) continue;
        if (pError)
            pDiagnostics.Error(0, lLine);
        else
            pDiagnostics.Warning(0, [&lLine] { return lLine; });
    }
}

bool RefuseExternalFile(std::vector<unsigned char>*, std::string* pError, const std::string& pPath, void*)
{
    *pError = "External file " + pPath + " is not read from memory";
    return false;
}

// Loads pSize bytes (binary glTF when they start with its magic, JSON otherwise) into pModel;
// tinygltf's warnings and errors go to pDiagnostics. False when the file is refused.
bool LoadModel(const unsigned char* pBytes, size_t pSize, const std::string& pBaseDir, bool pExternalFiles,
               orvsdk::OrvDiagnostics& pDiagnostics, tinygltf::Model& pModel)
{
    tinygltf::TinyGLTF lLoader;
    if (!pExternalFiles)
        lLoader.SetFsCallbacks({&tinygltf::FileExists, &tinygltf::ExpandFilePath, &RefuseExternalFile,
                                &tinygltf::WriteWholeFile, nullptr});
    std::string lError, lWarning;
    const bool lBinary = pSize >= 4 && std::memcmp(pBytes, "glTF", 4) == 0;
    const unsigned int lSize = static_cast<unsigned int>(std::min<size_t>(pSize, 0xFFFFFFFFu));
    bool lLoaded = false;
    try
    {
        lLoaded = lBinary ? lLoader.LoadBinaryFromMemory(&pModel, &lError, &lWarning, pBytes, lSize, pBaseDir)
                          : lLoader.LoadASCIIFromString(&pModel, &lError, &lWarning,
                                                        reinterpret_cast<const char*>(pBytes), lSize, pBaseDir);
    }
    catch (const std::exception& lException)
    {
        lError = std::string("Not a glTF file: ") + lException.what();
    }
    ReportLines(pDiagnostics, lWarning, false);
    if (lLoaded) return true;
    ReportLines(pDiagnostics, lError, true);
    if (pDiagnostics.GetErrorCount() == 0) pDiagnostics.Error(0, "Not a glTF 2.0 file");
    return false;
}

// Warnings of what the host scene holds only approximately or not at all.
void WarnOfApproximations(const tinygltf::Model& pModel, const Motion& pMotion, const Sampling& pSampling,
                          orvsdk::OrvDiagnostics& pDiagnostics)
{
    const std::string lAnimation = "Animation \"" + pMotion.mName + "\": ";
    const auto lWarn = [&pDiagnostics, &lAnimation](int pCount, const char* pWhat, const char* pConsequence) {
        if (pCount > 0) pDiagnostics.Warning(0, [&] { return lAnimation + Plural(pCount, pWhat) + pConsequence; });
    };
    if (pSampling.mUneven)
        pDiagnostics.Warning(0, [&] {
            return lAnimation + "keyframe times not evenly spaced: sampled at 30 frames per second (see --fps)";
        });
    lWarn(pMotion.mStepSamplers, "STEP sampler", " sampled at the frame times");
    lWarn(pMotion.mCubicSamplers, "CUBICSPLINE sampler", " sampled at the frame times");
    lWarn(pMotion.mScaleChannels, "scale channel",
          " sampled into scaling curves, which BVH and ASF/AMC files do not carry");
    int lMorphPrimitives = 0;
    for (const tinygltf::Mesh& lMesh : pModel.meshes)
        for (const tinygltf::Primitive& lPrimitive : lMesh.primitives)
            lMorphPrimitives += !lPrimitive.targets.empty();
    if (lMorphPrimitives > 0 || pMotion.mWeightChannels > 0)
        pDiagnostics.Warning(0, [&] {
            return "Morph targets ignored (" + Plural(lMorphPrimitives, "primitive") + " with targets, " +
                   Plural(pMotion.mWeightChannels, "weight channel") + ")";
        });
}

// Builds the nodes of pOrder below pParent, with their curves, and fills pResult.
void BuildScene(const tinygltf::Model& pModel, const std::vector<int>& pParents, const std::vector<int>& pOrder,
                const Motion& pMotion, const Sampling& pSampling, orvsdk::OrvNode* pParent,
                orvsdk::OrvAnimStack* pStack, OrvGltfReadResult& pResult)
{
    std::map<int, orvsdk::OrvNode*> lBuilt;
    for (int lIndex : pOrder)
    {
        const bool lTop = lIndex == pOrder.front();
        orvsdk::OrvNode* lNode = BuildNode(pModel, lIndex, lTop, pMotion, pSampling, pStack, pParent->GetScene());
        (lTop ? pParent : lBuilt[pParents[static_cast<size_t>(lIndex)]])->AddChild(lNode);
        lBuilt[lIndex] = lNode;
        const auto lTracks = pMotion.mByNode.find(lIndex);
        pResult.mHasJointTranslation = pResult.mHasJointTranslation ||
                                       (!lTop && lTracks != pMotion.mByNode.end() && lTracks->second.mTranslation);
    }
    pResult.mSucceeded = true;
    pResult.mRoot = lBuilt[pOrder.front()];
    pResult.mJointCount = static_cast<int>(pOrder.size());
    pResult.mHasMotion = !pSampling.mTimes.empty();
    pResult.mFrameCount = static_cast<int>(pSampling.mTimes.size());
    pResult.mFramesPerSecond = pSampling.mFramesPerSecond;
}

} // namespace

OrvGltfReadResult OrvGltfReader::Read(const std::string& pPath, orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack,
                                      const OrvGltfReadSettings& pSettings)
{
    mDiagnostics.Reset(pPath);
    std::ifstream lFile(pPath, std::ios::binary);
    std::vector<unsigned char> lBytes;
    if (lFile && !std::filesystem::is_directory(pPath))
        lBytes.assign(std::istreambuf_iterator<char>(lFile), std::istreambuf_iterator<char>());
    if (!lFile || std::filesystem::is_directory(pPath) || lFile.bad())
    {
        mDiagnostics.Error(0, "Can't read glTF file " + pPath + ": " +
                                  std::strerror(std::filesystem::is_directory(pPath) ? EISDIR : errno));
        return OrvGltfReadResult();
    }
    const std::string lBaseDir = std::filesystem::path(pPath).parent_path().string();
    return ReadBytes(lBytes.data(), lBytes.size(), lBaseDir, true, pParent, pStack, pSettings);
}

OrvGltfReadResult OrvGltfReader::Read(const unsigned char* pBytes, size_t pSize, const std::string& pName,
                                      orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack,
                                      const OrvGltfReadSettings& pSettings)
{
    mDiagnostics.Reset(pName);
    return ReadBytes(pBytes, pSize, "", false, pParent, pStack, pSettings);
}

OrvGltfReadResult OrvGltfReader::ReadBytes(const unsigned char* pBytes, size_t pSize, const std::string& pBaseDir,
                                           bool pExternalFiles, orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack,
                                           const OrvGltfReadSettings& pSettings)
{
    OrvGltfReadResult lResult;
    tinygltf::Model lModel;
    if (!LoadModel(pBytes, pSize, pBaseDir, pExternalFiles, mDiagnostics, lModel)) return lResult;
    try
    {
        const std::vector<int> lParents = Parents(lModel);
        const std::vector<int> lOrder = SelectNodes(lModel, lParents);
        std::vector<bool> lRead(lModel.nodes.size(), false);
        for (int lNode : lOrder) lRead[static_cast<size_t>(lNode)] = true;
        const Motion lMotion = ReadMotion(lModel, lRead, pSettings.mAnimationName);
        const Sampling lSampling = PlanSampling(lMotion, pSettings.mFramesPerSecond);
        // Every node's rest transform is checked before anything is built.
        for (int lNode : lOrder) RestTrs(lModel.nodes[static_cast<size_t>(lNode)], lNode);
        WarnOfApproximations(lModel, lMotion, lSampling, mDiagnostics);
        BuildScene(lModel, lParents, lOrder, lMotion, lSampling, pParent, pStack, lResult);
    }
    catch (const Refusal& lRefusal)
    {
        mDiagnostics.Error(0, lRefusal.mText);
    }
    return lResult;
}

} // namespace orvasf
