#include "LayerName.h"

namespace kelp::oct {

namespace {

QMap<QString, LayerNamePtr> makeEntries()
{
    QMap<QString, LayerNamePtr> entries;
    for (const LayerNamePtr& name :
         {LayerNameILM::create(), LayerNameILMCoarse::create(), LayerNameGCL::create(),
          LayerNameINL::create(), LayerNameONL::create(), LayerNameISe::create(),
          LayerNameISeCoarse::create(), LayerNameIRPE::create(), LayerNameBM::create(),
          LayerNameInvalid::create()}) {
        entries.insert(name->getIdentifier(), name);
    }
    return entries;
}

// String-based signals name the type both ways.
[[maybe_unused]] const bool registeredMetaTypes = [] {
    qRegisterMetaType<LayerNamePtr>("LayerNamePtr");
    qRegisterMetaType<LayerNamePtr>("kelp::oct::LayerNamePtr");
    return true;
}();

} // namespace

const QMap<QString, LayerNamePtr>& LayerNameRegistry::entries()
{
    // Initialised by the language under a lock of its own, and only read afterwards.
    static const QMap<QString, LayerNamePtr> entries = makeEntries();
    return entries;
}

LayerNamePtr LayerName::fromIdentifier(const QString& identifier)
{
    const LayerNamePtr known = LayerNameRegistry::entries().value(identifier);
    return known ? known : LayerNameInvalid::create();
}

} // namespace kelp::oct
