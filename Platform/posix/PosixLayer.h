#pragma once
// What the sources of this layer share: errors, paths, descriptors, and the registries of the handles and
// addresses that the layer has handed out.
//
// Internal: included by Platform/posix and the tests of this layer only.

#include "Platform/Platform.h"

#include <cerrno>
#include <climits>
#include <iterator>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace platform::posix {

// Errors ---------------------------------------------------------------------------------------------------

/// The last-error code that stands for an errno value.
DWORD ErrorOf(int nErrno);

/// Sets the last error and returns false.
bool Fail(DWORD nError);

/// Sets the last error that stands for an errno value, and returns false.
bool FailErrno(int nErrno = errno);

/// Sets the last error and returns null, for calls that return an address or a handle.
std::nullptr_t FailNull(DWORD nError);

/// Makes a system call, and makes it again for as long as signals interrupt it.
template <class Call> auto Uninterrupted(Call call)
{
    auto nResult = call();
    while (nResult == -1 && errno == EINTR)
        nResult = call();
    return nResult;
}

// Paths ----------------------------------------------------------------------------------------------------

/// How the bytes of a text form characters: as UTF-8 if all of it is valid UTF-8, else as code page 932, in
/// which the second byte of a character may look like a letter or a backslash.
class CharacterSet
{
public:
    explicit CharacterSet(const char* pszText);
    /// Bytes of the character that starts here; 1 at the end of the text.
    int Length(const char* pCharacter) const;

private:
    bool m_bUtf8;
};

/// The small letter of a capital A to Z; any other character as it is.
constexpr char SmallLetter(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Turns every character that is a backslash into a slash; no other byte changes.
void BackslashesToSlashes(char* pszPath);

/// A caller's path with slashes between its folders. Not valid, with the reason as last error: a null path,
/// or one that is longer than the system allows.
class NativePath
{
public:
    explicit NativePath(LPCSTR pszPath);
    bool IsValid() const { return m_bValid; }
    const char* Text() const { return m_szPath; }
    char* Text() { return m_szPath; }
    bool EndsInSlash() const;

private:
    char m_szPath[PATH_MAX];
    bool m_bValid;
};

/// A path with slashes as one that starts at the root, which a change of the current folder does not move.
/// Throws std::bad_alloc.
std::string FromRoot(const char* pszPath);

// Descriptors ----------------------------------------------------------------------------------------------

/// The lowest descriptor that the layer hands out. 0 would be a null handle; 1 and 2 may be free because a
/// host has closed its standard streams, and what is printed to them must not go into an image.
inline constexpr int kFirstDescriptor = 3;

/// Owns an open file descriptor, or none (-1), and closes it. Closing leaves errno as it was.
class Descriptor
{
public:
    explicit Descriptor(int nDescriptor = -1) : m_nDescriptor(nDescriptor) {}
    Descriptor(Descriptor&& other) noexcept : m_nDescriptor(other.Release()) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(Descriptor other) noexcept
    {
        std::swap(m_nDescriptor, other.m_nDescriptor);
        return *this;
    }
    ~Descriptor();

    explicit operator bool() const { return m_nDescriptor >= 0; }
    int Get() const { return m_nDescriptor; }
    int Release() { return std::exchange(m_nDescriptor, -1); }

private:
    int m_nDescriptor;
};

/// Opens a file as open(2) does. The descriptor is closed by exec and not below kFirstDescriptor; signals do
/// not interrupt the call. Empty: errno tells why.
Descriptor OpenDescriptor(const char* pszPath, int nFlags);

/// Makes a file without a name on a file system that has no such files: it is created as pszPath + "~" and
/// unlinked at once. It is open for reading and writing. Empty: errno tells why.
Descriptor OpenUnlinked(const char* pszPath);

/// The descriptor of a handle; -1 for the null handle and for values that no descriptor has.
int DescriptorOf(HANDLE hFile);

/// The handle of a descriptor.
HANDLE HandleOf(int nDescriptor);

/// Whether the process may write a file of nBytes bytes. False: error 223. The system would send a signal
/// when a write passes the limit, so this is asked before a file grows or is written.
bool FitsFileSizeLimit(std::uint64_t nBytes);

// Registries -----------------------------------------------------------------------------------------------

/// What the layer remembers of descriptors or addresses. Any thread may use it; the keys are the descriptors
/// or addresses.
///
/// A key is present only while the layer owns its descriptor or memory: it is added after the system has
/// given that, and taken out before it is given back, when the system may hand it to another thread.
template <class Key, class Value> class Registry
{
public:
    /// Adds an entry, or replaces the one of this key. False: no memory, nothing is added.
    bool Add(Key key, Value value) noexcept
    try {
        const std::scoped_lock lock(m_mutex);
        m_entries.insert_or_assign(key, std::move(value));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }

    /// A copy of an entry; none: there is no such key.
    std::optional<Value> Find(Key key)
    {
        const std::scoped_lock lock(m_mutex);
        const auto found = m_entries.find(key);
        return found == m_entries.end() ? std::nullopt : std::optional<Value>(found->second);
    }

    /// Removes an entry and returns it; none: there is no such key.
    std::optional<Value> Take(Key key)
    {
        const std::scoped_lock lock(m_mutex);
        auto node = m_entries.extract(key);
        return node ? std::optional<Value>(std::move(node.mapped())) : std::nullopt;
    }

    /// A copy of the entry with the greatest key that is not above the given one.
    std::optional<std::pair<Key, Value>> FindAtOrBelow(Key key)
    {
        const std::scoped_lock lock(m_mutex);
        const auto above = m_entries.upper_bound(key);
        if (above == m_entries.begin())
            return std::nullopt;
        return *std::prev(above);
    }

private:
    std::mutex m_mutex;
    std::map<Key, Value> m_entries;
};

/// Holds a value that is never destroyed, so that handles can still be closed in destructors that run while
/// the process ends.
template <class T> union Immortal {
    T value;
    Immortal() : value() {}
    ~Immortal() {} // NOLINT(modernize-use-equals-default): the default would be no destructor at all
};

struct Mapping
{
    std::uint64_t nBytes; ///< the file was at least this long when the mapping was made
    bool bWritable;
};

/// The open mappings by their descriptors, which are duplicates of those of their files.
Registry<int, Mapping>& Mappings();

// Memory load ----------------------------------------------------------------------------------------------

struct MemoryUse
{
    std::uint64_t nTotal;     ///< bytes; 0: the system does not tell
    std::uint64_t nAvailable; ///< bytes
    unsigned nLoad;           ///< percent in use; 0: the system does not tell
};

/// How full the machine's memory is, or that of the fullest of the process's control groups. The smallest of
/// their limits is the total.
/// @param pszRoot  a path ahead of /proc and /sys: empty, or a test's copy of them
MemoryUse ReadMemoryUse(const char* pszRoot);

} // namespace platform::posix
