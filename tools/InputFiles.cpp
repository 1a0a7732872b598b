#include "InputFiles.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <tqSystem/tqDirUtils.h>

namespace fs = std::filesystem;

namespace {

bool hasSvgExtension(const fs::path& path) {
    const std::string extension =
        tqDirUtils::ExtractFileExtension(path.filename().string(), true, true);
    return extension == "svg" || extension == "svgz";
}

bool isSkipped(const fs::path& directory, const std::string& skip) {
    std::error_code ignored;
    return !skip.empty() && fs::equivalent(directory, skip, ignored);
}

// The entries of one directory sorted by name, or false with `error` set.
bool listDirectory(const fs::path& directory, std::vector<fs::directory_entry>& entries,
                   std::error_code& error) {
    fs::directory_iterator it(directory, error);
    while (!error && it != fs::directory_iterator()) {
        entries.push_back(*it);
        it.increment(error);
    }
    if (error) {
        return false;
    }
    // Byte order of the names: the same on every machine and in every locale.
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
        return a.path().filename().string() < b.path().filename().string();
    });
    return true;
}

void walkDirectory(const fs::path& directory, const fs::path& relative, const std::string& skip,
                   std::vector<InputFile>& out) {
    std::vector<fs::directory_entry> entries;
    std::error_code error;
    if (!listDirectory(directory, entries, error)) {
        out.push_back({directory.string(), relative.generic_string(), error.message()});
        return;
    }
    for (const fs::directory_entry& entry : entries) {
        const fs::path name = entry.path().filename();
        // Links to directories are not followed: a link back up would never end.
        if (fs::is_directory(entry.symlink_status(error))) {
            if (!isSkipped(entry.path(), skip)) {
                walkDirectory(entry.path(), relative / name, skip, out);
            }
        } else if (hasSvgExtension(name) && !fs::is_directory(entry.status(error))) {
            out.push_back({entry.path().string(), (relative / name).generic_string(), {}});
        }
    }
}

}  // namespace

std::vector<InputFile> CollectSvgFiles(const std::vector<std::string>& arguments,
                                       const std::string& skipDirectory) {
    std::vector<InputFile> files;
    for (const std::string& argument : arguments) {
        if (argument != "-" && IsDirectory(argument)) {
            walkDirectory(argument, fs::path(), skipDirectory, files);
        } else {
            const std::string name =
                argument == "-" ? argument : fs::path(argument).filename().string();
            files.push_back({argument, name, {}});
        }
    }
    return files;
}

bool IsDirectory(const std::string& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}
