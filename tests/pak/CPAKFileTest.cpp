#include <gtest/gtest.h>

#include <type_traits>

#include <filesystem>

#include "controls/ListView.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/PakBuilder.h"
#include "fixtures/ScriptedDialogs.h"
#include "pak/CPAKFile.h"
#include "pak/MemberPath.h"
#include "pak/ZipWrapper.h"
#include "platform/MessageBox.h"
#include "shell/frmMain.h"
#include "PakTestSupport.h"

namespace {

using fixtures::ByteWriter;
using fixtures::TempDir;
using fixtures::WriteFile;
using paktest::BuildPak;
using paktest::Member;

ByteWriter PakHead(int32_t count, int32_t id = 0x097DD4D3) {
    ByteWriter w;
    w.U32(0x6E71).I32(id).U32(7).U32(8).I32(count);
    return w;
}

// A PAK object stands for one open listing; it is never copied.
static_assert(!std::is_copy_constructible_v<CPAKFile> && !std::is_copy_assignable_v<CPAKFile>);

class PakListing : public ::testing::Test {
protected:
    // Binds a new object to a PAK of these bytes and lists it.
    bool Open(const std::string& bytes) {
        WriteFile(path, bytes);
        pak = std::make_unique<CPAKFile>(host);
        return pak->Initialize(path, 0, &lv);
    }
    std::vector<std::string> Row(int32_t addIndex) {
        const ListItem& i = *lv.ItemsInAddOrder().at(static_cast<size_t>(addIndex));
        return {i.Text, i.SubItems(1), i.SubItems(2), i.SubItems(3), std::to_string(i.Tag)};
    }
    TempDir tmp;
    std::string path = tmp / "t.pak";
    ListView lv{"oListView"};
    FileHost host;
    std::unique_ptr<CPAKFile> pak;
};

TEST_F(PakListing, HeaderDecidesTheType) {
    EXPECT_TRUE(Open(BuildPak({{"a.txt", "abc"}})));
    EXPECT_EQ(pak->Information(), "DCL Imploding Packed File");
    EXPECT_EQ(pak->Width(), -1);
    EXPECT_EQ(pak->Height(), -1);
    EXPECT_EQ(pak->Header().lField2, 0);

    EXPECT_FALSE(Open(PakHead(0, 0x04023750).Data()));
    EXPECT_EQ(pak->Information(), "");
    EXPECT_FALSE(Open(PakHead(0).Data().substr(0, 19)));
    EXPECT_EQ(pak->Information(), "");
    // The signature is the recogniser's business, not this class's.
    ByteWriter unsigned_;
    unsigned_.U32(0).U32(0x097DD4D3).U32(0).U32(0).U32(0);
    EXPECT_TRUE(Open(unsigned_.Data()));

    CPAKFile none{host};
    EXPECT_FALSE(none.Initialize(tmp / "missing.pak", 0, &lv));
    EXPECT_FALSE(none.Show(0));
    EXPECT_EQ(lv.Count(), 0);
}

TEST_F(PakListing, SamePathAgainReadsNothingButTakesTheNewListView) {
    ASSERT_FALSE(Open(PakHead(0, 1).Data()));
    // The file now holds a good header, but the object doesn't look again.
    WriteFile(path, BuildPak({{"a.txt", "abc"}}));
    ListView other{"other"};
    EXPECT_TRUE(pak->Initialize(path, 5, &other));
    EXPECT_EQ(pak->Information(), "");
    pak->Show(0);
    EXPECT_EQ(other.Count(), 0);
    EXPECT_EQ(lv.Count(), 0);

    ASSERT_TRUE(Open(BuildPak({{"a.txt", "abc"}})));
    EXPECT_TRUE(pak->Initialize(path, 0, &other));
    pak->Show(0);
    EXPECT_EQ(other.Count(), 1);
    EXPECT_EQ(lv.Count(), 0);
}

TEST_F(PakListing, EachRecordBecomesAnItem) {
    std::vector<Member> members{{"maps\\north.map", std::string(1234, 'm'), 5678},
                                {"noext", "", 0},
                                {"two.dots.tar.gz", "zz", 2},
                                {"", "e", 1}};
    ASSERT_TRUE(Open(BuildPak(members)));
    int32_t notices = 0, countAtLastNotice = -1;
    lv.Changed.Connect([&] {
        ++notices;
        countAtLastNotice = lv.Count();
    });
    EXPECT_FALSE(pak->Show(0));
    EXPECT_TRUE(pak->Shown());
    ASSERT_EQ(lv.Count(), 4);
    EXPECT_EQ(countAtLastNotice, 4) << "the view is told after the last item";
    EXPECT_EQ(Row(0), (std::vector<std::string>{"maps\\north.map", "            1234", "            5678", "map",
                                                std::to_string(paktest::MemberOffset(members, 0))}));
    EXPECT_EQ(Row(1), (std::vector<std::string>{"noext", "               0", "               0", "",
                                                std::to_string(paktest::MemberOffset(members, 1))}));
    EXPECT_EQ(Row(2)[3], "gz");
    EXPECT_EQ(Row(3)[0], "");
    EXPECT_EQ(Row(3)[3], "");
}

TEST_F(PakListing, NameBytesArriveUnchanged) {
    std::string name("\x00\x01\xFF\xE9.\x81", 6);
    ASSERT_TRUE(Open(BuildPak({{name, "x"}})));
    pak->Show(0);
    ASSERT_EQ(lv.Count(), 1);
    EXPECT_EQ(lv.ItemsInAddOrder()[0]->Text, name);
    EXPECT_EQ(lv.ItemsInAddOrder()[0]->SubItems(3), "\x81");
}

TEST_F(PakListing, NegativeSizesAndOffsetsAreShownAsTheyStand) {
    ByteWriter w = PakHead(1);
    w.I32(1).Bytes("a").I32(-7).I32(-1).I32(INT32_MIN);
    ASSERT_TRUE(Open(w.Data()));
    pak->Show(0);
    EXPECT_EQ(Row(0), (std::vector<std::string>{"a", "              -1", "     -2147483648", "", "-7"}));
}

TEST_F(PakListing, EmptyDirectoryEmptiesTheView) {
    lv.Add("left over");
    for (int32_t count : {0, -5}) {
        ASSERT_TRUE(Open(PakHead(count).Data()));
        lv.Add("left over");
        pak->Show(0);
        EXPECT_EQ(lv.Count(), 0);
        EXPECT_TRUE(pak->Shown());
    }
}

TEST_F(PakListing, ShowListsOnce) {
    ASSERT_TRUE(Open(BuildPak({{"a", "1"}, {"b", "2"}})));
    pak->Show(0);
    lv.Add("added by the user's side");
    pak->Show(0);
    EXPECT_EQ(lv.Count(), 3);
}

TEST_F(PakListing, DirectoryThatEndsEarlyIsListedAgainFromTheStart) {
    std::string bytes = BuildPak({{"a", "1"}, {"b", "2"}, {"c", "3"}});
    ByteWriter w;
    w.Bytes(bytes).PatchU32(16, 5);
    ASSERT_TRUE(Open(w.Data()));
    pak->Show(0);
    // The member bytes "123" read as a fourth name length that can't be read whole.
    EXPECT_EQ(lv.Count(), 3);
    EXPECT_FALSE(pak->Shown());
    pak->Show(0);
    EXPECT_EQ(lv.Count(), 3);
    EXPECT_EQ(Row(2)[0], "c");
}

TEST_F(PakListing, FieldsCutByTheEndKeepThePreviousRecordsBytes) {
    ByteWriter w = PakHead(2);
    w.I32(1).Bytes("a").U32(0x11223344).I32(100).I32(200);
    w.I32(1).Bytes("b").U8(0x55).U8(0x66);
    ASSERT_TRUE(Open(w.Data()));
    pak->Show(0);
    ASSERT_EQ(lv.Count(), 2);
    EXPECT_EQ(Row(1), (std::vector<std::string>{"b", "             100", "             200", "",
                                                std::to_string(0x11226655)}));
    EXPECT_TRUE(pak->Shown());
}

TEST_F(PakListing, NameLongerThanTheRestOfTheFileStopsTheListing) {
    ByteWriter w = PakHead(3);
    w.I32(1).Bytes("a").I32(0).I32(0).I32(0);
    w.I32(0x7FFFFFFF).Bytes("bbbb").I32(0).I32(0).I32(0);
    ASSERT_TRUE(Open(w.Data()));
    pak->Show(0);
    EXPECT_EQ(lv.Count(), 1);
    EXPECT_FALSE(pak->Shown());

    // A name that ends exactly at the end of the file is still a name.
    ByteWriter exact = PakHead(1);
    exact.I32(4).Bytes("abcd");
    ASSERT_TRUE(Open(exact.Data()));
    pak->Show(0);
    ASSERT_EQ(lv.Count(), 1);
    EXPECT_EQ(Row(0)[0], "abcd");
}

TEST_F(PakListing, NegativeNameLengthGivesAnEmptyName) {
    ByteWriter w = PakHead(2);
    w.I32(-3).I32(9).I32(1).I32(1);
    w.I32(1).Bytes("z").I32(10).I32(2).I32(2);
    ASSERT_TRUE(Open(w.Data()));
    pak->Show(0);
    ASSERT_EQ(lv.Count(), 2);
    EXPECT_EQ(Row(0)[0], "");
    EXPECT_EQ(Row(0)[4], "9");
    EXPECT_EQ(Row(1)[0], "z");
}

TEST_F(PakListing, HugeCountInASmallFileEndsAtTheFilesEnd) {
    ByteWriter w = PakHead(0x7FFFFFFF);
    for (int i = 0; i < 100; ++i) w.I32(0).I32(i).I32(0).I32(0);
    ASSERT_TRUE(Open(w.Data()));
    pak->Show(0);
    EXPECT_EQ(lv.Count(), 100);
    EXPECT_FALSE(pak->Shown());
}

}  // namespace

// ---- Saving the selected member ---------------------------------------------

namespace {

class PakSave : public ::testing::Test {
protected:
    void SetUp() override {
        FillZipTemplates();
        std::filesystem::create_directory(tmp / "out");
        builder.Imploded("maps\\north.map", std::string(20000, 'n') + "end")
            .Stored("readme.txt", "plain text")
            .Raw("empty", "", 0)
            .Raw("maps\\north.map", "\x01\x02\x03", 99);
        WriteFile(path, builder.Build());
        ASSERT_TRUE(pak.Initialize(path, 0, &lv));
        lv.Sorted = false;
        pak.Show(0);
        ASSERT_EQ(lv.Count(), 4);
    }
    // The wrapper that UnpakMember writes for member i: both writers must
    // give the same bytes.
    std::string Wrapper(size_t i) {
        const auto e = builder.Entries()[i];
        std::filesystem::create_directories(tmp / "ref/maps");
        EXPECT_TRUE(UnpakMember(tmp / "ref/", path, e.Name, e.PackedSize, e.OriginalSize, e.Offset));
        return fixtures::ReadFile(MemberPath(tmp / "ref/", e.Name) + ".zip");
    }
    TempDir tmp;
    std::string path = tmp / "t.pak";
    fixtures::PakBuilder builder;
    ListView lv{"oListView"};
    frmMain owner;
    CPAKFile pak{owner};
    fixtures::ScriptedFileDialogs dialogs;
    fixtures::ScriptedMessageBoxes boxes;
};

TEST_F(PakSave, CompressedMemberUnderTheFirstFilterIsTheWrapper) {
    lv.SelectOnly(1);
    dialogs.Choose(tmp / "out/north", 1);
    EXPECT_FALSE(pak.SaveAs());
    ASSERT_EQ(dialogs.Requests.size(), 1u);
    const FileDialogRequest& r = dialogs.Requests[0];
    EXPECT_TRUE(r.save);
    EXPECT_EQ(r.fileName, "maps\\north.map");
    ASSERT_EQ(r.filters.size(), 2u);
    EXPECT_EQ(r.filters[0], (std::pair<std::string, std::string>{"Zip File (*.zip)", "*.zip"}));
    EXPECT_EQ(r.filters[1], (std::pair<std::string, std::string>{"PKWare DCL Imploding", "*.*"}));
    EXPECT_EQ(r.filterIndex, 1);
    EXPECT_EQ(r.hwndOwner, owner.hWnd());
    EXPECT_FALSE(r.overwritePrompt);
    // The dialog gives the first filter's extension to a name without it.
    EXPECT_FALSE(std::filesystem::exists(tmp / "out/north"));
    EXPECT_EQ(fixtures::ReadFile(tmp / "out/north.zip"), Wrapper(0));
    EXPECT_TRUE(boxes.Calls.empty());
}

TEST_F(PakSave, CompressedMemberUnderTheSecondFilterIsTheBareStream) {
    lv.SelectOnly(1);
    dialogs.Choose(tmp / "out/north.dcl", 2);
    pak.SaveAs();
    EXPECT_EQ(fixtures::ReadFile(tmp / "out/north.dcl"), builder.Packed(0));
}

TEST_F(PakSave, StoredMembersAreTheirBytes) {
    lv.SelectOnly(2);
    dialogs.Choose(tmp / "out/readme.txt", 1);
    pak.SaveAs();
    ASSERT_EQ(dialogs.Requests.size(), 1u);
    ASSERT_EQ(dialogs.Requests[0].filters.size(), 1u);
    EXPECT_EQ(dialogs.Requests[0].filters[0], (std::pair<std::string, std::string>{"All Files (*.*)", "*.*"}));
    EXPECT_EQ(fixtures::ReadFile(tmp / "out/readme.txt"), "plain text");

    lv.SelectOnly(3);
    dialogs.Choose(tmp / "out/empty", 1);
    pak.SaveAs();
    EXPECT_EQ(fixtures::ReadFile(tmp / "out/empty"), "");
}

TEST_F(PakSave, ReplaceQuestion) {
    WriteFile(tmp / "out/readme.txt", "older");
    lv.SelectOnly(2);
    dialogs.Choose(tmp / "out/readme.txt", 1);
    boxes.Answer(vbNo);
    pak.SaveAs();
    ASSERT_EQ(boxes.Calls.size(), 1u);
    EXPECT_EQ(boxes.Calls[0].prompt, tmp / "out/readme.txt" + " already exist.\r\nDo you want to replace it?");
    EXPECT_EQ(boxes.Calls[0].buttons, vbYesNo);
    EXPECT_EQ(boxes.Calls[0].title, "");
    EXPECT_EQ(fixtures::ReadFile(tmp / "out/readme.txt"), "older");

    // A longer older file is replaced whole.
    WriteFile(tmp / "out/readme.txt", std::string(500, 'o'));
    dialogs.Choose(tmp / "out/readme.txt", 1);
    boxes.Answer(vbYes);
    pak.SaveAs();
    EXPECT_EQ(fixtures::ReadFile(tmp / "out/readme.txt"), "plain text");
}

TEST_F(PakSave, CancelWritesNothing) {
    lv.SelectOnly(1);
    dialogs.Cancel();
    EXPECT_FALSE(pak.SaveAs());
    EXPECT_TRUE(boxes.Calls.empty());
    EXPECT_TRUE(std::filesystem::is_empty(tmp / "out"));
}

TEST_F(PakSave, NoSelectionNoDialog) {
    EXPECT_FALSE(pak.SaveAs());
    EXPECT_TRUE(dialogs.Requests.empty());
    CPAKFile unbound{owner};
    EXPECT_FALSE(unbound.SaveAs());
    EXPECT_TRUE(dialogs.Requests.empty());
}

TEST_F(PakSave, TheSelectedItemGoesByItsOffsetNotItsName) {
    // Items 1 and 4 share a name; three items are selected and item 4 has the focus.
    lv.SetSelected(1, true);
    lv.SetSelected(2, true);
    lv.SetSelected(4, true);
    dialogs.Choose(tmp / "out/second.dcl", 2);
    pak.SaveAs();
    EXPECT_EQ(dialogs.Requests.size(), 1u);
    EXPECT_EQ(fixtures::ReadFile(tmp / "out/second.dcl"), "\x01\x02\x03");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tmp / "out"), {}), 1);
}

TEST_F(PakSave, MemberBeyondTheEndWritesNothing) {
    fixtures::PakBuilder damaged;
    damaged.Stored("a.txt", "abc").Stored("b.txt", "defg").PackedSize(1, 1000).OriginalSize(1, 1000);
    damaged.Raw("c.bin", "xyz", 50).Offset(2, 0x7FFFFFF0);
    WriteFile(tmp / "d.pak", damaged.Build());
    ListView dlv{"d"};
    dlv.Sorted = false;
    CPAKFile dpak{owner};
    ASSERT_TRUE(dpak.Initialize(tmp / "d.pak", 0, &dlv));
    dpak.Show(0);
    ASSERT_EQ(dlv.Count(), 3);
    for (int32_t i : {2, 3}) {
        WriteFile(tmp / "out/keep", "kept");
        dlv.SelectOnly(i);
        dialogs.Choose(tmp / "out/keep", 2);
        boxes.Answer(vbYes);
        dpak.SaveAs();
        EXPECT_EQ(fixtures::ReadFile(tmp / "out/keep"), "kept") << "item " << i;
    }
}

TEST_F(PakSave, TargetInAMissingFolderIsPassedOverQuietly) {
    lv.SelectOnly(2);
    dialogs.Choose(tmp / "missing/readme.txt", 1);
    EXPECT_EQ(pak.SaveMember(), PakMemberSave::OpenFailed);
    dialogs.Choose(tmp / "missing/readme.txt", 1);
    EXPECT_FALSE(pak.SaveAs());
    EXPECT_FALSE(std::filesystem::exists(tmp / "missing"));
    // The object goes on working.
    dialogs.Choose(tmp / "out/readme.txt", 1);
    pak.SaveAs();
    EXPECT_EQ(fixtures::ReadFile(tmp / "out/readme.txt"), "plain text");
}

TEST_F(PakSave, SavingOverTheOpenPakLeavesItReadable) {
    // The PAK is replaced by a member of ten bytes; the object goes on
    // reading the archive that it opened, members behind those ten included.
    lv.SelectOnly(2);
    dialogs.Choose(path, 1);
    boxes.Answer(vbYes);
    EXPECT_EQ(pak.SaveMember(), PakMemberSave::Written);
    EXPECT_EQ(fixtures::ReadFile(path), "plain text");
    lv.SelectOnly(1);
    dialogs.Choose(tmp / "out/north.dcl", 2);
    EXPECT_EQ(pak.SaveMember(), PakMemberSave::Written);
    EXPECT_EQ(fixtures::ReadFile(tmp / "out/north.dcl"), builder.Packed(0));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(tmp.Path()), {}), 2) << "no temporary is left";
}

}  // namespace
