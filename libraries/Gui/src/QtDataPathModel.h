#pragma once

#include <QStringListModel>

/// The files from which a data item is made, in the order chosen. Shown as the user's system writes
/// paths.
class QtDataPathModel : public QStringListModel
{
    Q_OBJECT

public:
    explicit QtDataPathModel(QObject* parent = nullptr);

    QString path(int row) const;
    /// Behind the others; one that is listed already is left where it is.
    void addPath(const QString& path);

    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
};
