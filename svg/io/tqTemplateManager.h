// The ordered set of drivers for one kind of content, and the choice of a driver per request.
#pragma once

#include <algorithm>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include <tqSystem/tqLog.h>

#include "svg/tqSvgExport.h"

namespace tq::svg {

template <class Driver>
class TQSVG_EXPORT tqTemplateManager {
public:
    using DriverList = std::vector<Driver*>;
    using Source = typename Driver::SourceType;
    using Destination = typename Driver::DestinationType;
    using LoadOptions = typename Driver::LoadOptionsType;
    using SaveOptions = typename Driver::SaveOptionsType;

    // Adds `driver` at the end (lowest priority) when `append`, else at the front. A null
    // driver is ignored; one already registered is not added again and the misuse is logged.
    void registerDriver(Driver* driver, bool append) {
        if (driver == nullptr) {
            return;
        }
        if (std::find(mDrivers.begin(), mDrivers.end(), driver) != mDrivers.end()) {
            logMisuse(" is already registered");
            return;
        }
        if (append) {
            mDrivers.push_back(driver);
        } else {
            mDrivers.insert(mDrivers.begin(), driver);
        }
    }

    // Removes `driver`, keeping the others' order; an unknown driver is logged, null ignored.
    void unregisterDriver(Driver* driver) {
        if (driver == nullptr) {
            return;
        }
        const auto it = std::find(mDrivers.begin(), mDrivers.end(), driver);
        if (it == mDrivers.end()) {
            logMisuse(" has already been unregistered");
            return;
        }
        mDrivers.erase(it);
    }

    // Appends, in priority order, every driver that can load `source` when asked with default
    // options, after emptying `out` when `clearOutFirst`.
    void getLoadDrivers(const Source& source, DriverList& out, bool clearOutFirst) const {
        if (clearOutFirst) {
            out.clear();
        }
        for (Driver* driver : mDrivers) {
            if (driver->canLoad(source, LoadOptions()) != Driver::CannotHandle) {
                out.push_back(driver);
            }
        }
    }

    void getSaveDrivers(const Destination& destination, DriverList& out, bool clearOutFirst) const {
        if (clearOutFirst) {
            out.clear();
        }
        for (Driver* driver : mDrivers) {
            if (driver->canSave(destination, SaveOptions()) != Driver::CannotHandle) {
                out.push_back(driver);
            }
        }
    }

    // The first driver answering CanHandleBest, else the first answering CanHandle, else null.
    // Every driver is asked: a later full match beats an earlier partial one.
    Driver* getFirstLoadDriver(const Source& source, const LoadOptions& options) const {
        return firstBest([&](Driver* d) { return d->canLoad(source, options); });
    }

    Driver* getFirstSaveDriver(const Destination& destination, const SaveOptions& options) const {
        return firstBest([&](Driver* d) { return d->canSave(destination, options); });
    }

    // The registry in priority order.
    const DriverList& getAllDrivers() const { return mDrivers; }

protected:
    tqTemplateManager() = default;
    ~tqTemplateManager() = default;
    tqTemplateManager(const tqTemplateManager&) = delete;
    tqTemplateManager& operator=(const tqTemplateManager&) = delete;

private:
    template <class Ask>
    Driver* firstBest(Ask ask) const {
        Driver* best = nullptr;
        Driver* good = nullptr;
        for (Driver* driver : mDrivers) {
            const auto answer = ask(driver);
            if (answer == Driver::CanHandleBest && best == nullptr) {
                best = driver;
            } else if (answer == Driver::CanHandle && good == nullptr) {
                good = driver;
            }
        }
        return best != nullptr ? best : good;
    }

    // Names the registry's driver type, not the object's, as the compiler spells it.
    static void logMisuse(const char* what) {
        tqLog::Log(tqLogObject(tqLogType::Error, "driver",
                               std::string("Weird error, driver ") + typeid(Driver).name() + what));
    }

    DriverList mDrivers;
    DriverList mReserved;  // kept for the layout of the exported class; never used
};

}  // namespace tq::svg
