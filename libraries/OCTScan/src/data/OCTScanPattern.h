#pragma once

#include <QString>

namespace kelp::oct {

/// How a scan was acquired: a tag, always compared through its text.
class OCTScanPattern
{
public:
    virtual QString toString() const { return "Invalid"; }
    virtual ~OCTScanPattern() = default;
};

inline bool operator==(const OCTScanPattern& a, const OCTScanPattern& b)
{
    return a.toString() == b.toString();
}

inline bool operator!=(const OCTScanPattern& a, const OCTScanPattern& b)
{
    return !(a == b);
}

class OCTScanPatternVolume : public OCTScanPattern
{
public:
    QString toString() const override { return "Volume"; }
};

class OCTScanPatternSingleBScan : public OCTScanPattern
{
public:
    QString toString() const override { return "Single BScan"; }
};

class OCTScanPatternCircularBScan : public OCTScanPattern
{
public:
    QString toString() const override { return "Circular BScan"; }
};

class OCTScanPatternStar : public OCTScanPattern
{
public:
    QString toString() const override { return "Star"; }
};

class OCTScanPatternUnknown : public OCTScanPattern
{
public:
    QString toString() const override { return "Unknown"; }
};

} // namespace kelp::oct
