#pragma once
// PAK archives built in code: the 20-byte header, the directory of
// variable-length records and the members' bytes, with switches that damage
// any field for the tests of a reader.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "samples/GameFiles.h"

namespace samples {

// What the directory says of one member.
struct PakEntry {
    std::string Name;
    int32_t Offset = 0;
    int32_t PackedSize = 0;
    int32_t OriginalSize = 0;
};

// A PKWare DCL implode stream of `data` made by StormLib. Its length never
// equals the length of `data`, since equal sizes mark a stored member: in the
// rare case that the stream comes out exactly as long, a zero byte is added
// behind its end marker, where a decoder no longer reads.
std::string ImplodeMember(const std::string& data);
// The bytes that a DCL stream unpacks to, by StormLib; throws
// std::runtime_error when StormLib refuses the stream or it unpacks to more
// than `originalSize`. StormLib refuses every stream of no bytes, so for an
// original size of 0 only the stream that ImplodeMember makes of nothing is
// taken.
std::string Explode(const std::string& stream, size_t originalSize);

class PakBuilder {
public:
    // A member kept as plain bytes: both sizes are the length of `data`.
    PakBuilder& Stored(const std::string& name, const std::string& data);
    // A member packed as a DCL implode stream of `data`.
    PakBuilder& Imploded(const std::string& name, const std::string& data);
    // A member whose bytes in the archive and original size are given as they stand.
    PakBuilder& Raw(const std::string& name, const std::string& packed, int32_t originalSize);

    // Header fields; by default 0x6E71, 0x097DD4D3, 0, 0.
    PakBuilder& Signature(uint32_t signature);
    PakBuilder& FormatId(uint32_t id);
    PakBuilder& UnusedFields(uint32_t field2, uint32_t field3);

    // Damage. Each replaces one number as it is written; the rest of the file
    // is laid out as if the number were right, so a name whose length is
    // replaced is still written in full.
    PakBuilder& MemberCount(int32_t count);
    PakBuilder& NameLength(size_t index, int32_t length);
    PakBuilder& Offset(size_t index, int32_t offset);
    PakBuilder& PackedSize(size_t index, int32_t size);
    PakBuilder& OriginalSize(size_t index, int32_t size);
    // Filler bytes (0xA5) between the directory and the first member and
    // behind every member.
    PakBuilder& Gap(size_t bytes);
    // Cuts the built file to `length` bytes when it is longer.
    PakBuilder& Truncate(size_t length);

    std::string Build() const;

    // The directory as it is written, damage included, record by record; a
    // MemberCount above the number of members adds no entries here.
    std::vector<PakEntry> Entries() const;
    size_t Count() const { return members_.size(); }
    // File offset of record `index`, and of the first byte behind the directory.
    size_t RecordOffset(size_t index) const;
    size_t DirectoryEnd() const { return RecordOffset(members_.size()); }
    // Where member `index`'s bytes really stand in the file.
    size_t DataOffset(size_t index) const;
    const std::string& Packed(size_t index) const { return members_.at(index).Packed; }
    const std::string& Original(size_t index) const { return members_.at(index).Original; }

private:
    struct Member {
        std::string Name;
        std::string Packed;
        std::string Original;  // empty for a Raw member
        int32_t OriginalSize = 0;
        std::optional<int32_t> NameLength, Offset, PackedSize, OriginalSizeOverride;
    };
    Member& At(size_t index);
    // Where every member's bytes stand, in the order of the directory.
    std::vector<size_t> DataOffsets() const;

    std::vector<Member> members_;
    uint32_t signature_ = 0x6E71;
    uint32_t formatId_ = kIdPak;
    uint32_t field2_ = 0;
    uint32_t field3_ = 0;
    std::optional<int32_t> count_;
    size_t gap_ = 0;
    std::optional<size_t> truncate_;
};

}  // namespace samples
