#include "gltf/OrvGltfModel.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace orvasf {

namespace {

using orvsdk::OrvVector4;

// Bones get a width of this share of their length at the joint, tapering to half of it.
constexpr double kBoneWidth = 0.12;
// Half the side of the box that marks a skeleton without bones (metres).
constexpr double kMarkerHalf = 0.02;

OrvVector4 Cross(const OrvVector4& pA, const OrvVector4& pB)
{
    return OrvVector4(pA[1] * pB[2] - pA[2] * pB[1], pA[2] * pB[0] - pA[0] * pB[2], pA[0] * pB[1] - pA[1] * pB[0]);
}

double Dot3(const OrvVector4& pA, const OrvVector4& pB)
{
    return pA[0] * pB[0] + pA[1] * pB[1] + pA[2] * pB[2];
}

// The length of the UTF-8 sequence starting at pText (pLeft bytes), or 0 when none starts there.
size_t Utf8SequenceLength(const unsigned char* pText, size_t pLeft)
{
    const unsigned char lLead = pText[0];
    const size_t lLength = lLead < 0x80            ? 1
                           : (lLead >> 5) == 0x6  ? 2
                           : (lLead >> 4) == 0xE  ? 3
                           : (lLead >> 3) == 0x1E ? 4
                                                  : 0;
    if (lLength == 0 || lLength > pLeft || (lLength == 2 && lLead < 0xC2)) return 0;
    for (size_t i = 1; i < lLength; ++i)
        if ((pText[i] & 0xC0) != 0x80) return 0;
    return lLength;
}

} // namespace

std::string Utf8Name(const char* pName)
{
    const auto* lText = reinterpret_cast<const unsigned char*>(pName);
    const size_t lSize = std::strlen(pName);
    std::string lName;
    for (size_t i = 0; i < lSize;)
    {
        const size_t lLength = Utf8SequenceLength(lText + i, lSize - i);
        if (lLength > 0)
        {
            lName.append(pName + i, lLength);
            i += lLength;
            continue;
        }
        lName += static_cast<char>(0xC0 | (lText[i] >> 6));
        lName += static_cast<char>(0x80 | (lText[i] & 0x3F));
        ++i;
    }
    return lName;
}

// ---- Buffer ----------------------------------------------------------------------------------

int GltfBufferBuilder::AddAccessor(tinygltf::Model& pModel, const void* pBytes, size_t pSize, int pComponentType,
                                   int pType, size_t pCount, ETarget pTarget)
{
    mData.resize((mData.size() + 3) / 4 * 4, 0);
    tinygltf::BufferView lView;
    lView.buffer = 0;
    lView.byteOffset = mData.size();
    lView.byteLength = pSize;
    lView.target = pTarget;
    const auto* lBytes = static_cast<const unsigned char*>(pBytes);
    mData.insert(mData.end(), lBytes, lBytes + pSize);
    pModel.bufferViews.push_back(lView);

    tinygltf::Accessor lAccessor;
    lAccessor.bufferView = static_cast<int>(pModel.bufferViews.size()) - 1;
    lAccessor.componentType = pComponentType;
    lAccessor.type = pType;
    lAccessor.count = pCount;
    pModel.accessors.push_back(lAccessor);
    return static_cast<int>(pModel.accessors.size()) - 1;
}

int GltfBufferBuilder::AddFloats(tinygltf::Model& pModel, const std::vector<float>& pValues, int pType,
                                 ETarget pTarget, bool pBounds)
{
    const size_t lComponents = static_cast<size_t>(tinygltf::GetNumComponentsInType(static_cast<uint32_t>(pType)));
    const int lIndex = AddAccessor(pModel, pValues.data(), pValues.size() * sizeof(float),
                                   TINYGLTF_COMPONENT_TYPE_FLOAT, pType, pValues.size() / lComponents, pTarget);
    for (float lValue : pValues) mAllFinite = mAllFinite && std::isfinite(lValue);
    if (!pBounds) return lIndex;
    tinygltf::Accessor& lAccessor = pModel.accessors.back();
    lAccessor.minValues.assign(lComponents, std::numeric_limits<double>::infinity());
    lAccessor.maxValues.assign(lComponents, -std::numeric_limits<double>::infinity());
    for (size_t i = 0; i < pValues.size(); ++i)
    {
        double& lMin = lAccessor.minValues[i % lComponents];
        double& lMax = lAccessor.maxValues[i % lComponents];
        lMin = std::min(lMin, static_cast<double>(pValues[i]));
        lMax = std::max(lMax, static_cast<double>(pValues[i]));
    }
    return lIndex;
}

int GltfBufferBuilder::AddJointIndices(tinygltf::Model& pModel, const std::vector<uint16_t>& pJoints)
{
    return AddAccessor(pModel, pJoints.data(), pJoints.size() * sizeof(uint16_t),
                       TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT, TINYGLTF_TYPE_VEC4, pJoints.size() / 4, eVertices);
}

int GltfBufferBuilder::AddIndices(tinygltf::Model& pModel, const std::vector<uint32_t>& pIndices)
{
    return AddAccessor(pModel, pIndices.data(), pIndices.size() * sizeof(uint32_t),
                       TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT, TINYGLTF_TYPE_SCALAR, pIndices.size(), eIndices);
}

void GltfBufferBuilder::Finish(tinygltf::Model& pModel)
{
    tinygltf::Buffer lBuffer;
    lBuffer.data = std::move(mData);
    pModel.buffers.push_back(std::move(lBuffer));
    mData.clear();
}

// ---- Bone mesh -------------------------------------------------------------------------------

void GltfBoneMesh::AddBone(const OrvVector4& pFrom, const OrvVector4& pTo, int pJoint)
{
    const double lLength = (pTo - pFrom).Length();
    if (!(lLength > 1e-6)) return;
    AddBox(pFrom, pTo, kBoneWidth * lLength, 0.5 * kBoneWidth * lLength, pJoint);
}

void GltfBoneMesh::AddMarker(const OrvVector4& pAt, int pJoint)
{
    AddBox(pAt - OrvVector4(0.0, kMarkerHalf, 0.0), pAt + OrvVector4(0.0, kMarkerHalf, 0.0), kMarkerHalf, kMarkerHalf,
           pJoint);
}

void GltfBoneMesh::AddBox(const OrvVector4& pFrom, const OrvVector4& pTo, double pNearHalf, double pFarHalf,
                          int pJoint)
{
    OrvVector4 lAxis = pTo - pFrom;
    lAxis[3] = 0.0;
    lAxis.Normalize();
    // A side direction across the bone: the world axis least aligned with it, made perpendicular.
    const int lLeast = std::fabs(lAxis[0]) <= std::fabs(lAxis[1]) && std::fabs(lAxis[0]) <= std::fabs(lAxis[2]) ? 0
                       : std::fabs(lAxis[1]) <= std::fabs(lAxis[2])                                           ? 1
                                                                                                              : 2;
    OrvVector4 lWorldAxis;
    lWorldAxis[lLeast] = 1.0;
    OrvVector4 lSide = Cross(lAxis, lWorldAxis);
    lSide.Normalize();
    const OrvVector4 lUp = Cross(lAxis, lSide);

    // Corners 0-3 around pFrom, 4-7 around pTo, in the same turning sense.
    const double lSigns[4][2] = {{1, 1}, {-1, 1}, {-1, -1}, {1, -1}};
    OrvVector4 lCorners[8];
    for (int i = 0; i < 4; ++i)
    {
        const OrvVector4 lOffset = lSide * lSigns[i][0] + lUp * lSigns[i][1];
        lCorners[i] = pFrom + lOffset * pNearHalf;
        lCorners[i + 4] = pTo + lOffset * pFarHalf;
    }
    OrvVector4 lCentre = (pFrom + pTo) * 0.5;
    const int lFaces[6][4] = {{0, 1, 2, 3}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};
    for (const auto& lFace : lFaces)
    {
        const OrvVector4 lQuad[4] = {lCorners[lFace[0]], lCorners[lFace[1]], lCorners[lFace[2]], lCorners[lFace[3]]};
        AddQuad(lQuad, lCentre, pJoint);
    }
}

void GltfBoneMesh::AddQuad(const OrvVector4* pCorners, const OrvVector4& pCentre, int pJoint)
{
    OrvVector4 lNormal = Cross(pCorners[1] - pCorners[0], pCorners[2] - pCorners[0]);
    lNormal[3] = 0.0;
    lNormal.Normalize();
    // Wind the quad so that its normal points away from the box's centre.
    const bool lOutward = Dot3(lNormal, pCorners[0] - pCentre) >= 0.0;
    if (!lOutward) lNormal = lNormal * -1.0;
    const uint32_t lFirst = static_cast<uint32_t>(mPositions.size() / 3);
    for (int i = 0; i < 4; ++i)
    {
        for (int a = 0; a < 3; ++a)
        {
            mPositions.push_back(static_cast<float>(pCorners[i][a]));
            mNormals.push_back(static_cast<float>(lNormal[a]));
        }
        mJoints.insert(mJoints.end(), {static_cast<uint16_t>(pJoint), 0, 0, 0});
        mWeights.insert(mWeights.end(), {1.0f, 0.0f, 0.0f, 0.0f});
    }
    const uint32_t lOrder[2][6] = {{0, 1, 2, 0, 2, 3}, {0, 2, 1, 0, 3, 2}};
    for (uint32_t lCorner : lOrder[lOutward ? 0 : 1]) mIndices.push_back(lFirst + lCorner);
}

} // namespace orvasf
