#pragma once
// Stores as their objects see them: making and deleting one whose class the deleting side does not know, and
// whether it lies in a file.
//
// A store has no virtual destructor, since its virtual slots are fixed. Both store classes are trivially
// destructible, so that taking and giving back raw storage is all there is to do.

#include "MemoryManager/CImageCtrlIO.h"
#include "Platform/Platform.h"

#include <new>
#include <type_traits>

static_assert(std::is_trivially_destructible_v<CImageCtrl> && std::is_trivially_destructible_v<CImageCtrlIO>);

/// A store in its initial state; null when memory is short. Given back with DeleteStore.
template <class Store> Store* NewStore()
{
    static_assert(std::is_base_of_v<CImageCtrl, Store> && std::is_trivially_destructible_v<Store>);
    void* pStorage = ::operator new(sizeof(Store), std::nothrow);
    return pStorage != nullptr ? ::new (pStorage) Store : nullptr;
}

/// Gives the store's own storage back; call its Destroy first. Null is ignored.
inline void DeleteStore(CImageCtrl* pStore)
{
    ::operator delete(dynamic_cast<void*>(pStore));
}

inline bool HasFile(const CImageCtrl& store)
{
    return store.GetFHandle() != INVALID_HANDLE_VALUE;
}
