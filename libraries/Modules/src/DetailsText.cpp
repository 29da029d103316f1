#include "DetailsText.h"

#include "CopiedFiles.h"
#include "DataDescription.h"
#include "PatientIdentity.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>

namespace kelp::patients {

namespace {

QString orDash(const QString& text)
{
    return text.isEmpty() ? QString(QChar(0x2013)) : text;
}

void addFileFacts(const Data& item, QList<QPair<QString, QString>>& facts)
{
    const QStringList paths = pathsOf(item);
    if (paths.isEmpty()) {
        return;
    }
    QStringList missing;
    qint64 bytes = 0;
    for (const QString& path : paths) {
        const QFileInfo file(path);
        if (file.isFile()) {
            bytes += file.size();
        } else {
            missing.append(file.fileName());
        }
    }
    facts.append({QStringLiteral("Files"), QString::number(paths.size())});
    facts.append({QStringLiteral("Size on disk"), displaySize(bytes)});
    facts.append({QStringLiteral("Folder"),
                  QDir::toNativeSeparators(QFileInfo(paths.front()).absolutePath())});
    if (!missing.isEmpty()) {
        constexpr int shown = 3;
        QString text = missing.mid(0, shown).join(QStringLiteral(", "));
        if (missing.size() > shown) {
            text += QStringLiteral(" and %1 more").arg(missing.size() - shown);
        }
        facts.append({QStringLiteral("Missing files"), text});
    }
}

} // namespace

DetailsSection patientDetails(const Patient& patient)
{
    QList<Data*> studies;
    patient.getAllStudies(studies);
    return {QStringLiteral("Patient"),
            {{QStringLiteral("Name"), displayName(patient)},
             {QStringLiteral("Birth date"), orDash(displayDate(patient.getBirthDate()))},
             {QStringLiteral("Sex"), orDash(patient.getSex())},
             {QStringLiteral("Remark"), orDash(patient.getRemark())},
             {QStringLiteral("Patient ID"), patientNumber(patient)},
             {QStringLiteral("Studies"), QString::number(studies.size())}}};
}

DetailsSection studyDetails(Study& study)
{
    DetailsSection section{QStringLiteral("Study"),
                           {{QStringLiteral("Name"), study.getId()},
                            {QStringLiteral("Institution"), orDash(study.getInstitution())}}};
    const CaError error = study.ensureLoaded();
    if (error != CaError::nullError) {
        section.facts.append({QStringLiteral("Cannot be read"), error.toString()});
        return section;
    }
    QList<Data*> items;
    study.getAllData(items);
    section.facts.append({QStringLiteral("Scans"), QString::number(items.size())});
    study.getAllProcessData(items);
    section.facts.append({QStringLiteral("Segmentations"), QString::number(items.size())});
    const QList<CaError> problems = study.getItemErrors();
    for (const CaError& problem : problems) {
        section.facts.append({QStringLiteral("Cannot be read"), problem.toString()});
    }
    return section;
}

DetailsSection itemDetails(const Data& item)
{
    const DataDescription description = describeData(item);
    DetailsSection section{description.kind, {{QStringLiteral("Name"), item.getId()}}};
    if (description.madeFrom) {
        section.facts.append({QStringLiteral("Made from"), description.madeFrom->getId()});
    }
    section.facts += description.facts;
    addFileFacts(item, section.facts);
    return section;
}

DetailsSection unreadableDetails(const Study& study, const QString& id)
{
    DetailsSection section{QStringLiteral("Unreadable item"), {{QStringLiteral("Name"), id}}};
    for (const Study::ItemProblem& problem : study.getUnreadableItems()) {
        if (problem.id == id) {
            section.facts.append({QStringLiteral("Class"), problem.className});
            section.facts.append({QStringLiteral("Reason"), problem.error.toString()});
        }
    }
    section.facts.append({QStringLiteral("Stored"),
                          QStringLiteral("Its stored form is kept as it is until you delete it.")});
    return section;
}

QString displaySize(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
}

QString toHtml(const QList<DetailsSection>& sections)
{
    QString html;
    for (const DetailsSection& section : sections) {
        html += QStringLiteral("<h4>%1</h4><table cellspacing=\"2\">")
                    .arg(section.title.toHtmlEscaped());
        for (const auto& [caption, value] : section.facts) {
            QString shown = value.toHtmlEscaped();
            shown.replace(QLatin1Char('\n'), QStringLiteral("<br>"));
            html += QStringLiteral("<tr><td style=\"padding-right:12px\">%1</td><td>%2</td></tr>")
                        .arg(caption.toHtmlEscaped(), shown);
        }
        html += QStringLiteral("</table>");
    }
    return html;
}

} // namespace kelp::patients
