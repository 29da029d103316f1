#pragma once

#include <QString>
#include <QWidget>

/// Pictures of windows, as the documentation shows them: "<name>.png" in one folder.
class PictureBook
{
public:
    /// The folder that TESSERA_PICTURES names, or else this one.
    explicit PictureBook(const QString& otherwise);

    /// What the widget shows, once everything in it is laid out. A failure fails the test.
    void take(QWidget& widget, const QString& name) const;

private:
    QString m_folder;
};
