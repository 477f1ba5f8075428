#pragma once
// A main window over a folder that holds a file of every kind, driven as the
// user drives it.
#include <gtest/gtest.h>

#include "fixtures/ByteWriter.h"
#include "samples/GameFiles.h"
#include "samples/MeshBuilder.h"
#include "samples/PakBuilder.h"
#include "fixtures/PictureBuilder.h"
#include "samples/PlanarBuilder.h"
#include "platform/Picture.h"
#include "shell/frmMain.h"

// The front end's picture decoder, played by the test: every file decodes to
// a 12 x 7 pattern of 0x00RRGGBB values, or fails.
class PatternLoader : public IPictureLoader {
public:
    PatternLoader() : previous_(GetPictureLoader()) { SetPictureLoader(this); }
    ~PatternLoader() override { SetPictureLoader(previous_); }
    bool Load(const std::string&, int32_t& width, int32_t& height, std::vector<uint32_t>& pixels) override {
        width = 12;
        height = 7;
        for (int32_t i = 0; i < 84; ++i) pixels.push_back(uint32_t(i % 12 * 20) << 16 | uint32_t(i / 12 * 30) << 8 | 0x40);
        return Decodes;
    }
    bool Decodes = true;

private:
    IPictureLoader* previous_;
};

class Browser : public ::testing::Test {
protected:
    void SetUp() override {
        const std::string tile = fixtures::GameFile(fixtures::kIdFlatTile, std::string(24, '\1'));
        for (const char* name : {"tile.ftl", "game.txt", "signed.wav"}) Add(name, tile);
        Add("notes.txt", "first line\r\nsecond line\r\n");
        Add("level.MvLst", "a\r\n");
        Add("plain.dat", "just some bytes");
        Add("cube.msh", fixtures::BuildMesh(fixtures::CubeMesh(fixtures::MeshKind::Msh)));
        Add("cube.amh", fixtures::BuildMesh(fixtures::CubeMesh(fixtures::MeshKind::Amh)));
        fixtures::MeshSpec mixed = fixtures::CubeMesh(fixtures::MeshKind::Msh);
        mixed.KindId = fixtures::kAmhKindId;
        Add("mixed.msh", fixtures::BuildMesh(mixed));
        fixtures::PakBuilder pak;
        pak.Stored("b.txt", "hello").Imploded("a\\c.bin", std::string(4000, 'z')).Stored("n", "");
        Add("data.pak", pak.Build());
        Add("six.btm", fixtures::GradientBtm(6, 4));
        Add("rainbow.plt", fixtures::PaletteFile(fixtures::RainbowPalette()));
        const fixtures::RgbImage image = fixtures::GradientImage(12, 7);
        Add("bars.bmp", fixtures::BuildBmp24(image));
        Add("grad.gif", fixtures::BuildGif(fixtures::Quantise332(image)));
    }
    void Add(const std::string& name, const std::string& bytes) { fixtures::WriteFile(dir / name, bytes); }
    // Lists the folder anew and selects a file, which raises the click.
    void Select(const std::string& name) {
        form.oDir.SetPath(dir.Path());
        form.oFile.Refresh();
        ASSERT_TRUE(form.oFile.Select(name)) << name;
    }
    void Preview(const std::string& name) {
        Select(name);
        form.oFile_DblClick();
    }
    std::string Panel(int32_t i) { return form.oStatusBar.Panels(i).Text; }
    std::string Report(size_t length) { return form.tReport.Text().substr(0, length); }
    // The colour that a rainbow palette's index shows.
    static uint32_t Rainbow(int32_t index) { return fixtures::RainbowPalette()[index][2] & 0xFFFFFF; }
    // The last pixel of the loader's pattern, as a colour word.
    static constexpr uint32_t kPatternCorner = fixtures::ColorWord(220, 180, 0x40);

    fixtures::TempDir dir;
    PatternLoader loader;
    frmMain form;
};
