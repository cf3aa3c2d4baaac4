#pragma once
// Making and deleting stores whose class the deleting side does not know, and asking whether a store has a
// file.
//
// A store has no virtual destructor, because the slots of its virtual table are fixed. Both store classes are
// trivially destructible, so that it is enough to return their storage.
//
// Internal.

#include "MemoryManager/CImageCtrlIO.h"
#include "Platform/Platform.h"

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
