// The samples generator: the set it writes, and its pictures as ImageMagick
// reads them.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "fixtures/ByteWriter.h"
#include "fixtures/Programs.h"
#include "samples/SampleSet.h"

using namespace fixtures;

TEST(Samples, TheProgramWritesTheSetIntoAFolderThatItCreates) {
    const std::string program = std::string(QUARRIN_TOOLS_DIR) + "/quarrin-samples";
    TempDir dir;
    const std::string folder = dir / "a/b/samples";
    ASSERT_EQ(RunAndCapture({program, folder}).Status, 0);
    const auto files = SampleFiles();
    size_t written = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) written += entry.is_regular_file();
    EXPECT_EQ(written, files.size());
    for (const auto& f : files) EXPECT_TRUE(ReadFile(folder + "/" + f.Name) == f.Bytes) << f.Name;

    EXPECT_EQ(RunAndCapture({program}).Status, 2);
    WriteFile(dir / "file", "x");
    EXPECT_NE(RunAndCapture({program, dir / "file/inside"}).Status, 0) << "a folder below a file cannot be made";
}

TEST(Samples, ThePicturesAreReadByImageMagick) {
    std::map<std::string, std::string> bytes;
    for (const auto& f : SampleFiles()) bytes[f.Name] = f.Bytes;
    TempDir dir;
    const std::map<std::string, std::string> expected = {
        {"gradient.tga", "TGA 160 120 sRGB"},  {"grey.tga", "TGA 128 96 Gray"},   {"bars.bmp", "BMP3 160 120 sRGB"},
        {"palette8.bmp", "BMP3 160 120 sRGB"}, {"squares.gif", "GIF 2 2 sRGB"},   {"photo.jpg", "JPEG 240 180 sRGB"},
        {"bars-grey.jpg", "JPEG 160 120 Gray"},
    };
    for (const auto& [name, identity] : expected) {
        WriteFile(dir / name, bytes.at(name));
        const auto r = RunAndCapture({"identify", "-format", "%m %w %h %[colorspace]", dir / name});
        ASSERT_EQ(r.Status, 0) << "ImageMagick's identify is part of the test set-up";
        EXPECT_EQ(r.Output, identity) << name;
    }
    // The four pixels of the GIF, as ImageMagick decodes them.
    const auto pixels = RunAndCapture({"convert", dir / "squares.gif", "-depth", "8", "rgb:-"});
    ASSERT_EQ(pixels.Status, 0);
    EXPECT_EQ(pixels.Output, std::string("\xFF\0\0\0\xFF\0\0\0\xFF\xFF\xFF\xFF", 12));
}
