// The file a save by name writes into.
#pragma once

#include <tqSystem/tqIoDeviceFileStream.h>

#include <string>

#include "svg/tqSvgExport.h"

namespace tq::svg {

// A file stream that gathers writes into pieces of PieceSize bytes. The save hands its device
// 8 KiB at a time, and at that size a system call costs about as much as copying the bytes it
// carries; gathered, they cost little more than one write of the whole text. The rest is
// written by close(), which the destructor calls. A failed write is reported by the write call
// that caused it, and every later write fails too.
class TQSVG_EXPORT BufferedFileStream : public tqIoDeviceFileStream {
public:
    static constexpr std::size_t PieceSize = 128 * 1024;

    explicit BufferedFileStream(const std::string& fileName);
    ~BufferedFileStream() override;

    int64 write(const char* data, int64 size) override;
    void close() override;

private:
    bool writePending();

    std::string mPending;
    bool mFailed = false;
};

}  // namespace tq::svg
