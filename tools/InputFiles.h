// The files a command works through: arguments, with directories expanded.
#pragma once

#include <string>
#include <vector>

// A file to work on, found by CollectSvgFiles.
struct InputFile {
    std::string path;      // as given, or found under a given directory
    std::string relative;  // below that directory; the file name for a file given directly
    std::string error;     // set for a directory that could not be read (path names it)
};

// Expands the arguments in order: a directory becomes the *.svg and *.svgz files below it (any case
// of the extension), walked depth first in byte order of the names, without following links to
// directories and leaving out `skipDirectory` (an output folder inside an input one); anything
// else, "-" included, is taken as a file. A directory that cannot be read becomes an error entry.
std::vector<InputFile> CollectSvgFiles(const std::vector<std::string>& arguments,
                                       const std::string& skipDirectory = std::string());

// Whether `path` names a directory (following links).
bool IsDirectory(const std::string& path);
