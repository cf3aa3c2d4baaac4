#pragma once
// An image object that tells how it is planned.

#include "library/StepPlan.h"

#include <string>

/// What the planner gave to both sides of a transfer.
struct TransferPlan
{
    ImagePlan object;         ///< while the bands moved
    LONG nExternalCharge = 0; ///< bytes of the budget that the external image had
    LONG nBudget = 0;         ///< bytes of the budget in use
    BudgetMoment moment{};    ///< when these numbers held
};

/// An image object that is real or dry. A real one is like any other. A dry one is planned like a real one,
/// but has no bytes: where the planner asks for its store, it only notes what kind that would be. So the
/// library's own planner makes the plan of a run, and the run does not differ from it.
///
/// Used by one thread. Codes are those of ResultCodes.h.
class PlannedImage final : public CImageObj
{
public:
    /// @param szName  what its plans call it
    PlannedImage(bool bDry, std::string szName);
    ~PlannedImage();
    PlannedImage(const PlannedImage&) = delete;
    PlannedImage& operator=(const PlannedImage&) = delete;

    /// Number of objects whose store may still exist: they live, or were destroyed without giving it up.
    static int Holding() { return ms_nHolding; }

    const std::string& Name() const { return m_szName; }

    /// Gives the object a size and a format, with nMargin pixels around the image. It can be planned then.
    /// @return a code of SetImageInfo
    DWORD SetGeometry(int nWidth, int nHeight, int nFormat, int nMargin = 0);

    /// Whether the planner will reach it in bands: it lies in a file for which the free budget or the largest
    /// mapping is too small.
    bool WillBeBanded() const;

    /// Gives back the charge of a dry image in a file. The planner does so itself for a real one that it
    /// plans again.
    void ReturnDryCharge();

    /// ImportImg and ExportImg. A dry object only plans them: no pixel and no file is touched.
    /// @param inf        the external image, set up for the import or export
    /// @param bReversed  the object's first line is the last stored one
    /// @param bOwnAlpha  a fourth sample that is written is the object's own; else it is opaque
    /// @return a code of the library
    DWORD Import(T_ImgInf& inf, bool bReversed);
    DWORD Export(T_ImgInf& inf, bool bReversed, bool bOwnAlpha);

    /// What the last Import or Export was given. The object's role is the one that it had there.
    const TransferPlan& Transfer() const { return m_transfer; }

    /// The object as it is held now.
    ImagePlan Plan(ImageRole eRole) const;

    void GetImageInfo(T_ImageLrg_tag* pInfo) override;
    int GetBandHeight() override;
    DWORD Create(LONG nSize, LONG nAllotted, int nSlots) override;

private:
    enum class Place
    {
        Nowhere,
        Memory,
        File,
        FileMappedWhole,
    };

    DWORD PlanImport(const T_ImgInf& inf, bool bReversed);
    DWORD PlanExport(const T_ImgInf& inf, bool bReversed);
    void BeginTransfer(ImageRole eRole);
    DWORD EndTransfer(DWORD nCode);
    void NoteTransfer();
    LONG FreeWithoutExternal() const;
    Place PlaceNow() const;
    bool LiesInFile() const;

    bool m_bDry;
    std::string m_szName;
    Place m_eDryPlace = Place::Nowhere;
    bool m_bTransferring = false;
    ImageRole m_eRole = ImageRole::Input; ///< in the transfer
    LONG m_nFreeBefore = 0;               ///< budget without this object's charge, ahead of the transfer
    TransferPlan m_transfer{};

    static inline int ms_nHolding = 0;
};
