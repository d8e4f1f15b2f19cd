#ifndef ORVSDK_ASF_ORVFILEACCLAIMASF_H
#define ORVSDK_ASF_ORVFILEACCLAIMASF_H

#include "orvsdk/OrvSdkExport.h"
#include "orvsdk/host/io/OrvTextFile.h"

#include <string_view>
#include <unordered_map>

namespace orvsdk {

class OrvAsfNode;
class OrvAsfScene;

/// An Acclaim ASF skeleton file: reads one into an OrvAsfScene and writes one out.
///
/// Open the file through the OrvTextFile base (Open for reading, Create for writing), then call
/// Read or Write once. The class never owns the scene it is given. Each instance keeps its own
/// keyword match counters, so different instances may read at the same time on different
/// threads; one instance is used by one thread at a time.
///
/// Where the members are defined, by group: Read, its section walk and the small sections
/// (":version", ":name", ":units", ":documentation", ":skin") in asf/OrvFileAcclaimAsf.cpp;
/// ":root" and ":bonedata" in asf/OrvFileAcclaimAsfBones.cpp; ":hierarchy" in
/// asf/OrvFileAcclaimAsfHierarchy.cpp; Write and its sections in asf/OrvFileAcclaimAsfWriter.cpp.
class ORVSDK_API OrvFileAcclaimAsf : public OrvTextFile
{
public:
    /// The deepest a bone of a read skeleton may lie, counted in bones below the root (the root's
    /// children lie at depth 1). A hierarchy that would place a bone deeper is refused with the
    /// error "Bone NAME lies deeper than 1000 bones below the root", so no walk over a tree read
    /// from a file, in this module or in its callers, meets a deeper one.
    static constexpr int kMaxBoneDepth = 1000;

    /// pEchoMessages: print every warning and error on standard error as well.
    explicit OrvFileAcclaimAsf(bool pEchoMessages);
    /// Closes the file.
    ~OrvFileAcclaimAsf() override;

    /// Reads the whole file into pScene, which the caller has constructed empty, then sets up
    /// every bone's rest pose with the two set-up flags (see OrvAsfNode::SetupPosition) and, with
    /// pRemoveDummy, removes the bones without degrees of freedom. True when the file held a
    /// root section and no section was refused (the last message tells why, unless the file
    /// ended where it may not, or held no root). On false the scene keeps what was read so far
    /// (name, units, root and attached bones) without rest values; the caller owns it either way.
    /// Cost: linear in the file's size for skeletons whose bone names are unique, times the
    /// depth (at most kMaxBoneDepth) for the hierarchy lines; a name that several bones share is
    /// looked up by a search of the whole tree.
    bool Read(OrvAsfScene* pScene, bool pRemoveDummy, bool pUseRotationOffset, bool pUsePreRotation);

    /// Writes pScene (its mRoot must be set) as an ASF file: header, root, one block per bone in
    /// depth-first pre-order, hierarchy. True when every piece was printed; false once the file
    /// reported an output error. The file is completed only by Close, whose result counts too.
    /// Works at any depth (no recursion).
    bool Write(OrvAsfScene* pScene);

    ///@{
    /// Keyword tables; a keyword's code is its index. Each ends with a record whose keyword is "".
    static const TextToken smMain[];      ///< section keywords; ":" catches any other ':' word
    static const TextToken smUnits[];
    static const TextToken smAngle[];
    static const TextToken smRoot[];
    static const TextToken smGroup[];     ///< "begin", "end"
    static const TextToken smBoneData[];
    static const TextToken smDof[];       ///< DOF codes; "l" is recognised, never stored
    static const TextToken smOrder[];     ///< the root's order list
    static const TextToken smAxis[];      ///< axis order words
    static const char* const smType;      ///< "ASF"
    static const char* const smCom;       ///< "#"
    static const char* const smDel;       ///< token delimiters
    ///@}

private:
    // Codes of the keyword tables (their indices).
    enum EMain { eVersion, eName, eUnits, eDocumentation, eRoot, eBoneData, eHierarchy, eSkin, eUnknownSection };
    enum EUnits { eMass, eLength, eAngle };
    enum EAngle { eDegrees, eRadians };
    enum ERoot { eRootAxis, eRootOrder, eRootPosition, eRootOrientation };
    enum EGroup { eBegin, eEnd };
    enum EBoneData { eId, eBoneName, eDirection, eBoneLength, eBoneAxis, eDof, eLimits, eBodyMass, eCofMass };
    enum EDof { eLengthDof = 6 };

    // Walks the file section by section; false when a section reader refused it.
    bool ReadSections();

    // Section readers: each is entered on its keyword's line with the keyword consumed and, when
    // it returns true, leaves the next section keyword's line current or the end of the file
    // reached. False means the file is refused: after an error, after ReadName's warning, or at
    // an end of the file where the section may not end.
    bool ReadVersion();
    bool ReadName();
    bool ReadUnits();
    bool ReadDocumentation();
    bool ReadRoot();
    bool ReadBoneData();
    bool ReadHierarchy();
    bool ReadSkin();

    // One line of :units (or of the lines after :name), by its keyword code.
    void ReadUnitLine(int pKeyword);
    // The next number as a unit factor into pUnit; false, pUnit unchanged, when it is missing,
    // not a number or infinite.
    bool GetUnit(double& pUnit);
    // Skips lines until the next section keyword (true) or the end of the file (false).
    bool SkipToSection();
    // Skips the rest of an unknown section, up to the next line that begins with ':'.
    void SkipUnknownSection();

    // One :root line, by its keyword code; false after an error.
    bool ReadRootLine(OrvAsfNode* pRoot, int pKeyword);
    void ReadOrderList(OrvAsfNode* pRoot);
    // The axis order word after "axis" into pBone's mAxisOrder; false after an error.
    bool ReadAxisOrder(OrvAsfNode* pBone);

    // One bone block, entered on its "begin" line with "begin" consumed; leaves current the line
    // that ended the block ("end" or the next "begin"). On success the bone hangs at the end of
    // the root's children.
    bool ReadBone();
    bool ReadBoneLine(OrvAsfNode* pBone, int pKeyword);
    bool ReadBoneName(OrvAsfNode* pBone);
    bool ReadBoneDirection(OrvAsfNode* pBone);
    bool ReadBoneLength(OrvAsfNode* pBone);
    bool ReadBoneAxis(OrvAsfNode* pBone);
    void ReadDofList(OrvAsfNode* pBone);
    bool ReadLimits(OrvAsfNode* pBone);
    bool FinishBone(OrvAsfNode* pBone);
    // Destroys a bone the reader gave up on; always false.
    static bool DiscardBone(OrvAsfNode* pBone);
    // Appends pCode to pBone's DOF list unless the list is full; warns (once per line, flagged
    // in pWarned) about the name that does not fit.
    void AppendDof(OrvAsfNode* pBone, int pCode, const char* pName, bool& pWarned);

    // :hierarchy block lines.
    bool ReadHierarchyLines();
    bool ReadHierarchyBlock();
    bool ReadFamilyLine();
    bool MoveUnderParent(OrvAsfNode* pParent, const char* pChildName);
    // False, with an error, when moving pChild (now under the root) below pParent would put a
    // bone deeper than kMaxBoneDepth.
    bool CheckDepthBelow(const OrvAsfNode* pParent, const OrvAsfNode* pChild);
    // Records that pChild's subtree now hangs below pParent, for the depth checks.
    void RaiseSubtreeHeights(const OrvAsfNode* pParent, const OrvAsfNode* pChild);
    int SubtreeHeight(const OrvAsfNode* pBone) const;
    // A bone at the bottom of pBone's subtree.
    const OrvAsfNode* DeepestBoneBelow(const OrvAsfNode* pBone) const;

    // Name look-up for the hierarchy: the same bone as mRoot->Find(pName), found through the
    // name index when the name is unique.
    OrvAsfNode* FindBone(const char* pName);
    // Enters a bone just attached to the tree into the name index.
    void IndexBone(OrvAsfNode* pBone);
    // Takes out of the root's children the entries of bones moved below another parent; until
    // then those entries are stale and the tree must not be walked through the root.
    void DropMovedRootEntries();
    void ForgetReadState();

    // Writer pieces; each returns false once printing failed.
    bool WriteHeader();
    bool WriteRoot();
    bool WriteBoneData();
    bool WriteBone(const OrvAsfNode* pBone, int pId);
    bool WriteLimits(const OrvAsfNode* pBone);
    bool WriteHierarchy();
    bool WriteFamily(const OrvAsfNode* pBone);

    OrvAsfScene* mAsfScene = nullptr;  // the scene being read or written; not owned

    // Read state, emptied when Read returns. Every bone of the tree by name; null for a name
    // that more than one bone carries. The keys are the bones' own name buffers.
    std::unordered_map<std::string_view, OrvAsfNode*> mBonesByName;
    // Height of the subtree of each bone that has children below it (bones in a chain below it).
    std::unordered_map<const OrvAsfNode*, int> mSubtreeHeights;
    // Entries of the root's children whose bones the hierarchy has moved elsewhere.
    int mMovedRootEntries = 0;
};

} // namespace orvsdk

#endif
