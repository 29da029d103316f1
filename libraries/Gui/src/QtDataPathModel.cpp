#include "QtDataPathModel.h"

#include <QDir>

QtDataPathModel::QtDataPathModel(QObject* parent) : QStringListModel(parent) {}

QString QtDataPathModel::path(int row) const
{
    return stringList().value(row);
}

void QtDataPathModel::addPath(const QString& path)
{
    if (stringList().contains(path)) {
        return;
    }
    const int row = rowCount();
    insertRow(row);
    setData(index(row), path);
}

QVariant QtDataPathModel::data(const QModelIndex& index, int role) const
{
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) {
        return QDir::toNativeSeparators(path(index.row()));
    }
    return QStringListModel::data(index, role);
}

Qt::ItemFlags QtDataPathModel::flags(const QModelIndex& index) const
{
    return QStringListModel::flags(index) & ~Qt::ItemIsEditable;
}

#include "moc_QtDataPathModel.cpp"
