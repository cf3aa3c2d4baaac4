#pragma once
// A picture that is made from another one.

#include "pictures/InputFile.h"
#include "pixels/BandWork.h"
#include "report/Report.h"
#include "schemes/LineOrder.h"
#include "values/FilterSettings.h"
#include "values/ProcessIds.h"

#include <memory>

/// What comes out, and how. Both schemes write the same bytes.
///
/// All images on the way have their lines in the order in which the output stores them: from the bottom up
/// for bitmaps.
struct Job
{
    std::string szName;   ///< of the step in the middle
    int nIpNo;            ///< its process identifier
    std::string szOutput; ///< the picture to write
    Format eTo;
    ImageSize size;  ///< of the output
    LineOrder order; ///< what is reversed between the stored lines
    bool bOwnAlpha;  ///< a fourth sample is carried through, else opaque
    int nFrame = 0;  ///< pixels around a source band that the work looks at
    FrameFill frame{MM_FRAME_NONE, 0};
    std::unique_ptr<BandWork> pWork = nullptr; ///< null: the lines go through as they are
    bool bOneObject = false;                   ///< unit scheme: one object reads, is worked on, and writes

    /// What the work has to reverse.
    LineOrder LeftToWork(Scheme eScheme) const { return order.LeftToWork(eScheme, bOneObject); }
};

/// A job that keeps format and size and does not turn the picture. It has no work yet. Throws Failure
/// (WrongCommandLine) when the output's name means another format.
Job KeepFormat(const std::string& szName, int nIpNo, const PictureFacts& facts, const std::string& szOutput);

/// Does the job, or only plans it, and tells the report. Closes the input before the output is published,
/// which may replace it. Throws Failure.
void RunJob(const RunSettings& settings, InputFile& input, const Job& job, Report& report);
