#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "platform/Registry.h"

using fixtures::ReadFile;
using fixtures::RegistryHome;
using fixtures::WriteFile;

namespace {

// Opens (creating) a key of HKEY_CURRENT_USER with every right; fails the test otherwise.
HKEY Create(const std::string& path) {
    HKEY h = 0;
    EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, "", 0, KEY_ALL_ACCESS, nullptr, &h, nullptr), ERROR_SUCCESS);
    return h;
}

std::string Sz(const std::string& text) { return std::string(text.c_str(), text.size() + 1); }

LONG SetBytes(HKEY h, const std::string& name, DWORD type, const std::string& bytes) {
    return RegSetValueExA(h, name, 0, type, bytes.data(), static_cast<DWORD>(bytes.size()));
}

LONG SetText(HKEY h, const std::string& name, const std::string& text) { return SetBytes(h, name, REG_SZ, Sz(text)); }

// Sets a value in a key of HKEY_CURRENT_USER that is opened (created) for it alone.
LONG Put(const std::string& path, const std::string& name, const std::string& bytes, DWORD type = REG_SZ) {
    HKEY h = 0;
    LONG r = RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, "", 0, KEY_ALL_ACCESS, nullptr, &h, nullptr);
    if (r == ERROR_SUCCESS) {
        r = SetBytes(h, name, type, bytes);
        RegCloseKey(h);
    }
    return r;
}

// The bytes of a value as the registry now holds them, read with the
// two-step protocol, and its type.
std::string Query(const std::string& path, const std::string& name, HKEY root = HKEY_CURRENT_USER,
                  DWORD* type = nullptr) {
    HKEY h = 0;
    if (RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE, &h) != ERROR_SUCCESS) return "<no key>";
    DWORD size = 0;
    std::string data = "<no value>";
    if (RegQueryValueExA(h, name, nullptr, type, nullptr, &size) == ERROR_SUCCESS) {
        data.assign(size, '\0');
        RegQueryValueExA(h, name, nullptr, type, data.data(), &size);
    }
    RegCloseKey(h);
    return data;
}

}  // namespace

TEST(RegistryHives, FilesFollowTheXdgVariablesAndMissingOnesReadAsEmpty) {
    RegistryHome home;
    // Reads create nothing.
    EXPECT_EQ(Query("Software\\Corvane\\Quarrin", ""), "<no key>");
    EXPECT_EQ(Query("", "x"), "<no value>");
    EXPECT_FALSE(std::filesystem::exists(home.ConfigHome()));
    // A relative entry is not valid and gives way to the next one.
    ::setenv("XDG_CONFIG_DIRS", ("relative:" + home.Folder() + "/other").c_str(), 1);
    EXPECT_EQ(RegHiveFile(HKEY_LOCAL_MACHINE), home.Folder() + "/other/quarrin/machine.reg");
    ::unsetenv("XDG_CONFIG_DIRS");
    EXPECT_EQ(RegHiveFile(HKEY_LOCAL_MACHINE), "/etc/xdg/quarrin/machine.reg");
    ::setenv("XDG_CONFIG_HOME", "", 1);
    const std::string savedHome = std::getenv("HOME") != nullptr ? std::getenv("HOME") : "";
    ::setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(RegHiveFile(HKEY_CURRENT_USER), "/home/someone/.config/quarrin/user.reg");
    ::setenv("HOME", savedHome.c_str(), 1);
}

TEST(RegistryHives, ValuesOfEveryKindRoundTripThroughAReadableFile) {
    RegistryHome home;
    const std::tuple<const char*, DWORD, std::string> rows[] = {
        {"PkzipPath", REG_SZ, std::string("C:\\Tools\\pkzip25.exe\0", 21)},
        {"Quote", REG_SZ, std::string("say \"hi\"\0", 9)},
        {"Count", REG_DWORD, std::string("*\0\0\0", 4)},
        {"Bin", REG_BINARY, std::string("\x01\xff\x00", 3)},
        {"Exp", REG_EXPAND_SZ, std::string("%TEMP%\\x\0", 9)},
        {"Lines", REG_SZ, std::string("two\r\nlines\0", 11)},
    };
    HKEY h = Create("Software\\Corvane\\Quarrin");
    for (const auto& [name, type, data] : rows) ASSERT_EQ(SetBytes(h, name, type, data), ERROR_SUCCESS) << name;
    RegCloseKey(h);

    EXPECT_EQ(ReadFile(home.UserFile()),
              "REGEDIT4\n"
              "\n[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]\n"
              "\"PkzipPath\"=\"C:\\\\Tools\\\\pkzip25.exe\"\n"
              "\"Quote\"=\"say \\\"hi\\\"\"\n"
              "\"Count\"=dword:0000002a\n"
              "\"Bin\"=hex:01,ff,00\n"
              "\"Exp\"=hex(2):25,54,45,4d,50,25,5c,78,00\n"
              "\"Lines\"=hex(1):74,77,6f,0d,0a,6c,69,6e,65,73,00\n");

    // Read back from the file alone, in a fresh copy of the same text.
    RegistryHome other;
    other.WriteUser(ReadFile(home.UserFile()));
    for (const auto& [name, type, data] : rows) {
        DWORD stored = 0;
        EXPECT_EQ(Query("software\\CORVANE\\quarrin", name, HKEY_CURRENT_USER, &stored), data) << name;
        EXPECT_EQ(stored, type) << name;
    }
}

TEST(RegistryHives, HandWrittenFilesAreReadLeniently) {
    RegistryHome home;
    home.WriteUser(
        "REGEDIT4\r\n"
        "[HKEY_CURRENT_USER\\Software\\A]\r\n"
        "  \"Spaced\" = \"value\"\r\n"
        "\"Upper\"=DWORD:FFFFFFFF\r\n"
        "\"Bad\"=dword:123456789\r\n"
        "\"Broken\"=hex:zz\r\n"
        "\"Unclosed\"=\"text\r\n"
        "garbage line\r\n"
        "[HKEY_LOCAL_MACHINE\\Software\\Elsewhere]\r\n"
        "\"Lost\"=\"x\"\r\n"
        "[-HKEY_CURRENT_USER\\Software\\Gone]\r\n"
        "[HKEY_CURRENT_USER\\Software\\A]\r\n"
        "\"Later\"=\"y\"\r\n"
        "\"spaced\"=\"replaced\"\r\n");
    const std::pair<const char*, std::string> read[] = {
        {"Spaced", Sz("replaced")}, {"Upper", std::string(4, '\xff')}, {"Later", Sz("y")},
        {"Bad", "<no value>"},      {"Broken", "<no value>"},    {"Unclosed", "<no value>"}};
    for (const auto& [name, bytes] : read) EXPECT_EQ(Query("Software\\A", name), bytes) << name;
    EXPECT_EQ(Query("Software\\Elsewhere", "Lost"), "<no key>");
    EXPECT_EQ(Query("Software\\Gone", ""), "<no key>");
    // A key that only holds other keys is there without a section of its own.
    EXPECT_EQ(Query("Software", ""), "<no value>");
}

TEST(RegistryHives, WritesReplaceTheFileAtomically) {
    RegistryHome home;
    RegCloseKey(Create("Software\\A"));
    struct stat before {};
    ASSERT_EQ(::stat(home.UserFile().c_str(), &before), 0);
    ASSERT_EQ(Put("Software\\A", "v", Sz("x")), ERROR_SUCCESS);
    struct stat after {};
    ASSERT_EQ(::stat(home.UserFile().c_str(), &after), 0);
    // A new file took the old one's name: the old was never rewritten in place.
    EXPECT_NE(before.st_ino, after.st_ino);
    // No temporary file stays behind.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home.ConfigHome() + "/quarrin"), {}), 1);
}

TEST(RegistryHives, AHiveFileThatIsALinkStaysALink) {
    RegistryHome home;
    fixtures::TempDir kept;
    WriteFile(kept / "user.reg", "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"old\"=\"1\"\n");
    std::filesystem::create_directories(home.ConfigHome() + "/quarrin");
    std::filesystem::create_symlink(kept / "user.reg", home.UserFile());
    ASSERT_EQ(Put("Software\\A", "new", Sz("2")), ERROR_SUCCESS);
    EXPECT_TRUE(std::filesystem::is_symlink(home.UserFile()));
    EXPECT_NE(ReadFile(kept / "user.reg").find("\"new\"=\"2\""), std::string::npos);
    EXPECT_NE(ReadFile(kept / "user.reg").find("\"old\"=\"1\""), std::string::npos);
}

TEST(RegistryHives, AWriteThatCannotBeSavedFailsAndIsForgotten) {
    RegistryHome home;
    // A plain file where the hive's folder should be.
    std::filesystem::create_directories(home.ConfigHome());
    WriteFile(home.ConfigHome() + "/quarrin", "not a folder");
    EXPECT_NE(Put("Software\\A", "v", Sz("x")), ERROR_SUCCESS);
    EXPECT_EQ(Query("Software\\A", "v"), "<no key>");
    EXPECT_EQ(ReadFile(home.ConfigHome() + "/quarrin"), "not a folder");
}

TEST(RegistryHives, AHiveThatCannotBeReadIsNeverReplaced) {
    RegistryHome home;
    std::filesystem::create_directories(home.UserFile());  // a folder in the file's place
    EXPECT_EQ(Put("Software\\A", "v", Sz("x")), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(std::filesystem::is_directory(home.UserFile()));
}

TEST(RegistryHives, TheMachineHiveIsReadOnly) {
    RegistryHome home;
    const std::string text =
        "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Selvane\\Directory]\n\"Directory\"=\"/games/selvane/\"\n";
    home.WriteMachine(text);
    EXPECT_EQ(Query("Software\\Selvane\\Directory", "Directory", HKEY_LOCAL_MACHINE), Sz("/games/selvane/"));
    HKEY h = 0;
    EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "Software\\Selvane\\Directory", 0, 63, &h), ERROR_ACCESS_DENIED);
    // A missing key is not made, even for reading alone.
    EXPECT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, "Software\\New", 0, "", 0, KEY_READ, nullptr, &h, nullptr),
              ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKeyA(HKEY_LOCAL_MACHINE, "Software\\Selvane\\Directory"), ERROR_ACCESS_DENIED);
    // An existing key may still be opened by create when nothing is to be written.
    DWORD disposition = 0;
    ASSERT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, "Software\\Selvane", 0, "", 0, KEY_READ, nullptr, &h, &disposition),
              ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
    EXPECT_EQ(SetText(h, "v", "x"), ERROR_ACCESS_DENIED);
    RegCloseKey(h);
    EXPECT_EQ(ReadFile(home.MachineFile()), text);
}

TEST(RegistryHives, AFileChangedOnDiskIsReadAgain) {
    RegistryHome home;
    HKEY h = Create("Software\\A");
    ASSERT_EQ(SetText(h, "v", "first"), ERROR_SUCCESS);
    // A person edits the file while the key is open.
    home.WriteUser("REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"edited by hand\"\n\"w\"=\"new\"\n");
    EXPECT_EQ(Query("Software\\A", "v"), Sz("edited by hand"));
    // A write keeps what the person added.
    ASSERT_EQ(SetText(h, "x", "3"), ERROR_SUCCESS);
    RegCloseKey(h);
    EXPECT_NE(ReadFile(home.UserFile()).find("\"w\"=\"new\""), std::string::npos);
}

TEST(RegistryCalls, HandlesKeepTheirRights) {
    RegistryHome home;
    HKEY h = Create("Software\\A");
    ASSERT_EQ(SetText(h, "v", "hello"), ERROR_SUCCESS);
    RegCloseKey(h);
    HKEY reader = 0;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\A", 0, KEY_QUERY_VALUE, &reader), ERROR_SUCCESS);
    EXPECT_EQ(SetText(reader, "v", "x"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegCloseKey(reader), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(reader), ERROR_INVALID_HANDLE);
}

TEST(RegistryCalls, ADeletedKeysHandleAnswersThatItIsGone) {
    RegistryHome home;
    HKEY leaf = Create("Software\\A\\B");
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "software\\a\\b"), ERROR_SUCCESS);
    // The handle of a deleted key answers that its key is gone.
    EXPECT_EQ(SetText(leaf, "v", "x"), ERROR_KEY_DELETED);
    EXPECT_EQ(RegCloseKey(leaf), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, ""), ERROR_ACCESS_DENIED);
}

TEST(RegistryCalls, KeysAreListedByTheirUpperCaseNames) {
    RegistryHome home;
    for (const char* k : {"zeta", "Alpha", "beta", "_under"}) RegCloseKey(Create(std::string("Software\\E\\") + k));
    HKEY h = Create("Software\\E");
    std::vector<std::string> keys;
    char buf[64];
    for (DWORD i = 0; RegEnumKeyA(h, i, buf, sizeof buf) == ERROR_SUCCESS; ++i) keys.emplace_back(buf);
    // "_" stands after the letters.
    EXPECT_EQ(keys, (std::vector<std::string>{"Alpha", "beta", "zeta", "_under"}));
    RegCloseKey(h);
}

TEST(RegistryCalls, NamesThatAFileCouldNotHoldAreRefused) {
    RegistryHome home;
    std::string deep;
    for (int i = 0; i < 513; ++i) deep += "k\\";
    for (const std::string& path : {std::string("Software\\two\nlines"), std::string(256, 'k'), deep})
        EXPECT_EQ(Put(path, "v", Sz("x")), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SetText(HKEY_CURRENT_USER, "a\rb", "x"), ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(std::filesystem::exists(home.UserFile()));
}

TEST(RegistryCalls, EnvironmentReferencesExpandWhenTheVariableIsSet) {
    ::setenv("QUARRIN_TEST_DIR", "/srv/data", 1);
    ::unsetenv("QUARRIN_TEST_UNSET");
    const char* text = "a%QUARRIN_TEST_UNSET%b%QUARRIN_TEST_DIR%\\x";
    const std::string expanded = "a%QUARRIN_TEST_UNSET%b/srv/data\\x";
    char out[64];
    EXPECT_EQ(ExpandEnvironmentStringsA(text, out, sizeof out), expanded.size() + 1);
    EXPECT_EQ(out, expanded);
}

namespace {

struct WriteCase {
    const char* name;
    std::string before;
    std::function<LONG()> write;
    std::string after;
};

}  // namespace

TEST(RegistryFile, AWritePreservesTheRestOfTheFileByteForByte) {
    const WriteCase cases[] = {
        {"CR LF file: new lines take CR LF, a byte-order mark stays",
         "\xEF\xBB\xBFREGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\A]\r\n\"v\"=\"1\"\r\n",
         [] { return Put("Software\\B", "x", std::string("\x05\0\0\0", 4), REG_DWORD); },
         "\xEF\xBB\xBFREGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\A]\r\n\"v\"=\"1\"\r\n"
         "\r\n[HKEY_CURRENT_USER\\Software\\B]\r\n\"x\"=dword:00000005\r\n"},
        {"a value written over two lines in a CR LF file",
         "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\A]\r\n\"Blob\"=hex:00\r\n; after\r\n",
         [] { return Put("Software\\A", "Blob", std::string(30, 'Z'), REG_BINARY); },
         "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\A]\r\n"
         "\"Blob\"=hex:5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,5a,\\\r\n"
         "  5a,5a,5a,5a,5a,5a,5a,5a\r\n; after\r\n"},
        {"delete value: its continuation lines go too, a comment between stays",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"one\"=\"1\"\n; about two\n\"two\"=hex:01,\\\n  02\n"
         "\"three\"=\"3\"\n",
         [] {
             HKEY h = Create("Software\\A");
             const LONG r = RegDeleteValueA(h, "TWO");
             RegCloseKey(h);
             return r;
         },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"one\"=\"1\"\n; about two\n\"three\"=\"3\"\n"},
        {"delete key: its header with the blank line before it, and its values",
         "REGEDIT4\n; top\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n\n[HKEY_CURRENT_USER\\Software\\B]\n"
         "; inside B\n\"w\"=\"2\"\n\n[HKEY_CURRENT_USER\\Software\\C]\n",
         [] { return RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\B"); },
         "REGEDIT4\n; top\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n; inside B\n"
         "\n[HKEY_CURRENT_USER\\Software\\C]\n"},
        {"new key: a section at the end, with the stored spelling of its parents",
         "REGEDIT4\n; first start\n\n[HKEY_CURRENT_USER\\SOFTWARE\\Selvane]\n\"Directory\"=\"/games/\"\n",
         [] {
             HKEY h = 0;
             DWORD made = 0;
             RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Corvane\\Quarrin", 0, "", 0, KEY_READ, nullptr, &h, &made);
             RegCloseKey(h);
             return made == REG_CREATED_NEW_KEY ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
         },
         "REGEDIT4\n; first start\n\n[HKEY_CURRENT_USER\\SOFTWARE\\Selvane]\n\"Directory\"=\"/games/\"\n"
         "\n[HKEY_CURRENT_USER\\SOFTWARE\\Corvane\\Quarrin]\n"},
        {"new value in an existing key: at the end of its last section",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n\n[HKEY_CURRENT_USER\\Software\\B]\n\"x\"=\"2\"\n"
         "\n[HKCU\\software\\a]\n\"w\"=\"3\"\n\n; trailing comment\n",
         [] { return Put("Software\\A", "z", Sz("4")); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n\n[HKEY_CURRENT_USER\\Software\\B]\n\"x\"=\"2\"\n"
         "\n[HKCU\\software\\a]\n\"w\"=\"3\"\n\"z\"=\"4\"\n\n; trailing comment\n"},
        {"a value written twice: the line that counts is replaced, under its first spelling",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"old\"\n\"v\"=\"counts\"\n",
         [] { return Put("Software\\A", "V", Sz("new")); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"old\"\n\"v\"=\"new\"\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RegistryHome home;
        home.WriteUser(c.before);
        ASSERT_EQ(c.write(), ERROR_SUCCESS);
        EXPECT_EQ(ReadFile(home.UserFile()), c.after);
    }
}

TEST(RegistryFile, KeysDeeperThan512LevelsMakeAHiveDamaged) {
    // A key may have 512 names in its path below the root. A hive file with
    // a deeper key is damaged, and is treated as a file that can't be read:
    // it reads as empty, refuses every write and is never replaced.
    auto chain = [](int depth, const std::string& root = "HKEY_CURRENT_USER", const std::string& name = "k") {
        std::string header = "[" + root;
        for (int i = 0; i < depth; ++i) header += "\\" + name;
        return header + "]\n";
    };
    const std::pair<std::string, bool> rows[] = {
        {chain(512), false},
        {chain(513), true},
        {"[HKCU\\\\" + chain(512).substr(18), false},  // empty names between do not count
        {chain(1000000), true},
        {chain(513, "HKCU", std::string(300, 'n')), true},  // nor do names too long to read
        {chain(600, "HKEY_LOCAL_MACHINE"), false},
    };
    for (const auto& [section, damaged] : rows) {
        bool got = !damaged;
        regtext::Parse("REGEDIT4\n" + section, "HKEY_CURRENT_USER", &got);
        EXPECT_EQ(got, damaged) << section.size();
    }
    RegistryHome home;
    const std::string text = "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n" + chain(513);
    home.WriteUser(text);
    EXPECT_EQ(Query("Software\\A", "v"), "<no key>");
    EXPECT_EQ(Put("Software\\B", "v", Sz("x")), ERROR_ACCESS_DENIED);
    EXPECT_EQ(ReadFile(home.UserFile()), text);
    // The deepest key the registry allows is there to open and to write.
    home.WriteUser("REGEDIT4\n" + chain(512));
    std::string path;
    for (int i = 0; i < 512; ++i) path += "k\\";
    EXPECT_EQ(Put(path, "v", Sz("x")), ERROR_SUCCESS);
}

TEST(RegistryFile, AWriteThatWouldMakeTheFileTooLargeToReadIsRefused) {
    RegistryHome home;
    const std::string text = "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n";
    home.WriteUser(text);
    // A value whose name's length brings the file to 4 MiB, the most a hive
    // file may have; from a hundred letters on, each letter is one more byte.
    const std::string data(1325000, 'x');
    const regtext::Value hundred{std::string(100, 'n'), REG_BINARY, data};
    const size_t size = regtext::WithValue(text, "HKEY_CURRENT_USER", {"Software", "A"}, hundred).size();
    ASSERT_LT(size, 4u << 20);
    const std::string name(100 + (4u << 20) - size, 'n');
    EXPECT_EQ(Put("Software\\A", name + "n", data, REG_BINARY), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(ReadFile(home.UserFile()), text);
    EXPECT_EQ(Query("Software\\A", name + "n"), "<no value>");
    EXPECT_EQ(Put("Software\\A", name, data, REG_BINARY), ERROR_SUCCESS);
    EXPECT_EQ(ReadFile(home.UserFile()).size(), 4u << 20);
    EXPECT_EQ(Query("Software\\A", name), data);
}
