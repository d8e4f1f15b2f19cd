#ifndef ORVASF_BVH_ORVBVHREADER_H
#define ORVASF_BVH_ORVBVHREADER_H

#include "bvh/OrvBvhExport.h"
#include "orvsdk/host/io/OrvTextFile.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orvsdk {
class OrvAnimStack;
class OrvNode;
} // namespace orvsdk

namespace orvasf {

/// Summary of one BVH read.
struct OrvBvhReadResult
{
    bool mSucceeded = false;          ///< the whole file was read without error
    orvsdk::OrvNode* mRoot = nullptr; ///< the ROOT joint's node; null unless the read succeeded
    int mJointCount = 0;              ///< ROOT and JOINT blocks
    int mEndSiteCount = 0;            ///< End Site blocks
    int mChannelCount = 0; ///< values on each frame line
    int mFrameCount = 0;   ///< frames read
    double mFrameTime = 0.0;           ///< seconds per frame, as the file states it
    double mFramesPerSecond = 0.0;     ///< 1 / mFrameTime: frame i is keyed at OrvTime::FromFrame(i, this)
    bool mHasJointTranslation = false; ///< a joint other than the ROOT has position channels
};

/// Reader of BVH motion files into a host scene.
///
/// The file is taken whole into memory, checked completely, and only then turned into host
/// objects, so a refused file leaves the scene as it was. Tokens may be separated by blanks and
/// tabs, lines may end in LF or CRLF, the last line needs no line end; keywords and channel names
/// are matched without regard to case. "Frames:" and "Frame Time:" may have any spacing around
/// the colon. OFFSET values sit on the OFFSET line, channel names on the CHANNELS line, and each
/// frame on a line of its own.
///
/// What is built below the given parent node, one node per ROOT or JOINT block, named exactly
/// like the joint (name-space prefixes such as "mixamorig:" kept):
///   - a skeleton attribute (ROOT eRoot, others eLimbNode);
///   - the OFFSET as the node's rotation offset, so that the local translation carries only the
///     position channels and the rest pose stays free of any frame's motion;
///   - rotation active, with the rotation order that the joint's rotation channels spell (see
///     OrvBvhChannels.h); no pre- or post-rotation;
///   - one curve per channel, connected to the matching channel of the local translation or
///     rotation in the given stack, keyed at every frame (values narrowed to float);
///   - for each End Site, a node named after its joint with "_End" appended, with a skeleton
///     attribute (eLimbNode) and the OFFSET as its rotation offset, and nothing else.
/// A node's local transform thus equals the BVH meaning: translation by OFFSET plus position
/// channels, then the rotation channels multiplied in list order.
///
/// Refused (an error message naming the file and line, nothing built): a file that does not
/// start with HIERARCHY and ROOT, a hierarchy that ends before its braces close, a joint without
/// name or OFFSET, an OFFSET without three finite numbers, a CHANNELS count outside 0 to 6 or
/// different from the names that follow, an unknown or repeated channel name, nesting deeper
/// than kMaxDepth, anything but MOTION after the hierarchy (one ROOT per file), a missing or
/// malformed "Frames:" or "Frame Time:" line, a frame line whose value count differs from the
/// channel count or holding something that is not a finite number, fewer frame lines than
/// "Frames:" announces. Text after the announced frames draws a warning and is ignored.
class ORVBVH_API OrvBvhReader
{
public:
    /// Deepest joint nesting read below the ROOT; a deeper file is refused.
    static constexpr int kMaxDepth = 256;

    OrvBvhReader();

    /// Reads the BVH file at pPath and builds its joints below pParent (not null), in its scene,
    /// with the curves in pStack (null: the scene's current stack, created as "Take 001" when
    /// there is none). mSucceeded tells whether the file was read; on failure nothing was
    /// created. The created objects belong to the scene. Costs the size of the file in memory,
    /// twice.
    OrvBvhReadResult Read(const char* pPath, orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack);
    /// The same from pSize bytes of text; pName stands for the file in messages.
    OrvBvhReadResult Read(const char* pText, size_t pSize, const char* pName, orvsdk::OrvNode* pParent,
                          orvsdk::OrvAnimStack* pStack);

    /// The warnings and errors of the last read; FormatMessage gives "FILE:LINE: error: TEXT".
    const orvsdk::OrvTextFile& GetFile() const { return mFile; }

private:
    struct Joint
    {
        std::string mName;
        int mParent = -1; // index in mJoints; -1 for the ROOT
        bool mEndSite = false;
        bool mHasOffset = false;
        bool mHasChannels = false;
        double mOffset[3] = {0.0, 0.0, 0.0};
        std::vector<int> mChannels; // EBvhChannel codes in file order
        int mFirstValue = 0;        // index of the first channel's value on a frame line
    };

    OrvBvhReadResult ReadOpened(orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack);
    void Reset();

    bool ReadHierarchy();
    bool ReadJoint(int pParent, int pDepth, bool pEndSite);
    bool ReadJointName(Joint& pJoint, int pParent, bool pEndSite);
    bool ReadJointItem(int pJoint, int pDepth);
    bool ReadOffset(Joint& pJoint);
    bool ReadChannels(Joint& pJoint);
    bool ReadMotionHeader();
    bool ReadFrames();
    bool ReadFrameLine(int pFrame);

    // Makes a token current, moving to the next line holding one when the current line has no
    // token left. False at the end of the file.
    bool NextTokenReady();
    // The current token, consumed.
    std::string TakeToken();
    // The tokens left on the current line joined by single blanks, consumed.
    std::string TakeLine();

    // The counts and rates of what was read.
    void Summarize(OrvBvhReadResult& pResult) const;
    void BuildNodes(orvsdk::OrvNode* pParent, orvsdk::OrvAnimStack* pStack, OrvBvhReadResult& pResult) const;
    void BuildCurves(const Joint& pJoint, orvsdk::OrvNode* pNode, orvsdk::OrvAnimStack* pStack) const;

    orvsdk::OrvTextFile mFile;
    std::vector<Joint> mJoints;  // ROOT first, a joint before its children, in file order
    std::vector<double> mValues; // frame after frame, mChannelCount values each
    int mChannelCount = 0;
    int mFrameCount = 0;
    double mFrameTime = 0.0;
};

} // namespace orvasf

#endif
