// quarrin-cli pak: the members of a PAK as the list view holds them, and the
// save of one member, with the user's answers played by the command line.
#include <algorithm>
#include <charconv>
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

// The lines of `pak list`, one per item in directory order: name, the two
// sizes as the list shows them, extension and offset, parted by tabs. A
// terminal gets the names through ShownName; a pipe or a file gets their bytes.
void PrintItems(const ListView& lv, bool terminal) {
    std::string out;
    constexpr size_t kFlushAt = 1 << 16;
    out.reserve(kFlushAt + 4096);
    SubItemBuffer buffer;
    char tag[16];
    for (const ListItem* item : lv.ItemsInAddOrder()) {
        if (terminal) {
            out += ShownName(item->Text);
        } else {
            out += item->Text;
        }
        for (int32_t column = 1; column <= 3; ++column) {
            out += '\t';
            const std::string_view text = item->ColumnText(column, buffer);
            if (terminal && column == 3) {
                out += ShownName(std::string(text));
            } else {
                out += text;
            }
        }
        out += '\t';
        out.append(tag, std::to_chars(tag, tag + sizeof tag, item->Tag).ptr);
        out += '\n';
        if (out.size() >= kFlushAt) {
            std::cout.write(out.data(), static_cast<std::streamsize>(out.size()));
            out.clear();
        }
    }
    std::cout.write(out.data(), static_cast<std::streamsize>(out.size()));
    std::cout.flush();
}

int PakList(const std::vector<std::string>& args) {
    if (args.size() != 1) return PakFail("pak list takes one PATH");
    ListView lv{"oListView"};
    FileHost host;
    CPAKFile pak{host};
    std::string why;
    if (!OpenPak(pak, lv, args[0], why)) return PakFail(why);
    PrintItems(lv, StdoutIsTerminal());
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
    if (positional[1].find_first_not_of("0123456789") != std::string::npos ||
        !PassOver([&] { index = VbCLng(positional[1]); }))
        return PakFail("INDEX must be a member number from 1, not '" + positional[1] + "'");

    ListView lv{"oListView"};
    FileHost host;
    CPAKFile pak{host};
    std::string why;
    if (!OpenPak(pak, lv, path, why)) return PakFail(why);
    if (index < 1 || index > lv.Count())
        return PakFail(path + " has " + std::to_string(lv.Count()) + " members; there is no member " +
                       positional[1]);
    lv.SelectOnly(index);
    const std::string member = "member " + positional[1] + " (" + ShownName(lv.SelectedItem()->Text) + ")";

    PakMemberSave outcome = PakMemberSave::NoSelection;
    {
        AnswerFileDialog dialog(out, bare ? 2 : 1);
        AnswerYes yes;
        outcome = pak.SaveMember();
    }
    // The dialog may have given the name the filter's extension.
    const std::string written = CommonDialog().Filename().empty() ? out : CommonDialog().Filename();
    switch (outcome) {
        case PakMemberSave::Written:
            std::cout << written << "\n";
            return 0;
        case PakMemberSave::Unreadable:
            return PakFail(member + " lies beyond the end of " + path + "; nothing was written");
        case PakMemberSave::OpenFailed:
            return PakFail(written + ": could not be written: it can't be created there");
        case PakMemberSave::WriteFailed:
            return PakFail(written + ": could not be written whole (is the disk full?); an older file of that "
                                     "name stands as it was");
        default:
            return PakFail(written + ": could not be written: the save did not run");
    }
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
    FailOversizeWrites();
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
