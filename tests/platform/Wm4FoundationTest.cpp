#include <Wm4Foundation/Wm4Foundation.h>

#include <gtest/gtest.h>

using Wm4::Matrix3f;
using Wm4::Vector2f;

TEST(Matrix3, ProductPutsTheLeftFactorOutermost) {
    const Matrix3f translate(1, 0, 10, 0, 1, 20, 0, 0, 1);
    const Matrix3f scale(2, 0, 0, 0, 3, 0, 0, 0, 1);
    const Wm4::Vector3f p = (translate * scale) * Wm4::Vector3f(1, 1, 1);
    EXPECT_EQ(p, Wm4::Vector3f(12, 23, 1));  // scaled first, then translated
    EXPECT_EQ(Matrix3f::IDENTITY * scale, scale);
    EXPECT_EQ(Matrix3f(true), Matrix3f::ZERO);
    EXPECT_EQ(Matrix3f(false), Matrix3f::IDENTITY);
}

TEST(BezierCurve2, PositionFollowsDeCasteljau) {
    auto* points = new Vector2f[4]{{0, 0}, {0, 1}, {1, 1}, {1, 0}};
    Wm4::BezierCurve2f curve(3, points);
    EXPECT_EQ(curve.GetDegree(), 3);
    EXPECT_EQ(curve.GetPosition(0.0f), Vector2f(0, 0));
    EXPECT_EQ(curve.GetPosition(1.0f), Vector2f(1, 0));
    EXPECT_EQ(curve.GetPosition(0.5f), Vector2f(0.5f, 0.75f));

    Wm4::BezierCurve2f moved(std::move(curve));
    EXPECT_EQ(curve.GetControlPoints(), nullptr);
    EXPECT_EQ(moved.GetControlPoints()[1], Vector2f(0, 1));
}

TEST(Vector2, ArithmeticAndConstants) {
    Vector2f v(3, 4);
    EXPECT_FLOAT_EQ(v.Length(), 5.0f);
    EXPECT_EQ(2.0f * v, Vector2f(6, 8));
    EXPECT_EQ(-v + Vector2f::ONE, Vector2f(-2, -3));
    v /= 2.0f;
    EXPECT_EQ(v, Vector2f(1.5f, 2.0f));
    EXPECT_EQ(Vector2f::ZERO, Vector2f());
    EXPECT_EQ(Wm4::ColorRGBA::BLACK, Wm4::ColorRGBA(0, 0, 0, 1));
}
