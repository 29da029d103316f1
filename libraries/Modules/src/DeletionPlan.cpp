#include "DeletionPlan.h"

#include "DataDescription.h"
#include "PatientIdentity.h"
#include "ProcessData.h"

#include <algorithm>

namespace kelp::patients {

namespace {

QString counted(int count, const QString& one, const QString& many)
{
    return QStringLiteral("%1 %2").arg(count).arg(count == 1 ? one : many);
}

bool isResult(const Data& item)
{
    return item.isA(ProcessData::classId());
}

QList<Study*> studiesOf(const Patient& patient)
{
    QList<Data*> items;
    patient.getAllStudies(items);
    QList<Study*> studies;
    for (Data* const item : items) {
        studies.append(static_cast<Study*>(item));
    }
    return studies;
}

bool holdsItem(const QList<TreeNode>& nodes, const Data& item)
{
    return std::any_of(nodes.begin(), nodes.end(),
                       [&](const TreeNode& node) { return node.item.data() == &item; });
}

/// The results that were computed from this item.
QList<DataPointer<Data>> resultsOf(Study& study, const Data& item)
{
    QList<Data*> results;
    study.getAllProcessData(results);
    QList<DataPointer<Data>> made;
    for (Data* const result : results) {
        const DataPointer<Data> source = describeData(*result).madeFrom;
        if (source && source->getGUID() == item.getGUID()) {
            made.append(DataPointer<Data>(result));
        }
    }
    return made;
}

} // namespace

QString DeletionPlan::Counts::toString() const
{
    QStringList parts;
    if (patients > 0) {
        parts.append(counted(patients, QStringLiteral("patient"), QStringLiteral("patients")));
    }
    if (studies > 0) {
        parts.append(counted(studies, QStringLiteral("study"), QStringLiteral("studies")));
    }
    if (scans > 0) {
        parts.append(counted(scans, QStringLiteral("scan"), QStringLiteral("scans")));
    }
    if (segmentations > 0) {
        parts.append(counted(segmentations, QStringLiteral("segmentation"),
                             QStringLiteral("segmentations")));
    }
    if (unreadable > 0) {
        parts.append(counted(unreadable, QStringLiteral("unreadable item"),
                             QStringLiteral("unreadable items")));
    }
    const QString last = parts.isEmpty() ? QString() : parts.takeLast();
    return parts.isEmpty() ? last
                           : parts.join(QStringLiteral(", ")) + QStringLiteral(" and ") + last;
}

DeletionPlan DeletionPlan::ofPatients(const QList<DataPointer<Patient>>& patients)
{
    DeletionPlan plan;
    plan.m_patients = patients;
    for (const DataPointer<Patient>& patient : patients) {
        ++plan.m_chosen.patients;
        plan.countName(QStringLiteral("patient"), displayName(*patient));
        for (Study* const study : studiesOf(*patient)) {
            ++plan.m_dependent.studies;
            plan.addStudyContent(*study);
        }
    }
    return plan;
}

DeletionPlan DeletionPlan::ofNodes(const QList<TreeNode>& nodes)
{
    DeletionPlan plan;
    for (const TreeNode& node : nodes) {
        if (node.isStudy()) {
            ++plan.m_chosen.studies;
            plan.countName(QStringLiteral("study"), node.study->getId());
            plan.m_studies.append(node.study);
            plan.addStudyContent(*node.study);
        }
    }
    // Scans before their results, which go with them and are not counted twice.
    for (const bool results : {false, true}) {
        for (const TreeNode& node : nodes) {
            const bool isNodeResult = node.item && isResult(*node.item);
            if (!node.isNull() && !node.isStudy() && isNodeResult == results &&
                !plan.m_studies.contains(node.study)) {
                plan.addItem(node);
            }
        }
    }
    return plan;
}

void DeletionPlan::addStudyContent(Study& study)
{
    m_isIncomplete = m_isIncomplete || study.ensureLoaded() != CaError::nullError;
    QList<Data*> items;
    study.getAllData(items);
    m_dependent.scans += items.size();
    study.getAllProcessData(items);
    m_dependent.segmentations += items.size();
    m_dependent.unreadable += study.getUnreadableItems().size();
    m_files.addStudy(study);
}

void DeletionPlan::addItem(const TreeNode& node)
{
    if (node.isUnreadable()) {
        ++m_chosen.unreadable;
        countName(QStringLiteral("unreadable item"), node.unreadableId);
        m_items.append(node);
        return;
    }
    if (holdsItem(m_items, *node.item)) {
        return;
    }
    const bool isNodeResult = isResult(*node.item);
    ++(isNodeResult ? m_chosen.segmentations : m_chosen.scans);
    countName(isNodeResult ? QStringLiteral("segmentation") : QStringLiteral("scan"),
              node.item->getId());
    m_items.append(node);
    m_files.addItem(*node.item);
    for (const DataPointer<Data>& result : resultsOf(*node.study, *node.item)) {
        ++m_dependent.segmentations;
        m_items.append({node.study, result, QString()});
    }
}

void DeletionPlan::countName(const QString& kind, const QString& name)
{
    m_name = m_chosen.sum() == 1 ? QStringLiteral("the %1 \"%2\"").arg(kind, name) : QString();
}

QString DeletionPlan::question() const
{
    QString text = QStringLiteral("Delete ") + (m_name.isEmpty() ? m_chosen.toString() : m_name);
    if (m_dependent.sum() > 0) {
        text += QStringLiteral(" with ") + m_dependent.toString();
    }
    text += QLatin1Char('?');
    if (m_isIncomplete) {
        text += QStringLiteral("\n\nThe data of a study cannot be read; they go too.");
    }
    return text;
}

CaError DeletionPlan::removeNodes(Patient& patient)
{
    CaError result;
    const auto keepFirst = [&result](const CaError& error) {
        result = result == CaError::nullError ? error : result;
    };
    for (const DataPointer<Study>& study : m_studies) {
        keepFirst(patient.removeStudy(study->getId()));
    }
    for (const TreeNode& node : m_items) {
        if (node.isUnreadable()) {
            keepFirst(node.study->removeUnreadableItem(node.unreadableId));
        } else {
            keepFirst(isResult(*node.item) ? node.study->removeProcessData(node.item->getId())
                                           : node.study->removeData(node.item->getId()));
        }
        node.study->notify(node.item.data(), "removeItem");
    }
    if (!m_studies.isEmpty()) {
        patient.notify(nullptr, "removeStudy");
    }
    return result;
}

CopiedFiles filesOf(const Patient& patient)
{
    CopiedFiles files;
    for (Study* const study : studiesOf(patient)) {
        files.addStudy(*study);
    }
    return files;
}

} // namespace kelp::patients
