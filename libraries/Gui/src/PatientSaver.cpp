#include "PatientSaver.h"

#include "kelpCheck.h"
#include "kelpException.h"

#include <QStringList>

#include <utility>

namespace kelp {

PatientSaver::PatientSaver(const Store& store) : m_store(store)
{
    m_whenFree.setSingleShot(true);
    m_whenFree.setInterval(0);
    KELP_CONNECT("libraries/Gui/src/PatientSaver",
                 connect(&m_whenFree, SIGNAL(timeout()), this, SLOT(saveInPassing())));
}

void PatientSaver::mark(const DataPointer<Patient>& patient)
{
    if (!patient) {
        return;
    }
    if (!m_marked.contains(patient)) {
        m_marked.append(patient);
    }
    m_whenFree.start();
    emit stateChanged();
}

void PatientSaver::forget(const DataPointer<Patient>& patient)
{
    if (m_marked.removeAll(patient) == 0) {
        return;
    }
    if (m_marked.isEmpty()) {
        m_failure.clear();
        m_toldReasons.clear();
        m_whenFree.stop();
    }
    emit stateChanged();
}

bool PatientSaver::save(Occasion occasion)
{
    // The box that tells a failure runs an event loop, in which the next change may ask again.
    if (m_isSaving) {
        return false;
    }
    m_isSaving = true;
    m_whenFree.stop();
    QStringList failures;
    bool isNew = false;
    // Marks set while a patient is stored are changes that may have come too late for it.
    const QList<DataPointer<Patient>> attempted = std::exchange(m_marked, {});
    for (const DataPointer<Patient>& patient : attempted) {
        const CaError error = storeOne(patient);
        if (error == CaError::nullError) {
            continue;
        }
        if (!m_marked.contains(patient)) {
            m_marked.append(patient);
        }
        const QString reason = error.toString();
        isNew = isNew || !m_toldReasons.contains(reason);
        m_toldReasons.insert(reason);
        failures.append(patient->getName() + QStringLiteral(": ") + reason);
    }
    m_isSaving = false;
    m_failure = failures.join(QLatin1Char('\n'));
    if (failures.isEmpty()) {
        m_toldReasons.clear();
    }
    emit stateChanged();
    if (occasion == AtRequest ? !failures.isEmpty() : isNew && occasion == InPassing) {
        emit saveFailed(m_failure);
    }
    return m_marked.isEmpty();
}

void PatientSaver::saveInPassing()
{
    save(InPassing);
}

CaError PatientSaver::storeOne(const DataPointer<Patient>& patient) const
{
    try {
        return m_store(patient);
    } catch (const std::exception& exception) {
        return CaError(QStringLiteral("StoreFailed"), QString::fromUtf8(exception.what()),
                       QString());
    }
}

} // namespace kelp

#include "moc_PatientSaver.cpp"
