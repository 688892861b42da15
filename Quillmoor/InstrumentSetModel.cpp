#include "Quillmoor/InstrumentSetModel.h"

#include "Quillmoor/QuillmoorInstrumentSet.h"

InstrumentSetModel::InstrumentSetModel(const QuillmoorInstrumentSet *set, QObject *parent)
    : QAbstractListModel(parent)
    , m_set(set)
{
}

int InstrumentSetModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_set->names().size();
}

QVariant InstrumentSetModel::data(const QModelIndex &index, int role) const
{
    if (!hasRow(index))
        return {};
    const QString &name = m_set->names().at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return name;
    case Qt::DecorationRole:
        return m_set->icon(name);
    case Qt::UserRole:
        return QVariant::fromValue(m_set->instrument(name));
    default:
        return {};
    }
}

QVariant InstrumentSetModel::headerData(int, Qt::Orientation, int) const
{
    return {};
}

Qt::ItemFlags InstrumentSetModel::flags(const QModelIndex &index) const
{
    return hasRow(index) ? Qt::ItemIsSelectable | Qt::ItemIsEnabled : Qt::NoItemFlags;
}

bool InstrumentSetModel::hasRow(const QModelIndex &index) const
{
    return index.isValid() && index.row() < rowCount();
}
