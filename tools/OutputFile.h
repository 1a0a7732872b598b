// Output that lands whole or not at all, for every file the tool writes.
#pragma once

#include <string>

#include <tqSystem/tqIoDevice.h>

// A device over one output: "-" is standard output; a special file (a terminal, a pipe,
// /dev/null, /dev/full) is written in place; any other path is written to a temporary file
// beside it, which replaces it only when commit() finds that every write and the close
// succeeded. A failed or interrupted run therefore never leaves a half-written file under the
// final name. The first failure is kept with the system's reason.
class OutputFile : public tqIoDevice {
public:
    explicit OutputFile(std::string target);
    // Removes the temporary file unless it was committed.
    ~OutputFile() override;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    bool isOpen() const override { return mDescriptor >= 0; }
    int64 read(char*, int64) override { return -1; }
    int64 write(const char* data, int64 size) override;
    void close() override {}

    // Closes the output and puts it in place; false, with error() set, when anything failed.
    bool commit();
    // "could not be written: " and the system's reason, after a failure.
    const std::string& error() const { return mError; }

    // The permissions new files get; call once before any thread starts.
    static void ReadUmask();

private:
    void failWith(int systemError);

    std::string mTarget;
    std::string mTemporary;  // empty when writing in place
    int mDescriptor = -1;
    std::string mError;
};
