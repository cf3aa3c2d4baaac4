#pragma once
// A picture that is made from another one.

#include "pictures/InputFile.h"
#include "pixels/BandWork.h"
#include "report/Report.h"
#include "schemes/LineOrder.h"
#include "values/FilterSettings.h"
#include "values/ProcessIds.h"

#include <memory>

/// What comes out, and how. Both schemes do it with the same bytes.
///
/// Whatever is in memory on the way lies in the order of the output's stored lines: from the bottom up for
/// bitmaps.
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

    LineOrder LeftToWork(Scheme eScheme) const { return order.LeftToWork(eScheme, bOneObject); }
};

/// A job that keeps the input's format and size and turns nothing, without a work yet. Throws Failure
/// (WrongCommandLine) when the output's name means another format.
Job KeepFormat(const std::string& szName, int nIpNo, const PictureFacts& facts, const std::string& szOutput);

/// Does the job, or plans it, and tells the report. The input is closed when its place may be taken by the
/// output. Throws Failure.
void RunJob(const RunSettings& settings, InputFile& input, const Job& job, Report& report);
