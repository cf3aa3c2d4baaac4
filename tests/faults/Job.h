#pragma once
// What one run of a library job works with: the host's files and blocks, the bytes that the job brings forth,
// and the folder in which all of it happens.

#include "../StandardLibrary.h"
#include "FaultLayer.h"
#include "MemoryManager/MemoryManager.h"
#include <chrono>
#include <deque>

namespace fs = std::filesystem;

/// Bytes that tell where they belong.
inline std::string Numbered(int nBytes)
{
    std::string sBytes;
    for (int i = 0; i < nBytes; ++i)
        sBytes += static_cast<char>(i * 7 + i / 251);
    return sBytes;
}

/// The bytes of a file, which is deleted.
inline std::string TakeFile(const fs::path& path, std::ios::openmode eMode = std::ios::binary)
{
    std::ostringstream bytes;
    bytes << std::ifstream(path, eMode).rdbuf();
    fs::remove(path);
    return bytes.str();
}

inline constexpr int kHeader = 54; // bytes

// Stores with their protected state in view.
template <class Store> struct Opened : Store
{
    using Store::m_hMap, Store::ms_ExecuteFlg, Store::ms_TempDirctoryName;
};

/// A folder with those that the library wants: its temporary one, that of the error log, those of the dumps.
class Sandbox
{
public:
    Sandbox()
    {
        for (const char* pszFolder : {"temp", "host", "tmp", "logdata/trace", "current"})
            fs::create_directories(sRoot + pszFolder);
        fs::current_path(sRoot + "current");
        SetErrLogPath((sRoot + "log/").c_str());
        faults::g_sTemp = sRoot + "temp/";
    }
    ~Sandbox()
    {
        fs::current_path(m_before);
        fs::remove_all(sRoot);
    }
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    /// The bytes of a folder's files, one behind the other; the files are deleted. A log is text.
    std::string Take(const std::string& sFolder) const
    {
        std::error_code none;
        std::set<fs::path> paths;
        for (const auto& file : fs::directory_iterator(sRoot + sFolder, none))
            paths.insert(file.path());
        std::string sBytes;
        for (const auto& path : paths)
            sBytes += TakeFile(path, sFolder == "log" ? std::ios::in : std::ios::binary);
        return sBytes;
    }

private:
    // A folder in memory, where there is one, is many times as fast as a disk.
    const fs::path m_temp = fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path(),
                   m_before = fs::current_path();
    const std::string m_sName =
        "faults" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());

public:
    const std::string sRoot = (m_temp / m_sName / "").string();
};

/// The process's one sandbox.
inline const Sandbox& Home()
{
    static const Sandbox sandbox;
    return sandbox;
}

/// One run. The host's files and blocks live as long as it does.
struct Job
{
    explicit Job(const Sandbox& home) : sandbox(home) {}
    ~Job() { Close(); }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    /// A file of the host's, open for reading and writing. An input stays as it is.
    HANDLE File(const std::string& sContent, bool bInput)
    {
        const std::string sPath = sandbox.sRoot + "host/" + std::to_string(m_held.size());
        std::ofstream(sPath, std::ios::binary) << sContent;
        m_held.push_back(
            {CreateFileA(sPath.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                         nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr),
             sPath, sContent, bInput});
        return m_held.back().hFile;
    }
    /// The same as a block, with guards behind it.
    char* Block(const std::string& sContent, bool bInput)
    {
        m_held.push_back({nullptr, sContent + kGuards, sContent + kGuards, bInput});
        return m_held.back().sPlace.data();
    }

    template <class Byte> void Put(const Byte* pBytes, std::size_t nBytes)
    {
        sBytes.append(reinterpret_cast<const char*>(pBytes), nBytes);
    }

    /// Ends the host's part and tells what its outputs hold.
    void Close()
    {
        for (Held& held : m_held) {
            nHandlesLost += held.hFile && !CloseHandle(held.hFile) ? 1 : 0;
            const std::string sNow = held.hFile ? TakeFile(held.sPlace) : held.sPlace;
            bHarmed = bHarmed || (held.bInput && sNow != held.sContent) ||
                      (!held.hFile && !sNow.ends_with(kGuards));
            sOutput += held.bInput ? "" : sNow;
        }
        m_held.clear();
    }

    const Sandbox& sandbox;
    std::string sBytes;      ///< what the job has brought forth
    std::string sOutput;     ///< what the host's outputs hold
    bool bReplanned = false; ///< a step was planned once more, and has withheld the reserve
    bool bHarmed = false;    ///< an input has changed, or bytes behind a block
    int nHandlesLost = 0;    ///< host's files that the library has closed

private:
    static constexpr const char* kGuards = "guards";
    struct Held
    {
        HANDLE hFile; // null: a block
        std::string sPlace, sContent;
        bool bInput;
    };
    std::deque<Held> m_held;
};
