// frmMain: the four toolbars above the file list and the popup menus of both lists.
#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>
#include <vector>

#include "core/engine.h"
#include "ui/dirpairmodel.h"
#include "ui/frmmain.h"
#include "ui/localizecontrols.h"
#include "ui/painticons.h"

namespace duomir {

namespace {

QAction *makeAction(QObject *parent, const QString &name, const QString &text, int id)
{
    return named(new QAction(text, parent), name, id);
}

struct ToolButtonDef
{
    Glyph glyph;
    const char16_t *caption;
    const char16_t *tip;
    // The keyboard's way to the button, named in its tool tip.
    QKeyCombination key;
};

// tbar 0: the empty-directories switch; 1: file filter; 2: side filter; 3: sync directions.
const std::array<std::vector<ToolButtonDef>, 4> &toolButtons()
{
    static const std::array<std::vector<ToolButtonDef>, 4> defs{{
        {{Glyph::EmptyFolder, u"Empty", u"Show empty directories", Qt::CTRL | Qt::Key_E}},
        {{Glyph::AllFiles, u"", u"Show all files", Qt::CTRL | Qt::Key_1},
         {Glyph::BothWays, u"", u"Show all modified files", Qt::CTRL | Qt::Key_2},
         {Glyph::ToDestination, u"", u"Show modified files in source directory",
          Qt::CTRL | Qt::Key_3},
         {Glyph::ToSource, u"Dest", u"Show modified files in destination directory",
          Qt::CTRL | Qt::Key_4},
         {Glyph::Identical, u"Same", u"Show identical files", Qt::CTRL | Qt::Key_5}},
        {{Glyph::AllFiles, u"", u"Show files in one or both directories", Qt::CTRL | Qt::Key_6},
         {Glyph::BothSides, u"Both", u"Files in both directories", Qt::CTRL | Qt::Key_7},
         {Glyph::OneSide, u"One dir", u"Files in one directory only", Qt::CTRL | Qt::Key_8}},
        {{Glyph::ToDestination, u"", u"Synchronize files from source to destination directory",
          Qt::CTRL | Qt::Key_Right},
         {Glyph::ToSource, u"", u"Synchronize files from destination to source directory",
          Qt::CTRL | Qt::Key_Left},
         {Glyph::Reverse, u"", u"Reverse direction", QKeyCombination()},
         {Glyph::Delete, u"", u"Delete files that don't exist in receiving directory",
          Qt::CTRL | Qt::Key_D},
         {Glyph::Mirror, u"",
          u"Mirror: delete in the receiving directory what the sending directory lacks",
          Qt::CTRL | Qt::Key_M}},
    }};
    return defs;
}

} // namespace

void frmMain::buildToolbars(QWidget *parent)
{
    const auto &defs = toolButtons();
    for (int bar = 0; bar < 4; ++bar) {
        auto *tb = new QToolBar(parent);
        tb->setObjectName(QStringLiteral("tbar%1").arg(bar));
        tb->setIconSize(QSize(20, 20));
        QActionGroup *group = nullptr;
        if (bar == 1 || bar == 2) {
            group = new QActionGroup(tb);
            group->setExclusive(true);
        }
        const auto &buttons = defs[static_cast<size_t>(bar)];
        for (size_t key = 0; key < buttons.size(); ++key) {
            const ToolButtonDef &def = buttons[key];
            auto *action = makeAction(tb, QStringLiteral("tbar%1_%2").arg(bar).arg(key),
                                      QString::fromUtf16(def.caption),
                                      1100 + bar * 10 + static_cast<int>(key));
            action->setProperty("key", QStringLiteral("#%1").arg(key));
            action->setIcon(glyphIcon(def.glyph));
            action->setToolTip(QString::fromUtf16(def.tip));
            action->setCheckable(true);
            if (def.key != QKeyCombination()) {
                action->setShortcut(QKeySequence(def.key));
                action->setShortcutContext(Qt::WindowShortcut);
            }
            if (group)
                group->addAction(action);
            tb->addAction(action);
            m_buttons[static_cast<size_t>(bar)][key] = action;
            const int k = static_cast<int>(key);
            connect(action, &QAction::triggered, this,
                    [this, bar, k] { tbar_ButtonClick(bar, k); });
        }
        m_tbar[static_cast<size_t>(bar)] = tb;
    }
    // The reverse direction exists for profiles but is never offered.
    m_buttons[3][2]->setVisible(false);
    layoutButtonBars();
    describeButtons();
}

void frmMain::describeButtons()
{
    // Each language gives the tool tip; the shortcut is added to it, and a screen reader says the
    // same as the tool tip shows.
    for (size_t bar = 0; bar < m_tbar.size(); ++bar) {
        for (QAction *a : m_buttons[bar]) {
            if (!a)
                continue;
            QString tip = a->toolTip();
            const QString key = a->shortcut().toString(QKeySequence::NativeText);
            const QString suffix = u" (" + key + u')';
            if (!key.isEmpty() && !tip.endsWith(suffix))
                tip += suffix;
            a->setToolTip(tip);
            if (QWidget *button = m_tbar[bar]->widgetForAction(a)) {
                button->setAccessibleName(key.isEmpty() ? tip : tip.chopped(suffix.size()));
                button->setToolTip(tip);
            }
        }
    }
}

void frmMain::layoutButtonBars()
{
    const bool withText = m_engine->settings.ButtonBarsWithText;
    const auto &defs = toolButtons();
    for (size_t bar = 0; bar < m_tbar.size(); ++bar) {
        QToolBar *tb = m_tbar[bar];
        // Setting the bar's style resets every button to it, so the exceptions come after.
        tb->setToolButtonStyle(withText ? Qt::ToolButtonTextUnderIcon : Qt::ToolButtonIconOnly);
        for (size_t key = 0; key < defs[bar].size(); ++key) {
            // Buttons without a caption of their own show the icon alone, whatever text the
            // language file gives them (a tool tip without a text becomes the text too).
            if (defs[bar][key].caption[0] != u'\0')
                continue;
            if (auto *button =
                    qobject_cast<QToolButton *>(tb->widgetForAction(m_buttons[bar][key])))
                button->setToolButtonStyle(Qt::ToolButtonIconOnly);
        }
    }
}

void frmMain::buildMenus()
{
    m_mnuPop1 = new QMenu(this);
    m_mnuPop1->setObjectName(QStringLiteral("mnuPop1"));
    const auto add = [](QMenu *menu, const QString &name, const QString &text, int id) {
        QAction *action = makeAction(menu, name, text, id);
        menu->addAction(action);
        return action;
    };
    connect(add(m_mnuPop1, QStringLiteral("mnuPop1_Load"), QStringLiteral("&Load profile…"), 1200),
            &QAction::triggered, this, &frmMain::mnuPop1_Load_Click);
    connect(add(m_mnuPop1, QStringLiteral("mnuPop1_Save"), QStringLiteral("&Save profile…"), 1201),
            &QAction::triggered, this, &frmMain::mnuPop1_Save_Click);
    m_mnuPop1->addSeparator();
    connect(add(m_mnuPop1, QStringLiteral("mnuPop1_Add"), QStringLiteral("&Add pair…"), 1202),
            &QAction::triggered, this, &frmMain::cmdAdd_Click);
    connect(add(m_mnuPop1, QStringLiteral("mnuPop1_Edit"), QStringLiteral("&Edit pair…"), 1203),
            &QAction::triggered, this, &frmMain::cmdEdit_Click);
    connect(add(m_mnuPop1, QStringLiteral("mnuPop1_Remove"), QStringLiteral("&Remove pair"), 1204),
            &QAction::triggered, this, &frmMain::cmdRemove_Click);
    m_mnuPop1->addSeparator();
    const std::array<QString, 2> dirs{QStringLiteral("Open s&ource directory"),
                                      QStringLiteral("Open &destination directory")};
    for (int i = 0; i < 2; ++i) {
        QAction *a = add(m_mnuPop1, QStringLiteral("mnuPop1_Dir%1").arg(i),
                         dirs[static_cast<size_t>(i)], 1205 + i);
        a->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
        connect(a, &QAction::triggered, this, [this, i] { mnuPop1_Dir_Click(i); });
    }
    m_mnuPop1->addSeparator();
    QAction *title =
        add(m_mnuPop1, QStringLiteral("mnuPop1_Title2"), QStringLiteral("Include"), 1207);
    title->setEnabled(false);
    QFont headingFont = title->font();
    headingFont.setBold(true);
    title->setFont(headingFont);
    m_mnuPop1_SubDirs = add(m_mnuPop1, QStringLiteral("mnuPop1_SubDirs"),
                            QStringLiteral("&1  (Su)  Subdirectories"), 1208);
    m_mnuPop1_SubDirs->setCheckable(true);
    connect(m_mnuPop1_SubDirs, &QAction::triggered, this,
            [this] { toggleSwitch(currentSlot(), DirPairModel::FirstSwitchColumn); });
    const std::array<QString, 4> attrs{QStringLiteral("&2  (SD)  System directories"),
                                       QStringLiteral("&3  (HD)  Hidden directories"),
                                       QStringLiteral("&4  (SF)  System files"),
                                       QStringLiteral("&5  (HF)  Hidden files")};
    for (int i = 0; i < 4; ++i) {
        QAction *a = add(m_mnuPop1, QStringLiteral("mnuPop1_Attr%1").arg(i),
                         attrs[static_cast<size_t>(i)], 1209 + i);
        a->setCheckable(true);
        m_mnuPop1_Attr[static_cast<size_t>(i)] = a;
        connect(a, &QAction::triggered, this, [this, i] {
            toggleSwitch(currentSlot(), DirPairModel::FirstSwitchColumn + 1 + i);
        });
    }
    m_mnuPop1->addSeparator();
    const std::array<QString, 4> masks{
        QStringLiteral("Include subdirectories…"), QStringLiteral("Exclude subdirectories…"),
        QStringLiteral("Include files…"), QStringLiteral("Exclude files…")};
    for (int i = 0; i < 4; ++i) {
        QAction *a = add(m_mnuPop1, QStringLiteral("mnuPop1_Search%1").arg(i),
                         masks[static_cast<size_t>(i)], 1213 + i);
        connect(a, &QAction::triggered, this, [this, i] { mnuPop1_Search_Click(i); });
    }

    m_mnuPop2 = new QMenu(this);
    m_mnuPop2->setObjectName(QStringLiteral("mnuPop2"));
    connect(add(m_mnuPop2, QStringLiteral("mnuPop2_Load"), QStringLiteral("&Load profile…"), 1220),
            &QAction::triggered, this, &frmMain::mnuPop1_Load_Click);
    m_mnuPop2_Save =
        add(m_mnuPop2, QStringLiteral("mnuPop2_Save"), QStringLiteral("&Save profile…"), 1221);
    connect(m_mnuPop2_Save, &QAction::triggered, this, &frmMain::mnuPop1_Save_Click);
    m_mnuPop2->addSeparator();
    connect(add(m_mnuPop2, QStringLiteral("mnuPop2_Add"), QStringLiteral("&Add pair…"), 1222),
            &QAction::triggered, this, &frmMain::cmdAdd_Click);

    m_mnuPop3 = new QMenu(this);
    m_mnuPop3->setObjectName(QStringLiteral("mnuPop3"));
    QAction *sync = add(m_mnuPop3, QStringLiteral("mnuPop3_Sync"),
                        QStringLiteral("S&ynchronize this entry"), 1230);
    sync->setIcon(glyphIcon(Glyph::Synchronize));
    connect(sync, &QAction::triggered, this, &frmMain::mnuPop3_Sync_Click);
    m_mnuPop3->addSeparator();
    const std::array<QString, 2> copies{QStringLiteral("&Copy from source to destination"),
                                        QStringLiteral("C&opy from destination to source")};
    const std::array<QString, 2> deletes{QStringLiteral("Delete &Source"),
                                         QStringLiteral("Delete &Destination")};
    for (Side from : Sides) {
        QAction *a =
            add(m_mnuPop3, QStringLiteral("mnuPop3_Copy%1").arg(from), copies[from], 1231 + from);
        a->setIcon(glyphIcon(from == Side::Source ? Glyph::ToDestination : Glyph::ToSource));
        connect(a, &QAction::triggered, this, [this, from] { mnuPop3_Copy_Click(from); });
    }
    m_mnuPop3->addSeparator();
    for (Side side : Sides) {
        QAction *a =
            add(m_mnuPop3, QStringLiteral("mnuPop3_Del%1").arg(side), deletes[side], 1233 + side);
        a->setIcon(glyphIcon(Glyph::Delete));
        connect(a, &QAction::triggered, this, [this, side] { mnuPop3_Del_Click(side); });
    }
}

} // namespace duomir
