// What the fuzz targets over documents share: the library started once for the process, loads
// from bytes through the manager as a host does, and a report that stops the run.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <string>

#include "svg/tqSvg.h"

namespace tq::fuzz {

using Item = svg::ItemInterfacePointer<svg::ItemInterface>;

// Prints what went wrong and what it was about, then aborts so that libFuzzer keeps the input.
[[noreturn]] inline void fail(const char* target, const std::string& what,
                              const std::string& detail = std::string()) {
    std::fprintf(stderr, "%s: %s\n", target, what.c_str());
    if (!detail.empty()) {
        std::fprintf(stderr, "%s\n", detail.c_str());
    }
    std::abort();
}

// Started on the first call and never stopped: the process ends with the run.
inline void startLibrary() {
    static const bool started = svg::initializeTqSvg();
    if (!started) {
        fail("fuzz", "the library did not start");
    }
}

struct LoadResult {
    bool ok = false;
    Item root;
    std::list<std::string> messages;
};

inline std::string joined(const std::list<std::string>& messages) {
    std::string text;
    for (const std::string& message : messages) {
        text += message;
        text += '\n';
    }
    return text;
}

// A load as a host does it: a memory device under the name "svg". `root` starts as the marker
// item, when given, so that a failed load that replaced it, or a successful one that did not, is
// seen.
inline LoadResult load(const char* target, const std::string& bytes,
                       const svg::LoadOptions& options, const Item& marker = nullptr) {
    startLibrary();
    LoadResult result;
    result.root = marker;
    tqIoDeviceMemory device(bytes);
    result.ok = svg::tqSvgIOManager::get().loadSvg(result.root, device, "svg", nullptr, &options,
                                                   &result.messages);
    if (!result.ok && result.messages.empty()) {
        fail(target, "a load failed without a message");
    }
    if (!result.ok && result.root != marker) {
        fail(target, "a failed load replaced the caller's item", joined(result.messages));
    }
    // Every load that reaches the end of the document sets the item (null for style alone).
    if (result.ok && marker && result.root == marker) {
        fail(target, "a load succeeded without giving an item", joined(result.messages));
    }
    return result;
}

inline svg::LoadOptions loadOptions(bool ignoreUnsupported, bool standard) {
    svg::LoadOptions options;
    options.ignoreUnsupported = ignoreUnsupported;
    options.profile = standard ? svg::LoadProfile::Standard : svg::LoadProfile::Subset;
    return options;
}

// Whether no number is an infinity or NaN, which several targets set aside: such numbers are
// stored as read but have no text that reads back to them.
inline bool allFinite(const Wm4::Matrix3f& m) {
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            if (!std::isfinite(m(r, c))) {
                return false;
            }
        }
    }
    return true;
}

inline bool allFinite(const std::list<svg::Path::Command>& commands) {
    for (const svg::Path::Command& command : commands) {
        for (float value : command.values) {
            if (!std::isfinite(value)) {
                return false;
            }
        }
    }
    return true;
}

// The input after its first byte, which the targets use for options.
inline std::string documentBytes(const std::uint8_t* data, std::size_t size) {
    return size == 0 ? std::string()
                     : std::string(reinterpret_cast<const char*>(data) + 1, size - 1);
}

}  // namespace tq::fuzz
