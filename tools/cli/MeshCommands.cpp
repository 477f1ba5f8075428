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
#include "shell/frmMain.h"
#include "winsupport/cCommonDialog.h"

namespace {

const char kMeshUsage[] =
    "usage: quarrin-cli mesh report PATH\n"
    "       quarrin-cli mesh export PATH OUT\n";

int MeshFail(const std::string& message) { return CliFail(message); }

// Binds the mesh object to a path; false with the reason when it isn't a mesh.
bool OpenMesh(CMeshFile& mesh, frmMain& form, const std::string& path, std::string& why) {
    if (!CheckReadableFile(path, why)) return false;
    if (!mesh.Initialize(path, 0, &form.oListView)) {
        why = path + ": is not a mesh file";
        return false;
    }
    return true;
}

int MeshReport(const std::string& path) {
    frmMain form;
    CMeshFile mesh;
    std::string why;
    if (!OpenMesh(mesh, form, path, why)) return MeshFail(why);
    mesh.Show(0);
    std::cout << form.tReport.Text();
    std::cout.flush();
    return 0;
}

int MeshExportCommand(const std::string& path, const std::string& out) {
    frmMain form;
    CMeshFile mesh;
    std::string why;
    if (!OpenMesh(mesh, form, path, why)) return MeshFail(why);
    AnswerFileDialog chooser(out, 1);
    AnswerYes yes;
    MeshExport outcome = mesh.ExportModel();
    // The dialog appends the extension of its filter to a name without it.
    const std::string written = CommonDialog().Filename();
    switch (outcome) {
        case MeshExport::Written:
            std::cout << written << "\n";
            return 0;
        case MeshExport::OpenFailed:
            return MeshFail(written + ": cannot be written");
        case MeshExport::WriteFailed:
            return MeshFail(written + ": the model could not be written whole (" + path +
                            " has a table that cannot be read)");
        default:
            return MeshFail(path + ": the export did not run");
    }
}

}  // namespace

int CliMesh(const std::vector<std::string>& args) {
    if (args.size() == 2 && args[0] == "report") return MeshReport(args[1]);
    if (args.size() == 3 && args[0] == "export") return MeshExportCommand(args[1], args[2]);
    std::cerr << kMeshUsage;
    return 1;
}
