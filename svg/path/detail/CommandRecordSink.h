// Hands scanned path groups straight to a command list, one record per group (internal).
#pragma once

#include <cstddef>
#include <list>
#include <vector>

#include "svg/model/Path.h"
#include "svg/path/detail/PathLetterTable.h"

namespace tq::svg::detail {

// Extra pairs after a moveto are lines, as in SVG. A command that is abandoned takes its records
// back, so a refused command leaves nothing behind.
class CommandRecordSink {
public:
    explicit CommandRecordSink(std::list<Path::Command>& out) : mOut(out) {}

    void begin(char letter) {
        mValid = kPathLetters.typeOf(letter, mType);
        mAdded = 0;
    }
    void group(const float* values, int count) {
        if (!mValid) {
            return;
        }
        mOut.push_back({mType, std::vector<float>(values, values + count)});
        ++mAdded;
        if (mType == Path::CommandType::MoveTo) {
            mType = Path::CommandType::LineTo;
        } else if (mType == Path::CommandType::MoveToRel) {
            mType = Path::CommandType::LineToRel;
        }
    }
    void end() {
        if (mValid && mType == Path::CommandType::ClosePath) {
            mOut.push_back({mType, {}});
        }
    }
    void abandon() {
        for (; mAdded > 0; --mAdded) {
            mOut.pop_back();
        }
    }

private:
    std::list<Path::Command>& mOut;
    Path::CommandType mType = Path::CommandType::MoveTo;
    std::size_t mAdded = 0;
    bool mValid = false;
};

}  // namespace tq::svg::detail
