#include "OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace {

mode_t gNewFileMode = 0644;

}  // namespace

void OutputFile::ReadUmask() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    gNewFileMode = 0666 & ~mask;
}

OutputFile::OutputFile(std::string target) : mTarget(std::move(target)) {
    if (mTarget == "-") {
        mDescriptor = STDOUT_FILENO;
        return;
    }
    struct stat status {};
    if (::stat(mTarget.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        mDescriptor = ::open(mTarget.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        const std::filesystem::path target(mTarget);
        mTemporary =
            (target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string();
        mDescriptor = ::mkostemp(mTemporary.data(), O_CLOEXEC);
        if (mDescriptor < 0) {
            mTemporary.clear();
        } else if (::fchmod(mDescriptor, gNewFileMode) != 0) {
            failWith(errno);
        }
    }
    if (mDescriptor < 0) {
        failWith(errno);
    }
}

OutputFile::~OutputFile() {
    if (mDescriptor > STDERR_FILENO) {
        ::close(mDescriptor);
    }
    if (!mTemporary.empty()) {
        ::unlink(mTemporary.c_str());
    }
}

void OutputFile::failWith(int systemError) {
    if (mError.empty()) {
        mError = std::string("could not be written: ") + std::strerror(systemError);
    }
}

int64 OutputFile::write(const char* data, int64 size) {
    if (mDescriptor < 0 || !mError.empty()) {
        return -1;
    }
    for (int64 done = 0; done < size;) {
        const ssize_t n = ::write(mDescriptor, data + done, static_cast<std::size_t>(size - done));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            failWith(n < 0 ? errno : EIO);
            return -1;
        }
        done += n;
    }
    return size;
}

bool OutputFile::commit() {
    if (mDescriptor > STDERR_FILENO) {
        const int descriptor = mDescriptor;
        mDescriptor = -1;
        if (::close(descriptor) != 0) {
            failWith(errno);
        }
    }
    if (mError.empty() && !mTemporary.empty()) {
        if (::rename(mTemporary.c_str(), mTarget.c_str()) != 0) {
            failWith(errno);
        } else {
            mTemporary.clear();
        }
    }
    return mError.empty();
}
