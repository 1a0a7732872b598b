// An RGBA colour of four floats, each nominally in [0, 1].
#pragma once

namespace Wm4 {

class ColorRGBA {
public:
    constexpr ColorRGBA() : mTuple{0.0f, 0.0f, 0.0f, 0.0f} {}
    constexpr ColorRGBA(float r, float g, float b, float a) : mTuple{r, g, b, a} {}

    float& R() { return mTuple[0]; }
    float R() const { return mTuple[0]; }
    float& G() { return mTuple[1]; }
    float G() const { return mTuple[1]; }
    float& B() { return mTuple[2]; }
    float B() const { return mTuple[2]; }
    float& A() { return mTuple[3]; }
    float A() const { return mTuple[3]; }
    float& operator[](int i) { return mTuple[i]; }
    float operator[](int i) const { return mTuple[i]; }

    bool operator==(const ColorRGBA& c) const {
        return mTuple[0] == c.mTuple[0] && mTuple[1] == c.mTuple[1] && mTuple[2] == c.mTuple[2] &&
               mTuple[3] == c.mTuple[3];
    }
    bool operator!=(const ColorRGBA& c) const { return !(*this == c); }

    static const ColorRGBA BLACK;
    static const ColorRGBA WHITE;
    static const ColorRGBA INVALID;

private:
    float mTuple[4];
};

inline const ColorRGBA ColorRGBA::BLACK{0.0f, 0.0f, 0.0f, 1.0f};
inline const ColorRGBA ColorRGBA::WHITE{1.0f, 1.0f, 1.0f, 1.0f};
inline const ColorRGBA ColorRGBA::INVALID{-1.0f, -1.0f, -1.0f, -1.0f};

}  // namespace Wm4
