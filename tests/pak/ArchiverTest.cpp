// The archiver: its ZIP reader on archives sound and damaged, its writing
// into a folder, and the program quarrin-pkzip against archives made to
// hurt: what each may cost in memory, in bytes written and in litter, and
// what reaches the terminal of its names.
#include <gtest/gtest.h>
#include <signal.h>

#include <cstring>
#include <filesystem>
#include <random>
#include <sstream>

#include "fixtures/ByteWriter.h"
#include "fixtures/Programs.h"
#include "fixtures/ZipBuilder.h"
#include "pak/ZipReader.h"

namespace {

namespace fs = std::filesystem;
using fixtures::BuildZip;
using fixtures::ReadFile;
using fixtures::StoredEntry;
using fixtures::TempDir;
using fixtures::WriteFile;
using fixtures::ZipEntrySpec;

std::string SampleText(size_t size) {
    static const char* const words[] = {"quarry ", "stone ", "map\r\n", "tile "};
    std::string s;
    for (size_t i = 0; s.size() < size; ++i) s += words[(i * 7 + i / 3) % 4];
    return s.substr(0, size);
}

template <typename Change>
ZipEntrySpec With(ZipEntrySpec e, Change change) {
    change(e);
    return e;
}

// Each file and folder below `folder`: "name/", and "name CRC" or with
// `sizes` "name SIZE".
std::vector<std::string> Tree(const std::string& folder, bool sizes = false) {
    std::vector<std::string> names;
    for (const auto& e : fs::recursive_directory_iterator(folder)) {
        const std::string n = e.path().lexically_relative(folder).string();
        if (e.is_directory())
            names.push_back(n + "/");
        else
            names.push_back(n + " " + std::to_string(sizes ? e.file_size() : fixtures::Crc32(ReadFile(e.path()))));
    }
    std::sort(names.begin(), names.end());
    return names;
}
std::string InTree(const std::string& name, const std::string& bytes) {
    return name + " " + std::to_string(fixtures::Crc32(bytes));
}

// Decodes every entry of an archive in memory, into a sink that takes the
// bytes or with `refuse` one that refuses them: the error of the first entry
// that fails, and the bytes of the entries decoded.
struct Decoded {
    std::string error;
    std::vector<std::string> data;
};
Decoded Decode(const std::string& zip, bool refuse = false) {
    Decoded d;
    MemoryZipSource source(zip.data(), zip.size());
    ZipReader reader;
    if (!reader.Open(source, d.error)) return d;
    for (const auto& e : reader.Entries()) {
        std::string out;
        auto sink = [&](const uint8_t* p, size_t n) { return out.append(reinterpret_cast<const char*>(p), n), !refuse; };
        if (!reader.Extract(e, sink, d.error)) return d;
        d.data.push_back(out);
    }
    return d;
}

TEST(ZipReader, DecodesEveryStreamOrSaysWhyNot) {
    const std::string text = SampleText(100000);
    // A sink that refuses its bytes stops the decoding, which says so.
    for (const ZipEntrySpec& e : {StoredEntry("s", text), fixtures::DeflatedEntry("d", text), fixtures::ImplodedEntry("i", text)})
        EXPECT_EQ(Decode(BuildZip({e}), true).error, "the output could not be written") << e.Name;

    // The decoder refuses an output buffer shorter than its input; short
    // streams that grew in the encoder, or came out as long as their data,
    // must still be decoded.
    std::mt19937 rng(7);
    for (int len = 1; len < 200; ++len) {
        for (int round = 0; round < 8; ++round) {
            std::string data(static_cast<size_t>(len), '\0');
            for (auto& c : data) c = static_cast<char>('a' + rng() % 4);
            const ZipEntrySpec e = fixtures::ImplodedEntry("x", data, true);
            const Decoded one = Decode(BuildZip({e}));
            ASSERT_EQ(one.error, "") << "length " << len << ", stream " << e.Data.size();
            ASSERT_EQ(one.data, std::vector<std::string>{data});
        }
    }

    // The bound of what a stream can give holds for the densest input, and
    // is not much looser than the best the encoder does, so that it refuses.
    const auto dense = static_cast<int64_t>(fixtures::Implode(std::string(3000000, '\0')).size());
    EXPECT_GE(MaxExplodedSize(dense), 3000000);
    EXPECT_LT(MaxExplodedSize(dense), 6000000);
}

// Each damaged archive and the words of the error it gives ("" for a
// decoding without error, nullptr for some error).
TEST(ZipReader, DamagedArchivesGiveTheirReason) {
    const std::string text = SampleText(4000);
    const ZipEntrySpec stored = StoredEntry("a", text), deflated = fixtures::DeflatedEntry("a", text);
    const ZipEntrySpec imploded = fixtures::ImplodedEntry("a", text), binary = fixtures::ImplodedEntry("a", text, true);
    const std::string two = BuildZip({StoredEntry("name.txt", "data"), StoredEntry("b", "bb")});
    const size_t end = two.size() - 22;
    auto patch = [&](size_t at, char c) { std::string z = two; z[at] = c; return z; };
    auto one = [](ZipEntrySpec e, auto change) { return change(e), BuildZip({e}); };
    auto same = [](ZipEntrySpec&) {};
    std::string withComment = BuildZip({StoredEntry("a.txt", "alpha")});
    const std::string comment = std::string("PK\x05\x06", 4) + std::string(18, '\0') + "tail";
    withComment[withComment.size() - 2] = static_cast<char>(comment.size());
    const ZipEntrySpec atBound = With(deflated, [](auto& e) { e.UncompressedSize = e.Data.size() * 1032 + 1024; });
    const struct {
        const char* what;
        std::string zip;
        const char* error;
    } rows[] = {
        {"stored, wrong CRC", one(stored, [](auto& e) { e.Crc ^= 1; }), "CRC"},
        {"stored, CRC 0", one(stored, [](auto& e) { e.Crc = 0; }), ""},
        {"imploded, declared one byte short", one(imploded, [](auto& e) { e.UncompressedSize -= 1; }), "more"},
        {"imploded, declared one byte long", one(imploded, [](auto& e) { e.UncompressedSize += 1; }), "fewer"},
        {"deflated, declared short", one(deflated, [](auto& e) { e.UncompressedSize -= 10; }), nullptr},
        {"stored, declared long", one(stored, [](auto& e) { e.UncompressedSize += 1; }), nullptr},
        {"imploded, absurd size", one(imploded, [](auto& e) { e.UncompressedSize = 0x7FFFFFF0; }), "can produce"},
        {"deflated, absurd size", one(deflated, [](auto& e) { e.UncompressedSize = 0xFFFFFFF0; }), "declared size"},
        // A declared size at the bound of what deflate can expand to is
        // believed, and the stream is read to find it short.
        {"deflated, size at the bound", one(atBound, same), nullptr},
        {"method 12", one(stored, [](auto& e) { e.Method = 12; }), "method 12"},
        {"encrypted", one(stored, [](auto& e) { e.Flags = 1; }), "encrypted"},
        {"no such dictionary size", one(binary, [](auto& e) { e.Data[1] = 9; }), nullptr},
        {"implode stream cut", one(binary, [](auto& e) { e.Data.resize(e.Data.size() / 2); }), nullptr},
        {"the local header's name differs", patch(30, 'N'), "another file"},
        {"the local header's size differs", patch(18, 9), "other sizes"},
        {"no local header", patch(0, 'X'), "no local header"},
        {"more entries than the directory holds", patch(end + 8, 100).replace(end + 10, 1, 1, 100), "too small"},
        {"the directory beyond the end", patch(end + 19, 0x10), "outside"},
        {"two disks", patch(end + 4, 1), "disks"},
        // The end record is the one whose comment reaches the archive's end
        // exactly, though the comment holds the bytes of an end record.
        {"an end record inside the comment", withComment + comment, ""},
        // A directory of records without names fills its size exactly.
        {"a nameless entry", one(StoredEntry("", "x"), same), ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const Decoded d = Decode(row.zip);
        if (row.error == nullptr)
            EXPECT_NE(d.error, "");
        else if (*row.error == '\0')
            EXPECT_TRUE(d.error.empty() && d.data.size() == 1) << d.error;
        else
            EXPECT_NE(d.error.find(row.error), std::string::npos) << d.error;
        if (row.zip == one(atBound, same)) { EXPECT_EQ(d.error.find("declared size"), std::string::npos) << d.error; }
    }
    // Every cut of an archive is refused or gives its entries whole.
    for (size_t cut = 0; cut < two.size(); ++cut) {
        const Decoded d = Decode(two.substr(0, cut));
        EXPECT_NE(d.error, "") << "cut at " << cut;
    }
}

// quarrin-pkzip -Extract ZIP in `folder`, its peak memory measured; with
// `stopAtTempFile` it is sent SIGTERM as soon as a temporary file of it shows up.
fixtures::ProgramResult Archiver(const std::string& folder, const std::string& zip, bool stopAtTempFile = false) {
    fixtures::RunOptions options{.Folder = folder, .Measure = true};
    if (stopAtTempFile) {
        options.StopWhen = [folder] {
            for (const auto& e : fs::recursive_directory_iterator(folder))
                if (e.path().extension() == ".part") return true;
            return false;
        };
    }
    return fixtures::Run({fixtures::ToolPath("quarrin-pkzip"), "-Extract", zip}, options);
}

// `e`, and a directory that names it `times` over.
std::string ListedOver(const ZipEntrySpec& e, size_t times) {
    return BuildZip({e}, std::vector<std::pair<const ZipEntrySpec*, uint32_t>>(times, {&e, 0}));
}

// The archiver writing into a folder where an older file, a folder and a
// link to a folder outside stand, called in this process again and again:
// each call writes the same and keeps the caller's descriptors and signal
// actions. Names come from the archive, which anyone can make: what reaches
// the terminal shows their control bytes and high bytes as \xNN.
TEST(Archiver, WritesWhatItCanAndNothingOutsideTheFolder) {
    const std::string text = SampleText(70000);
    std::vector<ZipEntrySpec> hostile;
    for (const char* name : {"../evil1", "..\\evil2", "/tmp/evil3", "\\evil4", "c:evil5", "C:\\evil6",
                             "inner/../../evil7", "inner\\..\\..\\evil8", ".."})
        hostile.push_back(StoredEntry(name, "evil"));
    hostile.push_back(StoredEntry("inner\\fine.txt", "fine"));
    const std::string keep = InTree("keep.txt", "older"), old = InTree("old.txt", std::string(1000, 'o'));
    auto bad = [](ZipEntrySpec e) { e.Crc ^= 1; return e; };
    const struct {
        const char* what;
        std::string zip;
        bool ok;
        std::vector<std::string> shown;  // in what the archiver says
        std::vector<std::string> after;  // besides the older file, the folder and the link; empty: not checked
    } rows[] = {
        // A colon in second place, after no letter, makes no drive.
        {"every method, backslash folders, a colon",
         BuildZip({fixtures::ImplodedEntry("maps\\north\\a.map", text), fixtures::DeflatedEntry("maps/b.txt", text + "b"),
                   StoredEntry("old.txt", text + "o"), StoredEntry("empty", ""), StoredEntry("dir\\", ""), StoredEntry("':bin", "x")}),
         true, {}, {"dir/", InTree("empty", ""), keep, "maps/", InTree("maps/b.txt", text + "b"), "maps/north/",
                    InTree("maps/north/a.map", text), InTree("old.txt", text + "o"), InTree("':bin", "x")}},
        // A damaged entry leaves no file under its name.
        {"a damaged entry", BuildZip({bad(fixtures::DeflatedEntry("keep.txt", text)), StoredEntry("good.txt", "fine")}),
         false, {"keep.txt: CRC"}, {InTree("good.txt", "fine"), keep, old}},
        {"hostile names", BuildZip(hostile), false, {"evil8"}, {InTree("inner/fine.txt", "fine"), keep, old}},
        {"a link on the way", BuildZip({StoredEntry("link\\x.txt", "x")}), false, {}, {keep, old}},
        {"an end record cut short", "PK\x05\x06 cut short", false, {"damaged archive"}, {keep, old}},
        {"written entries and a folder",
         BuildZip({StoredEntry("\x1b[31mred.txt", "r"), StoredEntry("caf\xe9\x9b.txt", "c"), StoredEntry("dir\x7f\\", "")}),
         true, {" extracting: \\x1B[31mred.txt", " extracting: caf\\xE9\\x9B.txt", "   creating: dir\\x7F\\"}, {}},
        {"a damaged entry's name", BuildZip({bad(StoredEntry("bell\a\x1b.txt", "data"))}), false,
         {"in.zip: bell\\x07\\x1B.txt: CRC"}, {}},
        {"a refused name", BuildZip({StoredEntry("..\\\x1b]0;title\a", "x")}), false, {"..\\\\x1B]0;title\\x07: refused"}, {}},
        {"a file in the way of a folder", BuildZip({StoredEntry("in\x1bway", "x"), StoredEntry("in\x1bway\\f.txt", "y")}),
         false, {"/in\\x1Bway is in the way"}, {}},
        {"overlapping entries", ListedOver(StoredEntry("one\x1b[2J", "abc"), 3), false,
         {"(one\\x1B[2J) and 2 (one\\x1B[2J) share bytes"}, {keep, old}},
    };
    auto openDescriptors = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
    auto actions = [] {
        std::vector<void (*)(int)> a;
        for (int s : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction current {};
            sigaction(s, nullptr, &current);
            a.push_back(current.sa_handler);
        }
        return a;
    };
    struct sigaction ignore {}, previousHup{};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGHUP, &ignore, &previousHup);
    const auto fdsBefore = openDescriptors();
    const auto actionsBefore = actions();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        TempDir tmp;
        WriteFile(tmp / "in.zip", row.zip);
        fs::create_directory(tmp / "elsewhere");
        fs::create_directories(tmp / "here/inner");
        fs::create_directory_symlink(tmp / "elsewhere", tmp / "here/link");
        WriteFile(tmp / "here/keep.txt", "older");
        WriteFile(tmp / "here/old.txt", std::string(1000, 'o'));
        std::vector<std::string> expected = row.after;
        expected.insert(expected.end(), {"inner/", "link/"});
        std::sort(expected.begin(), expected.end());
        for (int round = 0; round < 3; ++round) {
            std::ostringstream out, err;
            EXPECT_EQ(ExtractZipToFolder(tmp / "in.zip", tmp / "here", out, err), row.ok);
            const std::string all = out.str() + err.str();
            for (const std::string& text : row.shown) EXPECT_NE(all.find(text), std::string::npos) << all;
            for (unsigned char c : all) EXPECT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7F)) << "byte " << int(c) << " in:\n" << all;
            if (!row.after.empty()) { EXPECT_EQ(Tree(tmp / "here"), expected); }
        }
        EXPECT_TRUE(fs::is_empty(tmp / "elsewhere"));
    }
    EXPECT_EQ(openDescriptors(), fdsBefore);
    EXPECT_EQ(actions(), actionsBefore);
    sigaction(SIGHUP, &previousHup, nullptr);
    EXPECT_FALSE(fs::exists("/tmp/evil3"));

    // A wrong call.
    const auto usage = fixtures::Run({fixtures::ToolPath("quarrin-pkzip"), "-List", "in.zip"});
    EXPECT_EQ(usage.Status, 2);
    EXPECT_NE((usage.Output + usage.Errors).find("Usage"), std::string::npos);
}

constexpr uint32_t kBigSize = 128u << 20;

// The implode stream of kBigSize bytes 'A': under a megabyte.
const std::string& BigStream() {
    static const std::string stream = fixtures::Implode(std::string(kBigSize, 'A'));
    return stream;
}

ZipEntrySpec BigEntry(const std::string& name) { return {name, kZipImploded, 0, BigStream(), 0, kBigSize}; }

TEST(ArchiverProgram, HostileArchivesStayWithinTheirBounds) {
    const std::string big = std::to_string(kBigSize);
    std::string deepName;
    for (int i = 0; i < 3000; ++i) deepName += "d\\";
    // A stored entry that carries a whole second entry, local header and
    // all, and a directory that names both.
    const ZipEntrySpec inner = StoredEntry("inner.txt", std::string(5000, 'i'));
    const ZipEntrySpec outer = StoredEntry("outer.bin", BuildZip({inner}).substr(0, 30 + 9 + 5000));
    const struct {
        const char* what;
        std::string zip;
        std::vector<std::string> before;  // folders that stand in the destination first
        bool stopAtTempFile;
        int status;
        long maxPeakKiB;  // 0: not measured
        std::vector<std::string> after;   // the destination afterwards
        const char* message;
    } rows[] = {
        {"a 128 MiB imploded entry from an archive of under a megabyte", BuildZip({BigEntry("big.bin")}), {}, false, 0,
         32 * 1024, {"big.bin " + big}, " extracting: big.bin"},
        {"65535 directory records of one 128 MiB entry", ListedOver(BigEntry("big.bin"), 65535), {}, false, 1, 0, {}, "share bytes"},
        {"an entry carried inside another's data", BuildZip({outer}, {{&outer, 0}, {&inner, 30 + 9}}), {}, false, 1, 0, {},
         "share bytes"},
        {"an entry 3000 folders deep", BuildZip({StoredEntry(deepName + "f.txt", "x")}), {}, false, 1, 0, {},
         "can't make the folder"},
        {"a damaged entry below a folder that was there and two that were not",
         BuildZip({With(StoredEntry("keep\\new\\newer\\f.bin", std::string(3000, 'x')), [](auto& e) { e.Crc ^= 1; })}),
         {"keep"}, false, 1, 0, {"keep/"}, "CRC"},
        {"SIGTERM while 128 MiB entries are written",
         BuildZip({BigEntry("b1.bin"), BigEntry("b2.bin"), BigEntry("b3.bin"), BigEntry("b4.bin")}), {}, true,
         128 + SIGTERM, 0, {}, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        TempDir tmp;
        fs::create_directory(tmp / "out");
        for (const auto& f : row.before) fs::create_directory(tmp / "out/" + f);
        WriteFile(tmp / "in.zip", row.zip);
        const auto r = Archiver(tmp / "out", "../in.zip", row.stopAtTempFile);
        EXPECT_EQ(r.Status, row.status) << r.Errors;
        if (row.maxPeakKiB != 0) { EXPECT_LE(r.PeakKiB, row.maxPeakKiB); }
        EXPECT_NE((r.Output + r.Errors).find(row.message), std::string::npos) << r.Output << r.Errors;
        // Entries finished before the signal may stay, whole; nothing else.
        std::vector<std::string> after = Tree(tmp / "out", true);
        if (row.stopAtTempFile) std::erase_if(after, [&](const std::string& n) { return n.ends_with(" " + big); });
        EXPECT_EQ(after, row.after);
    }
}

}  // namespace
