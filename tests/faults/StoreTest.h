#pragma once
// The fixture of the store tests: host file, temporary files and error log in a folder of their own, an image
// whose bytes tell where they belong, and a look at what is left when a test ends.

#include "../ResultChecks.h"
#include "MemoryManager/CImageCtrlIO.h"
#include "MemoryManager/ImgObjUty.h"
#include "MemoryManager/base/PlatformHelpers.h"
#include "Platform/Platform.h"
#include <chrono>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

inline std::string Numbered(int nBytes)
{
    std::string sBytes;
    for (int i = 0; i < nBytes; ++i)
        sBytes += static_cast<char>(i * 7 + i / 251);
    return sBytes;
}

inline constexpr int kBytes = 299997, kBand = kBytes / 3, kHeader = 54, kWhole = kHeader + kBytes;
inline const std::string kImage = Numbered(kBytes), kPicture = std::string(kHeader, 'h') + kImage;

#if defined(_WIN32)
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
#else
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE; // nobody may delete such a file
#endif

// Stores with their protected state in view.
template <class Store> struct Opened : Store
{
    using Store::m_hMap, Store::ms_ExecuteFlg, Store::ms_TempDirctoryName;
};

/// What the error log holds after one failure.
inline std::string LogLine(const char* pszUnit, int nLine, DWORD nError)
{
    return std::string("MemoryManager/") + pszUnit + '(' + std::to_string(nLine) +
           "):LastError=" + std::to_string(nError) + '\n';
}

/// The error of a call that gave this; 0 where it has not failed.
template <class Result> DWORD ErrorOf(Result result)
{
    return result ? 0 : GetLastError();
}

class StoreTest : public testing::Test
{
protected:
    StoreTest()
    {
        const auto nTime = std::chrono::steady_clock::now().time_since_epoch().count();
        m_sFolder = (fs::temp_directory_path() / ("stores" + std::to_string(nTime)) / "").string();
        fs::create_directories(m_sFolder + "temp");
        std::strcpy(m_pszTemp, (m_sFolder + "temp/").c_str());
        SetErrLogPath((m_sFolder + "log/").c_str());
        faults::Begin();
    }
    ~StoreTest() override
    {
        *m_pszTemp = '\0'; // so that other tests look for the folder again
        fs::remove_all(m_sFolder);
        EXPECT_EQ(faults::Alive{}, faults::g_alive);
    }
    // The bytes of the files in one of the folders, one behind the other; the files are deleted. A log is
    // text.
    std::string Take(const char* pszFolder) const
    {
        std::ostringstream bytes;
        std::error_code noFolder;
        const auto mode = pszFolder == std::string("log") ? std::ios::in : std::ios::binary;
        for (const auto& file : fs::directory_iterator(m_sFolder + pszFolder, noFolder))
            bytes << std::ifstream(file.path(), mode).rdbuf();
        fs::remove_all(m_sFolder + pszFolder);
        fs::create_directory(m_sFolder + pszFolder);
        return bytes.str();
    }
    HANDLE OpenHost(const std::string& sContent) const
    {
        const std::string sPath = m_sFolder + "host/file";
        fs::create_directory(m_sFolder + "host");
        std::ofstream(sPath, std::ios::binary) << sContent;
        return CreateFileA(sPath.c_str(), GENERIC_READ | GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    // Copies the image into the store or compares it, band by band.
    static DWORD Pass(CImageCtrl& store, bool bIn)
    {
        DWORD nResult = MM_SUCCESS;
        for (DWORD nAt = 0; nAt < DWORD{kBytes} && nResult == MM_SUCCESS; nAt += kBand) {
            void* pBand = store.MapBandAdress(nAt, kBand, 0);
            if (pBand == nullptr)
                return MM_NO_BAND_ADDRESS;
            if (auto* pExternal = dynamic_cast<CImageCtrlIO*>(&store)) {
                EXPECT_EQ(pBand, pExternal->GetWrtBuf(static_cast<int>(nAt)));
            }
            if (bIn)
                std::memcpy(pBand, &kImage[nAt], kBand);
            EXPECT_TRUE(SameBytes(BytesAt(&kImage[nAt], kBand), BytesAt(pBand, kBand))) << "band at " << nAt;
            nResult = store.FreeBandAdress(0);
        }
        return nResult;
    }

    char* m_pszTemp = Opened<CImageCtrl>::ms_TempDirctoryName;
    std::string m_sFolder; // with its separator
};
