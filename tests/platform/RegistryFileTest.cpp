// What a write does to a hive file that a person keeps, and which hive files
// are refused as damaged.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "platform/Registry.h"

using fixtures::ReadFile;
using fixtures::RegistryHome;

namespace {

LONG Open(const std::string& path, HKEY& h) {
    return RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, "", 0, KEY_ALL_ACCESS, nullptr, &h, nullptr);
}

LONG SetBytes(const std::string& path, const std::string& name, DWORD type, const std::string& bytes) {
    HKEY h = 0;
    if (LONG r = Open(path, h); r != ERROR_SUCCESS) return r;
    const LONG r = RegSetValueExA(h, name, 0, type, bytes.data(), static_cast<DWORD>(bytes.size()));
    RegCloseKey(h);
    return r;
}

LONG SetText(const std::string& path, const std::string& name, const std::string& text) {
    return SetBytes(path, name, REG_SZ, std::string(text.c_str(), text.size() + 1));
}

LONG CreateKey(const std::string& path) {
    HKEY h = 0;
    DWORD disposition = 0;
    const LONG r = RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, "", 0, KEY_ALL_ACCESS, nullptr, &h, &disposition);
    if (r != ERROR_SUCCESS) return r;
    RegCloseKey(h);
    return disposition == REG_CREATED_NEW_KEY ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
}

LONG DeleteValue(const std::string& path, const std::string& name) {
    HKEY h = 0;
    if (LONG r = RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, KEY_ALL_ACCESS, &h); r != ERROR_SUCCESS) return r;
    const LONG r = RegDeleteValueA(h, name);
    RegCloseKey(h);
    return r;
}

// The bytes of a value as the registry in memory now holds them.
std::string Query(const std::string& path, const std::string& name) {
    HKEY h = 0;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, KEY_QUERY_VALUE, &h) != ERROR_SUCCESS) return "<no key>";
    DWORD type = 0, size = 0;
    std::string data;
    if (RegQueryValueExA(h, name, nullptr, &type, nullptr, &size) == ERROR_SUCCESS) {
        data.assign(size, '\0');
        RegQueryValueExA(h, name, nullptr, &type, data.data(), &size);
    } else {
        data = "<no value>";
    }
    RegCloseKey(h);
    return data;
}

std::string Sz(const std::string& text) { return std::string(text.c_str(), text.size() + 1); }

std::string Bytes(int count) {
    std::string out;
    for (int i = 0; i < count; ++i) out += static_cast<char>(i);
    return out;
}

struct WriteCase {
    const char* name;
    std::string before;
    std::function<LONG()> write;
    std::string after;
    // What the registry reads back: key, value and bytes, when there is one.
    const char* key = nullptr;
    const char* value = nullptr;
    std::string bytes;
};

}  // namespace

TEST(RegistryFile, AWritePreservesTheRestOfTheFileByteForByte) {
    const std::string quarrin = "[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]";
    const WriteCase cases[] = {
        {"comments: a value set replaces its own line only",
         "REGEDIT4\n; Quarrin's settings, kept by hand\n\n" + quarrin +
             "\n; where the archiver lies\n\"PkzipPath\"=\"/opt/pkzip25.exe\"\n; the end\n",
         [] { return SetText("Software\\Corvane\\Quarrin", "PkzipPath", "/usr/bin/pkzip"); },
         "REGEDIT4\n; Quarrin's settings, kept by hand\n\n" + quarrin +
             "\n; where the archiver lies\n\"PkzipPath\"=\"/usr/bin/pkzip\"\n; the end\n",
         "Software\\Corvane\\Quarrin", "PkzipPath", Sz("/usr/bin/pkzip")},
        {"unreadable lines stay, and a new value goes behind them",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"Bad\"=dword:123456789\ngarbage line\n\"Unclosed\"=\"text\n"
         "[unclosed header\n\n[HKEY_CURRENT_USER\\Software\\B]\n\"x\"=\"1\"\n",
         [] { return SetText("Software\\B", "New", "n"); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"Bad\"=dword:123456789\ngarbage line\n\"Unclosed\"=\"text\n"
         "[unclosed header\n\n[HKEY_CURRENT_USER\\Software\\B]\n\"x\"=\"1\"\n\"New\"=\"n\"\n",
         "Software\\B", "New", Sz("n")},
        {"a section of another root stays, with its value of the same name",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n\n[HKEY_LOCAL_MACHINE\\Software\\A]\n"
         "\"v\"=\"machine\"\n[-HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"removed\"\n",
         [] { return SetText("Software\\A", "v", "2"); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"2\"\n\n[HKEY_LOCAL_MACHINE\\Software\\A]\n"
         "\"v\"=\"machine\"\n[-HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"removed\"\n",
         "Software\\A", "v", Sz("2")},
        {"CR LF file: new lines take CR LF, a byte-order mark stays",
         "\xEF\xBB\xBFREGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\A]\r\n\"v\"=\"1\"\r\n",
         [] { return SetBytes("Software\\B", "x", REG_DWORD, std::string("\x05\0\0\0", 4)); },
         "\xEF\xBB\xBFREGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\A]\r\n\"v\"=\"1\"\r\n"
         "\r\n[HKEY_CURRENT_USER\\Software\\B]\r\n\"x\"=dword:00000005\r\n",
         "Software\\B", "x", std::string("\x05\0\0\0", 4)},
        {"LF file: new lines take LF",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n",
         [] { return SetText("Software\\A", "w", "2"); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n\"w\"=\"2\"\n", "Software\\A", "w", Sz("2")},
        {"hex continuation lines are all the value's lines",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"Blob\"=hex:00,01,02,\\\n  03,04,\\\n  05\n\"After\"=\"kept\"\n",
         [] { return SetBytes("Software\\A", "Blob", REG_DWORD, std::string("\x2a\0\0\0", 4)); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"Blob\"=dword:0000002a\n\"After\"=\"kept\"\n",
         "Software\\A", "Blob", std::string("\x2a\0\0\0", 4)},
        {"a value written over two lines in a CR LF file",
         "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\A]\r\n\"Blob\"=hex:00\r\n; after\r\n",
         [] { return SetBytes("Software\\A", "Blob", REG_BINARY, Bytes(30)); },
         "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\A]\r\n"
         "\"Blob\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,15,\\\r\n"
         "  16,17,18,19,1a,1b,1c,1d\r\n; after\r\n",
         "Software\\A", "Blob", Bytes(30)},
        {"delete value: its continuation lines go too, a comment between stays",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"one\"=\"1\"\n; about two\n\"two\"=hex:01,\\\n  02\n"
         "\"three\"=\"3\"\n",
         [] { return DeleteValue("Software\\A", "TWO"); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"one\"=\"1\"\n; about two\n\"three\"=\"3\"\n", "Software\\A",
         "two", "<no value>"},
        {"delete key: its header with the blank line before it, and its values",
         "REGEDIT4\n; top\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n\n[HKEY_CURRENT_USER\\Software\\B]\n"
         "; inside B\n\"w\"=\"2\"\n\n[HKEY_CURRENT_USER\\Software\\C]\n",
         [] { return RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\B"); },
         "REGEDIT4\n; top\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n; inside B\n"
         "\n[HKEY_CURRENT_USER\\Software\\C]\n",
         "Software\\B", "w", "<no key>"},
        {"delete key that alone kept its parent: the header names the parent",
         "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]\r\n\"v\"=\"1\"\r\n; end\r\n",
         [] { return RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\Corvane\\Quarrin"); },
         "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Corvane]\r\n; end\r\n", "Software\\Corvane", "v",
         "<no value>"},
        {"new key: a section at the end, with the stored spelling of its parents",
         "REGEDIT4\n; first start\n\n[HKEY_CURRENT_USER\\SOFTWARE\\Selvane]\n\"Directory\"=\"/games/\"\n",
         [] { return CreateKey("Software\\Corvane\\Quarrin"); },
         "REGEDIT4\n; first start\n\n[HKEY_CURRENT_USER\\SOFTWARE\\Selvane]\n\"Directory\"=\"/games/\"\n"
         "\n[HKEY_CURRENT_USER\\SOFTWARE\\Corvane\\Quarrin]\n",
         "Software\\Corvane\\Quarrin", "PkzipPath", "<no value>"},
        {"new value in an existing key: at the end of its last section",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n\n[HKEY_CURRENT_USER\\Software\\B]\n\"x\"=\"2\"\n"
         "\n[HKCU\\software\\a]\n\"w\"=\"3\"\n\n; trailing comment\n",
         [] { return SetText("Software\\A", "z", "4"); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n\n[HKEY_CURRENT_USER\\Software\\B]\n\"x\"=\"2\"\n"
         "\n[HKCU\\software\\a]\n\"w\"=\"3\"\n\"z\"=\"4\"\n\n; trailing comment\n",
         "Software\\A", "z", Sz("4")},
        {"a value written twice: the line that counts is replaced",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"old\"\n\"v\"=\"counts\"\n",
         [] { return SetText("Software\\A", "V", "new"); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"old\"\n\"v\"=\"new\"\n", "Software\\A", "v",
         Sz("new")},
        {"a last line without a line end gets one",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"",
         [] { return SetText("Software\\A", "w", "2"); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n\"w\"=\"2\"\n", "Software\\A", "v", Sz("1")},
        {"behind a continuation that the file ends in, a blank line ends the value",
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"b\"=hex:01,\\\n",
         [] { return SetText("Software\\A", "w", "2"); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"b\"=hex:01,\\\n\n\"w\"=\"2\"\n", "Software\\A", "b",
         std::string("\x01", 1)},
        {"a brand-new file is written whole", "", [] { return SetText("Software\\A", "v", "1"); },
         "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n", "Software\\A", "v", Sz("1")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RegistryHome home;
        if (!c.before.empty()) home.WriteUser(c.before);
        ASSERT_EQ(c.write(), ERROR_SUCCESS);
        EXPECT_EQ(ReadFile(home.UserFile()), c.after);
        // The keys in memory are those of the file.
        if (c.key != nullptr) {
            EXPECT_EQ(Query(c.key, c.value), c.bytes);
        }
    }
}

TEST(RegistryFile, KeysDeeperThan512LevelsMakeAHiveDamaged) {
    // The registry lets keys nest 512 deep: a key may have 512 names in its
    // path below the root. A hive file with a deeper key is damaged, and is
    // treated as a file that can't be read: it reads as empty, refuses every
    // write and is never replaced.
    auto chain = [](int depth, const std::string& root = "HKEY_CURRENT_USER", const std::string& name = "k") {
        std::string header = "[" + root;
        for (int i = 0; i < depth; ++i) header += "\\" + name;
        return header + "]\n";
    };
    struct DepthCase {
        const char* name;
        std::string section;
        bool damaged;
    };
    const DepthCase cases[] = {
        {"511 levels", chain(511), false},
        {"512 levels", chain(512), false},
        {"513 levels", chain(513), true},
        {"512 names with empty parts between", "[HKCU\\\\" + chain(512).substr(18), false},
        {"a million levels", chain(1000000), true},
        {"513 levels of names too long to read", chain(513, "HKCU", std::string(300, 'n')), true},
        {"a section of another root", chain(600, "HKEY_LOCAL_MACHINE"), false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        RegistryHome home;
        const std::string text = "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n\n" + c.section;
        home.WriteUser(text);
        bool damaged = false;
        const auto sections = regtext::Parse(text, "HKEY_CURRENT_USER", &damaged);
        EXPECT_EQ(damaged, c.damaged);
        if (c.damaged) {
            EXPECT_TRUE(sections.empty());
            EXPECT_EQ(Query("Software\\A", "v"), "<no key>");
            HKEY h = 0;
            EXPECT_EQ(Open("Software\\A", h), ERROR_ACCESS_DENIED);
            EXPECT_EQ(SetText("Software\\B", "v", "x"), ERROR_ACCESS_DENIED);
            EXPECT_EQ(ReadFile(home.UserFile()), text);
            EXPECT_EQ(regtext::Canonical(text, "HKEY_CURRENT_USER"), "REGEDIT4\n");
        } else {
            EXPECT_EQ(Query("Software\\A", "v"), Sz("1"));
            ASSERT_EQ(SetText("Software\\A", "w", "2"), ERROR_SUCCESS);
            EXPECT_EQ(Query("Software\\A", "w"), Sz("2"));
        }
    }
    // The deepest key the registry allows is there to open.
    RegistryHome home;
    home.WriteUser("REGEDIT4\n" + chain(512));
    std::string path;
    for (int i = 0; i < 512; ++i) path += "k\\";
    HKEY h = 0;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, KEY_READ, &h), ERROR_SUCCESS);
    DWORD subkeys = 1;
    EXPECT_EQ(RegQueryInfoKeyA(h, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(subkeys, 0u);
    RegCloseKey(h);
}

TEST(RegistryFile, AWriteThatWouldMakeTheFileTooLargeToReadIsRefused) {
    RegistryHome home;
    const std::string text = "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\A]\n\"v\"=\"1\"\n";
    home.WriteUser(text);
    // Written as hex, 1.5 MB of data takes more than the 4 MB a hive file may have.
    EXPECT_EQ(SetBytes("Software\\A", "big", REG_BINARY, std::string(1536 * 1024, 'x')), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(ReadFile(home.UserFile()), text);
    EXPECT_EQ(Query("Software\\A", "big"), "<no value>");
    EXPECT_EQ(SetBytes("Software\\A", "fits", REG_BINARY, std::string(1024 * 1024, 'x')), ERROR_SUCCESS);
    EXPECT_EQ(Query("Software\\A", "fits"), std::string(1024 * 1024, 'x'));
}
