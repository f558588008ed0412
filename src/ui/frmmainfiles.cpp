// frmMain: Compare, the filter and direction toolbars, the file list and its commands.
#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTimer>
#include <QToolBar>

#include "base/interaction.h"
#include "core/comparecommand.h"
#include "core/engine.h"
#include "core/filters.h"
#include "core/synccommands.h"
#include "ui/checkheader.h"
#include "ui/filelistmodel.h"
#include "ui/frmmain.h"
#include "ui/mousepointer.h"

namespace duomir {

QAction *frmMain::toolbarButton(int bar, int key) const
{
    if (bar < 0 || bar > 3 || key < 0 || key > 4)
        return nullptr;
    return m_buttons[static_cast<size_t>(bar)][static_cast<size_t>(key)];
}

bool frmMain::runCompare()
{
    bool compared = false;
    {
        const MousePointer busy;
        m_cmdCompare->setEnabled(false);
        // The list is rebuilt under the rows on screen while events run: a click on one of them
        // (a check mark, a popup command) would reach a different entry, and a pair edited now
        // would not be the one compared.
        setInputEnabled(false);
        // A long scan is never silent: the side labels count what each side has listed so far.
        QTimer listed;
        connect(&listed, &QTimer::timeout, this, [this] {
            for (Side side : Sides)
                setStatusLabel(side * 2, m_engine->FormatMsg(
                                             855, {QLocale().toString(qint64(
                                                      m_engine->comparison().listedSoFar(side)))}));
        });
        listed.start(250);
        compared = Compare(*m_engine);
        listed.stop();
        setInputEnabled(true);
        m_cmdCompare->setEnabled(true);
    }
    showCompareResult(compared);
    return compared;
}

void frmMain::showCompareResult(bool compared)
{
    refreshFileList();
    if (!compared)
        return;
    m_stale = false;
    QPalette palette = m_flexFiles->palette();
    palette.setColor(QPalette::Base, QColor(0xFFFFFF));
    palette.setColor(QPalette::AlternateBase, QColor(0xF3F6F9));
    m_flexFiles->setPalette(palette);
}

void frmMain::refreshFileList()
{
    m_fileHeader->setSortIndicatorShown(false);
    m_tbar[2]->setEnabled(m_engine->comparison().filter().FileFilter != FileView::Identical);
}

void frmMain::tbar_ButtonClick(int bar, int key)
{
    Comparison &comparison = m_engine->comparison();
    FilterState filter = comparison.filter();
    switch (bar) {
    case 0:
        filter.ShowEmptyDirs = m_buttons[0][0]->isChecked();
        break;
    case 1:
        filter.FileFilter = FileView(key);
        break;
    case 2:
        filter.SideFilter = SideView(key);
        break;
    case 3:
        applySyncButtons(key);
        break;
    default:
        return;
    }
    if (!m_engine->pairs.isEmpty())
        m_engine->ProfileModified = true;
    if (bar == 3)
        return;
    comparison.setFilter(filter);
    {
        const MousePointer busy;
        BuildVisibleRows(comparison, m_engine->language, m_engine->ui());
    }
    refreshFileList();
}

// Deleting makes sense only with exactly one direction, so Delete and Mirror follow the other
// three; pressing one of the two releases the other.
void frmMain::applySyncButtons(int pressed)
{
    SyncOptions sync = m_engine->run().options();
    sync.Src = m_buttons[3][0]->isChecked();
    sync.Dest = m_buttons[3][1]->isChecked();
    sync.Reverse = m_buttons[3][2]->isChecked();
    const bool deleteAllowed = !sync.Reverse && !(sync.Src && sync.Dest);
    QAction *del = m_buttons[3][3];
    QAction *mirror = m_buttons[3][4];
    if (pressed == 3 && del->isChecked())
        mirror->setChecked(false);
    if (pressed == 4 && mirror->isChecked())
        del->setChecked(false);
    for (QAction *a : {del, mirror}) {
        a->setEnabled(deleteAllowed);
        if (!deleteAllowed)
            a->setChecked(false);
    }
    sync.Delete = del->isChecked();
    sync.Mirror = mirror->isChecked();
    m_engine->run().setOptions(sync);
    m_fileModel->refreshActions();
}

void frmMain::applyToolbarsFromEngine()
{
    const FilterState &filter = m_engine->comparison().filter();
    const SyncOptions &sync = m_engine->run().options();
    m_buttons[0][0]->setChecked(filter.ShowEmptyDirs);
    // A value that names no button leaves its toolbar without a pressed one.
    for (int bar : {1, 2}) {
        const int value = bar == 1 ? int(filter.FileFilter) : int(filter.SideFilter);
        const auto &buttons = m_buttons[static_cast<size_t>(bar)];
        QActionGroup *group = buttons[0]->actionGroup();
        if (QAction *checked = group->checkedAction())
            checked->setChecked(false);
        const int count = bar == 1 ? 5 : 3;
        if (value >= 0 && value < count)
            buttons[static_cast<size_t>(value)]->setChecked(true);
    }
    m_buttons[3][0]->setChecked(sync.Src);
    m_buttons[3][1]->setChecked(sync.Dest);
    m_buttons[3][2]->setChecked(sync.Reverse);
    m_buttons[3][3]->setChecked(sync.Delete);
    m_buttons[3][4]->setChecked(sync.Mirror && !sync.Delete);
    applySyncButtons();
    m_tbar[2]->setEnabled(filter.FileFilter != FileView::Identical);
}

void frmMain::setInputEnabled(bool enabled)
{
    // The progress dialog is a window of its own and stays usable for Cancel.
    centralWidget()->setEnabled(enabled);
}

// The frame around every command that changes the disk: Compare and Synchronize are off while it
// runs, and the list comes back at the same scroll position after the new Compare.
void frmMain::runFileCommand(const std::function<bool()> &command)
{
    m_cmdCompare->setEnabled(false);
    m_cmdSynch->setEnabled(false);
    const int scroll = m_flexFiles->verticalScrollBar()->value();
    bool ran = false;
    {
        const MousePointer busy;
        ran = command();
    }
    setInputEnabled(true);
    if (ran) {
        runCompare();
        m_flexFiles->verticalScrollBar()->setValue(scroll);
    }
    m_cmdSynch->setEnabled(true);
    m_cmdCompare->setEnabled(true);
}

void frmMain::cmdSynch_Click()
{
    switch (ConfirmSynchronize(*m_engine, m_stale)) {
    case SyncGate::Refused:
        return;
    case SyncGate::CloseProgram:
        close();
        return;
    case SyncGate::Proceed:
        break;
    }
    if (m_engine->Auto) {
        // An automatic run ends the program instead of comparing again; the buttons stay off.
        m_cmdCompare->setEnabled(false);
        m_cmdSynch->setEnabled(false);
        RunSynchronizeCommand(*m_engine);
        close();
        return;
    }
    runFileCommand([this] { return RunSynchronizeCommand(*m_engine); });
}

void frmMain::mnuPop3_Sync_Click()
{
    const int entry = m_popupEntry;
    runFileCommand([this, entry] { return RunSynchronizeEntry(*m_engine, entry); });
}

void frmMain::mnuPop3_Copy_Click(Side from)
{
    if (!ConfirmCopySelected(*m_engine))
        return;
    const int entry = m_popupEntry;
    runFileCommand([this, from, entry] {
        RunCopySelected(*m_engine, from, entry);
        return true;
    });
}

void frmMain::mnuPop3_Del_Click(Side side)
{
    if (!ConfirmDeleteSelected(*m_engine))
        return;
    const int entry = m_popupEntry;
    runFileCommand([this, side, entry] {
        RunDeleteSelected(*m_engine, side, entry);
        return true;
    });
}

// Space flips the check marks of the selected rows together, as the first of them goes.
void frmMain::toggleSelectedMarks()
{
    const QModelIndexList rows = m_flexFiles->selectionModel()->selectedRows();
    if (rows.isEmpty())
        return;
    const QModelIndex first = rows.first().siblingAtColumn(FileListModel::MarkedColumn);
    const bool mark = first.data(Qt::CheckStateRole).value<Qt::CheckState>() != Qt::Checked;
    for (const QModelIndex &row : rows)
        m_fileModel->setData(row.siblingAtColumn(FileListModel::MarkedColumn),
                             mark ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
}

void frmMain::showFileMenu(const QPoint &pos)
{
    const QModelIndex index = m_flexFiles->indexAt(pos);
    if (!index.isValid())
        return;
    // A list that no longer matches the pairs is not acted on, as Synchronize refuses it too.
    if (m_stale) {
        m_engine->ui().message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok,
                               m_engine->FormatMsg(803));
        return;
    }
    m_popupEntry = m_fileModel->resultIndex(index.row());
    if (m_popupEntry <= 0)
        return;
    m_mnuPop3->popup(m_flexFiles->viewport()->mapToGlobal(pos));
}

} // namespace duomir
