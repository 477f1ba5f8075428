#include "meshes/DirectXModel.h"

#include <algorithm>
#include <charconv>
#include <cmath>

const char kDirectXTextHeader[] = "xof 0302txt 0032\r\nHeader {\r\n 1;\r\n 0;\r\n 1;\r\n}\r\n";

char* FormatSingleTo(char* out, float value) {
    // Negative zero is written as zero: a model has no use for the sign.
    if (value == 0.0f) {
        *out = '0';
        return out + 1;
    }
    // Whole values of up to seven digits are the common case (every polygon
    // index is one), and their text is the integer's.
    if (std::fabs(value) < 1e7f && value == std::trunc(value))
        return std::to_chars(out, out + kFormatSingleMax, static_cast<int32_t>(value)).ptr;
    // to_chars follows the C locale's general format whatever the locale is:
    // exponent form for a decimal exponent below -4 or of 7 and more.
    auto result = std::to_chars(out, out + kFormatSingleMax, value, std::chars_format::general, 7);
    for (char* p = out; p != result.ptr; ++p)
        if (*p == 'e') *p = 'E';
    return result.ptr;
}

std::string FormatSingle(float value) {
    char buffer[kFormatSingleMax];
    return std::string(buffer, FormatSingleTo(buffer, value));
}

namespace {

// Room for one vertex or polygon line with its ending and CR LF.
constexpr size_t kLineMax = 3 * kFormatSingleMax + 16;

char* PutVertexLine(char* p, const MeshGeometry& mesh, int32_t i) {
    if (mesh.aVertices == nullptr) RaiseError(vbErrSubscript);
    const MeshVertex& v = (*mesh.aVertices)(i);
    p = FormatSingleTo(p, v.x);
    *p++ = ';';
    p = FormatSingleTo(p, v.y);
    *p++ = ';';
    p = FormatSingleTo(p, v.z);
    *p++ = ';';
    *p++ = i + 1 == mesh.lVertexCount ? ';' : ',';
    return p;
}

char* PutFaceLine(char* p, const MeshGeometry& mesh, int32_t i) {
    if (mesh.aPolygons == nullptr) RaiseError(vbErrSubscript);
    const MeshPolygon& f = (*mesh.aPolygons)(i);
    *p++ = '3';
    *p++ = ';';
    p = FormatSingleTo(p, static_cast<float>(f.iVertex0));
    *p++ = ',';
    p = FormatSingleTo(p, static_cast<float>(f.iVertex1));
    *p++ = ',';
    p = FormatSingleTo(p, static_cast<float>(f.iVertex2));
    *p++ = ';';
    *p++ = i + 1 == mesh.lPolygonCount ? ';' : ',';
    return p;
}

// Gathers lines and hands them to the sink in pieces of about 64 KiB.
class ModelBuffer {
public:
    explicit ModelBuffer(const TextSink& sink) : m_sink(sink) { m_sText.reserve(kPiece + kLineMax); }

    void Text(std::string_view text) {
        m_sText.append(text);
        if (m_sText.size() >= kPiece) Flush();
    }
    void Line(std::string_view text) {
        m_sText.append(text);
        m_sText.append("\r\n", 2);
        if (m_sText.size() >= kPiece) Flush();
    }
    // A count and ";", with the prefix in front.
    void CountLine(std::string_view prefix, int32_t count) {
        char digits[16];
        char* end = std::to_chars(digits, digits + sizeof digits, count).ptr;
        m_sText.append(prefix);
        m_sText.append(digits, end);
        m_sText.append(";\r\n", 3);
    }
    template <class Put>
    void Record(Put put, const MeshGeometry& mesh, int32_t i) {
        char line[kLineMax];
        char* end = put(line, mesh, i);
        *end++ = '\r';
        *end++ = '\n';
        m_sText.append(line, end);
        if (m_sText.size() >= kPiece) Flush();
    }
    // Lines 0 to count - 1 of a table.
    template <class Put>
    void Records(Put put, const MeshGeometry& mesh, int32_t count, size_t) {
        for (int32_t i = 0; i < count; ++i) Record(put, mesh, i);
    }
    // The same line `times` times.
    void Repeat(std::string_view text, int64_t times) {
        for (int64_t i = 0; i < times; ++i) Line(text);
    }
    // Hands over what has gathered. The buffer is emptied first, so a sink that
    // fails is not given the same lines again.
    void Flush() {
        if (m_sText.empty()) return;
        std::string piece;
        piece.swap(m_sText);
        m_sText.reserve(kPiece + kLineMax);
        m_sink(piece);
    }

private:
    static constexpr size_t kPiece = 64 * 1024;
    const TextSink& m_sink;
    std::string m_sText;
};

// Counts the bytes of the model instead of making them. The records that a
// table stores are measured one by one; the zero records behind them all have
// the length of one of them.
class ModelSize {
public:
    void Text(std::string_view text) { m_lSize += static_cast<int64_t>(text.size()); }
    void Line(std::string_view text) { m_lSize += static_cast<int64_t>(text.size()) + 2; }
    void CountLine(std::string_view prefix, int32_t count) {
        char digits[16];
        m_lSize += static_cast<int64_t>(prefix.size()) + (std::to_chars(digits, digits + sizeof digits, count).ptr - digits) + 3;
    }
    template <class Put>
    void Records(Put put, const MeshGeometry& mesh, int32_t count, size_t stored) {
        if (count <= 0) return;
        char line[kLineMax];
        const int32_t measured = static_cast<int32_t>(std::min<size_t>(stored, static_cast<size_t>(count)));
        for (int32_t i = 0; i < measured; ++i) m_lSize += (put(line, mesh, i) - line) + 2;
        if (measured < count)
            m_lSize += static_cast<int64_t>(count - measured) * ((put(line, mesh, count - 1) - line) + 2);
    }
    void Repeat(std::string_view text, int64_t times) {
        if (times > 0) m_lSize += times * (static_cast<int64_t>(text.size()) + 2);
    }
    int64_t Size() const { return m_lSize; }

private:
    int64_t m_lSize = 0;
};

template <class T>
size_t StoredCount(const MeshTable<T>* table) {
    return table == nullptr ? 0 : table->StoredCount();
}

template <class Out>
void WriteSections(const MeshGeometry& mesh, Out& out) {
    out.Text(kDirectXTextHeader);
    out.Line("");
    out.Line("Mesh  {");
    out.CountLine("", mesh.lVertexCount);
    out.Records(PutVertexLine, mesh, mesh.lVertexCount, StoredCount(mesh.aVertices));
    out.Line("");
    out.CountLine("", mesh.lPolygonCount);
    out.Records(PutFaceLine, mesh, mesh.lPolygonCount, StoredCount(mesh.aPolygons));
    out.Line("MeshMaterialList {");
    out.Line("  1;");
    out.CountLine(" ", mesh.lPolygonCount);
    // Every polygon points at the one material.
    out.Repeat("  0,", static_cast<int64_t>(mesh.lPolygonCount) - 1);
    out.Line("  0;");
    out.Line("Material {");
    out.Line(" 1.0;1.0;1.0;1.0;;");
    out.Line(" 50.0;");
    out.Line(" 1.0;1.0;1.0;;");
    out.Line(" 0.0;0.0;0.0;;");
    out.Line(" }");
    out.Line("");
    out.Line("}");
    out.Line("}");
}

}  // namespace

std::string VertexLine(const MeshGeometry& mesh, int32_t i) {
    char line[kLineMax];
    return std::string(line, PutVertexLine(line, mesh, i));
}

std::string FaceLine(const MeshGeometry& mesh, int32_t i) {
    char line[kLineMax];
    return std::string(line, PutFaceLine(line, mesh, i));
}

void WriteDirectXModel(const MeshGeometry& mesh, const TextSink& sink) {
    ModelBuffer out(sink);
    try {
        WriteSections(mesh, out);
    } catch (...) {
        // The lines made before the failure stay in the output.
        out.Flush();
        throw;
    }
    out.Flush();
}

bool DirectXModelComplete(const MeshGeometry& mesh) {
    auto complete = [](int32_t count, auto* table) {
        return count <= 0 || (table != nullptr && table->UpperBound() >= count - 1);
    };
    return complete(mesh.lVertexCount, mesh.aVertices) && complete(mesh.lPolygonCount, mesh.aPolygons);
}

int64_t DirectXModelSizeBound(const MeshGeometry& mesh) {
    // The fixed lines take less than a kilobyte; a polygon has its line and
    // its material line.
    constexpr int64_t kFixed = 1024;
    constexpr auto kLine = static_cast<int64_t>(kLineMax) + 2;
    return kFixed + std::max<int64_t>(mesh.lVertexCount, 0) * kLine +
           std::max<int64_t>(mesh.lPolygonCount, 0) * (kLine + 6);
}

int64_t DirectXModelSize(const MeshGeometry& mesh) {
    if (!DirectXModelComplete(mesh)) return -1;
    ModelSize size;
    WriteSections(mesh, size);
    return size.Size();
}

std::string DirectXModelText(const MeshGeometry& mesh) {
    std::string text;
    WriteDirectXModel(mesh, [&text](std::string_view piece) { text.append(piece); });
    return text;
}
