#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "platform/Registry.h"

using fixtures::ReadFile;
using fixtures::RegistryHome;
using fixtures::WriteFile;

namespace {

// Opens (creating) a key of HKEY_CURRENT_USER with every right; fails the test otherwise.
HKEY Create(const std::string& path, HKEY root = HKEY_CURRENT_USER) {
    HKEY h = 0;
    EXPECT_EQ(RegCreateKeyExA(root, path, 0, "", 0, KEY_ALL_ACCESS, nullptr, &h, nullptr), ERROR_SUCCESS);
    return h;
}

LONG SetText(HKEY h, const std::string& name, const std::string& text, DWORD type = REG_SZ) {
    return RegSetValueExA(h, name, 0, type, text.c_str(), static_cast<DWORD>(text.size() + 1));
}

LONG SetBytes(HKEY h, const std::string& name, DWORD type, const std::string& bytes) {
    return RegSetValueExA(h, name, 0, type, bytes.data(), static_cast<DWORD>(bytes.size()));
}

// The type and bytes of a value, read with the two-step protocol.
LONG Query(HKEY root, const std::string& path, const std::string& name, DWORD& type, std::string& data) {
    HKEY h = 0;
    LONG r = RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE, &h);
    if (r != ERROR_SUCCESS) return r;
    DWORD size = 0;
    r = RegQueryValueExA(h, name, nullptr, &type, nullptr, &size);
    if (r == ERROR_SUCCESS) {
        data.assign(size, '\0');
        r = RegQueryValueExA(h, name, nullptr, &type, data.data(), &size);
    }
    RegCloseKey(h);
    return r;
}

std::string Dword(uint32_t v) {
    return std::string{static_cast<char>(v), static_cast<char>(v >> 8), static_cast<char>(v >> 16),
                       static_cast<char>(v >> 24)};
}

size_t FilesIn(const std::string& folder) {
    size_t n = 0;
    for ([[maybe_unused]] const auto& e : std::filesystem::directory_iterator(folder)) ++n;
    return n;
}

}  // namespace

TEST(RegistryHives, FilesFollowTheXdgVariables) {
    RegistryHome home;
    EXPECT_EQ(RegHiveFile(HKEY_CURRENT_USER), home.UserFile());
    EXPECT_EQ(RegHiveFile(HKEY_CLASSES_ROOT), home.ClassesFile());
    EXPECT_EQ(RegHiveFile(HKEY_LOCAL_MACHINE), home.MachineFile());
    // A relative entry is not valid and gives way to the next one.
    ::setenv("XDG_CONFIG_DIRS", ("relative:" + home.Folder() + "/other").c_str(), 1);
    EXPECT_EQ(RegHiveFile(HKEY_LOCAL_MACHINE), home.Folder() + "/other/quarrin/machine.reg");
    ::unsetenv("XDG_CONFIG_DIRS");
    EXPECT_EQ(RegHiveFile(HKEY_LOCAL_MACHINE), "/etc/xdg/quarrin/machine.reg");
    ::setenv("XDG_CONFIG_HOME", "", 1);
    const char* oldHome = std::getenv("HOME");
    const std::string savedHome = oldHome != nullptr ? oldHome : "";
    ::setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(RegHiveFile(HKEY_CURRENT_USER), "/home/someone/.config/quarrin/user.reg");
    if (oldHome != nullptr) {
        ::setenv("HOME", savedHome.c_str(), 1);
    } else {
        ::unsetenv("HOME");
    }
    EXPECT_EQ(RegHiveFile(HKEY_USERS), "");
}

TEST(RegistryHives, MissingFilesReadAsEmptyAndReadsCreateNothing) {
    RegistryHome home;
    HKEY h = 0;
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Corvane\\Quarrin", 0, KEY_QUERY_VALUE, &h),
              ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "Software", 0, KEY_QUERY_VALUE, &h), ERROR_FILE_NOT_FOUND);
    DWORD type = 0, size = 0;
    EXPECT_EQ(RegQueryValueExA(HKEY_CURRENT_USER, "x", nullptr, &type, nullptr, &size), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(std::filesystem::exists(home.ConfigHome()));
}

TEST(RegistryHives, ValuesOfEveryKindRoundTripThroughAReadableFile) {
    RegistryHome home;
    struct Row {
        const char* name;
        DWORD type;
        std::string data;
    };
    const Row rows[] = {
        {"PkzipPath", REG_SZ, std::string("C:\\Tools\\pkzip25.exe\0", 21)},
        {"Quote", REG_SZ, std::string("say \"hi\"\0", 9)},
        {"", REG_SZ, std::string("default\0", 8)},
        {"Count", REG_DWORD, Dword(42)},
        {"Bin", REG_BINARY, std::string("\x01\xff\x00", 3)},
        {"Exp", REG_EXPAND_SZ, std::string("%TEMP%\\x\0", 9)},
        {"Multi", REG_MULTI_SZ, std::string("a\0b\0\0", 5)},
        {"Wide", REG_QWORD, std::string(8, '\x11')},
        {"Lines", REG_SZ, std::string("two\r\nlines\0", 11)},
    };
    HKEY h = Create("Software\\Corvane\\Quarrin");
    for (const Row& row : rows) ASSERT_EQ(SetBytes(h, row.name, row.type, row.data), ERROR_SUCCESS) << row.name;
    RegCloseKey(h);

    EXPECT_EQ(ReadFile(home.UserFile()),
              "REGEDIT4\n"
              "\n[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]\n"
              "\"PkzipPath\"=\"C:\\\\Tools\\\\pkzip25.exe\"\n"
              "\"Quote\"=\"say \\\"hi\\\"\"\n"
              "@=\"default\"\n"
              "\"Count\"=dword:0000002a\n"
              "\"Bin\"=hex:01,ff,00\n"
              "\"Exp\"=hex(2):25,54,45,4d,50,25,5c,78,00\n"
              "\"Multi\"=hex(7):61,00,62,00,00\n"
              "\"Wide\"=hex(b):11,11,11,11,11,11,11,11\n"
              "\"Lines\"=hex(1):74,77,6f,0d,0a,6c,69,6e,65,73,00\n");

    // Read back from the file alone, in a fresh copy of the same text, under
    // names spelt in another case.
    RegistryHome other;
    other.WriteUser(ReadFile(home.UserFile()));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string upper = row.name;
        for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        DWORD type = 0;
        std::string data;
        ASSERT_EQ(Query(HKEY_CURRENT_USER, "software\\CORVANE\\quarrin", upper, type, data), ERROR_SUCCESS);
        EXPECT_EQ(type, row.type);
        EXPECT_EQ(data, row.data);
    }
}

TEST(RegistryHives, HandWrittenFilesAreReadLeniently) {
    RegistryHome home;
    home.WriteUser(
        "\xEF\xBB\xBFREGEDIT4\r\n"
        "; a person's note\r\n"
        "[HKCU\\Software\\A]\r\n"
        "  \"Spaced\" = \"value\"\r\n"
        "\"Cont\"=hex:01,02,\\\r\n"
        "  03,04\r\n"
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
    DWORD type = 0;
    std::string data;
    const std::pair<const char*, std::string> read[] = {
        {"Spaced", std::string("replaced\0", 9)}, {"Cont", "\x01\x02\x03\x04"}, {"Upper", Dword(0xFFFFFFFF)},
        {"Later", std::string("y\0", 2)}};
    for (const auto& [name, bytes] : read) {
        ASSERT_EQ(Query(HKEY_CURRENT_USER, "Software\\A", name, type, data), ERROR_SUCCESS) << name;
        EXPECT_EQ(data, bytes) << name;
    }
    for (const char* missing : {"Bad", "Broken", "Unclosed", "Lost"})
        EXPECT_EQ(Query(HKEY_CURRENT_USER, "Software\\A", missing, type, data), ERROR_FILE_NOT_FOUND) << missing;
    HKEY h = 0;
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Elsewhere", 0, KEY_READ, &h), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Gone", 0, KEY_READ, &h), ERROR_FILE_NOT_FOUND);
}

TEST(RegistryHives, NamesCompareWithoutCaseAndKeepTheirFirstSpelling) {
    RegistryHome home;
    HKEY h = Create("Software\\MixedCase");
    ASSERT_EQ(SetText(h, "Name", "1"), ERROR_SUCCESS);
    ASSERT_EQ(SetText(h, "NAME", "2"), ERROR_SUCCESS);
    RegCloseKey(h);
    HKEY again = Create("SOFTWARE\\mixedcase");
    RegCloseKey(again);
    const std::string text = ReadFile(home.UserFile());
    EXPECT_NE(text.find("[HKEY_CURRENT_USER\\Software\\MixedCase]\n\"Name\"=\"2\"\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("NAME"), std::string::npos);
}

TEST(RegistryHives, EmptyKeysAreKeptAndKeysWithOnlySubKeysAreImplied) {
    RegistryHome home;
    RegCloseKey(Create("Software\\Selvane\\Directory"));
    EXPECT_EQ(ReadFile(home.UserFile()), "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\Selvane\\Directory]\n");
    RegistryHome other;
    other.WriteUser(ReadFile(home.UserFile()));
    HKEY h = 0;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Selvane", 0, KEY_READ, &h), ERROR_SUCCESS);
    RegCloseKey(h);
}

TEST(RegistryHives, WritesReplaceTheFileAtomically) {
    RegistryHome home;
    RegCloseKey(Create("Software\\A"));
    struct stat before {};
    ASSERT_EQ(::stat(home.UserFile().c_str(), &before), 0);
    HKEY h = Create("Software\\A");
    ASSERT_EQ(SetText(h, "v", "x"), ERROR_SUCCESS);
    RegCloseKey(h);
    struct stat after {};
    ASSERT_EQ(::stat(home.UserFile().c_str(), &after), 0);
    // A new file took the old one's name: the old was never rewritten in place.
    EXPECT_NE(before.st_ino, after.st_ino);
    // No temporary file stays behind.
    EXPECT_EQ(FilesIn(home.ConfigHome() + "/quarrin"), 1u);
}

TEST(RegistryHives, AHiveFileThatIsALinkStaysALink) {
    RegistryHome home;
    fixtures::TempDir kept;
    WriteFile(kept / "user.reg", "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"old\"=\"1\"\n");
    std::filesystem::create_directories(home.ConfigHome() + "/quarrin");
    std::filesystem::create_symlink(kept / "user.reg", home.UserFile());
    HKEY h = Create("Software\\A");
    ASSERT_EQ(SetText(h, "new", "2"), ERROR_SUCCESS);
    RegCloseKey(h);
    EXPECT_TRUE(std::filesystem::is_symlink(home.UserFile()));
    EXPECT_NE(ReadFile(kept / "user.reg").find("\"new\"=\"2\""), std::string::npos);
    EXPECT_NE(ReadFile(kept / "user.reg").find("\"old\"=\"1\""), std::string::npos);
}

TEST(RegistryHives, AWriteThatCannotBeSavedFailsAndIsForgotten) {
    RegistryHome home;
    // A plain file where the hive's folder should be.
    std::filesystem::create_directories(home.ConfigHome());
    WriteFile(home.ConfigHome() + "/quarrin", "not a folder");
    HKEY h = 0;
    const LONG r = RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\A", 0, "", 0, KEY_ALL_ACCESS, nullptr, &h, nullptr);
    EXPECT_NE(r, ERROR_SUCCESS);
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\A", 0, KEY_READ, &h), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(ReadFile(home.ConfigHome() + "/quarrin"), "not a folder");
}

TEST(RegistryHives, AHiveThatCannotBeReadIsNeverReplaced) {
    RegistryHome home;
    std::filesystem::create_directories(home.UserFile());  // a folder in the file's place
    HKEY h = 0;
    EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\A", 0, "", 0, KEY_ALL_ACCESS, nullptr, &h, nullptr),
              ERROR_ACCESS_DENIED);
    EXPECT_EQ(SetText(HKEY_CURRENT_USER, "v", "x"), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(std::filesystem::is_directory(home.UserFile()));
}

TEST(RegistryHives, TheMachineHiveIsReadOnly) {
    RegistryHome home;
    const std::string text =
        "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Selvane\\Directory]\n\"Directory\"=\"/games/selvane/\"\n";
    home.WriteMachine(text);
    DWORD type = 0;
    std::string data;
    ASSERT_EQ(Query(HKEY_LOCAL_MACHINE, "Software\\Selvane\\Directory", "Directory", type, data), ERROR_SUCCESS);
    EXPECT_EQ(data, std::string("/games/selvane/\0", 16));

    HKEY h = 0;
    EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "Software\\Selvane\\Directory", 0, 63, &h), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, "Software\\New", 0, "", 0, KEY_READ, nullptr, &h, nullptr),
              ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, "Software\\Selvane", 0, "", 0, 63, nullptr, &h, nullptr),
              ERROR_ACCESS_DENIED);
    EXPECT_EQ(SetText(HKEY_LOCAL_MACHINE, "v", "x"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKeyA(HKEY_LOCAL_MACHINE, "Software\\Selvane\\Directory"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteValueA(HKEY_LOCAL_MACHINE, "v"), ERROR_ACCESS_DENIED);
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
    DWORD type = 0;
    std::string data;
    ASSERT_EQ(Query(HKEY_CURRENT_USER, "Software\\A", "v", type, data), ERROR_SUCCESS);
    EXPECT_EQ(data, std::string("edited by hand\0", 15));
    // A write keeps what the person added.
    ASSERT_EQ(SetText(h, "x", "3"), ERROR_SUCCESS);
    RegCloseKey(h);
    EXPECT_NE(ReadFile(home.UserFile()).find("\"w\"=\"new\""), std::string::npos);
}

TEST(RegistryCalls, QueryGivesSizesAndAsksForMoreRoom) {
    RegistryHome home;
    HKEY h = Create("Software\\A");
    ASSERT_EQ(SetText(h, "v", "hello"), ERROR_SUCCESS);
    DWORD type = 0, size = 0;
    EXPECT_EQ(RegQueryValueExA(h, "v", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(type, REG_SZ);
    EXPECT_EQ(size, 6u);
    char small[3] = {'#', '#', '#'};
    size = 3;
    EXPECT_EQ(RegQueryValueExA(h, "v", nullptr, &type, small, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(small[0], '#');
    EXPECT_EQ(RegQueryValueExA(h, "v", nullptr, &type, small, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueExA(h, "missing", nullptr, &type, nullptr, &size), ERROR_FILE_NOT_FOUND);
    RegCloseKey(h);
}

TEST(RegistryCalls, HandlesKeepTheirRights) {
    RegistryHome home;
    RegCloseKey(Create("Software\\A"));
    HKEY reader = 0, lister = 0;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\A", 0, KEY_QUERY_VALUE, &reader), ERROR_SUCCESS);
    EXPECT_EQ(SetText(reader, "v", "x"), ERROR_ACCESS_DENIED);
    char name[16];
    EXPECT_EQ(RegEnumKeyA(reader, 0, name, 16), ERROR_ACCESS_DENIED);
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\A", 0, KEY_ENUMERATE_SUB_KEYS, &lister), ERROR_SUCCESS);
    DWORD type = 0, size = 0;
    EXPECT_EQ(RegQueryValueExA(lister, "v", nullptr, &type, nullptr, &size), ERROR_ACCESS_DENIED);
    HKEY child = 0;
    EXPECT_EQ(RegCreateKeyExA(reader, "Child", 0, "", 0, KEY_READ, nullptr, &child, nullptr), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegCloseKey(reader), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(reader), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegCloseKey(lister), ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExA(12345, "v", nullptr, &type, nullptr, &size), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegOpenKeyExA(HKEY_USERS, "", 0, KEY_READ, &child), ERROR_INVALID_HANDLE);
}

TEST(RegistryCalls, KeysAreDeletedOnlyWithoutSubKeys) {
    RegistryHome home;
    HKEY leaf = Create("Software\\A\\B");
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\A"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\A\\Missing"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "software\\a\\b"), ERROR_SUCCESS);
    // The handle of a deleted key answers that its key is gone.
    EXPECT_EQ(SetText(leaf, "v", "x"), ERROR_KEY_DELETED);
    EXPECT_EQ(RegCloseKey(leaf), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, ""), ERROR_ACCESS_DENIED);
    EXPECT_EQ(ReadFile(home.UserFile()), "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n");

    HKEY h = Create("Software\\A");
    ASSERT_EQ(SetText(h, "one", "1"), ERROR_SUCCESS);
    ASSERT_EQ(SetText(h, "two", "2"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueA(h, "ONE"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueA(h, "one"), ERROR_FILE_NOT_FOUND);
    DWORD type = 0;
    std::string data;
    EXPECT_EQ(Query(HKEY_CURRENT_USER, "Software\\A", "two", type, data), ERROR_SUCCESS);
    RegCloseKey(h);
}

TEST(RegistryCalls, EnumerationListsKeysByNameAndValuesInOrder) {
    RegistryHome home;
    for (const char* k : {"zeta", "Alpha", "beta", "_under"}) RegCloseKey(Create(std::string("Software\\E\\") + k));
    HKEY h = Create("Software\\E");
    for (const char* v : {"second", "First", "a-much-longer-name"}) ASSERT_EQ(SetText(h, v, "abc"), ERROR_SUCCESS);
    ASSERT_EQ(SetBytes(h, "bin", REG_BINARY, std::string(10, 'x')), ERROR_SUCCESS);

    DWORD subkeys = 0, maxSub = 0, values = 0, maxName = 0, maxData = 0;
    ASSERT_EQ(RegQueryInfoKeyA(h, nullptr, nullptr, nullptr, &subkeys, &maxSub, nullptr, &values, &maxName, &maxData,
                               nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(subkeys, 4u);
    EXPECT_EQ(maxSub, 6u);
    EXPECT_EQ(values, 4u);
    EXPECT_EQ(maxName, 18u);
    EXPECT_EQ(maxData, 10u);

    std::vector<std::string> keys;
    char buf[64];
    DWORD i = 0;
    for (; RegEnumKeyA(h, i, buf, sizeof buf) == ERROR_SUCCESS; ++i) keys.emplace_back(buf);
    EXPECT_EQ(RegEnumKeyA(h, i, buf, sizeof buf), ERROR_NO_MORE_ITEMS);
    // Ordered by the upper-case form, where "_" stands after the letters.
    EXPECT_EQ(keys, (std::vector<std::string>{"Alpha", "beta", "zeta", "_under"}));
    EXPECT_EQ(RegEnumKeyA(h, 0, buf, 5), ERROR_MORE_DATA);

    std::vector<std::string> names;
    for (i = 0;; ++i) {
        DWORD size = sizeof buf;
        DWORD type = 0;
        if (RegEnumValueA(h, i, buf, &size, nullptr, &type, nullptr, nullptr) != ERROR_SUCCESS) break;
        EXPECT_EQ(size, std::string(buf).size());
        names.emplace_back(buf);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"second", "First", "a-much-longer-name", "bin"}));
    DWORD size = 18;  // no room for the terminating zero
    EXPECT_EQ(RegEnumValueA(h, 2, buf, &size, nullptr, nullptr, nullptr, nullptr), ERROR_MORE_DATA);
    size = sizeof buf;
    EXPECT_EQ(RegEnumValueA(h, 4, buf, &size, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS);
    RegCloseKey(h);
}

TEST(RegistryCalls, NamesThatAFileCouldNotHoldAreRefused) {
    RegistryHome home;
    HKEY h = 0;
    EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\two\nlines", 0, "", 0, 63, nullptr, &h, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, std::string(256, 'k'), 0, "", 0, 63, nullptr, &h, nullptr),
              ERROR_INVALID_PARAMETER);
    std::string deep;
    for (int i = 0; i < 513; ++i) deep += "k\\";
    EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, deep, 0, "", 0, 63, nullptr, &h, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SetText(HKEY_CURRENT_USER, "a\rb", "x"), ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(std::filesystem::exists(home.UserFile()));
}

TEST(RegistryCalls, EnvironmentReferencesExpand) {
    ::setenv("QUARRIN_TEST_DIR", "/srv/data", 1);
    ::unsetenv("QUARRIN_TEST_UNSET");
    auto expand = [](const std::string& s) {
        const DWORD n = ExpandEnvironmentStringsA(s.c_str(), nullptr, 0);
        std::string out(n, '\0');
        EXPECT_EQ(ExpandEnvironmentStringsA(s.c_str(), out.data(), n), n);
        out.resize(n - 1);
        return out;
    };
    EXPECT_EQ(expand("%QUARRIN_TEST_DIR%\\x"), "/srv/data\\x");
    EXPECT_EQ(expand("a%QUARRIN_TEST_UNSET%b%QUARRIN_TEST_DIR%"), "a%QUARRIN_TEST_UNSET%b/srv/data");
    EXPECT_EQ(expand("50%% and %"), "50%% and %");
    EXPECT_EQ(expand(""), "");
    char small[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(ExpandEnvironmentStringsA("%QUARRIN_TEST_DIR%", small, 4), 10u);
    EXPECT_EQ(small[0], '#');
}

TEST(RegistryText, ACanonicalTextReadsBackToItself) {
    const std::string messy =
        "REGEDIT4\n[HKCU\\b\\c]\n\"x\"=hex(2):41,00\n[hkey_current_user\\A]\n@=dword:1\n\"q\"=\"\\\\\\\"\"\n"
        "[HKEY_CURRENT_USER\\b]\n\"n\"=hex(0):\n";
    const std::string once = regtext::Canonical(messy, "HKEY_CURRENT_USER");
    EXPECT_EQ(once,
              "REGEDIT4\n"
              "\n[HKEY_CURRENT_USER\\A]\n@=dword:00000001\n\"q\"=\"\\\\\\\"\"\n"
              "\n[HKEY_CURRENT_USER\\b]\n\"n\"=hex(0):\n"
              "\n[HKEY_CURRENT_USER\\b\\c]\n\"x\"=hex(2):41,00\n");
    EXPECT_EQ(regtext::Canonical(once, "HKEY_CURRENT_USER"), once);
}
