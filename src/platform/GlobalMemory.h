#pragma once
// The kernel's global memory blocks, as the wave buffers take them. A fixed
// block's handle is its address, so locking it gives the handle back.
#include <cstddef>
#include <cstdint>

using HGLOBAL = void*;

inline constexpr uint32_t GMEM_FIXED = 0x0000;
inline constexpr uint32_t GMEM_ZEROINIT = 0x0040;

// The largest block handed out. A wave buffer of ten seconds of 48 kHz stereo
// takes under 8 MiB; a format read from a damaged file that asks for more
// than this is refused like any allocation the system can't serve.
inline constexpr size_t kGlobalAllocLimit = size_t{64} << 20;

// A block of `bytes` bytes (zero-filled with GMEM_ZEROINIT), or nullptr.
HGLOBAL GlobalAlloc(uint32_t flags, size_t bytes);
// The block's address.
void* GlobalLock(HGLOBAL h);
// 0: a fixed block has no lock count.
int32_t GlobalUnlock(HGLOBAL h);
// nullptr when the block was freed.
HGLOBAL GlobalFree(HGLOBAL h);
