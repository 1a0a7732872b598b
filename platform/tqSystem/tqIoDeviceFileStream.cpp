#include "tqSystem/tqIoDeviceFileStream.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

tqIoDeviceFileStream::tqIoDeviceFileStream(const std::string& fileName, DataWay way,
                                           bool /*binary*/)
    : mWay(way) {
    int flags = O_CLOEXEC;
    if (way == DataWay::Read) {
        flags |= O_RDONLY;
    } else if (way == DataWay::Write) {
        flags |= O_WRONLY | O_CREAT | O_TRUNC;
    } else {
        return;
    }
    do {
        mFd = ::open(fileName.c_str(), flags, 0666);
    } while (mFd < 0 && errno == EINTR);
    if (mFd < 0) {
        return;
    }
    // A directory opens for reading on Linux but reads fail: refuse it here, where the caller
    // can tell "cannot open" from a read error.
    struct stat info;
    if (::fstat(mFd, &info) != 0 || S_ISDIR(info.st_mode)) {
        close();
    }
}

tqIoDeviceFileStream::~tqIoDeviceFileStream() {
    close();
}

bool tqIoDeviceFileStream::isOpen() const {
    return mFd >= 0;
}

int64 tqIoDeviceFileStream::read(char* buffer, int64 size) {
    if (mFd < 0 || mWay != DataWay::Read || size < 0) {
        return -1;
    }
    const std::size_t wanted =
        static_cast<std::size_t>(std::min<int64>(size, std::numeric_limits<ssize_t>::max()));
    ssize_t got;
    do {
        got = ::read(mFd, buffer, wanted);
    } while (got < 0 && errno == EINTR);
    return got < 0 ? -1 : static_cast<int64>(got);
}

int64 tqIoDeviceFileStream::write(const char* data, int64 size) {
    if (mFd < 0 || mWay != DataWay::Write || size < 0) {
        return -1;
    }
    int64 written = 0;
    while (written < size) {
        const std::size_t chunk = static_cast<std::size_t>(
            std::min<int64>(size - written, std::numeric_limits<ssize_t>::max()));
        const ssize_t n = ::write(mFd, data + written, chunk);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return -1;
        }
        written += n;
    }
    return written;
}

void tqIoDeviceFileStream::close() {
    if (mFd >= 0) {
        ::close(mFd);
        mFd = -1;
    }
}
