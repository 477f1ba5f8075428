// quarrin-cli mesh: the report of a mesh, and its export as a DirectX text
// model, with the user's answers played by the command line.
#include <iostream>
#include <string>
#include <vector>

#include "CliSupport.h"
#include "Commands.h"
#include "identify/modGlobal.h"
#include "meshes/CMeshFile.h"
#include "platform/FileDialogs.h"
#include "platform/Files.h"
#include "platform/MessageBox.h"
#include "identify/IFileHost.h"
#include "winsupport/cCommonDialog.h"

namespace {

const char kMeshUsage[] =
    "usage: quarrin-cli mesh report PATH\n"
    "       quarrin-cli mesh export PATH OUT [--force]\n";

int MeshFail(const std::string& message) { return CliFail(message); }

// Binds the mesh object to a path; false with the reason when it isn't a mesh.
bool OpenMesh(CMeshFile& mesh, FileHost& form, const std::string& path, std::string& why) {
    if (!CheckReadableFile(path, why)) return false;
    if (!mesh.Initialize(path, 0, &form.oListView)) {
        why = path + ": is not a mesh file";
        return false;
    }
    return true;
}

int MeshReport(const std::string& path) {
    FileHost form;
    CMeshFile mesh{form};
    std::string why;
    if (!OpenMesh(mesh, form, path, why)) return MeshFail(why);
    // The texts of the texture records are names from the file: a terminal
    // gets them made printable.
    if (StdoutIsTerminal()) {
        std::cout << mesh.ReportText(form.tReport.Capacity(), ShownName);
    } else {
        mesh.Show(0);
        std::cout << form.tReport.Text();
    }
    std::cout.flush();
    return 0;
}

int MeshExportCommand(const std::string& path, const std::string& out, bool force) {
    FileHost form;
    CMeshFile mesh{form};
    std::string why;
    if (!OpenMesh(mesh, form, path, why)) return MeshFail(why);
    AnswerFileDialog chooser(out, 1);
    // The question before a large export is answered Yes only with --force.
    AnswerYes yes(force);
    MeshExport outcome = mesh.ExportModel();
    // The dialog appends the extension of its filter to a name without it.
    const std::string written = CommonDialog().Filename().empty() ? out : CommonDialog().Filename();
    switch (outcome) {
        case MeshExport::Written:
            std::cout << written << "\n";
            return 0;
        case MeshExport::SizeDeclined:
            return MeshFail(path + ": the export would write " + std::to_string(ExportMegabytes(mesh.ExportSize())) +
                            " MB (of 1,000,000 bytes), more than " + std::to_string(kExportQuestionMegabytes) +
                            " MB; nothing was written; give --force to write it");
        case MeshExport::OpenFailed:
            return MeshFail(written + ": cannot be written");
        case MeshExport::WriteFailed:
            return MeshFail(written + ": could not be written whole (is the disk full?); an older file of that "
                                      "name stands as it was");
        case MeshExport::TableUnreadable:
            return MeshFail(path + ": has a table that cannot be read; nothing was written");
        default:
            return MeshFail(path + ": the export did not run");
    }
}

}  // namespace

int CliMesh(const std::vector<std::string>& args) {
    FailOversizeWrites();
    if (args.size() == 2 && args[0] == "report") return MeshReport(args[1]);
    if (!args.empty() && args[0] == "export") {
        std::vector<std::string> positional;
        bool force = false;
        for (size_t i = 1; i < args.size(); ++i) {
            if (args[i] == "--force") {
                force = true;
            } else {
                positional.push_back(args[i]);
            }
        }
        if (positional.size() == 2) return MeshExportCommand(positional[0], positional[1], force);
    }
    std::cerr << kMeshUsage;
    return 1;
}
