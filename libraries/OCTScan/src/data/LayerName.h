#pragma once

#include <QColor>
#include <QMap>
#include <QMetaType>
#include <QSharedPointer>
#include <QString>

namespace kelp::oct {

class LayerName;
using LayerNamePtr = QSharedPointer<LayerName>;

/// The identity of a retinal surface, immutable. Two names are equal when their identifiers are.
class LayerName
{
public:
    virtual ~LayerName() = default;
    /// What the stored form holds; never changes.
    virtual QString getIdentifier() const = 0;
    virtual QString getShortName() const = 0;
    virtual QString getLongName() const = 0;
    virtual QColor getColor() const { return Qt::white; }
    /// From the inner to the outer retina.
    virtual float getOrder() const { return 0.0F; }
    virtual bool isVisibleByDefault() const { return true; }
    virtual bool isFinal() const { return true; }

    /// The one instance of this identifier, or a new LayerNameInvalid. Safe from any thread.
    static LayerNamePtr fromIdentifier(const QString& identifier);
};

inline bool operator==(const LayerName& a, const LayerName& b)
{
    return a.getIdentifier() == b.getIdentifier();
}

inline bool operator!=(const LayerName& a, const LayerName& b)
{
    return !(a == b);
}

inline bool operator<(const LayerName& a, const LayerName& b)
{
    return a.getOrder() < b.getOrder();
}

/// What one concrete surface answers.
struct LayerNameFacts
{
    const char* identifier;
    const char* shortName;
    const char* longName;
    QRgb color;
    float order;
    bool visibleByDefault = true;
    bool final = true;
};

/// A surface that answers from its facts.
template <const LayerNameFacts& facts>
class FactualLayerName final : public LayerName
{
public:
    /// A fresh instance.
    static LayerNamePtr create() { return QSharedPointer<FactualLayerName>::create(); }

    QString getIdentifier() const override { return QString::fromLatin1(facts.identifier); }
    QString getShortName() const override { return QString::fromLatin1(facts.shortName); }
    QString getLongName() const override { return QString::fromLatin1(facts.longName); }
    QColor getColor() const override { return QColor(facts.color); }
    float getOrder() const override { return facts.order; }
    bool isVisibleByDefault() const override { return facts.visibleByDefault; }
    bool isFinal() const override { return facts.final; }
};

/// Stored files hold the identifiers, so none may ever change; "ILMcoarse" has a small c, unlike
/// "ISeCoarse", and "Elipsoids" one l. BM shares the colour of GCL, and IRPE the order of ISe.
namespace layerNameFacts {
// clang-format off
inline constexpr LayerNameFacts ilm{"ILM", "ILM", "Internal Limiting Membrane", 0xFF80FF8C, 1.0F};
inline constexpr LayerNameFacts gcl{"GCL", "GCL", "Ganglion Cell Layer", 0xFF80F2FF, 2.0F};
inline constexpr LayerNameFacts inl{"INL", "INL", "Inner Nuclear Layer", 0xFFF2FF80, 3.0F};
inline constexpr LayerNameFacts onl{"ONL", "ONL", "Outer Nuclear Layer", 0xFFFFB442, 4.0F};
inline constexpr LayerNameFacts ise{"ISe", "ISe", "Inner Segment Elipsoids", 0xFFFF80F2, 5.0F};
inline constexpr LayerNameFacts irpe{"IRPE", "IRPE", "Inner RPE", 0xFF8C80FF, 5.0F};
inline constexpr LayerNameFacts bm{"BM", "BM", "Bruch's Membrane", 0xFF80F2FF, 6.0F};
inline constexpr LayerNameFacts ilmCoarse{"ILMcoarse", "ILM coarse",
    "Internal Limiting Membrane (coarse)", 0xFF00FF00, 100.0F, false, false};
inline constexpr LayerNameFacts iseCoarse{"ISeCoarse", "ISe coarse",
    "Inner Segment Elipsoids (coarse)", 0xFFFF00FF, 105.0F, false, false};
inline constexpr LayerNameFacts invalid{"invalid", "Invalid", "Invalid Layer", 0xFFFFFFFF, 0.0F};
// clang-format on
} // namespace layerNameFacts

using LayerNameILM = FactualLayerName<layerNameFacts::ilm>;
using LayerNameGCL = FactualLayerName<layerNameFacts::gcl>;
using LayerNameINL = FactualLayerName<layerNameFacts::inl>;
using LayerNameONL = FactualLayerName<layerNameFacts::onl>;
using LayerNameISe = FactualLayerName<layerNameFacts::ise>;
using LayerNameIRPE = FactualLayerName<layerNameFacts::irpe>;
using LayerNameBM = FactualLayerName<layerNameFacts::bm>;
using LayerNameILMCoarse = FactualLayerName<layerNameFacts::ilmCoarse>;
using LayerNameISeCoarse = FactualLayerName<layerNameFacts::iseCoarse>;
using LayerNameInvalid = FactualLayerName<layerNameFacts::invalid>;

/// One instance of each surface by its identifier, for the whole process.
class LayerNameRegistry
{
public:
    /// Filled at first use, from whichever thread comes first; never changes afterwards.
    static const QMap<QString, LayerNamePtr>& entries();
};

} // namespace kelp::oct

Q_DECLARE_METATYPE(kelp::oct::LayerNamePtr)
