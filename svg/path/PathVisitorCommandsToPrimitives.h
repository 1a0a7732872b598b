// Path commands into absolute primitives, one at a time.
#pragma once

#include <functional>
#include <list>
#include <memory>

#include <Wm4Foundation/Wm4Vector2.h>

#include "svg/model/Path.h"
#include "svg/path/PathPrimitive.h"

namespace tq::svg {

// Walks a command list once and hands each line, arc or cubic to the callback with a flag that
// is true when the piece does not continue the run of points of the piece before it (the first
// piece after a moveto or after a close path). The callback may move the primitive out of the
// pointer to keep it; whatever it leaves there is destroyed after the call.
//
// A smooth cubic reflects the last two numbers of the previous cubic record as written, so after
// a relative "c" or "s" the reflection is deliberately not SVG's. A command with fewer numbers
// than its kind needs (possible only in hand-built lists) is skipped.
class TQSVG_EXPORT PathVisitorCommandsToPrimitives {
public:
    using Callback = std::function<void(std::unique_ptr<PathPrimitive>&, bool)>;

    PathVisitorCommandsToPrimitives(const std::list<Path::Command>& commands, Callback callback);
    PathVisitorCommandsToPrimitives(const PathVisitorCommandsToPrimitives&) = delete;
    PathVisitorCommandsToPrimitives& operator=(const PathVisitorCommandsToPrimitives&) = delete;

    // An empty callback throws std::bad_function_call at the first primitive.
    void visit();

    // During a callback: whether its primitive is the line of a close path command, which ends
    // a closed subpath (a line back to the start written as such leaves it open).
    bool closesSubpath() const { return mClosing; }

private:
    std::unique_ptr<PathPrimitive> makePrimitive(const Path::Command& command,
                                                 const Path::Command* previous);
    Wm4::Vector2f reflectedControlPoint(const Path::Command& command,
                                        const Path::Command* previous) const;

    const std::list<Path::Command>& mCommands;
    Callback mCallback;
    Wm4::Vector2f mCurrentPoint;
    Wm4::Vector2f mSubpathStart;
    bool mClosing = false;
};

}  // namespace tq::svg
