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
