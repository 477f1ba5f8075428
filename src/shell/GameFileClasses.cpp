#include "shell/GameFileClasses.h"

#include "meshes/CMeshFile.h"
#include "pak/CPAKFile.h"
#include "pictures/CBtm.h"
#include "pictures/CPLTFile.h"

std::unique_ptr<CNerhaltFile> CreateGameFileObject(int32_t id, IFileHost& host) {
    switch (id) {
        case 0x00553C98:
        case 0x05463C98: return std::make_unique<CMeshFile>(host);
        case 0x04023750: return std::make_unique<CBtm>(host);
        case 0x0682CEF5: return std::make_unique<CPLTFile>(host);
        case 0x097DD4D3: return std::make_unique<CPAKFile>(host);
        default: return nullptr;
    }
}

FileObjectFactory GameFileClasses(IFileHost& host) {
    return [&host](int32_t id) { return CreateGameFileObject(id, host); };
}
