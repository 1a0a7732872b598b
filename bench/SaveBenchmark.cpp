// Saving speed over the generated path-heavy document, each save timed beside a peer that moves
// the same bytes in the same iteration, so that the ratio holds however loaded the machine is:
//   SaveToMemory  the save into a memory device; peer: the saved bytes appended to a memory
//                 device in 8192-byte pieces (the memory throughput any save to memory pays)
//   SaveToFile    the save into a file through the stream a save by name uses; peer: the saved
//                 bytes written to the same file with one fwrite
// Times are the thread's CPU time (user and system), so other processes on the machine do not
// count. Counters: "x peer" is save time over peer time; "allocs/command" counts operator new
// during one save per path command; "xml allocs/element" counts libxml2's own allocations
// during one save per element.
#include <benchmark/benchmark.h>
#include <libxml/xmlmemory.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "AllocationCounter.h"
#include "SvgDocumentGenerator.h"
#include "svg/read/detail/Loader.h"
#include "svg/tqSvg.h"
#include "svg/write/detail/BufferedFileStream.h"
#include "svg/write/detail/SvgSaveWriter.h"

namespace {

// libxml2's allocations, counted through its memory hooks, installed before libxml2 is used.
std::size_t gXmlAllocations = 0;
void* countedMalloc(std::size_t size) {
    ++gXmlAllocations;
    return std::malloc(size);
}
void* countedRealloc(void* p, std::size_t size) {
    ++gXmlAllocations;
    return std::realloc(p, size);
}
char* countedStrdup(const char* text) {
    ++gXmlAllocations;
    return strdup(text);
}
const bool gXmlHooks = xmlMemSetup(std::free, countedMalloc, countedRealloc, countedStrdup) == 0;

struct Loaded {
    tq::svg::ItemInterfacePointer<tq::svg::ItemInterface> root;
    std::size_t numbers = 0;
    std::size_t commands = 0;
    std::size_t elements = 0;
    std::string saved;  // what a save writes, for the peers
};

void count(const tq::svg::ItemInterface& item, Loaded& totals) {
    totals.elements += 1;
    if (item.getType() == tq::svg::ItemType::Path) {
        totals.commands += static_cast<const tq::svg::Path&>(item).commands.size();
    }
    if (const auto* node = dynamic_cast<const tq::svg::Node*>(&item)) {
        for (const auto& child : node->getChildren()) {
            if (child) {
                count(*child, totals);
            }
        }
    }
}

tq::svg::SaveOptions options() {
    tq::svg::SaveOptions o;
    o.writeHeader = false;
    return o;
}

const Loaded& loaded() {
    static const Loaded document = [] {
        Loaded result;
        const std::string svg = tq::bench::GeneratePathHeavySvg(50u << 20);
        tq::bench::ExtractPathData(svg, &result.numbers);
        tqIoDeviceMemory device(svg);
        tq::svg::Loader loader(result.root, device, tq::svg::LoadOptions(), nullptr, nullptr);
        if (result.root) {
            count(*result.root, result);
            tqIoDeviceMemory out;
            if (tq::svg::SaveSvgToDevice(*result.root, out, options())) {
                result.saved = out.getContent();
            }
        }
        return result;
    }();
    return document;
}

double threadSeconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

// Runs `save` and `peer` once per iteration, times both, and reports the save's rate, the
// peer's and their ratio. `save` returns false on failure. Returns the peer's total time.
template <class Save, class Peer>
double runBeside(benchmark::State& state, Save save, Peer peer) {
    const Loaded& doc = loaded();
    if (!gXmlHooks || doc.saved.empty()) {
        state.SkipWithError("no document or no libxml2 memory hooks");
        return 0;
    }
    const std::string& bytes = doc.saved;
    std::size_t allocations = 0;
    std::size_t xmlAllocations = 0;
    double saveTime = 0;
    double peerTime = 0;
    for (auto _ : state) {
        const std::size_t before = tq::bench::AllocationCount();
        const std::size_t xmlBefore = gXmlAllocations;
        double start = threadSeconds();
        const bool ok = save();
        const double saved = threadSeconds() - start;
        allocations = tq::bench::AllocationCount() - before;
        xmlAllocations = gXmlAllocations - xmlBefore;
        if (!ok) {
            state.SkipWithError("save failed");
            return 0;
        }
        start = threadSeconds();
        peer(bytes);
        peerTime += threadSeconds() - start;
        saveTime += saved;
        state.SetIterationTime(saved);
    }
    const double total = double(bytes.size()) * double(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(total));
    state.counters["peer MB/s"] = total / peerTime / 1e6;
    state.counters["save MB/s"] = total / saveTime / 1e6;
    state.counters["x peer"] = saveTime / peerTime;
    state.counters["numbers/s"] = double(doc.numbers) * double(state.iterations()) / saveTime;
    state.counters["allocs/command"] = double(allocations) / double(doc.commands);
    state.counters["xml allocs/element"] = double(xmlAllocations) / double(doc.elements);
    return peerTime;
}

void SaveToMemory(benchmark::State& state) {
    runBeside(
        state,
        [] {
            tqIoDeviceMemory device;
            return tq::svg::SaveSvgToDevice(*loaded().root, device, options());
        },
        [](const std::string& bytes) {
            tqIoDeviceMemory device;
            for (std::size_t at = 0; at < bytes.size(); at += 8192) {
                device.write(bytes.data() + at,
                             int64(std::min<std::size_t>(8192, bytes.size() - at)));
            }
            benchmark::DoNotOptimize(device.getContent().data());
        });
}

// The file stream of a save by name with its writes and its close timed: what the save spends
// handing bytes to the file.
double gFileWriteTime = 0;
class TimedFile : public tq::svg::BufferedFileStream {
public:
    explicit TimedFile(const std::string& path) : BufferedFileStream(path) {}
    ~TimedFile() override { close(); }
    int64 write(const char* data, int64 size) override {
        const double start = threadSeconds();
        const int64 written = BufferedFileStream::write(data, size);
        gFileWriteTime += threadSeconds() - start;
        return written;
    }
    void close() override {
        const double start = threadSeconds();
        BufferedFileStream::close();
        gFileWriteTime += threadSeconds() - start;
    }
};

// "x peer" compares the whole save with fwrite; "writes x fwrite" compares only the save's
// opening of the file, its writes (8192 bytes and more at a time, gathered by the stream) and
// its close with fopen, fwrite of the same bytes and fclose.
void SaveToFile(benchmark::State& state) {
    const char* path = "/tmp/tqsvg-bench-save.svg";
    gFileWriteTime = 0;
    const double fwriteTime = runBeside(
        state,
        [&] {
            const double start = threadSeconds();
            TimedFile device(path);
            gFileWriteTime += threadSeconds() - start;
            return tq::svg::SaveSvgToDevice(*loaded().root, device, options());
        },
        [&](const std::string& bytes) {
            std::FILE* file = std::fopen(path, "wb");
            if (file != nullptr) {
                std::fwrite(bytes.data(), 1, bytes.size(), file);
                std::fclose(file);
            }
        });
    state.counters["writes x fwrite"] = gFileWriteTime / fwriteTime;
    std::remove(path);
}

}  // namespace

BENCHMARK(SaveToMemory)->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseManualTime();
BENCHMARK(SaveToFile)->Unit(benchmark::kMillisecond)->MinTime(2.0)->UseManualTime();

BENCHMARK_MAIN();
