#pragma once
// Reading back what the builders wrote: a little-endian cursor over bytes,
// and ImageMagick asked about picture files.
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "fixtures/Programs.h"

namespace check {

class Cursor {
public:
    explicit Cursor(const std::string& bytes, size_t at = 0) : bytes_(bytes), at_(at) {}
    uint8_t U8() {
        Need(1);
        return static_cast<uint8_t>(bytes_[at_++]);
    }
    uint16_t U16() {
        uint16_t lo = U8();
        return static_cast<uint16_t>(lo | U8() << 8);
    }
    uint32_t U32() {
        uint32_t lo = U16();
        return lo | static_cast<uint32_t>(U16()) << 16;
    }
    int32_t I32() { return static_cast<int32_t>(U32()); }
    std::string Take(size_t n) {
        Need(n);
        std::string s = bytes_.substr(at_, n);
        at_ += n;
        return s;
    }
    void Skip(size_t n) {
        Need(n);
        at_ += n;
    }
    size_t At() const { return at_; }
    size_t Left() const { return bytes_.size() - at_; }

private:
    void Need(size_t n) const {
        if (n > bytes_.size() - at_) throw std::out_of_range("read past the end of the built file");
    }
    const std::string& bytes_;
    size_t at_;
};

inline uint32_t U32At(const std::string& bytes, size_t at) { return Cursor(bytes, at).U32(); }
inline uint16_t U16At(const std::string& bytes, size_t at) { return Cursor(bytes, at).U16(); }

// "FORMAT WIDTH HEIGHT" as identify reports the file, or empty if it fails.
inline std::string Identify(const std::string& path) {
    auto r = fixtures::RunAndCapture({"identify", "-format", "%m %w %h", path});
    return r.Status == 0 ? r.Output : std::string();
}

// The decoded picture as 8-bit red, green, blue, rows from the top.
// ImageMagick 6 keeps a bottom-up TGA's rows in file order and only notes the
// orientation, so the rows are put upright before they are written out.
inline std::vector<uint8_t> DecodeRgb(const std::string& path) {
    auto r = fixtures::RunAndCapture({"convert", path, "-auto-orient", "-depth", "8", "rgb:-"});
    if (r.Status != 0) return {};
    return std::vector<uint8_t>(r.Output.begin(), r.Output.end());
}

#define REQUIRE_IMAGEMAGICK()                                                                        \
    do {                                                                                             \
        if (fixtures::ProgramOnPath("identify").empty() || fixtures::ProgramOnPath("convert").empty()) \
            GTEST_SKIP() << "ImageMagick is not installed";                                         \
    } while (0)

}  // namespace check
