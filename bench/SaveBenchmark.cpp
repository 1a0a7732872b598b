// Saving speed: the generated path-heavy document written to memory and to a file.
#include <benchmark/benchmark.h>

#include <cstdio>

#include "SvgDocumentGenerator.h"
#include "svg/tqSvg.h"

namespace {

struct Loaded {
    tq::svg::ItemInterfacePointer<tq::svg::ItemInterface> root;
    std::size_t numbers = 0;
};

const Loaded& loaded() {
    static const Loaded document = [] {
        Loaded result;
        const std::string svg = tq::bench::GeneratePathHeavySvg(50u << 20);
        tq::bench::ExtractPathData(svg, &result.numbers);
        tqIoDeviceMemory device(svg);
        tq::svg::Loader loader(result.root, device, tq::svg::LoadOptions(), nullptr, nullptr);
        return result;
    }();
    return document;
}

tq::svg::SaveOptions options() {
    tq::svg::SaveOptions o;
    o.writeHeader = false;
    return o;
}

void SaveToMemory(benchmark::State& state) {
    const Loaded& doc = loaded();
    std::size_t bytes = 0;
    for (auto _ : state) {
        tqIoDeviceMemory device;
        if (!tq::svg::SaveSvgToDevice(*doc.root, device, options())) {
            state.SkipWithError("save failed");
            return;
        }
        bytes = device.getContent().size();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.counters["numbers/s"] = benchmark::Counter(
        double(doc.numbers) * double(state.iterations()), benchmark::Counter::kIsRate);
}

void SaveToFile(benchmark::State& state) {
    const Loaded& doc = loaded();
    const std::string path = "/tmp/tqsvg-bench-save.svg";
    for (auto _ : state) {
        tqIoDeviceFileStream device(path, DataWay::Write, true);
        if (!tq::svg::SaveSvgToDevice(*doc.root, device, options())) {
            state.SkipWithError("save failed");
            return;
        }
    }
    std::FILE* file = std::fopen(path.c_str(), "rb");
    std::fseek(file, 0, SEEK_END);
    const long bytes = std::ftell(file);
    std::fclose(file);
    std::remove(path.c_str());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * bytes);
}

}  // namespace

BENCHMARK(SaveToMemory)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(SaveToFile)->Unit(benchmark::kMillisecond)->MinTime(2.0);

BENCHMARK_MAIN();
