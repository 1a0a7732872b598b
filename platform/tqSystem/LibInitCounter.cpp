#include "tqSystem/LibInitCounter.h"

namespace tq::impl {

LibInitCounter::LibInitCounter(const char* name, bool flag)
    : mName(name ? name : ""), mFlag(flag) {}

bool LibInitCounter::incrementInitCounter() {
    return mCount.fetch_add(1) == 0;
}

bool LibInitCounter::decrementInitCounter() {
    int count = mCount.load();
    while (count > 0) {
        if (mCount.compare_exchange_weak(count, count - 1)) {
            return count == 1;
        }
    }
    return false;
}

}  // namespace tq::impl
