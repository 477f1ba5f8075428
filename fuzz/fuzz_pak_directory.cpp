// Lists a PAK of arbitrary bytes into a list view and cuts its first members
// out into a folder in memory. Aborts when anything appears beside that
// folder or outside its one sub-folder.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "controls/ListView.h"
#include "identify/IFileHost.h"
#include "FuzzFile.h"
#include "pak/CPAKFile.h"
#include "pak/ZipWrapper.h"
#include "platform/Runtime.h"

namespace {

// The destination of the members: a folder in shared memory, made once, with
// one sub-folder for the names that hold a folder separator. What a run wrote
// is taken away before the next one.
class Destination {
public:
    Destination() {
        root_ = "/dev/shm/quarrin-fuzz-pak." + std::to_string(::getpid());
        std::filesystem::remove_all(root_);
        std::filesystem::create_directories(root_ + "/dest/sub");
    }
    ~Destination() { std::filesystem::remove_all(root_); }
    std::string Folder() const { return root_ + "/dest/"; }

    // Aborts when anything but the destination stands in the root, or a
    // folder other than the sub-folder appeared; empties both folders.
    void CheckAndEmpty() const {
        for (const auto& e : std::filesystem::directory_iterator(root_))
            if (e.path().filename() != "dest") std::abort();
        for (const auto& e : std::filesystem::directory_iterator(root_ + "/dest")) {
            if (e.is_directory() && !e.is_symlink()) {
                if (e.path().filename() != "sub") std::abort();
                for (const auto& f : std::filesystem::directory_iterator(e.path()))
                    if (f.is_directory() && !f.is_symlink()) std::abort();
                    else std::filesystem::remove(f.path());
            } else {
                std::filesystem::remove(e.path());
            }
        }
    }

private:
    std::string root_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzFilePair inputs;
    static const Destination destination;
    static bool filled = (FillZipTemplates(), true);
    (void)filled;
    const std::string& pak = inputs.Write(data, size);
    const std::string dest = destination.Folder();

    static FileHost host;
    ListView lv{"oListView"};
    {
        CPAKFile file(host);
        if (!file.Initialize(pak, 0, &lv)) return 0;
        file.Information();
        file.Show(0);
        file.Show(0);
    }
    int32_t done = 0;
    for (const auto& item : lv.ItemsInAddOrder()) {
        if (++done > 4) break;
        try {
            UnpakMember(dest, pak, item->Text, VbCLng(item->SubItems(1)), VbCLng(item->SubItems(2)), item->Tag);
        } catch (const RuntimeError&) {
            // The sizes were shown from 32-bit numbers and always read back.
            std::abort();
        }
    }
    // Nothing can have been written when no member was cut out.
    if (done > 0) destination.CheckAndEmpty();
    return 0;
}
