#include "svg/io/detail/InflatingDevice.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace tq::svg::detail {

namespace {

constexpr int64 kInputSize = 64 * 1024;

}  // namespace

struct InflatingDevice::Stream {
    Stream() { ok = inflateInit2(&z, 16 + MAX_WBITS) == Z_OK; }  // 16: gzip framing
    ~Stream() {
        if (ok) {
            inflateEnd(&z);
        }
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    z_stream z{};
    bool ok = false;
    bool ended = false;  // the last member ended and nothing followed yet
};

InflatingDevice::InflatingDevice(tqIoDevice& source)
    : mSource(source), mInput(new char[kInputSize]) {}

InflatingDevice::~InflatingDevice() = default;

// Reads more input after the unread bytes; false on the source's error. At the source's end it
// adds nothing and sets mSourceEnded.
bool InflatingDevice::fill() {
    if (mSourceEnded) {
        return true;
    }
    std::memmove(mInput.get(), mInput.get() + mOffset, static_cast<std::size_t>(mAvailable));
    mOffset = 0;
    const int64 got = mSource.read(mInput.get() + mAvailable, kInputSize - mAvailable);
    mSourceEnded = got <= 0;
    mAvailable += std::max<int64>(got, 0);
    return got >= 0;
}

int64 InflatingDevice::read(char* buffer, int64 size) {
    if (!mStarted) {
        mStarted = true;
        // Two bytes tell: gzip's signature, which no XML text starts with.
        while (mAvailable < 2 && !mSourceEnded) {
            if (!fill()) {
                return -1;
            }
        }
        if (mAvailable >= 2 && static_cast<unsigned char>(mInput[0]) == 0x1f &&
            static_cast<unsigned char>(mInput[1]) == 0x8b) {
            mStream = std::make_unique<Stream>();
            if (!mStream->ok) {
                mFailure = "the compressed input could not be inflated";
                return -1;
            }
        }
    }
    if (!mStream) {
        if (mAvailable == 0 && !fill()) {
            return -1;
        }
        const int64 n = std::min(size, mAvailable);
        std::memcpy(buffer, mInput.get() + mOffset, static_cast<std::size_t>(n));
        mOffset += n;
        mAvailable -= n;
        return n;
    }
    return inflateInto(buffer, size);
}

int64 InflatingDevice::inflateInto(char* buffer, int64 size) {
    z_stream& z = mStream->z;
    z.next_out = reinterpret_cast<Bytef*>(buffer);
    z.avail_out = static_cast<uInt>(std::min<int64>(size, std::numeric_limits<uInt>::max()));
    while (z.avail_out > 0) {
        if (mAvailable == 0 && !fill()) {
            return -1;
        }
        if (mAvailable == 0) {
            // The source ended: complete after a whole member, truncated inside one.
            if (!mStream->ended) {
                mFailure = "the compressed input ends in the middle of its data";
                return -1;
            }
            break;
        }
        if (mStream->ended) {
            // Another member follows.
            inflateReset(&z);
            mStream->ended = false;
        }
        z.next_in = reinterpret_cast<Bytef*>(mInput.get() + mOffset);
        z.avail_in = static_cast<uInt>(mAvailable);
        const int result = inflate(&z, Z_NO_FLUSH);
        const int64 used = mAvailable - static_cast<int64>(z.avail_in);
        mOffset += used;
        mAvailable -= used;
        if (result == Z_STREAM_END) {
            mStream->ended = true;
        } else if (result != Z_OK && result != Z_BUF_ERROR) {
            mFailure = std::string("the compressed input is corrupt: ") +
                       (z.msg != nullptr ? z.msg : "inflate failed");
            return -1;
        }
        if (result == Z_BUF_ERROR && used == 0 && mAvailable > 0) {
            mFailure = "the compressed input is corrupt";
            return -1;
        }
    }
    return size - static_cast<int64>(z.avail_out);
}

}  // namespace tq::svg::detail
