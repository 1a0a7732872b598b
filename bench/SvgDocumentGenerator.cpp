#include "SvgDocumentGenerator.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <random>

namespace tq::bench {

namespace {

class Writer {
public:
    explicit Writer(std::uint32_t seed) : mRng(seed) {}

    int integer(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(mRng); }

    // A number with one to three decimals, sometimes negative.
    void number(std::string& out, bool allowNegative = true) {
        const int decimals = integer(1, 3);
        int scale = 1;
        for (int i = 0; i < decimals; ++i) {
            scale *= 10;
        }
        int value = integer(allowNegative ? -200 * scale : 0, 400 * scale);
        if (value < 0) {
            out += '-';
            value = -value;
        }
        char buffer[16];
        out.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, value / scale).ptr);
        out += '.';
        const std::string fraction = std::to_string(value % scale + scale).substr(1);
        out += fraction;
    }

    // Separator before a number: comma or space, or nothing where the number carries a sign.
    void separator(std::string& out) { out += integer(0, 1) ? ',' : ' '; }

    void numbers(std::string& out, int count) {
        for (int i = 0; i < count; ++i) {
            if (i > 0) {
                separator(out);
            }
            number(out);
        }
    }

    void path(std::string& out) {
        out += "<path d=\"M";
        numbers(out, 2);
        const int commands = integer(36, 44);
        bool previousCubic = false;
        for (int c = 0; c < commands; ++c) {
            const bool relative = integer(0, 1) != 0;
            switch (integer(0, 5)) {
                case 0:
                case 1:
                    out += relative ? " l" : " L";
                    numbers(out, 2);
                    previousCubic = false;
                    break;
                case 2:
                    out += relative ? " c" : " C";
                    numbers(out, 6);
                    previousCubic = true;
                    break;
                case 3:
                    if (previousCubic) {
                        out += relative ? " s" : " S";
                        numbers(out, 4);
                    } else {
                        out += relative ? " h" : " V";
                        number(out);
                    }
                    break;
                case 4:
                    out += relative ? " a" : " A";
                    number(out, false);
                    out += ' ';
                    number(out, false);
                    out += ' ';
                    out += std::to_string(integer(0, 90));
                    out += integer(0, 1) ? " 0 1 " : " 1 0 ";
                    numbers(out, 2);
                    previousCubic = false;
                    break;
                default:
                    out += relative ? " v" : " H";
                    number(out);
                    previousCubic = false;
                    break;
            }
        }
        out += integer(0, 3) == 0 ? " Z\"" : "\"";
        out += integer(0, 1) ? " fill=\"#3a7bd5\""
                             : " fill=\"none\" stroke=\"black\" stroke-width=\"0.5\"";
        out += "/>\n";
    }

private:
    std::mt19937 mRng;
};

}  // namespace

std::string GeneratePathHeavySvg(std::size_t targetBytes, std::uint32_t seed) {
    Writer w(seed);
    std::string out;
    out.reserve(targetBytes + 4096);
    out += "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
    out += "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 1000 1000\">\n";
    out += "<style>.a { fill: #3a7bd5; } .b { stroke: black; }</style>\n";
    int group = 0;
    while (out.size() < targetBytes) {
        out += "<g transform=\"translate(" + std::to_string(group % 50) + " " +
               std::to_string(group % 30) + ") rotate(" + std::to_string(group % 360) +
               ")\" opacity=\"0.8\" class=\"a\">\n";
        for (int i = 0; i < 20; ++i) {
            w.path(out);
        }
        out += "<rect x=\"1.5\" y=\"2\" width=\"30\" height=\"20\" rx=\"2\" fill=\"red\"/>\n";
        out += "<circle cx=\"50\" cy=\"50\" r=\"12.5\" stroke=\"blue\" fill=\"none\"/>\n";
        out +=
            "<text x=\"10\" y=\"20\" font-size=\"12\">Group " + std::to_string(group) + "</text>\n";
        out += "</g>\n";
        ++group;
    }
    out += "</svg>\n";
    return out;
}

namespace {

void appendPoint(std::string& out, double x, double y) {
    char buffer[48];
    const int n = std::snprintf(buffer, sizeof buffer, " %.2f %.2f", x, y);
    out.append(buffer, static_cast<std::size_t>(n));
}

// A blob around (cx, cy): 8 pieces at increasing angles, radius varying between 60 % and 100 %
// of r: star-shaped around the centre.
void appendShapePath(std::string& out, std::mt19937& rng, double cx, double cy, double r,
                     bool hole) {
    std::uniform_real_distribution<double> radius(0.6 * r, r);
    const auto at = [&](double angle, double rr) {
        appendPoint(out, cx + rr * std::cos(angle), cy + rr * std::sin(angle));
    };
    constexpr int kPieces = 8;
    constexpr double kStep = 2 * 3.14159265358979 / kPieces;
    out += "<path d=\"M";
    at(0, r);
    for (int i = 1; i <= kPieces; ++i) {
        const double a0 = (i - 1) * kStep;
        const double a1 = i == kPieces ? 0 : i * kStep;
        const double end = i == kPieces ? r : radius(rng);
        switch (i % 4) {
            case 0:
                out += " L";
                at(a1, end);
                break;
            case 1:
                out += " C";
                at(a0 + kStep / 3, radius(rng));
                at(a0 + 2 * kStep / 3, radius(rng));
                at(a1, end);
                break;
            case 2:
                out += " S";
                at(a0 + 2 * kStep / 3, radius(rng));
                at(a1, end);
                break;
            default:
                out += " A";
                appendPoint(out, r, 0.8 * r);
                out += " 0 0 1";
                at(a1, end);
                break;
        }
    }
    out += " Z";
    if (hole) {
        // A circle of two half arcs, wound against the outline.
        const double h = 0.25 * r;
        out += " M";
        appendPoint(out, cx + h, cy);
        out += " A";
        appendPoint(out, h, h);
        out += " 0 0 0";
        appendPoint(out, cx - h, cy);
        out += " A";
        appendPoint(out, h, h);
        out += " 0 0 0";
        appendPoint(out, cx + h, cy);
        out += " Z";
    }
    out += "\" fill=\"#3a7bd5\" stroke=\"black\" stroke-width=\"0.5\"/>\n";
}

}  // namespace

std::string GenerateShapeSvg(std::size_t paths, std::uint32_t seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> position(0, 1000);
    std::uniform_real_distribution<double> size(5, 40);
    std::string out = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 1000 1000\">\n";
    for (std::size_t i = 0; i < paths; ++i) {
        if (i % 20 == 0) {
            out += i == 0 ? "" : "</g>\n";
            out += "<g transform=\"rotate(" + std::to_string(i % 360) + " 500 500)\">\n";
        }
        appendShapePath(out, rng, position(rng), position(rng), size(rng), i % 2 == 0);
    }
    out += paths > 0 ? "</g>\n</svg>\n" : "</svg>\n";
    return out;
}

std::string ExtractPathData(const std::string& svg, std::size_t* numberCount) {
    std::string data;
    std::size_t numbers = 0;
    const std::string key = " d=\"";
    for (std::size_t pos = svg.find(key); pos != std::string::npos; pos = svg.find(key, pos)) {
        pos += key.size();
        const std::size_t end = svg.find('"', pos);
        data.append(svg, pos, end - pos);
        data += ' ';
        bool inNumber = false;
        for (std::size_t i = pos; i < end; ++i) {
            const char c = svg[i];
            const bool part = (c >= '0' && c <= '9') || c == '.';
            if (part && !inNumber) {
                ++numbers;
            }
            inNumber = part;
        }
        pos = end;
    }
    if (numberCount != nullptr) {
        *numberCount = numbers;
    }
    return data;
}

}  // namespace tq::bench
