// A device over standard input, for the "-" file name.
#pragma once

#include <cstdio>

#include <tqSystem/tqIoDevice.h>

class StdinDevice : public tqIoDevice {
public:
    bool isOpen() const override { return true; }
    int64 read(char* buffer, int64 size) override {
        const std::size_t n = std::fread(buffer, 1, static_cast<std::size_t>(size), stdin);
        return n == 0 && std::ferror(stdin) ? -1 : static_cast<int64>(n);
    }
    int64 write(const char*, int64) override { return -1; }
    void close() override {}
};
