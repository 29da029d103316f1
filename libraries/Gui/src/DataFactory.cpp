#include "DataFactory.h"

#include "QtDataConfigurationWidget.h"

#include <map>
#include <memory>

namespace {

using Registrations = std::map<QString, std::unique_ptr<const DataFactory::Registration>>;

/// Made at first use, since registration runs during static initialisation.
Registrations& registrations()
{
    static Registrations instance;
    return instance;
}

QList<DataFactory::Link>& linkList()
{
    static QList<DataFactory::Link> instance;
    return instance;
}

} // namespace

void DataFactory::Registration::registerWidget(Registration* registration)
{
    std::unique_ptr<const Registration> owned(registration);
    if (!owned) {
        return;
    }
    registrations()[owned->name()] = std::move(owned);
}

const QList<DataFactory::Link>& DataFactory::links()
{
    return linkList();
}

QtDataConfigurationWidget* DataFactory::makeWidget(const Link& link, Data* data,
                                                   const QString& name, QWidget* parent)
{
    const auto found = registrations().find(link.widgetName);
    return found == registrations().end() ? nullptr
                                          : found->second->configurationWidget(data, name, parent);
}

void linkDataToWidget(const QString& className, const QString& widgetName, const QString& label,
                      int flags, const QString& extra)
{
    const DataFactory::Link link{className, widgetName, label, flags, extra};
    for (DataFactory::Link& present : linkList()) {
        if (present.className == className) {
            present = link;
            return;
        }
    }
    linkList().append(link);
}
