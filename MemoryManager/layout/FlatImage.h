#pragma once
// Checks of a flat buffer's record, made before anything of the buffer is read or written.
//
// Internal.

#include "MemoryManager/ImageRecord.h"
#include "MemoryManager/layout/BufferLayout.h"

#include <cstdint>
#include <optional>

/// Whether the record names a block and its lines and margins fit the block's size.
inline bool HasBlock(const T_Image_tag* pFlat)
{
    return pFlat && pFlat->pBase && IsSoundBuffer(*pFlat);
}

/// Bytes from pBase to the buffer's first line: the rounding of pImage to an aligned address. None: with this
/// pImage some line would not lie wholly in the block.
inline std::optional<std::int64_t> FirstLineOffset(const T_Image_tag& flat)
{
    const auto nImage = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(flat.pImage) -
                                                  reinterpret_cast<std::uintptr_t>(flat.pBase));
    const std::int64_t nOffset = nImage - PixelPosition(flat, 0, 0);
    const std::int64_t nSpare = flat.nBufSize - std::int64_t{flat.nLineBytes} * flat.nAllocHeight;
    return nOffset >= 0 && nOffset <= nSpare ? std::optional(nOffset) : std::nullopt;
}
