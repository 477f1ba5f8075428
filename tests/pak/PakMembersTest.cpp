// A PAK's members: the names that may become paths below a destination,
// the wrappers that UnpakMember writes, the listing of the directory and the
// saving of one member.
#include <gtest/gtest.h>

#include <filesystem>

#include "controls/ListView.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/ErrorOf.h"
#include "fixtures/Programs.h"
#include "fixtures/ScriptedDialogs.h"
#include "fixtures/ZipBuilder.h"
#include "pak/CPAKFile.h"
#include "pak/MemberPath.h"
#include "pak/ZipWrapper.h"
#include "samples/PakBuilder.h"
#include "shell/frmMain.h"

namespace {

namespace fs = std::filesystem;
using fixtures::PakBuilder;
using fixtures::ReadFile;
using fixtures::TempDir;
using fixtures::WriteFile;

TEST(MemberPath, NamesBelowTheFolderArePathsAndNoOthers) {
    const std::pair<std::string, std::string> below[] = {
        {"a.txt", "/d/a.txt"}, {"data\\maps\\a.map", "/d/data/maps/a.map"}, {"data/a", "/d/data/a"},
        {"..a\\b..c\\...txt", "/d/..a/b..c/...txt"}, {"sub\\.\\a", "/d/sub/./a"},
        // Only a letter before the colon makes a drive.
        {"':bin", "/d/':bin"}, {"1:x", "/d/1:x"}, {"ab:c", "/d/ab:c"}};
    for (const auto& [name, path] : below) EXPECT_EQ(MemberPath("/d/", name), path) << name;
    // Names that leave the folder, and line ends that would split the command file's lines.
    for (const std::string name : {"", ".", "..", "../a", "..\\a", "a\\..\\..\\b", "a/..", "/etc/passwd", "\\a", "c:", "c:a",
                                   "Z:\\a", "a\\", "a/", "a\\.", "x\r\nDel \"victim", "a\nb", "a\rb"}) {
        EXPECT_FALSE(IsSafeMemberName(name)) << name;
        EXPECT_EQ(MemberPath("/d/", name), "") << name;
    }
    EXPECT_FALSE(IsSafeMemberName(std::string("a\0b", 3)));
}

class ZipWrapperTest : public ::testing::Test {
protected:
    void SetUp() override {
        FillZipTemplates();
        fs::create_directory(dest);
    }
    // Writes the PAK and unpacks member i into dest.
    bool Unpak(const PakBuilder& pak, size_t i) {
        WriteFile(path, pak.Build());
        const auto e = pak.Entries().at(i);
        return UnpakMember(dest, path, e.Name, e.PackedSize, e.OriginalSize, e.Offset);
    }
    fixtures::TempDir tmp;
    std::string dest = tmp / "dest/", path = tmp / "test.pak";
};

// The wrapper replaces an older, longer one whole; the older unpacked file
// stays until the archiver puts a whole new one in its place, so that a
// damaged member doesn't cost the user the old one.
TEST_F(ZipWrapperTest, WorkedFileOfFiveByteName) {
    WriteFile(dest + "a.bin", "an older unpacked file");
    WriteFile(dest + "a.bin.zip", std::string(4000, 'J'));
    ASSERT_TRUE(Unpak(PakBuilder().Raw("a.bin", "\xAA\xBB\xCC", 9), 0));
    // Version 2.0, method 10, 01:11:00 on 1 February 1997, a CRC of 0, the
    // archive attribute: what the ZIP builder writes for such an entry.
    const std::string expected = fixtures::BuildZip({{"a.bin", 10, 0, "\xAA\xBB\xCC", 0, 9}});
    EXPECT_EQ(ReadFile(dest + "a.bin.zip"), expected);
    EXPECT_EQ(ReadFile(dest + "a.bin"), "an older unpacked file");
}

// A member is written only when the PAK holds all of it and its folder
// stands; otherwise nothing is touched. A backslash in a name separates
// folders.
TEST_F(ZipWrapperTest, WritesOnlyWhatThePakHoldsIntoAFolderThatStands) {
    const PakBuilder pak =
        PakBuilder().Stored("data\\a.txt", "plain").Raw("data\\sub\\b.bin", "\x09\x08", 77).Raw("a.bin", "\x01\x02\x03", 10);
    WriteFile(path, pak.Build());
    WriteFile(dest + "a.bin.zip", "keep");
    WriteFile(dest + "a.bin", "keep too");
    const int32_t at = pak.Entries()[2].Offset;
    const struct {
        std::string pak;
        int32_t packed, offset;
    } rows[] = {{path, 4, at}, {path, 3, at + 1}, {path, 3, -1}, {path, -3, at}, {path, 0x7FFFFFFF, at}, {tmp / "none.pak", 3, at}};
    for (const auto& row : rows) EXPECT_FALSE(UnpakMember(dest, row.pak, "a.bin", row.packed, 10, row.offset)) << row.packed;
    EXPECT_EQ(ReadFile(dest + "a.bin.zip") + ReadFile(dest + "a.bin"), "keepkeep too");
    EXPECT_TRUE(UnpakMember(dest, path, "a.bin", 3, 10, at));
    EXPECT_FALSE(Unpak(pak, 0)) << "the folder data doesn't exist yet";
    EXPECT_FALSE(fs::exists(dest + "data"));
    fs::create_directories(dest + "data/sub");
    ASSERT_TRUE(Unpak(pak, 0));
    EXPECT_EQ(ReadFile(dest + "data/a.txt"), "plain");
    ASSERT_TRUE(Unpak(pak, 1));
    // The name in the wrapper keeps the bytes of the directory.
    EXPECT_EQ(ReadFile(dest + "data/sub/b.bin.zip").substr(30, 14), "data\\sub\\b.bin");
}

// L + 46 is a 16-bit sum: a name of 32722 bytes overflows it at the end
// record, after the parts before it have been written.
TEST_F(ZipWrapperTest, NameLengthOverflowsAtTheEndRecord) {
    for (int32_t L : {32721, 32722}) {
        WriteFile(path, "");
        const HFILE h = _lopen(path, OF_WRITE);
        ASSERT_GT(h, 0);
        const uint8_t stream[3] = {1, 2, 3};
        EXPECT_EQ(fixtures::ErrorOf([&] { WriteZipWrapper(h, std::string(static_cast<size_t>(L), 'n'), L, 3, 9, stream); }).Number,
                  L == 32721 ? 0 : 6);
        _lclose(h);
        EXPECT_EQ(ReadFile(path).size(), L == 32721 ? static_cast<size_t>(98 + 2 * L + 3) : static_cast<size_t>(30 + L + 3 + 46 + L + 12));
    }
}

// Real archivers judge the wrappers: each must be listed with its name and size.
TEST_F(ZipWrapperTest, UnzipAnd7zzListEveryWrapper) {
    const PakBuilder pak = PakBuilder().Raw("a.bin", "\xAA\xBB\xCC", 9).Imploded("with blank.txt", std::string(3000, 'w'))
                               .Raw("z.dat", "", 17);
    for (const std::vector<std::string>& command : {std::vector<std::string>{"unzip", "-l"}, {"7zz", "l"}}) {
        ASSERT_FALSE(fixtures::ProgramOnPath(command[0]).empty()) << command[0] << " is part of the test set-up";
        for (size_t i = 0; i < pak.Count(); ++i) {
            const auto e = pak.Entries()[i];
            SCOPED_TRACE(command[0] + " " + e.Name);
            ASSERT_TRUE(Unpak(pak, i));
            std::vector<std::string> argv = command;
            argv.push_back(dest + e.Name + ".zip");
            const auto r = fixtures::RunAndCapture(argv);
            EXPECT_EQ(r.Status, 0) << r.Output << r.Errors;
            EXPECT_NE(r.Output.find(e.Name), std::string::npos) << r.Output;
            EXPECT_NE(r.Output.find(std::to_string(e.OriginalSize)), std::string::npos) << r.Output;
        }
    }
}

class PakFile : public ::testing::Test {
protected:
    // Binds a new object to a PAK of these bytes.
    bool Open(const std::string& bytes) {
        WriteFile(path, bytes);
        pak = std::make_unique<CPAKFile>(host);
        return pak->Initialize(path, 0, &lv);
    }
    // The items in the order they were added, "name|packed|original|extension|offset",
    // the sizes without the blanks that pad them.
    std::vector<std::string> Items() {
        std::vector<std::string> items;
        for (const ListItem* i : lv.ItemsInAddOrder()) {
            std::string text = i->Text;
            for (int sub : {1, 2}) text += "|" + i->SubItems(sub).substr(i->SubItems(sub).find_first_not_of(' '));
            items.push_back(text + "|" + i->SubItems(3) + "|" + std::to_string(i->Tag));
        }
        return items;
    }
    TempDir tmp;
    std::string path = tmp / "t.pak";
    ListView lv{"oListView"};
    frmMain host;
    std::unique_ptr<CPAKFile> pak;
};

TEST_F(PakFile, HeaderDecidesTheTypeAndTheSamePathTakesTheNewListView) {
    const std::string good = PakBuilder().Stored("a.txt", "abc").Build();
    EXPECT_FALSE(Open(good.substr(0, 19)));
    EXPECT_EQ(pak->Information(), "");
    // The signature is the recogniser's business, not this class's.
    EXPECT_TRUE(Open(PakBuilder().Signature(0).Build()));

    // The same path again reads nothing, though the file now holds a good
    // header, but takes the new list view.
    ASSERT_FALSE(Open(PakBuilder().FormatId(1).Build()));
    WriteFile(path, good);
    ListView other{"other"};
    EXPECT_TRUE(pak->Initialize(path, 5, &other));
    pak->Show(0);
    EXPECT_EQ(other.Count() + lv.Count(), 0);
    ASSERT_TRUE(Open(good));
    EXPECT_TRUE(pak->Initialize(path, 0, &other));
    pak->Show(0);
    EXPECT_EQ(other.Count(), 1);
    EXPECT_EQ(lv.Count(), 0);
}

TEST_F(PakFile, EachRecordBecomesAnItemAsItStands) {
    const std::string odd("\x00\x01\xFF\xE9.\x81", 6);
    PakBuilder members;
    members.Raw("maps\\north.map", std::string(1234, 'm'), 5678).Raw("noext", "", 0).Raw("two.dots.tar.gz", "zz", 2);
    members.Raw("", "e", 1).Raw(odd, "x", 1);
    PakBuilder early;  // the member bytes "123" read as a fourth name length that can't be read whole
    early.Stored("a", "1").Stored("b", "2").Stored("c", "3").MemberCount(5);
    PakBuilder hundred;
    for (int i = 0; i < 100; ++i) hundred.Raw("", "", 0).Offset(static_cast<size_t>(i), 0);
    const struct {
        const char* what;
        std::string bytes;
        std::vector<std::string> items;
        bool shown;
    } rows[] = {
        {"five members", members.Build(),
         {"maps\\north.map|1234|5678|map|" + std::to_string(members.DataOffset(0)),
          "noext|0|0||" + std::to_string(members.DataOffset(1)), "two.dots.tar.gz|2|2|gz|" + std::to_string(members.DataOffset(2)),
          "|1|1||" + std::to_string(members.DataOffset(3)), odd + "|1|1|\x81|" + std::to_string(members.DataOffset(4))},
         true},
        {"negative sizes and offsets",
         PakBuilder().Raw("a", "", 0).Offset(0, -7).PackedSize(0, -1).OriginalSize(0, INT32_MIN).Build(),
         {"a|-1|-2147483648||-7"}, true},
        {"no members", PakBuilder().MemberCount(0).Build(), {}, true},
        {"a negative count", PakBuilder().MemberCount(-5).Build(), {}, true},
        {"a directory that ends early", early.Build(),
         {"a|1|1||" + std::to_string(early.DataOffset(0)), "b|1|1||" + std::to_string(early.DataOffset(1)),
          "c|1|1||" + std::to_string(early.DataOffset(2))}, false},
        {"fields cut by the end keep the previous record's bytes",
         PakBuilder().Raw("a", "", 200).Offset(0, 0x11223344).PackedSize(0, 100).Raw("b", "", 0).Offset(1, 0x6655)
             .Truncate(20 + 17 + 7).Build(),
         {"a|100|200||" + std::to_string(0x11223344), "b|100|200||" + std::to_string(0x11226655)}, true},
        {"a name longer than the rest of the file",
         PakBuilder().Raw("a", "", 0).Offset(0, 0).Raw("bbbb", "", 0).NameLength(1, 0x7FFFFFFF).MemberCount(3).Build(),
         {"a|0|0||0"}, false},
        {"a name that ends at the end of the file", PakBuilder().Raw("abcd", "", 0).Truncate(28).Build(),
         {"abcd|0|0||0"}, true},
        {"a negative name length", PakBuilder().Raw("", "", 1).NameLength(0, -3).Offset(0, 9).Raw("z", "", 2).Offset(1, 10).Build(),
         {"|0|1||9", "z|0|2||10"}, true},
        {"a huge count in a small file", hundred.MemberCount(0x7FFFFFFF).Build(), std::vector<std::string>(100, "|0|0||0"), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ASSERT_TRUE(Open(row.bytes));
        lv.Clear();
        lv.Add("left over");
        int32_t countAtLastNotice = -1;
        auto notice = lv.Changed.Connect([&] { countAtLastNotice = lv.Count(); });
        EXPECT_FALSE(pak->Show(0));
        EXPECT_EQ(Items(), row.items);
        EXPECT_EQ(countAtLastNotice, lv.Count()) << "the view is told after the last item";
        EXPECT_EQ(pak->Shown(), row.shown);
        // A whole listing is made once; one that ended early is made again.
        lv.Add("added by the user's side");
        pak->Show(0);
        EXPECT_EQ(lv.Count(), static_cast<int32_t>(row.items.size()) + (row.shown ? 1 : 0));
        lv.Changed.Disconnect(notice);
    }
}

TEST_F(PakFile, TheSelectedMemberIsWrittenAsChosen) {
    FillZipTemplates();
    fixtures::ScriptedFileDialogs dialogs;
    fixtures::ScriptedMessageBoxes boxes;
    PakBuilder builder;
    builder.Imploded("maps\\north.map", std::string(20000, 'n') + "end").Stored("readme.txt", "plain text");
    builder.Raw("empty", "", 0).Raw("maps\\north.map", "\x01\x02\x03", 99);
    builder.Stored("far.txt", "defg").PackedSize(4, 1000).OriginalSize(4, 1000);
    ASSERT_TRUE(Open(builder.Build()));
    lv.Sorted = false;
    pak->Show(0);
    // Nothing selected, or nothing bound: no dialog.
    EXPECT_FALSE(pak->SaveAs());
    EXPECT_FALSE(CPAKFile(host).SaveAs());
    EXPECT_TRUE(dialogs.Requests.empty());
    // The wrapper that UnpakMember writes for the first member: both writers give the same bytes.
    fs::create_directories(tmp / "ref/maps");
    const auto e = builder.Entries()[0];
    ASSERT_TRUE(UnpakMember(tmp / "ref/", path, e.Name, e.PackedSize, e.OriginalSize, e.Offset));
    const std::string wrapper = ReadFile(tmp / "ref/maps/north.map.zip");
    const struct {
        const char* what;
        int32_t item;
        std::string chosen;  // the name given in the dialog; empty: cancelled
        int32_t filter;
        int32_t answer;      // to the replace question; 0: none asked
        std::string older;   // the file that stands there first
        std::string file;    // where the member must go
        std::string bytes;   // what the file holds afterwards
        PakMemberSave outcome;
    } rows[] = {
        // The dialog gives the first filter's extension to a name without it.
        {"compressed, first filter: the wrapper", 1, "north", 1, 0, "", "north.zip", wrapper, PakMemberSave::Written},
        {"stored", 2, "readme.txt", 1, 0, "", "readme.txt", "plain text", PakMemberSave::Written},
        {"empty", 3, "empty", 1, 0, "", "empty", "", PakMemberSave::Written},
        {"replace declined", 2, "readme.txt", 1, vbNo, "older", "readme.txt", "older", PakMemberSave::Declined},
        {"a longer older file replaced whole", 2, "readme.txt", 1, vbYes, std::string(500, 'o'), "readme.txt", "plain text",
         PakMemberSave::Written},
        {"cancelled", 1, "", 1, 0, "", "north.zip", "", PakMemberSave::Cancelled},
        // Items 1 and 4 share a name: the item goes by its offset.
        {"the second of one name", 4, "second.dcl", 2, 0, "", "second.dcl", "\x01\x02\x03", PakMemberSave::Written},
        {"a member beyond the end", 5, "keep", 2, vbYes, "kept", "keep", "kept", PakMemberSave::Unreadable},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        fs::remove_all(tmp / "out");
        fs::create_directory(tmp / "out");
        if (!row.older.empty()) WriteFile(tmp / ("out/" + row.file), row.older);
        lv.SelectOnly(row.item);
        if (row.chosen.empty())
            dialogs.Cancel();
        else
            dialogs.Choose(tmp / "out/" + row.chosen, row.filter);
        if (row.answer != 0) boxes.Answer(row.answer);
        boxes.Calls.clear();
        EXPECT_EQ(pak->SaveMember(), row.outcome);
        EXPECT_EQ(boxes.Calls.size(), row.older.empty() ? 0u : 1u);
        const bool written = !row.bytes.empty() || row.outcome == PakMemberSave::Written;
        EXPECT_EQ(fs::exists(tmp / ("out/" + row.file)), written);
        if (written) { EXPECT_EQ(ReadFile(tmp / ("out/" + row.file)), row.bytes); }
        EXPECT_EQ(std::distance(fs::directory_iterator(tmp / "out"), {}), written ? 1 : 0);
    }
    // The proposed name is the member's; the first filter gives the wrapper.
    EXPECT_EQ(dialogs.Requests[0].fileName, "maps\\north.map");
    EXPECT_EQ(dialogs.Requests[0].filters.size(), 2u);
    EXPECT_EQ(dialogs.Requests[1].filters.size(), 1u) << "a stored member has no wrapper to offer";

    // The PAK is replaced by a member of ten bytes; the object goes on
    // reading the archive that it opened, members behind those ten included.
    lv.SelectOnly(2);
    dialogs.Choose(path, 1);
    boxes.Answer(vbYes);
    EXPECT_EQ(pak->SaveMember(), PakMemberSave::Written);
    EXPECT_EQ(ReadFile(path), "plain text");
    lv.SelectOnly(1);
    dialogs.Choose(tmp / "out/north.dcl", 2);
    EXPECT_EQ(pak->SaveMember(), PakMemberSave::Written);
    EXPECT_EQ(ReadFile(tmp / "out/north.dcl"), builder.Packed(0));
    EXPECT_EQ(std::distance(fs::directory_iterator(tmp.Path()), {}), 3) << "no temporary is left";
}

}  // namespace
