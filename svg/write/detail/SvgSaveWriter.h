// The save pipeline: an item tree streamed as a complete SVG document.
#pragma once

#include <tqSystem/tqIoDevice.h>
#include <tqXml/XmlSaveContext.h>

#include "svg/model/ItemInterface.h"
#include "svg/model/SaveOptions.h"

namespace tq::svg {

// One save: the XML declaration, the header comments, then the tree depth first, handing the
// writer's buffer to the device whenever it holds 8192 bytes or more, so memory stays bounded
// whatever the size of the tree.
class TQSVG_EXPORT SvgSaveWriter {
public:
    SvgSaveWriter(tqIoDevice& device, const ItemInterface& root, const SaveOptions& options);

    // True when the whole document was written; otherwise getErrorCode() says where it failed
    // (2 header, 3 document end, 4 element start, 5 element end or text, 6 attribute). A device
    // that refuses bytes is not noticed here.
    bool write();
    int getErrorCode() const { return mContext.errorCode; }

    static constexpr std::size_t FlushThreshold = 8192;

private:
    bool writeHeader();
    void writeTree();

    tqIoDevice& mDevice;
    const ItemInterface& mRoot;
    tq::xml::XmlSaveContext mContext;
    SaveOptions mOptions;
};

// Builds a writer and runs it.
TQSVG_EXPORT bool SaveSvgToDevice(const ItemInterface& root, tqIoDevice& device,
                                  const SaveOptions& options);

}  // namespace tq::svg
