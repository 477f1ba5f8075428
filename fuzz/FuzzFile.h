#pragma once
// A fuzz input as a real file that lives in memory. The file is made once
// with memfd_create and rewritten in place for every input, so the parsers
// still open it by a path with _lopen and read it with _lread, without a
// folder or a new file on disk per run. /proc/self/fd/N opens the memory
// file afresh, with its own position, as any other path would.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

class FuzzFile {
public:
    explicit FuzzFile(const char* name) : fd_(::memfd_create(name, MFD_CLOEXEC)) {
        if (fd_ < 0) std::abort();
        path_ = "/proc/self/fd/" + std::to_string(fd_);
    }
    ~FuzzFile() { ::close(fd_); }
    FuzzFile(const FuzzFile&) = delete;
    FuzzFile& operator=(const FuzzFile&) = delete;

    const std::string& Path() const { return path_; }

    // Makes the file hold exactly these bytes.
    void Write(const uint8_t* data, size_t size) {
        size_t done = 0;
        while (done < size) {
            const ssize_t n = ::pwrite(fd_, data + done, size - done, static_cast<off_t>(done));
            if (n <= 0) std::abort();
            done += static_cast<size_t>(n);
        }
        if (::ftruncate(fd_, static_cast<off_t>(size)) != 0) std::abort();
    }

private:
    int fd_;
    std::string path_;
};

// Two memory files used in turn. The file classes keep what they read of a
// path and do nothing when handed the same path again, so each input comes
// under the other path than the one before and is really read.
class FuzzFilePair {
public:
    const std::string& Write(const uint8_t* data, size_t size) {
        FuzzFile& file = (round_++ & 1) ? a_ : b_;
        file.Write(data, size);
        return file.Path();
    }

private:
    FuzzFile a_{"quarrin-fuzz-a"};
    FuzzFile b_{"quarrin-fuzz-b"};
    unsigned round_ = 0;
};
