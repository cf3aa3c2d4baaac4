#pragma once
// A flat buffer's record as the debug operations take it: checked before anything is read or written.
//
// Internal.

#include "MemoryManager/ImageRecord.h"
#include "MemoryManager/layout/BufferLayout.h"

#include <cstdint>
#include <optional>

/// Whether the record has a block that its lines and margins fit.
inline bool HasBlock(const T_Image_tag* pFlat)
{
    return pFlat && pFlat->pBase && IsSoundBuffer(*pFlat);
}

/// Bytes from pBase to the buffer's first line: what the rounding of pImage to an aligned address added.
/// None: pImage does not lead to lines that lie whole in the block.
inline std::optional<std::int64_t> FirstLineOffset(const T_Image_tag& flat)
{
    const auto nImage = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(flat.pImage) -
                                                  reinterpret_cast<std::uintptr_t>(flat.pBase));
    const std::int64_t nOffset = nImage - PixelPosition(flat, 0, 0);
    const std::int64_t nSpare = flat.nBufSize - std::int64_t{flat.nLineBytes} * flat.nAllocHeight;
    return nOffset >= 0 && nOffset <= nSpare ? std::optional(nOffset) : std::nullopt;
}
