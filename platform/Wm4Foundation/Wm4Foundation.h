// Everything of the geometry foundation in one include.
#pragma once

#include "Wm4BezierCurve2.h"
#include "Wm4ColorRGBA.h"
#include "Wm4Math.h"
#include "Wm4Matrix3.h"
#include "Wm4Vector2.h"
#include "Wm4Vector3.h"
#include "Wm4Vector4.h"
