#include "orvsdk/host/math/OrvAMatrix.h"
#include "orvsdk/host/math/OrvEuler.h"
#include "orvsdk/host/core/OrvTime.h"
#include "orvsdk/host/math/OrvVector4.h"
#include "support/HostSceneSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using namespace orvsdk;
using orvsdk::hosttest::MatricesNear;
using orvsdk::hosttest::RotationMatrix;

namespace {

constexpr double kTolerance = 1e-12;
constexpr double kPi = 3.14159265358979323846;

// Builds an affine matrix from its 3x3 part given row by row.
OrvAMatrix Matrix3x3(const double (&pRows)[3][3])
{
    OrvAMatrix lMatrix;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) lMatrix(r, c) = pRows[r][c];
    return lMatrix;
}

// Rotation by pDegrees about one axis (0 X, 1 Y, 2 Z).
OrvAMatrix AxisRotation(int pAxis, double pDegrees)
{
    OrvVector4 lAngles;
    lAngles[pAxis] = pDegrees;
    return RotationMatrix(lAngles, 0);
}

} // namespace

TEST(HostVector4, NormalizeIgnoresWAndDegenerateVectors)
{
    OrvVector4 lV(3.0, 4.0, 12.0, 7.0);
    EXPECT_EQ(lV.Normalize(), 13.0);
    EXPECT_DOUBLE_EQ(lV[0], 3.0 / 13.0);
    EXPECT_EQ(lV[3], 7.0);
    OrvVector4 lHuge(1e200, 1e200, 0.0);  // the squares would overflow
    lHuge.Normalize();
    EXPECT_NEAR(lHuge[0], std::sqrt(0.5), kTolerance);
    OrvVector4 lZero(0.0, 0.0, 0.0, 5.0);
    EXPECT_EQ(lZero.Normalize(), 0.0);
    OrvVector4 lInfinite(std::numeric_limits<double>::infinity(), 1.0, 0.0);
    lInfinite.Normalize();
    EXPECT_EQ(lInfinite[1], 1.0);
}

TEST(HostTime, FramesAreExactAtCommonRates)
{
    for (double lRate : {24.0, 25.0, 30.0, 48.0, 50.0, 60.0, 100.0, 120.0})
    {
        const int64_t lTicksPerFrame = OrvTime::kTicksPerSecond / static_cast<int64_t>(lRate);
        for (int lFrame : {-7, 0, 1, 2, 3, 1001, 123457, 10000000})
        {
            const OrvTime lTime = OrvTime::FromFrame(lFrame, lRate);
            EXPECT_EQ(lTime.Get(), lFrame * lTicksPerFrame) << lFrame << " at " << lRate;
            EXPECT_EQ(lTime.GetFrame(lRate), lFrame) << lFrame << " at " << lRate;
        }
    }
}

TEST(HostTime, SecondsRoundToTheNearestTickAndSaturate)
{
    EXPECT_EQ(OrvTime::FromSeconds(1.5).Get(), 1058400000);
    EXPECT_EQ(OrvTime::FromSeconds(0.6 / OrvTime::kTicksPerSecond).Get(), 1);
    EXPECT_EQ(OrvTime::FromSeconds(0.4 / OrvTime::kTicksPerSecond).Get(), 0);
    EXPECT_EQ(OrvTime(OrvTime::kTicksPerSecond / 4).GetSecondDouble(), 0.25);
    EXPECT_EQ(OrvTime::FromFrame(0.5, 24.0).Get(), 14700000);
    EXPECT_NEAR(OrvTime::FromFrame(1.0, 29.97).GetSecondDouble(), 1.0 / 29.97, 1e-9);
    EXPECT_EQ(OrvTime::FromSeconds(1e300).Get(), INT64_MAX);
    EXPECT_EQ(OrvTime::FromSeconds(-1e300).Get(), INT64_MIN);
    EXPECT_EQ(OrvTime::FromSeconds(std::nan("")).Get(), 0);
}

// Every order against independent maths: HostNodeTransform.LocalTransformComposes...ForEveryOrder.
TEST(HostAMatrix, RightAnglesAreExactAndValuesThatAreNoPlainOrderMeanXYZ)
{
    EXPECT_EQ(AxisRotation(2, 90.0), Matrix3x3({{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}));
    EXPECT_EQ(AxisRotation(0, -270.0), Matrix3x3({{1, 0, 0}, {0, 0, -1}, {0, 1, 0}}));
    // XYZ is Z times Y times X; it is the default and stands in for values that are no plain order.
    const OrvVector4 lAngles(25.0, -40.0, 130.0);
    const OrvAMatrix lXyz = AxisRotation(2, 130.0) * AxisRotation(1, -40.0) * AxisRotation(0, 25.0);
    OrvAMatrix lDefault;
    lDefault.SetR(lAngles);
    for (const OrvAMatrix& lActual : {lDefault, RotationMatrix(lAngles, 6), RotationMatrix(lAngles, -1)})
        EXPECT_TRUE(MatricesNear(lXyz, lActual, kTolerance));
}

// GetR, and GetRotationAngles (its form for matrices that are rotations), rebuild the rotation.
TEST(HostAMatrix, GetRRebuildsTheRotationForEveryOrder)
{
    const double lOuter[] = {-180.0, -135.0, -90.0, -30.0, 0.0, 10.0, 45.0, 90.0, 120.0, 179.0, 180.0};
    const double lMiddle[] = {-90.0, -89.999, -60.0, -1e-9, 0.0, 30.0, 89.9999999, 90.0, 120.0, 270.0};
    for (int o = 0; o < 6; ++o)
        for (double a : lOuter)
            for (double b : lMiddle)
                for (double g : lOuter)
                {
                    const OrvAMatrix lExpected = RotationMatrix(OrvVector4(a, b, g), o);
                    const OrvVector4 lAngles = lExpected.GetR(o);
                    const std::string lCase = "order " + std::to_string(o) + " angles " + std::to_string(a) + " " +
                                              std::to_string(b) + " " + std::to_string(g);
                    ASSERT_TRUE(MatricesNear(lExpected, RotationMatrix(lAngles, o), kTolerance)) << lCase;
                    for (int k : {0, 2}) EXPECT_TRUE(lAngles[k] > -180.0 && lAngles[k] <= 180.0) << lCase;
                    EXPECT_LE(std::fabs(lAngles[1]), 90.0) << lCase;
                    const OrvVector4 lDirect = lExpected.GetRotationAngles(o);
                    ASSERT_TRUE(MatricesNear(lExpected, RotationMatrix(lDirect, o), kTolerance)) << lCase;
                    EXPECT_NEAR(lDirect[1], lAngles[1], 1e-9) << lCase;
                }
}

TEST(HostAMatrix, GetRPutsTheWholeTwistOnTheFirstAngleInGimbalLockAndIgnoresScale)
{
    for (int o = 0; o < 6; ++o)
        for (double lMiddle : {90.0, -90.0})
        {
            const OrvAMatrix lExpected = RotationMatrix(OrvVector4(30.0, lMiddle, 20.0), o);
            const OrvVector4 lAngles = lExpected.GetR(o);
            EXPECT_EQ(lAngles[1], lMiddle) << "order " << o;
            EXPECT_EQ(lAngles[2], 0.0) << "order " << o;
            EXPECT_TRUE(MatricesNear(lExpected, RotationMatrix(lAngles, o), kTolerance)) << "order " << o;
        }

    // Scale does not change the angles read.
    const OrvVector4 lAngles(12.0, -34.0, 56.0);
    OrvAMatrix lScale;
    lScale.SetS(OrvVector4(2.0, 0.5, 7.0));
    const OrvVector4 lRead = (RotationMatrix(lAngles, 4) * lScale).GetR(4);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(lRead[k], lAngles[k], 1e-9);
}

TEST(HostAMatrix, InverseIsAGeneralAffineInverseAndIdentityWhereSingular)
{
    OrvAMatrix lScaled;
    lScaled.SetS(OrvVector4(2.0, 4.0, 8.0));
    lScaled.SetT(OrvVector4(1.0, 2.0, 3.0));
    OrvAMatrix lExpected;
    lExpected.SetS(OrvVector4(0.5, 0.25, 0.125));
    lExpected.SetT(OrvVector4(-0.5, -0.5, -0.375));
    EXPECT_EQ(lScaled.Inverse(), lExpected);

    OrvAMatrix lShear = Matrix3x3({{1, 2, 0}, {0, 1, 0}, {0, 0, 1}});
    OrvAMatrix lGeneral = RotationMatrix(OrvVector4(10.0, 70.0, -150.0), 5) * lScaled * lShear;
    EXPECT_TRUE(MatricesNear(OrvAMatrix(), lGeneral * lGeneral.Inverse(), kTolerance));
    EXPECT_TRUE(MatricesNear(OrvAMatrix(), lGeneral.Inverse() * lGeneral, kTolerance));

    OrvAMatrix lFlat;
    lFlat.SetS(OrvVector4(1.0, 0.0, 1.0));
    lFlat.SetT(OrvVector4(1.0, 2.0, 3.0));
    lExpected = OrvAMatrix();
    lExpected.SetT(OrvVector4(-1.0, -2.0, -3.0));
    EXPECT_EQ(lFlat.Inverse(), lExpected);
}

TEST(HostAMatrix, PreRotateAndMultREqualTheProductsTheyStandFor)
{
    const double lInfinity = std::numeric_limits<double>::infinity();
    const double lAngles[] = {0.0,   -0.0,     90.0,  180.0, -90.0,  270.0,  360.0,   -720.0, 12.5,     -37.125,
                              359.9, 1234.567, -1e5,  1e-300, 45.0,  0.1,    -179.99, 1e18,   lInfinity, std::nan("")};
    const auto lExpectLikeProduct = [](const OrvAMatrix& pStart, int pAxis, double pAngle) {
        OrvAMatrix lActual = pStart;
        lActual.PreRotate(pAxis, pAngle);
        EXPECT_TRUE(MatricesNear(AxisRotation(pAxis, pAngle) * pStart, lActual)) << "axis " << pAxis << ", angle " << pAngle;
    };
    OrvAMatrix lRotated = RotationMatrix(OrvVector4(33.0, -71.5, 160.25), 4);
    lRotated.SetT(OrvVector4(1.5, -2.0, 40.0));
    OrvAMatrix lGeneral = Matrix3x3({{1.5, 2.0, -0.25}, {0.0, -3.0, 1.0}, {7.0, 0.5, 0.125}});
    lGeneral.SetT(OrvVector4(-1.0, 1e3, 3.0));
    const OrvAMatrix lStarts[] = {OrvAMatrix(), lRotated, lGeneral};  // the fast paths meet these
    for (const OrvAMatrix& lStart : lStarts)
        for (int lAxis = 0; lAxis < 3; ++lAxis)
            for (double lAngle : lAngles) lExpectLikeProduct(lStart, lAxis, lAngle);
    // A NaN in the start spreads like it does in the product.
    OrvAMatrix lNaNStart = RotationMatrix(OrvVector4(10.0, 20.0, 30.0), 0);
    lNaNStart(1, 2) = std::nan("");
    for (int lAxis = 0; lAxis < 3; ++lAxis) lExpectLikeProduct(lNaNStart, lAxis, 25.0);

    // MultR: the rotation part of the product; MultAffine: the whole product; to the last bit.
    for (const OrvAMatrix& lLeft : lStarts)
        for (const OrvAMatrix& lRight : lStarts)
        {
            EXPECT_EQ(lLeft * lRight, lLeft.MultAffine(lRight));
            OrvAMatrix lExpected = lLeft * lRight;
            lExpected.SetT(OrvVector4());
            EXPECT_TRUE(MatricesNear(lExpected, lLeft.MultR(lRight)));
        }
}

