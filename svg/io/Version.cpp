#include "svg/io/Version.h"

namespace tqSvg {

namespace {
constexpr const char* kMajorMinor = "3.0";
constexpr const char* kMajorMinorRelease = "3.0.0";
constexpr const char* kMajorMinorReleaseRevision = "3.0.0.1297";
constexpr const char* kWithCommit = "3.0.0.1297 #3d96f40405c8d0b4";
constexpr const char* kWithDate = "3.0.0.1297 #3d96f40405c8d0b4 2026-2";
}  // namespace

std::uint32_t Version::GetMajor() {
    return 3;
}
std::uint32_t Version::GetMinor() {
    return 0;
}
std::uint32_t Version::GetRelease() {
    return 0;
}
std::uint32_t Version::GetRevision() {
    return 1297;
}
std::uint16_t Version::GetYear() {
    return 2026;
}
std::uint8_t Version::GetMonth() {
    return 2;
}
const char* Version::GetCommitId() {
    return "3d96f40405c8d0b4";
}

const char* Version::GetDescStringMajorMinor(bool) {
    return kMajorMinor;
}
const char* Version::GetDescStringMajorMinorRelease(bool) {
    return kMajorMinorRelease;
}
const char* Version::GetDescStringMajorMinorReleaseRevision(bool, bool withCommit) {
    return withCommit ? kWithCommit : kMajorMinorReleaseRevision;
}
const char* Version::GetDescStringMajorMinorReleaseRevisionDate() {
    return kWithDate;
}

}  // namespace tqSvg
