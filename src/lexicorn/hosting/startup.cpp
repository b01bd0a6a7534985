#include "lexicorn/hosting/startup.h"

#include "lexicorn/settings/preference_keys.h"

#include "lexicorn/settings/debug_flag.h"
#include "lexicorn/settings/middle_button_monitor.h"

#include "lexicorn/clipboard/ksw_hdebug.h"
#include "lexicorn/dictionary/en_word_server.h"

#include "foundation/notification_center.h"
#include "foundation/user_defaults.h"

#include "runtime/hook.h"

namespace lexicorn {

namespace {

// The dictionary to load: with IS_DEBUG off the engine's own choice is stored
// and used, so every launch starts with it; with it on, a stored choice wins.
int64_t dictionaryToLoad()
{
    UserDefaults& defaults = UserDefaults::standard();
    if (!defaults.contains(keys::selectedDict) || !IS_DEBUG) {
        const int number = EnWordServer::shared().dictTypeNumber();
        defaults.set(keys::selectedDict, number);
        return number;
    }
    return defaults.integer(keys::selectedDict);
}

constinit runtime::Hook<void(std::string)> launch{"AppDelegate", "applicationDidFinishLaunching:"};

void startUp(runtime::Object& delegate, const std::string& notification)
{
    // Fonts come from the platform's public font call here, so there is no
    // private font function to look up.
    UserDefaults::standard().set(keys::noMenuOnNewHighlight, false);
    KSWHDebug::exemption();
    EnWordServer::shared().setDictTypeWithNumber(dictionaryToLoad());

    launch.callPrevious(delegate, notification);

    applicationDelegate() = delegate.weak_from_this();
    runtime::send<void>(delegate, "setEnableMouse3:", UserDefaults::standard().boolean(keys::enableMouse3));
    runtime::send<void>(delegate, "setShieldDictCard:", true);

    installMiddleButtonMonitor(delegate);
    // The reader's import replaced files in the Dict folder: the engine
    // loads the imported dictionary, so the next lookup finds its entries,
    // and the menu shows it as the one selected.
    NotificationCenter::defaultCenter().addObserverForName(QStringLiteral("LexicornDictionaryImported"), [](const Notification& imported) {
        const QString slot = imported.userInfo.value(QStringLiteral("dict")).toString();
        std::optional<int64_t> number;
        for (int64_t candidate : {0, 1}) {
            if (SelectDictType::fromRawValue(candidate)->name() == slot)
                number = candidate;
        }
        if (number)
            UserDefaults::standard().set(keys::selectedDict, int(*number));
        EnWordServer::shared().reloadFiles(number);
    });
    // With IS_DEBUG off, as built, start-up ends here: the debugging menu is
    // not part of the plug-in.
}

}  // namespace

std::weak_ptr<runtime::Object>& applicationDelegate()
{
    static std::weak_ptr<runtime::Object> delegate;
    return delegate;
}

void installStartUp()
{
    launch.install(startUp);
}

}  // namespace lexicorn
