#pragma once
// The eight-byte head that every game file starts with, and the ids of the
// twenty game types, for building signed files of any kind.
#include <array>
#include <cstdint>
#include <string>

namespace samples {

constexpr uint32_t kGameSignature = 0x6E71;

constexpr uint32_t kIdFont = 0x0054D654;
constexpr uint32_t kIdMark = 0x0055388B;
constexpr uint32_t kIdMesh = 0x00553C98;
constexpr uint32_t kIdFlatTile = 0x0289FCF5;
constexpr uint32_t kIdPlanarBitmap = 0x04023750;
constexpr uint32_t kIdSequence = 0x049B2991;
constexpr uint32_t kIdLandscape = 0x04BCCAE5;
constexpr uint32_t kIdAMesh = 0x05463C98;
constexpr uint32_t kIdWorld = 0x055E6924;
constexpr uint32_t kIdColorLut = 0x06364764;
constexpr uint32_t kIdPlanarPalette = 0x0682CEF5;
constexpr uint32_t kIdTexturedVoxelTile = 0x0770FCF5;
constexpr uint32_t kIdRbt = 0x07960AA0;
constexpr uint32_t kIdAltitudeMap = 0x093D11F4;
constexpr uint32_t kIdPak = 0x097DD4D3;
constexpr uint32_t kIdCover = 0x0CCCB3A4;
constexpr uint32_t kIdSrf = 0x0CD90E63;
constexpr uint32_t kIdAttributeSet = 0x0D411164;
constexpr uint32_t kIdRemappingPalette = 0x0E614355;
constexpr uint32_t kIdVoxelTile = 0x0EC4F345;

// The signature 0x6E71 and `id`, both little-endian: eight bytes.
std::string GameHead(uint32_t id);
// A signed file of `id`: the head followed by `body` as it stands.
std::string GameFile(uint32_t id, const std::string& body = {});
// A signed file of `id` whose body is `length` bytes of a repeating,
// recognisable pattern (each byte is its offset times 7 plus 3, modulo 256).
std::string GameFileWithBody(uint32_t id, size_t length);

}  // namespace samples
