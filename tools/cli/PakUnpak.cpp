// quarrin-cli pak unpak: the batch run of the Unpak dialog without a window.
#include <iostream>
#include <string>
#include <vector>

#include "CliSupport.h"
#include "Commands.h"
#include "controls/ListView.h"
#include "identify/modGlobal.h"
#include "pak/BatchScript.h"
#include "pak/MemberPath.h"
#include "pak/frmScript.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "platform/Runtime.h"
#include "platform/Shell.h"
#include "shell/frmMain.h"

namespace {

int Fail(const std::string& message) { return CliFail(message); }

// Message boxes of the dialog go to standard error.
class StderrBoxes : public IMessageBoxService {
public:
    int32_t Show(const std::string& prompt, int32_t buttons, const std::string& title) override {
        std::cerr << "quarrin-cli: " << (title.empty() ? "" : title + ": ") << PrintableLine(VbReplace(prompt, "\r\n", " ")) << "\n";
        ++count;
        return vbOK;
    }
    int count = 0;
};

bool ParseIndices(const std::string& text, std::vector<int32_t>& out) {
    size_t pos = 0;
    while (pos <= text.size()) {
        size_t comma = text.find(',', pos);
        std::string part = text.substr(pos, comma == std::string::npos ? std::string::npos : comma - pos);
        if (!PassOver([&] { out.push_back(VbCLng(part)); })) return false;
        if (comma == std::string::npos) break;
        pos = comma + 1;
    }
    return !out.empty();
}

}  // namespace

int CliPakUnpak(const std::vector<std::string>& args) {
    std::string pak, dest, pattern;
    std::vector<int32_t> selected;
    bool hasPattern = false, hasSelected = false, run = false;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--files" && i + 1 < args.size()) {
            pattern = args[++i];
            hasPattern = true;
        } else if (args[i] == "--selected" && i + 1 < args.size()) {
            if (!ParseIndices(args[++i], selected)) return Fail("--selected takes item numbers such as 1,3,4");
            hasSelected = true;
        } else if (args[i] == "--run") {
            run = true;
        } else if (pak.empty()) {
            pak = args[i];
        } else if (dest.empty()) {
            dest = args[i];
        } else {
            return Fail("pak unpak takes PATH DEST [--files PATTERN | --selected I,J,...] [--run]");
        }
    }
    if (pak.empty() || dest.empty()) return Fail("pak unpak takes PATH DEST");
    if (hasPattern && hasSelected) return Fail("--files and --selected exclude each other");
    if (!IsDirectory(dest)) return Fail(dest + ": no such folder");

    frmMain main;
    // Select and preview the PAK as the user does: its members fill the list.
    std::string absolute = NormaliseFolder(pak);
    try {
        main.oDir.SetPath(GetFolderName(absolute));
    } catch (const RuntimeError& e) {
        return Fail(pak + ": " + e.Description);
    }
    if (!main.oFile.Select(GetFileName(absolute))) return Fail(pak + ": cannot be opened");
    main.oFile_DblClick();
    if (!main.ExtractOffered() || !main.oListView.Visible()) return Fail(pak + ": not a PAK archive");

    const auto& items = main.oListView.ItemsInAddOrder();
    for (int32_t index : selected) {
        if (index < 1 || index > static_cast<int32_t>(items.size()))
            return Fail("item " + std::to_string(index) + " is outside 1 to " + std::to_string(items.size()));
        items[static_cast<size_t>(index) - 1]->Selected = true;
    }

    if (VbTrim(g_sPkzipPath).empty()) g_sPkzipPath = App::Path() + g_sPathSep + "quarrin-pkzip";
    std::string destFolder = NormaliseFolder(dest);
    g_sShortCutPath = destFolder;

    StderrBoxes boxes;
    SetMessageBoxService(&boxes);
    int32_t started = 0;
    std::string script;
    frmScript form(main);
    // The command file is carried out here and waited for, or only written.
    form.StartCommandFile = [&](const std::string& scriptPath, const std::string& folder) {
        script = scriptPath;
        if (!run) return;
        std::string error;
        started = RunProgram({App::Path() + g_sPathSep + "quarrin-runbat", scriptPath}, folder, error);
        if (started < 0) std::cerr << "quarrin-cli: " << error << "\n";
    };
    // A member that could not be written (a refused name, a full disk) is
    // a failed write: named here, and the exit status is 1.
    int32_t notWritten = 0;
    form.MemberNotWritten = [&](const std::string& name) {
        const std::string target = MemberPath(destFolder + g_sPathSep, name);
        std::cerr << "quarrin-cli: " << PrintableLine(target.empty() ? name : target) << ": not written\n";
        ++notWritten;
    };
    form.Form_Load();
    form.Form_Activate();
    if (form.IsUnloaded()) {
        SetMessageBoxService(nullptr);
        return 1;
    }
    form.oDirFld.SetPath(destFolder);
    if (hasPattern) {
        form.tSel.SetText(pattern);
    } else if (hasSelected) {
        form.OptSel[1].SetValue(true);
    } else {
        form.OptSel[0].SetValue(true);
    }
    form.cmdValidate_Click(1);
    SetMessageBoxService(nullptr);
    if (boxes.count != 0 || script.empty()) return 1;
    std::cout << script << "\n";
    return (run && started != 0) || notWritten != 0 ? 1 : 0;
}
