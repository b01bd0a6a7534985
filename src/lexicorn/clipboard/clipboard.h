#pragma once

#include "foundation/pasteboard.h"

#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

class QTimer;

namespace lexicorn {

// Watches the general pasteboard by polling its change count and hands each
// newly copied text to the registered hooks. Lives on the main thread, whose
// event loop runs the poll.
class Clipboard {
public:
    using Hook = std::function<void(const QString& text)>;

    // The one watcher, made on first use. Call on the main thread.
    static Clipboard& shared();

    // A watcher of the given pasteboard (tests).
    explicit Clipboard(Pasteboard& pasteboard);
    ~Clipboard();
    Clipboard(const Clipboard&) = delete;
    Clipboard& operator=(const Clipboard&) = delete;

    Pasteboard& pasteboard;
    // How often the pasteboard is looked at.
    std::chrono::milliseconds timerInterval{1000};

    // The repeating poll timer; set exactly while the watcher runs.
    QTimer* time() const { return time_.get(); }
    bool isRunning() const { return time_ != nullptr; }
    // The pasteboard's change count when it was last looked at.
    long changeCount() const { return changeCount_; }
    const std::vector<Hook>& hooks() const { return hooks_; }

    // Takes the current count as seen, drops every hook, and polls every
    // timerInterval from now on. Hooks are registered after starting.
    void startListening();
    // Stops polling and drops every hook.
    void stopListening();
    // Adds a hook; hooks are called in the order they were added.
    void onNewCopy(Hook hook);
    // Puts exactly this text on the pasteboard. The next poll reports it like
    // any other copy.
    void copy(const QString& text);

    // One poll: when the count moved, calls every hook with the pasteboard's
    // text (if it holds text; a copied image calls none), then takes the
    // count as seen, as it is after the hooks ran, so a hook's own copy is
    // not reported again.
    void checkForChangesInPasteboard();

private:
    void retireTimer();

    std::unique_ptr<QTimer> time_;
    long changeCount_;
    std::vector<Hook> hooks_;
};

}  // namespace lexicorn
