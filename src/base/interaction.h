#pragma once

#include <QString>

namespace duomir {

// How the engine talks to the person: the GUI answers with message boxes and event processing, the
// CLI with standard error and fixed answers, tests with a scripted fake. Nothing else in the engine
// knows which front end runs it.
class Interaction
{
public:
    enum class Icon { Information, Exclamation, Question, Critical };
    enum class Buttons { Ok, YesNo, YesNoCancel };
    enum class Answer { Ok, Yes, No, Cancel };

    virtual ~Interaction() = default;

    // Shows a message and returns the person's answer. Questions with Yes/No default to No.
    virtual Answer message(Icon icon, Buttons buttons, const QString &text,
                           const QString &title = {}) = 0;

    // Whether somebody is there to answer a dialog. Without one (-dontask, no display, a
    // headless program) nothing may wait for a click: messages are reported and the run goes on.
    virtual bool personPresent() const { return true; }
    // Lets pending events run (repaint, Cancel button). May be throttled by the implementation.
    virtual void yieldEvents() {}

    // The three status labels of the main window (lblFilesAndDirs 0..2).
    virtual void setStatusLabel(int /*index*/, const QString & /*text*/) {}

    // The main window takes no input while a synchronization runs (the progress dialog's Cancel
    // stays usable).
    virtual void setInputEnabled(bool /*enabled*/) {}

    // Every failed file operation, also under DontAsk (where no message box is shown): the
    // system's error text and the source and destination texts, either possibly empty.
    virtual void failureReported(const QString & /*error*/, const QString & /*source*/,
                                 const QString & /*destination*/)
    {}

    // The progress animation runs while a Compare is under way.
    virtual void setProgressAnimation(bool /*running*/) {}
};

} // namespace duomir
