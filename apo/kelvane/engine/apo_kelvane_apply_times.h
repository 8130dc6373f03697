// What the library's calls cost: the timing period's statistics, and the time of the last two frames.
#pragma once

#include <windows.h>

// Milliseconds. The thread that runs the algorithm.
class CKelvaneApplyTimes
{
public:
    // Adds a frame, and ends the timing period at its last one with a line in the record file. iOffload is nonzero for
    // an engine in inline mode.
    void CountApplyTime(INT64 i64Time, int iOffload);
    // Warns when the frames since the last call took longer than two frames play.
    void EndGap();

private:
    friend class CEngineInside;
    void ReportApplyTime(int iOffload) const;

    int m_iApplyFrameCount = 0; // frames since the last timing report
    INT64 m_i64MaxTime = 0;     // over the timing period
    INT64 m_i64MinTime = 0;
    INT64 m_i64TotalTime = 0;
    INT64 m_i64GapTime = 0; // since the last EndGap
};
