#include "platform/GlobalMemory.h"

#include <sys/mman.h>

#include <cstdlib>
#include <unordered_map>

namespace {

// Blocks from this size on are mapped from the system directly: their pages
// are taken only as they are written, so a buffer that a damaged format makes
// large costs no more than the bytes the file really fills.
constexpr size_t kMappedFrom = size_t{1} << 20;

std::unordered_map<void*, size_t> g_mapped;

}  // namespace

HGLOBAL GlobalAlloc(uint32_t flags, size_t bytes) {
    if (bytes > kGlobalAllocLimit) return nullptr;
    if (bytes >= kMappedFrom) {
        // Fresh mapped pages read as zeros, as GMEM_ZEROINIT asks.
        void* block = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (block == MAP_FAILED) return nullptr;
        g_mapped.emplace(block, bytes);
        return block;
    }
    // A block of 0 bytes still has an address of its own.
    const size_t size = bytes == 0 ? 1 : bytes;
    return (flags & GMEM_ZEROINIT) ? std::calloc(1, size) : std::malloc(size);
}

void* GlobalLock(HGLOBAL h) { return h; }

int32_t GlobalUnlock(HGLOBAL h) { return 0; }

HGLOBAL GlobalFree(HGLOBAL h) {
    const auto it = g_mapped.find(h);
    if (it != g_mapped.end()) {
        ::munmap(it->first, it->second);
        g_mapped.erase(it);
    } else {
        std::free(h);
    }
    return nullptr;
}
