#pragma once
// The game's mesh files, of both kinds ("msh" and "amh"): the strict test of
// their two headers, the report of a mesh in the main window's report pane,
// and its export as a DirectX text model.
#include <cstddef>
#include <cstdint>
#include <string>

#include "identify/CNerhaltFile.h"
#include "identify/IFileHost.h"
#include "meshes/DirectXModel.h"
#include "meshes/MeshRecords.h"
#include "platform/Files.h"

inline constexpr int32_t kMeshSignature = 0x6E71;
inline constexpr int32_t kMeshFormatId = 0x00553C98;
inline constexpr int32_t kAMeshFormatId = 0x05463C98;
inline constexpr int32_t kMeshKindId = 0x7498;
inline constexpr int32_t kAMeshKindId = 0x6838;

// How an export ended. SaveAs tells its caller nothing; the command-line
// companion wants to know. Only Written changes the disk: the model is
// written under a temporary name and takes the place of an older file only
// when it is whole.
enum class MeshExport {
    NoFile,          // the object was never bound to a file
    SizeDeclined,    // the user would not have an export that large
    Cancelled,       // the dialog was cancelled
    Declined,        // the user would not replace an existing file
    TableUnreadable, // a table of the mesh could not be read, so the model can't be whole
    OpenFailed,      // the target could not be created
    WriteFailed,     // the target could not be written whole (a full disk)
    Written,
};

// An export larger than this asks the user first. A megabyte here is
// 1,000,000 bytes, as disks and file managers count them.
inline constexpr int64_t kMegabyte = 1000000;
inline constexpr int64_t kExportQuestionMegabytes = 256;
// Megabytes of an export of `bytes`, rounded up, so that an export just above
// the limit is told as above it.
constexpr int64_t ExportMegabytes(int64_t bytes) { return (bytes + kMegabyte - 1) / kMegabyte; }
// The question asked before an export of that many megabytes.
std::string ExportSizeQuestion(int64_t megabytes);

class CMeshFile : public CNerhaltFile {
public:
    explicit CMeshFile(IFileHost& host) : host_(host) {}
    ~CMeshFile() override;
    CMeshFile(const CMeshFile&) = delete;
    CMeshFile& operator=(const CMeshFile&) = delete;

    bool Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) override;
    // Asks for a target and writes the model; the answer is always false.
    bool SaveAs() override;
    std::string Information() override;
    // Writes the report into the main window's report pane; always false.
    bool Show(int32_t hDesDC) override;
    int32_t Width() override { return -1; }
    int32_t Height() override { return -1; }

    // SaveAs, with the way it ended.
    MeshExport ExportModel();
    // Length in bytes of the model that an export writes now, or -1 when a
    // table that it needs could not be read. Loads the body first.
    int64_t ExportSize();
    // Reads the body as the first Show or SaveAs does, unless it was read;
    // gives whether it is loaded.
    bool LoadBody();
    // How a text of the file goes into the report: as it stands (nullptr), or
    // changed, say made printable for a terminal.
    using TextFilter = std::string (*)(const std::string&);
    // The report's text. Raises error 7 when it would be longer than
    // `capacity`, and error 9 when the texture table was never allocated.
    std::string Report(size_t capacity, TextFilter shown = nullptr) const;
    // The report as Show writes it, the body loaded first: the text that
    // stands in for a report that can't be composed included.
    std::string ReportText(size_t capacity, TextFilter shown = nullptr);
    // What the export writes: the vertex and polygon counts and tables.
    MeshGeometry Geometry() const;
    std::string VertexLine(int32_t i) const { return ::VertexLine(Geometry(), i); }
    std::string FaceLine(int32_t i) const { return ::FaceLine(Geometry(), i); }

    bool Valid() const { return m_bValid; }
    bool Loaded() const { return m_bLoaded; }
    const std::string& FileName() const { return m_sFileName; }
    const MeshFileHeader& Header() const { return m_tHeader; }
    const MeshFileHeader& InnerHeader() const { return m_tInnerHeader; }
    int32_t VertexCount() const { return m_lVertexCount; }
    int32_t PolygonCount() const { return m_lPolygonCount; }
    int32_t TripleCount() const { return m_lTripleCount; }
    int32_t VectorCountA() const { return m_lVectorCountA; }
    int32_t VectorCountB() const { return m_lVectorCountB; }
    int32_t BlockCount() const { return m_lBlockCount; }
    int32_t TextureInfoCount() const { return m_lTextureInfoCount; }
    const MeshTable<MeshVertex>& Vertices() const { return m_aVertices; }
    const MeshTable<MeshPolygon>& Polygons() const { return m_aPolygons; }
    const MeshTable<MeshIndexTriple>& Triples() const { return m_aTriples; }
    const MeshTable<MeshVector>& VectorsA() const { return m_aVectorsA; }
    const MeshTable<MeshVector>& VectorsB() const { return m_aVectorsB; }
    const MeshTable<MeshBlock24>& Blocks() const { return m_aBlocks; }
    const MeshTable<MeshTextureInfo>& TextureInfos() const { return m_aTextureInfos; }

private:
    int32_t ReadHeader(MeshFileHeader& header);
    bool ReadBody();
    template <class T>
    bool ReadTable(int32_t& count, MeshTable<T>& table, int64_t fileEnd);
    bool ReadTextureInfos(int64_t fileEnd);
    // Reads one counted text; false when the file ended inside it.
    bool ReadCountedText(MeshText& text);
    MeshExport WriteModel(const std::string& path) const;

    HFILE m_hFile = 0;
    int32_t m_hDesDC = 0;
    IFileHost& host_;
    ListView* m_oLv = nullptr;
    std::string m_sPathName;
    bool m_bValid = false;
    bool m_bLoaded = false;
    MeshFileHeader m_tHeader;
    MeshFileHeader m_tInnerHeader;
    int32_t m_lVertexCount = 0;
    MeshTable<MeshVertex> m_aVertices;
    int32_t m_lPolygonCount = 0;
    MeshTable<MeshPolygon> m_aPolygons;
    int32_t m_lTripleCount = 0;
    MeshTable<MeshIndexTriple> m_aTriples;
    int32_t m_lVectorCountA = 0;
    MeshTable<MeshVector> m_aVectorsA;
    int32_t m_lVectorCountB = 0;
    MeshTable<MeshVector> m_aVectorsB;
    int32_t m_lBlockCount = 0;
    MeshTable<MeshBlock24> m_aBlocks;
    int32_t m_lTextureInfoCount = 0;
    MeshTable<MeshTextureInfo> m_aTextureInfos;
    std::string m_sFileName;
    std::string m_sFileExt;
};
