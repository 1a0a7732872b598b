// Where scripts/bench.sh installs the icon sets from npm: TQSVG_ICON_CACHE, else tqsvg-icons in
// the user's cache folder.
#pragma once

#include <cstdlib>
#include <filesystem>

inline std::filesystem::path IconCache() {
    if (const char* dir = std::getenv("TQSVG_ICON_CACHE")) {
        return dir;
    }
    const char* cache = std::getenv("XDG_CACHE_HOME");
    const char* home = std::getenv("HOME");
    const std::filesystem::path base =
        cache != nullptr ? cache : std::filesystem::path(home != nullptr ? home : "") / ".cache";
    return base / "tqsvg-icons";
}
