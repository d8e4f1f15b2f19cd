// The skeleton and motion pairs of the shared real data, as its README lists them.
#ifndef ORVASF_TESTS_SUPPORT_SHAREDMOTIONPAIRS_H
#define ORVASF_TESTS_SUPPORT_SHAREDMOTIONPAIRS_H

#include <cstddef>
#include <ostream>
#include <vector>

namespace shareddata {

struct MotionPair
{
    const char* mAsf;  // base name in asf/
    const char* mAmc;  // base name in amc/
};

inline void PrintTo(const MotionPair& pPair, std::ostream* pStream)
{
    *pStream << pPair.mAsf << " + " << pPair.mAmc;
}

inline constexpr MotionPair kMotionPairs[] = {
    {"cmu_01", "cmu_01_01"},
    {"cmu_11", "cmu_11_01"},
    {"cmu_07-walk", "cmu_07_05-walk"},
    {"cmu_07-walk", "cmu_07_12-walk"},
    {"cmu_09-run", "cmu_09_06-run"},
    {"cmu_131-dance", "cmu_131_04-dance"},
    {"mo_mjackson", "mo_131_04_crlf"},
    {"cmu_135-martialArts", "cmu_135_06-martialArts"},
    {"mo_martialwalk", "mo_135_02"},
    {"cmu_16", "cmu_16_15"},
    {"cmu02_fzzzz_walk_vs", "cmu02_02_01_walk"},
    {"cmu02_fzzzz_walk", "cmu02_fzzzz_walk_01_crlf"},
    {"mo_moderndance", "mo_md_walk"},
    {"mo_golf", "mo_golf_01"},
    {"cmu_01", "mo_null_pose"},  // a single frame; it fits any of the 30-bone skeletons
};

// Under the sanitizers the real-data suites leave the long motions out and check only every
// kSanitizedStride-th frame (and the last), which keeps them quick; what is skipped repeats what
// the checked frames cover.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif
inline constexpr size_t kSanitizedStride = 10;
inline constexpr size_t kSanitizedMaxFrames = 600;

// The frame indices to check of a motion of pFrameCount frames: all, or under the sanitizers
// every kSanitizedStride-th one and the last.
inline std::vector<size_t> FramesToCheck(size_t pFrameCount)
{
    std::vector<size_t> lFrames;
    for (size_t f = 0; f < pFrameCount; f += kSanitized ? kSanitizedStride : 1) lFrames.push_back(f);
    if (!lFrames.empty() && lFrames.back() != pFrameCount - 1) lFrames.push_back(pFrameCount - 1);
    return lFrames;
}

} // namespace shareddata

#endif
