// The standard reader's inherited values, resolved from the root down: what is hidden, the
// current colour, paint references and opacity.
#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "svg/model/Circle.h"
#include "svg/model/Line.h"
#include "svg/model/Node.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/read/detail/Loader.h"
#include "svg/read/detail/ParserMessages.h"
#include "svg/read/detail/StandardReader.h"
#include "svg/read/detail/StandardShapes.h"
#include "svg/read/detail/StandardValues.h"

namespace tq::svg::detail {

void StandardReader::resolveInherited() {
    struct State {
        bool removed = false;
        bool hidden = false;
        bool fillIsCurrent = false;
        bool strokeIsCurrent = false;
        std::uint32_t colour = kNone;  // in mColours; none for black
        float opacity = 1.0f;
    };
    std::vector<State> states(mRecords.size());
    for (std::uint32_t i = 0; i < mRecords.size(); ++i) {
        Record& record = mRecords[i];
        const Kind kind = ElementAt(record.row).kind;
        if (i < mOriginalRecords && (kind == Kind::Definitions || kind == Kind::Symbol)) {
            i = record.end - 1;  // definitions are drawn through their copies only
            continue;
        }
        const State parent = record.parent == kNone ? State() : states[record.parent];
        State& state = states[i];
        state = parent;
        state.removed = parent.removed || record.display == 1;
        if (state.removed) {
            if (!parent.removed) {
                mHidden.push_back(i);
            }
            continue;
        }
        state.hidden = record.visibility == 0 ? parent.hidden : record.visibility == 2;
        if (state.hidden && dynamic_cast<Node*>(record.item) == nullptr) {
            mHidden.push_back(i);
            continue;
        }
        if (record.colour != kNone) {
            state.colour = record.colour;
        }
        if (!record.resolves && !state.fillIsCurrent && !state.strokeIsCurrent) {
            continue;  // nothing to resolve on the item, and nothing it could change below it
        }
        RenderingProperties& p = record.item->editProperties();
        // currentColor is inherited as the keyword, so a descendant with a colour of its own
        // paints in that colour.
        static const std::string black = "black";
        const std::string& colour = state.colour == kNone ? black : mColours[state.colour];
        const auto resolve = [&](std::optional<std::string>& paint, bool& isCurrent) {
            if (paint) {
                isCurrent = *paint == "currentColor";
                if (paint->compare(0, 4, "url(") == 0) {
                    *paint = resolvePaint(*paint);
                    isCurrent = *paint == "currentColor";
                }
                if (isCurrent) {
                    *paint = colour;
                }
            } else if (isCurrent && record.colour != kNone) {
                paint = colour;
            }
        };
        resolve(p.fill, state.fillIsCurrent);
        resolve(p.stroke, state.strokeIsCurrent);
        if (p.opacity) {
            state.opacity *= *p.opacity;
            p.opacity = state.opacity;
        }
    }
}

std::string StandardReader::resolvePaint(const std::string& paint) {
    const std::size_t close = paint.find(')');
    const std::string id = paint.substr(5, close - 5);
    const std::string fallback = close + 2 < paint.size() ? paint.substr(close + 2) : "none";
    std::string colour;
    if (gradientColour(id, colour)) {
        warnOnce("gradient", "Ignore gradient: it is drawn in the average of its stop colours");
        return colour;
    }
    const auto feature = mFeatureIds.find(id);
    if (feature != mFeatureIds.end()) {
        warnOnce(feature->second, feature->second);
    } else {
        warnOnce("missing " + id,
                 "Ignore reference " + Quoted("#" + id) + ": no paint has that id");
    }
    return fallback;
}

bool StandardReader::gradientColour(const std::string& id, std::string& colour) {
    auto found = mGradientIds.find(id);
    if (found == mGradientIds.end()) {
        return false;
    }
    // Stops come from the gradient itself or, when it has none, along its references.
    const Gradient* gradient = &mGradients[found->second];
    for (int hops = 0; gradient->stops.empty() && hops < 16; ++hops) {
        std::string next;
        if (!LocalReference(gradient->href, next) ||
            (found = mGradientIds.find(next)) == mGradientIds.end()) {
            break;
        }
        gradient = &mGradients[found->second];
    }
    if (gradient->stops.empty()) {
        colour = "none";
        return true;
    }
    double sum[4] = {0, 0, 0, 0};
    for (const Rgba& stop : gradient->stops) {
        sum[0] += stop.r;
        sum[1] += stop.g;
        sum[2] += stop.b;
        sum[3] += stop.a;
    }
    const double n = static_cast<double>(gradient->stops.size());
    const auto channel = [&](int i) { return static_cast<unsigned char>(std::lround(sum[i] / n)); };
    colour = ColourText("", {channel(0), channel(1), channel(2), channel(3)});
    return true;
}

void StandardReader::removeHidden() {
    std::unordered_map<Node*, std::vector<const ItemInterface*>> byParent;
    for (const std::uint32_t i : mHidden) {
        const std::uint32_t parent = mRecords[i].parent;
        if (parent == kNone) {
            if (auto* root = dynamic_cast<Node*>(mRecords[i].item)) {
                root->editChildren().clear();
            }
            continue;
        }
        if (auto* group = dynamic_cast<Node*>(mRecords[parent].item)) {
            byParent[group].push_back(mRecords[i].item);
        }
    }
    for (auto& entry : byParent) {
        std::vector<const ItemInterface*>& doomed = entry.second;
        std::sort(doomed.begin(), doomed.end());
        entry.first->editChildren().remove_if([&](const std::shared_ptr<ItemInterface>& child) {
            return std::binary_search(doomed.begin(), doomed.end(), child.get());
        });
    }
}

void StandardReader::notePathLength(std::uint32_t record, std::string_view value) {
    float number = 0.0f;
    LengthUnit unit{};
    if (!ParseCssLength(value, number, unit) || unit != LengthUnit::None || !(number > 0.0f)) {
        warnOnce("pathLength " + std::string(value),
                 "Ignore Invalid attribute \"pathLength\" with value " + Quoted(value));
        return;
    }
    mPathLengths.emplace_back(record, number);
}

namespace {

// The length of a shape's outline in its own units; 0 for what has none.
double OutlineLength(const ItemInterface& item) {
    if (const auto* path = dynamic_cast<const Path*>(&item)) {
        return PathLength(path->commands);
    }
    if (const auto* line = dynamic_cast<const Line*>(&item)) {
        return (line->end - line->start).Length();
    }
    if (const auto* rect = dynamic_cast<const Rect*>(&item)) {
        return 2.0 * (double(rect->size.X()) + rect->size.Y());
    }
    if (const auto* circle = dynamic_cast<const Circle*>(&item)) {
        return 2.0 * 3.14159265358979 * circle->radius;
    }
    return 0.0;
}

}  // namespace

// A pathLength says how long the author takes the outline to be: dashes and their offset,
// wherever they come from, are scaled by the true length over it, and the scaled pattern is set on
// the shape itself. Copies made by use elements carry their original's pathLength.
void StandardReader::scaleDashesToPathLengths() {
    if (mPathLengths.empty()) {
        return;
    }
    for (std::uint32_t i = 0; i < mRecords.size(); ++i) {
        const Record& record = mRecords[i];
        const auto found = std::lower_bound(mPathLengths.begin(), mPathLengths.end(), record.origin,
                                            [](const std::pair<std::uint32_t, float>& entry,
                                               std::uint32_t r) { return entry.first < r; });
        if (found == mPathLengths.end() || found->first != record.origin) {
            continue;
        }
        const std::optional<std::vector<UnitValue>>* dashes = nullptr;
        const std::optional<float>* offset = nullptr;
        for (std::uint32_t r = i; r != kNone; r = mRecords[r].parent) {
            const RenderingProperties& p = mRecords[r].item->getProperties();
            dashes = dashes == nullptr && p.strokeDasharray ? &p.strokeDasharray : dashes;
            offset = offset == nullptr && p.strokeDashoffset ? &p.strokeDashoffset : offset;
        }
        const double length = OutlineLength(*record.item);
        if (dashes == nullptr || (*dashes)->empty() || !(length > 0.0)) {
            continue;
        }
        // A scale that takes a length past the float range leaves the dashes as they are.
        const auto scale = static_cast<float>(length / found->second);
        std::vector<UnitValue> scaled = **dashes;
        bool finite = std::isfinite(scale);
        for (UnitValue& dash : scaled) {
            dash.value *= scale;
            finite = finite && std::isfinite(dash.value);
        }
        const float shift = offset == nullptr ? 0.0f : **offset * scale;
        if (!finite || !std::isfinite(shift)) {
            continue;
        }
        RenderingProperties& own = record.item->editProperties();
        if (offset != nullptr) {
            own.strokeDashoffset = shift;
        }
        own.strokeDasharray = std::move(scaled);
    }
}

}  // namespace tq::svg::detail
