#pragma once

#include <QColor>
#include <QList>
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

/// The concrete classes. Each has a create() that gives a fresh instance.
#define KELP_LAYER_NAME(ClassName)                                                                 \
    class ClassName : public LayerName                                                             \
    {                                                                                              \
    public:                                                                                        \
        static LayerNamePtr create();                                                              \
        QString getIdentifier() const override;                                                    \
        QString getShortName() const override;                                                     \
        QString getLongName() const override;                                                      \
        QColor getColor() const override;                                                          \
        float getOrder() const override;                                                           \
        bool isVisibleByDefault() const override;                                                  \
        bool isFinal() const override;                                                             \
    }

KELP_LAYER_NAME(LayerNameILM);
KELP_LAYER_NAME(LayerNameGCL);
KELP_LAYER_NAME(LayerNameINL);
KELP_LAYER_NAME(LayerNameONL);
KELP_LAYER_NAME(LayerNameISe);
KELP_LAYER_NAME(LayerNameIRPE);
KELP_LAYER_NAME(LayerNameBM);
KELP_LAYER_NAME(LayerNameILMCoarse);
KELP_LAYER_NAME(LayerNameISeCoarse);
KELP_LAYER_NAME(LayerNameInvalid);
#undef KELP_LAYER_NAME

} // namespace kelp::oct

Q_DECLARE_METATYPE(kelp::oct::LayerNamePtr)
