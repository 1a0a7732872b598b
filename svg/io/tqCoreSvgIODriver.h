// The interface of a driver that loads and saves SVG item trees.
#pragma once

#include <string>
#include <utility>

#include <tqSystem/tqIoDevice.h>
#include <tqSystem/tqProgressNotifierInterface.h>

#include "svg/io/tqCoreDriver.h"
#include "svg/model/ItemInterface.h"
#include "svg/model/ItemInterfacePointer.h"
#include "svg/model/LoadOptions.h"
#include "svg/model/SaveOptions.h"

namespace tq::svg {

// A load source is {device, name}; a save destination is a name. Drivers choose by the name.
using tqCoreSvgIODriverBase =
    tqCoreDriver<std::pair<tqIoDevice*, std::string>, std::string, LoadOptions, SaveOptions>;

class TQSVG_EXPORT tqCoreSvgIODriver : public tqCoreSvgIODriverBase {
public:
    ~tqCoreSvgIODriver() override;

    // Loads from an open device; `out` is set only on success.
    virtual bool loadSvg(ItemInterfacePointer<ItemInterface>& out, tqIoDevice& device,
                         const std::string& name, tqProgressNotifierInterface* notifier,
                         const LoadOptions& options) = 0;
    virtual bool loadSvg(ItemInterfacePointer<ItemInterface>& out, const std::string& fileName,
                         tqProgressNotifierInterface* notifier, const LoadOptions& options) = 0;
    virtual bool saveSvg(const ItemInterface& item, tqIoDevice& device, const std::string& name,
                         tqProgressNotifierInterface* notifier, const SaveOptions& options) = 0;
    virtual bool saveSvg(const ItemInterface& item, const std::string& fileName,
                         tqProgressNotifierInterface* notifier, const SaveOptions& options) = 0;

protected:
    tqCoreSvgIODriver() = default;
};

}  // namespace tq::svg
