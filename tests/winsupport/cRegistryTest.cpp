#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

#include "fixtures/ErrorOf.h"
#include "fixtures/RegistryHome.h"
#include "winsupport/cRegistry.h"

using fixtures::ErrorOf;
using Bytes = std::vector<uint8_t>;

namespace {

const std::string kSettings = "Software\\Corvane\\Quarrin";

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
    fixtures::RegistryHome home;
};

}  // namespace

// A value is stored with the type that its kind and the object's ValueType
// decide, and reads back by the stored type, which the object then takes; so
// do the values that another program stored (kind REG_NONE: none written).
TEST_F(RegistryObject, WritesByKindAndReadsByTheStoredType) {
    ::setenv("QUARRIN_REG_TEST", "/expanded", 1);
    home.WriteUser("REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]\n\"big\"=hex(5):00,00,01,02\n"
                   "\"multi\"=hex(7):61,00,62,00,00\n\"odd\"=hex(9):01\n\"nozero\"=hex(1):\n\"dw\"=dword:fffffffe\n");
    const std::tuple<const char*, int32_t, Variant, int32_t, Variant> rows[] = {
        {"big", REG_NONE, Variant(), REG_DWORD_BIG_ENDIAN, Variant(int32_t{0x00000102})},
        {"multi", REG_NONE, Variant(), REG_MULTI_SZ, Variant(std::string("a\0b\0", 4))},
        {"odd", REG_NONE, Variant(), 9, Variant(Bytes{0x01, 0x00})},
        {"nozero", REG_NONE, Variant(), REG_SZ, Variant("")},
        {"dw", REG_NONE, Variant(), REG_DWORD, Variant(int32_t{-2})},
        {"missing", REG_NONE, Variant(), REG_DWORD, Variant("fallback")},  // the default, and the type stays
        {"v3", REG_SZ, Variant(true), REG_SZ, Variant("True")},
        {"v4", REG_DWORD, Variant(int16_t{-2}), REG_DWORD, Variant(int32_t{-2})},
        {"v5", REG_DWORD_BIG_ENDIAN, Variant(int32_t{0x01020304}), REG_DWORD, Variant(0x01020304)},
        {"v6", REG_DWORD, Variant("12"), REG_DWORD, Variant("fallback")},  // nothing is written, and no failure
        {"v7", REG_SZ, Variant("%QUARRIN_REG_TEST%/sub"), REG_EXPAND_SZ, Variant("/expanded/sub")},
        // With ValueType 2, a text without a reference is still stored as 1.
        {"v8", REG_EXPAND_SZ, Variant("100%"), REG_SZ, Variant("100%")},
        {"v9", REG_SZ, Variant("a%%b%"), REG_EXPAND_SZ, Variant("a%%b%")},
        {"v10", REG_SZ, Variant("%%"), REG_SZ, Variant("%%")},
        // A byte array has indexes 0 to the stored size: one more than the data.
        {"v11", REG_BINARY, Variant(Bytes{1, 2, 3}), REG_BINARY, Variant(Bytes{1, 2, 3, 0})},
    };
    for (const auto& [name, kind, value, stored, read] : rows) {
        SCOPED_TRACE(name);
        if (kind != REG_NONE)
            EXPECT_EQ(ErrorOf([&] { At(HKEY_CURRENT_USER, kSettings, name, kind).SetValue(value); }).Number, 0);
        cRegistry reader = At(HKEY_CURRENT_USER, kSettings, name, REG_DWORD);
        reader.SetDefault(Variant("fallback"));
        EXPECT_EQ(reader.Value(), read);
        EXPECT_EQ(reader.ValueType(), stored);
    }
    cRegistry nowhere = At(0x12345, kSettings, "big");  // not a root at all
    EXPECT_TRUE(nowhere.Value().IsEmpty());
    EXPECT_FALSE(nowhere.KeyExists());
}

TEST_F(RegistryObject, FailuresNameWhatFailed) {
    cRegistry user = At(HKEY_CURRENT_USER, kSettings, "kept");
    user.SetValue(Variant("previous"));  // a failure names the object's last value written
    cRegistry classes;
    classes.SetClassKey(HKEY_CLASSES_ROOT);
    std::vector<Variant> two{Variant("a"), Variant("b")}, three{Variant("a"), Variant("b"), Variant("c")};
    const std::tuple<std::function<void()>, uint32_t, std::string> rows[] = {
        {[&] { At(HKEY_CURRENT_USER, kSettings, "b", REG_BINARY).SetValue(Variant("x")); }, 26001,
         "Application-defined or object-defined error"},
        {[&] { user.SetValueType(REG_MULTI_SZ); user.SetValue(Variant("new")); }, 0x800469A9u,
         "Failed to set registry value Key: '-2147483647',Section: 'Software\\Corvane\\Quarrin',Key: 'kept' to value: "
         "'previous'"},
        {[&] { At(HKEY_LOCAL_MACHINE, "Software\\Selvane", "").SetValue(Variant("/games")); }, 26001,
         "Failed to set registry value Key: '-2147483646',Section: 'Software\\Selvane',Key: '' to value: ''"},
        {[&] { At(HKEY_LOCAL_MACHINE, "Software\\Selvane", "").CreateKey(); }, 26001,
         "Failed to create registry Key: 'Software\\Selvane"},
        {[&] { At(HKEY_CURRENT_USER, "Software\\None", "").DeleteKey(); }, 26001,
         "Failed to delete registry Key: '-2147483647',Section: 'Software\\None"},
        {[&] { At(HKEY_CURRENT_USER, "Software\\None", "x").DeleteValue(); }, 26001,
         "Failed to open key '-2147483647',Section: 'Software\\None' for delete access"},
        {[&] { At(HKEY_CURRENT_USER, kSettings, "gone").DeleteValue(); }, 26001,
         "Failed to delete registry Key: '-2147483647',Section: 'Software\\Corvane\\Quarrin',Key: 'gone"},
        {[&] { classes.CreateAdditionalEXEAssociations("Q.Class", two); }, 0x800469ACu,
         "Invalid parameter list passed to CreateAdditionalEXEAssociations - expected Name/Text/Command"},
        {[&] { classes.CreateAdditionalEXEAssociations("Q.Class", three); }, 0x800469ADu,
         "Error - attempt to create additional associations before class defined."},
    };
    for (const auto& [action, number, description] : rows) {
        SCOPED_TRACE(description);
        const RuntimeError e = ErrorOf(action);
        EXPECT_EQ(static_cast<uint32_t>(e.Number), number);
        EXPECT_EQ(e.Source + " " + e.Description, "quarrin.cRegistry " + description);
    }
    EXPECT_FALSE(std::filesystem::exists(home.MachineFile()));
}

TEST_F(RegistryObject, KeysAndValuesAreCreatedListedAndDeleted) {
    // A first run: the game's key appears under the user, the program's own doesn't.
    cRegistry r = At(HKEY_CURRENT_USER, "Software\\Selvane\\Directory", "");
    EXPECT_FALSE(r.KeyExists());
    EXPECT_TRUE(r.CreateKey() && r.CreateKey());  // again: it opens what is there
    At(HKEY_CURRENT_USER, "Software\\Atelier", "").CreateKey();
    std::vector<std::string> names{"stale"};
    int32_t count = 7;
    cRegistry s = At(HKEY_CURRENT_USER, kSettings, "");
    EXPECT_TRUE(s.EnumerateValues(names, count));
    EXPECT_EQ(names.size() + count, 0u);
    for (const char* v : {"PkzipPath", "UnpakPath", "ShortCutPath"}) At(HKEY_CURRENT_USER, kSettings, v).SetValue("x");
    EXPECT_TRUE(s.EnumerateValues(names, count));
    EXPECT_EQ(names, (std::vector<std::string>{"PkzipPath", "UnpakPath", "ShortCutPath"}));
    EXPECT_EQ(count, 3);
    s.SetSectionKey("Software");
    EXPECT_TRUE(s.EnumerateSections(names, count));
    EXPECT_EQ(names, (std::vector<std::string>{"Atelier", "Corvane", "Selvane"}));
    EXPECT_EQ(count, 3);
    s.SetSectionKey("Software\\Missing");
    EXPECT_TRUE(s.EnumerateSections(names, count));
    EXPECT_EQ(names.size() + count, 0u);
    EXPECT_EQ(ErrorOf([&] { At(HKEY_CURRENT_USER, "Software", "").DeleteKey(); }).Number, 26001);  // sub-keys stay

    s = At(HKEY_CURRENT_USER, kSettings, "UnpakPath");
    EXPECT_TRUE(s.DeleteValue());
    EXPECT_TRUE(s.Value().IsEmpty());
    EXPECT_TRUE(r.DeleteKey());
    EXPECT_FALSE(r.KeyExists());
}

TEST_F(RegistryObject, AssociationsAreWrittenUnderTheClassesRoot) {
    cRegistry r;
    r.CreateEXEAssociation("  /opt/quarrin/quarrin  ", "Quarrin.Pak", "Selvane archive", "pak", "", true, "",
                           false, "", true, "", 0);
    r.CreateEXEAssociation("\"/x y/q\"", "Q.Other", "Other", "oth", "&View");  // a quoted path keeps its quotes
    std::vector<Variant> items{Variant("edit"), Variant("&Edit"), Variant("\"/x y/q\" /e \"%1\"")};
    r.CreateAdditionalEXEAssociations("Q.Other", items);
    const std::pair<const char*, const char*> keys[] = {
        {".pak", "Quarrin.Pak"}, {"Quarrin.Pak", "Selvane archive"}, {"Quarrin.Pak\\shell\\open", "&Open"},
        {"Quarrin.Pak\\shell\\open\\command", "\"/opt/quarrin/quarrin\" \"%1\""},
        {"Quarrin.Pak\\shell\\print\\command", "\"/opt/quarrin/quarrin\" /p \"%1\""},
        {"Quarrin.Pak\\shell\\add", "&Install pak"}, {"Quarrin.Pak\\shell\\add\\command", "\"/opt/quarrin/quarrin\" /a \"%1\""},
        {"Quarrin.Pak\\DefaultIcon", "\"/opt/quarrin/quarrin\",0"}, {"Q.Other\\shell\\open", "&View"},
        {"Q.Other\\shell\\open\\command", "\"/x y/q\" \"%1\""}, {"Q.Other\\shell\\edit\\command", "\"/x y/q\" /e \"%1\""},
        {"Q.Other\\DefaultIcon", nullptr}, {"Quarrin.Pak\\shell\\new", nullptr},
    };
    for (const auto& [section, text] : keys) {
        cRegistry q = At(HKEY_CLASSES_ROOT, section, "");
        EXPECT_EQ(q.KeyExists() ? q.Value().ToString() : "none", text ? text : "none") << section;
    }
    EXPECT_TRUE(std::filesystem::exists(home.ClassesFile()));
}

// The registry's values travel as the runtime's variants.
TEST(VariantValue, ConvertsAsTheRuntimeDoes) {
    const std::pair<Variant, std::string> texts[] = {
        {Variant(), ""}, {Variant(true), "True"}, {Variant(false), "False"}, {Variant(int16_t{-5}), "-5"}, {Variant(Bytes{'o', 'k'}), "ok"}};
    for (const auto& [v, text] : texts) EXPECT_EQ(v.ToString(), text);
    const std::pair<Variant, int32_t> numbers[] = {{Variant(" 42 "), 42}, {Variant(true), -1}, {Variant(), 0}, {Variant("True"), -1}};
    for (const auto& [v, number] : numbers) EXPECT_EQ(v.ToLong(), number) << v.ToString();
    EXPECT_EQ(ErrorOf([] { Variant("12abc").ToLong(); }).Number, 13);
    EXPECT_EQ(ErrorOf([] { Variant("99999999999").ToLong(); }).Number, 6);
}
