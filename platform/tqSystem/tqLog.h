// The library-wide log: every diagnostic line of the libraries goes through tqLog::Log.
#pragma once

#include <string>

#include "tqSystem/tqSystemExport.h"

enum class tqLogType : int { Debug = 0, Info = 1, Error = 2, Warning = 3 };

struct TQSYSTEM_EXPORT tqLogObject {
    tqLogObject(tqLogType type, std::string category, std::string text);

    tqLogType type;
    std::string category;
    std::string text;
};

class TQSYSTEM_EXPORT tqLog {
public:
    virtual ~tqLog();
    virtual void write(const tqLogObject& object) = 0;

    bool isEnabled() const { return mEnabled; }
    void setEnabled(bool enabled) { mEnabled = enabled; }

    // The library-wide instance; null by default, never owned.
    static tqLog* getInstance();
    static void setInstance(tqLog* log);

    // No instance: one line "category: text" on standard error. An enabled instance: its
    // write(). A disabled instance: nothing.
    static void Log(const tqLogObject& object);

private:
    bool mEnabled = true;
};
