#pragma once
// What the files of this layer share: errors, paths, descriptors and the registries of what it handed out.
//
// Internal: only Platform/posix/ and the tests of this layer include it.

#include "Platform/Platform.h"

#include <cerrno>
#include <climits>
#include <iterator>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <utility>

namespace platform::posix {

// Errors ---------------------------------------------------------------------------------------------------

/// The last-error code that stands for an errno value.
DWORD ErrorOf(int nErrno);

/// Sets the last error and returns false, so that a refusal is one statement.
bool Fail(DWORD nError);
bool FailErrno(int nErrno = errno);
/// The same for calls that return an address or a handle of which null is none.
std::nullptr_t FailNull(DWORD nError);

/// Repeats a system call for as long as signals interrupt it.
template <class Call> auto Uninterrupted(Call call)
{
    auto nResult = call();
    while (nResult == -1 && errno == EINTR)
        nResult = call();
    return nResult;
}

// Paths ----------------------------------------------------------------------------------------------------

/// Tells a text's characters apart: UTF-8 where all of it is valid, else code page 932, in which the second
/// byte of a character may look like a letter or a backslash.
class CharacterSet
{
public:
    explicit CharacterSet(const char* pszText);
    /// Bytes of the character that starts here; 1 at the end of the text.
    int Length(const char* pCharacter) const;

private:
    bool m_bUtf8;
};

/// Turns every character that is a backslash into a slash; no other byte changes.
void BackslashesToSlashes(char* pszPath);

/// A caller's path with slashes between its folders. Not valid: null, or longer than the system's limit; the
/// last error tells.
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

// Descriptors ----------------------------------------------------------------------------------------------

/// Lowest descriptor that the layer hands out: 0 would be a null handle, and what a library or host prints to
/// a closed standard stream must not end up in an image.
inline constexpr int kFirstDescriptor = 3;

/// An open file descriptor of its own, or -1.
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

/// open(2), close-on-exec, never interrupted, never below kFirstDescriptor. Empty: errno tells why.
Descriptor OpenDescriptor(const char* pszPath, int nFlags);

/// A file for reading and writing without a name, in the folder of pszPath: created as pszPath + "~" and
/// unlinked at once, for file systems that know no nameless files. Empty: errno tells why.
Descriptor OpenUnlinked(const char* pszPath);

/// -1 for the null handle and for values that no descriptor has.
int DescriptorOf(HANDLE hFile);
HANDLE HandleOf(int nDescriptor);

/// Whether the process may have a file of nBytes. False: error 223. The system sends a signal where a write
/// passes this limit, so every growth and every write asks first.
bool FitsFileSizeLimit(std::uint64_t nBytes);

// Registries -----------------------------------------------------------------------------------------------

/// What the layer remembers of a descriptor or an address, for any thread.
///
/// A key is present exactly while its descriptor or address range belongs to the layer: it is taken out
/// before the system may give the same number to somebody else, and added after the system gave it.
template <class Key, class Value> class Registry
{
public:
    /// False: no memory, nothing added.
    bool Add(Key key, Value value) noexcept
    try {
        const std::scoped_lock lock(m_mutex);
        m_entries.insert_or_assign(key, std::move(value));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }

    std::optional<Value> Find(Key key)
    {
        const std::scoped_lock lock(m_mutex);
        const auto found = m_entries.find(key);
        return found == m_entries.end() ? std::nullopt : std::optional<Value>(found->second);
    }

    std::optional<Value> Take(Key key)
    {
        const std::scoped_lock lock(m_mutex);
        auto node = m_entries.extract(key);
        return node ? std::optional<Value>(std::move(node.mapped())) : std::nullopt;
    }

    /// The entry with the greatest key that is not above the given one.
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

/// Holds a value that is never destroyed, so that a host's last destructors can still close their handles.
template <class T> union Immortal {
    T value;
    Immortal() : value() {}
    ~Immortal() {}
};

struct Mapping
{
    std::uint64_t nBytes; ///< the file had at least this length when the mapping was made
    bool bWritable;
};

/// The mapping handles by their descriptors, which are duplicates of their files'.
Registry<int, Mapping>& Mappings();

// Memory load ----------------------------------------------------------------------------------------------

struct MemoryUse
{
    std::uint64_t nTotal;
    std::uint64_t nAvailable;
    unsigned nLoad; ///< percent in use; 0 where the system does not tell
};

/// The machine's memory, or the control group's where that is fuller. pszRoot goes before /proc and /sys.
MemoryUse ReadMemoryUse(const char* pszRoot);

} // namespace platform::posix
