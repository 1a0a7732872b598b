#include <svg/tqSvg.h>

#include <cstdio>

int main() {
    tq::svg::Document document;
    document.editChildren().push_back(std::make_shared<tq::svg::Rect>());
    tq::svg::Document copy(document);
    Wm4::Vector4<unsigned char> colour;
    const bool parsed = tq::svg::ParseSvgColor("rebeccapurple", colour);
    std::printf("%s %zu %d\n", tqSvg::Version::GetDescStringMajorMinorReleaseRevision(true, false),
                copy.getChildren().size(), parsed ? colour[0] : -1);
    return copy.getChildren().size() == 1 && parsed && colour[0] == 102 ? 0 : 1;
}
