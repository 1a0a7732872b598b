// The CSS colour keywords, shared by both reading profiles (internal).
#pragma once

#include <string_view>

namespace tq::svg {

// The red, green and blue of a keyword ("aliceblue" ... "yellowgreen", "rebeccapurple"), exact
// and case-sensitive; false for any other text.
bool FindNamedColor(std::string_view name, unsigned char (&rgb)[3]);

}  // namespace tq::svg
