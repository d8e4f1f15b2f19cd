// ASF reader: the driver and every section reader, one table row per kind of text.

#include "AsfTestSupport.h"

#include "orvsdk/host/core/OrvMemory.h"
#include "support/HostSceneSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>

using namespace orvsdk;
using namespace orvsdk::asftest;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

namespace {

const std::string kRoot =
    ":root\n"
    "  order TX TY TZ RX RY RZ\n"
    "  axis XYZ\n"
    "  position 1 2 3\n"
    "  orientation 10 20 30\n";

std::string Hierarchy(const std::string& pLines = "")
{
    return ":hierarchy\n  begin\n" + pLines + "  end\n";
}

// root -> lhip -> lfemur -> ltibia once the hierarchy is read; all under root before.
const std::string kLegBones = ":bonedata\n" + BoneBlock("lhip") + BoneBlock("lfemur") + BoneBlock("ltibia");
const std::string kLegHierarchy = Hierarchy("    root lhip\n    lhip lfemur\n    lfemur ltibia\n");
const std::string kLegTree = "root(lhip(lfemur(ltibia)))";

const OrvAsfNode& Bone(const OrvAsfScene& pScene, const char* pName)
{
    return *pScene.mRoot->Find(pName);
}

std::string Tree(const OrvAsfScene& pScene)
{
    return pScene.mRoot ? TreeText(pScene.mRoot) : "no root";
}

// One text: whether it is read, the messages in order, the tree, and further values to check.
struct ReadCase
{
    const char* mBehaviour;
    std::string mText;
    bool mRead;
    std::vector<std::string> mMessages;
    std::string mTree;
    std::function<void(const OrvAsfScene&)> mCheck = nullptr;
};

const std::string l49(49, 'a');

const ReadCase kReadCases[] = {
    // --- Driver
    {"well-formed file",
     ":version 1.10\n:name walker\n:units\n  mass 1.0\n  length 1.0\n  angle deg\n:documentation\n  free text\n"
     "  more text\n" + kRoot + kLegBones + kLegHierarchy,
     true, {}, kLegTree, [](const OrvAsfScene& s) { EXPECT_STREQ(s.mName, "walker"); }},
    {"unknown words and sections skipped to the next section",
     "stray words\nmore words\n:foo\n  length 3\n:units\n  length 2\n" + kRoot + Hierarchy(), true,
     {"W: Ignoring unknown keyword (:stray)", "W: Ignoring unknown keyword (:)"}, "root",
     [](const OrvAsfScene& s) { EXPECT_EQ(s.mLengthUnit, 2.0); }},
    {"hierarchy may end the file", kRoot + kLegBones + ":hierarchy\n  begin\n    lhip lfemur\n", true, {},
     "root(lhip(lfemur) ltibia)"},
    // --- :version, :name, :units, :skin
    {"version other than 1.10 warns", ":version 1.1\n:version 1.09\n:version\n" + kRoot + Hierarchy(), true,
     {"W: Bad File format version (1.090000), trying 1.10",
      "W: Can't read file format version (), trying version 1.10"},
     "root"},
    {"name without value stops reading", ":name\n" + kRoot, false,
     {"W: Can't read skeleton name, using \"Untitled\""}, "no root",
     [](const OrvAsfScene& s) { EXPECT_STREQ(s.mName, "Untitled"); }},
    {"lines after the name are unit lines", ":name walker\n  length 2\n" + kRoot + Hierarchy(), true, {}, "root",
     [](const OrvAsfScene& s) {
         EXPECT_STREQ(s.mName, "walker");
         EXPECT_EQ(s.mLengthUnit, 2.0);
     }},
    {"radians are recorded but angles stay as written",
     ":units\n  angle rad\n  angle radians\n  mass heavy\n  length\n  weight 3\n" + kRoot + ":bonedata\n" +
         BoneBlock("lhip", "    axis 0 0 20 XYZ\n    dof rx\n    limits (-160, 20)\n") + Hierarchy(),
     true,
     {"W: Unknown angle unit, using default (deg)", "W: Can't read mass unit, using 1.000000",
      "W: Can't read length unit, using 1.000000", "W: Unknown unit token"},
     "root(lhip)",
     [](const OrvAsfScene& s) {
         EXPECT_EQ(s.mAngleUnit, 57.29577951308232);
         EXPECT_EQ(Bone(s, "lhip").mAxis[2], 20.0);
         EXPECT_EQ(Bone(s, "lhip").mLimitMin[5], -160.0);
     }},
    {"bone lengths converted by the length unit in force",
     ":units\n  length 0.45\n" + kRoot + ":bonedata\n" + BoneBlock("a") + ":units\n  length 0\n:bonedata\n" +
         BoneBlock("b") + ":units\n  length -1\n:bonedata\n" + BoneBlock("c") + Hierarchy(),
     true, {}, "root(a b c)",
     [](const OrvAsfScene& s) {
         EXPECT_DOUBLE_EQ(Bone(s, "a").mLength, 2.0 * 2.54 / 0.45);
         EXPECT_EQ(Bone(s, "b").mLength, 2.0);
         EXPECT_EQ(Bone(s, "c").mLength, 2.0);
     }},
    {"skin takes at most three names and ends at a section",
     kRoot + kLegBones + ":skin a.skin\nb.skin\nc.skin\nd.skin\n" + kLegHierarchy, true, {}, kLegTree},
    // --- :root
    {"root section fills the root bone", kRoot + Hierarchy(), true, {}, "root",
     [](const OrvAsfScene& s) {
         EXPECT_STREQ(s.mRoot->mName, "root");
         EXPECT_EQ(Dofs(*s.mRoot), (std::vector<int>{0, 1, 2, 5, 4, 3}));
         EXPECT_EQ(s.mRoot->mRotationOffset, OrvVector4(1, 2, 3));
         EXPECT_EQ(s.mRoot->mAxisMatrix, hosttest::RotationMatrix(OrvVector4(10, 20, 30), 0));
     }},
    {"unknown axis word", ":root\n  axis abc\n" + Hierarchy(), false, {"E: Unknown rotation order"}, "no root"},
    {"bad root lines warn and keep defaults",
     ":root\n  position 1 2\n  orientation\n  scale 2\n  order rx ry foo rz\n" + Hierarchy(), true,
     {"W: Can't read position, using 0.0 0.0 0.0", "W: Can't read orientation, using 0.0 0.0 0.0",
      "W: Unknown :root token (scale)"},
     "root",
     [](const OrvAsfScene& s) {
         EXPECT_EQ(s.mRoot->mPosition, OrvVector4());
         EXPECT_EQ(s.mRoot->mDofCount, 2);  // an unknown word ends the list silently
     }},
    {"order list holds seven codes (N = 7 fits, N + 1 warns)",
     ":root\n  order tx ty tz rx ry rz tx\n  order tx ty tz rx ry rz tx ry rz\n" + Hierarchy(), true,
     {"W: Too many degrees of freedom, ignoring (ry)"}, "root",
     [](const OrvAsfScene& s) {
         EXPECT_EQ(s.mRoot->mDofCount, 7);
         EXPECT_EQ(s.mRoot->mDof[6], 0);
     }},
    {"second root refused and the first kept", kRoot + kLegBones + ":root\n  position 9 9 9\n" + kLegHierarchy,
     false, {"E: Duplicate root section"}, "root(lhip lfemur ltibia)",
     [](const OrvAsfScene& s) { EXPECT_EQ(s.mRoot->mPosition, OrvVector4(1, 2, 3)); }},
    // --- :bonedata
    {"bone block fills the bone",
     ":units\n  length 2.54\n" + kRoot + ":bonedata\n  begin\n    id 7\n    name lhip\n    direction 0 3 4\n"
     "    length 5\n    axis 0 0 20 ZYX\n    dof rx ry rz\n    limits (-160.0, 20.0)\n    (-70.0, 70.0)\n"
     "    (-60.0, 70.0)\n    bodymass 2\n    cofmass 3\n  end\n" + Hierarchy(),
     true, {}, "root(lhip)",
     [](const OrvAsfScene& s) {
         const OrvAsfNode& lBone = Bone(s, "lhip");
         EXPECT_LT((lBone.mDirection - OrvVector4(0, 0.6, 0.8)).Length(), 1e-15);
         EXPECT_EQ(lBone.mLength, 5.0);
         EXPECT_EQ(lBone.mAxisOrder, 5);
         EXPECT_EQ(lBone.mAxisMatrix, hosttest::RotationMatrix(OrvVector4(0, 0, 20), 5));
         EXPECT_EQ(Dofs(lBone), (std::vector<int>{5, 4, 3}));
         EXPECT_TRUE(lBone.mLimitMin[3] == -60.0 && lBone.mLimitMinActive[3] && lBone.mLimitMaxActive[3]);
         EXPECT_FALSE(lBone.mLimitMinActive[0]);
     }},
    {"limit pairs in every notation; an infinity or overflow is absent only on its own side",
     kRoot + ":bonedata\n" + BoneBlock("a", "    dof rx ry rz\n    limits (-1.5,2) ( -1.5 , 2 )\n    -1.5 2\n") +
         BoneBlock("b", "    dof rx ry\n    limits (-inf inf)\n    (-inf 5)\n") +
         BoneBlock("c", "    dof rx ry\n    limits (1e999 -1e309)\n    (-1.7976931348623157e308 1.7976931348623157e308)\n") +
         Hierarchy(),
     true, {}, "root(a b c)",
     [](const OrvAsfScene& s) {
         const double kInf = std::numeric_limits<double>::infinity();
         const double kLargest = std::numeric_limits<double>::max();
         const OrvAsfNode& lC = Bone(s, "c");
         EXPECT_TRUE(lC.mLimitMinActive[5] && lC.mLimitMaxActive[5] && lC.mLimitMin[5] == kInf && lC.mLimitMax[5] == -kInf);
         EXPECT_TRUE(lC.mLimitMinActive[4] && lC.mLimitMaxActive[4] && lC.mLimitMin[4] == -kLargest && lC.mLimitMax[4] == kLargest);
         for (int lCode = 3; lCode <= 5; ++lCode)
             EXPECT_TRUE(Bone(s, "a").mLimitMin[lCode] == -1.5 && Bone(s, "a").mLimitMax[lCode] == 2.0) << lCode;
         const OrvAsfNode& lB = Bone(s, "b");
         EXPECT_FALSE(lB.mLimitMinActive[5] || lB.mLimitMaxActive[5] || lB.mLimitMinActive[4]);
         EXPECT_TRUE(lB.mLimitMin[5] == 0.0 && lB.mLimitMax[5] == 0.0);
         EXPECT_TRUE(lB.mLimitMaxActive[4]);
     }},
    {"limits before dof are ignored", kRoot + ":bonedata\n" + BoneBlock("a", "    limits (-1 1)\n    (-2 2)\n    dof rx\n") +
                                          Hierarchy(),
     true, {"W: Unknown bonedata token"}, "root(a)",
     [](const OrvAsfScene& s) { EXPECT_FALSE(Bone(s, "a").mLimitMinActive[5]); }},
    {"dof list keeps at most seven codes",
     kRoot + ":bonedata\n" + BoneBlock("a", "    dof l rx\n") + BoneBlock("b", "    dof rx foo rz\n") +
         BoneBlock("c", "    dof tx ty tz rz ry rx tx\n") + BoneBlock("d", "    dof tx ty tz rz ry rx tx ty l rz\n") +
         Hierarchy(),
     true,
     {"W: Unknown degree of freedom (l)", "W: Too many degrees of freedom, ignoring (ty)",
      "W: Unknown degree of freedom (l)"},
     "root(a b c d)",
     [](const OrvAsfScene& s) {
         EXPECT_EQ(Dofs(Bone(s, "a")), std::vector<int>{5});
         EXPECT_EQ(Bone(s, "b").mDofCount, 1);
         EXPECT_EQ(Bone(s, "c").mDofCount, 7);
         EXPECT_EQ(Bone(s, "d").mDofCount, 7);
     }},
    {"bad optional lines warn",
     kRoot + ":bonedata\n" + BoneBlock("Root", "    id x\n    bodymass\n    cofmass y\n    colour red\n") +
         "  begin\n    name z\n    direction 0 0 0\n    length 1\n  end\n" + Hierarchy(),
     true,
     {"W: Can't read bone id value", "W: Can't read bodymass value", "W: Can't read cofmass value",
      "W: Unknown bonedata token"},
     "root(Root z)", [](const OrvAsfScene& s) { EXPECT_EQ(Bone(s, "z").mDirection, OrvVector4()); }},
    {"blocks may lack their end and stray lines are skipped",
     kRoot + ":bonedata\n  begin\n    name a\n    direction 0 0 1\n    length 1\n" + BoneBlock("b") + "  stray line\n" +
         BoneBlock("c") + "  stray\n" + Hierarchy(),
     true, {"W: Begin/End keyword expected", "W: Begin/End keyword expected"}, "root(a b c)"},
    {"bone data before root", kLegBones + kRoot, false, {"E: Bone data before root section"}, "no root"},
    {"file ending inside a bone keeps the earlier bones", kRoot + ":bonedata\n" + BoneBlock("a") + "  begin\n    name b\n",
     false, {}, "root(a)"},
    {"long names truncated alike in bone data and hierarchy (49 bytes fit, 50 do not)",
     kRoot + ":bonedata\n" + BoneBlock(l49 + "x") + BoneBlock("b") + BoneBlock(l49.substr(1) + "c") +
         Hierarchy("    b " + l49 + "yz " + l49.substr(1) + "c\n"),
     true,
     {"W: Name too long, truncated to 49 bytes (" + l49 + "x)", "W: Name too long, truncated to 49 bytes (" + l49 + "yz)"},
     "root(b(" + l49 + " " + l49.substr(1) + "c))"},
    // --- :hierarchy
    {"first placement wins", kRoot + kLegBones + Hierarchy("    lhip ltibia\n    lfemur ltibia\n"), true, {},
     "root(lhip(ltibia) lfemur)"},
    {"nothing to move", kRoot + kLegBones + Hierarchy("    root ltibia lfemur lhip\n"), true, {},
     "root(lhip lfemur ltibia)"},
    {"children accumulate", kRoot + kLegBones + Hierarchy("    lhip ltibia\n    lhip lfemur\n"), true, {},
     "root(lhip(ltibia lfemur))"},
    {"a moved parent carries its bones", kRoot + kLegBones + Hierarchy("    lfemur ltibia\n    lhip lfemur\n"), true,
     {}, kLegTree},
    {"unknown child", kRoot + kLegBones + Hierarchy("    lhip lfemur rfoot ltibia\n"), false,
     {"E: Unknown child bone name (rfoot)"}, "root(lhip(lfemur) ltibia)"},
    {"unknown parent", kRoot + kLegBones + Hierarchy("    lhip lfemur\n    Root ltibia\n"), false,
     {"E: Unknown parent bone name (Root)"}, "root(lhip(lfemur) ltibia)"},
    {"section inside the hierarchy block", kRoot + kLegBones + ":hierarchy\n  begin\n    lhip lfemur\n:skin a\n",
     false, {"E: Unknown parent bone name (:skin)"}, "root(lhip(lfemur) ltibia)"},
    {"second begin closes the block",
     kRoot + kLegBones + ":hierarchy\n  begin\n    lhip lfemur\n  begin\n    lfemur ltibia\n  begin\n"
     "    lfemur ltibia\n  end\n",
     true, {"W: Begin/End keyword expected"}, kLegTree},
    {"a bone cannot become a child of its own subtree",
     kRoot + kLegBones + Hierarchy("    lhip lfemur\n    lfemur lhip\n    ltibia ltibia\n"), true,
     {"W: Bone lhip cannot be a child of its own descendant lfemur, left in place",
      "W: Bone ltibia cannot be a child of its own descendant ltibia, left in place"},
     "root(lhip(lfemur) ltibia)"},
};

class AsfReaderText : public ::testing::TestWithParam<ReadCase>
{
};

} // namespace

TEST_P(AsfReaderText, GivesItsResultMessagesAndTree)
{
    const ReadCase& lCase = GetParam();
    const auto lRead = ReadAsfText(lCase.mText);
    EXPECT_EQ(lRead->mRead, lCase.mRead);
    EXPECT_THAT(Messages(lRead->mFile), ElementsAreArray(lCase.mMessages));
    EXPECT_EQ(Tree(lRead->mScene), lCase.mTree);
    if (lCase.mCheck && lRead->mScene.mRoot) lCase.mCheck(lRead->mScene);
}

INSTANTIATE_TEST_SUITE_P(Cases, AsfReaderText, ::testing::ValuesIn(kReadCases),
                         [](const ::testing::TestParamInfo<ReadCase>& pInfo) {
                             std::string lName;
                             for (const char* c = pInfo.param.mBehaviour; *c; ++c)
                                 if (std::isalnum(static_cast<unsigned char>(*c))) lName += *c;
                             return lName;
                         });

TEST(AsfReader, AxisWordsMapToHostOrders)
{
    const std::pair<std::string, int> lCases[] = {{"zyx", 5}, {"xzy", 3}, {"yxz", 1}, {"yzx", 4}, {"zxy", 2}, {"xyz", 0}};
    for (const auto& [lWord, lOrder] : lCases)
    {
        const auto lRead = ReadAsfText(":root\n  axis " + lWord + "\n" + Hierarchy());
        ASSERT_TRUE(lRead->mRead) << lWord;
        EXPECT_EQ(lRead->mScene.mRoot->mAxisOrder, lOrder) << lWord;
    }
}

TEST(AsfReader, BadBoneBlocksAreErrorsAndEarlierBonesStay)
{
    const std::pair<std::string, std::string> lCases[] = {
        {"  begin\n  end\n", "E: Bone has no name"},
        {"  begin\n    name a\n    length 1\n  end\n", "E: Bone has no direction"},
        {"  begin\n    name a\n    direction 1 0 0\n  end\n", "E: Bone has no length"},
        {"  begin\n    name\n  end\n", "E: Can't read bone name"},
        {"  begin\n    name root\n  end\n", "E: Forbidden bone name"},
        {"  begin\n    direction 1 0\n  end\n", "E: Can't read bone direction"},
        {"  begin\n    length long\n  end\n", "E: Can't read bone length"},
        {"  begin\n    axis 0 0\n  end\n", "E: Can't read bone local coordinate system"},
        {"  begin\n    axis 0 0 0 abc\n  end\n", "E: Unknown rotation order"},
        {"  begin\n    dof rx ry\n    limits (-1 1)\n  end\n", "E: Can't read dof limits"},
    };
    for (const auto& [lBlock, lMessage] : lCases)
    {
        const auto lRead = ReadAsfText(kRoot + ":bonedata\n" + BoneBlock("a") + lBlock + Hierarchy());
        EXPECT_FALSE(lRead->mRead);
        EXPECT_THAT(Messages(lRead->mFile), ElementsAre(lMessage)) << lBlock;
        EXPECT_EQ(TreeText(lRead->mScene.mRoot), "root(a)");
    }
}

TEST(AsfReader, NulByteFailsTheReadEvenWhereTheSectionWouldEndQuietly)
{
    // The hierarchy and unknown sections take "no next line" as their normal end; the refused
    // line must still fail the read.
    const std::string lLeg = kRoot + kLegBones;
    for (const std::string& lText : {lLeg + kLegHierarchy.substr(0, kLegHierarchy.size() - 4) + std::string("e\0d\n", 4),
                                     lLeg + kLegHierarchy + std::string(":skin a\0b\n", 10)})
    {
        const auto lRead = ReadAsfText(lText);
        EXPECT_FALSE(lRead->mRead);
        EXPECT_THAT(Messages(lRead->mFile), ::testing::Contains(std::string("E: ") + kOrvNulByteMessage));
    }
}

TEST(AsfReader, RootAllocationFailureIsRefusedWithoutLeak)
{
    OrvAllocFailureScope lFailure(1);
    const auto lRead = ReadAsfText(kRoot + Hierarchy());
    EXPECT_FALSE(lRead->mRead);
    EXPECT_THAT(Messages(lRead->mFile), ElementsAre("E: Not enough memory"));
    EXPECT_EQ(lRead->mScene.mRoot, nullptr);
}
