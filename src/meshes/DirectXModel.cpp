#include "meshes/DirectXModel.h"

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

void WriteSections(const MeshGeometry& mesh, ModelBuffer& out) {
    out.Text(kDirectXTextHeader);
    out.Line("");
    out.Line("Mesh  {");
    out.CountLine("", mesh.lVertexCount);
    for (int32_t i = 0; i < mesh.lVertexCount; ++i) out.Record(PutVertexLine, mesh, i);
    out.Line("");
    out.CountLine("", mesh.lPolygonCount);
    for (int32_t i = 0; i < mesh.lPolygonCount; ++i) out.Record(PutFaceLine, mesh, i);
    out.Line("MeshMaterialList {");
    out.Line("  1;");
    out.CountLine(" ", mesh.lPolygonCount);
    // Every polygon points at the one material.
    for (int64_t i = 0; i < static_cast<int64_t>(mesh.lPolygonCount) - 1; ++i) out.Line("  0,");
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

std::string DirectXModelText(const MeshGeometry& mesh) {
    std::string text;
    WriteDirectXModel(mesh, [&text](std::string_view piece) { text.append(piece); });
    return text;
}
