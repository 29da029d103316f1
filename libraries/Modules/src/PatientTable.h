#pragma once

class QTreeView;

namespace kelp::patients {

class PatientFilterModel;

/// Makes the view a table of patients, quick also with many, sorted by name.
void setUpPatientTable(QTreeView& view, PatientFilterModel* patients);

} // namespace kelp::patients
