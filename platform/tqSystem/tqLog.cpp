#include "tqSystem/tqLog.h"

#include <atomic>
#include <cstdio>

namespace {
// Atomic so that a host swapping the instance never tears a pointer read by another thread.
std::atomic<tqLog*> gInstance{nullptr};
}  // namespace

tqLogObject::tqLogObject(tqLogType type_, std::string category_, std::string text_)
    : type(type_), category(std::move(category_)), text(std::move(text_)) {}

tqLog::~tqLog() {
    // A log that dies while installed must not be called afterwards.
    tqLog* self = this;
    gInstance.compare_exchange_strong(self, nullptr);
}

tqLog* tqLog::getInstance() {
    return gInstance.load();
}

void tqLog::setInstance(tqLog* log) {
    gInstance.store(log);
}

void tqLog::Log(const tqLogObject& object) {
    tqLog* log = gInstance.load();
    if (log == nullptr) {
        std::fprintf(stderr, "%s: %s\n", object.category.c_str(), object.text.c_str());
    } else if (log->isEnabled()) {
        log->write(object);
    }
}
