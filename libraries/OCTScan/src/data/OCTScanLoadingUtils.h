#pragma once

#include <QDate>
#include <QDomElement>
#include <QString>
#include <QStringList>

/// Reads a few fields of an export directly and copies its files into the store's folder.
class OCTScanLoadingUtils
{
public:
    /// Name as "first names, blank, last name". Throws kelp::IOFailure, kelp::ParsingError.
    static void GetPatientInfoFromXML(const QString& xmlPath, QString& name, QDate& birthDate);

    /// "HH:MM:SS" of the series' first image. Throws kelp::ParsingError for another element.
    static QString GetTimeStringFromSeries(const QDomElement& series);

    /// Bare file names of all images of the series, in order.
    static QStringList GetImageFileNames(const QDomElement& series);

    /// Copies the files into a new folder below defaultFolder and returns the new paths. With
    /// interactive set trouble is shown through the reporter and the input returned; otherwise it
    /// throws kelp::Assertion or kelp::IOFailure.
    static QStringList AutoCopyFiles(const QStringList& files, const QString& defaultFolder,
                                     bool interactive, const QString& folderPrefix);

    /// The first entry that ends in ".xml" in any case, or an empty text.
    static QString FindXMLFile(const QStringList& files);

    /// How interactive copying shows trouble (a box with title and text) and that it is busy; set
    /// by the application's widgets. Without it trouble goes to the log.
    struct Interaction
    {
        virtual ~Interaction() = default;
        virtual void showProblem(const QString& title, const QString& text) = 0;
        virtual void setBusy(bool busy) = 0;
    };
    /// Not owned; null removes it.
    static void setInteraction(Interaction* interaction);
};
