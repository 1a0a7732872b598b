// What README's fragments take from the host around them: its drawing calls.
#pragma once

#include <vector>

#include <svg/tqSvg.h>

inline void draw_lines(const std::vector<Wm4::Vector2f>&, const std::vector<unsigned int>&) {}
inline void draw_triangles(const std::vector<Wm4::Vector2f>&, const std::vector<unsigned int>&,
                           const Wm4::ColorRGBA&) {}
