// Reads a mesh of arbitrary bytes, writes its report into the report pane and
// makes its DirectX text, whose lines must stay ASCII and end in CR LF.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "FuzzFile.h"
#include "meshes/CMeshFile.h"
#include "identify/IFileHost.h"

namespace {

// Counts that a tiny input can claim make texts of many megabytes, nearly all
// of it records that read as zeros and give the same lines again; beyond this
// the text is left out so that each input stays quick. It is still well past
// the records that an input of the fuzzer's sizes can fill.
constexpr int32_t kExportLimit = 512;

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
    static FuzzFilePair files;
    static FileHost host;
    const std::string& path = files.Write(data, size);
    // A small pane: the report of a long table stops at the pane's end, which
    // is reached with inputs of a few hundred bytes.
    host.tReport.SetCapacity(8 * 1024);

    CMeshFile mesh(host);
    mesh.Initialize(path, 0, &host.oListView);
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
