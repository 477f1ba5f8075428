#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "fixtures_check/CheckSupport.h"
#include "pictures/BmpWriter.h"
#include "platform/Files.h"
#include "platform/Picture.h"
#include "platform/Runtime.h"

using fixtures::TempDir;

namespace {

// Every pixel its own colour, so that a flipped, mirrored or shifted row shows.
StdPicture Pattern(int32_t width, int32_t height) {
    StdPicture p{width, height, std::vector<uint8_t>(static_cast<size_t>(width) * height * 4)};
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            auto* px = const_cast<uint8_t*>(p.Pixel(x, y));
            px[0] = static_cast<uint8_t>(7 * x + 3);    // blue
            px[1] = static_cast<uint8_t>(40 * y + 1);   // green
            px[2] = static_cast<uint8_t>(x * y + 200);  // red
            px[3] = 0x5A;                               // never written
        }
    return p;
}

std::vector<uint8_t> Rgb(const StdPicture& p) {
    std::vector<uint8_t> out;
    for (int32_t y = 0; y < p.Height; ++y)
        for (int32_t x = 0; x < p.Width; ++x) out.insert(out.end(), {p.Pixel(x, y)[2], p.Pixel(x, y)[1], p.Pixel(x, y)[0]});
    return out;
}

class FixedService : public IPictureService {
public:
    bool Decode(const std::string& path, StdPicture& out) override {
        out = answer;
        return ok;
    }
    StdPicture answer;
    bool ok = true;
};

}  // namespace

TEST(BmpWriter, ImageMagickReadsEveryWidthPaddingBack) {
    REQUIRE_IMAGEMAGICK();
    TempDir dir;
    for (auto [w, h] : {std::pair{1, 1}, {3, 2}, {4, 3}, {5, 4}, {6, 1}}) {
        const StdPicture picture = Pattern(w, h);
        const std::string path = dir / (std::to_string(w) + "x" + std::to_string(h) + ".bmp");
        SavePicture(picture, path);
        const std::string bytes = fixtures::ReadFile(path);
        const int64_t stride = (w * 3 + 3) / 4 * 4;
        ASSERT_EQ(bytes.size(), static_cast<size_t>(54 + stride * h)) << path;
        EXPECT_EQ(check::U16At(bytes, 28), 24u);
        EXPECT_EQ(check::U32At(bytes, 10), 54u);
        // The bottom row comes first, its spare bytes zero; BMP3 is the form with
        // the 40-byte info header.
        EXPECT_EQ(static_cast<uint8_t>(bytes[54]), picture.Pixel(0, h - 1)[0]);
        for (int64_t pad = w * 3; pad < stride; ++pad) EXPECT_EQ(bytes[54 + pad], 0) << path;
        EXPECT_EQ(check::Identify(path), "BMP3 " + std::to_string(w) + " " + std::to_string(h)) << path;
        EXPECT_EQ(check::DecodeRgb(path), Rgb(picture)) << path;
    }
}

TEST(BmpWriter, AFailedSaveLeavesTheOldFileAndNoTemporary) {
    TempDir dir;
    const std::string path = dir / "old.bmp";
    fixtures::WriteFile(path, "old bytes");
    const StdPicture empty;
    for (const std::string& target : {path, dir / "missing/new.bmp"}) {
        try {
            SavePicture(target == path ? empty : Pattern(2, 2), target);
            ADD_FAILURE() << target;
        } catch (const RuntimeError& e) {
            EXPECT_TRUE(e.Number == vbErrInvalidPicture || e.Number == vbErrPathFileAccess) << e.Number;
        }
    }
    EXPECT_EQ(fixtures::ReadFile(path), "old bytes");
    std::vector<DirEntry> entries;
    ASSERT_TRUE(ListDirectory(dir.Path(), entries));
    EXPECT_EQ(entries.size(), 1u);
    EXPECT_EQ(Bmp24Headers(70000, 70000), "");  // beyond 4 GiB
}

TEST(LoadPicture, RaisesForAMissingFileAndAnyPictureTheServiceCantGive) {
    TempDir dir;
    fixtures::WriteFile(dir / "a.gif", "GIF89a");
    FixedService service;
    SetPictureService(&service);
    service.answer = Pattern(3, 2);
    EXPECT_EQ(LoadPicture(dir / "a.gif")->Bits, service.answer.Bits);
    struct Case {
        std::string path;
        bool ok;
        StdPicture answer;
        int32_t error;
    } cases[] = {
        {dir / "none.gif", true, Pattern(1, 1), vbErrFileNotFound},
        {dir.Path(), true, Pattern(1, 1), vbErrFileNotFound},
        {dir / "a.gif", false, Pattern(1, 1), vbErrInvalidPicture},
        {dir / "a.gif", true, StdPicture{4, 4, std::vector<uint8_t>(60)}, vbErrInvalidPicture},
        {dir / "a.gif", true, StdPicture{}, vbErrInvalidPicture},
    };
    for (const Case& c : cases) {
        service.ok = c.ok;
        service.answer = c.answer;
        try {
            LoadPicture(c.path);
            ADD_FAILURE() << c.path;
        } catch (const RuntimeError& e) {
            EXPECT_EQ(e.Number, c.error) << c.path;
        }
    }
    SetPictureService(nullptr);
    EXPECT_THROW(LoadPicture(dir / "a.gif"), RuntimeError);
}
