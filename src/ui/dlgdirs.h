#pragma once

#include <QDialog>
#include <array>

#include "core/dirpair.h"

class QCheckBox;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace duomir {

class Engine;

// The modal dialog that creates or changes one pair of the list. It edits a working copy and writes
// it into the list slot only after every check passed or was accepted.
class dlgDirs : public QDialog
{
    Q_OBJECT

public:
    explicit dlgDirs(Engine &engine, QWidget *parent = nullptr);

    // Loads pair `index`; a new pair (empty source) starts with the paths of the pair above it.
    void Init(int index);

    const DirPair &workingCopy() const { return m_pair; }
    QLineEdit *pathBox(int i) const { return m_txtPath.at(static_cast<size_t>(i)); }
    QLineEdit *maskBox(int i) const { return m_txtSearch.at(static_cast<size_t>(i)); }
    QCheckBox *subDirsBox() const { return m_chkSubDirs; }

public Q_SLOTS:
    void cmdOK_Click();
    void cmdGetDir_Click(int i);

private:
    void buildLayout();
    void updateEnabling();

    Engine *m_engine;
    DirPair m_pair;
    int m_index = 0;
    std::array<QString, 2> m_browseStart;

    std::array<QLineEdit *, 2> m_txtPath{};
    std::array<QToolButton *, 2> m_cmdGetDir{};
    QCheckBox *m_chkSubDirs = nullptr;
    std::array<QCheckBox *, 2> m_chkSystem{};
    std::array<QCheckBox *, 2> m_chkHidden{};
    std::array<QLineEdit *, 4> m_txtSearch{};
    QPushButton *m_cmdOK = nullptr;
    QPushButton *m_cmdCancel = nullptr;
};

} // namespace duomir
