// The library's version.
#pragma once

#include <cstdint>

#include "svg/tqSvgExport.h"

namespace tqSvg {

class TQSVG_EXPORT Version {
public:
    static std::uint32_t GetMajor();
    static std::uint32_t GetMinor();
    static std::uint32_t GetRelease();
    static std::uint32_t GetRevision();
    static std::uint16_t GetYear();
    static std::uint8_t GetMonth();
    static const char* GetCommitId();

    // The bool picks one of two stored copies of the same text; both read the same.
    static const char* GetDescStringMajorMinor(bool first);         // "3.0"
    static const char* GetDescStringMajorMinorRelease(bool first);  // "3.0.0"
    // "3.0.0.1297", or "3.0.0.1297 #<commit>" with `withCommit`.
    static const char* GetDescStringMajorMinorReleaseRevision(bool first, bool withCommit);
    // "3.0.0.1297 #<commit> 2026-2": the month deliberately without a leading zero.
    static const char* GetDescStringMajorMinorReleaseRevisionDate();

    Version& operator=(const Version&) = default;
};

}  // namespace tqSvg
