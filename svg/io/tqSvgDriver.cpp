#include "svg/io/tqSvgDriver.h"

#include <tqSystem/tqDirUtils.h>
#include <tqSystem/tqIoDeviceFileStream.h>

#include "svg/io/detail/InflatingDevice.h"
#include "svg/read/detail/Loader.h"

namespace tq::svg {

tqSvgDriver::tqSvgDriver() = default;
tqSvgDriver::~tqSvgDriver() = default;

tqSvgDriver::HandleRequestResult tqSvgDriver::canLoad(
    const std::pair<tqIoDevice*, std::string>& source, const LoadOptions&) const {
    return source.second == "svg" ? CanHandleBest : CannotHandle;
}

tqSvgDriver::HandleRequestResult tqSvgDriver::canSave(const std::string& destination,
                                                      const SaveOptions&) const {
    return destination == "svg" ? CanHandleBest : CannotHandle;
}

bool tqSvgDriver::loadSvg(ItemInterfacePointer<ItemInterface>& out, tqIoDevice& device,
                          const std::string&, tqProgressNotifierInterface*,
                          const LoadOptions& options) {
    clearErrorMessages();
    const Loader::MessageCallback report = [this](const std::string& text) {
        addErrorMessage(text, -1);
    };
    detail::InflatingDevice input(device);
    Loader loader(out, input, options, report, report);
    if (!input.failure().empty()) {
        addErrorMessage("The document could not be read: " + input.failure(), -1);
    }
    return loader.getParseResult();
}

bool tqSvgDriver::loadSvg(ItemInterfacePointer<ItemInterface>& out, const std::string& fileName,
                          tqProgressNotifierInterface* notifier, const LoadOptions& options) {
    clearErrorMessages();
    tqIoDeviceFileStream stream(fileName, DataWay::Read, true);
    if (!stream.isOpen()) {
        addErrorMessage("Fail to open file", -1);
        return false;
    }
    // Through the virtual table, so that a subclass's device overload is used.
    tqCoreSvgIODriver& self = *this;
    return self.loadSvg(out, stream, tqDirUtils::ExtractFileExtension(fileName, true, true),
                        notifier, options);
}

}  // namespace tq::svg
