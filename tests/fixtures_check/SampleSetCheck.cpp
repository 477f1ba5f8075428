// The sample set holds one valid file of every kind, the same bytes on every
// run, and the program writes exactly that set into the folder it is given.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "fixtures/GameFiles.h"
#include "fixtures/PakBuilder.h"
#include "fixtures/SampleSet.h"
#include "fixtures_check/CheckSupport.h"

using namespace fixtures;

namespace {

std::string Extension(const std::string& name) {
    const size_t dot = name.rfind('.');
    return dot == std::string::npos ? std::string() : name.substr(dot + 1);
}

std::map<std::string, std::string> ByName(const std::vector<SampleFile>& files) {
    std::map<std::string, std::string> m;
    for (const auto& f : files) m[f.Name] = f.Bytes;
    return m;
}

}  // namespace

TEST(SampleSet, EveryGameTypeHasASignedSampleWithItsExtension) {
    const auto files = SampleFiles();
    for (const GameType& t : kGameTypes) {
        SCOPED_TRACE(t.Extension);
        const auto found = std::find_if(files.begin(), files.end(),
                                        [&](const SampleFile& f) { return Extension(f.Name) == t.Extension; });
        ASSERT_NE(found, files.end());
        EXPECT_EQ(found->Bytes.substr(0, 8), GameHead(t.Id));
        EXPECT_GT(found->Bytes.size(), 8u);
    }
    const auto m = ByName(files);
    ASSERT_TRUE(m.count("unknown.dat"));
    const uint32_t unknownId = check::U32At(m.at("unknown.dat"), 4);
    EXPECT_EQ(check::U32At(m.at("unknown.dat"), 0), kGameSignature);
    EXPECT_TRUE(std::none_of(kGameTypes.begin(), kGameTypes.end(), [&](const GameType& t) { return t.Id == unknownId; }));
    ASSERT_TRUE(m.count("foreign.bin"));
    const std::string& foreign = m.at("foreign.bin");
    EXPECT_NE(check::U32At(foreign, 0), kGameSignature);
    // Nor does it start like a picture: not "BM", "GIF", 0xFF 0xD8, and no
    // TGA head (its first byte, the id length, is not 0).
    EXPECT_NE(foreign.substr(0, 2), "BM");
    EXPECT_NE(foreign.substr(0, 3), "GIF");
    EXPECT_NE(static_cast<uint8_t>(foreign[0]), 0xFF);
    EXPECT_NE(foreign[0], 0);
}

TEST(SampleSet, NamesAreUniqueAndTheBytesTheSameOnEveryCall) {
    const auto first = SampleFiles();
    const auto second = SampleFiles();
    ASSERT_EQ(first.size(), second.size());
    for (size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].Name, second[i].Name);
        EXPECT_TRUE(first[i].Bytes == second[i].Bytes) << first[i].Name;
    }
    EXPECT_EQ(ByName(first).size(), first.size());
}

TEST(SampleSet, ThePakHoldsStoredAndImplodedMembersAndOneInAFolder) {
    const auto m = ByName(SampleFiles());
    const std::string& pak = m.at("sample.pak");
    const auto members = SamplePakMembers();
    check::Cursor c(pak, 16);
    ASSERT_EQ(c.I32(), static_cast<int32_t>(members.size()));
    size_t imploded = 0, stored = 0, inFolders = 0;
    for (const SampleMember& member : members) {
        SCOPED_TRACE(member.Name);
        const int32_t length = c.I32();
        ASSERT_EQ(c.Take(static_cast<size_t>(length)), member.Name);
        const int32_t offset = c.I32(), packed = c.I32(), original = c.I32();
        ASSERT_LE(static_cast<size_t>(offset) + static_cast<size_t>(packed), pak.size());
        const std::string bytes = pak.substr(static_cast<size_t>(offset), static_cast<size_t>(packed));
        EXPECT_EQ(original, static_cast<int32_t>(member.Original.size()));
        if (member.Imploded) {
            ++imploded;
            EXPECT_NE(packed, original);
            EXPECT_EQ(Explode(bytes, static_cast<size_t>(original)), member.Original);
        } else {
            ++stored;
            EXPECT_EQ(bytes, member.Original);
        }
        if (member.Name.find('\\') != std::string::npos) ++inFolders;
        // Sample names are plain relative paths.
        EXPECT_EQ(member.Name.find(".."), std::string::npos);
        EXPECT_EQ(member.Name.find(':'), std::string::npos);
        EXPECT_NE(member.Name.front(), '\\');
    }
    EXPECT_GE(imploded, 3u);
    EXPECT_GE(stored, 2u);
    EXPECT_EQ(inFolders, 1u);
}

TEST(SampleSet, OneTextFileOfEachTextExtensionInLinesEndedByCrLf) {
    const auto m = ByName(SampleFiles());
    for (const char* ext : {"bat", "map", "til", "txt", "acts", "cam", "mvlst"}) {
        SCOPED_TRACE(ext);
        const auto found = std::find_if(m.begin(), m.end(), [&](const auto& f) { return Extension(f.first) == ext; });
        ASSERT_NE(found, m.end());
        const std::string& text = found->second;
        ASSERT_GE(text.size(), 2u);
        EXPECT_EQ(text.substr(text.size() - 2), "\r\n");
        for (size_t i = 0; i < text.size(); ++i) {
            const auto ch = static_cast<unsigned char>(text[i]);
            if (ch == '\n') {
                EXPECT_EQ(text[i - 1], '\r') << "at " << i;
            }
            EXPECT_TRUE(ch == '\r' || ch == '\n' || (ch >= 32 && ch < 127)) << "at " << i;
        }
        EXPECT_NE(text.substr(0, 2), "BM");
        EXPECT_NE(text.substr(0, 3), "GIF");
    }
}

TEST(SampleSet, ThePicturesAreReadByImageMagick) {
    REQUIRE_IMAGEMAGICK();
    const auto m = ByName(SampleFiles());
    TempDir dir;
    const std::map<std::string, std::string> expected = {
        {"gradient.tga", "TGA 160 120"},  {"grey.tga", "TGA 128 96"},     {"bars.bmp", "BMP3 160 120"},
        {"palette8.bmp", "BMP3 160 120"}, {"gradient.gif", "GIF 200 150"}, {"photo.jpg", "JPEG 240 180"},
        {"bars-grey.jpg", "JPEG 160 120"},
    };
    for (const auto& [name, identity] : expected) {
        WriteFile(dir / name, m.at(name));
        EXPECT_EQ(check::Identify(dir / name), identity) << name;
    }
}

TEST(SampleSet, TheProgramWritesTheSetIntoAFolderThatItCreates) {
    const std::string program = std::string(QUARRIN_TOOLS_DIR) + "/quarrin-samples";
    if (access(program.c_str(), X_OK) != 0) GTEST_SKIP() << "quarrin-samples is not built";
    TempDir dir;
    const std::string folder = dir / "a/b/samples";
    ASSERT_EQ(RunAndCapture({program, folder}).Status, 0);
    const auto files = SampleFiles();
    size_t written = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        (void)entry;
        ++written;
    }
    EXPECT_EQ(written, files.size());
    for (const auto& f : files) EXPECT_TRUE(ReadFile(folder + "/" + f.Name) == f.Bytes) << f.Name;

    EXPECT_EQ(RunAndCapture({program}).Status, 2);
    WriteFile(dir / "file", "x");
    EXPECT_NE(RunAndCapture({program, dir / "file/inside"}).Status, 0) << "a folder below a file cannot be made";
}
