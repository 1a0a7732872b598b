// The built-in driver: loads and saves SVG text.
#pragma once

#include "svg/io/tqCoreSvgIODriver.h"

namespace tq::svg {

// Serves the name (or file extension) "svg", exactly and case-sensitively. One operation at a
// time: its message list holds the messages of the last load or save.
class TQSVG_EXPORT tqSvgDriver : public tqCoreSvgIODriver {
public:
    tqSvgDriver();
    ~tqSvgDriver() override;

    HandleRequestResult canLoad(const std::pair<tqIoDevice*, std::string>& source,
                                const LoadOptions& options) const override;
    HandleRequestResult canSave(const std::string& destination,
                                const SaveOptions& options) const override;

    // Parses the device; errors and warnings alike go to the message list.
    bool loadSvg(ItemInterfacePointer<ItemInterface>& out, tqIoDevice& device,
                 const std::string& name, tqProgressNotifierInterface* notifier,
                 const LoadOptions& options) override;
    // Opens the file and loads it through the device overload; "Fail to open file" otherwise.
    bool loadSvg(ItemInterfacePointer<ItemInterface>& out, const std::string& fileName,
                 tqProgressNotifierInterface* notifier, const LoadOptions& options) override;
    bool saveSvg(const ItemInterface& item, tqIoDevice& device, const std::string& name,
                 tqProgressNotifierInterface* notifier, const SaveOptions& options) override;
    bool saveSvg(const ItemInterface& item, const std::string& fileName,
                 tqProgressNotifierInterface* notifier, const SaveOptions& options) override;
};

}  // namespace tq::svg
