// The common behaviour of the file classes, run against each of them: an
// object that was never bound shows nothing, a file that can't be opened is
// refused, and the same path again keeps the object's state without reading
// the file anew.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "fixtures/ByteWriter.h"
#include "fixtures/MeshBuilder.h"
#include "fixtures/PakBuilder.h"
#include "fixtures/PlanarBuilder.h"
#include "hexview/CBINFile.h"
#include "identify/IFileHost.h"
#include "meshes/CMeshFile.h"
#include "pak/CPAKFile.h"
#include "pictures/CBtm.h"
#include "pictures/CPLTFile.h"

namespace {

using fixtures::TempDir;
using fixtures::WriteFile;

// What each class is handed and answers. Size is -2 for a class without the
// contract's Width and Height.
template <typename T>
struct Traits;

template <>
struct Traits<CBINFile> {
    static std::string File() { return "any bytes at all"; }
    static std::string Information() { return "bin"; }
    static constexpr bool kTakesForeign = true;
    static constexpr int32_t kWidth = -2, kHeight = -2;
};
template <>
struct Traits<CMeshFile> {
    static std::string File() {
        fixtures::MeshSpec m;
        m.Vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
        m.Polygons = {{0, 1, 2}};
        return fixtures::BuildMesh(m);
    }
    static std::string Information() { return "Mesh File"; }
    static constexpr bool kTakesForeign = false;
    static constexpr int32_t kWidth = -1, kHeight = -1;
};
template <>
struct Traits<CPAKFile> {
    static std::string File() { return fixtures::PakBuilder().Stored("A.TXT", "abc").Build(); }
    static std::string Information() { return "DCL Imploding Packed File"; }
    static constexpr bool kTakesForeign = false;
    static constexpr int32_t kWidth = -1, kHeight = -1;
};
template <>
struct Traits<CBtm> {
    static std::string File() { return fixtures::GradientBtm(5, 3, 2); }
    static std::string Information() { return "PPlanarBitmap : 5x3 (2 Bytes/Pixel)"; }
    static constexpr bool kTakesForeign = false;
    static constexpr int32_t kWidth = 5, kHeight = 3;
};
template <>
struct Traits<CPLTFile> {
    static std::string File() { return fixtures::PaletteFile(fixtures::RainbowPalette()); }
    static std::string Information() { return "Planar Bitmap Palette"; }
    static constexpr bool kTakesForeign = true;
    static constexpr int32_t kWidth = 256, kHeight = 3;
};

template <typename T>
class FileContract : public ::testing::Test {
protected:
    FileHost host;
    TempDir dir;
};

using FileClasses = ::testing::Types<CBINFile, CMeshFile, CPAKFile, CBtm, CPLTFile>;
TYPED_TEST_SUITE(FileContract, FileClasses);

TYPED_TEST(FileContract, RefusesWhatItCannotOpenAndShowsNothingUnbound) {
    TypeParam object(this->host);
    EXPECT_FALSE(object.Show(0));
    for (const std::string& path : {this->dir / "missing.bin", this->dir.Path()}) {  // a folder too
        EXPECT_FALSE(object.Initialize(path, 0, &this->host.oListView));
        EXPECT_FALSE(object.Show(0));
    }
    const std::string foreign = this->dir / "foreign.bin";
    WriteFile(foreign, std::string(64, '\x5A'));
    EXPECT_EQ(object.Initialize(foreign, 0, &this->host.oListView), Traits<TypeParam>::kTakesForeign);
}

TYPED_TEST(FileContract, BindsOnceAndKeepsItsStateForTheSamePath) {
    const std::string path = this->dir / "file.bin";
    WriteFile(path, Traits<TypeParam>::File());
    TypeParam object(this->host);
    ASSERT_TRUE(object.Initialize(path, 0, &this->host.oListView));
    EXPECT_EQ(object.Information(), Traits<TypeParam>::Information());
    if constexpr (Traits<TypeParam>::kWidth != -2) {
        EXPECT_EQ(object.Width(), Traits<TypeParam>::kWidth);
        EXPECT_EQ(object.Height(), Traits<TypeParam>::kHeight);
    }
    // The object holds its own handle: the same path needs no file at all.
    std::remove(path.c_str());
    EXPECT_TRUE(object.Initialize(path, 0, &this->host.oListView));
    EXPECT_EQ(object.Information(), Traits<TypeParam>::Information());
}

}  // namespace
