#pragma once

#include <QList>
#include <QString>

#include "base/interaction.h"

namespace duomir::test {

// Records every message the engine shows and answers from a script (default: No / Ok).
class FakeInteraction : public Interaction
{
public:
    struct Shown
    {
        Icon icon;
        Buttons buttons;
        QString text;
        QString title;
    };

    QList<Shown> shown;
    QList<Answer> answers; // consumed front to back
    QStringList statusLabels{QString(), QString(), QString()};
    int yields = 0;

    Answer message(Icon icon, Buttons buttons, const QString &text, const QString &title) override
    {
        shown.append({icon, buttons, text, title});
        if (!answers.isEmpty())
            return answers.takeFirst();
        return buttons == Buttons::Ok ? Answer::Ok : Answer::No;
    }
    void yieldEvents() override { ++yields; }
    void setStatusLabel(int index, const QString &text) override
    {
        if (index >= 0 && index < statusLabels.size())
            statusLabels[index] = text;
    }
};

} // namespace duomir::test
