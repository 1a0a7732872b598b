// The standard reader's inherited values, resolved from the root down: what is hidden, the
// current colour, paint references and opacity.
#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "svg/model/Node.h"
#include "svg/read/detail/Loader.h"
#include "svg/read/detail/ParserMessages.h"
#include "svg/read/detail/StandardReader.h"

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

}  // namespace tq::svg::detail
