#pragma once

#include <QDomElement>
#include <QMap>
#include <QString>
#include <QVariant>

/// The keys under which an export's values are kept and shown, and how they are read. The spelling
/// of a B-scan's keys differs from that of the localizer's ("SpacingX" against "Spacing X").
namespace kelp::oct::metaKey {

inline constexpr char patientLastName[] = "Patient Last Name";
inline constexpr char patientFirstName[] = "Patient First Name";
inline constexpr char patientId[] = "Patient Id";
inline constexpr char patientSex[] = "Patient Sex";
inline constexpr char patientBirthDate[] = "Patient Birth Date";
inline constexpr char scanId[] = "Scan Id";
inline constexpr char modality[] = "Modality";
inline constexpr char modalityProcedure[] = "Modality Procedure";
inline constexpr char manufacturer[] = "Manufacturer";
inline constexpr char manufacturerModel[] = "Manufacturer Model";
inline constexpr char scanPattern[] = "Scan Pattern";
// Reserved for what an export says of its study.
inline constexpr char studyDate[] = "Study Date";
inline constexpr char studyId[] = "Study Id";
inline constexpr char studyOperator[] = "Study Operator";
// B-scans and localizer.
inline constexpr char id[] = "Id";
inline constexpr char laterality[] = "Laterality";
inline constexpr char acquisitionTime[] = "Acquisition Time";
inline constexpr char width[] = "Width";
inline constexpr char height[] = "Height";
inline constexpr char resolutionType[] = "Resolution Type";
inline constexpr char numberAveraged[] = "Number Averaged";
// B-scans.
inline constexpr char bScanSpacingX[] = "SpacingX";
inline constexpr char bScanSpacingY[] = "SpacingY";
inline constexpr char quality[] = "Quality";
inline constexpr char direction[] = "Direction";
inline constexpr char startX[] = "StartX";
inline constexpr char startY[] = "StartY";
inline constexpr char endX[] = "EndX";
inline constexpr char endY[] = "EndY";
inline constexpr char centerX[] = "CenterX";
inline constexpr char centerY[] = "CenterY";
// Localizer.
inline constexpr char lightSource[] = "Light Source";
inline constexpr char localizerSpacingX[] = "Spacing X";
inline constexpr char localizerSpacingY[] = "Spacing Y";
inline constexpr char angle[] = "Angle";
inline constexpr char focus[] = "Focus";
inline constexpr char autoSensorGain[] = "Auto Sensor Gain";
inline constexpr char sensorGain[] = "Sensor Gain";
inline constexpr char fixationTarget[] = "Fixation Target";
inline constexpr char imageFileExtension[] = "Image File Extension";

} // namespace kelp::oct::metaKey

namespace kelp::oct {

using MetaInfo = QMap<QString, QVariant>;

/// A value whose element is missing leaves its key out.
void addPatientMetaInfo(const QDomElement& patient, MetaInfo& metaInfo);
void addSeriesMetaInfo(const QDomElement& series, MetaInfo& metaInfo);
MetaInfo bScanMetaInfo(const QDomElement& image);
MetaInfo localizerMetaInfo(const QDomElement& image);

} // namespace kelp::oct
