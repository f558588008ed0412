#pragma once

#include <QMainWindow>
#include <array>
#include <cstdint>
#include <functional>

#include "core/side.h"

class QAction;
class QLabel;
class QMenu;
class QPushButton;
class QSplitter;
class QTableView;
class QTimer;
class QToolBar;

namespace duomir {

class CheckHeader;
class DirPairModel;
class Engine;
class FileListModel;
class dlgProgress;

// The main window: the pair grid with its commands above, the filter toolbars and the file list
// below. It owns no engine state; every command goes through the Engine it was given.
class frmMain : public QMainWindow
{
    Q_OBJECT

public:
    explicit frmMain(Engine &engine, QWidget *parent = nullptr);
    ~frmMain() override;

    Engine &engine() const { return *m_engine; }

    // Start-up and shell hooks.
    void localize();
    // Text under the toolbar icons when the option is on, icons alone when it is off.
    void layoutButtonBars();
    void setBaseCaption(const QString &caption);
    QString baseCaption() const { return m_baseCaption; }
    // Loads ProfilePath and compares; false when it could not be loaded (already reported).
    bool LoadProfile();
    bool runCompare();
    void runSynchronize() { cmdSynch_Click(); }
    // Asked before the window closes: offers to save a modified list; false keeps the program
    // running.
    virtual bool queryClose();
    QPushButton *optionsButton() const { return m_cmdOptions; }

    // Seams for the modal parts, replaceable in tests. runDirsDialog shows dlgDirs for a slot;
    // chooseProfileFile shows the open (save = false) or save dialog and returns the chosen path or
    // an empty text.
    std::function<void(int slot)> runDirsDialog;
    std::function<QString(bool save)> chooseProfileFile;

    // Status row and progress animation, also reached by the engine through GuiInteraction.
    void setStatusLabel(int index, const QString &text);
    QString statusLabel(int index) const;
    void setProgressAnimation(bool running);
    void setInputEnabled(bool enabled);

    // Every change of a pair greys the list; only a Compare makes it white again.
    void greyFileList();
    bool isStale() const { return m_stale; }

    // The current pair (slot 1..N, 0 = none).
    int currentSlot() const;
    void setCurrentSlot(int slot);

    QAction *toolbarButton(int bar, int key) const;
    QTableView *pairGrid() const { return m_flexDirs; }
    QTableView *fileList() const { return m_flexFiles; }
    FileListModel *fileModel() const { return m_fileModel; }

public Q_SLOTS:
    void cmdAdd_Click();
    void cmdEdit_Click();
    void cmdRemove_Click();
    void mnuPop1_Load_Click();
    bool mnuPop1_Save_Click();
    void toggleSwitch(int slot, int column);
    void mnuPop1_Dir_Click(int index);
    void mnuPop1_Search_Click(int index);
    void cmdCompare_Click() { runCompare(); }
    void cmdSynch_Click();
    void tbar_ButtonClick(int bar, int key);
    void mnuPop3_Sync_Click();
    void mnuPop3_Copy_Click(Side from);
    void mnuPop3_Del_Click(Side side);
    void tmrProgress_Timer();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildLayout();
    QWidget *buildPairPane();
    QWidget *buildFilePane();
    void buildToolbars(QWidget *parent);
    void buildMenus();
    void updateCaption();
    void updatePairButtons();
    void resizePairRows();
    void applyToolbarsFromEngine();
    // `pressed`: the direction-bar button just clicked (Delete and Mirror release each other).
    void applySyncButtons(int pressed = -1);
    void describeButtons();
    void refreshFileList();
    void showCompareResult(bool compared);
    void showPairMenu(const QPoint &pos);
    void showFileMenu(const QPoint &pos);
    void toggleSelectedMarks();
    QString defaultChooseProfileFile(bool save);
    void defaultRunDirsDialog(int slot);
    void runFileCommand(const std::function<bool()> &command);

    Engine *m_engine;
    QString m_baseCaption;
    bool m_stale = false;
    int m_popupEntry = 0;
    std::int16_t m_bullets = 0;
    bool m_bulletsShrink = false;

    DirPairModel *m_pairModel = nullptr;
    FileListModel *m_fileModel = nullptr;
    QSplitter *m_splitter = nullptr;
    QTableView *m_flexDirs = nullptr;
    QTableView *m_flexFiles = nullptr;
    CheckHeader *m_fileHeader = nullptr;
    QPushButton *m_cmdAdd = nullptr;
    QPushButton *m_cmdEdit = nullptr;
    QPushButton *m_cmdRemove = nullptr;
    QPushButton *m_cmdLoad = nullptr;
    QPushButton *m_cmdSave = nullptr;
    QPushButton *m_cmdCompare = nullptr;
    QPushButton *m_cmdSynch = nullptr;
    QPushButton *m_cmdOptions = nullptr;
    std::array<QToolBar *, 4> m_tbar{};
    std::array<std::array<QAction *, 5>, 4> m_buttons{};
    std::array<QLabel *, 3> m_lblFilesAndDirs{};
    QTimer *m_tmrProgress = nullptr;
    QMenu *m_mnuPop1 = nullptr;
    QMenu *m_mnuPop2 = nullptr;
    QMenu *m_mnuPop3 = nullptr;
    QAction *m_mnuPop1_SubDirs = nullptr;
    std::array<QAction *, 4> m_mnuPop1_Attr{};
    QAction *m_mnuPop2_Save = nullptr;
    dlgProgress *m_progress = nullptr;
};

} // namespace duomir
