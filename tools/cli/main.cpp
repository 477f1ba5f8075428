// quarrin-cli: the browser's logic without a window. It runs the main window's
// handlers on a window that is never shown and prints what they leave in the
// status bar, the offers and the report pane.
#include <unistd.h>

#include <QtGlobal>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "CliSupport.h"
#include "Commands.h"
#include "QtPictureService.h"
#include "hexview/CBINFile.h"
#include "hexview/HexPage.h"
#include "identify/modGlobal.h"
#include "pak/ZipWrapper.h"
#include "platform/Files.h"
#include "platform/Runtime.h"
#include "shell/frmMain.h"

namespace {

const char kUsage[] =
    "Usage: quarrin-cli COMMAND ...\n"
    "\n"
    "  select PATH                 what selecting PATH in the file list shows: its kind,\n"
    "                              the two status panels, the offers and the report pane\n"
    "  preview PATH                the same after the preview (double click) of PATH\n"
    "  hex PATH [--page N]         the text of hex page N (from 0) of PATH\n"
    "  pak list PATH               the members of a PAK, in directory order\n"
    "  pak save PATH INDEX OUT [--bare]\n"
    "                              saves member INDEX (from 1) as a ZIP wrapper, or\n"
    "                              with --bare as the bare stream\n"
    "  pak unpak PATH DEST [--files PATTERN | --selected I,J,...] [--run]\n"
    "                              unpacks members into DEST as the Unpak dialog does\n"
    "  mesh report PATH            the report of a mesh\n"
    "  mesh export PATH OUT        writes a mesh as a DirectX text model\n"
    "  wave info PATH              the format, the data chunk and the buffer size of a wave\n"
    "  wave play PATH [--null] [--fast] [--trace] [--buffer SECONDS]\n"
    "                              plays a wave on the default output or the null device\n"
    "  picture PATH OUT [--gray | --invert | --fade N | --lightness PERCENT]\n"
    "                              previews PATH and writes what the picture pane shows:\n"
    "                              a 24-bit BMP, or a PNG when OUT ends in .png (a Planar\n"
    "                              Bitmap without an option keeps its palette and indices);\n"
    "                              the options change a Planar Bitmap's colour table first\n"
    "  layout WIDTHxHEIGHT [--picture WxH]\n"
    "                              the panes of a window of that outer size in pixels,\n"
    "                              in twips, and the picture pane's bars for a picture\n"
    "                              of that size\n"
    "  --help                      this text\n";

int Fail(const std::string& message) { return CliFail(message); }

const char* KindName(int32_t kind) {
    switch (kind) {
        case fkText: return "fkText";
        case fkPicture: return "fkPicture";
        case fkGame: return "fkGame";
        default: return "fkNone";
    }
}

void PrintState(frmMain& form) {
    auto onOff = [](bool b) { return b ? "on" : "off"; };
    std::cout << "kind=" << KindName(form.m_lFileKind) << "\n"
              << "panel1=" << form.oStatusBar.Panels(1).Text << "\n"
              << "panel2=" << form.oStatusBar.Panels(2).Text << "\n"
              << "save=" << onOff(form.SaveOffered()) << "\n"
              << "show=" << onOff(form.ShowOffered()) << "\n"
              << "extract=" << onOff(form.ExtractOffered()) << "\n"
              << "report:\n"
              << form.tReport.Text();
    std::cout.flush();
}

int RunSelect(const std::vector<std::string>& args, bool preview) {
    if (args.size() != 1) return Fail(std::string(preview ? "preview" : "select") + " takes one PATH");
    std::string why;
    if (!CheckReadableFile(args[0], why)) return Fail(why);
    frmMain form;
    if (!SelectFile(form, args[0], why)) return Fail(why);
    if (preview) form.oFile_DblClick();
    PrintState(form);
    return 0;
}

int RunHex(const std::vector<std::string>& args) {
    std::string path;
    int64_t page = 0;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--page") {
            if (i + 1 >= args.size()) return Fail("--page needs a number");
            if (!PassOver([&] { page = VbCLng(args[++i]); }))
                return Fail("--page needs a number, not '" + args[i] + "'");
        } else if (path.empty()) {
            path = args[i];
        } else {
            return Fail("hex takes one PATH");
        }
    }
    if (path.empty()) return Fail("hex takes a PATH");
    std::string why;
    if (!CheckReadableFile(path, why)) return Fail(why);
    frmMain form;
    form.m_oBinFile = std::make_unique<CBINFile>(form);
    if (!form.m_oBinFile->Initialize(path, 0, &form.oListView)) return Fail(path + ": cannot be opened");
    form.m_oBinFile->Show(0);
    int32_t last = HexLastPage(form.m_oBinFile->FileLength());
    if (page < 0 || page > last)
        return Fail("page " + std::to_string(page) + " is outside 0 to " + std::to_string(last) + " for " + path);
    // A new Value repaints the page through the scroll bar's change event.
    if (page != 0) form.oVScroll.SetValue(static_cast<int32_t>(page));
    std::cout << form.tReport.Text() << "\n";
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    App::Init(argv[0]);
    const QtPictureLoader pictures;
    // Qt's image readers report damaged files on standard error themselves;
    // the command says it in its own one line.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    FillZipTemplates();
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty()) {
        std::cerr << kUsage;
        return 1;
    }
    const std::string command = args[0];
    std::vector<std::string> rest(args.begin() + 1, args.end());
    if (command == "--help" || command == "-h" || command == "help") {
        std::cout << kUsage;
        return 0;
    }
    try {
        if (command == "select") return RunSelect(rest, false);
        if (command == "preview") return RunSelect(rest, true);
        if (command == "hex") return RunHex(rest);
        if (command == "pak") return CliPak(rest);
        if (command == "mesh") return CliMesh(rest);
        if (command == "wave") return CliWave(rest);
        if (command == "picture") return CliPicture(rest);
        if (command == "layout") return CliLayout(rest);
    } catch (const RuntimeError& e) {
        return Fail(e.Description);
    } catch (const std::exception& e) {
        return Fail(e.what());
    }
    std::cerr << "quarrin-cli: unknown command '" << command << "'\n\n" << kUsage;
    return 1;
}
