// A device over an in-memory byte buffer: always open, reads from the start, writes append.
#pragma once

#include <string>

#include "tqSystem/tqIoDevice.h"

class TQSYSTEM_EXPORT tqIoDeviceMemory : public tqIoDevice {
public:
    tqIoDeviceMemory() = default;
    explicit tqIoDeviceMemory(std::string content);

    bool isOpen() const override { return true; }
    int64 read(char* buffer, int64 size) override;
    int64 write(const char* data, int64 size) override;
    // Does nothing: the content stays readable after close.
    void close() override {}

    const std::string& getContent() const { return mContent; }

private:
    std::string mContent;
    std::size_t mReadPos = 0;
};
