#include "ui/dirpairmodel.h"

#include "core/dirpair.h"

namespace duomir {

DirPairModel::DirPairModel(DirPairList &pairs, QObject *parent)
    : QAbstractTableModel(parent), m_pairs(&pairs)
{
    setHeadings(QStringLiteral("Source|Destination|Su|SD|HD|SF|HF"));
}

void DirPairModel::setHeadings(const QString &headings)
{
    const QStringList parts = headings.split(u'|');
    if (m_headings.isEmpty())
        m_headings = parts;
    for (int i = 0; i < parts.size() && i < m_headings.size(); ++i) {
        if (!parts.at(i).isEmpty())
            m_headings[i] = parts.at(i);
    }
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
}

void DirPairModel::reload()
{
    beginResetModel();
    endResetModel();
}

void DirPairModel::pairChanged(int slot)
{
    const int row = rowOfSlot(slot);
    Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

int DirPairModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_pairs->count();
}

int DirPairModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant DirPairModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_pairs->count())
        return {};
    const DirPair &pair = (*m_pairs)[slotOfRow(index.row())];
    const int column = index.column();
    if (isSwitchColumn(column)) {
        const PairSwitch s = switchInDisplayOrder(column - FirstSwitchColumn);
        if (role == Qt::CheckStateRole)
            return switchValue(pair, s) ? Qt::Checked : Qt::Unchecked;
        if (role == Qt::ToolTipRole)
            return m_headings.value(column);
        return {};
    }
    const QString &path = column == SourceColumn ? pair.Source : pair.Destination;
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return path;
    return {};
}

QVariant DirPairModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::DisplayRole)
        return m_headings.value(section);
    if (role == Qt::TextAlignmentRole && isSwitchColumn(section))
        return Qt::AlignCenter;
    return {};
}

} // namespace duomir
