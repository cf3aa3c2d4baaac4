#pragma once
// Asserts the documented 32-bit layout of a record or class: its bytes, and where each member lies. Hosts
// that other compilers built rely on these numbers, so a difference does not compile.
//
// Internal. Each room has a RecordLayout.cpp for its own records. Members are named in explicit
// instantiations, where private ones may be named too.

#include <cstddef>

// Every compiler that is used here knows where the members of a class with virtual operations lie.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

struct MemberOffset
{
    std::size_t nActual;
    std::size_t nDocumented;
};

/// The numbers are those of 32-bit targets: on others nothing is asserted.
template <class Record, std::size_t nBytes, MemberOffset... members> struct Documented
{
    static_assert(sizeof(void*) != 4 || sizeof(Record) == nBytes);
    static_assert(sizeof(void*) != 4 || ((members.nActual == members.nDocumented) && ...));
};

/// A member and its documented offset.
#define MM_AT(nOffset, Record, member)                                                                       \
    MemberOffset                                                                                             \
    {                                                                                                        \
        offsetof(Record, member), nOffset                                                                    \
    }
