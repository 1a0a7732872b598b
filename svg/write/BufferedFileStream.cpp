#include "svg/write/detail/BufferedFileStream.h"

namespace tq::svg {

BufferedFileStream::BufferedFileStream(const std::string& fileName)
    : tqIoDeviceFileStream(fileName, DataWay::Write, true) {
    mPending.reserve(PieceSize);
}

BufferedFileStream::~BufferedFileStream() {
    close();
}

bool BufferedFileStream::writePending() {
    if (!mPending.empty()) {
        const auto size = static_cast<int64>(mPending.size());
        mFailed = mFailed || tqIoDeviceFileStream::write(mPending.data(), size) != size;
        mPending.clear();
    }
    return !mFailed;
}

int64 BufferedFileStream::write(const char* data, int64 size) {
    if (!isOpen() || mFailed || size < 0) {
        return -1;
    }
    const auto length = static_cast<std::size_t>(size);
    if (mPending.size() + length > PieceSize && !writePending()) {
        return -1;
    }
    if (length >= PieceSize) {
        mFailed = tqIoDeviceFileStream::write(data, size) != size;
        return mFailed ? -1 : size;
    }
    mPending.append(data, length);
    return size;
}

void BufferedFileStream::close() {
    if (isOpen()) {
        writePending();
    }
    tqIoDeviceFileStream::close();
}

}  // namespace tq::svg
