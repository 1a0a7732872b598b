// The name and version that saved files carry in their header.
#pragma once

#include <string>

#include "tqSystem/tqSystemExport.h"

class TQSYSTEM_EXPORT SoftwareVersionInfoForStream {
public:
    SoftwareVersionInfoForStream(std::string name, std::string version);

    // "name version", for example "tqSvg 3.0.0.1297".
    std::string toString() const;

    const std::string& getName() const { return mName; }
    const std::string& getVersion() const { return mVersion; }

private:
    std::string mName;
    std::string mVersion;
};

TQSYSTEM_EXPORT SoftwareVersionInfoForStream GetSoftwareVersionForStream();
