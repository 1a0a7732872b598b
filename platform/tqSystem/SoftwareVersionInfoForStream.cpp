#include "tqSystem/SoftwareVersionInfoForStream.h"

SoftwareVersionInfoForStream::SoftwareVersionInfoForStream(std::string name, std::string version)
    : mName(std::move(name)), mVersion(std::move(version)) {}

std::string SoftwareVersionInfoForStream::toString() const {
    return mName + " " + mVersion;
}

SoftwareVersionInfoForStream GetSoftwareVersionForStream() {
    // Set by the build from the project's version, so the stamp follows every release.
    return SoftwareVersionInfoForStream(TQSYSTEM_PRODUCT_NAME, TQSYSTEM_PRODUCT_VERSION);
}
