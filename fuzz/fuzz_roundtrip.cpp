// Load, save, load: whatever loads must save, and what was saved must load back with the same
// options into an equal tree, and save again into the same bytes. A tree read with the standard
// profile holds only what the library models, so its saved text must load back under the subset
// into an equal tree, losing nothing but its miter limits and dash offsets (which the subset
// does not read).
//
// Input bytes:
//   0     options: bit 0 ignores unsupported content on both loads; bit 1 saves indented; bit 2
//         reads the document with the standard profile
//   rest  the document
//
// Ignoring unsupported content keeps some invalid values on purpose (a colour text that is no
// colour stays as written), so a leniently loaded tree is only expected to load back leniently.
//
// What the format deliberately does not carry back is applied to the first tree before the
// comparison, as the round-trip unit test describes it: the style sheet gains its
// CDATA-in-comments wrapper on every save; a transform's third row is never written, nor a
// transform bit-identical to the identity; empty fill, stroke and class texts, bold, italic and
// underline that are present but false, and the alignment "none" write nothing (a lenient load
// keeps such values of invalid attributes); a viewBox is stored as corners and written as origin
// and size, so its far corner comes back as min + (max - min) in float arithmetic, and one with
// a negative size (which the loader takes) is not written at all; -0 is written "0" (the tree
// comparison takes -0 and 0 as equal). Trees that cannot come back at all are only saved: a
// number beyond the float range is stored as an infinity (in path data, or in a transform, where
// composing it with the identity gives NaN), and an svg nested in another declares the namespace
// again, which the loader refuses. Everything else the loader can produce is written in a form
// it reads back, a style sheet holding "]]>" included (its CDATA section is split there).
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "FuzzSupport.h"
#include "TreeEquality.h"

namespace {

constexpr const char* kTarget = "fuzz_roundtrip";

std::string save(const tq::svg::ItemInterface& item, bool indent, const std::string& source) {
    tq::svg::SaveOptions options;
    options.writeHeader = false;
    options.indent = indent;
    tqIoDeviceMemory device;
    std::list<std::string> messages;
    if (!tq::svg::tqSvgIOManager::get().saveSvg(item, device, "svg", nullptr, &options,
                                                &messages)) {
        tq::fuzz::fail(kTarget, "a loaded tree failed to save",
                       tq::fuzz::joined(messages) + "document:\n" + source);
    }
    return device.getContent();
}

bool bitIdentical(const Wm4::Matrix3f& a, const Wm4::Matrix3f& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Turns a loaded tree into what a save carries back of it. `stable` is cleared when a second
// save may differ from the first: the style sheet grows by its wrapper on every save, and a
// transform that is the identity but for a -0, or a viewBox whose size arithmetic gives NaN, is
// written the first time only.
void carriedBack(tq::svg::ItemInterface& item, bool& stable) {
    if (auto& transform = item.editTransform()) {
        (*transform)(2, 0) = 0.0f;
        (*transform)(2, 1) = 0.0f;
        (*transform)(2, 2) = 1.0f;
        if (bitIdentical(*transform, Wm4::Matrix3f::IDENTITY)) {
            transform.reset();
        } else if (*transform == Wm4::Matrix3f::IDENTITY) {
            stable = false;
        }
    }
    // Empty texts and present-but-false flags write nothing, and so does the "none" alignment.
    auto& properties = item.editProperties();
    for (auto* text : {&properties.fill, &properties.stroke, &properties.className}) {
        if (*text && (*text)->empty()) {
            text->reset();
        }
    }
    if (item.getType() == tq::svg::ItemType::Text) {
        auto& text = static_cast<tq::svg::Text&>(item);
        for (auto* flag : {&text.bold, &text.italic, &text.underline}) {
            if (*flag && !**flag) {
                flag->reset();
            }
        }
    }
    if (item.getType() == tq::svg::ItemType::Image) {
        auto& align = static_cast<tq::svg::Image&>(item).preserveAspectRatio;
        if (align == tq::svg::AspectRatioAlign::None) {
            align.reset();
        }
    }
    if (item.getType() == tq::svg::ItemType::Document) {
        auto& document = static_cast<tq::svg::Document&>(item);
        auto& style = document.editStyle();
        if (style && !style->empty()) {
            style = "\n/*  */" + *style + "\n/*  */";
            stable = false;
        }
        auto& box = document.editViewbox();
        if (box && !box->isValid()) {
            box.reset();
        } else if (box) {
            box->max = box->min + (box->max - box->min);
            stable = stable && box->isValid();  // infinite corners come back as NaN
        }
    }
    if (auto* node = dynamic_cast<tq::svg::Node*>(&item)) {
        for (const auto& child : node->editChildren()) {
            if (child) {
                carriedBack(*child, stable);
            }
        }
    }
}

// The properties only the standard profile reads, and the subset skips with a warning.
constexpr const char* kStandardOnly[] = {"\"stroke-miterlimit\"", "\"stroke-dashoffset\""};

void withoutStandardOnly(tq::svg::ItemInterface& item) {
    auto& properties = item.editProperties();
    properties.strokeMiterlimit.reset();
    properties.strokeDashoffset.reset();
    if (auto* node = dynamic_cast<tq::svg::Node*>(&item)) {
        for (const auto& child : node->editChildren()) {
            if (child) {
                withoutStandardOnly(*child);
            }
        }
    }
}

// False for what is deliberately not carried back: non-finite path numbers or transforms and an
// svg below the root.
bool carriable(const tq::svg::ItemInterface& item, bool root) {
    if (item.getType() == tq::svg::ItemType::Document) {
        if (!root) {
            return false;
        }
    }
    const auto& transform = item.getTransform();
    if (transform && !tq::fuzz::allFinite(*transform)) {
        return false;
    }
    if (item.getType() == tq::svg::ItemType::Path &&
        !tq::fuzz::allFinite(static_cast<const tq::svg::Path&>(item).commands)) {
        return false;
    }
    if (const auto* node = dynamic_cast<const tq::svg::Node*>(&item)) {
        for (const auto& child : node->getChildren()) {
            if (child && !carriable(*child, false)) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const bool ignoreUnsupported = data[0] & 1;
    const bool indent = data[0] & 2;
    const bool standard = data[0] & 4;
    const std::string bytes = tq::fuzz::documentBytes(data, size);
    tq::fuzz::LoadResult first =
        tq::fuzz::load(kTarget, bytes, tq::fuzz::loadOptions(ignoreUnsupported, standard));
    if (!first.ok || !first.root) {
        return 0;  // refused, or a document of style elements only: no tree
    }
    const std::string saved = save(*first.root, indent, bytes);
    if (!carriable(*first.root, true)) {
        return 0;
    }
    const tq::fuzz::LoadResult second =
        tq::fuzz::load(kTarget, saved, tq::fuzz::loadOptions(ignoreUnsupported || standard, false));
    if (!second.ok || !second.root) {
        tq::fuzz::fail(kTarget, "a saved tree did not load back",
                       tq::fuzz::joined(second.messages) + "saved:\n" + saved);
    }
    bool stable = !standard;
    if (standard) {
        for (const std::string& message : second.messages) {
            const auto names = [&message](const char* name) {
                return message.find(name) != std::string::npos;
            };
            if (std::none_of(std::begin(kStandardOnly), std::end(kStandardOnly), names)) {
                tq::fuzz::fail(kTarget, "the subset did not read a standard tree back: " + message,
                               "saved:\n" + saved);
            }
        }
        withoutStandardOnly(*first.root);
    }
    carriedBack(*first.root, stable);
    const std::string difference = tq::test::TreeDifference(*first.root, *second.root);
    if (!difference.empty()) {
        tq::fuzz::fail(kTarget, "the tree loaded back differs: " + difference, "saved:\n" + saved);
    }
    if (stable && save(*second.root, indent, saved) != saved) {
        tq::fuzz::fail(kTarget, "saving the loaded-back tree gave other bytes", "saved:\n" + saved);
    }
    return 0;
}
