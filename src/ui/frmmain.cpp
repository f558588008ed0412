#include "ui/frmmain.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QDir>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QTableView>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

#include "base/interaction.h"
#include "core/engine.h"
#include "core/filters.h"
#include "core/profilefile.h"
#include "ui/checkdelegate.h"
#include "ui/checkheader.h"
#include "ui/dirpairmodel.h"
#include "ui/dlgprogress.h"
#include "ui/filelistmodel.h"
#include "ui/guiinteraction.h"
#include "ui/localizecontrols.h"
#include "ui/painticons.h"

namespace duomir {

namespace {

QPushButton *makeButton(QWidget *parent, const QString &name, const QString &text, int id)
{
    return named(new QPushButton(text, parent), name, id);
}

} // namespace

frmMain::frmMain(Engine &engine, QWidget *parent) : QMainWindow(parent), m_engine(&engine)
{
    setObjectName(QStringLiteral("frmMain"));
    setHelpId(this, 1000);
    m_baseCaption = QStringLiteral("Duomir");
    setWindowTitle(m_baseCaption);
    setWindowIcon(glyphIcon(Glyph::Synchronize));

    runDirsDialog = [this](int slot) { defaultRunDirsDialog(slot); };
    chooseProfileFile = [this](bool save) { return defaultChooseProfileFile(save); };

    m_pairModel = new DirPairModel(engine.pairs, this);
    m_fileModel = new FileListModel(engine, this);
    m_tmrProgress = new QTimer(this);
    m_tmrProgress->setObjectName(QStringLiteral("tmrProgress"));
    m_tmrProgress->setInterval(120);
    connect(m_tmrProgress, &QTimer::timeout, this, &frmMain::tmrProgress_Timer);

    buildLayout();
    buildMenus();
    applyToolbarsFromEngine();
    updatePairButtons();
    resize(1000, 700);

    m_progress = new dlgProgress(engine, this);
    engine.run().progress().setSink(m_progress);
    if (auto *gui = dynamic_cast<GuiInteraction *>(&engine.ui()))
        gui->setWindow(this);
}

frmMain::~frmMain()
{
    if (m_engine->run().progress().sink() == m_progress)
        m_engine->run().progress().setSink(nullptr);
}

void frmMain::buildLayout()
{
    auto *central = new QWidget(this);
    central->setObjectName(QStringLiteral("centralWidget"));
    auto *root = new QVBoxLayout(central);
    root->setContentsMargins(8, 8, 8, 4);

    m_splitter = new QSplitter(Qt::Vertical, central);
    m_splitter->setObjectName(QStringLiteral("splitter"));
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(buildPairPane());
    m_splitter->addWidget(buildFilePane());
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 3);
    m_splitter->setSizes({170, 500});
    root->addWidget(m_splitter);
    setCentralWidget(central);
}

QWidget *frmMain::buildPairPane()
{
    auto *pane = new QWidget(this);
    auto *layout = new QHBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 4);

    m_flexDirs = new QTableView(pane);
    m_flexDirs->setObjectName(QStringLiteral("flexDirs"));
    m_flexDirs->setModel(m_pairModel);
    m_flexDirs->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_flexDirs->setSelectionMode(QAbstractItemView::SingleSelection);
    m_flexDirs->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_flexDirs->setWordWrap(true);
    m_flexDirs->setTextElideMode(Qt::ElideMiddle);
    m_flexDirs->verticalHeader()->hide();
    m_flexDirs->setContextMenuPolicy(Qt::CustomContextMenu);
    m_flexDirs->setMinimumHeight(90);
    QHeaderView *header = m_flexDirs->horizontalHeader();
    header->setSectionResizeMode(DirPairModel::SourceColumn, QHeaderView::Stretch);
    header->setSectionResizeMode(DirPairModel::DestinationColumn, QHeaderView::Stretch);
    for (int c = DirPairModel::FirstSwitchColumn; c < DirPairModel::ColumnCount; ++c) {
        header->setSectionResizeMode(c, QHeaderView::Fixed);
        header->resizeSection(c, 40);
    }
    header->setHighlightSections(false);
    auto *checks = new CheckDelegate(m_flexDirs);
    for (int c = DirPairModel::FirstSwitchColumn; c < DirPairModel::ColumnCount; ++c)
        m_flexDirs->setItemDelegateForColumn(c, checks);
    m_flexDirs->viewport()->installEventFilter(this);
    connect(m_flexDirs, &QTableView::clicked, this, [this](const QModelIndex &index) {
        if (DirPairModel::isSwitchColumn(index.column()))
            toggleSwitch(DirPairModel::slotOfRow(index.row()), index.column());
    });
    connect(m_flexDirs, &QTableView::customContextMenuRequested, this, &frmMain::showPairMenu);
    connect(m_flexDirs->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this] { updatePairButtons(); });
    connect(header, &QHeaderView::sectionResized, this, [this] { resizePairRows(); });

    auto *buttons = new QVBoxLayout;
    m_cmdAdd = makeButton(pane, QStringLiteral("cmdAdd"), QStringLiteral("&Add…"), 1001);
    m_cmdEdit = makeButton(pane, QStringLiteral("cmdEdit"), QStringLiteral("&Edit…"), 1002);
    m_cmdRemove = makeButton(pane, QStringLiteral("cmdRemove"), QStringLiteral("&Remove"), 1003);
    m_cmdLoad = makeButton(pane, QStringLiteral("cmdLoad"), QStringLiteral("&Load…"), 1004);
    m_cmdSave = makeButton(pane, QStringLiteral("cmdSave"), QStringLiteral("&Save…"), 1005);
    m_cmdOptions = makeButton(pane, QStringLiteral("cmdOptions"), QStringLiteral("&Options"), 1008);
    m_cmdAdd->setIcon(style()->standardIcon(QStyle::SP_FileDialogNewFolder));
    m_cmdLoad->setIcon(style()->standardIcon(QStyle::SP_DialogOpenButton));
    m_cmdSave->setIcon(style()->standardIcon(QStyle::SP_DialogSaveButton));
    connect(m_cmdAdd, &QPushButton::clicked, this, &frmMain::cmdAdd_Click);
    connect(m_cmdEdit, &QPushButton::clicked, this, &frmMain::cmdEdit_Click);
    connect(m_cmdRemove, &QPushButton::clicked, this, &frmMain::cmdRemove_Click);
    connect(m_cmdLoad, &QPushButton::clicked, this, &frmMain::mnuPop1_Load_Click);
    connect(m_cmdSave, &QPushButton::clicked, this, &frmMain::mnuPop1_Save_Click);
    for (QPushButton *b : {m_cmdAdd, m_cmdEdit, m_cmdRemove})
        buttons->addWidget(b);
    buttons->addSpacing(12);
    buttons->addWidget(m_cmdLoad);
    buttons->addWidget(m_cmdSave);
    buttons->addStretch();
    buttons->addWidget(m_cmdOptions);

    layout->addWidget(m_flexDirs, 1);
    layout->addLayout(buttons);
    return pane;
}

QWidget *frmMain::buildFilePane()
{
    auto *pane = new QWidget(this);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 4, 0, 0);

    auto *bar = new QHBoxLayout;
    bar->setSpacing(2);
    buildToolbars(pane);
    for (size_t i = 0; i < m_tbar.size(); ++i) {
        // Filters first (file, side, empty), then the directions, as the eye reads them.
        static constexpr std::array order{1, 2, 0, 3};
        bar->addWidget(m_tbar[static_cast<size_t>(order[i])]);
        if (i + 1 < m_tbar.size()) {
            auto *line = new QFrame(pane);
            line->setFrameShape(QFrame::VLine);
            line->setFrameShadow(QFrame::Sunken);
            bar->addWidget(line);
        }
    }
    bar->addStretch();
    m_cmdCompare = makeButton(pane, QStringLiteral("cmdCompare"), QStringLiteral("&Compare"), 1006);
    m_cmdSynch = makeButton(pane, QStringLiteral("cmdSynch"), QStringLiteral("S&ynchronize"), 1007);
    m_cmdCompare->setIcon(glyphIcon(Glyph::Compare));
    m_cmdSynch->setIcon(glyphIcon(Glyph::Synchronize));
    for (QPushButton *b : {m_cmdCompare, m_cmdSynch}) {
        b->setIconSize(QSize(24, 24));
        b->setMinimumHeight(34);
        b->setMinimumWidth(130);
        bar->addWidget(b);
    }
    m_cmdSynch->setDefault(true);
    connect(m_cmdCompare, &QPushButton::clicked, this, &frmMain::cmdCompare_Click);
    connect(m_cmdSynch, &QPushButton::clicked, this, &frmMain::cmdSynch_Click);
    layout->addLayout(bar);

    m_flexFiles = new QTableView(pane);
    m_flexFiles->setObjectName(QStringLiteral("flexFiles"));
    m_fileHeader = new CheckHeader(m_flexFiles);
    m_flexFiles->setHorizontalHeader(m_fileHeader);
    m_flexFiles->setModel(m_fileModel);
    m_flexFiles->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_flexFiles->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_flexFiles->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_flexFiles->setAlternatingRowColors(true);
    m_flexFiles->setShowGrid(false);
    m_flexFiles->setWordWrap(false);
    m_flexFiles->setTextElideMode(Qt::ElideMiddle);
    m_flexFiles->setContextMenuPolicy(Qt::CustomContextMenu);
    m_flexFiles->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_flexFiles->setIconSize(QSize(16, 16));
    m_flexFiles->setItemDelegateForColumn(FileListModel::MarkedColumn,
                                          new CheckDelegate(m_flexFiles));
    // Uniform row heights keep a million rows as cheap to scroll as a hundred.
    QHeaderView *rows = m_flexFiles->verticalHeader();
    rows->hide();
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(m_flexFiles->fontMetrics().height() + 8);
    m_fileHeader->setSortIndicatorShown(false);
    m_fileHeader->setStretchLastSection(false);
    m_fileHeader->setSectionResizeMode(FileListModel::NameColumn, QHeaderView::Stretch);
    m_fileHeader->resizeSection(FileListModel::MarkedColumn, 30);
    m_fileHeader->resizeSection(FileListModel::StateColumn, 34);
    for (int c : {FileListModel::SourceSizeColumn, FileListModel::DestinationSizeColumn})
        m_fileHeader->resizeSection(c, 100);
    const int dateWidth = m_flexFiles->fontMetrics().horizontalAdvance(
                              FileListModel::formatDate(45000.99, QLocale())) +
                          24;
    for (int c : {FileListModel::SourceDateColumn, FileListModel::DestinationDateColumn})
        m_fileHeader->resizeSection(c, dateWidth);
    m_fileHeader->setChecked(m_engine->comparison().markAll());
    connect(m_fileHeader, &CheckHeader::toggled, this, [this](bool on) {
        m_engine->comparison().setMarkAll(on);
        m_fileModel->markAll(on);
    });
    connect(m_fileHeader, &QHeaderView::sectionClicked, this, [this](int section) {
        if (section <= FileListModel::MarkedColumn)
            return;
        const bool again =
            m_fileHeader->isSortIndicatorShown() && m_fileHeader->sortIndicatorSection() == section;
        const Qt::SortOrder order =
            again && m_fileHeader->sortIndicatorOrder() == Qt::AscendingOrder ? Qt::DescendingOrder
                                                                              : Qt::AscendingOrder;
        m_fileHeader->setSortIndicatorShown(true);
        m_fileHeader->setSortIndicator(section, order);
        m_fileModel->sort(section, order);
    });
    connect(m_flexFiles, &QTableView::customContextMenuRequested, this, &frmMain::showFileMenu);
    m_flexFiles->installEventFilter(this);
    layout->addWidget(m_flexFiles, 1);

    auto *status = new QHBoxLayout;
    for (int i = 0; i < 3; ++i) {
        auto *label = new QLabel(pane);
        label->setObjectName(QStringLiteral("lblFilesAndDirs%1").arg(i));
        label->setTextFormat(Qt::PlainText);
        m_lblFilesAndDirs[static_cast<size_t>(i)] = label;
    }
    m_lblFilesAndDirs[0]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_lblFilesAndDirs[1]->setAlignment(Qt::AlignCenter);
    m_lblFilesAndDirs[2]->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_lblFilesAndDirs[1]->setText(QStringLiteral("Not yet compared"));
    m_lblFilesAndDirs[1]->setMinimumWidth(220);
    setHelpId(m_lblFilesAndDirs[1], 1010);
    status->addWidget(m_lblFilesAndDirs[0], 1);
    status->addWidget(m_lblFilesAndDirs[1]);
    status->addWidget(m_lblFilesAndDirs[2], 1);
    layout->addLayout(status);
    return pane;
}

void frmMain::localize()
{
    // Once a list has been built the status row holds counts, which are messages rather than
    // control texts: they are formatted again in the new language, and the middle label keeps
    // what it shows instead of going back to "Not yet compared".
    const bool showsCounts =
        !m_lblFilesAndDirs[0]->text().isEmpty() || !m_lblFilesAndDirs[2]->text().isEmpty();
    const QString middle = m_lblFilesAndDirs[1]->text();
    ApplyLanguageLocale(m_engine->language);
    LocalizeControls(this, m_engine->language);
    if (auto *gui = dynamic_cast<GuiInteraction *>(&m_engine->ui()))
        gui->setButtonTexts({m_engine->FormatMsg(1810), m_engine->FormatMsg(1811),
                             m_engine->FormatMsg(1812), m_engine->FormatMsg(1813)});
    m_fileModel->setLocale(QLocale());
    describeButtons();
    if (showsCounts) {
        m_lblFilesAndDirs[1]->setText(middle);
        const RowCounts &counts = m_engine->comparison().visibleCounts();
        const std::array<QString, 2> texts{
            countText(m_engine->language, counts.files, 702, 703),
            countText(m_engine->language, counts.directories, 712, 713)};
        for (size_t i = 0; i < texts.size(); ++i) {
            if (!texts[i].isEmpty())
                m_lblFilesAndDirs[i * 2]->setText(texts[i]);
        }
    }
    if (const QString headings = m_engine->FormatMsg(115, {QStringLiteral("|")});
        !headings.isEmpty())
        m_pairModel->setHeadings(headings);
    if (const QString headings = m_engine->FormatMsg(1800, {QStringLiteral("|")});
        !headings.isEmpty())
        m_fileModel->setHeadings(headings);
    // New captions change the buttons' widths.
    layoutButtonBars();
    updateCaption();
}

void frmMain::setBaseCaption(const QString &caption)
{
    m_baseCaption = caption;
    updateCaption();
}

void frmMain::updateCaption()
{
    const QString &path = m_engine->ProfilePath;
    setWindowTitle(path.isEmpty() ? m_baseCaption : profileCaption(path, m_baseCaption));
}

void frmMain::setStatusLabel(int index, const QString &text)
{
    if (index >= 0 && index < 3)
        m_lblFilesAndDirs[static_cast<size_t>(index)]->setText(text);
}

QString frmMain::statusLabel(int index) const
{
    return index >= 0 && index < 3 ? m_lblFilesAndDirs[static_cast<size_t>(index)]->text()
                                   : QString();
}

void frmMain::setProgressAnimation(bool running)
{
    if (running && !m_tmrProgress->isActive())
        m_tmrProgress->start();
    else if (!running)
        m_tmrProgress->stop();
}

// The bullets swing 1..9..1 on both sides of the middle label; the count survives between runs.
void frmMain::tmrProgress_Timer()
{
    m_bullets = static_cast<std::int16_t>(m_bullets + (m_bulletsShrink ? -1 : 1));
    if (m_bullets == 1)
        m_bulletsShrink = false;
    else if (m_bullets == 9)
        m_bulletsShrink = true;
    const QString bullets(m_bullets, QChar(0x2022));
    m_lblFilesAndDirs[0]->setText(bullets);
    m_lblFilesAndDirs[2]->setText(bullets);
}

bool frmMain::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_flexDirs->viewport() && event->type() == QEvent::MouseButtonDblClick) {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        const QModelIndex index = m_flexDirs->indexAt(mouse->position().toPoint());
        if (!index.isValid()) {
            cmdAdd_Click();
        } else if (!DirPairModel::isSwitchColumn(index.column())) {
            setCurrentSlot(DirPairModel::slotOfRow(index.row()));
            cmdEdit_Click();
        }
        return true;
    }
    if (watched == m_flexFiles && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Space) {
        toggleSelectedMarks();
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

bool frmMain::queryClose()
{
    if (!m_engine->ProfileModified)
        return true;
    const auto answer = m_engine->ui().message(
        Interaction::Icon::Question, Interaction::Buttons::YesNoCancel, m_engine->FormatMsg(800));
    if (answer == Interaction::Answer::Cancel)
        return false;
    // A Save dialog cancelled after "Yes" keeps the program running, whatever profile was
    // loaded before: the edits are not saved yet.
    if (answer == Interaction::Answer::Yes)
        return mnuPop1_Save_Click();
    return true;
}

void frmMain::closeEvent(QCloseEvent *event)
{
    if (!queryClose()) {
        event->ignore();
        return;
    }
    m_progress->hide();
    event->accept();
}

} // namespace duomir
