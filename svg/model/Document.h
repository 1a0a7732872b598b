// The root "svg" element: a group with a viewBox and a style sheet.
#pragma once

#include <optional>
#include <string>

#include "svg/model/BoundingBox.h"
#include "svg/model/Node.h"

namespace tq::svg {

class TQSVG_EXPORT Document : public Node {
public:
    Document();
    // The deep copy of Node, then the viewBox and the style sheet.
    Document(const Document& other);

    const std::optional<BoundingBox>& getViewbox() const { return mViewBox; }
    std::optional<BoundingBox>& editViewbox() { return mViewBox; }

    // The text of the document's style elements, a CSS sheet kept verbatim.
    const std::optional<std::string>& getStyle() const { return mStyle; }
    std::optional<std::string>& editStyle() { return mStyle; }

    // Replaces the viewBox by the estimated extent of the content (set even when empty).
    void computeEstimatedViewboxFromContent();

    bool endWriteAsXml(tq::xml::XmlSaveContext& context, const SaveOptions& options) const override;

private:
    bool beginWriteAsXmlImplPre(tq::xml::XmlSaveContext& context,
                                const SaveOptions& options) const override;
    bool beginWriteAsXmlImplPost(tq::xml::XmlSaveContext& context,
                                 const SaveOptions& options) const override;

    std::optional<BoundingBox> mViewBox;
    std::optional<std::string> mStyle;
};

}  // namespace tq::svg
