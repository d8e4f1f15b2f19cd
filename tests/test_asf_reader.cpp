// ASF reader: the driver and every section reader, grouped by section, plus the real files and
// concurrent reading.

#include "AsfTestSupport.h"

#include "orvsdk/host/core/OrvMemory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

using namespace orvsdk;
using namespace orvsdk::asftest;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const std::string kRoot =
    ":root\n"
    "  order TX TY TZ RX RY RZ\n"
    "  axis XYZ\n"
    "  position 1 2 3\n"
    "  orientation 10 20 30\n";

// A bone block with the three required lines and pExtra after them.
std::string Bone(const std::string& pName, const std::string& pExtra = "")
{
    return "  begin\n    name " + pName + "\n    direction 0 0 2\n    length 2.0\n" + pExtra + "  end\n";
}

std::string Hierarchy(const std::string& pLines = "")
{
    return ":hierarchy\n  begin\n" + pLines + "  end\n";
}

const std::string kLegBones = ":bonedata\n" + Bone("lhip") + Bone("lfemur") + Bone("ltibia");
const std::string kLegHierarchy = Hierarchy("    root lhip\n    lhip lfemur\n    lfemur ltibia\n");

class AsfReader : public ::testing::Test
{
protected:
    bool Read(const std::string& pText) { return ReadText(mFile, mScene, pText); }
    std::vector<std::string> Texts() const { return Messages(mFile); }
    std::string Tree() const { return mScene.mRoot ? TreeText(mScene.mRoot) : "no root"; }
    OrvAsfNode* Find(const char* pName) const { return mScene.mRoot->Find(pName); }

    OrvFileAcclaimAsf mFile{false};
    OrvAsfScene mScene;
};

} // namespace

// --- Driver -------------------------------------------------------------------------------------

TEST_F(AsfReader, WellFormedFileBuildsTheWholeTree)
{
    ASSERT_TRUE(Read(":version 1.10\n:name walker\n:units\n  mass 1.0\n  length 1.0\n  angle deg\n"
                     ":documentation\n  free text\n  more text\n" + kRoot + kLegBones + kLegHierarchy));
    EXPECT_THAT(Texts(), IsEmpty());
    EXPECT_STREQ(mScene.mName, "walker");
    EXPECT_EQ(Tree(), "root(lhip(lfemur(ltibia)))");
}

TEST_F(AsfReader, FileWithoutRootIsRefusedAfterReadingIt)
{
    EXPECT_FALSE(Read(":name walker\n" + Hierarchy()));
    EXPECT_STREQ(mScene.mName, "walker");
    EXPECT_THAT(Texts(), IsEmpty());
    EXPECT_FALSE(ReadAsfText("")->mRead);
}

TEST_F(AsfReader, UnknownWordsAndSectionsAreSkippedToTheNextSection)
{
    ASSERT_TRUE(Read("stray words\nmore words\n:foo\n  length 3\n:units\n  length 2\n" + kRoot + Hierarchy()));
    EXPECT_THAT(Texts(), ElementsAre("W: Ignoring unknown keyword (:stray)", "W: Ignoring unknown keyword (:)"));
    EXPECT_EQ(mScene.mLengthUnit, 2.0);
}

TEST_F(AsfReader, OnlyTheHierarchyMayEndTheFile)
{
    EXPECT_TRUE(Read(kRoot + kLegBones + ":hierarchy\n  begin\n    lhip lfemur\n"));
    EXPECT_EQ(Tree(), "root(lhip(lfemur) ltibia)");
    for (const std::string& lCut : {kRoot + ":documentation\n  text\n", kRoot + kLegBones, kRoot + ":units\n", kRoot})
        EXPECT_FALSE(ReadAsfText(lCut)->mRead) << lCut;
}

TEST_F(AsfReader, NulByteFailsTheReadEvenWhereTheSectionWouldEndQuietly)
{
    // The hierarchy and unknown sections take "no next line" as their normal end; the refused
    // line must still fail the read.
    for (const std::string& lText : {kRoot + kLegBones + kLegHierarchy.substr(0, kLegHierarchy.size() - 4) +
                                         std::string("e\0d\n", 4),
                                     kRoot + kLegBones + kLegHierarchy + std::string(":skin a\0b\n", 10)})
    {
        OrvFileAcclaimAsf lFile(false);
        OrvAsfScene lScene;
        EXPECT_FALSE(ReadText(lFile, lScene, lText));
        EXPECT_THAT(Messages(lFile), Contains(std::string("E: ") + OrvTextFile::kNulByteMessage));
    }
}

TEST_F(AsfReader, RootAllocationFailureIsRefusedWithoutLeak)
{
    OrvAllocFailureScope lFailure(1);
    EXPECT_FALSE(Read(kRoot + Hierarchy()));
    EXPECT_THAT(Texts(), ElementsAre("E: Not enough memory"));
    EXPECT_EQ(mScene.mRoot, nullptr);
}

// --- :version, :name, :units, :skin --------------------------------------------------------------

TEST_F(AsfReader, VersionOtherThanOnePointOneWarns)
{
    ASSERT_TRUE(Read(":version 1.1\n:version 1.09\n:version\n" + kRoot + Hierarchy()));
    EXPECT_THAT(Texts(), ElementsAre("W: Bad File format version (1.090000), trying 1.10",
                                     "W: Can't read file format version (), trying version 1.10"));
}

TEST_F(AsfReader, NameWithoutValueStopsReading)
{
    EXPECT_FALSE(Read(":name\n" + kRoot));
    EXPECT_STREQ(mScene.mName, "Untitled");
    EXPECT_THAT(Texts(), ElementsAre("W: Can't read skeleton name, using \"Untitled\""));
    EXPECT_EQ(mScene.mRoot, nullptr);
}

TEST_F(AsfReader, LinesAfterTheNameAreUnitLines)
{
    ASSERT_TRUE(Read(":name walker\n  length 2\n" + kRoot + Hierarchy()));
    EXPECT_STREQ(mScene.mName, "walker");
    EXPECT_EQ(mScene.mLengthUnit, 2.0);
}

TEST_F(AsfReader, RadiansAreRecordedButAnglesStayAsWritten)
{
    ASSERT_TRUE(Read(":units\n  angle rad\n  angle radians\n  mass heavy\n  length\n  weight 3\n" + kRoot + ":bonedata\n" +
                     Bone("lhip", "    axis 0 0 20 XYZ\n    dof rx\n    limits (-160, 20)\n") + Hierarchy()));
    EXPECT_THAT(Texts(), ElementsAre("W: Unknown angle unit, using default (deg)", "W: Can't read mass unit, using 1.000000",
                                     "W: Can't read length unit, using 1.000000", "W: Unknown unit token"));
    EXPECT_EQ(mScene.mAngleUnit, 57.29577951308232);
    EXPECT_EQ(Find("lhip")->mAxis[2], 20.0);
    EXPECT_EQ(Find("lhip")->mLimitMin[5], -160.0);
}

TEST_F(AsfReader, BoneLengthsAreConvertedByTheLengthUnitInForce)
{
    ASSERT_TRUE(Read(":units\n  length 0.45\n" + kRoot + ":bonedata\n" + Bone("a") + ":units\n  length 0\n:bonedata\n" +
                     Bone("b") + ":units\n  length -1\n:bonedata\n" + Bone("c") + Hierarchy()));
    EXPECT_DOUBLE_EQ(Find("a")->mLength, 2.0 * 2.54 / 0.45);
    EXPECT_EQ(Find("b")->mLength, 2.0);
    EXPECT_EQ(Find("c")->mLength, 2.0);
}

TEST_F(AsfReader, SkinTakesAtMostThreeNamesAndEndsAtASection)
{
    ASSERT_TRUE(Read(kRoot + kLegBones + ":skin a.skin\nb.skin\nc.skin\nd.skin\n" + kLegHierarchy));
    EXPECT_THAT(Texts(), IsEmpty());
    EXPECT_EQ(Tree(), "root(lhip(lfemur(ltibia)))");
    const auto lOneName = ReadAsfText(kRoot + kLegBones + ":skin a.skin\n" + kLegHierarchy);
    ASSERT_TRUE(lOneName->mRead);
    EXPECT_EQ(TreeText(lOneName->mScene.mRoot), "root(lhip(lfemur(ltibia)))");
}

// --- :root ------------------------------------------------------------------------------------------

TEST_F(AsfReader, RootSectionFillsTheRootBone)
{
    ASSERT_TRUE(Read(kRoot + Hierarchy()));
    const OrvAsfNode* lRoot = mScene.mRoot;
    EXPECT_STREQ(lRoot->mName, "root");
    EXPECT_EQ(std::vector<int>(lRoot->mDof, lRoot->mDof + lRoot->mDofCount), (std::vector<int>{0, 1, 2, 5, 4, 3}));
    EXPECT_EQ(lRoot->mRotationOffset, OrvVector4(1, 2, 3));
    OrvAMatrix lFrame;
    lFrame.SetR(OrvVector4(10, 20, 30), 0);
    EXPECT_EQ(lRoot->mAxisMatrix, lFrame);
    EXPECT_EQ(lRoot->mAxisMatrixInverse, lFrame.Inverse());
}

TEST_F(AsfReader, AxisWordsMapToHostOrders)
{
    const std::pair<std::string, int> lCases[] = {{"zyx", 5}, {"xzy", 3}, {"yxz", 1}, {"yzx", 4}, {"zxy", 2}, {"xyz", 0}};
    for (const auto& [lWord, lOrder] : lCases)
    {
        const auto lRead = ReadAsfText(":root\n  axis " + lWord + "\n" + Hierarchy());
        ASSERT_TRUE(lRead->mRead) << lWord;
        EXPECT_EQ(lRead->mScene.mRoot->mAxisOrder, lOrder) << lWord;
    }
    EXPECT_FALSE(Read(":root\n  axis abc\n" + Hierarchy()));
    EXPECT_THAT(Texts(), ElementsAre("E: Unknown rotation order"));
    EXPECT_EQ(mScene.mRoot, nullptr);
}

TEST_F(AsfReader, BadRootLinesWarnAndKeepDefaults)
{
    ASSERT_TRUE(Read(":root\n  position 1 2\n  orientation\n  scale 2\n  order rx ry foo rz\n" + Hierarchy()));
    EXPECT_THAT(Texts(), ElementsAre("W: Can't read position, using 0.0 0.0 0.0",
                                     "W: Can't read orientation, using 0.0 0.0 0.0", "W: Unknown :root token (scale)"));
    EXPECT_EQ(mScene.mRoot->mPosition, OrvVector4());
    EXPECT_EQ(mScene.mRoot->mDofCount, 2);  // an unknown word ends the list silently
}

TEST_F(AsfReader, OrderListHoldsSevenCodes)
{
    ASSERT_TRUE(Read(":root\n  order tx ty tz rx ry rz tx\n  order tx ty tz rx ry rz tx ry rz\n" + Hierarchy()));
    EXPECT_THAT(Texts(), ElementsAre("W: Too many degrees of freedom, ignoring (ry)"));
    EXPECT_EQ(mScene.mRoot->mDofCount, 7);
    EXPECT_EQ(mScene.mRoot->mDof[6], 0);
}

TEST_F(AsfReader, SecondRootIsRefusedAndTheFirstKept)
{
    EXPECT_FALSE(Read(kRoot + kLegBones + ":root\n  position 9 9 9\n" + kLegHierarchy));
    EXPECT_THAT(Texts(), ElementsAre("E: Duplicate root section"));
    EXPECT_EQ(Tree(), "root(lhip lfemur ltibia)");
    EXPECT_EQ(mScene.mRoot->mPosition, OrvVector4(1, 2, 3));
}

// --- :bonedata --------------------------------------------------------------------------------------

TEST_F(AsfReader, BoneBlockFillsTheBone)
{
    ASSERT_TRUE(Read(":units\n  length 2.54\n" + kRoot + ":bonedata\n  begin\n    id 7\n    name lhip\n"
                     "    direction 0 3 4\n    length 5\n    axis 0 0 20 ZYX\n    dof rx ry rz\n"
                     "    limits (-160.0, 20.0)\n    (-70.0, 70.0)\n    (-60.0, 70.0)\n    bodymass 2\n    cofmass 3\n"
                     "  end\n" + Hierarchy()));
    EXPECT_THAT(Texts(), IsEmpty());
    const OrvAsfNode* lBone = Find("lhip");
    EXPECT_LT((lBone->mDirection - OrvVector4(0, 0.6, 0.8)).Length(), 1e-15);
    EXPECT_EQ(lBone->mLength, 5.0);
    EXPECT_EQ(lBone->mAxisOrder, 5);
    OrvAMatrix lFrame;
    lFrame.SetR(OrvVector4(0, 0, 20), 5);
    EXPECT_EQ(lBone->mAxisMatrix, lFrame);
    EXPECT_EQ(std::vector<int>(lBone->mDof, lBone->mDof + lBone->mDofCount), (std::vector<int>{5, 4, 3}));
    EXPECT_EQ(lBone->mLimitMin[5], -160.0);
    EXPECT_EQ(lBone->mLimitMax[5], 20.0);
    EXPECT_EQ(lBone->mLimitMin[4], -70.0);
    EXPECT_EQ(lBone->mLimitMin[3], -60.0);
    EXPECT_TRUE(lBone->mLimitMinActive[3] && lBone->mLimitMaxActive[3]);
    EXPECT_FALSE(lBone->mLimitMinActive[0]);
}

TEST_F(AsfReader, LimitPairsInEveryNotation)
{
    ASSERT_TRUE(Read(kRoot + ":bonedata\n" + Bone("a", "    dof rx ry rz\n    limits (-1.5,2) ( -1.5 , 2 )\n    -1.5 2\n") +
                     Bone("b", "    dof rx ry\n    limits (-inf inf)\n    (-inf 5)\n") + Hierarchy()));
    for (int lCode = 3; lCode <= 5; ++lCode)
        EXPECT_TRUE(Find("a")->mLimitMin[lCode] == -1.5 && Find("a")->mLimitMax[lCode] == 2.0) << lCode;
    const OrvAsfNode* lB = Find("b");
    EXPECT_FALSE(lB->mLimitMinActive[5] || lB->mLimitMaxActive[5] || lB->mLimitMinActive[4]);
    EXPECT_TRUE(lB->mLimitMin[5] == 0.0 && lB->mLimitMax[5] == 0.0);
    EXPECT_TRUE(lB->mLimitMaxActive[4]);
}

TEST_F(AsfReader, LimitsBeforeDofAreIgnored)
{
    ASSERT_TRUE(Read(kRoot + ":bonedata\n" + Bone("a", "    limits (-1 1)\n    (-2 2)\n    dof rx\n") + Hierarchy()));
    EXPECT_THAT(Texts(), ElementsAre("W: Unknown bonedata token"));
    EXPECT_FALSE(Find("a")->mLimitMinActive[5]);
}

TEST_F(AsfReader, DofListKeepsAtMostSevenCodes)
{
    ASSERT_TRUE(Read(kRoot + ":bonedata\n" + Bone("a", "    dof l rx\n") + Bone("b", "    dof rx foo rz\n") +
                     Bone("c", "    dof tx ty tz rz ry rx tx\n") + Bone("d", "    dof tx ty tz rz ry rx tx ty l rz\n") +
                     Hierarchy()));
    EXPECT_THAT(Texts(), ElementsAre("W: Unknown degree of freedom (l)", "W: Too many degrees of freedom, ignoring (ty)",
                                     "W: Unknown degree of freedom (l)"));
    EXPECT_EQ(Find("a")->mDofCount, 1);
    EXPECT_EQ(Find("a")->mDof[0], 5);
    EXPECT_EQ(Find("b")->mDofCount, 1);
    EXPECT_EQ(Find("c")->mDofCount, 7);
    EXPECT_EQ(Find("d")->mDofCount, 7);
}

TEST_F(AsfReader, BadBoneBlocksAreErrorsAndEarlierBonesStay)
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
        const auto lRead = ReadAsfText(kRoot + ":bonedata\n" + Bone("a") + lBlock + Hierarchy());
        EXPECT_FALSE(lRead->mRead);
        EXPECT_THAT(Messages(lRead->mFile), ElementsAre(lMessage)) << lBlock;
        EXPECT_EQ(TreeText(lRead->mScene.mRoot), "root(a)");
    }
}

TEST_F(AsfReader, BadOptionalLinesWarn)
{
    ASSERT_TRUE(Read(kRoot + ":bonedata\n" + Bone("Root", "    id x\n    bodymass\n    cofmass y\n    colour red\n") +
                     "  begin\n    name z\n    direction 0 0 0\n    length 1\n  end\n" + Hierarchy()));
    EXPECT_THAT(Texts(), ElementsAre("W: Can't read bone id value", "W: Can't read bodymass value",
                                     "W: Can't read cofmass value", "W: Unknown bonedata token"));
    EXPECT_EQ(Tree(), "root(Root z)");
    EXPECT_EQ(Find("z")->mDirection, OrvVector4());  // a zero direction stays zero
}

TEST_F(AsfReader, BlocksMayLackTheirEndAndStrayLinesAreSkipped)
{
    ASSERT_TRUE(Read(kRoot + ":bonedata\n  begin\n    name a\n    direction 0 0 1\n    length 1\n" + Bone("b") +
                     "  stray line\n" + Bone("c") + "  stray\n" + Hierarchy()));
    EXPECT_THAT(Texts(), ElementsAre("W: Begin/End keyword expected", "W: Begin/End keyword expected"));
    EXPECT_EQ(Tree(), "root(a b c)");
}

TEST_F(AsfReader, BoneDataBeforeRootIsRefused)
{
    EXPECT_FALSE(Read(kLegBones + kRoot));
    EXPECT_THAT(Texts(), ElementsAre("E: Bone data before root section"));
    EXPECT_EQ(mScene.mRoot, nullptr);
}

TEST_F(AsfReader, FileEndingInsideABoneKeepsTheEarlierBones)
{
    EXPECT_FALSE(Read(kRoot + ":bonedata\n" + Bone("a") + "  begin\n    name b\n"));
    EXPECT_EQ(Tree(), "root(a)");
}

TEST_F(AsfReader, LongNamesAreTruncatedAlikeInBoneDataAndHierarchy)
{
    const std::string l49(49, 'a');
    ASSERT_TRUE(Read(kRoot + ":bonedata\n" + Bone(l49 + "x") + Bone("b") + Bone(l49.substr(1) + "c") +
                     Hierarchy("    b " + l49 + "yz " + l49.substr(1) + "c\n")));
    EXPECT_EQ(Texts().size(), 2u);  // the host's truncation warnings, 50 bytes and more; 49 fit
    EXPECT_EQ(Tree(), "root(b(" + l49 + " " + l49.substr(1) + "c))");
}

// --- :hierarchy ------------------------------------------------------------------------------------

TEST_F(AsfReader, HierarchyLinesMoveBonesFromTheRoot)
{
    const std::pair<std::string, std::string> lCases[] = {
        {"    lhip ltibia\n    lfemur ltibia\n", "root(lhip(ltibia) lfemur)"},     // first placement wins
        {"    root ltibia lfemur lhip\n", "root(lhip lfemur ltibia)"},            // nothing to move
        {"    lhip ltibia\n    lhip lfemur\n", "root(lhip(ltibia lfemur))"},      // children accumulate
        {"    lfemur ltibia\n    lhip lfemur\n", "root(lhip(lfemur(ltibia)))"},   // a moved parent carries its bones
    };
    for (const auto& [lLines, lTree] : lCases)
    {
        const auto lRead = ReadAsfText(kRoot + kLegBones + Hierarchy(lLines));
        ASSERT_TRUE(lRead->mRead) << lLines;
        EXPECT_EQ(TreeText(lRead->mScene.mRoot), lTree) << lLines;
        EXPECT_THAT(Messages(lRead->mFile), IsEmpty());
    }
}

TEST_F(AsfReader, BadHierarchyNamesAreErrorsAndEarlierMovesStay)
{
    const std::pair<std::string, std::string> lCases[] = {
        {Hierarchy("    lhip lfemur rfoot ltibia\n"), "E: Unknown child bone name (rfoot)"},
        {Hierarchy("    lhip lfemur\n    Root ltibia\n"), "E: Unknown parent bone name (Root)"},
        {":hierarchy\n  begin\n    lhip lfemur\n:skin a\n", "E: Unknown parent bone name (:skin)"},
    };
    for (const auto& [lHierarchy, lMessage] : lCases)
    {
        const auto lRead = ReadAsfText(kRoot + kLegBones + lHierarchy);
        EXPECT_FALSE(lRead->mRead);
        EXPECT_THAT(Messages(lRead->mFile), ElementsAre(lMessage));
        EXPECT_EQ(TreeText(lRead->mScene.mRoot), "root(lhip(lfemur) ltibia)");
    }
}

TEST_F(AsfReader, SecondBeginClosesTheBlock)
{
    ASSERT_TRUE(Read(kRoot + kLegBones + ":hierarchy\n  begin\n    lhip lfemur\n  begin\n    lfemur ltibia\n  begin\n"
                     "    lfemur ltibia\n  end\n"));
    EXPECT_THAT(Texts(), ElementsAre("W: Begin/End keyword expected"));
    EXPECT_EQ(Tree(), "root(lhip(lfemur(ltibia)))");  // placed by the block the third "begin" opened
}

TEST_F(AsfReader, BoneCannotBecomeAChildOfItsOwnSubtree)
{
    ASSERT_TRUE(Read(kRoot + kLegBones + Hierarchy("    lhip lfemur\n    lfemur lhip\n    ltibia ltibia\n")));
    EXPECT_THAT(Texts(), ElementsAre("W: Bone lhip cannot be a child of its own descendant lfemur, left in place",
                                     "W: Bone ltibia cannot be a child of its own descendant ltibia, left in place"));
    EXPECT_EQ(Tree(), "root(lhip(lfemur) ltibia)");
}

// --- Real files and concurrency -------------------------------------------------------------------

TEST(AsfReaderRealFiles, EveryFileReadsWithoutError)
{
    const auto lFiles = RealAsfFiles();
    if (lFiles.empty()) GTEST_SKIP() << "no shared data folder";
    for (const auto& lPath : lFiles)
    {
        const auto lRead = ReadAsfFile(lPath);
        EXPECT_TRUE(lRead->mRead) << lPath;
        EXPECT_EQ(lRead->mFile.GetErrorCount(), 0) << lPath;
        ASSERT_NE(lRead->mScene.mRoot, nullptr);
        EXPECT_EQ(AllBones(lRead->mScene.mRoot).size(), 31u) << lPath;
        EXPECT_EQ(lRead->mScene.mRoot->mDofCount, 6);
    }
}

TEST(AsfReaderConcurrency, DifferentFilesReadAtOnceInSeveralThreads)
{
    // Each text relies on per-file keyword counters: a shared counter would let one thread's
    // "name" or "direction" hide another's missing one, or the reverse.
    struct Case
    {
        std::string mText;
        bool mResult;
        size_t mBones;
    };
    const Case lCases[] = {
        {kRoot + kLegBones + kLegHierarchy, true, 4},
        {kRoot + ":bonedata\n" + Bone("a") + Bone("b") + "  begin\n    name c\n    length 1\n  end\n" + Hierarchy(), false, 3},
        {kRoot + ":bonedata\n" + Bone("a") + "  begin\n    direction 0 0 1\n    length 1\n  end\n" + Hierarchy(), false, 2},
    };
    std::vector<int> lFailures(6, 0);
    std::vector<std::thread> lThreads;
    for (int t = 0; t < 6; ++t)
    {
        lThreads.emplace_back([&, t] {
            const Case& lCase = lCases[t % 3];
            for (int i = 0; i < 300; ++i)
            {
                const auto lRead = ReadAsfText(lCase.mText);
                if (lRead->mRead != lCase.mResult || AllBones(lRead->mScene.mRoot).size() != lCase.mBones) ++lFailures[t];
            }
        });
    }
    for (std::thread& lThread : lThreads) lThread.join();
    EXPECT_EQ(lFailures, std::vector<int>(6, 0));
}
