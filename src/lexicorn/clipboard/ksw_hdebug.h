#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace lexicorn {

// Connects the shared clipboard watcher to the dictionary controller, so a
// copied word is looked up; and shows the one-time disclaimer.
class KSWHDebug {
public:
    // Starts the shared watcher, unless it already runs, with one hook that
    // passes each copied text to updateDict while the controller lives (it is
    // held weakly). When the watcher already runs nothing is added, so calling
    // this twice leaves a single hook.
    static void pasteboardChangedListen_(std::weak_ptr<void> controller, std::function<void(const QString&)> updateDict);

    // Stops the shared watcher and drops its hooks.
    static void pasteboardChangedStop_(std::weak_ptr<void> controller);

    // Shows the disclaimer once per account: when "KSW_EXEMPTION_3.7.5" is
    // not yet true, an alert titled "⚠️ 免责声明" with one "OK" button. The
    // key is set once the user has acknowledged the alert, not when it opens.
    static void exemption();

    // Nothing to adjust on this platform.
    static void exemption_iPad() {}
};

}  // namespace lexicorn
