#include "samples/GameFiles.h"

#include "samples/ByteWriter.h"

namespace samples {

std::string GameHead(uint32_t id) {
    ByteWriter w;
    w.U32(kGameSignature).U32(id);
    return w.Data();
}

std::string GameFile(uint32_t id, const std::string& body) { return GameHead(id) + body; }

std::string GameFileWithBody(uint32_t id, size_t length) {
    std::string body(length, '\0');
    for (size_t i = 0; i < length; ++i) body[i] = static_cast<char>((i * 7 + 3) & 0xFF);
    return GameFile(id, body);
}

}  // namespace samples
