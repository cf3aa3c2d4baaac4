#pragma once
// What one processing step asks of the memory planner.

/// One step's images. The arrays that go with it hold nInCnt, nOutCnt and nTmpCnt object pointers.
struct tag_MemAlloc
{
    int nInCnt = 1;   ///< input images
    int nOutCnt = 0;  ///< output images, 0 or 1
    int nTmpCnt = 0;  ///< temporary images
    int nMapCnt = 1;  ///< band buffers (view slots, 1 to 10) per input or temporary; an output has one
    int nIpNo = 0;    ///< number of the processing step, for reports only
    int nMinBand = 1; ///< smallest band height wanted, in lines; the planner uses at least 16
};
