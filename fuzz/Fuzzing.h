#pragma once
// What the fuzz targets share: numbers that like the edges, documented results, and the host's images.
//
// The library here is the copy of the fault tests. It counts what is alive, and its clock moves only when
// somebody sleeps: a shortage that the library would wait out for a minute costs nothing.

#include "tests/ExternalPictures.h"
#include "tests/faults/FaultLayer.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <optional>
#undef NDEBUG
#include <cassert>

namespace fuzz {

inline constexpr int kMostBytes = 1 << 20; ///< of a host's block, and of an image that is moved whole

/// Whether an operation succeeded. Its result is a documented one in any case.
inline bool Done(DWORD nResult)
{
    assert(std::string_view(MM_ResultText(nResult)) != "unknown result code");
    return nResult == MM_SUCCESS;
}

struct Input : FuzzedDataProvider
{
    using FuzzedDataProvider::FuzzedDataProvider;

    int UpTo(int nMost) { return ConsumeIntegralInRange(0, nMost); }

    /// Mostly 0 to nSmall; sometimes any number, and sometimes one where sizes overflow.
    int Number(int nSmall)
    {
        constexpr int kEdges[] = {-1, INT_MIN, INT_MAX, 32767, 65535, 65536};
        return UpTo(9) > 0 ? UpTo(nSmall) : UpTo(1) > 0 ? ConsumeIntegral<int>() : PickValueInArray(kEdges);
    }

    /// Mostly nFirst - 1 to nFirst + nMost; after the highest number comes the lowest.
    int Behind(int nFirst, int nMost) { return int(unsigned(nFirst) - 1U + unsigned(UpTo(nMost + 1))); }

    using Calls = std::vector<std::function<DWORD()>>;
    bool CallOneOf(const Calls& calls) { return Done(calls[std::size_t(UpTo(int(calls.size()) - 1))]()); }
};

/// The host's bytes of an image. A file may hold anything; a block has what its description promises, and
/// little more: lines start at nOffset, or behind a signature.
struct External
{
    std::vector<char> block;
    std::optional<HostFile> file;

    /// Completes the description. hData stays null where the block would be larger than kMostBytes.
    External(Input& input, T_ImgInf& inf, double nLineBytes, double nLines)
    {
        std::string szBytes = input.ConsumeRandomLengthString(400);
        inf.eAcsType = tag_E_ACSTYPE(input.UpTo(ACS_FILEIO));
        inf.nOffset = input.Number(100);
        inf.hData = file.emplace(szBytes).Handle();
        if (inf.eAcsType != ACS_MEMORY)
            return;
        const double nBytes = MM_BITMAP_HEADER_BYTES + double(szBytes.rfind("BM") + 1) + DWORD(inf.nOffset) +
                              std::max(nLineBytes, 0.0) * std::max(nLines, 0.0);
        szBytes.resize(std::size_t(std::min<double>(nBytes, kMostBytes)));
        block.assign(szBytes.begin(), szBytes.end());
        inf.hData = nBytes <= kMostBytes ? block.data() : nullptr;
    }
};

/// What a target does with one input, in a budget of 64 KiB. False: a step failed, and what it charged for
/// stores that could not be made is dropped.
bool Run(Input& input);

} // namespace fuzz
