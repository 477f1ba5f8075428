// quarrin-cli pak, run as a program.
#include <gtest/gtest.h>

#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/PakBuilder.h"
#include "pak/ZipWrapper.h"
#include "PakTestSupport.h"

namespace {

using fixtures::ReadFile;
using fixtures::TempDir;
using fixtures::WriteFile;

class PakCli : public ::testing::Test {
protected:
    void SetUp() override {
        if (!paktest::ToolBuilt("quarrin-cli")) GTEST_FAIL() << "quarrin-cli is not built in " << QUARRIN_TOOLS_DIR;
        builder.Imploded("maps\\north.map", std::string(5000, 'n'))
            .Stored("readme.txt", "plain")
            .Raw("zz.bin", "\x07\x08", 40);
        WriteFile(pak, builder.Build());
    }
    int Cli(const std::vector<std::string>& args) {
        std::vector<std::string> argv{paktest::ToolPath("quarrin-cli"), "pak"};
        argv.insert(argv.end(), args.begin(), args.end());
        return paktest::RunCapture(argv, tmp.Path(), output);
    }
    TempDir tmp;
    std::string pak = tmp / "t.pak";
    fixtures::PakBuilder builder;
    std::string output;
};

TEST_F(PakCli, ListGivesTheItemsInDirectoryOrder) {
    ASSERT_EQ(Cli({"list", pak}), 0) << output;
    const auto e = builder.Entries();
    const std::string expected =
        "maps\\north.map\t" + std::string(16 - std::to_string(e[0].PackedSize).size(), ' ') +
        std::to_string(e[0].PackedSize) + "\t            5000\tmap\t" + std::to_string(e[0].Offset) + "\n" +
        "readme.txt\t               5\t               5\ttxt\t" + std::to_string(e[1].Offset) + "\n" +
        "zz.bin\t               2\t              40\tbin\t" + std::to_string(e[2].Offset) + "\n";
    EXPECT_EQ(output, expected);
}

TEST_F(PakCli, SaveWritesWhatSaveAsWrites) {
    FillZipTemplates();
    ASSERT_EQ(Cli({"save", pak, "1", "north"}), 0) << output;
    EXPECT_EQ(output, "north.zip\n");
    std::filesystem::create_directories(tmp / "ref/maps");
    const auto e = builder.Entries()[0];
    ASSERT_TRUE(UnpakMember(tmp / "ref/", pak, e.Name, e.PackedSize, e.OriginalSize, e.Offset));
    EXPECT_EQ(ReadFile(tmp / "north.zip"), ReadFile(tmp / "ref/maps/north.map.zip"));

    ASSERT_EQ(Cli({"save", pak, "1", "north.dcl", "--bare"}), 0) << output;
    EXPECT_EQ(ReadFile(tmp / "north.dcl"), builder.Packed(0));

    // A stored member is its bytes under either choice; an older file is replaced.
    WriteFile(tmp / "readme.txt", "older and longer");
    ASSERT_EQ(Cli({"save", pak, "2", "readme.txt", "--bare"}), 0) << output;
    EXPECT_EQ(ReadFile(tmp / "readme.txt"), "plain");
}

TEST_F(PakCli, ErrorsGiveAMessageAndStatusOne) {
    WriteFile(tmp / "not.pak", "hello there, not a pak at all");
    fixtures::PakBuilder damaged;
    damaged.Stored("a", "abc").Offset(0, 1000000);
    WriteFile(tmp / "damaged.pak", damaged.Build());
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"list", tmp / "not.pak"}, "is not a PAK archive"},
        {{"list", tmp / "missing.pak"}, "cannot be opened"},
        {{"list", tmp.Path()}, "is a folder"},
        {{"list"}, "takes one PATH"},
        {{"save", pak, "4", "x"}, "there is no member 4"},
        {{"save", pak, "0", "x"}, "there is no member 0"},
        {{"save", pak, "one", "x"}, "INDEX must be"},
        {{"save", pak, "2", tmp / "no/such/folder/x"}, "could not be written"},
        {{"save", tmp / "damaged.pak", "1", "x"}, "beyond the end"},
        {{"unknown"}, "unknown pak command"},
        {{}, "usage"},
    };
    for (const auto& [args, message] : cases) {
        EXPECT_EQ(Cli(args), 1) << message;
        EXPECT_NE(output.find(message), std::string::npos) << output;
    }
    EXPECT_FALSE(std::filesystem::exists(tmp / "x"));
}

}  // namespace
