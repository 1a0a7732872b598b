// The base of every input/output driver: what it can handle, and the messages of its last
// operation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

#include <tqSystem/tqStringUtils.h>
#include <tqSystem/tqTypes.h>

#include "svg/tqSvgExport.h"

namespace tq::svg {

template <class Source, class Destination, class LoadOpts, class SaveOpts>
class TQSVG_EXPORT tqCoreDriver {
public:
    using SourceType = Source;
    using DestinationType = Destination;
    using LoadOptionsType = LoadOpts;
    using SaveOptionsType = SaveOpts;

    enum HandleRequestResult : std::int32_t {
        CannotHandle = 0,   // the driver cannot serve the request
        CanHandle = 1,      // it can, but another driver may be better
        CanHandleBest = 2,  // a full match
    };

    // At most this many texts are kept, each of at most this many characters (before the
    // position suffix): a document raising endless warnings cannot grow the list without bound.
    static constexpr std::size_t MaxMessageCount = 1024;
    static constexpr std::size_t MaxMessageLength = 1024;

    virtual ~tqCoreDriver() = default;

    virtual HandleRequestResult canLoad(const Source& source, const LoadOpts& options) const = 0;
    virtual HandleRequestResult canSave(const Destination& destination,
                                        const SaveOpts& options) const = 0;

    // Appends the texts of the last operation, oldest first, errors and warnings alike, after
    // emptying `out` when `clearOutFirst`.
    void getLastErrorsAndWarnings(std::list<std::string>& out, bool clearOutFirst) const {
        if (clearOutFirst) {
            out.clear();
        }
        out.insert(out.end(), mMessages.begin(), mMessages.end());
    }

    void clearErrorMessages() { mMessages.clear(); }

protected:
    tqCoreDriver() = default;
    tqCoreDriver(const tqCoreDriver&) = default;
    tqCoreDriver& operator=(const tqCoreDriver&) = default;

    // Appends one text, dropping the oldest when the list is full. A text over the length cap
    // keeps its first 1020 characters and gets " ..."; a position >= 0 appends " @position".
    void addErrorMessage(const std::string& message, int64 position) {
        if (mMessages.size() >= MaxMessageCount) {
            mMessages.pop_front();
        }
        if (message.size() <= MaxMessageLength) {
            mMessages.push_back(message);
        } else {
            mMessages.push_back(message.substr(0, MaxMessageLength - 4) + " ...");
        }
        if (position >= 0) {
            mMessages.back() += " @" + tqStringUtils::fromInt64(position, 1);
        }
    }

private:
    std::list<std::string> mMessages;
};

}  // namespace tq::svg
