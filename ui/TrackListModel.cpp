#include "ui/TrackListModel.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double LongestSeconds = 60e9;

QString text(const Track &track, int column)
{
    switch (column) {
    case TrackListModel::Title:
        return track.header(QStringLiteral("T"), TrackListModel::tr("Untitled"));
    case TrackListModel::Notes:
        return QString::number(track.noteCount());
    default:
        return lengthText(track.duration());
    }
}

Qt::Alignment alignment(int column)
{
    return Qt::AlignVCenter | (column == TrackListModel::Title ? Qt::AlignLeft : Qt::AlignRight);
}

} // namespace

void TrackListModel::append(const Track &track)
{
    beginInsertRows(QModelIndex(), m_tracks.size(), m_tracks.size());
    m_tracks.append(track);
    endInsertRows();
}

void TrackListModel::clear()
{
    beginResetModel();
    m_tracks.clear();
    endResetModel();
}

int TrackListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_tracks.size();
}

int TrackListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant TrackListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_tracks.size())
        return {};
    if (role == Qt::DisplayRole)
        return text(m_tracks.at(index.row()), index.column());
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(static_cast<int>(alignment(index.column())));
    return {};
}

QVariant TrackListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(static_cast<int>(alignment(section)));
    if (role != Qt::DisplayRole)
        return {};
    const QStringList titles = {tr("Title"), tr("Notes"), tr("Length")};
    return titles.at(section);
}

QString lengthText(double seconds)
{
    const auto whole = static_cast<qint64>(std::round(std::min(seconds, LongestSeconds)));
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}
