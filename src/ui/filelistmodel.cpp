#include "ui/filelistmodel.h"

#include <QDateTime>
#include <QTimeZone>
#include <algorithm>
#include <cmath>

#include "core/engine.h"
#include "core/sortkeys.h"
#include "core/syncplan.h"
#include "ui/painticons.h"

namespace duomir {

namespace {

// The text a row is known by: a file's name (either side), a directory's own path.
QString rowName(const CompareEntry &e)
{
    if (e.isDirectory())
        return e.path(Side::Source).isEmpty() ? e.path(Side::Destination) : e.path(Side::Source);
    return e.lacks(Side::Source) ? e.name(Side::Destination) : e.name(Side::Source);
}

bool presentOn(const CompareEntry &e, Side side)
{
    return e.isDirectory() ? !e.path(side).isEmpty() : !e.lacks(side);
}

qint64 sizeOn(const CompareEntry &e, Side side)
{
    return e.FullSize[side];
}

} // namespace

FileListModel::FileListModel(Engine &engine, QObject *parent)
    : QAbstractTableModel(parent), m_engine(&engine),
      m_toDestination(glyphIcon(Glyph::ToDestination)), m_toSource(glyphIcon(Glyph::ToSource)),
      m_deleteInSource(glyphIcon(Glyph::DeleteInSource)),
      m_deleteInDestination(glyphIcon(Glyph::DeleteInDestination)),
      m_identical(glyphIcon(Glyph::Identical)), m_folder(glyphIcon(Glyph::EmptyFolder))
{
    m_headings = {QString(),
                  QStringLiteral("Name"),
                  QStringLiteral("Source"),
                  QStringLiteral("Modified"),
                  QString(),
                  QStringLiteral("Destination"),
                  QStringLiteral("Modified")};
    m_directoryFont.setBold(true);
    m_planner = std::make_unique<SyncPlanner>(engine.comparison(), engine.run());
    m_engine->comparison().addRowsObserver(this);
}

FileListModel::~FileListModel()
{
    m_engine->comparison().removeRowsObserver(this);
}

void FileListModel::rowsAboutToChange()
{
    beginResetModel();
}

void FileListModel::rowsChanged()
{
    m_order.clear();
    m_planner = std::make_unique<SyncPlanner>(m_engine->comparison(), m_engine->run());
    endResetModel();
}

void FileListModel::setLocale(const QLocale &locale)
{
    m_locale = locale;
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1), {Qt::DisplayRole});
}

void FileListModel::refreshActions()
{
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, StateColumn), index(rowCount() - 1, StateColumn),
                           {Qt::DecorationRole, Qt::ToolTipRole});
}

QVariant FileListModel::actionIcon(const CompareEntry &e, int result) const
{
    // Not what the comparison found but what Synchronize will do to the row: a row the run
    // leaves alone shows the comparison's verdict only when it is "identical".
    switch (m_planner ? m_planner->action(result) : PlannedAction::None) {
    case PlannedAction::CopyToDestination:
        return m_toDestination;
    case PlannedAction::CopyToSource:
        return m_toSource;
    case PlannedAction::DeleteInSource:
        return m_deleteInSource;
    case PlannedAction::DeleteInDestination:
        return m_deleteInDestination;
    case PlannedAction::None:
        break;
    }
    return e.isDirectory() || e.State != Identical ? QVariant() : QVariant(m_identical);
}

QString FileListModel::actionTip(int result) const
{
    static constexpr int keys[] = {1140, 1141, 1142, 1143, 1144};
    const auto a = m_planner ? m_planner->action(result) : PlannedAction::None;
    return m_engine->FormatMsg(keys[static_cast<int>(a)]);
}

void FileListModel::setHeadings(const QString &headings)
{
    const QStringList parts = headings.split(u'|');
    for (int i = 0; i < parts.size() && i < m_headings.size(); ++i) {
        if (!parts.at(i).isEmpty())
            m_headings[i] = parts.at(i);
    }
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
}

int FileListModel::visibleIndex(int row) const
{
    if (row < 0 || row >= rowCount())
        return 0;
    return m_order.empty() ? row + 1 : m_order[static_cast<size_t>(row)];
}

int FileListModel::resultIndex(int row) const
{
    const int v = visibleIndex(row);
    if (v <= 0)
        return 0;
    const int r = m_engine->comparison().visibleRows()[static_cast<size_t>(v)];
    // A failed Compare drops the results while the list still names them.
    return r > 0 && static_cast<size_t>(r) < m_engine->comparison().rows().size() ? r : 0;
}

const CompareEntry *FileListModel::entry(int row) const
{
    const int r = resultIndex(row);
    return r > 0 ? &m_engine->comparison().rows()[static_cast<size_t>(r)] : nullptr;
}

void FileListModel::setMarked(int row, bool marked)
{
    if (const int r = resultIndex(row); r > 0)
        m_engine->comparison().setMarked(r, marked);
}

void FileListModel::markAll(bool marked)
{
    const int rows = rowCount();
    for (int row = 0; row < rows; ++row)
        setMarked(row, marked);
    if (rows > 0)
        Q_EMIT dataChanged(index(0, MarkedColumn), index(rows - 1, StateColumn),
                           {Qt::CheckStateRole, Qt::DecorationRole, Qt::ToolTipRole});
}

int FileListModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid())
        return 0;
    return std::max(0, static_cast<int>(m_engine->comparison().visibleRows().size()) - 1);
}

int FileListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString FileListModel::formatDate(double days, const QLocale &locale)
{
    // The day count already holds local time; UTC here only stops a second conversion.
    static const QDateTime epoch = QDateTime::fromSecsSinceEpoch(
        -static_cast<qint64>(UnixEpochAsDate) * 86400, QTimeZone::utc());
    const auto seconds = static_cast<qint64>(std::llround(days * 86400.0));
    return locale.toString(epoch.addSecs(seconds), QLocale::ShortFormat);
}

QVariant FileListModel::data(const QModelIndex &index, int role) const
{
    const CompareEntry *row = entry(index.row());
    if (!row)
        return {};
    const CompareEntry &e = *row;
    const int column = index.column();

    if (role == Qt::CheckStateRole)
        return column == MarkedColumn ? QVariant(e.Marked ? Qt::Checked : Qt::Unchecked)
                                      : QVariant();
    if (role == Qt::FontRole)
        return e.isDirectory() && column == NameColumn ? QVariant(m_directoryFont) : QVariant();
    if (role == Qt::TextAlignmentRole) {
        if (column == SourceSizeColumn || column == DestinationSizeColumn)
            return QVariant(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    }
    if (role == Qt::DecorationRole) {
        if (column == StateColumn)
            return actionIcon(e, resultIndex(index.row()));
        if (column == NameColumn && e.isDirectory())
            return m_folder;
        return {};
    }
    if (role == Qt::ToolTipRole && column == StateColumn)
        return actionTip(resultIndex(index.row()));
    if (role == Qt::ToolTipRole && column == NameColumn) {
        return QString(e.path(Side::Source) % e.name(Side::Source) % u'\n' %
                       e.path(Side::Destination) % e.name(Side::Destination));
    }
    if (role != Qt::DisplayRole)
        return {};

    switch (column) {
    case NameColumn:
        return rowName(e);
    case SourceSizeColumn:
    case DestinationSizeColumn: {
        const Side side = column == SourceSizeColumn ? Side::Source : Side::Destination;
        if (e.isDirectory() || !presentOn(e, side))
            return {};
        return m_locale.toString(sizeOn(e, side));
    }
    case SourceDateColumn:
    case DestinationDateColumn: {
        const Side side = column == SourceDateColumn ? Side::Source : Side::Destination;
        if (e.isDirectory() || !presentOn(e, side))
            return {};
        return formatDate(e.Modified[side], m_locale);
    }
    default:
        break;
    }
    return {};
}

bool FileListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || index.column() != MarkedColumn || !index.isValid())
        return false;
    setMarked(index.row(), value.value<Qt::CheckState>() == Qt::Checked);
    Q_EMIT dataChanged(index, index, {Qt::CheckStateRole});
    Q_EMIT dataChanged(index.siblingAtColumn(StateColumn), index.siblingAtColumn(StateColumn),
                       {Qt::DecorationRole, Qt::ToolTipRole});
    return true;
}

Qt::ItemFlags FileListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (index.column() == MarkedColumn)
        f |= Qt::ItemIsUserCheckable;
    return f;
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::DisplayRole)
        return m_headings.value(section);
    if (role == Qt::TextAlignmentRole &&
        (section == SourceSizeColumn || section == DestinationSizeColumn))
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

void FileListModel::sort(int column, Qt::SortOrder order)
{
    const CompareArray &results = m_engine->comparison().rows();
    const RowIndexArray &visible = m_engine->comparison().visibleRows();
    const int count = rowCount();
    // Sort keys are read through the visible index; a dangling one reads as the empty root row.
    static const CompareEntry none;
    const auto rowAt = [&](int v) -> const CompareEntry & {
        const auto r = static_cast<size_t>(visible[static_cast<size_t>(v)]);
        return r > 0 && r < results.size() ? results[r] : none;
    };
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<int> oldOrder(static_cast<size_t>(count));
    for (int r = 0; r < count; ++r)
        oldOrder[static_cast<size_t>(r)] = visibleIndex(r);

    std::vector<int> newOrder = oldOrder;
    std::sort(newOrder.begin(), newOrder.end());
    const auto byKey = [&](auto key) {
        std::stable_sort(newOrder.begin(), newOrder.end(), [&](int a, int b) {
            const auto ka = key(rowAt(a));
            const auto kb = key(rowAt(b));
            return order == Qt::AscendingOrder ? ka < kb : kb < ka;
        });
    };
    switch (column) {
    case MarkedColumn:
        byKey([](const CompareEntry &e) { return e.Marked ? 0 : 1; });
        break;
    case StateColumn:
        byKey([](const CompareEntry &e) { return static_cast<int>(e.State); });
        break;
    case NameColumn: {
        // Folding every name once makes each comparison a plain code-unit compare; the folded
        // names go to one store of their own (a byte a unit where they fit), not a string each.
        TextStore folded;
        std::vector<NameUnits> keys(visible.size());
        for (const int v : newOrder)
            keys[static_cast<size_t>(v)] =
                NameUnits::of(folded.add(rowName(rowAt(v)).toCaseFolded()));
        std::stable_sort(newOrder.begin(), newOrder.end(), [&](int a, int b) {
            const NameUnits ka = keys[static_cast<size_t>(a)];
            const NameUnits kb = keys[static_cast<size_t>(b)];
            return (order == Qt::AscendingOrder ? compareNamesExactly(ka, kb)
                                                : compareNamesExactly(kb, ka)) < 0;
        });
        break;
    }
    case SourceSizeColumn:
    case DestinationSizeColumn: {
        const Side side = column == SourceSizeColumn ? Side::Source : Side::Destination;
        byKey([side](const CompareEntry &e) { return presentOn(e, side) ? sizeOn(e, side) : -1; });
        break;
    }
    case SourceDateColumn:
    case DestinationDateColumn: {
        const Side side = column == SourceDateColumn ? Side::Source : Side::Destination;
        byKey(
            [side](const CompareEntry &e) { return presentOn(e, side) ? e.Modified[side] : -1.0; });
        break;
    }
    default:
        break;
    }
    m_order = std::move(newOrder);

    // Keep selections and the current row on the same entries.
    std::vector<int> rowOfVisible(visible.size(), -1);
    for (int r = 0; r < count; ++r)
        rowOfVisible[static_cast<size_t>(m_order[static_cast<size_t>(r)])] = r;
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex &old : before) {
        const int v = oldOrder[static_cast<size_t>(old.row())];
        after.append(index(rowOfVisible[static_cast<size_t>(v)], old.column()));
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

} // namespace duomir
