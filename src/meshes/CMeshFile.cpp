#include "meshes/CMeshFile.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <new>

#include "identify/modGlobal.h"
#include "platform/LittleEndian.h"
#include "platform/MessageBox.h"
#include "platform/Runtime.h"
#include "winsupport/cCommonDialog.h"

namespace {

// What the report pane shows when the report can't be composed.
std::string OutOfMemoryText() { return std::string(kDirectXTextHeader) + "Out of memory !!!\r\n}\r\n"; }

void AppendNumber(std::string& text, int32_t value) {
    char digits[16];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

// Position of the file, or 0 where it can't be told; used only to judge how
// much of a table the rest of the file can fill, where 0 judges generously.
int64_t Position(HFILE h) {
    int32_t at = _llseek(h, 0, FILE_CURRENT);
    return at < 0 ? 0 : at;
}

}  // namespace

CMeshFile::~CMeshFile() {
    m_oLv = nullptr;
    if (m_hFile != 0) _lclose(m_hFile);
}

int32_t CMeshFile::ReadHeader(MeshFileHeader& header) {
    int32_t bytesRead = ReadLong(m_hFile, header.lSignature);
    bytesRead += ReadLong(m_hFile, header.lFormatId);
    bytesRead += ReadLong(m_hFile, header.lField2);
    bytesRead += ReadLong(m_hFile, header.lField3);
    bytesRead += ReadLong(m_hFile, header.lField4);
    bytesRead += ReadLong(m_hFile, header.lInnerOffset);
    bytesRead += ReadLong(m_hFile, header.lField6);
    return bytesRead;
}

bool CMeshFile::Initialize(const std::string& lpPathName, int32_t hDesDC, ListView* oLv) {
    m_oLv = oLv;
    m_hDesDC = hDesDC;
    if (lpPathName == m_sPathName) return true;
    m_sPathName = lpPathName;
    m_sFileName = GetFileName(lpPathName);
    m_sFileExt = GetFileExt(lpPathName);
    if (m_hFile != 0) _lclose(m_hFile);
    m_hFile = _lopen(lpPathName, OF_READ);
    if (m_hFile <= 0) return false;

    int32_t bytesRead = ReadHeader(m_tHeader);
    _llseek(m_hFile, m_tHeader.lInnerOffset, FILE_BEGIN);
    bytesRead += ReadHeader(m_tInnerHeader);

    // Stricter than the recogniser: the inner header must carry the kind that
    // goes with the outer format id.
    const bool kindsMatch = (m_tInnerHeader.lFormatId == kMeshKindId && m_tHeader.lFormatId == kMeshFormatId) ||
                            (m_tInnerHeader.lFormatId == kAMeshKindId && m_tHeader.lFormatId == kAMeshFormatId);
    m_bValid = bytesRead == 56 && m_tHeader.lSignature == kMeshSignature &&
               m_tInnerHeader.lSignature == kMeshSignature && kindsMatch;
    return m_bValid;
}

std::string CMeshFile::Information() { return m_bValid ? "Mesh File" : std::string(); }

// Reads a count and its table. A negative count, or one whose byte size
// overflows 32 signed bits, stops the body. Otherwise the table holds the
// indices 0 to count, and of these only the records that the rest of the file
// can fill are stored; the others read as zeros.
template <class T>
bool CMeshFile::ReadTable(int32_t& count, MeshTable<T>& table, int64_t fileEnd) {
    ReadLong(m_hFile, count);
    if (count < 0 || static_cast<int64_t>(count) * static_cast<int64_t>(sizeof(T)) > INT32_MAX) {
        table.Clear();
        return false;
    }
    const int64_t remaining = std::clamp<int64_t>(fileEnd - Position(m_hFile), 0, INT32_MAX);
    const int64_t fillable = (remaining + static_cast<int64_t>(sizeof(T)) - 1) / static_cast<int64_t>(sizeof(T));
    const auto stored = static_cast<size_t>(std::min<int64_t>(count, fillable));
    if (!PassOver([&] { table.Allocate(count, stored); })) {
        table.Clear();
        return false;
    }
    if (stored > 0) _lread(m_hFile, table.Storage(), static_cast<int32_t>(stored * sizeof(T)));
    return true;
}

bool CMeshFile::ReadCountedText(MeshText& text) {
    text.sText.clear();
    const bool lengthRead = ReadLong(m_hFile, text.lLength) == 4;
    if (text.lLength <= 0) return lengthRead;
    // The text grows with what the file really gives, so a length that runs
    // past the end of the file costs no memory for the part that isn't there.
    char chunk[4096];
    int32_t left = text.lLength;
    while (left > 0) {
        int32_t want = std::min<int32_t>(left, static_cast<int32_t>(sizeof chunk));
        int32_t n = _lread(m_hFile, chunk, want);
        if (n > 0) text.sText.append(chunk, static_cast<size_t>(n));
        if (n < want) return false;
        left -= n;
    }
    return lengthRead;
}

bool CMeshFile::ReadTextureInfos(int64_t fileEnd) {
    ReadLong(m_hFile, m_lTextureInfoCount);
    const int32_t count = m_lTextureInfoCount;
    if (count < 0 || static_cast<int64_t>(count) * kMeshTextureInfoMinSize > INT32_MAX) {
        m_aTextureInfos.Clear();
        return false;
    }
    const bool read = PassOver([&] {
        m_aTextureInfos.Allocate(count, 0);
        // Once the file has ended, every further record reads as zeros and is
        // left to the table's zero record.
        bool ended = Position(m_hFile) >= fileEnd;
        for (int32_t i = 0; i < count && !ended; ++i) {
            MeshTextureInfo info;
            ended = ReadLong(m_hFile, info.lHead) < 4;
            for (MeshText& text : info.aText)
                if (!ReadCountedText(text)) ended = true;
            if (_lread(m_hFile, info.abTail, sizeof info.abTail) != static_cast<int32_t>(sizeof info.abTail))
                ended = true;
            m_aTextureInfos.Store(std::move(info));
        }
    });
    if (!read) m_aTextureInfos.Clear();
    return read;
}

bool CMeshFile::ReadBody() {
    if (m_hFile == 0) return false;
    // An inner header so far out that the body's start overflows 32 bits has
    // no body that could be read.
    const int64_t start = static_cast<int64_t>(m_tHeader.lInnerOffset) + 28;
    if (start > INT32_MAX) return false;
    // The end of the file bounds what a table can hold. A file too large to be
    // measured with 32-bit positions can fill any table.
    int32_t end = _llseek(m_hFile, 0, FILE_END);
    const int64_t fileEnd = end < 0 ? INT64_MAX : end;
    _llseek(m_hFile, static_cast<int32_t>(start), FILE_BEGIN);

    if (!ReadTable(m_lVertexCount, m_aVertices, fileEnd)) return false;
    if (!ReadTable(m_lPolygonCount, m_aPolygons, fileEnd)) return false;
    if (!ReadTable(m_lTripleCount, m_aTriples, fileEnd)) return false;
    _llseek(m_hFile, 4, FILE_CURRENT);
    if (!ReadTable(m_lVectorCountA, m_aVectorsA, fileEnd)) return false;
    if (!ReadTable(m_lVectorCountB, m_aVectorsB, fileEnd)) return false;
    _llseek(m_hFile, 4, FILE_CURRENT);
    if (!ReadTable(m_lBlockCount, m_aBlocks, fileEnd)) return false;
    return ReadTextureInfos(fileEnd);
}

bool CMeshFile::LoadBody() {
    if (!m_bLoaded) m_bLoaded = ReadBody();
    return m_bLoaded;
}

std::string CMeshFile::Report(size_t capacity, TextFilter shown) const {
    std::string text = "Objects:\t1\r\nVertexes:\t";
    AppendNumber(text, m_lVertexCount);
    text += "\r\nPolygons:\t";
    AppendNumber(text, m_lPolygonCount);
    text += "\r\nTexture(s) information(s):";
    AppendNumber(text, m_lTextureInfoCount);
    text += "\r\n";
    static const char* const kLabels[4] = {" a) ", " b) ", " c) ", " d) "};
    // A text that runs past the end of the file goes on in zero characters.
    const std::string zero = shown != nullptr ? shown(std::string(1, '\0')) : std::string(1, '\0');
    for (int32_t i = 0; i < m_lTextureInfoCount; ++i) {
        const MeshTextureInfo& info = m_aTextureInfos(i);
        text += "Info# ";
        AppendNumber(text, i);
        text += "\r\n";
        for (int k = 0; k < 4; ++k) {
            const MeshText& entry = info.aText[k];
            const std::string own = shown != nullptr ? shown(entry.sText) : std::string();
            const std::string& part = shown != nullptr ? own : entry.sText;
            // The pane can't take more than its capacity; stopping here spares
            // building a text that it would refuse anyway.
            if (text.size() + part.size() + entry.Padding() * zero.size() > capacity) RaiseError(vbErrOutOfMemory);
            text += kLabels[k];
            text += part;
            if (zero.size() == 1) {
                text.append(entry.Padding(), zero[0]);
            } else {
                for (size_t n = entry.Padding(); n > 0; --n) text += zero;
            }
            text += "\r\n";
        }
    }
    if (text.size() > capacity) RaiseError(vbErrOutOfMemory);
    return text;
}

std::string CMeshFile::ReportText(size_t capacity, TextFilter shown) {
    LoadBody();
    try {
        return Report(capacity, shown);
    } catch (const std::exception&) {
        return OutOfMemoryText();
    }
}

bool CMeshFile::Show(int32_t hDesDC) {
    if (m_hFile == 0) return false;
    TextBox& pane = host_.ReportPane();
    try {
        pane.SetText(ReportText(pane.Capacity()));
    } catch (const std::exception&) {
        try {
            pane.SetText(OutOfMemoryText());
        } catch (const std::exception&) {
        }
    }
    return false;
}

MeshGeometry CMeshFile::Geometry() const {
    MeshGeometry mesh;
    mesh.lVertexCount = m_lVertexCount;
    mesh.aVertices = &m_aVertices;
    mesh.lPolygonCount = m_lPolygonCount;
    mesh.aPolygons = &m_aPolygons;
    return mesh;
}

// ---- Export -----------------------------------------------------------------

namespace {

// The export's target, from the shared save dialog. Raises the dialog's
// failure 20001 when the user cancels.
std::string ChooseTarget(const std::string& sFileName, int32_t hOwner) {
    cCommonDialog& dialog = CommonDialog();
    // The path must exist; nothing else, so that the replace question is ours.
    dialog.Setflags(static_cast<int32_t>(OFN_PATHMUSTEXIST));
    dialog.SetFilter("Direct X Model (*.x)|*.x");
    dialog.Sethwnd(hOwner);
    dialog.SetCancelError(true);
    dialog.SetFilename(sFileName);
    dialog.SetFilterIndex(1);
    dialog.ShowSave();
    return dialog.Filename();
}

}  // namespace

std::string ExportSizeQuestion(int64_t megabytes) {
    return "This export will write " + std::to_string(megabytes) + " MB. Continue?";
}

// Writes the model through a replacement: the file takes its final name at
// the close, and only when every write succeeded. A failure throws it away and
// leaves an older file as it was.
MeshExport CMeshFile::WriteModel(const std::string& path) const {
    int16_t number = 0;
    if (!PassOver([&] {
            number = FreeFile();
            VbOpen(number, path, VbOpenMode::Output);
        }))
        return MeshExport::OpenFailed;
    try {
        WriteDirectXModel(Geometry(), [number](std::string_view piece) { VbPut(number, std::string(piece)); });
    } catch (const std::exception&) {
        VbDiscard(number);
        return MeshExport::WriteFailed;
    }
    return PassOver([&] { VbClose(number); }) ? MeshExport::Written : MeshExport::WriteFailed;
}

int64_t CMeshFile::ExportSize() {
    LoadBody();
    return DirectXModelSize(Geometry());
}

MeshExport CMeshFile::ExportModel() {
    if (m_hFile == 0) return MeshExport::NoFile;
    LoadBody();
    const MeshGeometry geometry = Geometry();
    // Counts that run far past the end of the file give gigabytes of zero
    // records. The user is asked before such an export; the bound spares
    // measuring every ordinary model.
    if (DirectXModelSizeBound(geometry) > kExportQuestionMegabytes * kMegabyte) {
        const int64_t megabytes = ExportMegabytes(DirectXModelSize(geometry));
        // A question that can't be asked is a No.
        int32_t answer = vbNo;
        if (megabytes > kExportQuestionMegabytes &&
            (!PassOver([&] { answer = MsgBox(ExportSizeQuestion(megabytes), vbYesNo | vbQuestion); }) || answer == vbNo))
            return MeshExport::SizeDeclined;
    }
    std::string path;
    if (!PassOver([&] { path = ChooseTarget(m_sFileName, host_.OwnerWindow()); }))
        return MeshExport::Cancelled;
    // The old file goes only when the new one takes its name.
    if (FileExists(path)) {
        int32_t answer = vbNo;
        if (!PassOver([&] { answer = MsgBox(path + " already exist.\r\nDo you want to replace it?", vbYesNo); }) ||
            answer == vbNo)
            return MeshExport::Declined;
    }
    // A table that the body could not give would cut the model short, and a
    // model cut short never takes the place of a file.
    if (!DirectXModelComplete(geometry)) return MeshExport::TableUnreadable;
    return WriteModel(path);
}

bool CMeshFile::SaveAs() {
    ExportModel();
    return false;
}
