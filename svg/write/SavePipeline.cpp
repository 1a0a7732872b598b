#include <tqSystem/SoftwareVersionInfoForStream.h>
#include <tqSystem/tqDirUtils.h>
#include <tqSystem/tqSystemUtils.h>

#include <vector>

#include "svg/io/tqSvgDriver.h"
#include "svg/model/Node.h"
#include "svg/write/detail/BufferedFileStream.h"
#include "svg/write/detail/SvgSaveWriter.h"
#include "svg/write/detail/WriteFailure.h"

namespace tq::svg {

SvgSaveWriter::SvgSaveWriter(tqIoDevice& device, const ItemInterface& root,
                             const SaveOptions& options)
    : mDevice(device), mRoot(root), mContext(options.indent), mOptions(options) {}

bool SvgSaveWriter::writeHeader() {
    // Written as text rather than through xmlTextWriterStartDocument: that call spells the
    // encoding "UTF-8" and routes every later byte through a UTF-8 to UTF-8 converter.
    if (!mContext.writeRaw("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n", SaveErrorHeader)) {
        return false;
    }
    const auto comment = [&](const std::string& text) {
        return mContext.writeComment(text.c_str(), SaveErrorHeader);
    };
    if (mOptions.writeHeader &&
        (!comment("Exporter : " + GetSoftwareVersionForStream().toString()) ||
         !comment("Datetime : " + tqSystemUtils::GetCurrentDateTimeISO(true)))) {
        return false;
    }
    return mOptions.author.empty() || comment("Author : " + mOptions.author);
}

// Depth first with an explicit stack, so that a host's deep tree cannot exhaust the call stack.
// An element whose start failed still gets its end call while the error code allows it.
void SvgSaveWriter::writeTree() {
    struct Open {
        const ItemInterface* item;
        const Node::ChildList* children;  // null for leaves and for elements that failed to open
        Node::ChildList::const_iterator next;
    };
    std::vector<Open> open;
    const auto enter = [&](const ItemInterface& item) {
        if (mContext.errorCode != 0) {
            return;
        }
        const Node::ChildList* children = nullptr;
        if (item.beginWriteAsXml(mContext, mOptions)) {
            mContext.flushBufferToDevice(mDevice, FlushThreshold);
            if (const auto* node = dynamic_cast<const Node*>(&item)) {
                children = &node->getChildren();
            }
        }
        open.push_back(
            {&item, children, children ? children->begin() : Node::ChildList::const_iterator()});
    };
    enter(mRoot);
    while (!open.empty()) {
        Open& top = open.back();
        if (top.children != nullptr && top.next != top.children->end() && mContext.errorCode == 0) {
            const ItemInterface* child = (top.next++)->get();
            if (child != nullptr) {
                enter(*child);
            }
            continue;
        }
        if (mContext.errorCode == 0) {
            top.item->endWriteAsXml(mContext, mOptions);
        }
        open.pop_back();
    }
}

bool SvgSaveWriter::write() {
    if (!mContext.isValid()) {
        mContext.errorCode = SaveErrorHeader;
        return false;
    }
    if (writeHeader()) {
        writeTree();
    }
    if (mContext.errorCode == 0) {
        if (mContext.endDocument(SaveErrorDocumentEnd)) {
            mContext.flushBufferToDevice(mDevice, 0);
        }
    }
    return mContext.errorCode == 0;
}

bool SaveSvgToDevice(const ItemInterface& root, tqIoDevice& device, const SaveOptions& options) {
    SvgSaveWriter writer(device, root, options);
    return writer.write();
}

bool tqSvgDriver::saveSvg(const ItemInterface& item, tqIoDevice& device, const std::string&,
                          tqProgressNotifierInterface*, const SaveOptions& options) {
    clearErrorMessages();
    return SaveSvgToDevice(item, device, options);
}

bool tqSvgDriver::saveSvg(const ItemInterface& item, const std::string& fileName,
                          tqProgressNotifierInterface* notifier, const SaveOptions& options) {
    clearErrorMessages();
    BufferedFileStream stream(fileName);
    if (!stream.isOpen()) {
        addErrorMessage("Fail to open file", -1);
        return false;
    }
    tqCoreSvgIODriver& self = *this;  // through the virtual table: an override is honoured
    return self.saveSvg(item, stream, tqDirUtils::ExtractFileExtension(fileName, true, true),
                        notifier, options);
}

}  // namespace tq::svg
