// generate_document FILE [MEGABYTES]: writes the path-heavy document the load benchmark reads
// (50 MB by default), so that peers outside this process can read the same bytes.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "SvgDocumentGenerator.h"

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: generate_document FILE [MEGABYTES]\n");
        return 2;
    }
    const long megabytes = argc == 3 ? std::strtol(argv[2], nullptr, 10) : 50;
    if (megabytes <= 0 || megabytes > 4096) {
        std::fprintf(stderr, "generate_document: MEGABYTES must be 1 to 4096\n");
        return 2;
    }
    const std::string svg = tq::bench::GeneratePathHeavySvg(std::size_t(megabytes) << 20);
    std::FILE* file = std::fopen(argv[1], "wb");
    const bool ok = file != nullptr && std::fwrite(svg.data(), 1, svg.size(), file) == svg.size();
    if (file == nullptr || std::fclose(file) != 0 || !ok) {
        std::perror(argv[1]);
        return 1;
    }
    return 0;
}
