#include "svg/io/tqSvgIOManager.h"

#include <tqSystem/LibInitCounter.h>
#include <tqSystem/tqDirUtils.h>
#include <tqXml/XmlLibrary.h>

#include "svg/io/tqSvgDriver.h"

namespace tq::svg {

namespace {

tqSvgIOManager* gManager = nullptr;
tqCoreSvgIODriver* gBuiltinDrivers[1] = {nullptr};
std::size_t gBuiltinDriverCount = 0;
tq::impl::LibInitCounter gInitCounter("svg", true);

// A compressed SVG file (.svgz) holds SVG: gzip content is read under the name "svg".
std::string loadFormatOf(const std::string& fileName) {
    const std::string extension = tqDirUtils::ExtractFileExtension(fileName, true, true);
    return extension == "svgz" ? "svg" : extension;
}

std::string extensionOf(const std::string& fileName) {
    return tqDirUtils::ExtractFileExtension(fileName, true, true);
}

void copyMessages(const tqCoreSvgIODriver& driver, std::list<std::string>* messages) {
    if (messages != nullptr) {
        driver.getLastErrorsAndWarnings(*messages, true);
    }
}

bool noSaveDriver(const std::string& key, std::list<std::string>* messages) {
    if (messages != nullptr) {
        messages->push_back("No driver available to save '" + key + "'");
    }
    return false;
}

}  // namespace

// Before the first start and after the last stop there is no library manager: calls reach this
// one instead, which has no driver and says why, rather than freed or absent memory.
tqSvgIOManager& tqSvgIOManager::Stopped() {
    static tqSvgIOManager stopped;
    return stopped;
}

const tqSvgIOManager& tqSvgIOManager::get() {
    return gManager != nullptr ? *gManager : Stopped();
}

tqSvgIOManager& tqSvgIOManager::edit() {
    return gManager != nullptr ? *gManager : Stopped();
}

bool tqSvgIOManager::started(std::list<std::string>* messages) const {
    if (this == gManager) {
        return true;
    }
    if (messages != nullptr) {
        messages->assign(1, "tqSvg is not started: call initializeTqSvg() first");
    }
    return false;
}

// The choice depends on the name alone: the source carries no device and default options.
bool tqSvgIOManager::loadSvg(ItemInterfacePointer<ItemInterface>& out, tqIoDevice& device,
                             const std::string& name, tqProgressNotifierInterface* notifier,
                             const LoadOptions* options, std::list<std::string>* messages) const {
    if (!started(messages)) {
        return false;
    }
    tqCoreSvgIODriver* driver = getFirstLoadDriver({nullptr, name}, LoadOptions());
    if (driver == nullptr) {
        return false;  // deliberately silent, unlike a save
    }
    const bool ok =
        driver->loadSvg(out, device, name, notifier, options ? *options : LoadOptions());
    copyMessages(*driver, messages);
    return ok;
}

bool tqSvgIOManager::loadSvg(ItemInterfacePointer<ItemInterface>& out, const std::string& fileName,
                             tqProgressNotifierInterface* notifier, const LoadOptions* options,
                             std::list<std::string>* messages) const {
    if (!started(messages)) {
        return false;
    }
    tqCoreSvgIODriver* driver =
        getFirstLoadDriver({nullptr, loadFormatOf(fileName)}, LoadOptions());
    if (driver == nullptr) {
        return false;
    }
    const bool ok = driver->loadSvg(out, fileName, notifier, options ? *options : LoadOptions());
    copyMessages(*driver, messages);
    return ok;
}

bool tqSvgIOManager::saveSvg(const ItemInterface& item, tqIoDevice& device, const std::string& name,
                             tqProgressNotifierInterface* notifier, const SaveOptions* options,
                             std::list<std::string>* messages) const {
    if (!started(messages)) {
        return false;
    }
    tqCoreSvgIODriver* driver = getFirstSaveDriver(name, SaveOptions());
    if (driver == nullptr) {
        return noSaveDriver(name, messages);
    }
    const bool ok =
        driver->saveSvg(item, device, name, notifier, options ? *options : SaveOptions());
    copyMessages(*driver, messages);
    return ok;
}

bool tqSvgIOManager::saveSvg(const ItemInterface& item, const std::string& fileName,
                             tqProgressNotifierInterface* notifier, const SaveOptions* options,
                             std::list<std::string>* messages) const {
    if (!started(messages)) {
        return false;
    }
    const std::string extension = extensionOf(fileName);
    tqCoreSvgIODriver* driver = getFirstSaveDriver(extension, SaveOptions());
    if (driver == nullptr) {
        return noSaveDriver(extension, messages);
    }
    const bool ok = driver->saveSvg(item, fileName, notifier, options ? *options : SaveOptions());
    copyMessages(*driver, messages);
    return ok;
}

bool initializeTqSvg() {
    if (!gInitCounter.incrementInitCounter()) {
        return true;
    }
    tq::xml::initializeXmlLibrary();
    gManager = new tqSvgIOManager();
    gBuiltinDrivers[0] = new tqSvgDriver();
    for (std::size_t i = std::size(gBuiltinDrivers); i-- > 0;) {
        gManager->registerDriver(gBuiltinDrivers[i], true);
        ++gBuiltinDriverCount;
    }
    return true;
}

void terminateTqSvg() {
    if (!gInitCounter.decrementInitCounter()) {
        return;
    }
    for (std::size_t i = 0; i < gBuiltinDriverCount; ++i) {
        gManager->unregisterDriver(gBuiltinDrivers[i]);
        delete gBuiltinDrivers[i];
        gBuiltinDrivers[i] = nullptr;
    }
    gBuiltinDriverCount = 0;
    delete gManager;
    gManager = nullptr;
    tq::xml::finalizeXmlLibrary();
}

}  // namespace tq::svg
