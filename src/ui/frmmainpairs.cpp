// frmMain: the pair list commands and the profile Load and Save commands.
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QInputDialog>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QTextDocument>
#include <QUrl>

#include "base/interaction.h"
#include "core/engine.h"
#include "core/profilefile.h"
#include "ui/checkheader.h"
#include "ui/dirpairmodel.h"
#include "ui/dlgdirs.h"
#include "ui/filelistmodel.h"
#include "ui/frmmain.h"
#include "ui/mousepointer.h"

namespace duomir {

namespace {

// "Profiles (*.dyp)|*.dyp|All files|*.*" in the language file, as Qt's file dialog wants it.
QString qtFilter(const QString &pipes)
{
    const QStringList parts = pipes.split(u'|');
    QStringList filters;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        QString patterns = parts.at(i + 1);
        patterns.replace(u';', u' ');
        patterns.replace(QStringLiteral("*.*"), QStringLiteral("*"));
        const QString &description = parts.at(i);
        filters.append(description.contains(u'(')
                           ? description
                           : description + QStringLiteral(" (") + patterns + u')');
    }
    if (filters.isEmpty())
        filters = {QStringLiteral("Duomir profiles (*.dyp)"), QStringLiteral("All files (*)")};
    return filters.join(QStringLiteral(";;"));
}

QString withoutAccelerator(QString text)
{
    return text.remove(u'&');
}

} // namespace

int frmMain::currentSlot() const
{
    const QModelIndex current = m_flexDirs->currentIndex();
    return current.isValid() ? DirPairModel::slotOfRow(current.row()) : 0;
}

void frmMain::setCurrentSlot(int slot)
{
    if (slot < 1 || slot > m_engine->pairs.count()) {
        m_flexDirs->setCurrentIndex({});
        updatePairButtons();
        return;
    }
    const QModelIndex index = m_pairModel->index(DirPairModel::rowOfSlot(slot), 0);
    m_flexDirs->setCurrentIndex(index);
    m_flexDirs->selectRow(index.row());
}

void frmMain::updatePairButtons()
{
    const bool hasCurrent = currentSlot() > 0;
    m_cmdEdit->setEnabled(hasCurrent);
    m_cmdRemove->setEnabled(hasCurrent);
}

// A row is as tall as the longer of its two paths wrapped in its column.
void frmMain::resizePairRows()
{
    QHeaderView *header = m_flexDirs->horizontalHeader();
    const int minimum = m_flexDirs->fontMetrics().height() + 10;
    QTextDocument measure;
    measure.setDefaultFont(m_flexDirs->font());
    for (int row = 0; row < m_pairModel->rowCount(); ++row) {
        int height = minimum;
        for (int column : {DirPairModel::SourceColumn, DirPairModel::DestinationColumn}) {
            measure.setPlainText(m_pairModel->index(row, column).data().toString());
            measure.setTextWidth(std::max(40, header->sectionSize(column) - 8));
            height = std::max(height, static_cast<int>(measure.size().height()) + 4);
        }
        m_flexDirs->setRowHeight(row, height);
    }
}

void frmMain::greyFileList()
{
    m_stale = true;
    QPalette palette = m_flexFiles->palette();
    palette.setColor(QPalette::Base, QColor(0xE0E0E0));
    palette.setColor(QPalette::AlternateBase, QColor(0xE0E0E0));
    m_flexFiles->setPalette(palette);
}

void frmMain::defaultRunDirsDialog(int slot)
{
    dlgDirs dialog(*m_engine, this);
    dialog.Init(slot);
    dialog.exec();
}

void frmMain::cmdAdd_Click()
{
    DirPairList &pairs = m_engine->pairs;
    const int slot = pairs.append(DirPair::newFromSettings(m_engine->settings));
    runDirsDialog(slot);
    // The dialog writes the slot only on OK, so an empty source means it was cancelled.
    if (pairs[slot].Source.isEmpty()) {
        pairs.removeLast();
        return;
    }
    m_engine->ProfileModified = true;
    greyFileList();
    m_pairModel->reload();
    setCurrentSlot(slot);
    resizePairRows();
}

void frmMain::cmdEdit_Click()
{
    const int slot = currentSlot();
    if (slot < 1)
        return;
    runDirsDialog(slot);
    // Even a cancelled dialog counts as an edit: the list is marked and greyed either way.
    m_engine->ProfileModified = true;
    greyFileList();
    m_pairModel->pairChanged(slot);
    resizePairRows();
}

void frmMain::cmdRemove_Click()
{
    const int slot = currentSlot();
    if (slot < 1)
        return;
    m_engine->pairs.removeAt(slot);
    m_pairModel->reload();
    resizePairRows();
    greyFileList();
    setCurrentSlot(std::min(slot, m_engine->pairs.count()));
}

void frmMain::toggleSwitch(int slot, int column)
{
    if (slot < 1 || slot > m_engine->pairs.count() || !DirPairModel::isSwitchColumn(column))
        return;
    bool &field = switchField(m_engine->pairs[slot],
                              switchInDisplayOrder(column - DirPairModel::FirstSwitchColumn));
    field = !field;
    m_pairModel->pairChanged(slot);
    greyFileList();
}

void frmMain::mnuPop1_Dir_Click(int index)
{
    const int slot = currentSlot();
    if (slot < 1)
        return;
    const DirPair &pair = m_engine->pairs[slot];
    const QString &path = index == 0 ? pair.Source : pair.Destination;
    if (!path.isEmpty())
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

void frmMain::mnuPop1_Search_Click(int index)
{
    const int slot = currentSlot();
    if (slot < 1)
        return;
    DirPair &pair = m_engine->pairs[slot];
    QString DirPair::*const fields[] = {&DirPair::IncludeDirs, &DirPair::ExcludeDirs,
                                        &DirPair::IncludeFiles, &DirPair::ExcludeFiles};
    QString &mask = pair.*fields[index];
    const QAction *action =
        m_mnuPop1->findChild<QAction *>(QStringLiteral("mnuPop1_Search%1").arg(index));
    QString label = withoutAccelerator(action ? action->text() : QString());
    bool ok = false;
    const QString text = QInputDialog::getText(this, m_baseCaption, label.remove(u'…'),
                                               QLineEdit::Normal, mask, &ok);
    if (!ok || text == mask)
        return;
    mask = text;
    m_engine->ProfileModified = true;
    greyFileList();
}

void frmMain::showPairMenu(const QPoint &pos)
{
    const QModelIndex index = m_flexDirs->indexAt(pos);
    const QPoint global = m_flexDirs->viewport()->mapToGlobal(pos);
    if (!index.isValid()) {
        m_mnuPop2_Save->setEnabled(!m_engine->pairs.isEmpty());
        m_mnuPop2->popup(global);
        return;
    }
    const int slot = DirPairModel::slotOfRow(index.row());
    setCurrentSlot(slot);
    const DirPair &pair = m_engine->pairs[slot];
    m_mnuPop1_SubDirs->setEnabled(true);
    m_mnuPop1_SubDirs->setChecked(pair.SubDirs);
    const std::array<bool, 4> attrs{pair.SysDirs, pair.HiddenDirs, pair.SysFiles, pair.HiddenFiles};
    for (size_t i = 0; i < attrs.size(); ++i)
        m_mnuPop1_Attr[i]->setChecked(attrs[i]);
    m_mnuPop1->popup(global);
}

QString frmMain::defaultChooseProfileFile(bool save)
{
    QFileDialog dialog(this, m_engine->FormatMsg(save ? 740 : 730), m_engine->DataFolder,
                       qtFilter(m_engine->FormatMsg(720, {QStringLiteral("|")})));
    dialog.setDefaultSuffix(QStringLiteral("dyp"));
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    // Saving into an existing profile writes this list's pairs into it and keeps what lies beyond
    // them; a question about "replacing" it would not say what happens.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    if (save && !m_engine->ProfilePath.isEmpty())
        dialog.selectFile(m_engine->ProfilePath);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return QDir::toNativeSeparators(dialog.selectedFiles().constFirst());
}

bool frmMain::mnuPop1_Save_Click()
{
    QString path = chooseProfileFile(true);
    if (path.isEmpty())
        return false;
    // "Daily.backup" is a name, not a type: the Load dialog shows profiles by their ending.
    if (!path.endsWith(u".dyp", Qt::CaseInsensitive))
        path += QStringLiteral(".dyp");
    {
        const MousePointer busy;
        SaveProfile(*m_engine, path);
    }
    m_engine->ProfilePath = path;
    m_engine->ProfileModified = false;
    updateCaption();
    return true;
}

void frmMain::mnuPop1_Load_Click()
{
    // "Save first?" answered Yes and the Save dialog then cancelled: the list is not replaced.
    if (m_engine->ProfileModified &&
        m_engine->ui().message(Interaction::Icon::Question, Interaction::Buttons::YesNo,
                               m_engine->FormatMsg(800)) == Interaction::Answer::Yes &&
        !mnuPop1_Save_Click())
        return;
    m_engine->ProfilePath.clear();
    const QString path = chooseProfileFile(false);
    if (path.isEmpty())
        return;
    m_engine->ProfilePath = path;
    LoadProfile();
}

bool frmMain::LoadProfile()
{
    bool loaded = false;
    {
        const MousePointer busy;
        loaded = ReadProfile(*m_engine);
    }
    m_fileHeader->setChecked(m_engine->comparison().markAll());
    m_pairModel->reload();
    resizePairRows();
    applyToolbarsFromEngine();
    setCurrentSlot(m_engine->pairs.count());
    updatePairButtons();
    if (!loaded) {
        greyFileList();
        refreshFileList();
        return false;
    }
    // Loading ends with a Compare of the new list, shown as any other Compare.
    runCompare();
    updateCaption();
    m_engine->ProfileModified = false;
    return true;
}

} // namespace duomir
