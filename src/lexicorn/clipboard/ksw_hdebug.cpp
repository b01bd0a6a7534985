#include "lexicorn/clipboard/ksw_hdebug.h"

#include "lexicorn/settings/preference_keys.h"

#include "foundation/alerts.h"
#include "foundation/user_defaults.h"

#include "lexicorn/clipboard/clipboard.h"


namespace lexicorn {

void KSWHDebug::pasteboardChangedListen_(std::weak_ptr<void> controller, std::function<void(const QString&)> updateDict)
{
    Clipboard& clipboard = Clipboard::shared();
    if (clipboard.isRunning())
        return;
    clipboard.startListening();
    clipboard.onNewCopy([controller = std::move(controller), updateDict = std::move(updateDict)](const QString& text) {
        if (!controller.expired() && updateDict)
            updateDict(text);
    });
}

void KSWHDebug::pasteboardChangedStop_(std::weak_ptr<void>)
{
    Clipboard::shared().stopListening();
}

void KSWHDebug::exemption()
{
    if (UserDefaults::standard().boolean(keys::clipboardExemption))
        return;
    presentAlert(QStringLiteral("⚠️ 免责声明"),
                 QStringLiteral("1. Lexicorn 为免费分享的插件, 仅供测试学习使用!\n"
                                "2. 本插件未直接修改数据库, 理论上是安全的. 但为保险起见, 使用前还请备份数据!. \n"
                                "3. 对与任何潜在损坏或数据丢失，插件开发者概不负责。请您自己承担使用风险。"),
                 QStringLiteral("OK"),
                 // Stored only once the user pressed OK: quitting with the alert still open
                 // must bring it back at the next start.
                 [] { UserDefaults::standard().set(keys::clipboardExemption, true); });
}

}  // namespace lexicorn
