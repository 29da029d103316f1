#pragma once

#include <QDialog>
#include <QStringList>

class QListWidget;

namespace kelp::oct {

/// Asks which series of an export to take. Comes up even for a single one, or for none.
class SeriesDialog : public QDialog
{
    Q_OBJECT

public:
    SeriesDialog(const QStringList& choices, QWidget* parent);

    /// Null when no row is selected.
    QString chosen() const;

private:
    QListWidget* m_list = nullptr;
};

} // namespace kelp::oct
