#pragma once
// An image object that tells how it was planned.

#include "MemoryManager/MemoryManager.h"

#include <string>

/// How one image of a step is held.
struct ImagePlan
{
    std::string szImage;   ///< what it is, with its format
    std::string szPlace;   ///< where its bytes are
    std::int64_t nBytes;   ///< bytes of the whole image there
    int nHeight;           ///< lines
    int nBandLines;        ///< lines of a band; nHeight when it is held whole
    std::int64_t nCharged; ///< bytes of the budget

    int Bands() const { return (nHeight + nBandLines - 1) / nBandLines; }
};

/// The library asks an object for its geometry between planning a transfer and moving the first band. At that
/// moment this object notes what it and the external image were given; afterwards the latter is gone.
class PlannedImage final : public CImageObj
{
public:
    void GetImageInfo(T_ImageLrg_tag* pInfo) override;
    int GetBandHeight() override;

    /// Gives it a size and a format with four samples, to be planned.
    /// @return a code of SetImageInfo
    DWORD SetGeometry(int nWidth, int nHeight, int nFormat);

    /// To be called ahead of ImportImg and ExportImg: what is missing from the budget then is not theirs.
    void BeginTransfer() { m_nFreeBefore = FreeWithoutExternal(); }

    /// The object as it is held now.
    ImagePlan Plan(const std::string& szImage) const;

    /// The object at the moment noted last.
    const ImagePlan& NotedPlan() const { return m_noted; }

    /// Bytes of the budget that the external image of the last transfer was given.
    LONG ExternalCharge() const { return m_nExternalCharge; }

private:
    void Note();
    LONG FreeWithoutExternal() const;

    LONG m_nFreeBefore = 0;
    LONG m_nExternalCharge = 0;
    ImagePlan m_noted{};
};
