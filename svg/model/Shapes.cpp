#include "svg/model/Circle.h"
#include "svg/model/Image.h"
#include "svg/model/Line.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/model/Text.h"

namespace tq::svg {

Line::Line(const Wm4::Vector2f& start_, const Wm4::Vector2f& end_)
    : ItemInterface(ItemType::Line), start(start_), end(end_) {}

Rect::Rect(const Wm4::Vector2f& position_, const Wm4::Vector2f& size_)
    : ItemInterface(ItemType::Rect),
      position(position_),
      size(size_),
      radius(Wm4::Vector2f::ZERO) {}

Circle::Circle(const Wm4::Vector2f& center_, float radius_)
    : ItemInterface(ItemType::Circle), center(center_), radius(radius_) {}

Path::Path() : ItemInterface(ItemType::Path) {}

Text::Text(const Wm4::Vector2f& position_, const std::string& text_)
    : ItemInterface(ItemType::Text), position(position_), text(text_) {}

Image::Image() : ItemInterface(ItemType::Image) {}

}  // namespace tq::svg
