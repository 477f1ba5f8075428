#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <new>

#include "fixtures/ByteWriter.h"
#include "identify/CNerhaltFiles.h"
#include "identify/modGlobal.h"
#include "platform/Files.h"
#include "platform/Runtime.h"
#include "shell/GameFileClasses.h"

using fixtures::ByteWriter;
using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

std::string Head(uint32_t signature, uint32_t id, size_t extra = 0) {
    return ByteWriter().U32(signature).U32(id).Fill(extra, 0x5A).Data();
}

class Recogniser : public ::testing::Test {
protected:
    std::string Write(const std::string& name, const std::string& bytes) {
        std::string path = dir / name;
        WriteFile(path, bytes);
        return path;
    }
    TempDir dir;
    FileHost host;
    CNerhaltFiles files{GameFileClasses(host)};
};

}  // namespace

TEST(TypeTable, HoldsTwentyUniqueIdsWithTheirFlags) {
    size_t count = 0;
    const NerhaltType* rows = NerhaltTypes(count);
    ASSERT_EQ(count, 20u);
    for (size_t i = 0; i < count; ++i)
        for (size_t j = i + 1; j < count; ++j) EXPECT_NE(rows[i].Id, rows[j].Id);
    const NerhaltType* plt = FindNerhaltType(0x0682CEF5);
    ASSERT_NE(plt, nullptr);
    EXPECT_TRUE(plt->Able2Show);
    EXPECT_FALSE(plt->Able2Save);
    EXPECT_STREQ(FindNerhaltType(0x0CCCB3A4)->Name, "Cover File");
    EXPECT_STREQ(FindNerhaltType(0x06364764)->Name, "ColorLut (look up table)");
    EXPECT_EQ(FindNerhaltType(0x12345678), nullptr);
    // Five types can be shown; of these all but the palette can be saved.
    const std::string shown[] = {"msh", "btm", "amh", "plt", "pak"};
    const std::string saved[] = {"msh", "btm", "amh", "pak"};
    for (size_t i = 0; i < count; ++i) {
        SCOPED_TRACE(rows[i].Extension);
        EXPECT_EQ(rows[i].Able2Show, std::count(std::begin(shown), std::end(shown), rows[i].Extension) == 1);
        EXPECT_EQ(rows[i].Able2Save, std::count(std::begin(saved), std::end(saved), rows[i].Extension) == 1);
    }
}

TEST_F(Recogniser, AnUnknownIdAfterAKnownOneOffersNothing) {
    // The flags are the row's, whatever the mesh class says of the file.
    files.Initialize(Write("a.msh", Head(0x6E71, 0x00553C98, 60)), 0, nullptr);
    EXPECT_TRUE(files.IsAble2Show());
    EXPECT_TRUE(files.IsAble2Save());
    EXPECT_TRUE(files.Initialize(Write("b.bin", Head(0x6E71, 0x12345678, 8)), 0, nullptr));
    EXPECT_FALSE(files.IsAble2Show());
    EXPECT_FALSE(files.IsAble2Save());
}

TEST_F(Recogniser, NamesASignedFileOfAKnownIdWithoutAClass) {
    std::string path = Write("tile.bin", Head(0x6E71, 0x0289FCF5, 8));
    EXPECT_TRUE(files.Initialize(path, 0, nullptr));
    EXPECT_EQ(files.Information(), "FlatTile");
    EXPECT_EQ(files.Extension(), "ftl");
    EXPECT_FALSE(files.IsAble2Show());
    EXPECT_FALSE(files.IsAble2Save());
    EXPECT_EQ(files.FileObject(), nullptr);
    EXPECT_EQ(files.Width(), -1);
    EXPECT_EQ(files.Height(), -1);
    EXPECT_FALSE(files.Show(0));
    EXPECT_FALSE(files.SaveAs());
}

TEST_F(Recogniser, NamesUnknownIdsInUpperCaseHexWithoutLeadingZeros) {
    EXPECT_TRUE(files.Initialize(Write("a", Head(0x6E71, 0x00ABCDEF)), 0, nullptr));
    EXPECT_EQ(files.Information(), "Unknow Nerhalt's File (0xABCDEF)");
    EXPECT_EQ(files.Extension(), "");
    EXPECT_TRUE(files.Initialize(Write("b", Head(0x6E71, 7)), 0, nullptr));
    EXPECT_EQ(files.Information(), "Unknow Nerhalt's File (0x7)");
    EXPECT_TRUE(files.Initialize(Write("c", Head(0x6E71, 0xFFFFFFFF)), 0, nullptr));
    EXPECT_EQ(files.Information(), "Unknow Nerhalt's File (0xFFFFFFFF)");
}

TEST_F(Recogniser, RefusesAFileWithoutTheSignatureButKeepsItsRow) {
    EXPECT_FALSE(files.Initialize(Write("pic", Head(0x6E72, 0x04023750, 100)), 0, nullptr));
    EXPECT_EQ(files.FileObject(), nullptr);
    EXPECT_EQ(files.Name(), "Planar Bitmap");
    EXPECT_TRUE(files.IsAble2Save());
    EXPECT_EQ(files.Information(), "Unknow File");
    // Only the exact four bytes 71 6E 00 00 sign a game file.
    EXPECT_FALSE(files.Initialize(Write("hi", Head(0x00016E71, 0x0289FCF5)), 0, nullptr));
}

TEST_F(Recogniser, RefusesShortEmptyAndUnreadableFiles) {
    EXPECT_FALSE(files.Initialize(Write("empty", ""), 0, nullptr));
    EXPECT_FALSE(files.Initialize(Write("seven", Head(0x6E71, 0x0289FCF5).substr(0, 7)), 0, nullptr));
    EXPECT_FALSE(files.Initialize(dir / "missing", 0, nullptr));
    EXPECT_FALSE(files.Initialize(dir.Path(), 0, nullptr));
}

TEST_F(Recogniser, ASecondCallWithTheSamePathReadsNothing) {
    std::string path = Write("t", Head(0x6E71, 0x0289FCF5));
    EXPECT_TRUE(files.Initialize(path, 0, nullptr));
    // Changing the file behind the path shows that nothing is read again.
    WriteFile(path, "garbage!");
    EXPECT_TRUE(files.Initialize(path, 0, nullptr));
    EXPECT_EQ(files.Information(), "FlatTile");
    std::string foreign = Write("f", "not a game file");
    EXPECT_FALSE(files.Initialize(foreign, 0, nullptr));
    EXPECT_FALSE(files.Initialize(foreign, 0, nullptr));
}

TEST_F(Recogniser, HidesTheListViewForEverythingButAKnownPak) {
    EXPECT_TRUE(files.Initialize(Write("t", Head(0x6E71, 0x0289FCF5)), 0, nullptr));
    EXPECT_TRUE(files.HideListView());
    EXPECT_TRUE(files.Initialize(Write("u", Head(0x6E71, 0x1234)), 0, nullptr));
    EXPECT_TRUE(files.HideListView());
}

TEST_F(Recogniser, KeepsNoHandleOfTheFilesBefore) {
    int32_t before = OpenHandleCount();
    for (int i = 0; i < 5; ++i) files.Initialize(Write("f" + std::to_string(i), Head(0x6E71, 0x0289FCF5)), 0, nullptr);
    EXPECT_EQ(OpenHandleCount(), before + 1);
}

TEST(NameHelpers, ScanFromTheEndForTheirSeparator) {
    EXPECT_EQ(GetFileExt("a.b.txt"), "txt");
    EXPECT_EQ(GetFileExt("name."), "");
    EXPECT_EQ(GetFileExt("noext"), "");
    // The whole text counts: a point in a folder name is found too.
    EXPECT_EQ(GetFileExt("/x.d/file"), "d/file");
    EXPECT_EQ(GetFileExt("A.TxT"), "TxT");
    EXPECT_EQ(GetFileName("/a/b/c.txt"), "c.txt");
    EXPECT_EQ(GetFileName("/a/b/"), "");
    EXPECT_EQ(GetFileName("bare"), "bare");
    EXPECT_EQ(GetFolderName("/a/b/c.txt"), "/a/b/");
    EXPECT_EQ(GetFolderName("bare"), "bare");
}

TEST(FileExistsTest, AnswersForFilesFoldersAndNonsenseWithoutRaising) {
    TempDir dir;
    WriteFile(dir / "f.txt", "x");
    WriteFile(dir / ".hidden", "x");
    EXPECT_TRUE(FileExists(dir / "f.txt"));
    EXPECT_TRUE(FileExists(dir / ".hidden"));
    EXPECT_TRUE(FileExists(dir.Path()));
    EXPECT_TRUE(FileExists(dir / "*.txt"));
    EXPECT_FALSE(FileExists(dir / "*.zip"));
    EXPECT_FALSE(FileExists(""));
    EXPECT_FALSE(FileExists(dir / "missing"));
    EXPECT_FALSE(FileExists(std::string("bad\0name", 8)));
}

TEST(PrintFile, WritesLinesEndedByCrLfAndReportsFailures) {
    TempDir dir;
    ASSERT_TRUE(OpenPrintFile(dir / "out.bat"));
    EXPECT_TRUE(PrintToFile("cd \"x\""));
    EXPECT_TRUE(PrintToFile(""));
    EXPECT_TRUE(ClosePrintFile());
    EXPECT_EQ(fixtures::ReadFile(dir / "out.bat"), "cd \"x\"\r\n\r\n");
    EXPECT_FALSE(ClosePrintFile());
    // A folder that doesn't exist: false, and the number taken stays.
    EXPECT_FALSE(OpenPrintFile(dir / "no/such/out.bat"));
    EXPECT_NE(g_vPrintFile, 0);
    EXPECT_FALSE(PrintToFile("lost"));
}

TEST(PadSizeTest, RightAlignsInSixteenCharacters) {
    EXPECT_EQ(PadSize(1234), "            1234");
    EXPECT_EQ(PadSize(0), std::string(15, ' ') + "0");
    EXPECT_EQ(PadSize(-5).size(), 16u);
}

namespace {

// A class in charge whose binding fails the way each case says.
class FailingObject : public CNerhaltFile {
public:
    explicit FailingObject(int kind) : kind_(kind) {}
    bool Initialize(const std::string&, int32_t, ListView*) override {
        if (kind_ == 1) RaiseError(vbErrPathFileAccess);
        if (kind_ == 2) throw std::bad_alloc();
        return true;
    }

private:
    int kind_;
};

class FailingRecogniser : public CNerhaltFiles {
public:
    int Kind = 0;      // 0 binds, 1 raises, 2 runs out of memory
    bool NoObject = false;  // the object itself can't be made

protected:
    std::unique_ptr<CNerhaltFile> CreateFileObject(int32_t) override {
        if (NoObject) throw std::bad_alloc();
        return std::make_unique<FailingObject>(Kind);
    }
};

}  // namespace

TEST(RecogniserFailures, ArePassedOverAndTheAnswerKeptIsTheNewOne) {
    TempDir dir;
    const std::string good = dir / "good.pak";
    const std::string bad = dir / "bad.pak";
    WriteFile(good, Head(0x6E71, 0x097DD4D3, 12));
    WriteFile(bad, Head(0x6E71, 0x097DD4D3, 12));
    struct Case { int kind; bool noObject; bool hasObject; };
    const Case cases[] = {{1, false, true}, {2, false, true}, {0, true, false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.kind);
        FailingRecogniser files;
        ASSERT_TRUE(files.Initialize(good, 0, nullptr));
        files.Kind = c.kind;
        files.NoObject = c.noObject;
        bool answer = true;
        EXPECT_NO_THROW(answer = files.Initialize(bad, 0, nullptr));
        // Without an object the head alone answers; a failed binding is false.
        EXPECT_EQ(answer, !c.hasObject);
        EXPECT_EQ(files.FileObject() != nullptr, c.hasObject);
        EXPECT_EQ(files.Name(), "DCL Imploding Packed File");
        // The same path again answers what the failed call answered.
        EXPECT_EQ(files.Initialize(bad, 0, nullptr), answer);
        files.Kind = 0;
        files.NoObject = false;
        EXPECT_TRUE(files.Initialize(good, 0, nullptr));
    }
}
