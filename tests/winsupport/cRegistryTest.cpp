#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "fixtures/ByteWriter.h"
#include "fixtures/RegistryHome.h"
#include "identify/modGlobal.h"
#include "platform/Runtime.h"
#include "winsupport/cRegistry.h"
#include "WinsupportTestSupport.h"

using fixtures::ReadFile;
using fixtures::RegistryHome;
using winsupporttest::Raised;

namespace {

const std::string kSettings = "Software\\Corvane\\Quarrin";

// The stored type and bytes of a value, as the registry holds them.
bool Stored(HKEY root, const std::string& path, const std::string& name, DWORD& type, std::string& data) {
    HKEY h = 0;
    if (RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE, &h) != ERROR_SUCCESS) return false;
    DWORD size = 0;
    bool ok = RegQueryValueExA(h, name, nullptr, &type, nullptr, &size) == ERROR_SUCCESS;
    data.assign(size, '\0');
    ok = ok && RegQueryValueExA(h, name, nullptr, &type, data.data(), &size) == ERROR_SUCCESS;
    RegCloseKey(h);
    return ok;
}

cRegistry At(HKEY root, const std::string& section, const std::string& value, int32_t type = REG_SZ) {
    cRegistry r;
    r.SetClassKey(root);
    r.SetSectionKey(section);
    r.SetValueKey(value);
    r.SetValueType(type);
    return r;
}

class RegistryObject : public ::testing::Test {
protected:
    void SetUp() override { App::SetExecutable("/opt/quarrin", "quarrin"); }
    RegistryHome home;
};

}  // namespace

TEST_F(RegistryObject, AMissingValueGivesDefaultAndLeavesTheType) {
    cRegistry r = At(HKEY_CURRENT_USER, kSettings, "PkzipPath", REG_DWORD);
    EXPECT_TRUE(r.Value().IsEmpty());
    EXPECT_EQ(r.ValueType(), REG_DWORD);
    r.SetDefault(Variant("fallback"));
    EXPECT_EQ(r.Value(), Variant("fallback"));
    r.SetClassKey(0x12345);  // not a root at all
    EXPECT_EQ(r.Value(), Variant("fallback"));
    EXPECT_FALSE(r.KeyExists());
}

TEST_F(RegistryObject, TextsRoundTripAndTheReadTypeSticks) {
    cRegistry r = At(HKEY_CURRENT_USER, kSettings, "UnpakPath");
    // Writing to a key that does not exist creates it.
    r.SetValue(Variant("/data/unpak/"));
    EXPECT_TRUE(r.KeyExists());
    EXPECT_EQ(r.Value(), Variant("/data/unpak/"));
    EXPECT_EQ(r.ValueType(), REG_SZ);

    // A stored number switches the object to numbers until it is changed.
    cRegistry n = At(HKEY_CURRENT_USER, kSettings, "Number", REG_DWORD);
    n.SetValue(Variant(int32_t{42}));
    r.SetValueKey("Number");
    EXPECT_EQ(r.Value(), Variant(int32_t{42}));
    EXPECT_EQ(r.ValueType(), REG_DWORD);
    r.SetValueKey("Other");
    r.SetValue(Variant(int16_t{-2}));
    DWORD type = 0;
    std::string data;
    ASSERT_TRUE(Stored(HKEY_CURRENT_USER, kSettings, "Other", type, data));
    EXPECT_EQ(type, REG_DWORD);
    EXPECT_EQ(data, "\xfe\xff\xff\xff");
}

TEST_F(RegistryObject, EnvironmentReferencesDecideTheStoredType) {
    ::setenv("QUARRIN_REG_TEST", "/expanded", 1);
    cRegistry r = At(HKEY_CURRENT_USER, kSettings, "Path");
    r.SetValue(Variant("%QUARRIN_REG_TEST%/sub"));
    DWORD type = 0;
    std::string data;
    ASSERT_TRUE(Stored(HKEY_CURRENT_USER, kSettings, "Path", type, data));
    EXPECT_EQ(type, REG_EXPAND_SZ);
    EXPECT_EQ(data, std::string("%QUARRIN_REG_TEST%/sub\0", 23));
    EXPECT_EQ(r.Value(), Variant("/expanded/sub"));
    EXPECT_EQ(r.ValueType(), REG_EXPAND_SZ);

    // With ValueType 2, a text without a reference is still stored as 1.
    r.SetValueKey("Plain");
    r.SetValue(Variant("no reference"));
    ASSERT_TRUE(Stored(HKEY_CURRENT_USER, kSettings, "Plain", type, data));
    EXPECT_EQ(type, REG_SZ);

    struct Case {
        const char* text;
        DWORD type;
    } cases[] = {{"100%", REG_SZ}, {"50%% off", REG_SZ}, {"a%%b%", REG_EXPAND_SZ}, {"%x%", REG_EXPAND_SZ},
                 {"%%", REG_SZ}, {"% %", REG_EXPAND_SZ}};
    for (const auto& c : cases) {
        r.SetValueKey(c.text);
        r.SetValue(Variant(c.text));
        ASSERT_TRUE(Stored(HKEY_CURRENT_USER, kSettings, c.text, type, data));
        EXPECT_EQ(type, c.type) << c.text;
    }
}

TEST_F(RegistryObject, AnEmptyTextStoresOneZeroByte) {
    cRegistry r = At(HKEY_CURRENT_USER, kSettings, "ShortCutPath");
    r.SetValue(Variant(""));
    DWORD type = 0;
    std::string data;
    ASSERT_TRUE(Stored(HKEY_CURRENT_USER, kSettings, "ShortCutPath", type, data));
    EXPECT_EQ(type, REG_SZ);
    EXPECT_EQ(data, std::string(1, '\0'));
    EXPECT_EQ(r.Value(), Variant(""));
    // Booleans are written as the runtime's text of them.
    r.SetValueKey("Win9x");
    r.SetValue(Variant(true));
    EXPECT_EQ(r.Value(), Variant("True"));
}

TEST_F(RegistryObject, ReadsFollowTheStoredType) {
    home.WriteUser(
        "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\T]\n"
        "\"big\"=hex(5):00,00,01,02\n"
        "\"multi\"=hex(7):61,00,62,00,00\n"
        "\"bin\"=hex:0a,0b\n"
        "\"odd\"=hex(9):01\n"
        "\"nozero\"=hex(1):\n");
    cRegistry r = At(HKEY_CURRENT_USER, "Software\\T", "big");
    EXPECT_EQ(r.Value(), Variant(int32_t{0x00000102}));
    EXPECT_EQ(r.ValueType(), REG_DWORD_BIG_ENDIAN);
    r.SetValueKey("multi");
    EXPECT_EQ(r.Value(), Variant(std::string("a\0b\0", 4)));
    EXPECT_EQ(r.ValueType(), REG_MULTI_SZ);
    // A byte array has indexes 0 to the stored size: one more than the data.
    r.SetValueKey("bin");
    EXPECT_EQ(r.Value(), Variant(std::vector<uint8_t>{0x0a, 0x0b, 0x00}));
    r.SetValueKey("odd");
    EXPECT_EQ(r.Value(), Variant(std::vector<uint8_t>{0x01, 0x00}));
    EXPECT_EQ(r.ValueType(), 9);
    r.SetValueKey("nozero");
    EXPECT_EQ(r.Value(), Variant(""));
}

TEST_F(RegistryObject, NumbersAndBytesAreWrittenByType) {
    cRegistry r = At(HKEY_CURRENT_USER, kSettings, "n", REG_DWORD_BIG_ENDIAN);
    r.SetValue(Variant(int32_t{0x01020304}));
    DWORD type = 0;
    std::string data;
    ASSERT_TRUE(Stored(HKEY_CURRENT_USER, kSettings, "n", type, data));
    EXPECT_EQ(type, REG_DWORD);
    EXPECT_EQ(data, "\x04\x03\x02\x01");
    // A value of another kind writes nothing and is no failure.
    r.SetValueType(REG_DWORD);
    r.SetValueKey("text");
    r.SetValue(Variant("12"));
    EXPECT_FALSE(Stored(HKEY_CURRENT_USER, kSettings, "text", type, data));

    r.SetValueType(REG_BINARY);
    r.SetValueKey("b");
    r.SetValue(Variant(std::vector<uint8_t>{1, 2, 3}));
    ASSERT_TRUE(Stored(HKEY_CURRENT_USER, kSettings, "b", type, data));
    EXPECT_EQ(type, REG_BINARY);
    EXPECT_EQ(data, "\x01\x02\x03");
    const RuntimeError e = Raised([&] { r.SetValue(Variant("not bytes")); });
    EXPECT_EQ(e.Number, 26001);
    EXPECT_EQ(e.Source, "quarrin.cRegistry");
    EXPECT_EQ(e.Description, "Application-defined or object-defined error");
}

TEST_F(RegistryObject, AFailedWriteNamesTheLastValueWritten) {
    cRegistry r = At(HKEY_CURRENT_USER, kSettings, "kept");
    r.SetValue(Variant("previous"));
    r.SetValueType(REG_MULTI_SZ);
    RuntimeError e = Raised([&] { r.SetValue(Variant("new")); });
    EXPECT_EQ(e.Number, static_cast<int32_t>(0x800469A9u));
    EXPECT_EQ(e.Source, "quarrin.cRegistry");
    EXPECT_EQ(e.Description,
              "Failed to set registry value Key: '-2147483647',Section: 'Software\\Corvane\\Quarrin',Key: 'kept' to "
              "value: 'previous'");
    r.SetValueType(0);
    EXPECT_EQ(Raised([&] { r.SetValue(Variant("new")); }).Number, static_cast<int32_t>(0x800469A9u));

    // The machine's hive can't be written: the key can't be opened for it.
    cRegistry m = At(HKEY_LOCAL_MACHINE, "Software\\Selvane\\Directory", "Directory");
    e = Raised([&] { m.SetValue(Variant("/games")); });
    EXPECT_EQ(e.Number, 26001);
    EXPECT_EQ(e.Description,
              "Failed to set registry value Key: '-2147483646',Section: 'Software\\Selvane\\Directory',Key: "
              "'Directory' to value: ''");
    EXPECT_FALSE(std::filesystem::exists(home.MachineFile()));
}

TEST_F(RegistryObject, KeysAreCreatedAndDeleted) {
    // A first run: the game's key appears under the user, the program's own doesn't.
    cRegistry r = At(HKEY_CURRENT_USER, "Software\\Selvane\\Directory", "");
    EXPECT_FALSE(r.KeyExists());
    EXPECT_TRUE(r.CreateKey());
    EXPECT_TRUE(r.KeyExists());
    EXPECT_TRUE(r.CreateKey());  // again: it opens what is there
    EXPECT_EQ(ReadFile(home.UserFile()), "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\Selvane\\Directory]\n");

    cRegistry m = At(HKEY_LOCAL_MACHINE, "Software\\Selvane\\Directory", "");
    RuntimeError e = Raised([&] { m.CreateKey(); });
    EXPECT_EQ(e.Number, 26001);
    EXPECT_EQ(e.Source, "quarrin.cRegistry");
    EXPECT_EQ(e.Description, "Failed to create registry Key: 'Software\\Selvane\\Directory");

    EXPECT_TRUE(r.DeleteKey());
    EXPECT_FALSE(r.KeyExists());
    e = Raised([&] { r.DeleteKey(); });
    EXPECT_EQ(e.Number, 26001);
    EXPECT_EQ(e.Description, "Failed to delete registry Key: '-2147483647',Section: 'Software\\Selvane\\Directory");
    // A key with sub-keys stays.
    r.SetSectionKey("Software");
    EXPECT_EQ(Raised([&] { r.DeleteKey(); }).Number, 26001);
}

TEST_F(RegistryObject, ValuesAreDeleted) {
    cRegistry r = At(HKEY_CURRENT_USER, kSettings, "gone");
    RuntimeError e = Raised([&] { r.DeleteValue(); });
    EXPECT_EQ(e.Number, 26001);
    EXPECT_EQ(e.Description,
              "Failed to open key '-2147483647',Section: 'Software\\Corvane\\Quarrin' for delete access");
    r.SetValue(Variant("x"));
    EXPECT_TRUE(r.DeleteValue());
    EXPECT_TRUE(r.Value().IsEmpty());
    e = Raised([&] { r.DeleteValue(); });
    EXPECT_EQ(e.Description,
              "Failed to delete registry Key: '-2147483647',Section: 'Software\\Corvane\\Quarrin',Key: 'gone");
}

TEST_F(RegistryObject, EnumerationFillsArraysFromTheFirst) {
    cRegistry r = At(HKEY_CURRENT_USER, kSettings, "");
    std::vector<std::string> names{"stale"};
    int32_t count = 7;
    EXPECT_TRUE(r.EnumerateValues(names, count));
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(names.empty());
    for (const char* v : {"PkzipPath", "UnpakPath", "ShortCutPath"}) {
        r.SetValueKey(v);
        r.SetValue(Variant("x"));
    }
    EXPECT_TRUE(r.EnumerateValues(names, count));
    EXPECT_EQ(count, 3);
    EXPECT_EQ(names, (std::vector<std::string>{"PkzipPath", "UnpakPath", "ShortCutPath"}));

    r.SetSectionKey("Software");
    r.CreateKey();
    for (const char* k : {"Software\\Selvane", "Software\\Atelier"}) {
        r.SetSectionKey(k);
        r.CreateKey();
    }
    r.SetSectionKey("Software");
    EXPECT_TRUE(r.EnumerateSections(names, count));
    EXPECT_EQ(count, 3);
    EXPECT_EQ(names, (std::vector<std::string>{"Atelier", "Corvane", "Selvane"}));
    r.SetSectionKey("Software\\Missing");
    EXPECT_TRUE(r.EnumerateSections(names, count));
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(names.empty());
}

TEST_F(RegistryObject, AssociationsAreWrittenUnderTheClassesRoot) {
    cRegistry r;
    r.CreateEXEAssociation("  /opt/quarrin/quarrin  ", "Quarrin.Pak", "Selvane archive", "pak", "", true, "",
                           false, "", true, "", 0);
    auto text = [&](const std::string& section) {
        cRegistry q = At(HKEY_CLASSES_ROOT, section, "");
        return q.Value().ToString();
    };
    EXPECT_EQ(text(".pak"), "Quarrin.Pak");
    EXPECT_EQ(text("Quarrin.Pak"), "Selvane archive");
    EXPECT_EQ(text("Quarrin.Pak\\shell\\open"), "&Open");
    EXPECT_EQ(text("Quarrin.Pak\\shell\\open\\command"), "\"/opt/quarrin/quarrin\" \"%1\"");
    EXPECT_EQ(text("Quarrin.Pak\\shell\\print"), "&Print");
    EXPECT_EQ(text("Quarrin.Pak\\shell\\print\\command"), "\"/opt/quarrin/quarrin\" /p \"%1\"");
    EXPECT_EQ(text("Quarrin.Pak\\shell\\add"), "&Install pak");
    EXPECT_EQ(text("Quarrin.Pak\\shell\\add\\command"), "\"/opt/quarrin/quarrin\" /a \"%1\"");
    EXPECT_EQ(text("Quarrin.Pak\\DefaultIcon"), "\"/opt/quarrin/quarrin\",0");
    cRegistry probe = At(HKEY_CLASSES_ROOT, "Quarrin.Pak\\shell\\new", "");
    EXPECT_FALSE(probe.KeyExists());
    EXPECT_EQ(r.ClassKey(), HKEY_CLASSES_ROOT);
    EXPECT_TRUE(std::filesystem::exists(home.ClassesFile()));

    // A path already quoted keeps its quotes.
    r.CreateEXEAssociation("\"/x y/q\"", "Q.Other", "Other", "oth", "&View");
    EXPECT_EQ(text("Q.Other\\shell\\open"), "&View");
    EXPECT_EQ(text("Q.Other\\shell\\open\\command"), "\"/x y/q\" \"%1\"");
    cRegistry icon = At(HKEY_CLASSES_ROOT, "Q.Other\\DefaultIcon", "");
    EXPECT_FALSE(icon.KeyExists());

    std::vector<Variant> items{Variant("edit"), Variant("&Edit"), Variant("\"/x y/q\" /e \"%1\"")};
    r.SetClassKey(HKEY_CLASSES_ROOT);
    r.CreateAdditionalEXEAssociations("Q.Other", items);
    EXPECT_EQ(text("Q.Other\\shell\\edit"), "&Edit");
    EXPECT_EQ(text("Q.Other\\shell\\edit\\command"), "\"/x y/q\" /e \"%1\"");
}

TEST_F(RegistryObject, AdditionalAssociationsCheckTheirArguments) {
    cRegistry r;
    r.SetClassKey(HKEY_CLASSES_ROOT);
    std::vector<Variant> two{Variant("a"), Variant("b")};
    std::vector<Variant> none;
    for (auto* items : {&two, &none}) {
        const RuntimeError e = Raised([&] { r.CreateAdditionalEXEAssociations("Q.Class", *items); });
        EXPECT_EQ(e.Number, static_cast<int32_t>(0x800469ACu));
        EXPECT_EQ(e.Description,
                  "Invalid parameter list passed to CreateAdditionalEXEAssociations - expected Name/Text/Command");
    }
    std::vector<Variant> three{Variant("a"), Variant("b"), Variant("c")};
    const RuntimeError e = Raised([&] { r.CreateAdditionalEXEAssociations("Q.Class", three); });
    EXPECT_EQ(e.Number, static_cast<int32_t>(0x800469ADu));
    EXPECT_EQ(e.Source, "quarrin.cRegistry");
    EXPECT_EQ(e.Description, "Error - attempt to create additional associations before class defined.");
}

TEST(VariantValue, ConvertsAsTheRuntimeDoes) {
    EXPECT_EQ(Variant().ToString(), "");
    EXPECT_EQ(Variant(true).ToString(), "True");
    EXPECT_EQ(Variant(false).ToString(), "False");
    EXPECT_EQ(Variant(int16_t{-5}).ToString(), "-5");
    EXPECT_EQ(Variant(std::vector<uint8_t>{'o', 'k'}).ToString(), "ok");
    EXPECT_EQ(Variant(" 42 ").ToLong(), 42);
    EXPECT_EQ(Variant(true).ToLong(), -1);
    EXPECT_EQ(Variant().ToLong(), 0);
    EXPECT_EQ(Variant("True").ToLong(), -1);
    EXPECT_TRUE(Variant("7").ToBool());
    EXPECT_EQ(Variant().VarType(), Variant::vbEmpty);
    EXPECT_EQ(Variant("x").VarType(), Variant::vbString);
    EXPECT_EQ(Variant(std::vector<uint8_t>{}).VarType(), Variant::vbByteArray);
    EXPECT_NE(Variant(int16_t{1}), Variant(int32_t{1}));
    EXPECT_EQ(Raised([] { Variant("12abc").ToLong(); }).Number, 13);
    EXPECT_EQ(Raised([] { Variant("99999999999").ToLong(); }).Number, 6);
}
