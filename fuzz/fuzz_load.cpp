// The whole load, from bytes to an item tree, through the manager as a host calls it.
//
// Input bytes:
//   0     options: bit 0 set ignores unsupported content (LoadOptions::ignoreUnsupported), bit 1
//         reads with the standard profile
//   rest  the document
//
// Checked beyond the sanitizers: a refusal always comes with a message and leaves the caller's
// item as it was, and a success always sets it; under the subset, a document accepted strictly
// is accepted the same way, into an equal tree with the same messages, when unsupported content
// is ignored (there is nothing to ignore).
#include <cstddef>
#include <cstdint>
#include <memory>

#include "FuzzSupport.h"
#include "TreeEquality.h"

namespace {

constexpr const char* kTarget = "fuzz_load";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const bool ignoreUnsupported = data[0] & 1;
    const bool standard = data[0] & 2;
    const std::string bytes = tq::fuzz::documentBytes(data, size);
    const tq::fuzz::Item marker = std::make_shared<tq::svg::Node>();
    const tq::fuzz::LoadResult first =
        tq::fuzz::load(kTarget, bytes, tq::fuzz::loadOptions(ignoreUnsupported, standard), marker);
    if (!first.ok || ignoreUnsupported || standard) {
        return 0;
    }
    const tq::fuzz::LoadResult lenient =
        tq::fuzz::load(kTarget, bytes, tq::fuzz::loadOptions(true, false), marker);
    if (!lenient.ok) {
        tq::fuzz::fail(kTarget, "accepted strictly but refused when ignoring unsupported content",
                       tq::fuzz::joined(lenient.messages));
    }
    if (lenient.messages != first.messages) {
        tq::fuzz::fail(kTarget, "the messages differ between strict and lenient loads",
                       "strict:\n" + tq::fuzz::joined(first.messages) + "lenient:\n" +
                           tq::fuzz::joined(lenient.messages));
    }
    if (!first.root != !lenient.root) {
        tq::fuzz::fail(kTarget, "one load gave a root and the other none");
    }
    if (first.root) {
        const std::string difference = tq::test::TreeDifference(*first.root, *lenient.root);
        if (!difference.empty()) {
            tq::fuzz::fail(kTarget, "strict and lenient loads gave different trees", difference);
        }
    }
    return 0;
}
