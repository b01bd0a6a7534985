#include "lexicorn/clipboard/ksw_hdebug.h"

#include "lexicorn/clipboard/clipboard.h"

#include <QPointer>

namespace lexicorn {

void KSWHDebug::pasteboardChangedListen_(QObject* controller, std::function<void(const QString&)> updateDict)
{
    Clipboard& clipboard = Clipboard::shared();
    if (clipboard.isRunning())
        return;
    clipboard.startListening();
    clipboard.onNewCopy([controller = QPointer<QObject>(controller), updateDict = std::move(updateDict)](const QString& text) {
        if (controller && updateDict)
            updateDict(text);
    });
}

void KSWHDebug::pasteboardChangedStop_(QObject*)
{
    Clipboard::shared().stopListening();
}

}  // namespace lexicorn
