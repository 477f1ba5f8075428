#include <gtest/gtest.h>

#include <QString>
#include <string>

#include "Text1252.h"

// Bytes show as their characters of the Windows code page, the unassigned
// ones as the control characters of their own number, and every byte comes
// back as it went; a character without a byte becomes one question mark,
// also beyond the basic plane.
TEST(Text1252, BytesShowAsTheirCharactersAndComeBack) {
    std::string all;
    for (int b = 0; b < 256; ++b) all += static_cast<char>(b);
    EXPECT_EQ(ToBytes(FromBytes(all)), all);
    EXPECT_EQ(FromBytes(std::string("\x80\x9F\x92" "caf\xE9\0\x81\x8D\x8F\x90\x9D", 13)),
              QStringLiteral("\u20AC\u0178\u2019caf\u00E9") + QString(QChar(0)) +
                  QString::fromUtf16(u"\x81\x8D\x8F\x90\x9D"));
    EXPECT_EQ(ToBytes(QString::fromUtf8("\xE2\x82\xAC\xE4\xB8\xAD|\xF0\x9F\x98\x80|\xC2\x80")), "\x80?|?|?");
}
