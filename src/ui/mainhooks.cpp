#include "ui/mainhooks.h"

#include "core/engine.h"
#include "ui/frmmain.h"
#include "ui/localizecontrols.h"

namespace duomir {

ShellHooks mainWindowHooks(frmMain &window, Engine &engine)
{
    ShellHooks hooks;
    hooks.localize = [&window, &engine] {
        window.localize();
        // The caption before any profile name; a language without one keeps the previous.
        const QString caption = engine.language.text(QString::number(helpId(&window)));
        if (!caption.isEmpty())
            window.setBaseCaption(caption);
    };
    hooks.layoutButtonBars = [&window] { window.layoutButtonBars(); };
    hooks.loadProfile = [&window, &engine](const QString &path) {
        engine.ProfilePath = path;
        return window.LoadProfile();
    };
    hooks.synchronize = [&window] { window.runSynchronize(); };
    return hooks;
}

} // namespace duomir
