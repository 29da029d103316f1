#pragma once

#include <QString>

namespace kelp::oct {

/// How a scan was acquired: a tag, always compared through its text.
class OCTScanPattern
{
public:
    virtual QString toString() const { return QStringLiteral("Invalid"); }
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
    QString toString() const override { return QStringLiteral("Volume"); }
};

class OCTScanPatternSingleBScan : public OCTScanPattern
{
public:
    QString toString() const override { return QStringLiteral("Single BScan"); }
};

class OCTScanPatternCircularBScan : public OCTScanPattern
{
public:
    QString toString() const override { return QStringLiteral("Circular BScan"); }
};

class OCTScanPatternStar : public OCTScanPattern
{
public:
    QString toString() const override { return QStringLiteral("Star"); }
};

class OCTScanPatternUnknown : public OCTScanPattern
{
public:
    QString toString() const override { return QStringLiteral("Unknown"); }
};

} // namespace kelp::oct
