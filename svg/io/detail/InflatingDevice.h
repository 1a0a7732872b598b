// A reading device that inflates gzip-compressed input (internal).
#pragma once

#include <memory>
#include <string>

#include <tqSystem/tqIoDevice.h>

namespace tq::svg::detail {

// Reads through `source`: input that starts with the gzip signature is inflated on the fly
// (several members one after another, as gzip writes them), anything else passes unchanged. The
// inflated bytes are what the reader sees, so the bounds on a document's size and on what its
// entities expand to apply to them. Corrupt or truncated compressed data is a read error, with
// the reason in failure().
class InflatingDevice : public tqIoDevice {
public:
    explicit InflatingDevice(tqIoDevice& source);
    ~InflatingDevice() override;

    bool isOpen() const override { return mSource.isOpen(); }
    int64 read(char* buffer, int64 size) override;
    int64 write(const char*, int64) override { return -1; }
    void close() override { mSource.close(); }

    // Why a read failed, empty when none did or the source itself failed.
    const std::string& failure() const { return mFailure; }

private:
    struct Stream;

    bool fill();
    int64 inflateInto(char* buffer, int64 size);

    tqIoDevice& mSource;
    std::unique_ptr<Stream> mStream;  // set once the input is known to be compressed
    std::unique_ptr<char[]> mInput;
    int64 mAvailable = 0;  // unread bytes of mInput, from mOffset
    int64 mOffset = 0;
    bool mStarted = false;
    bool mSourceEnded = false;
    std::string mFailure;
};

}  // namespace tq::svg::detail
