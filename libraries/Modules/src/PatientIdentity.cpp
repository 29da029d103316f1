#include "PatientIdentity.h"

#include <QLocale>

namespace kelp::patients {

QString joinName(const PersonName& name)
{
    const QString firstNames = name.firstNames.simplified();
    const QString lastName = name.lastName.simplified();
    return lastName.isEmpty() ? firstNames : firstNames + QLatin1Char(' ') + lastName;
}

PersonName splitName(const Patient& patient)
{
    const QString& name = patient.getName();
    const QString& lastName = patient.getLastName();
    if (!lastName.isEmpty() && name.endsWith(QLatin1Char(' ') + lastName)) {
        return {name.chopped(lastName.size() + 1), lastName};
    }
    const int blank = name.lastIndexOf(QLatin1Char(' '));
    return blank < 0 ? PersonName{name, QString()}
                     : PersonName{name.left(blank), name.mid(blank + 1)};
}

PatientDetails detailsOf(const Patient& patient)
{
    return {splitName(patient), patient.getBirthDate(), patient.getSex(), patient.getRemark()};
}

void setDetails(Patient& patient, const PatientDetails& details)
{
    const QString name = joinName(details.name);
    patient.setName(name);
    patient.setId(name);
    patient.setLastName(details.name.lastName.simplified());
    patient.setBirthDate(details.birthDate);
    patient.setKeyText(name + details.birthDate.toString(Qt::TextDate));
    patient.setSex(details.sex);
    patient.setRemark(details.remark);
}

QString patientNumber(const Patient& patient)
{
    return patient.getPatientNumber();
}

QString displayName(const Patient& patient)
{
    const QString name = patient.getName().simplified();
    return name.isEmpty() ? QStringLiteral("(no name)") : name;
}

QString displayDate(const QDate& date)
{
    // Four digits of the year: patients of a hundred years and of none are both seen.
    QString format = QLocale().dateFormat(QLocale::ShortFormat);
    if (!format.contains(QStringLiteral("yyyy"))) {
        format.replace(QStringLiteral("yy"), QStringLiteral("yyyy"));
    }
    return date.isValid() ? QLocale().toString(date, format) : QString();
}

Patient* findTwin(const QList<Patient*>& patients, const Patient& patient,
                  const PatientDetails& details)
{
    const QString name = joinName(details.name);
    for (Patient* const other : patients) {
        if (other->getGUID() != patient.getGUID() && other->getName() == name &&
            other->getBirthDate() == details.birthDate) {
            return other;
        }
    }
    return nullptr;
}

} // namespace kelp::patients
