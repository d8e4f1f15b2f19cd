// Curve filters: unroll and gimbal killer keep the rotations and make the curves continuous; the
// constant-key reducer removes keys from flat stretches only.

#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/anim/OrvAnimCurve.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterConstantKeyReducer.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterGimbleKiller.h"
#include "orvsdk/host/filter/OrvAnimCurveFilterUnroll.h"
#include "orvsdk/host/anim/OrvAnimCurveKey.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/scene/OrvScene.h"
#include "orvsdk/host/core/OrvStatus.h"
#include "support/HostSceneSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <vector>

using namespace orvsdk;

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

OrvAMatrix RotationOfSequence(const OrvVector4& pSequence, int pOrder)
{
    OrvAMatrix lRotation;
    lRotation.SetR(pSequence, pOrder);
    return lRotation;
}

void ExpectSameRotation(const OrvAMatrix& pExpected, const OrvAMatrix& pActual)
{
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(pExpected(r, c), pActual(r, c), 1e-5) << "element " << r << "," << c;
}

void ExpectAnglesNear(const OrvVector4& pExpected, const OrvVector4& pActual)
{
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(pExpected[i], pActual[i], 1e-3) << "angle " << i;
}

// A smooth path of Euler angles in an order's own sequence: the first and last angles cross
// +/-180, the middle one crosses 90 (without landing on it), so decomposing each pose into
// principal angles makes the curves jump and flip.
OrvVector4 SmoothSequence(int pFrame)
{
    return OrvVector4(-170.0 + 20.0 * pFrame, 62.0 + 5.0 * pFrame, 100.0 + 13.0 * pFrame);
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
            lPrincipal.push_back(ToXyz(RotationOfSequence(SmoothSequence(lFrame), lOrder).GetR(lOrder), lOrder));
        KeyRotations(lPrincipal);

        OrvAnimCurveFilterUnroll lUnroll;
        lUnroll.SetRotationOrder(static_cast<OrvEuler::EOrder>(lOrder));
        OrvStatus lStatus;
        lStatus.SetError("stale");
        ASSERT_TRUE(lUnroll.Apply(mCurves, 3, &lStatus));
        EXPECT_TRUE(lStatus.IsSuccess());

        for (int lFrame = 0; lFrame < kPathFrames; ++lFrame)
        {
            SCOPED_TRACE(lFrame);
            const OrvVector4 lSequence = ToSequence(KeyAngles(lFrame), lOrder);
            ExpectAnglesNear(SmoothSequence(lFrame), lSequence);
            ExpectSameRotation(RotationOfSequence(SmoothSequence(lFrame), lOrder), RotationOfSequence(lSequence, lOrder));
        }
    }
}

TEST_F(HostFilters, UnrollAddsTurnsToCrossMinus180WithoutJumping)
{
    KeyRotations({OrvVector4(170.0, 0.0, -175.0), OrvVector4(-175.0, 0.0, 170.0), OrvVector4(-160.0, 0.0, 160.0),
                  OrvVector4(179.0, 0.0, -179.0)});
    OrvAnimCurveFilterUnroll lUnroll;
    ASSERT_TRUE(lUnroll.Apply(mCurves, 3));

    ExpectAnglesNear(OrvVector4(170.0, 0.0, -175.0), KeyAngles(0));
    ExpectAnglesNear(OrvVector4(185.0, 0.0, -190.0), KeyAngles(1));
    ExpectAnglesNear(OrvVector4(200.0, 0.0, -200.0), KeyAngles(2));
    ExpectAnglesNear(OrvVector4(179.0, 0.0, -179.0), KeyAngles(3));
}

TEST_F(HostFilters, RotationFiltersRefuseCurvesWhoseKeysDoNotLineUp)
{
    KeyRotations({OrvVector4(10.0, 20.0, 30.0), OrvVector4(-170.0, 20.0, 30.0)});
    OrvAnimCurveKey lExtra(FrameTime(5), 1.0f);
    mCurves[1]->KeyAdd(FrameTime(5), lExtra);
    OrvStatus lStatus;

    OrvAnimCurveFilterUnroll lUnroll;
    EXPECT_FALSE(lUnroll.Apply(mCurves, 3, &lStatus));
    EXPECT_TRUE(lStatus.Error());
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
        lPrincipal.push_back(RotationOfSequence(lPath(lFrame), 0).GetR(0));
    KeyRotations(lPrincipal);
    ASSERT_GT(std::fabs(KeyAngles(5)[0] - KeyAngles(4)[0]), 90.0);  // Y passed 90: the decomposition flipped

    OrvAnimCurveFilterGimbleKiller lKiller;
    ASSERT_TRUE(lKiller.Apply(mCurves, 3, nullptr));

    for (int lFrame = 0; lFrame < kPathFrames; ++lFrame)
    {
        SCOPED_TRACE(lFrame);
        ExpectAnglesNear(lPath(lFrame), KeyAngles(lFrame));
        ExpectSameRotation(RotationOfSequence(lPath(lFrame), 0), RotationOfSequence(KeyAngles(lFrame), 0));
    }
}

TEST_F(HostFilters, GimbalKillerSplitsALockedKeyClosestToThePreviousOne)
{
    // At Y = 90, (35, 90, 45) is the same rotation as (30, 90, 40): only X - Z counts.
    KeyRotations({OrvVector4(30.0, 80.0, 40.0), OrvVector4(35.0, 90.0, 45.0), OrvVector4(30.0, -90.0, 10.0)});
    const OrvAMatrix lLockedUp = RotationOfSequence(KeyAngles(1), 0);
    const OrvAMatrix lLockedDown = RotationOfSequence(KeyAngles(2), 0);

    OrvAnimCurveFilterGimbleKiller lKiller;
    ASSERT_TRUE(lKiller.Apply(mCurves, 3));

    ExpectAnglesNear(OrvVector4(30.0, 90.0, 40.0), KeyAngles(1));
    ExpectSameRotation(lLockedUp, RotationOfSequence(KeyAngles(1), 0));
    // At Y = -90 only X + Z counts (40 here); the split nearest to (30, 40) is (15, 25).
    ExpectAnglesNear(OrvVector4(15.0, -90.0, 25.0), KeyAngles(2));
    ExpectSameRotation(lLockedDown, RotationOfSequence(KeyAngles(2), 0));
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

std::vector<int64_t> KeyTimes(const OrvAnimCurve& pCurve)
{
    std::vector<int64_t> lTimes;
    for (int i = 0; i < pCurve.KeyGetCount(); ++i) lTimes.push_back(pCurve.KeyGetTime(i).Get());
    return lTimes;
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

TEST_F(HostFilters, ReducerEmptiesACurveThatIsConstantWithinTheTolerance)
{
    // The default tolerance, 1e-4, is the one the import uses.
    OrvAnimCurve* lCurve = MakeCurve(*mScene, {5.0f, 5.00005f, 4.99995f, 5.00009f, 5.0f});
    ASSERT_TRUE(Reduce(lCurve));
    EXPECT_EQ(0, lCurve->KeyGetCount());

    OrvAnimCurve* lSingle = MakeCurve(*mScene, {3.0f});
    ASSERT_TRUE(Reduce(lSingle));
    EXPECT_EQ(0, lSingle->KeyGetCount());
}

TEST_F(HostFilters, ReducerKeepsTheEndsOfFlatStretchesAndEverythingBetweenThem)
{
    const std::vector<float> lValues = {0.0f, 0.0f, 0.0f, 1.0f, 1.0f, 1.0f, 2.0f, 2.0f};
    OrvAnimCurve* lCurve = MakeCurve(*mScene, lValues);
    OrvAnimCurve* lCopy = MakeCurve(*mScene, lValues);
    ASSERT_TRUE(Reduce(lCurve));

    EXPECT_EQ((std::vector<int64_t>{0, 200, 300, 500, 600, 700}), KeyTimes(*lCurve));
    // Linear interpolation between the stretches is what it was before.
    for (int64_t lTime = -100; lTime <= 800; lTime += 25)
        EXPECT_EQ(lCopy->Evaluate(OrvTime(lTime)), lCurve->Evaluate(OrvTime(lTime))) << lTime;
}

TEST_F(HostFilters, ReducerKeepsNoisyCurvesAndHonoursItsTolerance)
{
    OrvAnimCurve* lNoisy = MakeCurve(*mScene, {0.0f, 0.001f, 0.0f, 0.001f, 0.0f});
    ASSERT_TRUE(Reduce(lNoisy));
    EXPECT_EQ(5, lNoisy->KeyGetCount());

    OrvAnimCurve* lSame = MakeCurve(*mScene, {0.0f, 0.001f, 0.0f, 0.001f, 0.0f});
    ASSERT_TRUE(Reduce(lSame, 0.0015));
    EXPECT_EQ(0, lSame->KeyGetCount());
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

TEST_F(HostFilters, ReducerTreatsEachCurveOnItsOwnAndRefusesNullCurves)
{
    OrvAnimCurve* lFlat = MakeCurve(*mScene, {1.0f, 1.0f, 1.0f});
    OrvAnimCurve* lRamp = MakeCurve(*mScene, {1.0f, 2.0f, 3.0f});
    OrvAnimCurve* lCurves[3] = {lFlat, lRamp, nullptr};
    OrvAnimCurveFilterConstantKeyReducer lReducer;
    OrvStatus lStatus;

    EXPECT_FALSE(lReducer.Apply(lCurves, 3, &lStatus));
    EXPECT_TRUE(lStatus.Error());
    EXPECT_EQ(3, lFlat->KeyGetCount());

    ASSERT_TRUE(lReducer.Apply(lCurves, 2, &lStatus));
    EXPECT_TRUE(lStatus.IsSuccess());
    EXPECT_EQ(0, lFlat->KeyGetCount());
    EXPECT_EQ(3, lRamp->KeyGetCount());
}
