// Serialisation of the items. The writers arrive with the save pipeline; until then every
// entry reports failure and writes nothing, so no caller can mistake a partial element for a
// written one.
#include "svg/model/Circle.h"
#include "svg/model/Document.h"
#include "svg/model/Image.h"
#include "svg/model/Line.h"
#include "svg/model/Path.h"
#include "svg/model/Rect.h"
#include "svg/model/SaveOptions.h"
#include "svg/model/Text.h"

namespace tq::svg {

bool ItemInterface::beginWriteAsXml(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}
bool ItemInterface::endWriteAsXml(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}
bool ItemInterface::beginWriteAsXmlImplPost(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return true;
}

bool Node::beginWriteAsXmlNodeWithName(tq::xml::XmlSaveContext&, const char*) const {
    return false;
}
bool Node::beginWriteAsXmlImplPre(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}

bool Document::beginWriteAsXmlImplPre(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}
bool Document::beginWriteAsXmlImplPost(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}
bool Document::endWriteAsXml(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}

bool Line::beginWriteAsXmlImplPre(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}
bool Rect::beginWriteAsXmlImplPre(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}
bool Circle::beginWriteAsXmlImplPre(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}
bool Path::beginWriteAsXmlImplPre(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}
bool Image::beginWriteAsXmlImplPre(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}
bool Text::beginWriteAsXmlImplPre(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}
bool Text::endWriteAsXml(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}

bool RenderingProperties::writeAttributes(tq::xml::XmlSaveContext&, const SaveOptions&) const {
    return false;
}

}  // namespace tq::svg
