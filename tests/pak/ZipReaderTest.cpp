#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <random>
#include <sstream>

#include "fixtures/ByteWriter.h"
#include "fixtures/ZipBuilder.h"
#include "pak/ZipReader.h"
#include "PakTestSupport.h"

namespace {

using fixtures::BuildZip;
using fixtures::ReadFile;
using fixtures::TempDir;
using fixtures::WriteFile;
using fixtures::ZipEntrySpec;

std::string SampleText(size_t size) {
    std::string s;
    const char* words[] = {"quarry ", "stone ", "selvane ", "map\r\n", "wall ", "tile "};
    for (size_t i = 0; s.size() < size; ++i) s += words[(i * 7 + i / 3) % 6];
    s.resize(size);
    return s;
}

std::vector<std::string> Listing(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::recursive_directory_iterator(folder))
        names.push_back(std::filesystem::relative(e.path(), folder).string());
    std::sort(names.begin(), names.end());
    return names;
}

// Decodes every entry of an archive in memory; the error of the first entry
// that fails, or the bytes of all entries joined.
struct Decoded {
    bool opened = false;
    std::string error;
    std::vector<std::string> data;
};
Decoded Decode(const std::string& zip) {
    Decoded d;
    MemoryZipSource source(zip.data(), zip.size());
    ZipReader reader;
    d.opened = reader.Open(source, d.error);
    if (!d.opened) return d;
    for (const auto& e : reader.Entries()) {
        std::string out;
        if (!reader.Extract(e, [&](const uint8_t* p, size_t n) { out.append(reinterpret_cast<const char*>(p), n); return true; },
                            d.error))
            return d;
        d.data.push_back(out);
    }
    return d;
}

TEST(ZipReader, DecodesTheThreeMethods) {
    const std::string text = SampleText(100000);
    const std::string binary = [] {
        std::string s(5000, '\0');
        for (size_t i = 0; i < s.size(); ++i) s[i] = static_cast<char>((i * i) >> 3);
        return s;
    }();
    Decoded d = Decode(BuildZip({fixtures::StoredEntry("s.txt", text), fixtures::DeflatedEntry("d.txt", text),
                                 fixtures::ImplodedEntry("i.txt", text), fixtures::ImplodedEntry("c.bin", binary, true),
                                 fixtures::StoredEntry("empty", "")}));
    ASSERT_TRUE(d.opened) << d.error;
    EXPECT_EQ(d.error, "");
    ASSERT_EQ(d.data.size(), 5u);
    EXPECT_EQ(d.data[0], text);
    EXPECT_EQ(d.data[1], text);
    EXPECT_EQ(d.data[2], text);
    EXPECT_EQ(d.data[3], binary);
    EXPECT_EQ(d.data[4], "");
}

// The decoder refuses an output buffer shorter than its input and copies
// its input into one of the same length; short streams that grew in the
// encoder (longer by one byte, or by several) must still be decoded.
TEST(ZipReader, ImplodeStreamsAsLongAsOrLongerThanTheirOutput) {
    std::mt19937 rng(7);
    bool sawEqual = false, sawOneLonger = false, sawMuchLonger = false;
    for (int len = 1; len < 200; ++len) {
        for (int round = 0; round < 8; ++round) {
            std::string data(static_cast<size_t>(len), '\0');
            for (auto& c : data) c = static_cast<char>('a' + rng() % 4);
            ZipEntrySpec e = fixtures::ImplodedEntry("x", data, true);
            sawEqual |= e.Data.size() == data.size();
            sawOneLonger |= e.Data.size() == data.size() + 1;
            sawMuchLonger |= e.Data.size() > data.size() + 1;
            Decoded d = Decode(BuildZip({e}));
            ASSERT_EQ(d.error, "") << "length " << len << ", stream " << e.Data.size();
            ASSERT_EQ(d.data.size(), 1u);
            ASSERT_EQ(d.data[0], data);
        }
    }
    EXPECT_TRUE(sawEqual);
    EXPECT_TRUE(sawOneLonger);
    EXPECT_TRUE(sawMuchLonger);
}

TEST(ZipReader, ExplodeBoundHoldsForTheDensestInput) {
    for (size_t size : {1000u, 100000u, 3000000u}) {
        std::string stream = fixtures::Implode(std::string(size, '\0'));
        EXPECT_GE(MaxExplodedSize(static_cast<int64_t>(stream.size())), static_cast<int64_t>(size));
        // Not much looser than the best the encoder does, so that it refuses.
        if (size >= 100000) {
            EXPECT_LT(MaxExplodedSize(static_cast<int64_t>(stream.size())), static_cast<int64_t>(size) * 2);
        }
    }
}

// Each damaged entry, alone in an archive, and the words of the error it gives
// ("" for a decoding without error).
TEST(ZipReader, DamagedEntriesGiveTheirReason) {
    const std::string text = SampleText(4000);
    using Make = ZipEntrySpec (*)(const std::string&, const std::string&);
    auto with = [&](Make make, auto change) {
        ZipEntrySpec e = make("a", text);
        change(e);
        return e;
    };
    const Make stored = fixtures::StoredEntry, deflated = fixtures::DeflatedEntry;
    const Make imploded = [](const std::string& n, const std::string& d) { return fixtures::ImplodedEntry(n, d); };
    const Make binary = [](const std::string& n, const std::string& d) { return fixtures::ImplodedEntry(n, d, true); };
    const struct {
        const char* what;
        ZipEntrySpec entry;
        const char* error;  // nullptr: some error
    } rows[] = {
        {"stored, wrong CRC", with(stored, [](auto& e) { e.Crc ^= 1; }), "CRC"},
        {"stored, CRC 0", with(stored, [](auto& e) { e.Crc = 0; }), ""},
        {"deflated, wrong CRC", with(deflated, [](auto& e) { e.Crc ^= 1; }), "CRC"},
        {"deflated, CRC 0", with(deflated, [](auto& e) { e.Crc = 0; }), ""},
        {"imploded, wrong CRC", with(binary, [](auto& e) { e.Crc = 0x12345678; }), "CRC"},
        {"imploded, declared one byte short", with(imploded, [](auto& e) { e.UncompressedSize -= 1; }), "more"},
        {"imploded, declared one byte long", with(imploded, [](auto& e) { e.UncompressedSize += 1; }), "fewer"},
        {"deflated, declared short", with(deflated, [](auto& e) { e.UncompressedSize -= 10; }), nullptr},
        {"deflated, declared long", with(deflated, [](auto& e) { e.UncompressedSize += 10; }), nullptr},
        {"stored, declared long", with(stored, [](auto& e) { e.UncompressedSize += 1; }), nullptr},
        {"imploded, absurd size", with(imploded, [](auto& e) { e.UncompressedSize = 0x7FFFFFF0; }), "can produce"},
        {"deflated, absurd size", with(deflated, [](auto& e) { e.UncompressedSize = 0xFFFFFFF0; }), "declared size"},
        {"method 12", with(stored, [](auto& e) { e.Method = 12; }), "method 12"},
        {"encrypted", with(stored, [](auto& e) { e.Flags = 1; }), "encrypted"},
        {"no such dictionary size", with(binary, [](auto& e) { e.Data[1] = 9; }), nullptr},
        {"implode stream cut", with(binary, [](auto& e) { e.Data.resize(e.Data.size() / 2); }), nullptr},
    };
    for (const auto& row : rows) {
        const std::string error = Decode(BuildZip({row.entry})).error;
        if (row.error == nullptr)
            EXPECT_NE(error, "") << row.what;
        else if (*row.error == '\0')
            EXPECT_EQ(error, "") << row.what;
        else
            EXPECT_NE(error.find(row.error), std::string::npos) << row.what << ": " << error;
    }
}

TEST(ZipReader, CentralAndLocalHeadersMustAgree) {
    std::string zip = BuildZip({fixtures::StoredEntry("name.txt", "data"), fixtures::StoredEntry("b", "bb")});
    std::string otherName = zip;
    otherName[30] = 'N';  // the local header's name
    Decoded d = Decode(otherName);
    ASSERT_TRUE(d.opened);
    EXPECT_NE(d.error.find("another file"), std::string::npos);

    std::string otherSize = zip;
    otherSize[18] = 9;  // the local header's compressed size
    EXPECT_NE(Decode(otherSize).error.find("other sizes"), std::string::npos);

    std::string noLocal = zip;
    noLocal[0] = 'X';
    EXPECT_NE(Decode(noLocal).error.find("no local header"), std::string::npos);
}

TEST(ZipReader, DamagedDirectoryIsRefused) {
    const std::string zip = BuildZip({fixtures::StoredEntry("a.txt", "alpha"), fixtures::StoredEntry("b.txt", "beta")});
    // Every cut of the archive is refused or gives its entries whole.
    for (size_t cut = 0; cut < zip.size(); ++cut) {
        Decoded d = Decode(zip.substr(0, cut));
        EXPECT_FALSE(d.opened && d.error.empty()) << "cut at " << cut;
    }
    const size_t end = zip.size() - 22;
    std::string manyEntries = zip;
    manyEntries[end + 8] = manyEntries[end + 10] = 100;
    EXPECT_NE(Decode(manyEntries).error.find("too small"), std::string::npos);
    std::string farDirectory = zip;
    farDirectory[end + 19] = 0x10;
    EXPECT_NE(Decode(farDirectory).error.find("outside"), std::string::npos);
    std::string twoDisks = zip;
    twoDisks[end + 4] = 1;
    EXPECT_NE(Decode(twoDisks).error.find("disks"), std::string::npos);
}

// The end record is the one whose comment reaches the archive's end exactly,
// though the comment itself holds the bytes of an end record.
TEST(ZipReader, EndRecordAndDirectoryAtTheirExactBounds) {
    const std::string comment = std::string("PK\x05\x06", 4) + std::string(18, '\0') + "tail";
    std::string zip = BuildZip({fixtures::StoredEntry("a.txt", "alpha")});
    zip[zip.size() - 2] = static_cast<char>(comment.size());
    zip += comment;
    Decoded d = Decode(zip);
    ASSERT_TRUE(d.opened) << d.error;
    ASSERT_EQ(d.data.size(), 1u);
    EXPECT_EQ(d.data[0], "alpha");
    // A directory of records without names fills its size exactly.
    EXPECT_TRUE(Decode(BuildZip({fixtures::StoredEntry("", "x")})).opened);
}

// A declared size at the bound of what deflate can expand to is believed, and
// the stream is read to find it short.
TEST(ZipReader, ADeflatedSizeAtTheBoundIsRead) {
    ZipEntrySpec e = fixtures::DeflatedEntry("a", SampleText(4000));
    e.UncompressedSize = static_cast<uint32_t>(e.Data.size() * 1032 + 1024);
    const std::string error = Decode(BuildZip({e})).error;
    EXPECT_NE(error, "");
    EXPECT_EQ(error.find("declared size"), std::string::npos) << error;
}

// ---- The archiver writing into a folder --------------------------------------

class Archiver : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directory(tmp / "out");
        out = tmp / "out";
    }
    bool Extract(const std::string& zip, std::string* errors = nullptr) {
        WriteFile(tmp / "in.zip", zip);
        std::ostringstream o, e;
        bool ok = ExtractZipToFolder(tmp / "in.zip", out, o, e);
        if (errors) *errors = e.str();
        return ok;
    }
    TempDir tmp;
    std::string out;
};

TEST_F(Archiver, WritesEveryEntryWithBackslashFolders) {
    const std::string text = SampleText(70000);
    ASSERT_TRUE(Extract(BuildZip({fixtures::ImplodedEntry("maps\\north\\a.map", text),
                                  fixtures::DeflatedEntry("maps/b.txt", "bee"), fixtures::StoredEntry("top", "t"),
                                  fixtures::StoredEntry("dir\\", "")})));
    EXPECT_EQ(Listing(out), (std::vector<std::string>{"dir", "maps", "maps/b.txt", "maps/north", "maps/north/a.map", "top"}));
    EXPECT_EQ(ReadFile(out + "/maps/north/a.map"), text);
    EXPECT_EQ(ReadFile(out + "/maps/b.txt"), "bee");
}

TEST_F(Archiver, ReplacesAnOlderFileWhole) {
    WriteFile(out + "/a.txt", std::string(1000, 'o'));
    ASSERT_TRUE(Extract(BuildZip({fixtures::StoredEntry("a.txt", "new")})));
    EXPECT_EQ(ReadFile(out + "/a.txt"), "new");
}

TEST_F(Archiver, DamagedEntryLeavesNoFileUnderItsName) {
    WriteFile(out + "/keep.txt", "older");
    ZipEntrySpec bad = fixtures::DeflatedEntry("keep.txt", SampleText(50000));
    bad.Crc ^= 0x100;
    ZipEntrySpec good = fixtures::StoredEntry("good.txt", "fine");
    std::string errors;
    EXPECT_FALSE(Extract(BuildZip({bad, good}), &errors));
    EXPECT_NE(errors.find("keep.txt"), std::string::npos) << errors;
    EXPECT_NE(errors.find("CRC"), std::string::npos) << errors;
    EXPECT_EQ(ReadFile(out + "/keep.txt"), "older");
    EXPECT_EQ(ReadFile(out + "/good.txt"), "fine");
    EXPECT_EQ(Listing(out), (std::vector<std::string>{"good.txt", "keep.txt"}));
}

TEST_F(Archiver, HostileNamesAreRefusedAndTheRestIsWritten) {
    std::filesystem::create_directory(out + "/inner");
    std::vector<ZipEntrySpec> entries;
    for (const char* name : {"../evil1", "..\\evil2", "/tmp/evil3", "\\evil4", "c:evil5", "C:\\evil6",
                             "inner/../../evil7", "inner\\..\\..\\evil8", ".."})
        entries.push_back(fixtures::StoredEntry(name, "evil"));
    entries.push_back(fixtures::StoredEntry("inner\\fine.txt", "fine"));
    std::string errors;
    EXPECT_FALSE(Extract(BuildZip(entries), &errors));
    EXPECT_NE(errors.find("evil8"), std::string::npos);
    EXPECT_EQ(Listing(tmp.Path()), (std::vector<std::string>{"in.zip", "out", "out/inner", "out/inner/fine.txt"}));
    EXPECT_FALSE(std::filesystem::exists("/tmp/evil3"));
}

TEST_F(Archiver, SymbolicLinkOnTheWayIsRefused) {
    std::filesystem::create_directory(tmp / "elsewhere");
    std::filesystem::create_directory_symlink(tmp / "elsewhere", out + "/link");
    EXPECT_FALSE(Extract(BuildZip({fixtures::StoredEntry("link\\x.txt", "x")})));
    EXPECT_TRUE(std::filesystem::is_empty(tmp / "elsewhere"));
}

TEST_F(Archiver, CutArchiveWritesNothing) {
    std::string zip = BuildZip({fixtures::ImplodedEntry("a.txt", SampleText(9000))});
    std::string errors;
    EXPECT_FALSE(Extract(zip.substr(0, zip.size() - 30), &errors));
    EXPECT_NE(errors.find("damaged archive"), std::string::npos) << errors;
    EXPECT_TRUE(std::filesystem::is_empty(out));
}

// The program as the command file calls it.
class ArchiverProgram : public Archiver {
protected:
    void SetUp() override {
        Archiver::SetUp();
        if (!paktest::ToolBuilt("quarrin-pkzip")) FAIL() << "quarrin-pkzip is not built in " << QUARRIN_TOOLS_DIR;
    }
    int Run(const std::vector<std::string>& args, std::string& output) {
        std::vector<std::string> argv{paktest::ToolPath("quarrin-pkzip")};
        argv.insert(argv.end(), args.begin(), args.end());
        return paktest::RunCapture(argv, out, output);
    }
};

TEST_F(ArchiverProgram, ExtractsIntoTheCurrentFolder) {
    const std::string text = SampleText(123456);
    WriteFile(out + "/w.zip", BuildZip({fixtures::ImplodedEntry("w.bin", text)}));
    std::string output;
    EXPECT_EQ(Run({"-Extract", "w.zip"}, output), 0) << output;
    EXPECT_EQ(ReadFile(out + "/w.bin"), text);
}

TEST_F(ArchiverProgram, DamagedInputGivesAMessageAndAStatus) {
    WriteFile(out + "/bad.zip", "PK\x05\x06 not really");
    std::string output;
    EXPECT_EQ(Run({"-Extract", "bad.zip"}, output), 1);
    EXPECT_NE(output.find("bad.zip"), std::string::npos) << output;
    EXPECT_EQ(Run({"-Extract", "missing.zip"}, output), 1);
    EXPECT_NE(output.find("can't be opened"), std::string::npos) << output;
    EXPECT_EQ(Run({"-List", "bad.zip"}, output), 2);
    EXPECT_NE(output.find("Usage"), std::string::npos) << output;
    EXPECT_EQ(Listing(out), std::vector<std::string>{"bad.zip"});
}

}  // namespace
