// A device over standard input or output, for the "-" file name.
#pragma once

#include <cstdio>

#include <tqSystem/tqIoDevice.h>

class StdioDevice : public tqIoDevice {
public:
    explicit StdioDevice(std::FILE* file) : mFile(file) {}

    bool isOpen() const override { return mFile != nullptr; }
    int64 read(char* buffer, int64 size) override {
        const std::size_t n = std::fread(buffer, 1, static_cast<std::size_t>(size), mFile);
        return n == 0 && std::ferror(mFile) ? -1 : static_cast<int64>(n);
    }
    int64 write(const char* data, int64 size) override {
        const std::size_t n = std::fwrite(data, 1, static_cast<std::size_t>(size), mFile);
        if (n != static_cast<std::size_t>(size)) {
            mFailed = true;
            return -1;
        }
        return size;
    }
    void close() override {}
    // False when a write or the final flush failed (a full disk, a closed pipe).
    bool flush() { return std::fflush(mFile) == 0 && !mFailed; }

private:
    std::FILE* mFile;
    bool mFailed = false;
};
