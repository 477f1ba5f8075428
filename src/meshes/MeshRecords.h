#pragma once
// The records of a mesh file and the tables that hold them. Fixed-size records
// have exactly the layout of the file, so a table is read with one _lread
// straight into its storage.
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/Runtime.h"

static_assert(std::endian::native == std::endian::little,
              "mesh tables are read straight into memory and need a little-endian host");

// Outer and inner header share this shape: seven 32-bit fields.
struct MeshFileHeader {
    int32_t lSignature = 0;
    int32_t lFormatId = 0;  // lKindId in the inner header
    int32_t lField2 = 0;
    int32_t lField3 = 0;
    int32_t lField4 = 0;
    int32_t lInnerOffset = 0;
    int32_t lField6 = 0;
};
static_assert(sizeof(MeshFileHeader) == 28);

struct MeshVertex {
    float x = 0;
    float y = 0;
    float z = 0;
    int32_t lField3 = 0;
};
static_assert(sizeof(MeshVertex) == 16);

// A triangle: three signed 16-bit indices into the vertex table.
struct MeshPolygon {
    int16_t iVertex0 = 0;
    int16_t iVertex1 = 0;
    int16_t iVertex2 = 0;
    int16_t iField3 = 0;
};
static_assert(sizeof(MeshPolygon) == 8);

struct MeshIndexTriple {
    int16_t a[3] = {};
};
static_assert(sizeof(MeshIndexTriple) == 6);

struct MeshVector {
    float v[3] = {};
};
static_assert(sizeof(MeshVector) == 12);

struct MeshBlock24 {
    uint8_t ab[24] = {};
};
static_assert(sizeof(MeshBlock24) == 24);

// A counted text. lLength is the stored length; sText holds the bytes that the
// file really has. A text that runs past the end of the file stands for its
// bytes followed by zero characters up to lLength, which are produced where the
// text is used and never stored.
struct MeshText {
    int32_t lLength = 0;
    std::string sText;

    // Number of zero characters that follow sText in the text.
    size_t Padding() const {
        return lLength > 0 && static_cast<size_t>(lLength) > sText.size() ? static_cast<size_t>(lLength) - sText.size()
                                                                           : 0;
    }
};

struct MeshTextureInfo {
    int32_t lHead = 0;
    MeshText aText[4];
    uint8_t abTail[12] = {};
};

// The smallest size of a texture information record in a file: its head, four
// empty counted texts and its tail. A count of records is judged by it.
inline constexpr int32_t kMeshTextureInfoMinSize = 4 + 4 * 4 + 12;

// A table for the indices 0 to its upper bound. Only the records that the file
// holds are stored; the records behind them read as zeros. An index outside the
// bounds, or any index of a table that was never allocated, raises the
// runtime's error 9, "Subscript out of range".
template <class T>
class MeshTable {
public:
    // Drops the table: it holds no index at all.
    void Clear() {
        m_lUpper = -1;
        m_aStored.clear();
        m_aStored.shrink_to_fit();
    }
    // Makes the table hold the indices 0 to lUpper, of which the first
    // `stored` records are kept in memory (zero until filled).
    void Allocate(int32_t lUpper, size_t stored) {
        Clear();
        m_aStored.resize(stored);
        m_lUpper = lUpper;
    }
    bool Allocated() const { return m_lUpper >= 0; }
    int32_t UpperBound() const { return m_lUpper; }

    T* Storage() { return m_aStored.data(); }
    size_t StoredCount() const { return m_aStored.size(); }
    // Keeps a record behind the stored ones.
    void Store(T record) { m_aStored.push_back(std::move(record)); }

    const T& operator()(int32_t i) const {
        if (i < 0 || i > m_lUpper) RaiseError(vbErrSubscript);
        if (static_cast<size_t>(i) < m_aStored.size()) return m_aStored[static_cast<size_t>(i)];
        return Zero();
    }

private:
    static const T& Zero() {
        static const T zero{};
        return zero;
    }
    int32_t m_lUpper = -1;
    std::vector<T> m_aStored;
};
