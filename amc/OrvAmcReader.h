#ifndef ORVASF_AMC_ORVAMCREADER_H
#define ORVASF_AMC_ORVAMCREADER_H

#include "amc/OrvAmcExport.h"
#include "amc/OrvAmcSamplingPipeline.h"
#include "orvsdk/host/io/OrvDiagnostics.h"
#include "orvsdk/host/core/OrvTime.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace orvsdk {
class OrvAsfScene;
class OrvAsfNode;
}

namespace orvasf {

/// How a motion file is turned into keys.
struct OrvAmcReadSettings
{
    double mFramesPerSecond = 120.0; ///< frame i of the file is keyed at i / mFramesPerSecond seconds
    ///@{
    /// The two set-up flags; they must be the ones the skeleton was read with and the ones node
    /// building will get, so that keys and node settings add up.
    bool mUseRotationOffset = false;
    bool mUsePreRotation = false;
    ///@}
    /// True: every bone line becomes keys (a sampling run on the skeleton). False: validation
    /// mode: the file is read, split into values and checked exactly as in a run, with the same
    /// messages and result, but the skeleton is only read, never sampled (no curves needed, none
    /// touched); about six times faster than a run.
    bool mSampleValues = true;
    /// Threads that sample bone lines while the file is read on the calling thread: 1 samples on
    /// the calling thread; 0 takes one per core. The keys are the same whatever the count. Files
    /// of fewer than about 300 frames are always sampled on the calling thread.
    int mThreads = 1;
    /// Called now and then with the bytes consumed so far and the file size (0 when unknown).
    std::function<void(uint64_t pDone, uint64_t pTotal)> mProgress;
    /// Called, when set, for every line of a known bone once its values are checked: the index
    /// of its frame (frame number minus the first frame's), the bone, and the pCount values as the
    /// file writes them (before any unit conversion; under ":FORCE-ALL-JOINTS-BE-3DOF" the
    /// ignored ones included).
    std::function<void(int64_t pFrameIndex, const orvsdk::OrvAsfNode& pBone, const double* pValues, int pCount)>
        mBoneLine;
};

/// Summary of one read.
struct OrvAmcReadResult
{
    bool mSucceeded = false;  ///< the whole file was read without error
    int mFrameCount = 0;      ///< frames read
    int mFirstFrame = 0;  ///< frame number of the first frame in the file
    int mLastFrame = 0;   ///< frame number of the last frame read
    bool mRadians = false;  ///< the file said ":RADIANS"
    bool mAllJointsThreeDof = false;  ///< the file said ":FORCE-ALL-JOINTS-BE-3DOF"
    ///@{
    /// The warnings (the first OrvDiagnostics::kMaxKeptWarnings of them, then a note that the
    /// others are not reported) and the error that ended the read, if any, in the order met.
    std::vector<orvsdk::OrvMessage> mMessages;
    int mWarningCount = 0;  ///< warnings met, kept in mMessages or not
    ///@}
};

/// Reader of Acclaim AMC motion files. It streams the file (memory stays bounded by the curves
/// being built, whatever the file's size) and drives one sampling run on the skeleton: the root's
/// StartSamplingData, one AddSampleFromDOF per bone line, the root's StopSamplingData.
///
/// File shape: optional header lines (":FULLY-SPECIFIED", ":DEGREES" or ":RADIANS",
/// ":FORCE-ALL-JOINTS-BE-3DOF", '#' comments), then frames, each a frame-number line followed by
/// one line per bone: the bone's name and one value per entry of its DOF list, in the list's
/// order. Under ":FORCE-ALL-JOINTS-BE-3DOF" a bone line holds three values, or its DOF count when
/// that is larger (the root's six): the first ones are the bone's DOFs in list order, the rest are
/// checked as numbers and ignored. Bone lines may come in any order; blanks are spaces and tabs;
/// lines end with LF or CRLF, mixed freely, the last one maybe without; '#' starts a comment
/// whose bytes are not looked at, except that no line may hold a NUL byte. A UTF-8 byte order mark
/// at the start is skipped. Frame times are (frame number - first frame number) / frames
/// per second. Translations are scaled by 2.54 / the skeleton's length unit (centimetres, like
/// bone lengths); rotations by 180 / pi under ":RADIANS", else by the skeleton's angle unit.
/// Values are read exactly as std::from_chars reads them (the nearest double), an optional
/// leading '+' allowed.
///
/// Cost: linear in the file's size, with a fixed amount of memory besides the keys; the lines of
/// known bones allocate nothing. Once the first frame is read, the curves make room for as many
/// frames as the file's size suggests, so that they grow without copying.
///
/// Errors end the read: a frame line that is not a whole integer, a frame number that does not
/// rise, a value that is not a number, a value count that differs from the bone's DOF list, a
/// bone line before the first frame, a line longer than kMaxLineLength, a line holding a NUL byte,
/// a file starting with a UTF-16 byte order mark (at line 1), a file without frames (at its last
/// line, 0 when it is empty), an unreadable file. Messages are kept as OrvDiagnostics keeps them,
/// with the same texts for NUL bytes and UTF-16 as every text reader. After an error the run is still closed (StopSamplingData), but the caller must not
/// build nodes from it.
///
/// A bone name the skeleton does not have draws one warning and its lines are skipped. Memory for
/// messages stays bounded whatever the file: the first kMaxUnknownBones unknown names are
/// remembered; the lines of any further one are skipped too, each counting as a warning, and only
/// the first OrvDiagnostics::kMaxKeptWarnings warnings are kept.
class ORVAMC_API OrvAmcReader
{
public:
    /// Longest line read, in bytes; a longer one is an error.
    static constexpr size_t kMaxLineLength = 1 << 20;
    /// Unknown bone names remembered, each warned about once.
    static constexpr size_t kMaxUnknownBones = orvsdk::OrvDiagnostics::kMaxKeptWarnings;

    /// Reads the file at pPath into pScene's skeleton. The skeleton must hold a root whose curves
    /// were created (CreateDataFromDOF). mSucceeded tells whether the whole file was read.
    OrvAmcReadResult Read(const char* pPath, orvsdk::OrvAsfScene& pScene, const OrvAmcReadSettings& pSettings);
    /// The same from pSize bytes of text in memory; pName stands for the file in messages.
    OrvAmcReadResult Read(const char* pText, size_t pSize, const char* pName, orvsdk::OrvAsfScene& pScene,
                          const OrvAmcReadSettings& pSettings);

    /// Reads a whole value token as the reader does: true with the nearest double (the value
    /// std::from_chars gives) for a decimal number or an infinity, an optional leading '+'
    /// allowed; false, pValue unchanged, for anything else (NaN included). Plain decimals whose
    /// digits make an integer up to 2^53, with exponents within +-22, take a short path that
    /// gives the same bits.
    static bool ParseValue(std::string_view pToken, double& pValue);

private:
    struct LineSlot
    {
        std::string_view mName;               // the bone's name, or the unknown name met there
        orvsdk::OrvAsfNode* mBone = nullptr;  // null for an unknown name
        int mShare = 0;                       // which sampling thread keys the bone
    };

    OrvAmcReadResult ReadStream(std::FILE* pFile, uint64_t pSize, orvsdk::OrvAsfScene& pScene,
                                const OrvAmcReadSettings& pSettings);
    enum class ELineResult
    {
        eLine,
        eEnd,
        eTooLong,
        eNulByte,
        eUtf16,
        eReadError
    };
    ELineResult ReadLine(std::FILE* pFile, std::string_view& pLine);
    bool FillBuffer(std::FILE* pFile);
    void ReportLineFault(ELineResult pResult);
    bool HandleLine(std::string_view pLine, const OrvAmcReadSettings& pSettings);
    bool HandleHeader(std::string_view pToken);
    bool HandleFrameNumber(std::string_view pToken, std::string_view pRest, const OrvAmcReadSettings& pSettings);
    bool HandleBoneLine(std::string_view pName, std::string_view pRest, const OrvAmcReadSettings& pSettings);
    int ExpectedValueCount(const orvsdk::OrvAsfNode& pBone) const;
    void ReserveKeys() const;
    void StartPipeline(const OrvAmcReadSettings& pSettings);
    LineSlot ResolveBone(std::string_view pName);
    LineSlot LookUpBone(std::string_view pName);
    void IndexBones(orvsdk::OrvAsfNode* pRoot);
    OrvAmcReadResult Refuse(std::string pText);
    void Fail(std::string pText);

    orvsdk::OrvDiagnostics mDiagnostics;
    std::vector<char> mBuffer;  // a window of the file; holds at least one whole line
    size_t mBufferStart = 0;
    size_t mBufferEnd = 0;
    size_t mNulAt = 0;  // offset in mBuffer of the first NUL byte read; SIZE_MAX when none
    bool mEndOfInput = false;
    int mLineNumber = 0;
    uint64_t mBytesRead = 0;
    uint64_t mSize = 0;             // of the whole file; 0 when unknown
    uint64_t mFirstFrameStart = 0;  // bytes before the first frame's bone lines

    std::unordered_map<std::string_view, LineSlot> mBones;
    std::unordered_set<std::string> mUnknownBones;  // at most kMaxUnknownBones
    std::vector<LineSlot> mLinePrediction;  // the bone of each of the first lines of the last frame
    size_t mLineInFrame = 0;

    bool mInFrames = false;
    bool mAllJointsThreeDof = false;
    int mFrameNumber = 0;
    orvsdk::OrvTime mFrameTime;
    double mTranslationFactor = 1.0;
    double mRotationFactor = 1.0;
    std::unique_ptr<OrvAmcSamplingPipeline> mPipeline;  // while lines are sampled on other threads
    OrvAmcReadResult mResult;
};

} // namespace orvasf

#endif
