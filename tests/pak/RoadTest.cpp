// The whole road of a PAK: listed into the list view, each member cut out
// with UnpakMember, the command file written through the print channel, and
// the command-file runner calling the archiver on every wrapper.
#include <gtest/gtest.h>

#include <filesystem>

#include "controls/ListView.h"
#include "fixtures/ByteWriter.h"
#include "fixtures/PakBuilder.h"
#include "fixtures/ZipBuilder.h"
#include "identify/modGlobal.h"
#include "pak/BatchScript.h"
#include "pak/CPAKFile.h"
#include "pak/MemberPath.h"
#include "pak/ZipWrapper.h"
#include "PakTestSupport.h"
#include "platform/Runtime.h"

namespace {

using fixtures::ReadFile;
using fixtures::TempDir;
using fixtures::WriteFile;

std::string Pattern(size_t size, int seed) {
    std::string s(size, '\0');
    for (size_t i = 0; i < size; ++i) s[i] = static_cast<char>("ABCDEFGH  \r\n"[(i / (seed + 3) + i * seed) % 12]);
    return s;
}

TEST(Road, PakToUnpackedMembers) {
    if (!paktest::ToolBuilt("quarrin-runbat") || !paktest::ToolBuilt("quarrin-pkzip"))
        FAIL() << "quarrin-runbat and quarrin-pkzip must be built in " << QUARRIN_TOOLS_DIR;
    FillZipTemplates();
    TempDir tmp;
    std::filesystem::create_directories(tmp / "dest/data");
    const std::string dest = tmp.Path() + "/dest/";

    struct Original {
        std::string name;
        std::string bytes;
        bool implode;
    };
    const std::vector<Original> originals = {
        {"readme.txt", "stored as it stands\r\n", false},
        {"north map.msh", Pattern(200000, 1), true},
        {"data\\tiles.btm", Pattern(7000, 2), true},
        {"a&b;c.plt", Pattern(768, 3), true},
        {"quote\"d.seq", Pattern(3000, 4), true},
        {"empty.bin", "", false},
        {"data\\raw.bin", Pattern(999, 5), false},
    };
    std::vector<paktest::Member> members;
    for (const auto& o : originals) {
        if (o.implode)
            members.push_back({o.name, fixtures::Implode(o.bytes), static_cast<int32_t>(o.bytes.size())});
        else
            members.push_back({o.name, o.bytes});
    }
    const std::string pakPath = tmp / "game.pak";
    WriteFile(pakPath, paktest::BuildPak(members));

    ListView lv{"oListView"};
    CPAKFile pak;
    ASSERT_TRUE(pak.Initialize(pakPath, 0, &lv));
    pak.Show(0);
    ASSERT_EQ(lv.Count(), static_cast<int32_t>(originals.size()));

    g_sPkzipPath = paktest::ToolPath("quarrin-pkzip");
    ASSERT_TRUE(OpenPrintFile(dest + "_unpak_.bat"));
    ASSERT_TRUE(PrintToFile(BatchCdLine(dest)));
    for (const auto& item : lv.ItemsInAddOrder()) {
        const int32_t packed = VbCLng(item->SubItems(1));
        const int32_t original = VbCLng(item->SubItems(2));
        ASSERT_TRUE(UnpakMember(dest, pakPath, item->Text, packed, original, item->Tag)) << item->Text;
        if (packed != original) {
            PrintToFile(BatchExtractLine(g_bWin9x, g_sPkzipPath, item->Text));
            PrintToFile(BatchDelLine(item->Text));
        }
    }
    ASSERT_TRUE(ClosePrintFile());

    std::string output;
    EXPECT_EQ(paktest::RunCapture({paktest::ToolPath("quarrin-runbat"), dest + "_unpak_.bat"}, dest, output), 0)
        << output;
    for (const auto& o : originals) {
        std::string path = dest + o.name;
        for (char& c : path)
            if (c == '\\') c = '/';
        ASSERT_TRUE(std::filesystem::exists(path)) << o.name << "\n" << output;
        EXPECT_EQ(ReadFile(path), o.bytes) << o.name;
        EXPECT_FALSE(std::filesystem::exists(path + ".zip")) << o.name;
    }
    // Nothing else is left: the members, the folder and the command file.
    size_t files = 0;
    for (const auto& e : std::filesystem::recursive_directory_iterator(tmp / "dest"))
        if (e.is_regular_file()) ++files;
    EXPECT_EQ(files, originals.size() + 1);
}

}  // namespace

namespace {

// Every hostile name down the whole road: whatever UnpakMember, the runner
// and the archiver make of it, nothing lands outside the destination.
TEST(Road, HostileNamesNeverLeaveTheDestination) {
    if (!paktest::ToolBuilt("quarrin-runbat") || !paktest::ToolBuilt("quarrin-pkzip"))
        FAIL() << "quarrin-runbat and quarrin-pkzip must be built in " << QUARRIN_TOOLS_DIR;
    FillZipTemplates();
    const std::string data = Pattern(5000, 6);
    for (const std::string& name : fixtures::HostileNames()) {
        for (bool imploded : {false, true}) {
            TempDir sandbox;
            std::filesystem::create_directories(sandbox / "dest/data");
            const std::string dest = sandbox.Path() + "/dest/";
            fixtures::PakBuilder builder;
            if (imploded)
                builder.Imploded(name, data);
            else
                builder.Stored(name, data);
            const std::string pakPath = sandbox / "game.pak";
            WriteFile(pakPath, builder.Build());
            const fixtures::PakEntry e = builder.Entries()[0];
            const bool written = UnpakMember(dest, pakPath, name, e.PackedSize, e.OriginalSize, e.Offset);
            EXPECT_EQ(written, IsSafeMemberName(name) && name.find('\\') == std::string::npos)
                << "name '" << PrintableLine(name) << "'";
            std::string script = BatchCdLine(dest) + "\r\n";
            script += BatchExtractLine(false, paktest::ToolPath("quarrin-pkzip"), name) + "\r\n";
            script += BatchDelLine(name) + "\r\n";
            WriteFile(dest + "_unpak_.bat", script);
            std::string output;
            paktest::RunCapture({paktest::ToolPath("quarrin-runbat"), dest + "_unpak_.bat"}, dest, output);

            for (const auto& entry : std::filesystem::recursive_directory_iterator(sandbox.Path())) {
                const std::string p = entry.path().string();
                EXPECT_TRUE(p == pakPath || p.rfind(sandbox.Path() + "/dest", 0) == 0)
                    << PrintableLine(p) << " from '" << PrintableLine(name) << "'";
            }
            // A line end inside a name splits its command lines, which the
            // runner then doesn't understand: that wrapper stays as it is.
            if (written && !(imploded && name.find("\r\n") != std::string::npos)) {
                EXPECT_EQ(ReadFile(MemberPath(dest, name)), data) << PrintableLine(name) << "\n" << output;
                EXPECT_FALSE(std::filesystem::exists(MemberPath(dest, name) + ".zip"));
            }
        }
    }
}

}  // namespace
