// Collects what the libraries log, one "type category: text" line each, while it lives, and puts
// the previous log back afterwards.
#pragma once

#include <string>
#include <vector>

#include <tqSystem/tqLog.h>

namespace tq::test {

class CapturingLog : public tqLog {
public:
    CapturingLog() : mPrevious(tqLog::getInstance()) { tqLog::setInstance(this); }
    ~CapturingLog() override { tqLog::setInstance(mPrevious); }
    CapturingLog(const CapturingLog&) = delete;
    CapturingLog& operator=(const CapturingLog&) = delete;

    void write(const tqLogObject& object) override {
        lines.push_back(std::to_string(static_cast<int>(object.type)) + " " + object.category +
                        ": " + object.text);
    }

    std::vector<std::string> lines;

private:
    tqLog* mPrevious;
};

}  // namespace tq::test
