#include "svg/geometry/detail/DashPattern.h"

#include <cmath>
#include <cstdint>

namespace tq::svg::detail {

namespace {

using Subpath = StrokeSubpaths::Subpath;

// Where the walk is in the pattern: which entry, how much of it is left, and whether it is a
// dash (even entries) or a gap.
struct Phase {
    std::size_t entry = 0;
    double left = 0.0;
    bool on() const { return entry % 2 == 0; }
};

// The phase at the start of every subpath: the offset into the period, where an entry that ends
// exactly there is still current (left 0), so that a dash of no length at the start is drawn.
Phase startPhase(const DashPattern& pattern) {
    double into = std::fmod(pattern.offset, pattern.period);
    if (into < 0.0) {
        into += pattern.period;
    }
    if (!(into < pattern.period)) {
        into = 0.0;
    }
    Phase phase;
    const std::size_t n = pattern.lengths.size();
    // At most one round: the entries sum to more than `into`.
    for (std::size_t k = 0; k < n && into > pattern.lengths[phase.entry]; ++k) {
        into -= pattern.lengths[phase.entry];
        phase.entry = (phase.entry + 1) % n;
    }
    phase.left = std::max(0.0, pattern.lengths[phase.entry] - into);
    return phase;
}

// Cuts one subpath of two points or more.
class DashWalk {
public:
    DashWalk(const StrokeSubpaths& lines, const DashPattern& pattern, StrokeSubpaths& dashes)
        : mLines(lines), mPattern(pattern), mDashes(dashes) {}

    void run(const Subpath& subpath) {
        mPhase = startPhase(mPattern);
        mOpen = false;
        mFirst = kNoDash;
        mFirstEnded = false;
        const Wm4::Vector2d& start = mLines.points[subpath.begin];
        if (mPhase.on()) {
            mFirst = mDashes.subpaths.size();
            startDash(start);
        }
        const std::uint32_t last = subpath.closed ? subpath.end : subpath.end - 1;
        for (std::uint32_t k = subpath.begin; k < last; ++k) {
            const std::uint32_t next = k + 1 < subpath.end ? k + 1 : subpath.begin;
            walkSegment(mLines.points[k], mLines.points[next], mLines.corners[next] != 0);
        }
        finish(subpath.closed);
    }

private:
    static constexpr std::size_t kNoDash = static_cast<std::size_t>(-1);

    void startDash(const Wm4::Vector2d& p) {
        mDashes.begin();
        mDashes.add(p, false);
        mOpen = true;
    }

    void endDash(const Wm4::Vector2d& p, const Wm4::Vector2d& along) {
        if (!mOpen) {
            startDash(p);  // a dash of no length: a dot
        }
        mDashes.add(p, false);
        mDashes.end(false, true, along);
        mOpen = false;
        mFirstEnded = true;
    }

    // Every entry boundary on a -> b, then b itself inside an open dash.
    void walkSegment(const Wm4::Vector2d& a, const Wm4::Vector2d& b, bool corner) {
        const double length = (b - a).Length();
        mAlong = (b - a) / length;
        double t = 0.0;
        while (mPhase.left <= length - t) {
            t += mPhase.left;
            const Wm4::Vector2d p = t < length ? a + mAlong * t : b;
            if (mPhase.on()) {
                endDash(p, mAlong);
            } else {
                startDash(p);
            }
            mPhase.entry = (mPhase.entry + 1) % mPattern.lengths.size();
            mPhase.left = mPattern.lengths[mPhase.entry];
        }
        mPhase.left -= length - t;
        if (mOpen) {
            mDashes.add(b, corner);
        }
    }

    // The dash still open at the end: ended there, or, around a closed subpath, joined to the
    // dash that began at the start (or closed, when nothing interrupted the subpath).
    void finish(bool closed) {
        if (!mOpen) {
            return;
        }
        if (!closed || mFirst == kNoDash) {
            mDashes.end(false, false, mAlong);  // a dash that only just began is dropped
            return;
        }
        if (!mFirstEnded) {
            mDashes.end(true, true);
            return;
        }
        const Subpath first = mDashes.subpaths[mFirst];
        for (std::uint32_t i = first.begin + 1; i < first.end; ++i) {
            mDashes.add(mDashes.points[i], mDashes.corners[i] != 0);
        }
        mDashes.end(false, true, mAlong);
        // The joined dash takes the first one's place; the first one's points stay unused.
        mDashes.subpaths[mFirst] = mDashes.subpaths.back();
        mDashes.subpaths.pop_back();
    }

    const StrokeSubpaths& mLines;
    const DashPattern& mPattern;
    StrokeSubpaths& mDashes;
    Phase mPhase;
    Wm4::Vector2d mAlong{1.0, 0.0};
    bool mOpen = false;
    std::size_t mFirst = kNoDash;  // the dash that began at the subpath's start
    bool mFirstEnded = false;
};

}  // namespace

bool DashPattern::set(const std::vector<UnitValue>& dashes, float dashOffset) {
    lengths.clear();
    period = 0.0;
    offset = std::isfinite(dashOffset) ? dashOffset : 0.0;
    for (const UnitValue& dash : dashes) {
        if (!(dash.value >= 0.0f) || !std::isfinite(dash.value) ||
            (dash.unit != Unit::None && dash.unit != Unit::Px)) {
            return false;
        }
        lengths.push_back(dash.value);
        period += dash.value;
    }
    if (lengths.size() % 2 != 0) {
        lengths.insert(lengths.end(), lengths.begin(), lengths.end());
        period *= 2.0;
    }
    return period > 0.0 && std::isfinite(period);
}

double DashPattern::countAlong(const StrokeSubpaths& lines) const {
    double count = 0.0;
    for (const StrokeSubpaths::Subpath& subpath : lines.subpaths) {
        count += (lines.length(subpath) / period + 1.0) * double(lengths.size() / 2);
    }
    return count;
}

void CutIntoDashes(const StrokeSubpaths& lines, const DashPattern& pattern,
                   StrokeSubpaths& dashes) {
    dashes.clear();
    DashWalk walk(lines, pattern, dashes);
    for (const Subpath& subpath : lines.subpaths) {
        if (subpath.end - subpath.begin > 1) {
            walk.run(subpath);
        } else if (startPhase(pattern).on()) {
            dashes.begin();
            dashes.add(lines.points[subpath.begin], false);
            dashes.end(false, true, subpath.along);
        }
    }
}

}  // namespace tq::svg::detail
