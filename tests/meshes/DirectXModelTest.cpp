#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "fixtures/ByteWriter.h"
#include "meshes/DirectXModel.h"

using fixtures::TempDir;
using fixtures::WriteFile;

namespace {

// Tables held in memory, as the reader leaves them.
struct Tables {
    MeshTable<MeshVertex> vertices;
    MeshTable<MeshPolygon> polygons;
    int32_t nv = 0;
    int32_t np = 0;

    Tables(const std::vector<std::array<float, 3>>& v, const std::vector<std::array<int16_t, 3>>& p) {
        nv = static_cast<int32_t>(v.size());
        np = static_cast<int32_t>(p.size());
        vertices.Allocate(nv, v.size());
        for (size_t i = 0; i < v.size(); ++i) vertices.Storage()[i] = MeshVertex{v[i][0], v[i][1], v[i][2], 99};
        polygons.Allocate(np, p.size());
        for (size_t i = 0; i < p.size(); ++i) polygons.Storage()[i] = MeshPolygon{p[i][0], p[i][1], p[i][2], 99};
    }
    MeshGeometry Geometry() const { return MeshGeometry{nv, &vertices, np, &polygons}; }
    std::string Text() const { return DirectXModelText(Geometry()); }
};

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t at; (at = text.find("\r\n", start)) != std::string::npos; start = at + 2)
        lines.push_back(text.substr(start, at - start));
    EXPECT_EQ(start, text.size()) << "the text ends in CR LF";
    return lines;
}

const std::vector<std::string> kMaterialPart = {"Material {", " 1.0;1.0;1.0;1.0;;", " 50.0;", " 1.0;1.0;1.0;;",
                                                " 0.0;0.0;0.0;;", " }", "", "}", "}"};

}  // namespace

TEST(FormatSingle, WritesTheGeneralFormatRoundedToSevenDigits) {
    struct Case {
        float value;
        const char* text;
    } cases[] = {
        {0.1f, "0.1"},           {-2.5f, "-2.5"},         {1.0f, "1"},
        {1.5f, "1.5"},           {-1.0f, "-1"},           {0.5f, "0.5"},
        {100.0f, "100"},         {0.000123f, "0.000123"}, {0.0001f, "0.0001"},
        {1e-5f, "1E-05"},        {1.5e-9f, "1.5E-09"},    {1234567.0f, "1234567"},
        {9999999.0f, "9999999"}, {1e7f, "1E+07"},         {12345678.0f, "1.234568E+07"},
        {123456789.0f, "1.234568E+08"}, {1e20f, "1E+20"}, {-1e20f, "-1E+20"},
        {3.14159265f, "3.141593"}, {2.0f / 3.0f, "0.6666667"}, {0.1f + 0.2f, "0.3"},
        {1.2345678e-4f, "0.0001234568"}, {123.456789f, "123.4568"}, {-0.001f, "-0.001"},
        {std::numeric_limits<float>::max(), "3.402823E+38"},
        {std::numeric_limits<float>::denorm_min(), "1.401298E-45"},
        {0.0f, "0"}, {-0.0f, "0"},
        // 1.23456789 rounds up in the 7th digit, 1.2345674 down.
        {1.23456789f, "1.234568"}, {1.2345674f, "1.234567"}, {0.99999997f, "0.9999999"}, {99999.996f, "99999.99"},
        // A carry through every digit takes the next power of ten, and the form
        // follows the rounded value: 9.9999997E-05 becomes the plain 0.0001.
        {1.9999999f, "2"}, {9.9999995e-5f, "0.0001"}, {-9999999.5e3f, "-1E+10"},
        // Values that are no number are written in ASCII.
        {std::numeric_limits<float>::infinity(), "inf"}, {-std::numeric_limits<float>::infinity(), "-inf"},
        {std::numeric_limits<float>::quiet_NaN(), "nan"},
    };
    for (const Case& c : cases) EXPECT_EQ(FormatSingle(c.value), c.text) << "for " << c.value;
}

TEST(FormatSingle, EveryTextFitsItsRoomAndReadsBackWithinRounding) {
    // A walk over the bit patterns of all magnitudes.
    for (uint32_t bits = 0; bits < 0x7F800000u; bits += 0x00010101u) {
        float value;
        std::memcpy(&value, &bits, 4);
        for (float v : {value, -value}) {
            std::string text = FormatSingle(v);
            ASSERT_LE(text.size(), kFormatSingleMax);
            ASSERT_EQ(text.find(','), std::string::npos);
            double back = std::strtod(text.c_str(), nullptr);
            ASSERT_LE(std::fabs(back - v), std::fabs(static_cast<double>(v)) * 5e-7) << text;
        }
    }
}

TEST(DirectXModel, WritesTheWorkedExampleByteForByte) {
    Tables mesh({{0, 0, 0}, {1, 0, 0}, {0, 1.5f, 0}}, {{0, 1, 2}});
    const std::string expected =
        "xof 0302txt 0032\r\nHeader {\r\n 1;\r\n 0;\r\n 1;\r\n}\r\n\r\nMesh  {\r\n3;\r\n"
        "0;0;0;,\r\n1;0;0;,\r\n0;1.5;0;;\r\n\r\n1;\r\n3;0,1,2;;\r\n"
        "MeshMaterialList {\r\n  1;\r\n 1;\r\n  0;\r\nMaterial {\r\n 1.0;1.0;1.0;1.0;;\r\n 50.0;\r\n"
        " 1.0;1.0;1.0;;\r\n 0.0;0.0;0.0;;\r\n }\r\n\r\n}\r\n}\r\n";
    EXPECT_EQ(mesh.Text(), expected);
}

TEST(DirectXModel, EndsOnlyTheLastVertexAndPolygonWithTwoSemicolons) {
    Tables mesh({{0.1f, -2.5f, 3}, {4, 5, 6}, {7, 8, 9}}, {{0, 1, 2}, {2, 1, 0}, {-1, 32767, -32768}});
    std::vector<std::string> lines = Lines(mesh.Text());
    ASSERT_EQ(lines.size(), 7u + 1 + 1 + 3 + 1 + 1 + 3 + 3 + 2 + 1 + kMaterialPart.size());
    EXPECT_THAT(std::vector<std::string>(lines.begin() + 9, lines.begin() + 12),
                ::testing::ElementsAre("0.1;-2.5;3;,", "4;5;6;,", "7;8;9;;"));
    EXPECT_EQ(lines[13], "3;");
    // The 16-bit pattern 0xFFFF is the index -1.
    EXPECT_THAT(std::vector<std::string>(lines.begin() + 14, lines.begin() + 17),
                ::testing::ElementsAre("3;0,1,2;,", "3;2,1,0;,", "3;-1,32767,-32768;;"));
    EXPECT_THAT(std::vector<std::string>(lines.begin() + 17, lines.begin() + 22),
                ::testing::ElementsAre("MeshMaterialList {", "  1;", " 3;", "  0,", "  0,"));
    EXPECT_EQ(lines[22], "  0;");
    EXPECT_EQ(std::vector<std::string>(lines.begin() + 23, lines.end()), kMaterialPart);
}

TEST(DirectXModel, WritesEmptyTablesWithTheirCounts) {
    Tables none({}, {});
    std::vector<std::string> lines = Lines(none.Text());
    EXPECT_THAT(std::vector<std::string>(lines.begin() + 7, lines.begin() + 17),
                ::testing::ElementsAre("Mesh  {", "0;", "", "0;", "MeshMaterialList {", "  1;", " 0;", "  0;",
                                       "Material {", " 1.0;1.0;1.0;1.0;;"));
    Tables noPolygons({{1, 2, 3}}, {});
    EXPECT_THAT(Lines(noPolygons.Text())[9], "1;2;3;;");
    EXPECT_THAT(Lines(noPolygons.Text())[11], "0;");
}

TEST(DirectXModel, WritesRecordsBehindTheStoredOnesAsZeros) {
    MeshTable<MeshVertex> vertices;
    vertices.Allocate(4, 1);
    vertices.Storage()[0] = MeshVertex{1, 2, 3, 0};
    MeshTable<MeshPolygon> polygons;
    polygons.Allocate(2, 0);
    std::vector<std::string> lines = Lines(DirectXModelText(MeshGeometry{4, &vertices, 2, &polygons}));
    EXPECT_THAT(std::vector<std::string>(lines.begin() + 9, lines.begin() + 17),
                ::testing::ElementsAre("1;2;3;,", "0;0;0;,", "0;0;0;,", "0;0;0;;", "", "2;", "3;0,0,0;,",
                                       "3;0,0,0;;"));
}

TEST(DirectXModel, HasCommasOnlyWhereThePolygonsAndMaterialsPutThem) {
    std::vector<std::array<float, 3>> v;
    std::vector<std::array<int16_t, 3>> p;
    for (int i = 0; i < 500; ++i) {
        v.push_back({i * 0.37f, -i / 7.0f, i * 1e-6f});
        p.push_back({static_cast<int16_t>(i), static_cast<int16_t>(-i), 7});
    }
    Tables mesh(v, p);
    std::string text = mesh.Text();
    for (unsigned char c : text) ASSERT_TRUE(c == '\r' || c == '\n' || (c >= 0x20 && c < 0x7F)) << int(c);
    for (const std::string& line : Lines(text)) {
        std::string rest = line;
        if (line.rfind("3;", 0) == 0) {
            // Two commas between the indices, and one more in ";," but the last.
            int commas = static_cast<int>(std::count(line.begin(), line.end(), ','));
            EXPECT_EQ(commas, line.ends_with(";,") ? 3 : 2) << line;
            continue;
        }
        if (line.ends_with(";,")) rest = line.substr(0, line.size() - 2);
        if (line == "  0,") continue;
        EXPECT_EQ(rest.find(','), std::string::npos) << line;
    }
}

TEST(DirectXModel, StopsAtAVertexTableThatWasNeverAllocatedKeepingTheLinesSoFar) {
    MeshTable<MeshVertex> vertices;  // never allocated
    MeshTable<MeshPolygon> polygons;
    std::string got;
    try {
        WriteDirectXModel(MeshGeometry{5, &vertices, 0, &polygons},
                          [&got](std::string_view piece) { got.append(piece); });
        ADD_FAILURE() << "no failure raised";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.Number, vbErrSubscript);
    }
    EXPECT_EQ(got, std::string(kDirectXTextHeader) + "\r\nMesh  {\r\n5;\r\n");
}

// The length told before an export is the length of the text it writes, the
// zero records behind the stored ones counted without being made.
TEST(DirectXModel, SizeIsTheLengthOfTheTextWithoutMakingIt) {
    MeshTable<MeshVertex> spread;
    spread.Allocate(7, 3);
    spread.Storage()[0] = MeshVertex{-1.5f, 1e-9f, 12345678.0f, 0};
    spread.Storage()[1] = MeshVertex{0.1f, -0.0f, 7, 0};
    spread.Storage()[2] = MeshVertex{std::numeric_limits<float>::infinity(), 3, -2.5f, 0};
    MeshTable<MeshPolygon> faces;
    faces.Allocate(5, 2);
    faces.Storage()[0] = MeshPolygon{-1, 32767, -32768, 0};
    faces.Storage()[1] = MeshPolygon{1, 2, 3, 0};
    MeshTable<MeshVertex> never;  // a table the reader could not allocate
    MeshTable<MeshPolygon> noFaces;
    const Tables cube({{0, 0, 0}, {1, 1, 1}, {-1, 0.5f, 2}}, {{0, 1, 2}, {2, 1, 0}});
    const Tables empty({}, {});
    struct Case {
        const char* what;
        MeshGeometry mesh;
    };
    const std::vector<Case> cases = {
        {"stored records only", cube.Geometry()},
        {"no records", empty.Geometry()},
        {"zero records behind the stored ones", {7, &spread, 5, &faces}},
        {"one polygon", {0, &spread, 1, &faces}},
        {"negative counts", {-3, &spread, -8, &faces}},
        {"all records zero", {3, &spread, 2, &noFaces}},
    };
    noFaces.Allocate(2, 0);
    for (const Case& c : cases) {
        EXPECT_TRUE(DirectXModelComplete(c.mesh)) << c.what;
        const auto length = static_cast<int64_t>(DirectXModelText(c.mesh).size());
        EXPECT_EQ(DirectXModelSize(c.mesh), length) << c.what;
        EXPECT_GE(DirectXModelSizeBound(c.mesh), length) << c.what;
    }
    for (const MeshGeometry& cut : {MeshGeometry{5, &never, 0, &faces}, MeshGeometry{2, &spread, 9, &faces},
                                    MeshGeometry{1, nullptr, 0, nullptr}}) {
        EXPECT_FALSE(DirectXModelComplete(cut));
        EXPECT_EQ(DirectXModelSize(cut), -1);
    }
    // Counts far past a file's end cost no time: 2^31 - 1 zero polygons.
    EXPECT_EQ(DirectXModelSize({0, &spread, INT32_MAX, &noFaces}), -1);
    MeshTable<MeshPolygon> many;
    many.Allocate(INT32_MAX, 0);
    const int64_t huge = DirectXModelSize({0, &spread, INT32_MAX, &many});
    EXPECT_EQ(huge, DirectXModelSize({0, &spread, 0, &many}) + int64_t{INT32_MAX} * (11 + 6) - 6 +
                        (std::to_string(INT32_MAX).size() - 1) * 2);
}

TEST(DirectXModel, HandsOverLinesInPiecesAndStopsWhenTheSinkFails) {
    std::vector<std::array<float, 3>> v(20000, {1.25f, -3, 0.5f});
    Tables mesh(v, {{0, 1, 2}});
    std::vector<std::string> pieces;
    EXPECT_THROW(WriteDirectXModel(mesh.Geometry(),
                                   [&pieces](std::string_view piece) {
                                       pieces.emplace_back(piece);
                                       if (pieces.size() == 2) RaiseError(vbErrDiskFull);
                                   }),
                 RuntimeError);
    ASSERT_EQ(pieces.size(), 2u);
    for (const std::string& piece : pieces) EXPECT_TRUE(piece.ends_with("\r\n"));
    // The pieces are the start of the whole text, without a repeat.
    EXPECT_EQ(mesh.Text().substr(0, pieces[0].size() + pieces[1].size()), pieces[0] + pieces[1]);
}

// ---- Locale independence -----------------------------------------------------

namespace {

struct CommaPunct : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

// Switches the C library to a locale with a decimal comma: one the system has,
// or one built for the test with localedef. Gives false if neither works.
bool UseCommaLocale(const TempDir& dir) {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE", "fr_FR"})
        if (std::setlocale(LC_ALL, name) != nullptr) return true;
    std::string command = "localedef -i de_DE -f UTF-8 '" + dir.Path() + "/de_DE.UTF-8' >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) return false;
    setenv("LOCPATH", dir.Path().c_str(), 1);
    bool ok = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    unsetenv("LOCPATH");
    return ok;
}

}  // namespace

TEST(DirectXModel, WritesNoDecimalCommaUnderACommaLocale) {
    TempDir dir;
    std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaPunct));
    bool cLocale = UseCommaLocale(dir);
    char probe[16];
    std::snprintf(probe, sizeof probe, "%g", 1.5);
    std::ostringstream stream;
    stream << 1.5;

    Tables mesh({{0.1f, -2.5f, 1234.5f}, {1e-7f, 3, 0.25f}}, {{0, 1, 1}});
    std::string text = mesh.Text();
    std::string one = FormatSingle(-2.5f);

    std::setlocale(LC_ALL, "C");
    std::locale::global(before);
    // The stream under the global locale writes a comma, so the test proves
    // something; so does the C library when a comma locale could be set.
    EXPECT_EQ(stream.str(), "1,5");
    if (cLocale) EXPECT_STREQ(probe, "1,5");
    else std::fprintf(stderr, "no comma locale for the C library; the stream locale was tested alone\n");
    EXPECT_EQ(one, "-2.5");
    std::vector<std::string> lines = Lines(text);
    EXPECT_EQ(lines[9], "0.1;-2.5;1234.5;,");
    EXPECT_EQ(lines[10], "1E-07;3;0.25;;");
    EXPECT_EQ(text, mesh.Text()) << "the text is the same under the C locale";
}

// ---- A real reader ---------------------------------------------------------

TEST(DirectXModel, IsReadByAssimpWithTheSameCounts) {
    ASSERT_EQ(std::system("command -v assimp >/dev/null 2>&1"), 0) << "assimp is part of the test set-up";
    // A closed box with every corner used once, and a face of
    // exponent-form coordinates.
    Tables box({{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1}, {-1, -1, 1}, {1, -1, 1}, {1e8f, 1.5e-9f, -2.5f},
                {-1, 1, 1}},
               {{0, 2, 1}, {0, 3, 2}, {4, 5, 6}, {4, 6, 7}, {0, 1, 5}, {0, 5, 4}, {2, 3, 7}, {2, 7, 6}, {1, 2, 6},
                {1, 6, 5}, {0, 4, 7}, {0, 7, 3}});
    TempDir dir;
    std::string path = dir / "box.x";
    WriteFile(path, box.Text());
    std::string command = "assimp info '" + path + "' 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string output;
    char buffer[4096];
    while (size_t n = fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, n);
    ASSERT_EQ(pclose(pipe), 0) << output;
    EXPECT_THAT(output, ::testing::ContainsRegex("Vertices: +8\n"));
    EXPECT_THAT(output, ::testing::ContainsRegex("Faces: +12\n"));
    EXPECT_THAT(output, ::testing::ContainsRegex("Materials: +1\n"));
    // The importer turns the left-handed model right-handed, so z comes back
    // negated.
    EXPECT_THAT(output, ::testing::HasSubstr("Minimum point      (-1.000000 -1.000000 -1.000000)"));
    EXPECT_THAT(output, ::testing::HasSubstr("Maximum point      (100000000.000000 1.000000 2.500000)"));
}
