// The registry reads its hive text when the file is new or changed, and at
// each change writes the file again with only the changed lines edited. These
// measure reading a hive of many keys and one of deep keys, and the start-up
// read and the options dialog's write of a setting through cRegistry.
#include <benchmark/benchmark.h>

#include "fixtures/RegistryHome.h"
#include "platform/Registry.h"
#include "winsupport/cRegistry.h"

namespace {

std::string HiveOfKeys(int keys) {
    std::string text = "REGEDIT4\n";
    for (int k = 0; k < keys; ++k) {
        text += "\n[HKEY_CURRENT_USER\\Software\\Vendor" + std::to_string(k % 50) + "\\Program" + std::to_string(k) + "]\n";
        text += "\"Path\"=\"C:\\\\Program Files\\\\Program" + std::to_string(k) + "\\\\bin\"\n";
        text += "\"Count\"=dword:0000002a\n\"Blob\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f\n";
    }
    return text;
}

void ParseHive(benchmark::State& state) {
    const std::string text = HiveOfKeys(static_cast<int>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(regtext::Parse(text, "HKEY_CURRENT_USER"));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(ParseHive)->Arg(100)->Arg(10000);

void CanonicalHive(benchmark::State& state) {
    const std::string text = HiveOfKeys(static_cast<int>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(regtext::Canonical(text, "HKEY_CURRENT_USER"));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(CanonicalHive)->Arg(100)->Arg(10000);

// A hive read again because its file changed: `keys` chains of 511 keys each,
// the shape that once took a hundred times the file's size in memory.
void ReadDeepHive(benchmark::State& state) {
    std::string text = "REGEDIT4\n";
    for (int k = 0; k < state.range(0); ++k) {
        text += "[HKEY_CURRENT_USER\\Chain" + std::to_string(k);
        for (int d = 0; d < 511; ++d) text += "\\k";
        text += "]\n";
    }
    fixtures::RegistryHome home;
    int n = 0;
    for (auto _ : state) {
        state.PauseTiming();
        home.WriteUser(text + "; " + std::to_string(n++) + "\n");  // a new file: read again
        state.ResumeTiming();
        DWORD subkeys = 0;
        RegQueryInfoKeyA(HKEY_CURRENT_USER, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr);
        benchmark::DoNotOptimize(subkeys);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(ReadDeepHive)->Arg(100)->Arg(3900);  // 3900: just under the 4 MB a hive file may have

// The four reads of start-up on a hive that is already loaded.
void ReadSettings(benchmark::State& state) {
    fixtures::RegistryHome home;
    home.WriteUser(HiveOfKeys(100) +
                   "\n[HKEY_CURRENT_USER\\Software\\Corvane\\Quarrin]\n\"PkzipPath\"=\"/opt/pkzip25.exe\"\n"
                   "\"UnpakPath\"=\"/tmp/unpak/\"\n\"ShortCutPath\"=\"/games/\"\n");
    cRegistry r;
    r.SetValueType(REG_SZ);
    r.SetClassKey(HKEY_CURRENT_USER);
    r.SetSectionKey("Software\\Corvane\\Quarrin");
    for (auto _ : state) {
        for (const char* name : {"PkzipPath", "UnpakPath", "ShortCutPath", "Win9x"}) {
            r.SetValueKey(name);
            benchmark::DoNotOptimize(r.Value());
        }
    }
}
BENCHMARK(ReadSettings);

// One write: the hive's text with the setting's line edited goes to a new
// file that replaces the old one.
void WriteSetting(benchmark::State& state) {
    fixtures::RegistryHome home;
    home.WriteUser(HiveOfKeys(static_cast<int>(state.range(0))));
    cRegistry r;
    r.SetValueType(REG_SZ);
    r.SetClassKey(HKEY_CURRENT_USER);
    r.SetSectionKey("Software\\Corvane\\Quarrin");
    r.SetValueKey("UnpakPath");
    int n = 0;
    for (auto _ : state) r.SetValue(Variant("/tmp/unpak" + std::to_string(n++ & 7) + "/"));
}
BENCHMARK(WriteSetting)->Arg(0)->Arg(100);

}  // namespace
