// Files mapped into memory, and how a file grows.
//
// A mapping handle is a duplicate of the file's descriptor. Its size and protection are remembered, so that
// making a view needs no call that asks for them. The disk blocks of the file are reserved when the mapping
// is made: a full disk is then an error of that call, and not a signal that ends the process when a pixel is
// written later.

#include "Platform/posix/PosixLayer.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform::posix;

namespace {

constexpr std::uint64_t kGranularity = 65536;

/// Views are widened to multiples of this in the file. The system then places them at multiples of it in
/// memory, and fills them several times as fast as other views. In a 32-bit process they are not: it has few
/// addresses.
constexpr std::uint64_t kWideCut = sizeof(void*) == 4 ? kGranularity : std::uint64_t{2} << 20;

/// Blocks are reserved in pieces, since a reservation that a signal interrupts has to start again. The pieces
/// become smaller while signals come faster than a piece is reserved.
constexpr std::uint64_t kLargestPiece = std::uint64_t{64} << 20;
constexpr std::uint64_t kSmallestPiece = std::uint64_t{1} << 20;

/// A view that was handed out. Its caller knows the address that is its key in the registry; the memory that
/// was mapped for it may start before that.
struct View
{
    BYTE* pMapped;
    SIZE_T nMapped;
    SIZE_T nBytes; ///< from the address that the caller has
};

Registry<std::uintptr_t, View>& Views()
{
    static Immortal<Registry<std::uintptr_t, View>> views;
    return views.value;
}

/// Reserves blocks like posix_fallocate, within a file's length. On a file system that cannot do it holes
/// stay: the C library's way out, writing into every block, would undo what somebody else writes at the same
/// time.
int AllocateInside(int nFile, off_t nOffset, off_t nBytes)
{
    return fallocate(nFile, 0, nOffset, nBytes) == 0 || errno == EOPNOTSUPP ? 0 : errno;
}

/// Reserves disk blocks for the bytes nFrom .. nTo - 1 of a file. 0, or an errno value: some may be reserved.
int ReserveBlocks(int nFile, std::uint64_t nFrom, std::uint64_t nTo, int (*pAllocate)(int, off_t, off_t))
{
    std::uint64_t nLargest = kLargestPiece;
    while (nFrom < nTo) {
        const std::uint64_t nPiece = std::min(nLargest, nTo - nFrom);
        const int nErrno = pAllocate(nFile, static_cast<off_t>(nFrom), static_cast<off_t>(nPiece));
        if (nErrno == 0)
            nFrom += nPiece;
        else if (nErrno == EINTR)
            nLargest = std::max(nLargest / 2, kSmallestPiece);
        else
            return nErrno;
    }
    return 0;
}

bool FailReservation(int nErrno)
{
    // ENOMEM comes from file systems that lie in memory: their disk is full.
    return nErrno == ENOMEM ? Fail(ERROR_DISK_FULL) : FailErrno(nErrno);
}

/// Reserves disk blocks for the holes in the first nBytes of a file, since writing into a hole through a view
/// is a signal when the disk is full. An input that is mapped for reading and writing takes its full size on
/// the disk from then on. The file's count of blocks tells whether it has holes at all. False: length and
/// content are as they were, and some holes may be filled.
bool FillHoles(int nFile, const struct stat& file, std::uint64_t nBytes)
{
    constexpr std::uint64_t kStatBlock = 512;
    if (static_cast<std::uint64_t>(file.st_blocks) * kStatBlock >= static_cast<std::uint64_t>(file.st_size))
        return true;
    const int nErrno = ReserveBlocks(nFile, 0, nBytes, AllocateInside);
    return nErrno == 0 || FailReservation(nErrno);
}

/// Makes a file longer, or leaves its length as it was: after a reservation that failed half-way, the next
/// append would go to the wrong place. False: 112 no room, 223 above a limit.
bool Grow(int nFile, std::uint64_t nFrom, std::uint64_t nTo)
{
    if (!FitsFileSizeLimit(nTo))
        return false;
    const int nErrno = ReserveBlocks(nFile, nFrom, nTo, posix_fallocate);
    if (nErrno == 0)
        return true;
    Uninterrupted([&] { return ftruncate(nFile, static_cast<off_t>(nFrom)); });
    return FailReservation(nErrno);
}

/// Whether an open file may be mapped in this way. A file that is open for appending cannot be mapped for
/// writing: what CopyToFile writes at a position would go to the file's end.
/// @param pFile  out: the file's status
bool CheckMappable(int nFile, bool bWritable, struct stat* pFile)
{
    const int nFlags = fcntl(nFile, F_GETFL);
    if (nFlags == -1 || fstat(nFile, pFile) != 0)
        return FailErrno();
    if (!S_ISREG(pFile->st_mode))
        return Fail(ERROR_INVALID_HANDLE);
    const int nMode = nFlags & O_ACCMODE;
    const bool bAllowed = bWritable ? nMode == O_RDWR && (nFlags & O_APPEND) == 0 : nMode != O_WRONLY;
    return bAllowed || Fail(ERROR_ACCESS_DENIED);
}

/// The protection of a view's memory; -1: an access that this layer does not offer.
int ProtectionOf(DWORD nAccess)
{
    switch (nAccess) {
    case FILE_MAP_READ:
        return PROT_READ;
    case FILE_MAP_WRITE:
    case FILE_MAP_ALL_ACCESS:
        return PROT_READ | PROT_WRITE;
    default:
        return -1;
    }
}

/// The mapping of a handle. None, with the reason as last error: there is no such mapping, it does not
/// contain nBytes from nOffset on, or it does not allow the protection.
std::optional<Mapping> FindMapping(HANDLE hMap, int nProtection, std::uint64_t nOffset, std::uint64_t nBytes)
{
    const auto mapping = Mappings().Find(DescriptorOf(hMap));
    if (!mapping) {
        Fail(ERROR_INVALID_HANDLE);
        return std::nullopt;
    }
    const bool bInside = nOffset < mapping->nBytes && nBytes <= mapping->nBytes - nOffset;
    if (!bInside || ((nProtection & PROT_WRITE) != 0 && !mapping->bWritable)) {
        Fail(ERROR_ACCESS_DENIED);
        return std::nullopt;
    }
    return mapping;
}

} // namespace

namespace platform::posix {

Registry<int, Mapping>& Mappings()
{
    static Immortal<Registry<int, Mapping>> mappings;
    return mappings.value;
}

} // namespace platform::posix

HANDLE CreateFileMappingA(HANDLE hFile, void* pSecurity, DWORD nProtect, DWORD nSizeHigh, DWORD nSizeLow,
                          LPCSTR pszName)
{
    const bool bWritable = nProtect == PAGE_READWRITE;
    if (pSecurity || nSizeHigh != 0 || pszName || (!bWritable && nProtect != PAGE_READONLY))
        return FailNull(ERROR_INVALID_PARAMETER);
    const int nFile = DescriptorOf(hFile);
    struct stat file = {};
    if (!CheckMappable(nFile, bWritable, &file))
        return nullptr;
    const auto nLength = static_cast<std::uint64_t>(file.st_size);
    const std::uint64_t nBytes = nSizeLow != 0 ? nSizeLow : nLength;
    if (nBytes == 0)
        return FailNull(ERROR_FILE_INVALID);
    if (nBytes > nLength && !bWritable)
        return FailNull(ERROR_NOT_ENOUGH_MEMORY);

    Descriptor mapping(fcntl(nFile, F_DUPFD_CLOEXEC, kFirstDescriptor));
    if (!mapping)
        return FailNull(ErrorOf(errno));
    if (!Mappings().Add(mapping.Get(), {nBytes, bWritable}))
        return FailNull(ERROR_NOT_ENOUGH_MEMORY);
    const HANDLE hMap = HandleOf(mapping.Release());
    if ((bWritable && !FillHoles(nFile, file, std::min(nBytes, nLength))) ||
        (nBytes > nLength && !Grow(nFile, nLength, nBytes))) {
        CloseHandle(hMap);
        return nullptr;
    }
    return hMap;
}

LPVOID MapViewOfFile(HANDLE hMap, DWORD nAccess, DWORD nOffsetHigh, DWORD nOffsetLow, SIZE_T nBytes)
{
    const std::uint64_t nOffset = std::uint64_t{nOffsetHigh} << 32 | nOffsetLow;
    const int nProtection = ProtectionOf(nAccess);
    if (nProtection == -1)
        return FailNull(ERROR_INVALID_PARAMETER);
    if (nOffset % kGranularity != 0)
        return FailNull(ERROR_MAPPED_ALIGNMENT);
    const auto mapping = FindMapping(hMap, nProtection, nOffset, nBytes);
    if (!mapping)
        return nullptr;

    const std::uint64_t nEnd = nBytes != 0 ? nOffset + nBytes : mapping->nBytes;
    const std::uint64_t nFirst = nOffset / kWideCut * kWideCut;
    const std::uint64_t nLast = std::min((nEnd + kWideCut - 1) / kWideCut * kWideCut, mapping->nBytes);
    if (nLast - nFirst > SIZE_MAX)
        return FailNull(ERROR_NOT_ENOUGH_MEMORY);
    const auto nMapped = static_cast<SIZE_T>(nLast - nFirst);
    void* pMapped =
        mmap(nullptr, nMapped, nProtection, MAP_SHARED, DescriptorOf(hMap), static_cast<off_t>(nFirst));
    if (pMapped == MAP_FAILED)
        return FailNull(ErrorOf(errno));

    BYTE* pView = static_cast<BYTE*>(pMapped) + (nOffset - nFirst);
    const View view = {static_cast<BYTE*>(pMapped), nMapped, static_cast<SIZE_T>(nEnd - nOffset)};
    if (!Views().Add(reinterpret_cast<std::uintptr_t>(pView), view)) {
        munmap(pMapped, nMapped);
        return FailNull(ERROR_NOT_ENOUGH_MEMORY);
    }
    return pView;
}

BOOL UnmapViewOfFile(LPCVOID pView)
{
    const auto nAddress = reinterpret_cast<std::uintptr_t>(pView);
    const auto view = Views().Take(nAddress);
    if (!view)
        return Fail(ERROR_INVALID_ADDRESS);
    if (munmap(view->pMapped, view->nMapped) != 0) {
        FailErrno();
        Views().Add(nAddress, *view);
        return 0;
    }
    return 1;
}

BOOL FlushViewOfFile(LPCVOID pAddress, SIZE_T nBytes)
{
    const auto nAddress = reinterpret_cast<std::uintptr_t>(pAddress);
    const auto found = Views().FindAtOrBelow(nAddress);
    const SIZE_T nBefore = found ? static_cast<SIZE_T>(nAddress - found->first) : 0;
    if (!found || nBefore >= found->second.nBytes)
        return Fail(ERROR_INVALID_ADDRESS);
    const View& view = found->second;
    const SIZE_T nLeft = view.nBytes - nBefore;
    if (nBytes > nLeft)
        return Fail(ERROR_INVALID_ADDRESS);
    const SIZE_T nInPage = nAddress % static_cast<SIZE_T>(sysconf(_SC_PAGESIZE));
    BYTE* pPage = reinterpret_cast<BYTE*>(nAddress - nInPage);
    return msync(pPage, (nBytes != 0 ? nBytes : nLeft) + nInPage, MS_SYNC) == 0 || FailErrno();
}

bool platform::CopyToFile(HANDLE hFile, HANDLE hMap, DWORD nOffset, const void* pSrc, DWORD nBytes,
                          bool bFlush)
{
    if (!FindMapping(hMap, PROT_WRITE, nOffset, nBytes) ||
        !FitsFileSizeLimit(std::uint64_t{nOffset} + nBytes))
        return false;
    // A write at a position, not through a view: in a file that grows step by step it is eight times as fast.
    const int nFile = DescriptorOf(hFile);
    for (DWORD nDone = 0; nDone < nBytes;) {
        const ssize_t nPart = Uninterrupted([&] {
            return pwrite(nFile, static_cast<const BYTE*>(pSrc) + nDone, nBytes - nDone,
                          static_cast<off_t>(std::uint64_t{nOffset} + nDone));
        });
        if (nPart <= 0)
            return nPart < 0 ? FailErrno() : Fail(ERROR_WRITE_FAULT);
        nDone += static_cast<DWORD>(nPart);
    }
    if (bFlush)
        sync_file_range(nFile, static_cast<off_t>(nOffset), static_cast<off_t>(nBytes),
                        SYNC_FILE_RANGE_WRITE); // a hint, whose failure does no harm
    return true;
}
