#pragma once
// What one processing step asks of the memory planner.

/// One step's images. The arrays that are passed with it hold nInCnt, nOutCnt and nTmpCnt pointers to
/// objects.
struct tag_MemAlloc
{
    int nInCnt = 1;  ///< input images
    int nOutCnt = 0; ///< output images, 0 or 1
    int nTmpCnt = 0; ///< temporary images
    int nMapCnt = 1; ///< bands of an input or temporary that are mapped at a time, 1 to 10; an output has one
    int nIpNo = 0;   ///< process identifier of the step, for reports only
    int nMinBand = 1; ///< smallest band height wanted, in lines; the planner uses at least 16
};
