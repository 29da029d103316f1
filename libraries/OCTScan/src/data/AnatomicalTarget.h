#pragma once

#include <QString>

namespace kelp::oct {

/// Which eye was scanned: a tag, always compared through its text.
class AnatomicalTarget
{
public:
    virtual QString toString() const { return QStringLiteral("Undefined"); }
    virtual ~AnatomicalTarget() = default;
};

inline bool operator==(const AnatomicalTarget& a, const AnatomicalTarget& b)
{
    return a.toString() == b.toString();
}

inline bool operator!=(const AnatomicalTarget& a, const AnatomicalTarget& b)
{
    return !(a == b);
}

class LeftEye : public AnatomicalTarget
{
public:
    QString toString() const override { return QStringLiteral("OS"); }
};

class RightEye : public AnatomicalTarget
{
public:
    QString toString() const override { return QStringLiteral("OD"); }
};

class BothEyes : public AnatomicalTarget
{
public:
    QString toString() const override { return QStringLiteral("OU"); }
};

class UnknownEye : public AnatomicalTarget
{
public:
    QString toString() const override { return QStringLiteral("O_Unknown"); }
};

} // namespace kelp::oct
