#include "DataDescription.h"

#include <QHash>

namespace {

QHash<QString, DataDescriber>& describers()
{
    static QHash<QString, DataDescriber> registered;
    return registered;
}

} // namespace

void registerDataDescriber(const QString& classId, const DataDescriber& describer)
{
    describers().insert(classId, describer);
}

DataDescription describeData(const Data& data)
{
    const QString classId = data.getClassId().toQString();
    const DataDescriber describer = describers().value(classId);
    return describer ? describer(data) : DataDescription{classId, {}, nullptr};
}
