#pragma once

#include "DataPointer.h"
#include "Patient.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <functional>

namespace kelp {

/// Stores what the user changed: a changed patient is marked, and stored as soon as the event loop
/// is free. A patient that cannot be stored stays marked, in memory, and is tried again with the
/// next change and at every explicit save.
class PatientSaver : public QObject
{
    Q_OBJECT

public:
    using Store = std::function<CaError(const DataPointer<Patient>&)>;
    enum Occasion
    {
        InPassing,   ///< a failure is told only when its reason is new
        AtRequest,   ///< a failure is told every time
        CallerTells, ///< a failure is not told here
    };

    explicit PatientSaver(const Store& store);

    void mark(const DataPointer<Patient>& patient);
    /// The patient is not to be stored any more: it was deleted.
    void forget(const DataPointer<Patient>& patient);
    /// Stores all that is marked, one after the other, whatever happens to each. False if something
    /// stays marked.
    bool save(Occasion occasion);

    bool hasUnsaved() const { return !m_marked.isEmpty(); }
    /// Why the patients that were tried last could not be stored; empty if all were.
    const QString& failure() const { return m_failure; }

signals:
    /// What hasUnsaved or failure tell is different now.
    void stateChanged();
    /// The user is to be told.
    void saveFailed(const QString& reason);

private slots:
    void saveInPassing();

private:
    CaError storeOne(const DataPointer<Patient>& patient) const;

    Store m_store;
    QTimer m_whenFree;
    QList<DataPointer<Patient>> m_marked;
    QString m_failure;
    QSet<QString> m_toldReasons;
    bool m_isSaving = false;
};

} // namespace kelp
