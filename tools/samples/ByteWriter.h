#pragma once
// A little-endian byte builder for the sample files, and whole-file reads and writes.
#include <cstdint>
#include <string>
#include <vector>

namespace samples {

class ByteWriter {
public:
    ByteWriter& U8(uint8_t v);
    ByteWriter& U16(uint16_t v);
    ByteWriter& U32(uint32_t v);
    ByteWriter& I16(int16_t v) { return U16(static_cast<uint16_t>(v)); }
    // Big-endian forms, for the formats that store their numbers that way.
    ByteWriter& U16BE(uint16_t v);
    ByteWriter& U32BE(uint32_t v);
    ByteWriter& I32(int32_t v) { return U32(static_cast<uint32_t>(v)); }
    ByteWriter& F32(float v);
    ByteWriter& Bytes(const std::string& s);
    ByteWriter& Bytes(const std::vector<uint8_t>& b);
    ByteWriter& Fill(size_t count, uint8_t value = 0);
    // Overwrites a 32-bit value at an offset already written.
    ByteWriter& PatchU32(size_t offset, uint32_t v);
    ByteWriter& PatchU16(size_t offset, uint16_t v);
    size_t Size() const { return data_.size(); }
    const std::string& Data() const { return data_; }

private:
    std::string data_;
};

// Writes bytes to a path, replacing what stood there; throws on failure.
void WriteFile(const std::string& path, const std::string& bytes);
// Reads a whole file; throws on failure.
std::string ReadFile(const std::string& path);
}  // namespace samples
