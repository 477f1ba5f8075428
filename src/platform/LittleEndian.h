#pragma once
// Readers of little-endian integers: over an open file (the game's files, read
// field by field) and over a buffer already in memory (records of archives and
// of the registry). Every integer of the game's files is little-endian; these
// are the only places that put bytes together into numbers.
#include <cstddef>
#include <cstdint>

#include "platform/Files.h"

// ReadByte, ReadWord and ReadLong read 1, 2 or 4 bytes from the handle's
// position into a field and give the number of bytes really read (0 for a bad
// handle), which callers add up to tell whether a record was read whole. The
// bytes that the file doesn't have keep what the field held before.
int32_t ReadByte(HFILE h, uint8_t& field);
int32_t ReadWord(HFILE h, int16_t& field);
int32_t ReadWord(HFILE h, uint16_t& field);
int32_t ReadLong(HFILE h, int32_t& field);
int32_t ReadLong(HFILE h, uint32_t& field);

// A read-only view of bytes in memory. Every read is checked against the
// end: a field whose bytes are not all inside reads as zero, so a damaged
// length can never lead a read out of the buffer.
class ByteCursor {
public:
    ByteCursor() = default;
    ByteCursor(const void* data, size_t size) : data_(static_cast<const uint8_t*>(data)), size_(size) {}

    const uint8_t* Data() const { return data_; }
    size_t Size() const { return size_; }
    // True when `count` bytes from `offset` lie inside the view.
    bool Holds(size_t offset, size_t count) const { return offset <= size_ && count <= size_ - offset; }

    // The `count` bytes from `offset` as a view of their own; an empty view
    // when they are not all inside.
    ByteCursor Sub(size_t offset, size_t count) const;

    // The 1, 2 or 4 bytes at `offset` from the start.
    uint8_t ByteAt(size_t offset) const;
    uint16_t WordAt(size_t offset) const;
    uint32_t LongAt(size_t offset) const;

private:
    const uint8_t* data_ = nullptr;
    size_t size_ = 0;
};
