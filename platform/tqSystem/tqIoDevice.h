// The byte stream that loading reads from and saving writes to.
#pragma once

#include "tqSystem/tqSystemExport.h"
#include "tqSystem/tqTypes.h"

enum class DataWay { None = 0, Read = 1, Write = 2 };

class TQSYSTEM_EXPORT tqIoDevice {
public:
    virtual ~tqIoDevice();

    virtual bool isOpen() const = 0;
    // Bytes read into `buffer` (at most `size`), 0 at the end, -1 on error.
    virtual int64 read(char* buffer, int64 size) = 0;
    // Bytes written, -1 on error.
    virtual int64 write(const char* data, int64 size) = 0;
    virtual void close() = 0;
};
