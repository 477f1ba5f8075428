#include <gtest/gtest.h>

#include <QString>
#include <string>

#include "Text1252.h"

TEST(Text1252, EveryByteComesBackAsItWent) {
    std::string all;
    for (int b = 0; b < 256; ++b) all += static_cast<char>(b);
    const QString shown = FromBytes(all);
    ASSERT_EQ(shown.size(), 256);
    EXPECT_EQ(ToBytes(shown), all);
}

TEST(Text1252, BytesShowAsTheirCharacters) {
    EXPECT_EQ(FromBytes("\x80\x9F\x92" "caf\xE9"), QStringLiteral("\u20AC\u0178\u2019caf\u00E9"));
    // The unassigned bytes are the control characters of their own number.
    for (int b : {0x81, 0x8D, 0x8F, 0x90, 0x9D}) EXPECT_EQ(FromBytes(std::string(1, static_cast<char>(b))), QString(QChar(b)));
    EXPECT_EQ(FromBytes(std::string("a\0b", 3)).size(), 3);
}

TEST(Text1252, CharactersWithoutAByteBecomeQuestionMarks) {
    EXPECT_EQ(ToBytes(QStringLiteral("\u20AC\u4E2D")), "\x80?");
    // A character beyond the basic plane is one character, so one mark.
    EXPECT_EQ(ToBytes(QString::fromUtf8("x\xF0\x9F\x98\x80y")), "x?y");
    EXPECT_EQ(ToBytes(QString(QChar(0x0080))), "?");  // C1 0x80 is the euro's byte, not its own
}
