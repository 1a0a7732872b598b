#include "MeshJson.h"

#include <cmath>
#include <vector>

namespace {

void appendNumber(std::string& out, float value) {
    if (std::isfinite(value)) {
        tqStringUtils::appendFloat(out, value, -1, tqStringUtils::FloatFormat::Compact);
    } else {
        out += "null";
    }
}

void appendPoints(std::string& out, const char* name, const std::vector<Wm4::Vector2f>& points) {
    out += ",\"";
    out += name;
    out += "\":[";
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i > 0) {
            out += ',';
        }
        appendNumber(out, points[i].X());
        out += ',';
        appendNumber(out, points[i].Y());
    }
    out += ']';
}

void appendIndices(std::string& out, const char* name, const std::vector<unsigned int>& indices) {
    out += ",\"";
    out += name;
    out += "\":[";
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (i > 0) {
            out += ',';
        }
        out += std::to_string(indices[i]);
    }
    out += ']';
}

void appendColor(std::string& out, const char* name, const Wm4::ColorRGBA& color) {
    out += '"';
    out += name;
    out += "\":[";
    for (int i = 0; i < 4; ++i) {
        if (i > 0) {
            out += ',';
        }
        appendNumber(out, color[i]);
    }
    out += ']';
}

}  // namespace

void AppendMeshJson(std::string& out,
                    const std::list<std::shared_ptr<tq::svg::SegmentedPrimitive>>& primitives,
                    bool error) {
    out += "{\"error\":";
    out += error ? "true" : "false";
    out += ",\"primitives\":[";
    bool first = true;
    for (const auto& primitive : primitives) {
        out += first ? "\n{" : ",\n{";
        first = false;
        const tq::svg::RenderingProperties& properties = primitive->properties;
        appendColor(
            out, "fill",
            properties.hasFill() ? properties.parseFillColor() : Wm4::ColorRGBA(0, 0, 0, 0));
        out += ',';
        appendColor(
            out, "stroke",
            properties.hasStroke() ? properties.parseStrokeColor() : Wm4::ColorRGBA(0, 0, 0, 0));
        out += ",\"strokeWidth\":";
        appendNumber(out, properties.strokeWidth.value_or(1.0f));
        appendPoints(out, "points", primitive->points);
        appendIndices(out, "segments", primitive->indices);
        appendPoints(out, "trianglePoints", primitive->trianglePoints);
        appendIndices(out, "triangles", primitive->triangleIndices);
        appendPoints(out, "strokeTrianglePoints", primitive->strokeTrianglePoints);
        appendIndices(out, "strokeTriangles", primitive->strokeTriangleIndices);
        out += '}';
    }
    out += "\n]}\n";
}
