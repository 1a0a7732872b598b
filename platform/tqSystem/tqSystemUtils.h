// Queries about the running system.
#pragma once

#include <string>

#include "tqSystem/tqSystemExport.h"

class TQSYSTEM_EXPORT tqSystemUtils {
public:
    // Local date "YYYY-MM-DD", followed by "THH:MM:SS" when `withTime`.
    static std::string GetCurrentDateTimeISO(bool withTime);
};
