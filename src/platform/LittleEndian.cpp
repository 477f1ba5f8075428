#include "platform/LittleEndian.h"

namespace {

// Reads up to `size` bytes into the low bytes of `value`, lowest first.
int32_t ReadInto(HFILE h, uint32_t& value, int32_t size) {
    uint8_t bytes[4];
    const int32_t n = _lread(h, bytes, size);
    if (n <= 0) return 0;
    for (int32_t i = 0; i < n; ++i) {
        value &= ~(0xFFu << (8 * i));
        value |= static_cast<uint32_t>(bytes[i]) << (8 * i);
    }
    return n;
}

template <typename T>
int32_t ReadField(HFILE h, T& field) {
    auto value = static_cast<uint32_t>(field);
    const int32_t n = ReadInto(h, value, static_cast<int32_t>(sizeof(T)));
    field = static_cast<T>(value);
    return n;
}

uint32_t Assemble(const uint8_t* p, size_t count) {
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i) value |= static_cast<uint32_t>(p[i]) << (8 * i);
    return value;
}

}  // namespace

int32_t ReadByte(HFILE h, uint8_t& field) { return ReadField(h, field); }
int32_t ReadWord(HFILE h, int16_t& field) { return ReadField(h, field); }
int32_t ReadWord(HFILE h, uint16_t& field) { return ReadField(h, field); }
int32_t ReadLong(HFILE h, int32_t& field) { return ReadField(h, field); }
int32_t ReadLong(HFILE h, uint32_t& field) { return ReadField(h, field); }

ByteCursor ByteCursor::Sub(size_t offset, size_t count) const {
    return Holds(offset, count) ? ByteCursor(data_ + offset, count) : ByteCursor();
}

uint8_t ByteCursor::ByteAt(size_t offset) const {
    return Holds(offset, 1) ? data_[offset] : 0;
}

uint16_t ByteCursor::WordAt(size_t offset) const {
    return Holds(offset, 2) ? static_cast<uint16_t>(Assemble(data_ + offset, 2)) : 0;
}

uint32_t ByteCursor::LongAt(size_t offset) const {
    return Holds(offset, 4) ? Assemble(data_ + offset, 4) : 0;
}
