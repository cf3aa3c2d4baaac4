#pragma once
// An image object that tells how it was planned.

#include "MemoryManager/MemoryManager.h"
#include "report/RunHistory.h"
#include "report/RunPlan.h"

#include <string>

/// The library asks an object for its geometry between planning a transfer and moving the first band. At that
/// moment this object notes what it and the external image were given; afterwards the latter is gone.
///
/// A dry one takes part in the planning like any other, but has no bytes: where the planner asks for a store,
/// it only notes what kind that would be.
class PlannedImage final : public CImageObj
{
public:
    /// @param pszName  what its noted plans call it
    explicit PlannedImage(bool bDry, const char* pszName = "object") : m_bDry(bDry), m_pszName(pszName)
    {
        ++ms_nHolding;
    }
    ~PlannedImage();
    PlannedImage(const PlannedImage&) = delete;
    PlannedImage& operator=(const PlannedImage&) = delete;

    /// Objects whose store may still exist: they live, or went without giving it up.
    static int Holding() { return ms_nHolding; }

    void GetImageInfo(T_ImageLrg_tag* pInfo) override;
    int GetBandHeight() override;
    DWORD Create(LONG nSize, LONG nAllotted, int nSlots) override;

    /// Gives it a size and a format, to be planned, with nMargin pixels around the image.
    /// @return a code of SetImageInfo
    DWORD SetGeometry(int nWidth, int nHeight, int nFormat, int nMargin = 0);

    /// To be called ahead of ImportImg and ExportImg: what is missing from the budget then is not theirs.
    void BeginTransfer() { m_nFreeBefore = FreeWithoutExternal(); }

    /// Gives the charge of a dry image in a file back, as the planner does for a real one that it plans
    /// again.
    void ReturnDryCharge();

    /// The object as it is held now.
    ImagePlan Plan(const std::string& szImage, ImageRole eRole) const;

    /// The object at the moment noted last, the bytes of the budget that the external image of the transfer
    /// was given, those that were in use, and when that was.
    ImagePlan NotedPlan(ImageRole eRole) const;
    LONG ExternalCharge() const { return m_nExternalCharge; }
    LONG NotedBudget() const { return m_nBudget; }
    const BudgetMoment& NotedMoment() const { return m_moment; }

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
    const char* m_pszName;
    Place m_eDryPlace = Place::Nowhere;
    LONG m_nFreeBefore = 0;
    LONG m_nExternalCharge = 0;
    LONG m_nBudget = 0;
    BudgetMoment m_moment{};
    ImagePlan m_noted{};

    static inline int ms_nHolding = 0;
};
