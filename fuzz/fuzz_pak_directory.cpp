// Lists a PAK of arbitrary bytes into a list view and cuts its first members
// out into a folder. Aborts when anything appears beside that folder.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "controls/ListView.h"
#include "fixtures/ByteWriter.h"
#include "pak/CPAKFile.h"
#include "pak/ZipWrapper.h"
#include "platform/Runtime.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fixtures::TempDir dir;
    static bool filled = (FillZipTemplates(), true);
    (void)filled;
    const std::string pak = dir / "in.pak";
    const std::string dest = dir / "dest";
    fixtures::WriteFile(pak, std::string(reinterpret_cast<const char*>(data), size));
    std::filesystem::remove_all(dest);
    std::filesystem::create_directories(dest + "/sub");

    ListView lv{"oListView"};
    {
        CPAKFile file;
        if (!file.Initialize(pak, 0, &lv)) return 0;
        file.Information();
        file.Show(0);
        file.Show(0);
    }
    int32_t done = 0;
    for (const auto& item : lv.ItemsInAddOrder()) {
        if (++done > 4) break;
        try {
            UnpakMember(dest + "/", pak, item->Text, VbCLng(item->SubItems(1)), VbCLng(item->SubItems(2)), item->Tag);
        } catch (const RuntimeError&) {
            // The sizes were shown from 32-bit numbers and always read back.
            std::abort();
        }
    }
    for (const auto& e : std::filesystem::directory_iterator(dir.Path())) {
        const std::string name = e.path().filename().string();
        if (name != "in.pak" && name != "dest") std::abort();
    }
    return 0;
}
