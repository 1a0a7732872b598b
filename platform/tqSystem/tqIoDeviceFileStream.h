// A file opened by name for reading or writing.
#pragma once

#include <string>

#include "tqSystem/tqIoDevice.h"

class TQSYSTEM_EXPORT tqIoDeviceFileStream : public tqIoDevice {
public:
    // Read opens an existing regular file; Write creates or truncates one. `binary` is accepted
    // for portability and changes nothing here: files are always byte streams.
    tqIoDeviceFileStream(const std::string& fileName, DataWay way, bool binary);
    ~tqIoDeviceFileStream() override;

    tqIoDeviceFileStream(const tqIoDeviceFileStream&) = delete;
    tqIoDeviceFileStream& operator=(const tqIoDeviceFileStream&) = delete;

    // False when opening failed (missing file, a directory, no permission) or after close().
    bool isOpen() const override;
    int64 read(char* buffer, int64 size) override;
    int64 write(const char* data, int64 size) override;
    void close() override;

private:
    int mFd = -1;
    DataWay mWay = DataWay::None;
};
