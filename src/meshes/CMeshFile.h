#pragma once
// The game's mesh files, of both kinds ("msh" and "amh"): the strict test of
// their two headers, the report of a mesh in the main window's report pane,
// and its export as a DirectX text model.
#include <cstddef>
#include <cstdint>
#include <string>

#include "identify/CNerhaltFile.h"
#include "meshes/DirectXModel.h"
#include "meshes/MeshRecords.h"
#include "platform/Files.h"

inline constexpr int32_t kMeshSignature = 0x6E71;
inline constexpr int32_t kMeshFormatId = 0x00553C98;
inline constexpr int32_t kAMeshFormatId = 0x05463C98;
inline constexpr int32_t kMeshKindId = 0x7498;
inline constexpr int32_t kAMeshKindId = 0x6838;

// How an export ended. SaveAs tells its caller nothing; the command-line
// companion wants to know.
enum class MeshExport {
    NoFile,      // the object was never bound to a file
    Cancelled,   // the dialog was cancelled
    Declined,    // the user would not replace an existing file
    OpenFailed,  // the target could not be written
    WriteFailed, // the writing stopped part way; the lines so far stay
    Written,
};

class CMeshFile : public CNerhaltFile {
public:
    CMeshFile() = default;
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
    // Reads the body as the first Show or SaveAs does, unless it was read;
    // gives whether it is loaded.
    bool LoadBody();
    // The report's text. Raises error 7 when it would be longer than
    // `capacity`, and error 9 when the texture table was never allocated.
    std::string Report(size_t capacity) const;
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
    int32_t ReadLong(int32_t& field);
    int32_t ReadHeader(MeshFileHeader& header);
    bool ReadBody();
    template <class T>
    bool ReadTable(int32_t& count, MeshTable<T>& table, int64_t fileEnd);
    bool ReadTextureInfos(int64_t fileEnd);
    // Reads one counted text; false when the file ended inside it.
    bool ReadCountedText(MeshText& text);
    void WriteModel(const std::string& path, MeshExport& outcome) const;

    HFILE m_hFile = 0;
    int32_t m_hDesDC = 0;
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
