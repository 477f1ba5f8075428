#include "Text1252.h"

#include <QList>

namespace {

// The characters of bytes 0x80 to 0x9F; every other byte is the character of
// its own number.
constexpr char16_t kHigh[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80-87
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 88-8F
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90-97
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 98-9F
};

char ByteOf(char32_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return static_cast<char>(c);
    for (int i = 0; i < 32; ++i)
        if (kHigh[i] == c) return static_cast<char>(0x80 + i);
    return '?';
}

}  // namespace

QString FromBytes(const std::string& bytes) {
    QString out;
    out.reserve(static_cast<qsizetype>(bytes.size()));
    for (char b : bytes) {
        const auto u = static_cast<unsigned char>(b);
        out.append(QChar(u >= 0x80 && u < 0xA0 ? kHigh[u - 0x80] : static_cast<char16_t>(u)));
    }
    return out;
}

std::string ToBytes(const QString& text) {
    std::string out;
    out.reserve(static_cast<size_t>(text.size()));
    for (char32_t c : text.toUcs4()) out += ByteOf(c);
    return out;
}
