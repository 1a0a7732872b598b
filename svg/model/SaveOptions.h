// Options of a save.
#pragma once

#include <string>

namespace tq::svg {

struct SaveOptions {
    std::string author;       // the "Author : " header comment; none when empty
    int floatPrecision = -1;  // significant digits of numbers; -1: shortest exact text
    bool indent = false;      // indent the XML and separate every path token by a space
    bool writeHeader = true;  // write the "Exporter : " and "Datetime : " comments
};

}  // namespace tq::svg
