// quarrin-cli pak: the members of a PAK as the list view holds them, and the
// save of one member, with the user's answers played by the command line.
#include <algorithm>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "CliSupport.h"
#include "Commands.h"
#include "controls/ListView.h"
#include "identify/modGlobal.h"
#include "pak/CPAKFile.h"
#include "pak/ZipWrapper.h"
#include "platform/FileDialogs.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "platform/Runtime.h"
#include "winsupport/cCommonDialog.h"

namespace {

const char kPakUsage[] =
    "usage: quarrin-cli pak list PATH\n"
    "       quarrin-cli pak save PATH INDEX OUT [--bare]\n";

int PakFail(const std::string& message) { return CliFail(message); }

// Binds a PAK object to a path and lists it into `lv`, in directory order.
bool OpenPak(CPAKFile& pak, ListView& lv, const std::string& path, std::string& why) {
    if (!CheckReadableFile(path, why)) return false;
    if (!pak.Initialize(path, 0, &lv)) {
        why = path + ": is not a PAK archive";
        return false;
    }
    // Display order is directory order, so an index means the same in both.
    lv.Sorted = false;
    pak.Show(0);
    if (!pak.Shown()) std::cerr << "quarrin-cli: " << path << ": the directory ends early\n";
    return true;
}

int PakList(const std::vector<std::string>& args) {
    if (args.size() != 1) return PakFail("pak list takes one PATH");
    ListView lv{"oListView"};
    CPAKFile pak;
    std::string why;
    if (!OpenPak(pak, lv, args[0], why)) return PakFail(why);
    for (const auto& item : lv.ItemsInAddOrder()) {
        std::cout << item->Text << '\t' << item->SubItems(1) << '\t' << item->SubItems(2) << '\t'
                  << item->SubItems(3) << '\t' << item->Tag << '\n';
    }
    std::cout.flush();
    return 0;
}

int PakSave(const std::vector<std::string>& args) {
    std::vector<std::string> positional;
    bool bare = false;
    for (const auto& a : args) {
        if (a == "--bare") {
            bare = true;
        } else {
            positional.push_back(a);
        }
    }
    if (positional.size() != 3) return PakFail("pak save takes PATH INDEX OUT [--bare]");
    const std::string& path = positional[0];
    const std::string& out = positional[2];
    int32_t index = 0;
    try {
        if (positional[1].find_first_not_of("0123456789") != std::string::npos) throw RuntimeError(13, "", "");
        index = VbCLng(positional[1]);
    } catch (const RuntimeError&) {
        return PakFail("INDEX must be a member number from 1, not '" + positional[1] + "'");
    }

    ListView lv{"oListView"};
    CPAKFile pak;
    std::string why;
    if (!OpenPak(pak, lv, path, why)) return PakFail(why);
    if (index < 1 || index > lv.Count())
        return PakFail(path + " has " + std::to_string(lv.Count()) + " members; there is no member " +
                       positional[1]);
    lv.SelectOnly(index);
    const ListItem& item = *lv.SelectedItem();
    int64_t packed = 0, original = 0;
    try {
        packed = VbCLng(item.SubItems(1));
        original = VbCLng(item.SubItems(2));
    } catch (const RuntimeError&) {
        return PakFail("member " + positional[1] + " has sizes that can't be read");
    }
    if (packed < 0 || item.Tag < 0 || item.Tag + packed > FileLen(path))
        return PakFail("member " + positional[1] + " lies beyond the end of " + path);

    {
        AnswerFileDialog dialog(out, bare ? 2 : 1);
        AnswerYes yes;
        pak.SaveAs();
    }
    // The dialog may have given the name the filter's extension.
    const std::string written = CommonDialog().Filename().empty() ? out : CommonDialog().Filename();
    const bool wrapper = packed != original && !bare;
    const int64_t expected = wrapper ? ZipWrapperLength(static_cast<int64_t>(item.Text.size()), packed) : packed;
    int64_t length = -1;
    try {
        if (!IsDirectory(written)) length = FileLen(written);
    } catch (const RuntimeError&) {
    }
    if (length != expected) return PakFail(written + ": could not be written");
    std::cout << written << "\n";
    return 0;
}

using PakCommand = std::function<int(const std::vector<std::string>&)>;

// The sub-commands by name; each takes the arguments behind its name.
const std::map<std::string, PakCommand>& PakCommands() {
    static const std::map<std::string, PakCommand> commands = {
        {"list", PakList},
        {"save", PakSave},
        {"unpak", CliPakUnpak},
    };
    return commands;
}

}  // namespace

int CliPak(const std::vector<std::string>& args) {
    if (args.empty()) {
        std::cerr << kPakUsage;
        return 1;
    }
    auto it = PakCommands().find(args[0]);
    if (it == PakCommands().end()) {
        std::cerr << "quarrin-cli: unknown pak command '" << args[0] << "'\n" << kPakUsage;
        return 1;
    }
    return it->second(std::vector<std::string>(args.begin() + 1, args.end()));
}
