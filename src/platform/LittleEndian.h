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

// A read-only view of bytes in memory with a position. Every read is checked
// against the end: a read that would pass it gives zero, moves nothing and
// marks the cursor as failed, so a caller may read a whole record and ask
// once, at the end, whether all of it was there.
class ByteCursor {
public:
    ByteCursor() = default;
    ByteCursor(const void* data, size_t size) : data_(static_cast<const uint8_t*>(data)), size_(size) {}

    const uint8_t* Data() const { return data_; }
    size_t Size() const { return size_; }
    size_t Position() const { return pos_; }
    size_t Remaining() const { return size_ - pos_; }
    // False once a read, a skip or a seek went past the end.
    bool Ok() const { return ok_; }
    // True when `count` bytes from `offset` lie inside the view.
    bool Holds(size_t offset, size_t count) const { return offset <= size_ && count <= size_ - offset; }

    // The `count` bytes from `offset`, as a cursor of their own at position
    // 0; an empty, failed cursor when they are not all inside.
    ByteCursor Sub(size_t offset, size_t count) const;

    bool Seek(size_t offset);
    bool Skip(size_t count);

    // Reads at the position and moves past what was read.
    uint8_t Byte();
    uint16_t Word();
    uint32_t Long();

    // Reads at a fixed offset from the start, leaving the position alone; an
    // offset whose bytes are not all inside reads as zero.
    uint8_t ByteAt(size_t offset) const;
    uint16_t WordAt(size_t offset) const;
    uint32_t LongAt(size_t offset) const;

private:
    const uint8_t* data_ = nullptr;
    size_t size_ = 0;
    size_t pos_ = 0;
    bool ok_ = true;
};
