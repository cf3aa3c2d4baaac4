#pragma once
// Memory for the duration of one operation.
//
// Internal.

#include "MemoryManager/base/PlatformHelpers.h"

#include <cstdint>

/// Whether an allocation retries while memory is short, for up to a minute, or fails at once.
enum class WhenShort
{
    Wait,
    Fail,
};

/// A zero-filled block that is released at the end of its scope.
class ScratchBlock
{
public:
    /// Nothing is allocated for nBytes below 1.
    explicit ScratchBlock(std::int64_t nBytes, WhenShort eWhenShort = WhenShort::Wait)
        : m_pBlock(nBytes > 0
                       ? AllocMemoryBlock(static_cast<SIZE_T>(nBytes), eWhenShort == WhenShort::Wait ? 1 : 0)
                       : nullptr)
    {
    }
    ~ScratchBlock() { FreeMemoryBlock(m_pBlock); }
    ScratchBlock(const ScratchBlock&) = delete;
    ScratchBlock& operator=(const ScratchBlock&) = delete;

    /// The block's first byte; null when nothing was or could be allocated.
    unsigned char* Data() const { return static_cast<unsigned char*>(m_pBlock); }

private:
    void* m_pBlock;
};
