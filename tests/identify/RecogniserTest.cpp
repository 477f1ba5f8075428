#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <new>

#include "fixtures/ByteWriter.h"
#include "samples/MeshBuilder.h"
#include "samples/PakBuilder.h"
#include "samples/PlanarBuilder.h"
#include "hexview/CBINFile.h"
#include "identify/CNerhaltFiles.h"
#include "identify/modGlobal.h"
#include "meshes/CMeshFile.h"
#include "pak/CPAKFile.h"
#include "pictures/CBtm.h"
#include "pictures/CPLTFile.h"
#include "platform/Files.h"
#include "platform/Runtime.h"
#include "shell/GameFileClasses.h"

using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

std::string Head(uint32_t signature, uint32_t id, size_t extra = 0) {
    return fixtures::ByteWriter().U32(signature).U32(id).Fill(extra, 0x5A).Data();
}

// A file that each class takes, what it says of it, and whether it also takes
// bytes of no known kind.
struct Expected {
    std::string file, information;
    bool takesForeign;
};
template <typename T>
Expected For();
template <>
Expected For<CBINFile>() { return {"any bytes at all", "bin", true}; }
template <>
Expected For<CMeshFile>() { return {fixtures::BuildMesh(fixtures::CubeMesh()), "Mesh File", false}; }
template <>
Expected For<CPAKFile>() {
    return {fixtures::PakBuilder().Stored("A.TXT", "abc").Build(), "DCL Imploding Packed File", false};
}
template <>
Expected For<CBtm>() { return {fixtures::GradientBtm(5, 3, 2), "PPlanarBitmap : 5x3 (2 Bytes/Pixel)", false}; }
template <>
Expected For<CPLTFile>() { return {fixtures::PaletteFile(fixtures::RainbowPalette()), "Planar Bitmap Palette", true}; }

// The common behaviour of the file classes, run against each of them.
template <typename T>
class FileContract : public ::testing::Test {
protected:
    FileHost host;
    TempDir dir;
};

using FileClasses = ::testing::Types<CBINFile, CMeshFile, CPAKFile, CBtm, CPLTFile>;
TYPED_TEST_SUITE(FileContract, FileClasses);

// An object that was never bound shows nothing; a file that can't be opened,
// or a folder, is refused.
TYPED_TEST(FileContract, RefusesWhatItCannotOpenAndShowsNothingUnbound) {
    TypeParam object(this->host);
    EXPECT_FALSE(object.Show(0));
    for (const std::string& path : {this->dir / "missing.bin", this->dir.Path()}) {
        EXPECT_FALSE(object.Initialize(path, 0, &this->host.oListView));
        EXPECT_FALSE(object.Show(0));
    }
    const std::string foreign = this->dir / "foreign.bin";
    WriteFile(foreign, std::string(64, '\x5A'));
    EXPECT_EQ(object.Initialize(foreign, 0, &this->host.oListView), For<TypeParam>().takesForeign);
}

// The object holds its own handle: the same path again needs no file at all.
TYPED_TEST(FileContract, BindsOnceAndKeepsItsStateForTheSamePath) {
    const Expected expected = For<TypeParam>();
    const std::string path = this->dir / "file.bin";
    WriteFile(path, expected.file);
    TypeParam object(this->host);
    ASSERT_TRUE(object.Initialize(path, 0, &this->host.oListView));
    EXPECT_EQ(object.Information(), expected.information);
    std::remove(path.c_str());
    EXPECT_TRUE(object.Initialize(path, 0, &this->host.oListView));
    EXPECT_EQ(object.Information(), expected.information);
}

// An object whose binding raises a run-time error when told to.
struct FailingObject : CNerhaltFile {
    explicit FailingObject(bool fail) : fail_(fail) {}
    bool Initialize(const std::string&, int32_t, ListView*) override {
        if (fail_) RaiseError(vbErrPathFileAccess);
        return true;
    }
    bool fail_;
};

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
        bool show, save, object;
    };
    const Row rows[] = {
        // Nothing read yet: no signature.
        {"missing", "", false, "Unknow File", "", false, false, false},
        // The flags are the row's, whatever the mesh class says of the file,
        // and an unknown id takes them away again.
        {"a.msh", Head(0x6E71, 0x00553C98, 60), false, "", "msh", true, true, true},
        {"e", Head(0x6E71, 0xFFFFFFFF), true, "Unknow Nerhalt's File (0xFFFFFFFF)", "", false, false, false},
        {"tile", Head(0x6E71, 0x0289FCF5, 8), true, "FlatTile", "ftl", false, false, false},
        // The same path again reads nothing.
        {"tile", "garbage!", true, "FlatTile", "ftl", false, false, false},
        // Only the exact bytes 71 6E 00 00 sign a game file.
        {"pic", Head(0x6E72, 0x04023750, 100), false, "Unknow File", "btm", true, true, false},
        {"hi", Head(0x00016E71, 0x0289FCF5), false, "Unknow File", "ftl", false, false, false},
        {"seven", Head(0x6E71, 0x0289FCF5).substr(0, 7), false, "FlatTile", "ftl", false, false, false},
        {"data.pak", fixtures::PakBuilder().Stored("A.TXT", "abc").Build(), true, "DCL Imploding Packed File", "pak",
         true, true, true},
        // A failed open leaves the object of the file before, and its answer stands.
        {"missing", "", false, "DCL Imploding Packed File", "pak", true, true, true},
        {"missing", "", false, "DCL Imploding Packed File", "pak", true, true, true},
        {".", "", false, "DCL Imploding Packed File", "pak", true, true, true},
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
        EXPECT_EQ(files.HideListView(), row.extension != std::string("pak"));
        EXPECT_EQ(files.FileObject() != nullptr, row.object);
        if (!row.object) {
            EXPECT_FALSE(files.Show(0));
            EXPECT_FALSE(files.SaveAs());
        }
        EXPECT_LE(OpenHandleCount() - handles, 2);  // the recogniser's and the object's
    }
}

// A binding that raises, or an object that can't be made, is passed over; the
// answer kept for the path is the new one.
TEST(Recogniser, PassesOverFailuresAndKeepsTheNewAnswer) {
    TempDir dir;
    const std::string good = dir / "good.pak", bad = dir / "bad.pak";
    WriteFile(good, Head(0x6E71, 0x097DD4D3, 12));
    WriteFile(bad, Head(0x6E71, 0x097DD4D3, 12));
    int kind = 0;  // 1: the binding raises; 2: the object itself can't be made
    CNerhaltFiles files{[&](int32_t) -> std::unique_ptr<CNerhaltFile> {
        if (kind == 2) throw std::bad_alloc();
        return std::make_unique<FailingObject>(kind == 1);
    }};
    for (int failing : {1, 2}) {
        SCOPED_TRACE(failing);
        kind = 0;
        ASSERT_TRUE(files.Initialize(good, 0, nullptr));
        EXPECT_FALSE(files.SaveAs() || files.Show(0));  // the contract's own bodies
        kind = failing;
        bool answer = true;
        EXPECT_NO_THROW(answer = files.Initialize(bad, 0, nullptr));
        // Without an object the head alone answers; a failed binding is false.
        EXPECT_EQ(answer, failing == 2);
        EXPECT_EQ(files.FileObject() != nullptr, failing != 2);
        EXPECT_EQ(files.Initialize(bad, 0, nullptr), answer);
    }
}

TEST(PathHelpers, ScanNamesFromTheEndAndAnswerWhetherAFileExists) {
    EXPECT_EQ(GetFileExt("a.b.txt"), "txt");
    EXPECT_EQ(GetFileExt("noext"), "");
    // The whole text counts: a point in a folder name is found too.
    EXPECT_EQ(GetFileExt("/x.d/file"), "d/file");
    EXPECT_EQ(GetFileName("/a/b/c.txt"), "c.txt");
    EXPECT_EQ(GetFileName("bare"), "bare");
    EXPECT_EQ(GetFolderName("/a/b/c.txt"), "/a/b/");
    EXPECT_EQ(GetFolderName("bare"), "bare");
    // FileExists answers for files and patterns, and for nonsense without raising.
    TempDir dir;
    WriteFile(dir / "f.txt", "x");
    EXPECT_TRUE(FileExists(dir / "f.txt"));
    EXPECT_TRUE(FileExists(dir / "*.txt"));
    EXPECT_FALSE(FileExists(dir / "*.zip"));
    EXPECT_FALSE(FileExists(dir / "missing"));
    EXPECT_FALSE(FileExists(std::string("bad\0name", 8)));
}
