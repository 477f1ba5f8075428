#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/ZipBuilder.h"
#include "pak/ZipReader.h"
#include "pak/ZipWrapper.h"
#include "PakTestSupport.h"
#include "platform/Runtime.h"

namespace {

using fixtures::ReadFile;
using fixtures::TempDir;
using fixtures::WriteFile;
using paktest::BuildPak;
using paktest::Member;
using paktest::MemberOffset;

std::string Hex(const std::string& bytes) {
    static const char* digits = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : bytes) {
        if (!out.empty()) out += ' ';
        out += digits[c >> 4];
        out += digits[c & 15];
    }
    return out;
}

uint32_t Le32(const std::string& s, size_t at) {
    return static_cast<uint8_t>(s[at]) | (static_cast<uint8_t>(s[at + 1]) << 8) |
           (static_cast<uint8_t>(s[at + 2]) << 16) | (static_cast<uint32_t>(static_cast<uint8_t>(s[at + 3])) << 24);
}
uint16_t Le16(const std::string& s, size_t at) {
    return static_cast<uint16_t>(static_cast<uint8_t>(s[at]) | (static_cast<uint8_t>(s[at + 1]) << 8));
}

class ZipWrapperTest : public ::testing::Test {
protected:
    void SetUp() override {
        FillZipTemplates();
        std::filesystem::create_directory(tmp.Path() + "/dest");
        dest = tmp.Path() + "/dest/";
        pak = tmp / "test.pak";
    }
    // Writes a PAK of the members and unpacks member i into dest.
    bool Unpak(const std::vector<Member>& members, size_t i) {
        WriteFile(pak, BuildPak(members));
        const Member& m = members[i];
        int32_t original = m.OriginalSize < 0 ? static_cast<int32_t>(m.Bytes.size()) : m.OriginalSize;
        return UnpakMember(dest, pak, m.Name, static_cast<int32_t>(m.Bytes.size()), original, MemberOffset(members, i));
    }
    std::vector<std::string> Listing(const std::string& folder) {
        std::vector<std::string> names;
        for (const auto& e : std::filesystem::recursive_directory_iterator(folder))
            names.push_back(std::filesystem::relative(e.path(), folder).string());
        std::sort(names.begin(), names.end());
        return names;
    }
    TempDir tmp;
    std::string dest;
    std::string pak;
};

TEST_F(ZipWrapperTest, WorkedFileOfFiveByteName) {
    ASSERT_TRUE(Unpak({{"a.bin", "\xAA\xBB\xCC", 9}}, 0));
    std::string zip = ReadFile(dest + "a.bin.zip");
    EXPECT_EQ(Hex(zip),
              "50 4B 03 04 14 00 00 00 0A 00 60 09 41 22 00 00 00 00 "
              "03 00 00 00 09 00 00 00 05 00 00 00 "
              "61 2E 62 69 6E "
              "AA BB CC "
              "50 4B 01 02 14 00 14 00 00 00 0A 00 60 09 41 22 00 00 00 00 "
              "03 00 00 00 09 00 00 00 05 00 "
              "00 00 00 00 00 00 00 00 20 00 00 00 00 00 00 00 "
              "61 2E 62 69 6E "
              "50 4B 05 06 00 00 00 00 01 00 01 00 "
              "33 00 00 00 26 00 00 00 00 00");
    EXPECT_EQ(zip.size(), 111u);
    EXPECT_FALSE(std::filesystem::exists(dest + "a.bin"));
}

// A wrapper is 98 + 2L + P bytes, and a reader that walks from the end
// record finds the central header at L + P + 30 and the local one at 0.
class WrapperShape : public ZipWrapperTest, public ::testing::WithParamInterface<std::pair<size_t, size_t>> {};

TEST_P(WrapperShape, LengthAndWalkFromTheEnd) {
    auto [L, P] = GetParam();
    std::string name(L - 4, 'n');
    name += ".dat";
    std::string stream(P, '\x5A');
    for (size_t i = 0; i < P; ++i) stream[i] = static_cast<char>(i * 7);
    ASSERT_TRUE(Unpak({{"first", "xyz", 3}, {name, stream, static_cast<int32_t>(P + 1000)}}, 1));
    std::string zip = ReadFile(dest + name + ".zip");
    ASSERT_EQ(zip.size(), 98 + 2 * L + P);
    const size_t end = zip.size() - 22;
    EXPECT_EQ(Le32(zip, end), 0x06054B50u);
    EXPECT_EQ(Le32(zip, end + 12), L + 46);
    const size_t central = Le32(zip, end + 16);
    ASSERT_EQ(central, L + P + 30);
    EXPECT_EQ(Le32(zip, central), 0x02014B50u);
    EXPECT_EQ(Le32(zip, central + 20), P);
    EXPECT_EQ(Le32(zip, central + 24), P + 1000);
    EXPECT_EQ(Le16(zip, central + 28), L);
    EXPECT_EQ(zip.substr(central + 46, L), name);
    EXPECT_EQ(Le32(zip, central + 42), 0u);
    EXPECT_EQ(Le32(zip, 0), 0x04034B50u);
    EXPECT_EQ(zip.substr(30, L), name);
    EXPECT_EQ(zip.substr(30 + L, P), stream);
    // CRC 0 and the fixed date and time in both headers.
    EXPECT_EQ(Hex(zip.substr(10, 8)), "60 09 41 22 00 00 00 00");
    EXPECT_EQ(Hex(zip.substr(central + 12, 8)), "60 09 41 22 00 00 00 00");

    // The archiver's reader accepts what the writer made.
    MemoryZipSource source(zip.data(), zip.size());
    ZipReader reader;
    std::string error;
    ASSERT_TRUE(reader.Open(source, error)) << error;
    ASSERT_EQ(reader.Entries().size(), 1u);
    EXPECT_EQ(reader.Entries()[0].Name, name);
    EXPECT_EQ(reader.Entries()[0].Damage, "");
    EXPECT_EQ(reader.Entries()[0].Method, 10);
}

INSTANTIATE_TEST_SUITE_P(Sizes, WrapperShape,
                         ::testing::Values(std::make_pair(5, 0), std::make_pair(5, 1), std::make_pair(12, 4096),
                                           std::make_pair(200, 70000)));

// A stored member goes out as it stands, over an older file and with no wrapper,
// even when its bytes look like an implode stream.
TEST_F(ZipWrapperTest, StoredMembersGoOutPlain) {
    WriteFile(dest + "s.txt", std::string(100, 'o'));
    for (const std::string& bytes : {fixtures::Implode(std::string(500, 'q')), std::string(), std::string("new")}) {
        ASSERT_TRUE(Unpak({{"s.txt", bytes}}, 0));
        EXPECT_EQ(ReadFile(dest + "s.txt"), bytes);
        EXPECT_FALSE(std::filesystem::exists(dest + "s.txt.zip"));
    }
}

TEST_F(ZipWrapperTest, SecondRunReplacesTheWrapperAndLeavesTheOlderFileToTheArchiver) {
    // The older unpacked file stays until the archiver puts a whole new one
    // in its place: a damaged member must not cost the user the old one.
    WriteFile(dest + "a.bin", "an older unpacked file");
    WriteFile(dest + "a.bin.zip", std::string(4000, 'J'));
    std::vector<Member> members{{"a.bin", "\x01\x02\x03\x04", 40}};
    ASSERT_TRUE(Unpak(members, 0));
    std::string first = ReadFile(dest + "a.bin.zip");
    EXPECT_EQ(first.size(), 98u + 10 + 4);
    EXPECT_EQ(ReadFile(dest + "a.bin"), "an older unpacked file");
    ASSERT_TRUE(Unpak(members, 0));
    EXPECT_EQ(ReadFile(dest + "a.bin.zip"), first);
}

TEST_F(ZipWrapperTest, MemberBeyondTheEndOfThePakTouchesNothing) {
    std::vector<Member> members{{"a.bin", "\x01\x02\x03", 10}};
    WriteFile(pak, BuildPak(members));
    WriteFile(dest + "a.bin.zip", "keep");
    WriteFile(dest + "a.bin", "keep too");
    const int32_t at = MemberOffset(members, 0);
    EXPECT_FALSE(UnpakMember(dest, pak, "a.bin", 4, 10, at));
    EXPECT_FALSE(UnpakMember(dest, pak, "a.bin", 3, 10, at + 1));
    EXPECT_FALSE(UnpakMember(dest, pak, "a.bin", 3, 10, -1));
    EXPECT_FALSE(UnpakMember(dest, pak, "a.bin", -3, 10, at));
    EXPECT_FALSE(UnpakMember(dest, pak, "a.bin", 0x7FFFFFFF, 10, at));
    EXPECT_EQ(ReadFile(dest + "a.bin.zip"), "keep");
    EXPECT_EQ(ReadFile(dest + "a.bin"), "keep too");
    EXPECT_TRUE(UnpakMember(dest, pak, "a.bin", 3, 10, at));
}

TEST_F(ZipWrapperTest, MissingPakGivesFalse) {
    EXPECT_FALSE(UnpakMember(dest, tmp / "none.pak", "a.bin", 3, 10, 20));
    EXPECT_TRUE(Listing(dest).empty());
}

TEST_F(ZipWrapperTest, BackslashInANameIsAFolderSeparator) {
    std::vector<Member> members{{"data\\a.txt", "plain"}, {"data\\sub\\b.bin", "\x09\x08", 77}};
    EXPECT_FALSE(Unpak(members, 0)) << "the folder data doesn't exist yet";
    EXPECT_TRUE(Listing(dest).empty());
    std::filesystem::create_directories(dest + "data/sub");
    ASSERT_TRUE(Unpak(members, 0));
    EXPECT_EQ(ReadFile(dest + "data/a.txt"), "plain");
    ASSERT_TRUE(Unpak(members, 1));
    std::string zip = ReadFile(dest + "data/sub/b.bin.zip");
    // The name in the wrapper keeps the bytes of the directory.
    EXPECT_EQ(zip.substr(30, 14), "data\\sub\\b.bin");
}

TEST_F(ZipWrapperTest, NameBytesAreKeptExactly) {
    std::string name = "caf\xE9 & \"x\" %y%;`z`.bin";
    ASSERT_TRUE(Unpak({{name, "\x11\x22", 99}}, 0));
    std::string zip = ReadFile(dest + name + ".zip");
    EXPECT_EQ(zip.substr(30, name.size()), name);
}

// L + 46 is a 16-bit sum: a name of 32722 bytes overflows it at the end
// record, after the parts before it have been written.
TEST_F(ZipWrapperTest, NameLengthOverflowsAtTheEndRecord) {
    const std::string path = tmp / "w.zip";
    for (int32_t L : {32721, 32722}) {
        WriteFile(path, "");
        HFILE h = _lopen(path, OF_WRITE);
        ASSERT_GT(h, 0);
        std::string name(static_cast<size_t>(L), 'n');
        const uint8_t stream[3] = {1, 2, 3};
        if (L == 32721) {
            EXPECT_NO_THROW(WriteZipWrapper(h, name, L, 3, 9, stream));
            _lclose(h);
            EXPECT_EQ(ReadFile(path).size(), static_cast<size_t>(98 + 2 * L + 3));
        } else {
            try {
                WriteZipWrapper(h, name, L, 3, 9, stream);
                ADD_FAILURE() << "no overflow";
            } catch (const RuntimeError& e) {
                EXPECT_EQ(e.Number, 6);
            }
            _lclose(h);
            EXPECT_EQ(ReadFile(path).size(), static_cast<size_t>(30 + L + 3 + 46 + L + 12));
        }
    }
}

// Real archivers judge the wrappers: each must be listed with its name.
class ExternalListing : public ZipWrapperTest, public ::testing::WithParamInterface<std::vector<std::string>> {};

TEST_P(ExternalListing, ListsEveryWrapper) {
    const std::vector<std::string> command = GetParam();
    const std::string program = paktest::OnPath(command[0]);
    ASSERT_FALSE(program.empty()) << command[0] << " is part of the test set-up";
    const std::vector<Member> members{
        {"a.bin", "\xAA\xBB\xCC", 9},
        {"with blank.txt", fixtures::Implode(std::string(3000, 'w')), 3000},
        {"z.dat", "", 17},
    };
    WriteFile(pak, BuildPak(members));
    for (size_t i = 0; i < members.size(); ++i) {
        ASSERT_TRUE(Unpak(members, i));
        std::vector<std::string> argv = command;
        argv[0] = program;
        argv.push_back(dest + members[i].Name + ".zip");
        std::string output;
        EXPECT_EQ(paktest::RunCapture(argv, tmp.Path(), output), 0) << output;
        EXPECT_NE(output.find(members[i].Name), std::string::npos) << output;
        EXPECT_NE(output.find(std::to_string(members[i].OriginalSize)), std::string::npos) << output;
    }
}

INSTANTIATE_TEST_SUITE_P(Programs, ExternalListing,
                         ::testing::Values(std::vector<std::string>{"unzip", "-l"},
                                           std::vector<std::string>{"7zz", "l"}),
                         [](const auto& info) { return info.param[0] == "7zz" ? std::string("SevenZip") : std::string("Unzip"); });

}  // namespace
