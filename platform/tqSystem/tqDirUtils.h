// Helpers on path names.
#pragma once

#include <string>

#include "tqSystem/tqSystemExport.h"

class TQSYSTEM_EXPORT tqDirUtils {
public:
    // The text after the last dot of the last path component ("a.svg" gives "svg",
    // "dir.v2/file" gives ""); with `withoutDot` false the dot is included; `lowerCase` lowers
    // ASCII letters.
    static std::string ExtractFileExtension(const std::string& path, bool withoutDot,
                                            bool lowerCase);
};
