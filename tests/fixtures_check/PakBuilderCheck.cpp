// The PAK builder lays its archives out as the format says, and its DCL
// streams are real ones that StormLib unpacks again.
#include <gtest/gtest.h>

#include <set>

#include "fixtures/PakBuilder.h"
#include "fixtures_check/CheckSupport.h"

using namespace fixtures;

namespace {

std::string Text(size_t length) {
    static const std::string words = "the caravan crossed the valley of Selvane and camped by the river. ";
    std::string s;
    while (s.size() < length) s += words;
    s.resize(length);
    return s;
}

std::string Noise(size_t length, uint32_t seed) {
    std::string s(length, '\0');
    for (auto& c : s) {
        seed = seed * 1664525u + 1013904223u;
        c = static_cast<char>(seed >> 24);
    }
    return s;
}

// The directory read back field by field, with the header's count.
struct ParsedPak {
    uint32_t Signature, FormatId, Field2, Field3;
    int32_t Count;
    std::vector<PakEntry> Entries;
    size_t DirectoryEnd;
};

ParsedPak Parse(const std::string& pak, size_t records) {
    check::Cursor c(pak);
    ParsedPak p{c.U32(), c.U32(), c.U32(), c.U32(), c.I32(), {}, 0};
    for (size_t i = 0; i < records; ++i) {
        PakEntry e;
        const int32_t length = c.I32();
        e.Name = c.Take(static_cast<size_t>(length));
        e.Offset = c.I32();
        e.PackedSize = c.I32();
        e.OriginalSize = c.I32();
        p.Entries.push_back(e);
    }
    p.DirectoryEnd = c.At();
    return p;
}

PakBuilder Mixed() {
    PakBuilder b;
    b.Stored("readme.txt", Text(300))
        .Imploded("data\\story.txt", Text(5000))
        .Imploded("data\\noise.bin", Noise(2000, 7))
        .Stored("empty", "")
        .Imploded("empty.dcl", "");
    return b;
}

}  // namespace

TEST(PakBuilderLayout, HeaderDirectoryAndDataStandWhereTheFormatPutsThem) {
    PakBuilder b = Mixed();
    b.UnusedFields(0x11111111, 0x22222222);
    const std::string pak = b.Build();
    const ParsedPak p = Parse(pak, b.Count());

    EXPECT_EQ(pak.substr(0, 8), std::string("\x71\x6E\x00\x00\xD3\xD4\x7D\x09", 8));
    EXPECT_EQ(p.Field2, 0x11111111u);
    EXPECT_EQ(p.Field3, 0x22222222u);
    ASSERT_EQ(p.Count, 5);
    EXPECT_EQ(p.DirectoryEnd, b.DirectoryEnd());

    // Members follow the directory one behind the other, in directory order,
    // and fill the file to its end.
    size_t expected = p.DirectoryEnd;
    const auto entries = b.Entries();
    for (size_t i = 0; i < p.Entries.size(); ++i) {
        const PakEntry& e = p.Entries[i];
        SCOPED_TRACE(e.Name);
        EXPECT_EQ(e.Name, entries[i].Name);
        EXPECT_EQ(e.Offset, entries[i].Offset);
        EXPECT_EQ(e.PackedSize, entries[i].PackedSize);
        EXPECT_EQ(e.OriginalSize, entries[i].OriginalSize);
        EXPECT_EQ(static_cast<size_t>(e.Offset), expected);
        EXPECT_EQ(b.RecordOffset(i) + 16 + e.Name.size(), i + 1 < b.Count() ? b.RecordOffset(i + 1) : b.DirectoryEnd());
        EXPECT_EQ(pak.substr(static_cast<size_t>(e.Offset), static_cast<size_t>(e.PackedSize)), b.Packed(i));
        expected += static_cast<size_t>(e.PackedSize);
    }
    EXPECT_EQ(expected, pak.size());
}

TEST(PakBuilderLayout, StoredMembersKeepTheirBytesAndImplodedOnesUnpackToThem) {
    PakBuilder b = Mixed();
    const std::string pak = b.Build();
    for (const PakEntry& e : Parse(pak, b.Count()).Entries) {
        SCOPED_TRACE(e.Name);
        const std::string packed = pak.substr(static_cast<size_t>(e.Offset), static_cast<size_t>(e.PackedSize));
        const bool imploded = e.Name == "data\\story.txt" || e.Name == "data\\noise.bin" || e.Name == "empty.dcl";
        if (imploded) {
            EXPECT_NE(e.PackedSize, e.OriginalSize);
            EXPECT_EQ(Explode(packed, static_cast<size_t>(e.OriginalSize)).size(), static_cast<size_t>(e.OriginalSize));
        } else {
            EXPECT_EQ(e.PackedSize, e.OriginalSize);
        }
    }
    EXPECT_EQ(Explode(b.Packed(1), 5000), Text(5000));
    EXPECT_EQ(Explode(b.Packed(2), 2000), Noise(2000, 7));
    EXPECT_EQ(Explode(b.Packed(4), 0), "");
    EXPECT_LT(b.Packed(1).size(), 2500u) << "text must shrink";
    EXPECT_GT(b.Packed(2).size(), 2000u) << "noise grows under implode";
}

TEST(PakBuilderLayout, GapsAndReversedDataMoveOnlyTheOffsets) {
    PakBuilder b = Mixed();
    b.Gap(3).ReverseData();
    const std::string pak = b.Build();
    const ParsedPak p = Parse(pak, b.Count());
    // The last member comes first, behind the directory and one gap.
    EXPECT_EQ(static_cast<size_t>(p.Entries.back().Offset), p.DirectoryEnd + 3);
    EXPECT_EQ(pak.substr(p.DirectoryEnd, 3), "\xA5\xA5\xA5");
    for (size_t i = 0; i < p.Entries.size(); ++i) {
        EXPECT_EQ(static_cast<size_t>(p.Entries[i].Offset), b.DataOffset(i));
        EXPECT_EQ(pak.substr(b.DataOffset(i), b.Packed(i).size()), b.Packed(i));
    }
    EXPECT_LT(p.Entries[1].Offset, p.Entries[0].Offset);
}

TEST(PakBuilderImplode, StreamsNeverHaveTheOriginalLengthAndAlwaysRoundTrip) {
    for (size_t length : {0u, 1u, 2u, 7u, 64u, 255u, 1535u, 1536u, 3071u, 3072u, 10000u}) {
        for (const std::string& data : {Text(length), Noise(length, static_cast<uint32_t>(length)), std::string(length, '\0')}) {
            SCOPED_TRACE(length);
            const std::string stream = ImplodeMember(data);
            EXPECT_NE(stream.size(), data.size());
            ASSERT_GE(stream.size(), 2u);
            // A binary stream, with the dictionary that suits the length.
            EXPECT_EQ(stream[0], 0);
            EXPECT_EQ(stream[1], length < 0x600 ? 4 : length < 0xC00 ? 5 : 6);
            EXPECT_EQ(Explode(stream, data.size()), data);
        }
    }
}

TEST(PakBuilderImplode, ExplodeRefusesStreamsThatAreNotWhatTheySay) {
    const std::string stream = ImplodeMember(Text(1000));
    EXPECT_THROW(Explode(stream, 999), std::runtime_error);
    EXPECT_THROW(Explode(std::string("\x02\x04garbage", 9), 100), std::runtime_error);
}

TEST(PakBuilderDamage, EachSwitchChangesOnlyItsOwnNumber) {
    const std::string clean = Mixed().Build();

    PakBuilder count = Mixed();
    const std::string manyMembers = count.MemberCount(1000).Build();
    EXPECT_EQ(check::U32At(manyMembers, 16), 1000u);
    EXPECT_EQ(manyMembers.substr(20), clean.substr(20));

    PakBuilder names = Mixed();
    names.NameLength(0, -5).NameLength(1, 0x7FFFFFFF);
    const std::string badNames = names.Build();
    EXPECT_EQ(static_cast<int32_t>(check::U32At(badNames, names.RecordOffset(0))), -5);
    EXPECT_EQ(check::U32At(badNames, names.RecordOffset(1)), 0x7FFFFFFFu);
    EXPECT_EQ(badNames.size(), clean.size());
    EXPECT_EQ(badNames.substr(names.RecordOffset(0) + 4, 10), "readme.txt");

    PakBuilder sizes = Mixed();
    sizes.Offset(0, 0x10000000).PackedSize(1, 999999).OriginalSize(2, -1);
    const std::string badSizes = sizes.Build();
    const auto entries = Parse(badSizes, sizes.Count()).Entries;
    EXPECT_EQ(entries[0].Offset, 0x10000000);
    EXPECT_EQ(entries[1].PackedSize, 999999);
    EXPECT_EQ(entries[2].OriginalSize, -1);
    EXPECT_EQ(sizes.Entries()[1].PackedSize, 999999);
    EXPECT_EQ(badSizes.size(), clean.size());

    PakBuilder cut = Mixed();
    const size_t inside = cut.RecordOffset(2) + 7;
    const std::string truncated = cut.Truncate(inside).Build();
    EXPECT_EQ(truncated, clean.substr(0, inside));
}

TEST(PakBuilderNames, HostileNamesGoIntoTheDirectoryByteForByte) {
    const std::vector<std::string> names = HostileNames();
    std::set<std::string> kinds;
    for (const std::string& n : names) {
        if (n.find("..") != std::string::npos) kinds.insert("parent");
        if (!n.empty() && (n[0] == '/' || n[0] == '\\')) kinds.insert("leading separator");
        if (n.size() > 1 && n[1] == ':') kinds.insert("drive");
        for (char c : std::string("\"&|%;`\r\n\0", 9))
            if (n.find(c) != std::string::npos) kinds.insert(std::string(1, c));
    }
    for (const char* k : {"parent", "leading separator", "drive", "\"", "&", "|", "%", ";", "`", "\r", "\n"})
        EXPECT_TRUE(kinds.count(k)) << "no hostile name of the kind " << k;
    EXPECT_TRUE(kinds.count(std::string(1, '\0')));

    PakBuilder b;
    for (const std::string& n : names) b.Stored(n, "x" + n);
    const std::string pak = b.Build();
    const ParsedPak p = Parse(pak, b.Count());
    ASSERT_EQ(p.Entries.size(), names.size());
    for (size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(p.Entries[i].Name, names[i]);
        EXPECT_EQ(pak.substr(static_cast<size_t>(p.Entries[i].Offset), names[i].size() + 1), "x" + names[i]);
    }
}
