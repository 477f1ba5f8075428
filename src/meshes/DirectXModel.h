#pragma once
// The DirectX text model that a mesh is exported as: a pure function from the
// vertex and polygon tables to lines of ASCII text ended by CR LF. The dialog
// and the file around it belong to CMeshFile::SaveAs.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "meshes/MeshRecords.h"

// The text header of a model, as the export writes it and as the report pane
// shows it in front of a failure.
extern const char kDirectXTextHeader[];

// Room that FormatSingleTo needs at most ("-1.234567E+38" and the like).
inline constexpr size_t kFormatSingleMax = 16;

// A 32-bit float as text, in the general format: at most 7 significant digits,
// rounded; no trailing zeros; no point for a whole value; "0." in front of a
// magnitude below 1; a minus sign for a negative value. The exponent form
// ("1E+08", "1.5E-09": an upper-case E, a sign and at least two digits) is used
// when the decimal exponent of the rounded value is 7 or more, or below -4; so
// 1234567 and 0.0001 stay plain while 12345678 and 0.00001 do not. Zero of
// either sign is "0"; infinities and not-a-number values are "inf", "-inf" and
// "nan". The text never depends on the locale: the point is always a point.
std::string FormatSingle(float value);
// The same text written at `out`, which has room for kFormatSingleMax
// characters; gives the end of what was written.
char* FormatSingleTo(char* out, float value);

// What the export reads of a mesh: the two counts and their tables.
struct MeshGeometry {
    int32_t lVertexCount = 0;
    const MeshTable<MeshVertex>* aVertices = nullptr;
    int32_t lPolygonCount = 0;
    const MeshTable<MeshPolygon>* aPolygons = nullptr;
};

// Line i of the vertices: x;y;z and ";;" behind the last vertex, ";," behind
// the others. Raises error 9 where the table has no record i.
std::string VertexLine(const MeshGeometry& mesh, int32_t i);
// Line i of the polygons: "3;a,b,c" and ";;" behind the last polygon, ";,"
// behind the others. Raises error 9 where the table has no record i.
std::string FaceLine(const MeshGeometry& mesh, int32_t i);

// Receives the model text in pieces, each ending at a line end.
using TextSink = std::function<void(std::string_view)>;

// Writes the whole model to the sink. When a line can't be made (a table that
// was never allocated) or the sink fails, the lines made so far have reached
// the sink and the failure is raised again.
void WriteDirectXModel(const MeshGeometry& mesh, const TextSink& sink);
// True when every line of the model can be made: a table with records to
// give was allocated for all of them.
bool DirectXModelComplete(const MeshGeometry& mesh);
// A bound that the model's length in bytes never exceeds, from the counts
// alone.
int64_t DirectXModelSizeBound(const MeshGeometry& mesh);
// The model's exact length in bytes, without making it, or -1 when it can't
// be made whole. Costs a formatting of the records that the tables store; the
// zero records behind them are counted, not formatted.
int64_t DirectXModelSize(const MeshGeometry& mesh);
// The whole model as one text.
std::string DirectXModelText(const MeshGeometry& mesh);
