#pragma once

#include <QAbstractListModel>

class QuillmoorInstrumentSet;

/// Shows a QuillmoorInstrumentSet in combo boxes and lists, one row per display name. The set is
/// not owned and must outlive the model.
class InstrumentSetModel : public QAbstractListModel {
    Q_OBJECT

public:
    InstrumentSetModel(const QuillmoorInstrumentSet *set, QObject *parent);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    /// Qt::DisplayRole is the display name, Qt::DecorationRole the QIcon, Qt::UserRole the
    /// Instrument.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// There are no headers.
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    bool hasRow(const QModelIndex &index) const;

    const QuillmoorInstrumentSet *m_set;
};
