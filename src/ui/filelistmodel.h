#pragma once

#include <QAbstractTableModel>
#include <QFont>
#include <QIcon>
#include <QLocale>
#include <QStringList>
#include <memory>
#include <vector>

#include "core/engine.h"

namespace duomir {

class SyncPlanner;

// The file list flexFiles: row r shows the comparison row that its visible row r + 1 names,
// so a check mark lands where synchronization reads it. Nothing is stored per row but the
// sort order, so a million rows cost one int vector. It watches the engine's rows: every change of
// their shape resets the model and drops the sort order.
class FileListModel : public QAbstractTableModel, private RowsObserver
{
    Q_OBJECT

public:
    enum Column {
        MarkedColumn,
        NameColumn,
        SourceSizeColumn,
        SourceDateColumn,
        StateColumn,
        DestinationSizeColumn,
        DestinationDateColumn,
        ColumnCount
    };

    explicit FileListModel(Engine &engine, QObject *parent = nullptr);
    ~FileListModel() override;

    // Directions, Delete, Mirror or a mark changed: the action column shows the run anew.
    void refreshActions();
    // Dates and sizes follow the chosen language.
    void setLocale(const QLocale &locale);
    // Headings in column order, split at "|"; empty parts keep the built-in ones.
    void setHeadings(const QString &headings);

    // The visible-row index shown in a model row, and the comparison row of that entry
    // (0 when there is none).
    int visibleIndex(int row) const;
    int resultIndex(int row) const;
    const CompareEntry *entry(int row) const;

    // Sets every shown row's check mark to `marked` (the header check box).
    void markAll(bool marked);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

    // Days since 1899-12-30 as the user's locale writes a short date and time.
    static QString formatDate(double days, const QLocale &locale);

private:
    void rowsAboutToChange() override;
    void rowsChanged() override;
    QVariant actionIcon(const CompareEntry &e, int result) const;
    QString actionTip(int result) const;
    void setMarked(int row, bool marked);

    Engine *m_engine;
    std::vector<int> m_order; // model row -> visible index; empty = natural order
    QStringList m_headings;
    QLocale m_locale;
    QFont m_directoryFont;
    QIcon m_toDestination;
    QIcon m_toSource;
    QIcon m_deleteInSource;
    QIcon m_deleteInDestination;
    // What Synchronize will do to each row; made anew with every new comparison.
    std::unique_ptr<SyncPlanner> m_planner;
    QIcon m_identical;
    QIcon m_folder;
};

} // namespace duomir
