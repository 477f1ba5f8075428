#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <new>

#include "fixtures/ByteWriter.h"
#include "fixtures/PakBuilder.h"
#include "identify/CNerhaltFiles.h"
#include "identify/modGlobal.h"
#include "platform/Files.h"
#include "platform/Runtime.h"
#include "shell/GameFileClasses.h"

using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

std::string Head(uint32_t signature, uint32_t id, size_t extra = 0) {
    return fixtures::ByteWriter().U32(signature).U32(id).Fill(extra, 0x5A).Data();
}

}  // namespace

TEST(TypeTable, HoldsTwentyUniqueIdsAndOffersShowAndSaveForItsFiveClasses) {
    size_t count = 0;
    const NerhaltType* rows = NerhaltTypes(count);
    ASSERT_EQ(count, 20u);
    const std::string shown[] = {"msh", "btm", "amh", "plt", "pak"};
    for (size_t i = 0; i < count; ++i) {
        SCOPED_TRACE(rows[i].Extension);
        EXPECT_EQ(FindNerhaltType(rows[i].Id), &rows[i]);  // ids are unique
        EXPECT_EQ(rows[i].Able2Show, std::count(std::begin(shown), std::end(shown), rows[i].Extension) == 1);
        EXPECT_EQ(rows[i].Able2Save, rows[i].Able2Show && rows[i].Extension != std::string("plt"));
    }
    EXPECT_EQ(FindNerhaltType(0x12345678), nullptr);
}

// Applied in order to one recogniser: each file's row replaces the one before,
// and a file that can't be opened leaves everything as it stood.
TEST(Recogniser, NamesEachFileByItsHeadAndOffersWhatItsRowSays) {
    TempDir dir;
    FileHost host;
    CNerhaltFiles files{GameFileClasses(host)};
    struct Row {
        const char* name;  // "." is the folder itself; "missing" is no file
        std::string bytes;
        bool answer;
        const char *information, *extension;
        bool show, save, hide, object;
    };
    const Row rows[] = {
        // Nothing read yet: no signature.
        {"missing", "", false, "Unknow File", "", false, false, true, false},
        // The flags are the row's, whatever the mesh class says of the file,
        // and an unknown id takes them away again.
        {"a.msh", Head(0x6E71, 0x00553C98, 60), false, "", "msh", true, true, true, true},
        {"b", Head(0x6E71, 0x12345678, 8), true, "Unknow Nerhalt's File (0x12345678)", "", false, false, true, false},
        {"tile", Head(0x6E71, 0x0289FCF5, 8), true, "FlatTile", "ftl", false, false, true, false},
        // The same path again reads nothing.
        {"tile", "garbage!", true, "FlatTile", "ftl", false, false, true, false},
        {"c", Head(0x6E71, 0x00ABCDEF), true, "Unknow Nerhalt's File (0xABCDEF)", "", false, false, true, false},
        {"d", Head(0x6E71, 7), true, "Unknow Nerhalt's File (0x7)", "", false, false, true, false},
        {"e", Head(0x6E71, 0xFFFFFFFF), true, "Unknow Nerhalt's File (0xFFFFFFFF)", "", false, false, true, false},
        // Only the exact bytes 71 6E 00 00 sign a game file.
        {"pic", Head(0x6E72, 0x04023750, 100), false, "Unknow File", "btm", true, true, true, false},
        {"hi", Head(0x00016E71, 0x0289FCF5), false, "Unknow File", "ftl", false, false, true, false},
        {"seven", Head(0x6E71, 0x0289FCF5).substr(0, 7), false, "FlatTile", "ftl", false, false, true, false},
        {"empty", "", false, "FlatTile", "ftl", false, false, true, false},
        {"data.pak", fixtures::PakBuilder().Stored("A.TXT", "abc").Build(), true, "DCL Imploding Packed File", "pak",
         true, true, false, true},
        // A failed open leaves the object of the file before, and its answer stands.
        {"missing", "", false, "DCL Imploding Packed File", "pak", true, true, false, true},
        {"missing", "", false, "DCL Imploding Packed File", "pak", true, true, false, true},
        {".", "", false, "DCL Imploding Packed File", "pak", true, true, false, true},
    };
    const int32_t handles = OpenHandleCount();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string path = std::string(row.name) == "." ? dir.Path() : dir / row.name;
        if (std::string(row.name) != "missing" && std::string(row.name) != ".") WriteFile(path, row.bytes);
        EXPECT_EQ(files.Initialize(path, 0, &host.oListView), row.answer);
        EXPECT_EQ(files.Information(), row.information);
        EXPECT_EQ(files.Extension(), row.extension);
        EXPECT_EQ(files.IsAble2Show(), row.show);
        EXPECT_EQ(files.IsAble2Save(), row.save);
        EXPECT_EQ(files.HideListView(), row.hide);
        EXPECT_EQ(files.FileObject() != nullptr, row.object);
        EXPECT_EQ(files.Width(), -1);
        if (!row.object) {
            EXPECT_FALSE(files.Show(0));
            EXPECT_FALSE(files.SaveAs());
            EXPECT_EQ(files.Height(), -1);
        }
        EXPECT_LE(OpenHandleCount() - handles, 2);  // the recogniser's and the object's
    }
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

namespace {

// An object whose binding raises as told: 1 a run-time error, 2 out of memory.
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

}  // namespace

TEST(RecogniserFailures, ArePassedOverAndTheAnswerKeptIsTheNewOne) {
    TempDir dir;
    const std::string good = dir / "good.pak", bad = dir / "bad.pak";
    WriteFile(good, Head(0x6E71, 0x097DD4D3, 12));
    WriteFile(bad, Head(0x6E71, 0x097DD4D3, 12));
    int kind = 0;  // 3: the object itself can't be made
    CNerhaltFiles files{[&](int32_t) -> std::unique_ptr<CNerhaltFile> {
        if (kind == 3) throw std::bad_alloc();
        return std::make_unique<FailingObject>(kind);
    }};
    for (int failing : {1, 2, 3}) {
        SCOPED_TRACE(failing);
        kind = 0;
        ASSERT_TRUE(files.Initialize(good, 0, nullptr));
        EXPECT_FALSE(files.SaveAs() || files.Show(0));  // the contract's own bodies
        kind = failing;
        bool answer = true;
        EXPECT_NO_THROW(answer = files.Initialize(bad, 0, nullptr));
        // Without an object the head alone answers; a failed binding is false.
        EXPECT_EQ(answer, failing == 3);
        EXPECT_EQ(files.FileObject() != nullptr, failing != 3);
        EXPECT_EQ(files.Name(), "DCL Imploding Packed File");
        // The same path again answers what the failed call answered.
        EXPECT_EQ(files.Initialize(bad, 0, nullptr), answer);
    }
}
