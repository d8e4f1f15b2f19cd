#include "tools/orvasf/NpyWriter.h"

#include "orvsdk/host/scene/OrvNode.h"
#include "orvsdk/host/scene/OrvPoseEvaluator.h"
#include "tools/orvasf/OutputText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace orvasf::tool {

namespace {

// Appends the IEEE 754 bits of pValue as float32, least significant byte first, whatever the
// machine's byte order.
void AppendFloat32(std::string& pBytes, double pValue)
{
    const float lValue = static_cast<float>(pValue);
    uint32_t lBits = 0;
    std::memcpy(&lBits, &lValue, sizeof(lBits));
    for (int lShift = 0; lShift < 32; lShift += 8) pBytes += static_cast<char>((lBits >> lShift) & 0xFFu);
}

// Python's text of a tuple: "(240, 26, 3)", or "(5,)" for one element.
std::string TupleText(const std::vector<size_t>& pShape)
{
    std::string lText = "(";
    for (size_t i = 0; i < pShape.size(); ++i) lText += (i > 0 ? ", " : "") + std::to_string(pShape[i]);
    return lText + (pShape.size() == 1 ? ",)" : ")");
}

bool WriteArray(const std::string& pPath, const orvsdk::OrvPoseEvaluator& pEvaluator, const OrvExportFrames& pFrames)
{
    const size_t lJoints = static_cast<size_t>(pEvaluator.GetNodeCount());
    OutputText lOutput("NPY");
    if (!lOutput.Open(pPath)) return false;
    bool lWritten = lOutput.Write(NpyFloat32Header({static_cast<size_t>(pFrames.mFrameCount), lJoints, 3}));
    // Frames are evaluated a block at a time, so memory stays bounded for long motions.
    constexpr int kBlock = 256;
    std::vector<double> lPositions;
    std::string lBytes;
    for (int lFirst = 0; lFirst < pFrames.mFrameCount && lWritten; lFirst += kBlock)
    {
        const int lCount = std::min(kBlock, pFrames.mFrameCount - lFirst);
        lPositions.resize(static_cast<size_t>(lCount) * lJoints * 3);
        pEvaluator.EvaluatePositionFrames(lFirst, lCount, pFrames.mFramesPerSecond, lPositions.data());
        lBytes.clear();
        for (double lCentimetres : lPositions) AppendFloat32(lBytes, lCentimetres / 100.0);
        lWritten = lOutput.Write(lBytes);
    }
    return lOutput.Close() && lWritten;
}

bool WriteDescription(const std::string& pPath, const orvsdk::OrvPoseEvaluator& pEvaluator,
                      const OrvExportFrames& pFrames)
{
    nlohmann::json lJoints = nlohmann::json::array();
    for (const orvsdk::OrvNode* lNode : pEvaluator.GetNodes()) lJoints.push_back(lNode->GetName());
    const nlohmann::json lDescription = {{"joints", lJoints},
                                         {"parents", pEvaluator.GetParents()},
                                         {"fps", pFrames.mFramesPerSecond},
                                         {"frames", pFrames.mFrameCount},
                                         {"units", "m"}};
    OutputText lOutput("JSON");
    if (!lOutput.Open(pPath)) return false;
    const bool lWritten =
        lOutput.Write(lDescription.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
    return lOutput.Close() && lWritten;
}

} // namespace

std::string NpyFloat32Header(const std::vector<size_t>& pShape)
{
    std::string lDictionary =
        "{'descr': '<f4', 'fortran_order': False, 'shape': " + TupleText(pShape) + ", }";
    // magic (6) + version (2) + length (2) + dictionary + line break, to a multiple of 64
    constexpr size_t kPrefix = 10;
    const size_t lUnpadded = kPrefix + lDictionary.size() + 1;
    lDictionary.append((64 - lUnpadded % 64) % 64, ' ');
    lDictionary += '\n';
    const size_t lLength = lDictionary.size();
    std::string lHeader("\x93NUMPY\x01\x00", 8);
    lHeader += static_cast<char>(lLength & 0xFFu);
    lHeader += static_cast<char>((lLength >> 8) & 0xFFu);
    return lHeader + lDictionary;
}

bool WritePositionArray(const std::string& pArrayPath, const std::string& pDescriptionPath,
                        const OrvImportResult& pImport, const OrvExportFrames& pFrames)
{
    const orvsdk::OrvPoseEvaluator lEvaluator(pImport.mRoot, pImport.mTake);
    return WriteArray(pArrayPath, lEvaluator, pFrames) && WriteDescription(pDescriptionPath, lEvaluator, pFrames);
}

} // namespace orvasf::tool
