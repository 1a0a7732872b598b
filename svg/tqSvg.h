// tqSvg: loads SVG into a tree of typed items (the library's strict subset, or SVG as browsers
// draw it), saves such trees back to SVG text and turns items into flat geometry. This header is
// the library's whole public interface; what it does not include is internal and not installed.
#pragma once

// Platform types that the interface uses.
#include <Wm4Foundation/Wm4Foundation.h>
#include <tqSystem/tqSystem.h>
#include <tqXml/tqXml.h>

// Document model.
#include "svg/model/BoundingBox.h"
#include "svg/model/Circle.h"
#include "svg/model/Document.h"
#include "svg/model/Image.h"
#include "svg/model/ItemInterface.h"
#include "svg/model/ItemInterfacePointer.h"
#include "svg/model/Line.h"
#include "svg/model/LoadOptions.h"
#include "svg/model/Node.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/model/RenderingProperties.h"
#include "svg/model/SaveOptions.h"
#include "svg/model/SvgColor.h"
#include "svg/model/Text.h"
#include "svg/model/UnitValue.h"

// Library start and stop, drivers and version.
#include "svg/io/LibraryGuard.h"
#include "svg/io/Version.h"
#include "svg/io/tqCoreDriver.h"
#include "svg/io/tqCoreSvgIODriver.h"
#include "svg/io/tqSvgDriver.h"
#include "svg/io/tqSvgIOManager.h"
#include "svg/io/tqTemplateManager.h"

// Writing.
#include "svg/write/SvgAttributeWriters.h"
#include "svg/write/SvgXmlSpace.h"

// Path data.
#include "svg/path/PathBuilder.h"
#include "svg/path/PathPrimitive.h"
#include "svg/path/PathVisitorCommandsToPrimitives.h"
#include "svg/path/PathVisitorStrToCommands.h"
#include "svg/path/PathVisitorStrToTokens.h"

// Geometry.
#include "svg/geometry/CleanupContour.h"
#include "svg/geometry/ComputeEstimatedBoundingBox.h"
#include "svg/geometry/SegmentOptions.h"
#include "svg/geometry/SegmentShapes.h"
#include "svg/geometry/SegmentationUtils.h"
#include "svg/geometry/SegmentedPrimitive.h"
#include "svg/geometry/SegmenterVisitor.h"
#include "svg/geometry/TriangulatePoly.h"
#include "svg/geometry/VisitorBase.h"
