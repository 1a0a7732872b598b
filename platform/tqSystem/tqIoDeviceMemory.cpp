#include "tqSystem/tqIoDeviceMemory.h"

#include <algorithm>
#include <cstring>

tqIoDeviceMemory::tqIoDeviceMemory(std::string content) : mContent(std::move(content)) {}

int64 tqIoDeviceMemory::read(char* buffer, int64 size) {
    if (size < 0) {
        return -1;
    }
    const std::size_t available = mContent.size() - mReadPos;
    const std::size_t n =
        static_cast<std::size_t>(std::min<uint64>(static_cast<uint64>(size), available));
    if (n > 0) {
        std::memcpy(buffer, mContent.data() + mReadPos, n);
    }
    mReadPos += n;
    return static_cast<int64>(n);
}

int64 tqIoDeviceMemory::write(const char* data, int64 size) {
    if (size < 0) {
        return -1;
    }
    mContent.append(data, static_cast<std::size_t>(size));
    return size;
}
