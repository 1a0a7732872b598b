#include "tqSystem/tqDirUtils.h"

std::string tqDirUtils::ExtractFileExtension(const std::string& path, bool withoutDot,
                                             bool lowerCase) {
    const std::size_t slash = path.find_last_of('/');
    const std::size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    const std::size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || dot < nameStart) {
        return std::string();
    }
    std::string extension = path.substr(withoutDot ? dot + 1 : dot);
    if (lowerCase) {
        for (char& c : extension) {
            if (c >= 'A' && c <= 'Z') {
                c = static_cast<char>(c - 'A' + 'a');
            }
        }
    }
    return extension;
}
