// Options of a load.
#pragma once

namespace tq::svg {

struct LoadOptions {
    // False: an unsupported tag or attribute, or an invalid value, fails the load.
    // True: it is skipped and reported as a warning.
    bool ignoreUnsupported = false;
};

}  // namespace tq::svg
