#pragma once

#include "OCTScan.h"
#include "OCTScanSegmentation.h"
#include "SegInterface.h"
#include "SegmentationChains.h"

#include <QEventLoop>
#include <QObject>

namespace kelp::oct::bench {

/// Runs one chain and keeps what its steps and cuts cost.
class ChainBench : public QObject
{
    Q_OBJECT

public:
    /// withBoost: each cut is also solved by Boost.Graph, before its own solve.
    explicit ChainBench(bool withBoost);
    ~ChainBench() override;

    /// Throws kelp::RuntimeException when the chain fails.
    void run(const OCTScanPtr& scan, SegmentationChain chain);
    /// One row a cut on standard output, and the sums.
    void print() const;
    /// Whether the labels of all cuts were those of Boost.Graph; true without it.
    bool isEqualToBoost() const;

private slots:
    void segmentationSuccess();
    void segmentationFailure(QString message);

private:
    SegInterface m_segInterface;
    QEventLoop m_loop;
    QString m_failure;
    double m_seconds = 0.0;
    double m_fillSeconds = 0.0; ///< one search through all B-scans, as each cut begins with
};

} // namespace kelp::oct::bench
