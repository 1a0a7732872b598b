// Counts nested initialisations of a library so that only the outermost pair does work.
#pragma once

#include <atomic>
#include <string>

#include "tqSystem/tqSystemExport.h"

namespace tq::impl {

class TQSYSTEM_EXPORT LibInitCounter {
public:
    // `name` identifies the library in diagnostics; `flag` is kept for callers that pass one.
    LibInitCounter(const char* name, bool flag);

    // True on the first call, and on the first call after the count went back to zero.
    bool incrementInitCounter();
    // True when the count reaches zero; false, doing nothing, when it is already zero.
    bool decrementInitCounter();

    int getCount() const { return mCount.load(); }
    const std::string& getName() const { return mName; }
    bool getFlag() const { return mFlag; }

private:
    std::string mName;
    bool mFlag;
    std::atomic<int> mCount{0};
};

}  // namespace tq::impl
