#pragma once

#include "model/Track.h"

#include <QAbstractTableModel>
#include <QString>
#include <QVector>

/// The song's tracks as a table: a row for each, with title, number of notes and length.
class TrackListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { Title, Notes, Length, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    void append(const Track &track);
    void clear();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QVector<Track> m_tracks;
};

/// Minutes and seconds, "m:ss", rounded. Beyond 10^9 minutes the answer is that limit.
QString lengthText(double seconds);
