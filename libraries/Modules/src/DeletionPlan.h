#pragma once

#include "CopiedFiles.h"
#include "TreeNode.h"

namespace kelp::patients {

/// What goes when the user deletes what is selected: it, what it holds, and what was computed from
/// it. Says so in words, and carries it out.
class DeletionPlan
{
public:
    struct Counts
    {
        int patients = 0;
        int studies = 0;
        int scans = 0;
        int segmentations = 0;
        int unreadable = 0;

        int sum() const { return patients + studies + scans + segmentations + unreadable; }
        /// "2 studies, 1 scan and 3 segmentations".
        QString toString() const;
    };

    static DeletionPlan ofPatients(const QList<DataPointer<Patient>>& patients);
    static DeletionPlan ofNodes(const QList<TreeNode>& nodes);

    bool isEmpty() const { return m_chosen.sum() == 0; }
    const Counts& chosen() const { return m_chosen; }
    /// What goes beside what was chosen.
    const Counts& dependent() const { return m_dependent; }
    QString question() const;

    const QList<DataPointer<Patient>>& patients() const { return m_patients; }
    /// Takes the studies and items of the plan out of their patient's tree. The patient is still to
    /// be stored; the files that then go with it are in files().
    CaError removeNodes(Patient& patient);
    const CopiedFiles& files() const { return m_files; }

private:
    void addStudyContent(Study& study);
    void addItem(const TreeNode& node);
    void countName(const QString& kind, const QString& name);

    QList<DataPointer<Patient>> m_patients;
    QList<DataPointer<Study>> m_studies;
    QList<TreeNode> m_items;
    Counts m_chosen;
    Counts m_dependent;
    /// Of the one that was chosen, as in: the study "Baseline".
    QString m_name;
    bool m_isIncomplete = false;
    CopiedFiles m_files;
};

/// The files of one patient, to be deleted once it is removed.
CopiedFiles filesOf(const Patient& patient);

} // namespace kelp::patients
