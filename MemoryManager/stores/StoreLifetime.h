#pragma once
// Making and deleting stores whose class the deleting side does not know, and asking whether a store has a
// file or lacks room.
//
// A store has no virtual destructor, because the slots of its virtual table are fixed. Both store classes are
// trivially destructible, so that it is enough to return their storage.
//
// Internal.

#include "MemoryManager/CImageCtrlIO.h"
#include "Platform/Platform.h"

#include <cstdint>
#include <new>
#include <type_traits>

static_assert(std::is_trivially_destructible_v<CImageCtrl> && std::is_trivially_destructible_v<CImageCtrlIO>);

/// A new store in its initial state; null when memory is short. Deleted with DeleteStore.
template <class Store> Store* NewStore()
{
    static_assert(std::is_base_of_v<CImageCtrl, Store> && std::is_trivially_destructible_v<Store>);
    void* pStorage = ::operator new(sizeof(Store), std::nothrow);
    return pStorage != nullptr ? ::new (pStorage) Store : nullptr;
}

/// Frees the store's own storage; call the store's Destroy first. Null is ignored.
inline void DeleteStore(CImageCtrl* pStore)
{
    ::operator delete(dynamic_cast<void*>(pStore));
}

/// Whether the store has a temporary file or a host's file.
inline bool HasFile(const CImageCtrl& store)
{
    return store.GetFHandle() != INVALID_HANDLE_VALUE;
}

/// Whether a store was made for a smaller image: it ends before this buffer's last line does. The spare bytes
/// of an aligned buffer do not count, since the file of a dump lacks some of them. A store over an image of
/// the host's has that image's size, whatever the object's buffer takes.
inline bool IsTooShort(const CImageCtrl& store, const T_ImageLrg_tag& info)
{
    const std::int64_t nEnd = store.m_nHdrSize + std::int64_t{info.nLineBytes} * info.nAllocHeight;
    return store.m_bCreated == 1 && nEnd > store.m_nFileSize &&
           dynamic_cast<const CImageCtrlIO*>(&store) == nullptr;
}
