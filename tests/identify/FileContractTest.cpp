// The common behaviour of the file classes, run against each of them: an
// object that was never bound shows nothing, a file that can't be opened is
// refused, and the same path again keeps the object's state without reading
// the file anew.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <type_traits>

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

// What each class is handed and answers; CBINFile has no Width and Height.
struct Expected {
    std::string file, information;
    bool takesForeign;
    int32_t width, height;
};
template <typename T>
Expected For();
template <>
Expected For<CBINFile>() { return {"any bytes at all", "bin", true, 0, 0}; }
template <>
Expected For<CMeshFile>() {
    fixtures::MeshSpec m;
    m.Vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    m.Polygons = {{0, 1, 2}};
    return {fixtures::BuildMesh(m), "Mesh File", false, -1, -1};
}
template <>
Expected For<CPAKFile>() {
    return {fixtures::PakBuilder().Stored("A.TXT", "abc").Build(), "DCL Imploding Packed File", false, -1, -1};
}
template <>
Expected For<CBtm>() { return {fixtures::GradientBtm(5, 3, 2), "PPlanarBitmap : 5x3 (2 Bytes/Pixel)", false, 5, 3}; }
template <>
Expected For<CPLTFile>() {
    return {fixtures::PaletteFile(fixtures::RainbowPalette()), "Planar Bitmap Palette", true, 256, 3};
}

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
    EXPECT_EQ(object.Initialize(foreign, 0, &this->host.oListView), For<TypeParam>().takesForeign);
}

TYPED_TEST(FileContract, BindsOnceAndKeepsItsStateForTheSamePath) {
    const Expected expected = For<TypeParam>();
    const std::string path = this->dir / "file.bin";
    WriteFile(path, expected.file);
    TypeParam object(this->host);
    ASSERT_TRUE(object.Initialize(path, 0, &this->host.oListView));
    EXPECT_EQ(object.Information(), expected.information);
    if constexpr (!std::is_same_v<TypeParam, CBINFile>) {
        EXPECT_EQ(object.Width(), expected.width);
        EXPECT_EQ(object.Height(), expected.height);
    }
    // The object holds its own handle: the same path needs no file at all.
    std::remove(path.c_str());
    EXPECT_TRUE(object.Initialize(path, 0, &this->host.oListView));
    EXPECT_EQ(object.Information(), expected.information);
}

}  // namespace
