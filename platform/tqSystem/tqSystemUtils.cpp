#include "tqSystem/tqSystemUtils.h"

#include <ctime>

std::string tqSystemUtils::GetCurrentDateTimeISO(bool withTime) {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char buffer[32];
    const std::size_t n =
        std::strftime(buffer, sizeof buffer, withTime ? "%Y-%m-%dT%H:%M:%S" : "%Y-%m-%d", &local);
    return std::string(buffer, n);
}
