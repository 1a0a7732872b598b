// The library's entry for loading and saving: picks a registered driver by name or extension.
#pragma once

#include <list>
#include <string>

#include "svg/io/tqCoreSvgIODriver.h"
#include "svg/io/tqTemplateManager.h"

namespace tq::svg {

// Start and stop of the library, counted: only the first start and the last stop do work.
// Start-up initialises the XML layer and registers the built-in SVG driver.
TQSVG_EXPORT bool initializeTqSvg();
TQSVG_EXPORT void terminateTqSvg();

class TQSVG_EXPORT tqSvgIOManager : public tqTemplateManager<tqCoreSvgIODriver> {
public:
    // The one instance between initializeTqSvg() and the last terminateTqSvg(). Before and
    // after, a manager without drivers whose loads and saves fail with the message
    // "tqSvg is not started: call initializeTqSvg() first".
    static const tqSvgIOManager& get();
    static tqSvgIOManager& edit();

    // Loads through the first driver for `name`; false without a message when none fits.
    // `messages`, when given, receives the driver's messages (replacing its content); null
    // options mean the defaults. `out` changes only on success.
    bool loadSvg(ItemInterfacePointer<ItemInterface>& out, tqIoDevice& device,
                 const std::string& name, tqProgressNotifierInterface* notifier,
                 const LoadOptions* options, std::list<std::string>* messages) const;
    // The same, choosing the driver by the file's extension (case-insensitive).
    bool loadSvg(ItemInterfacePointer<ItemInterface>& out, const std::string& fileName,
                 tqProgressNotifierInterface* notifier, const LoadOptions* options,
                 std::list<std::string>* messages) const;
    // Saves through the first driver for `name`; when none fits, appends
    // "No driver available to save '<name>'" to `messages` and returns false.
    bool saveSvg(const ItemInterface& item, tqIoDevice& device, const std::string& name,
                 tqProgressNotifierInterface* notifier, const SaveOptions* options,
                 std::list<std::string>* messages) const;
    bool saveSvg(const ItemInterface& item, const std::string& fileName,
                 tqProgressNotifierInterface* notifier, const SaveOptions* options,
                 std::list<std::string>* messages) const;

private:
    friend bool initializeTqSvg();
    friend void terminateTqSvg();
    tqSvgIOManager() = default;
    ~tqSvgIOManager() = default;

    static tqSvgIOManager& Stopped();
    // False, after the message, when this is not the started library's manager.
    bool started(std::list<std::string>* messages) const;
};

}  // namespace tq::svg
