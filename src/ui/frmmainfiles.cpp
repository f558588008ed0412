// frmMain: Compare, the filter and direction toolbars, the file list and its commands.
#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QToolBar>

#include "core/engine.h"
#include "core/interaction.h"
#include "ui/checkheader.h"
#include "ui/dlgprogress.h"
#include "ui/enginebridge.h"
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
    const MousePointer busy;
    m_cmdCompare->setEnabled(false);
    setProgressAnimation(true);
    const bool compared = bridge::compareAll(*m_engine);
    setProgressAnimation(false);
    m_cmdCompare->setEnabled(true);
    // A failed run may have emptied CompareResults: the rows on screen must not point into it.
    m_fileModel->reload();
    if (!compared)
        return false;
    refreshFileList();
    m_stale = false;
    QPalette palette = m_flexFiles->palette();
    palette.setColor(QPalette::Base, QColor(0xFFFFFF));
    palette.setColor(QPalette::AlternateBase, QColor(0xF3F6F9));
    m_flexFiles->setPalette(palette);
    return true;
}

void frmMain::refreshFileList()
{
    m_fileHeader->setSortIndicatorShown(false);
    m_fileModel->reload();
    m_tbar[2]->setEnabled(m_engine->filter.FileFilter != 4);
    showCounts();
}

void frmMain::showCounts()
{
    const RowCounts &counts = m_engine->visibleCounts;
    const auto countText = [this](int count, int one, int many, const QString &fallback) {
        const QString text =
            m_engine->FormatMsg(count == 1 ? one : many, {QLocale().toString(count)});
        return text.isEmpty() ? QLocale().toString(count) + u' ' + fallback : text;
    };
    setStatusLabel(0, countText(counts.files, 702, 703, QStringLiteral("files")));
    setStatusLabel(1, QStringLiteral("·"));
    setStatusLabel(2, countText(counts.directories, 712, 713, QStringLiteral("directories")));
}

void frmMain::tbar_ButtonClick(int bar, int key)
{
    FilterState &filter = m_engine->filter;
    switch (bar) {
    case 0:
        filter.ShowEmptyDirs = m_buttons[0][0]->isChecked();
        break;
    case 1:
        filter.FileFilter = key;
        break;
    case 2:
        filter.SideFilter = key;
        break;
    case 3:
        applySyncButtons();
        break;
    default:
        return;
    }
    if (!m_engine->pairs.isEmpty())
        m_engine->ProfileModified = true;
    if (bar == 3)
        return;
    {
        const MousePointer busy;
        bridge::buildVisibleRows(*m_engine, filter.FileFilter);
    }
    refreshFileList();
}

// Deleting on the receiving side's behalf makes sense only with exactly one direction, so the
// Delete button follows the other three.
void frmMain::applySyncButtons()
{
    SyncOptions &sync = m_engine->sync;
    sync.Src = m_buttons[3][0]->isChecked();
    sync.Dest = m_buttons[3][1]->isChecked();
    sync.Reverse = m_buttons[3][2]->isChecked();
    const bool deleteAllowed = !sync.Reverse && !(sync.Src && sync.Dest);
    QAction *del = m_buttons[3][3];
    del->setEnabled(deleteAllowed);
    if (!deleteAllowed)
        del->setChecked(false);
    sync.Delete = del->isChecked();
}

void frmMain::applyToolbarsFromEngine()
{
    const FilterState &filter = m_engine->filter;
    const SyncOptions &sync = m_engine->sync;
    m_buttons[0][0]->setChecked(filter.ShowEmptyDirs);
    // A value that names no button leaves its toolbar without a pressed one.
    for (int bar : {1, 2}) {
        const int value = bar == 1 ? filter.FileFilter : filter.SideFilter;
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
    applySyncButtons();
    m_tbar[2]->setEnabled(filter.FileFilter != 4);
}

dlgProgress *frmMain::progressDialog()
{
    if (!m_progress)
        m_progress = new dlgProgress(*m_engine, this);
    return m_progress;
}

void frmMain::runFileCommand(int statusKey, const std::function<bool()> &command)
{
    m_cmdCompare->setEnabled(false);
    m_cmdSynch->setEnabled(false);
    const int scroll = m_flexFiles->verticalScrollBar()->value();
    setStatusLabel(0, QString());
    setStatusLabel(2, QString());
    setStatusLabel(1, m_engine->FormatMsg(statusKey));
    QApplication::processEvents();

    // Only the progress dialog's Cancel may act while files are copied or deleted.
    centralWidget()->setEnabled(false);
    const bool ran = command();
    centralWidget()->setEnabled(true);
    if (m_progress && m_progress->isVisible())
        m_progress->hide();

    if (m_engine->Auto) {
        close();
        return;
    }
    if (ran) {
        runCompare();
        m_flexFiles->verticalScrollBar()->setValue(scroll);
    }
    m_cmdSynch->setEnabled(true);
    m_cmdCompare->setEnabled(true);
}

void frmMain::cmdSynch_Click()
{
    Interaction &ui = m_engine->ui();
    if (m_stale) {
        ui.message(Interaction::Icon::Exclamation, Interaction::Buttons::Ok,
                   m_engine->FormatMsg(803));
        return;
    }
    if (m_engine->CompareResults.size() <= 1) {
        if (m_engine->Auto)
            close();
        return;
    }
    if (!m_engine->DontAsk &&
        ui.message(Interaction::Icon::Exclamation, Interaction::Buttons::YesNo,
                   m_engine->FormatMsg(804)) != Interaction::Answer::Yes)
        return;
    runFileCommand(852, [this] {
        return bridge::synchronize(*m_engine, 0, m_engine->DontAsk ? nullptr : progressDialog());
    });
}

void frmMain::mnuPop3_Sync_Click()
{
    const int entry = m_popupEntry;
    const bool autoRun = m_engine->Auto;
    m_engine->Auto = false; // the popup command never ends the program
    runFileCommand(852, [this, entry] {
        return bridge::synchronize(*m_engine, entry,
                                   m_engine->DontAsk ? nullptr : progressDialog());
    });
    m_engine->Auto = autoRun;
}

void frmMain::mnuPop3_Copy_Click(int direction)
{
    if (!m_engine->DontAsk &&
        m_engine->ui().message(Interaction::Icon::Question, Interaction::Buttons::YesNo,
                               m_engine->FormatMsg(811)) != Interaction::Answer::Yes)
        return;
    const int entry = m_popupEntry;
    const bool autoRun = m_engine->Auto;
    m_engine->Auto = false;
    runFileCommand(853, [this, direction, entry] {
        bridge::copySelected(*m_engine, direction, entry,
                             m_engine->DontAsk ? nullptr : progressDialog());
        return true;
    });
    m_engine->Auto = autoRun;
}

void frmMain::mnuPop3_Del_Click(int side)
{
    if (!m_engine->DontAsk &&
        m_engine->ui().message(Interaction::Icon::Question, Interaction::Buttons::YesNo,
                               m_engine->FormatMsg(801)) != Interaction::Answer::Yes)
        return;
    const int entry = m_popupEntry;
    const bool autoRun = m_engine->Auto;
    m_engine->Auto = false;
    runFileCommand(854, [this, side, entry] {
        bridge::deleteEntries(*m_engine, side, entry);
        return true;
    });
    m_engine->Auto = autoRun;
}

void frmMain::showFileMenu(const QPoint &pos)
{
    const QModelIndex index = m_flexFiles->indexAt(pos);
    if (!index.isValid())
        return;
    m_popupEntry = m_fileModel->resultIndex(index.row());
    if (m_popupEntry <= 0)
        return;
    m_mnuPop3->popup(m_flexFiles->viewport()->mapToGlobal(pos));
}

} // namespace duomir
