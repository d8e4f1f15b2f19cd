// Curve filters: unroll and gimbal killer keep the rotations and make the curves continuous; the
// constant-key reducer removes keys from flat stretches only.

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterConstantKeyReducer.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterGimbleKiller.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterUnroll.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/core/OrvStatus.h"
#include "support/HostSceneSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <vector>

using namespace orvsdk;
using orvsdk::hosttest::MatricesNear;
using orvsdk::hosttest::RotationMatrix;

namespace {

class HostFilters : public ::testing::Test
{
protected:
    HostFilters() : mScene(OrvScene::Create("Scene"))
    {
        for (OrvAnimCurve*& lCurve : mCurves) lCurve = OrvAnimCurve::Create(mScene.get(), "r");
    }

    static OrvTime FrameTime(int pFrame) { return OrvTime::FromFrame(pFrame, 30.0); }

    // Keys the three curves with the X, Y, Z angles of pRotations, one frame apart.
    void KeyRotations(const std::vector<OrvVector4>& pRotations)
    {
        OrvAnimCurveKey lKey;
        for (int lFrame = 0; lFrame < static_cast<int>(pRotations.size()); ++lFrame)
        {
            for (int lAxis = 0; lAxis < 3; ++lAxis)
            {
                lKey.Set(FrameTime(lFrame), static_cast<float>(pRotations[lFrame][lAxis]));
                mCurves[lAxis]->KeyAdd(FrameTime(lFrame), lKey);
            }
        }
    }

    OrvVector4 KeyAngles(int pKey) const
    {
        return OrvVector4(mCurves[0]->KeyGetValue(pKey), mCurves[1]->KeyGetValue(pKey), mCurves[2]->KeyGetValue(pKey));
    }

    OrvScenePtr mScene;
    OrvAnimCurve* mCurves[3];
};

OrvVector4 ToXyz(const OrvVector4& pSequence, int pOrder)
{
    OrvVector4 lAngles;
    for (int k = 0; k < 3; ++k) lAngles[OrvEuler::AxisTable[pOrder][k]] = pSequence[k];
    return lAngles;
}

OrvVector4 ToSequence(const OrvVector4& pAngles, int pOrder)
{
    const int* lAxes = OrvEuler::AxisTable[pOrder];
    return OrvVector4(pAngles[lAxes[0]], pAngles[lAxes[1]], pAngles[lAxes[2]]);
}

// The angles of key pKey.
void ExpectAnglesNear(const OrvVector4& pExpected, const OrvVector4& pActual, int pKey)
{
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(pExpected[i], pActual[i], 1e-3) << "key " << pKey << ", angle " << i;
}

// A smooth path of Euler angles in an order's own sequence: the first angle crosses 180 upwards,
// the last one -180 downwards, the middle one crosses 90 (without landing on it), so decomposing
// each pose into principal angles makes the curves jump and flip.
OrvVector4 SmoothSequence(int pFrame)
{
    return OrvVector4(-170.0 + 20.0 * pFrame, 62.0 + 5.0 * pFrame, -100.0 - 13.0 * pFrame);
}
const int kPathFrames = 12;

} // namespace

// --- Unroll ----------------------------------------------------------------------------------------------

TEST_F(HostFilters, UnrollRestoresTheContinuousPathAndKeepsTheRotationsForEveryOrder)
{
    for (int lOrder = 0; lOrder < 6; ++lOrder)
    {
        SCOPED_TRACE(lOrder);
        for (OrvAnimCurve* lCurve : mCurves) lCurve->KeyClear();
        std::vector<OrvVector4> lPrincipal;
        for (int lFrame = 0; lFrame < kPathFrames; ++lFrame)
            lPrincipal.push_back(ToXyz(RotationMatrix(SmoothSequence(lFrame), lOrder).GetR(lOrder), lOrder));
        KeyRotations(lPrincipal);

        OrvAnimCurveFilterUnroll lUnroll;
        lUnroll.SetRotationOrder(static_cast<OrvEuler::EOrder>(lOrder));
        OrvStatus lStatus;
        lStatus.SetError("stale");
        ASSERT_TRUE(lUnroll.Apply(mCurves, 3, &lStatus));
        EXPECT_TRUE(lStatus.IsSuccess());

        for (int lFrame = 0; lFrame < kPathFrames; ++lFrame)
            ExpectAnglesNear(SmoothSequence(lFrame), ToSequence(KeyAngles(lFrame), lOrder), lFrame);
    }
}

TEST_F(HostFilters, RotationFiltersRefuseCurvesWhoseKeysDoNotLineUp)
{
    KeyRotations({OrvVector4(10.0, 20.0, 30.0), OrvVector4(-170.0, 20.0, 30.0)});
    OrvAnimCurveKey lExtra(FrameTime(5), 1.0f);
    mCurves[1]->KeyAdd(FrameTime(5), lExtra);
    OrvStatus lStatus;

    OrvAnimCurveFilterUnroll lUnroll;
    EXPECT_FALSE(lUnroll.Apply(mCurves, 3, &lStatus));
    EXPECT_STRNE("", lStatus.GetErrorString());
    OrvAnimCurveFilterGimbleKiller lKiller;
    EXPECT_FALSE(lKiller.Apply(mCurves, 3));
    EXPECT_FALSE(lKiller.Apply(mCurves, 2));
    lUnroll.SetRotationOrder(OrvEuler::eOrderSphericXYZ);
    mCurves[1]->KeyRemove(2);
    EXPECT_FALSE(lUnroll.Apply(mCurves, 3));

    EXPECT_EQ(-170.0f, mCurves[0]->KeyGetValue(1));
}

// --- Gimbal killer --------------------------------------------------------------------------------------

TEST_F(HostFilters, GimbalKillerRemovesFlipsAndKeepsTheRotations)
{
    const auto lPath = [](int pFrame) { return OrvVector4(10.0 * pFrame - 50.0, 71.0 + 4.0 * pFrame, 160.0 + 5.0 * pFrame); };
    std::vector<OrvVector4> lPrincipal;
    for (int lFrame = 0; lFrame < kPathFrames; ++lFrame)
        lPrincipal.push_back(RotationMatrix(lPath(lFrame), 0).GetR(0));
    KeyRotations(lPrincipal);
    ASSERT_GT(std::fabs(KeyAngles(5)[0] - KeyAngles(4)[0]), 90.0);  // Y passed 90: the decomposition flipped

    OrvAnimCurveFilterGimbleKiller lKiller;
    ASSERT_TRUE(lKiller.Apply(mCurves, 3, nullptr));

    for (int lFrame = 0; lFrame < kPathFrames; ++lFrame) ExpectAnglesNear(lPath(lFrame), KeyAngles(lFrame), lFrame);
}

TEST_F(HostFilters, GimbalKillerSplitsALockedKeyClosestToThePreviousOne)
{
    // At Y = 90, (35, 90, 45) is the same rotation as (30, 90, 40): only X - Z counts.
    KeyRotations({OrvVector4(30.0, 80.0, 40.0), OrvVector4(35.0, 90.0, 45.0), OrvVector4(30.0, -90.0, 10.0)});
    const OrvAMatrix lLockedUp = RotationMatrix(KeyAngles(1), 0);
    const OrvAMatrix lLockedDown = RotationMatrix(KeyAngles(2), 0);

    OrvAnimCurveFilterGimbleKiller lKiller;
    ASSERT_TRUE(lKiller.Apply(mCurves, 3));

    ExpectAnglesNear(OrvVector4(30.0, 90.0, 40.0), KeyAngles(1), 1);
    EXPECT_TRUE(MatricesNear(lLockedUp, RotationMatrix(KeyAngles(1), 0), 1e-5));
    // At Y = -90 only X + Z counts (40 here); the split nearest to (30, 40) is (15, 25).
    ExpectAnglesNear(OrvVector4(15.0, -90.0, 25.0), KeyAngles(2), 2);
    EXPECT_TRUE(MatricesNear(lLockedDown, RotationMatrix(KeyAngles(2), 0), 1e-5));
}

// --- Constant-key reducer ---------------------------------------------------------------------------------

namespace {

// A curve with the values keyed 100 ticks apart from tick 0.
OrvAnimCurve* MakeCurve(OrvScene& pScene, const std::vector<float>& pValues)
{
    OrvAnimCurve* lCurve = OrvAnimCurve::Create(&pScene, "c");
    for (size_t i = 0; i < pValues.size(); ++i) hosttest::AddKey(lCurve, static_cast<int64_t>(i) * 100, pValues[i]);
    return lCurve;
}

// Applies a reducer with its default tolerance, or with pTolerance when given.
bool Reduce(OrvAnimCurve* pCurve, std::optional<double> pTolerance = std::nullopt)
{
    OrvAnimCurveFilterConstantKeyReducer lReducer;
    if (pTolerance) lReducer.SetValueTolerance(*pTolerance);
    OrvAnimCurveFilter& lFilter = lReducer;
    return lFilter.Apply(&pCurve, 1);
}

} // namespace

TEST_F(HostFilters, ReducerEmptiesOnlyACurveThatIsConstantWithinTheTolerance)
{
    // The default tolerance, 1e-4, is the one the import uses.
    const struct
    {
        std::vector<float> mValues;
        std::optional<double> mTolerance;
        int mKept;
    } lCases[] = {
        {{5.0f, 5.00005f, 4.99995f, 5.00009f, 5.0f}, std::nullopt, 0},
        {{3.0f}, std::nullopt, 0},
        {{0.0f, 0.001f, 0.0f, 0.001f, 0.0f}, std::nullopt, 5},
        {{0.0f, 0.001f, 0.0f, 0.001f, 0.0f}, 0.0015, 0},
    };
    for (const auto& lCase : lCases)
    {
        OrvAnimCurve* lCurve = MakeCurve(*mScene, lCase.mValues);
        ASSERT_TRUE(Reduce(lCurve, lCase.mTolerance));
        EXPECT_EQ(lCase.mKept, lCurve->KeyGetCount()) << lCase.mValues.size() << " keys, tolerance " << lCase.mTolerance.value_or(1e-4);
    }
}

TEST_F(HostFilters, ReducerKeepsTheEndsOfFlatStretchesAndEverythingBetweenThem)
{
    const std::vector<float> lValues = {0.0f, 0.0f, 0.0f, 1.0f, 1.0f, 1.0f, 2.0f, 2.0f};
    OrvAnimCurve* lCurve = MakeCurve(*mScene, lValues);
    OrvAnimCurve* lCopy = MakeCurve(*mScene, lValues);
    ASSERT_TRUE(Reduce(lCurve));

    std::vector<int64_t> lTimes;
    for (int i = 0; i < lCurve->KeyGetCount(); ++i) lTimes.push_back(lCurve->KeyGetTime(i).Get());
    EXPECT_EQ((std::vector<int64_t>{0, 200, 300, 500, 600, 700}), lTimes);
    // Linear interpolation between the stretches is what it was before.
    for (int64_t lTime = -100; lTime <= 800; lTime += 25)
        EXPECT_EQ(lCopy->Evaluate(OrvTime(lTime)), lCurve->Evaluate(OrvTime(lTime))) << lTime;
}

TEST_F(HostFilters, ReducerNeverLetsASlowDriftAddUp)
{
    // Each step is below the tolerance, the whole drift is far above it.
    std::vector<float> lValues;
    for (int i = 0; i < 200; ++i) lValues.push_back(static_cast<float>(i) * 4e-5f);
    OrvAnimCurve* lCurve = MakeCurve(*mScene, lValues);
    ASSERT_TRUE(Reduce(lCurve));

    EXPECT_LT(lCurve->KeyGetCount(), 200);
    for (int i = 0; i < 200; ++i) EXPECT_NEAR(lValues[i], lCurve->Evaluate(OrvTime(i * 100)), 2e-4) << i;
}

// Each curve reduced on its own: ImportPath.TheReducerMovesAConstantChannelIntoTheRestValue.
TEST_F(HostFilters, ReducerRefusesNullCurvesBeforeChangingAny)
{
    OrvAnimCurve* lCurves[2] = {MakeCurve(*mScene, {1.0f, 1.0f, 1.0f}), nullptr};
    OrvStatus lStatus;
    EXPECT_FALSE(OrvAnimCurveFilterConstantKeyReducer().Apply(lCurves, 2, &lStatus));
    EXPECT_TRUE(lStatus.Error());
    EXPECT_EQ(3, lCurves[0]->KeyGetCount());
}
