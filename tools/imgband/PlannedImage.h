#pragma once
// An image object that tells how it was planned.

#include "MemoryManager/MemoryManager.h"
#include "RunPlan.h"

#include <string>

/// The library asks an object for its geometry between planning a transfer and moving the first band. At that
/// moment this object notes what it and the external image were given; afterwards the latter is gone.
///
/// A dry one takes part in the planning like any other, but has no bytes: where the planner asks for a store,
/// it only notes what kind that would be.
class PlannedImage final : public CImageObj
{
public:
    explicit PlannedImage(bool bDry) : m_bDry(bDry) {}

    void GetImageInfo(T_ImageLrg_tag* pInfo) override;
    int GetBandHeight() override;
    DWORD Create(LONG nSize, LONG nAllotted, int nSlots) override;

    /// Gives it a size and a format with four samples, to be planned.
    /// @return a code of SetImageInfo
    DWORD SetGeometry(int nWidth, int nHeight, int nFormat);

    /// To be called ahead of ImportImg and ExportImg: what is missing from the budget then is not theirs.
    void BeginTransfer() { m_nFreeBefore = FreeWithoutExternal(); }

    /// Gives the charge of a dry image in a file back, as the planner does for a real one that it plans
    /// again.
    void ReturnDryCharge();

    /// The object as it is held now.
    ImagePlan Plan(const std::string& szImage) const;

    /// The object at the moment noted last, the bytes of the budget that the external image of the transfer
    /// was given, and those that were in use.
    const ImagePlan& NotedPlan() const { return m_noted; }
    LONG ExternalCharge() const { return m_nExternalCharge; }
    LONG NotedBudget() const { return m_nBudget; }

private:
    enum class Place
    {
        Nowhere,
        Memory,
        File,
        FileMappedWhole,
    };

    void Note();
    LONG FreeWithoutExternal() const;
    Place PlaceNow() const;

    bool m_bDry;
    Place m_eDryPlace = Place::Nowhere;
    LONG m_nFreeBefore = 0;
    LONG m_nExternalCharge = 0;
    LONG m_nBudget = 0;
    ImagePlan m_noted{};
};
