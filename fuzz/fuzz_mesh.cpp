// Reads a mesh of arbitrary bytes, writes its report into the report pane and
// makes its DirectX text, whose lines must stay ASCII and end in CR LF.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fixtures/ByteWriter.h"
#include "meshes/CMeshFile.h"
#include "shell/frmMain.h"

namespace {

// Counts that a tiny input can claim make texts of many megabytes; beyond this
// the text is left out so that each input stays quick.
constexpr int32_t kExportLimit = 20000;

void CheckModelText(std::string_view piece) {
    for (size_t i = 0; i < piece.size(); ++i) {
        auto c = static_cast<unsigned char>(piece[i]);
        if (c >= 0x7F || (c < 0x20 && c != '\r' && c != '\n')) std::abort();
        if (c == '\n' && (i == 0 || piece[i - 1] != '\r')) std::abort();
    }
    if (!piece.ends_with("\r\n")) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fixtures::TempDir dir;
    static frmMain form;
    // Alternating paths, so that every input is really read.
    static int round = 0;
    std::string path = dir / (round++ & 1 ? "a.msh" : "b.msh");
    fixtures::WriteFile(path, std::string(reinterpret_cast<const char*>(data), size));
    form.tReport.SetCapacity(64 * 1024);

    CMeshFile mesh;
    mesh.Initialize(path, 0, &form.oListView);
    mesh.Information();
    mesh.Show(0);
    mesh.Show(0);
    if (mesh.VertexCount() <= kExportLimit && mesh.PolygonCount() <= kExportLimit) {
        try {
            WriteDirectXModel(mesh.Geometry(), CheckModelText);
        } catch (const RuntimeError& e) {
            // Only a table that was never allocated stops the text.
            if (e.Number != vbErrSubscript) std::abort();
        }
    }
    return 0;
}
