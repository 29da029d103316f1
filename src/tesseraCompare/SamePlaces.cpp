#include "SamePlaces.h"

#include "kelpException.h"

namespace kelp::compare {

namespace {

/// Four A-scans of a dense scan: what lies further apart shows another piece of retina.
constexpr double placeTolerance = 0.05;

const QString hint = " If the A-scans of both lie at the same places of the eye, as in follow-up "
                     "scans, --same-places compares them one by one.";

bool sizesAgree(const ScanSurfaces& a, const ScanSurfaces& b)
{
    const bool anyAScans = a.mayEndEarly || b.mayEndEarly;
    return a.nrBScans == b.nrBScans && (anyAScans || a.nrAScans == b.nrAScans);
}

bool eyesDiffer(const ScanFacts& a, const ScanFacts& b)
{
    return a.grid && b.grid && a.grid->rightEye != b.grid->rightEye;
}

/// Whether the two can be told apart at all: digests of another kind say nothing.
bool haveComparableDigests(const ScanFacts& a, const ScanFacts& b)
{
    const auto kind = [](const ScanFacts& facts) { return facts.pixelDigest.section(':', 0, 0); };
    return !a.pixelDigest.isEmpty() && !b.pixelDigest.isEmpty() && kind(a) == kind(b);
}

QString insteadOf(const QString& reason)
{
    return reason +
           ", so positions cannot be compared, only sector means, each around its own fovea.";
}

/// Of two results that both have a record.
QString reasonInFacts(const ScanFacts& a, const ScanFacts& b)
{
    if (haveComparableDigests(a, b)) {
        return a.pixelDigest == b.pixelDigest
                   ? QString()
                   : insteadOf(
                         "A and B are two acquisitions (the pixels of their B-scans differ)") +
                         hint;
    }
    const double apart = a.places && b.places ? a.places->largestDistanceTo(*b.places) : 0.0;
    return apart > placeTolerance
               ? insteadOf(
                     QString("A-scans of the same number lie up to %1 mm apart on the localizer")
                         .arg(apart, 0, 'f', 3)) +
                     hint
               : QString();
}

} // namespace

QString reasonForSectorMeans(const ScanSurfaces& a, const ScanSurfaces& b, bool isSaidSo)
{
    if (a.facts && b.facts && eyesDiffer(*a.facts, *b.facts)) {
        const QString eyes = "One of A and B is a right eye, the other a left one";
        if (isSaidSo) {
            throw RuntimeException(
                eyes + ": their A-scans cannot lie at the same places (--same-places).");
        }
        return insteadOf(eyes);
    }
    if (!sizesAgree(a, b)) {
        return insteadOf(
            QString(isSaidSo ? "A has %1 and B %2 in spite of --same-places" : "A has %1 and B %2")
                .arg(sizeText(a), sizeText(b)));
    }
    return isSaidSo || !a.facts || !b.facts ? QString() : reasonInFacts(*a.facts, *b.facts);
}

} // namespace kelp::compare
