#pragma once

#include <QAbstractTableModel>
#include <QStringList>

namespace duomir {

class DirPairList;

// The pair grid flexDirs: row r shows pair r + 1 (slot 0 of the list is never a pair). Columns 0
// and 1 are the paths, 2..6 the switches in display order (Su, SD, HD, SF, HF) as check boxes.
class DirPairModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int SourceColumn = 0;
    static constexpr int DestinationColumn = 1;
    static constexpr int FirstSwitchColumn = 2;
    static constexpr int ColumnCount = 7;

    explicit DirPairModel(DirPairList &pairs, QObject *parent = nullptr);

    static bool isSwitchColumn(int column) { return column >= FirstSwitchColumn; }
    static int slotOfRow(int row) { return row + 1; }
    static int rowOfSlot(int slot) { return slot - 1; }

    // Headings split from one text at "|"; missing parts keep the built-in headings.
    void setHeadings(const QString &headings);

    // Call after the list changed in ways the model did not make itself.
    void reload();
    void pairChanged(int slot);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    DirPairList *m_pairs;
    QStringList m_headings;
};

} // namespace duomir
