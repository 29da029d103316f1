#pragma once

#include "OCTScanSegmentation.h"
#include "RunWarnings.h"
#include "Study.h"

namespace kelp::oct {

/// The selection that follows the user from tab to tab. Shared by the modules that work on one
/// scan.
class ActiveDataItems
{
public:
    void set(const OCTScanPtr& scan, const OCTScanSegPtr& segmentation,
             const DataPointer<Study>& study)
    {
        m_scan = scan;
        m_segmentation = segmentation;
        m_study = study;
    }
    OCTScanPtr getScan() const { return m_scan; }
    OCTScanSegPtr getSegmentation() const { return m_segmentation; }
    DataPointer<Study> getStudy() const { return m_study; }
    void clear() { set(nullptr, nullptr, nullptr); }

    /// The B-scan that is shown of the scan; -1 for none.
    int getBScan() const { return m_bScan; }
    void setBScan(int index) { m_bScan = index; }

    /// Of the last run, while its result is shown.
    RunWarnings& runWarnings() { return m_runWarnings; }

private:
    OCTScanPtr m_scan;
    OCTScanSegPtr m_segmentation;
    DataPointer<Study> m_study;
    int m_bScan = -1;
    RunWarnings m_runWarnings;
};

} // namespace kelp::oct
