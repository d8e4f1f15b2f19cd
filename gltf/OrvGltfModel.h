// The glTF document model (tinygltf) and the pieces the writer builds it from: names, the binary
// buffer and the figure's mesh.
#ifndef ORVASF_GLTF_ORVGLTFMODEL_H
#define ORVASF_GLTF_ORVGLTFMODEL_H

// No image is read or written: a skeleton file carries none.
#define TINYGLTF_NO_STB_IMAGE
#define TINYGLTF_NO_STB_IMAGE_WRITE
#define TINYGLTF_NO_EXTERNAL_IMAGE
#include <tiny_gltf.h>

#include "orvsdk/host/math/OrvVector4.h"

#include <cstdint>
#include <vector>

namespace orvasf {

// pName as valid UTF-8, as glTF strings must be: bytes that do not form UTF-8 are taken as Latin-1.
std::string Utf8Name(const char* pName);

// Collects the accessors' data into the model's one buffer, one buffer view per accessor, each
// starting on a 4-byte boundary.
class GltfBufferBuilder
{
public:
    enum ETarget
    {
        eNoTarget = 0,
        eVertices = TINYGLTF_TARGET_ARRAY_BUFFER,
        eIndices = TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER
    };

    // An accessor of float elements of pType (TINYGLTF_TYPE_...) holding pValues; with pBounds it
    // states each component's minimum and maximum. Its index.
    int AddFloats(tinygltf::Model& pModel, const std::vector<float>& pValues, int pType, ETarget pTarget, bool pBounds);
    // Vertex joint indices, 4 per vertex, as unsigned shorts.
    int AddJointIndices(tinygltf::Model& pModel, const std::vector<uint16_t>& pJoints);
    // Triangle vertex indices as unsigned 32-bit integers.
    int AddIndices(tinygltf::Model& pModel, const std::vector<uint32_t>& pIndices);
    // Moves the collected bytes into the model as its buffer 0.
    void Finish(tinygltf::Model& pModel);
    // Whether every float added so far is a finite number.
    bool AllFinite() const { return mAllFinite; }

private:
    int AddAccessor(tinygltf::Model& pModel, const void* pBytes, size_t pSize, int pComponentType, int pType,
                    size_t pCount, ETarget pTarget);

    std::vector<unsigned char> mData;
    bool mAllFinite = true;
};

// A mesh that draws bones: vertices in world space (metres), each weighted 1.0 to one joint, with
// flat normals; triangles wound counter-clockwise seen from outside.
struct GltfBoneMesh
{
    // A tapered box from pFrom to pTo weighted to joint pJoint; nothing when the two coincide.
    void AddBone(const orvsdk::OrvVector4& pFrom, const orvsdk::OrvVector4& pTo, int pJoint);
    // A small box around pAt, for a skeleton without a single bone.
    void AddMarker(const orvsdk::OrvVector4& pAt, int pJoint);
    bool IsEmpty() const { return mIndices.empty(); }

    std::vector<float> mPositions; // 3 per vertex
    std::vector<float> mNormals;   // 3 per vertex
    std::vector<uint16_t> mJoints; // 4 per vertex
    std::vector<float> mWeights;   // 4 per vertex
    std::vector<uint32_t> mIndices;

private:
    // A box whose end faces are squares of half-widths pNearHalf at pFrom and pFarHalf at pTo.
    void AddBox(const orvsdk::OrvVector4& pFrom, const orvsdk::OrvVector4& pTo, double pNearHalf, double pFarHalf,
                int pJoint);
    void AddQuad(const orvsdk::OrvVector4* pCorners, const orvsdk::OrvVector4& pCentre, int pJoint);
};

} // namespace orvasf

#endif
