#pragma once
// Bytes of an external image where they are: in the host's block, or in a view of the host's file.
//
// Internal.

#include "MemoryManager/ExternalImage.h"

#include <cstdint>

/// A run of bytes of an external image, addressable for as long as this object lives. A view of a file is
/// released with it.
class ExternalBytes
{
public:
    /// Addresses nBytes bytes from nPosition on.
    /// @param inf   an image of ACS_MMF or ACS_MEMORY
    /// @param hMap  the mapping of inf's file; not used for a block
    ExternalBytes(const T_ImgInf& inf, HANDLE hMap, DWORD nPosition, std::int64_t nBytes, bool bWrite);
    ~ExternalBytes();
    ExternalBytes(const ExternalBytes&) = delete;
    ExternalBytes& operator=(const ExternalBytes&) = delete;

    /// The byte at nPosition. Null, with the reason as last error: there is no block, the view could not be
    /// mapped, or the file ends before the run does.
    unsigned char* Data() const { return m_pData; }

private:
    unsigned char* m_pData = nullptr;
    void* m_pView = nullptr;
};
