// Loading speed, side by side over the same bytes:
//   BareSax        libxml2's SAX2 push parser with empty callbacks: the ceiling of any loader
//   BareSaxNumbers the same plus std::from_chars over every number of the path data: the floor
//                  of any loader that keeps the numbers
//   ParseXmlStream our SAX layer with an empty handler
//   Load           the full load into an item tree
//   LoadStandard   the same with the standard reading profile
//   Tokenizer      the path-data grammar alone over all the path data
//   IconsBareSax   libxml2's SAX2 push parser over each of mdi's icons, from memory
//   IconsParseXmlStream  our SAX layer over each of them with an empty handler
//   IconsLoad      the full load of each of them, as a host loading an icon theme does
// The icons are read from the icon test's cache (TQSVG_ICON_CACHE, else ~/.cache/tqsvg-icons);
// their rows are skipped, saying so, when it is not there.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "AllocationCounter.h"
#include "SvgDocumentGenerator.h"
#include "svg/read/detail/Loader.h"
#include "svg/tqSvg.h"

namespace {

const std::string& document() {
    static const std::string svg = tq::bench::GeneratePathHeavySvg(50u << 20);
    return svg;
}

constexpr int kChunk = 64 * 1024;

// Reads a string without copying it, so that every variant starts from the same bytes in place.
class ViewDevice : public tqIoDevice {
public:
    explicit ViewDevice(const std::string& text) : mText(text) {}
    bool isOpen() const override { return true; }
    int64 read(char* buffer, int64 size) override {
        const std::size_t n =
            std::min<std::size_t>(static_cast<std::size_t>(size), mText.size() - mPos);
        std::memcpy(buffer, mText.data() + mPos, n);
        mPos += n;
        return static_cast<int64>(n);
    }
    int64 write(const char*, int64) override { return -1; }
    void close() override {}

private:
    const std::string& mText;
    std::size_t mPos = 0;
};

// ---- bare libxml2 ------------------------------------------------------------------------------

struct BareState {
    bool parseNumbers = false;
    std::size_t numbers = 0;
    double sum = 0;
};

void countNumbers(BareState& state, const char* p, const char* end) {
    while (p < end) {
        const char c = *p;
        if ((c >= '0' && c <= '9') || c == '-' || c == '.') {
            double value;
            const auto r = std::from_chars(p, end, value);
            if (r.ec == std::errc()) {
                state.sum += value;
                ++state.numbers;
                p = r.ptr;
                continue;
            }
        }
        ++p;
    }
}

void bareStart(void* ctx, const xmlChar*, const xmlChar*, const xmlChar*, int, const xmlChar**,
               int nbAttributes, int, const xmlChar** attributes) {
    auto& state = *static_cast<BareState*>(static_cast<xmlParserCtxtPtr>(ctx)->_private);
    if (!state.parseNumbers) {
        return;
    }
    for (int i = 0; i < nbAttributes; ++i) {
        const xmlChar** a = attributes + 5 * i;
        if (std::strcmp(reinterpret_cast<const char*>(a[0]), "d") == 0) {
            countNumbers(state, reinterpret_cast<const char*>(a[3]),
                         reinterpret_cast<const char*>(a[4]));
        }
    }
}

void bareEnd(void*, const xmlChar*, const xmlChar*, const xmlChar*) {}
void bareCharacters(void*, const xmlChar*, int) {}

// One document through libxml2's push parser with callbacks that do (almost) nothing.
void bareParse(const std::string& svg, BareState& bare) {
    xmlSAXHandler sax;
    std::memset(&sax, 0, sizeof sax);
    sax.initialized = XML_SAX2_MAGIC;
    sax.startElementNs = bareStart;
    sax.endElementNs = bareEnd;
    sax.characters = bareCharacters;
    xmlParserCtxtPtr ctxt = xmlCreatePushParserCtxt(&sax, nullptr, nullptr, 0, nullptr);
    ctxt->_private = &bare;
    for (std::size_t pos = 0; pos < svg.size(); pos += kChunk) {
        xmlParseChunk(ctxt, svg.data() + pos,
                      static_cast<int>(std::min<std::size_t>(kChunk, svg.size() - pos)), 0);
    }
    xmlParseChunk(ctxt, nullptr, 0, 1);
    xmlFreeParserCtxt(ctxt);
}

void runBare(benchmark::State& state, bool parseNumbers) {
    const std::string& svg = document();
    BareState bare;
    bare.parseNumbers = parseNumbers;
    for (auto _ : state) {
        bareParse(svg, bare);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * svg.size()));
    if (parseNumbers) {
        state.counters["numbers/s"] =
            benchmark::Counter(double(bare.numbers), benchmark::Counter::kIsRate);
    }
    benchmark::DoNotOptimize(bare.sum);
}

void BareSax(benchmark::State& state) {
    runBare(state, false);
}
void BareSaxNumbers(benchmark::State& state) {
    runBare(state, true);
}

// ---- ours
// ----------------------------------------------------------------------------------------

void ParseXmlStream(benchmark::State& state) {
    const std::string& svg = document();
    tq::xml::XmlSaxParserHandler handler;
    for (auto _ : state) {
        ViewDevice device(svg);
        benchmark::DoNotOptimize(tq::xml::ParseXmlStream(device, handler, nullptr));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * svg.size()));
}

std::size_t countCommands(const tq::svg::ItemInterface& item) {
    std::size_t count = 0;
    if (item.getType() == tq::svg::ItemType::Path) {
        return static_cast<const tq::svg::Path&>(item).commands.size();
    }
    if (const auto* node = dynamic_cast<const tq::svg::Node*>(&item)) {
        for (const auto& child : node->getChildren()) {
            count += child ? countCommands(*child) : 0;
        }
    }
    return count;
}

void runLoad(benchmark::State& state, tq::svg::LoadProfile profile) {
    const std::string& svg = document();
    tq::svg::LoadOptions options;
    options.profile = profile;
    std::size_t numbers = 0;
    tq::bench::ExtractPathData(svg, &numbers);
    std::size_t commands = 0;
    std::size_t allocations = 0;
    for (auto _ : state) {
        ViewDevice device(svg);
        tq::svg::ItemInterfacePointer<tq::svg::ItemInterface> root;
        const std::size_t before = tq::bench::AllocationCount();
        tq::svg::Loader loader(root, device, options, nullptr, nullptr);
        allocations = tq::bench::AllocationCount() - before;
        if (!loader.getParseResult() || !root) {
            state.SkipWithError("the document did not load");
            return;
        }
        state.PauseTiming();
        commands = countCommands(*root);
        root.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * svg.size()));
    state.counters["numbers/s"] = benchmark::Counter(double(numbers) * double(state.iterations()),
                                                     benchmark::Counter::kIsRate);
    state.counters["allocs/command"] = double(allocations) / double(commands);
}

void Load(benchmark::State& state) {
    runLoad(state, tq::svg::LoadProfile::Subset);
}
void LoadStandard(benchmark::State& state) {
    runLoad(state, tq::svg::LoadProfile::Standard);
}

void Tokenizer(benchmark::State& state) {
    std::size_t numbers = 0;
    const std::string data = tq::bench::ExtractPathData(document(), &numbers);
    std::size_t commands = 0;
    for (auto _ : state) {
        commands = 0;
        tq::svg::PathVisitorStrToTokens tokens(data, [&](char, std::vector<float>&& values) {
            commands += 1;
            benchmark::DoNotOptimize(values.data());
        });
        if (!tokens.visit()) {
            state.SkipWithError(tokens.getErrorString().c_str());
            return;
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.size()));
    state.counters["numbers/s"] = benchmark::Counter(double(numbers) * double(state.iterations()),
                                                     benchmark::Counter::kIsRate);
}

// mdi's icons, each as its bytes.
const std::vector<std::string>& icons() {
    static const std::vector<std::string> files = [] {
        std::vector<std::string> out;
        const char* cache = std::getenv("TQSVG_ICON_CACHE");
        const char* home = std::getenv("HOME");
        const std::filesystem::path root =
            cache ? std::filesystem::path(cache)
                  : std::filesystem::path(home ? home : ".") / ".cache/tqsvg-icons";
        std::error_code error;
        for (const auto& entry :
             std::filesystem::directory_iterator(root / "node_modules/@mdi/svg/svg", error)) {
            std::ifstream in(entry.path(), std::ios::binary);
            out.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        }
        return out;
    }();
    return files;
}

bool haveIcons(benchmark::State& state) {
    if (icons().empty()) {
        state.SkipWithError("mdi's icons are not cached: run the icon test once (ctest -L icons)");
        return false;
    }
    return true;
}

void reportIcons(benchmark::State& state) {
    std::size_t bytes = 0;
    for (const std::string& icon : icons()) {
        bytes += icon.size();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.counters["files/s"] = benchmark::Counter(
        double(icons().size()) * double(state.iterations()), benchmark::Counter::kIsRate);
}

void IconsBareSax(benchmark::State& state) {
    if (!haveIcons(state)) {
        return;
    }
    BareState bare;
    for (auto _ : state) {
        for (const std::string& icon : icons()) {
            bareParse(icon, bare);
        }
    }
    reportIcons(state);
}

void IconsParseXmlStream(benchmark::State& state) {
    if (!haveIcons(state)) {
        return;
    }
    tq::xml::XmlSaxParserHandler handler;
    for (auto _ : state) {
        for (const std::string& icon : icons()) {
            ViewDevice device(icon);
            benchmark::DoNotOptimize(tq::xml::ParseXmlStream(device, handler, nullptr));
        }
    }
    reportIcons(state);
}

void IconsLoad(benchmark::State& state) {
    if (!haveIcons(state)) {
        return;
    }
    for (auto _ : state) {
        for (const std::string& icon : icons()) {
            ViewDevice device(icon);
            tq::svg::ItemInterfacePointer<tq::svg::ItemInterface> root;
            tq::svg::Loader loader(root, device, tq::svg::LoadOptions(), nullptr, nullptr);
            benchmark::DoNotOptimize(root.get());
        }
    }
    reportIcons(state);
}

}  // namespace

BENCHMARK(BareSax)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BareSaxNumbers)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(ParseXmlStream)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(Load)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(LoadStandard)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(Tokenizer)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(IconsBareSax)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(IconsParseXmlStream)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(IconsLoad)->Unit(benchmark::kMillisecond)->MinTime(2.0);

BENCHMARK_MAIN();
