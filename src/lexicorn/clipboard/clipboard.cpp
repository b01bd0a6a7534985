#include "lexicorn/clipboard/clipboard.h"

#include <QTimer>

namespace lexicorn {

Clipboard& Clipboard::shared()
{
    // Never destroyed: its timer must not outlive the application object.
    static Clipboard* clipboard = new Clipboard(Pasteboard::general());
    return *clipboard;
}

Clipboard::Clipboard(Pasteboard& pasteboard) : pasteboard(pasteboard), changeCount_(pasteboard.changeCount()) {}

Clipboard::~Clipboard() = default;

void Clipboard::retireTimer()
{
    if (!time_)
        return;
    // Deleted later: this may run inside the timer's own poll (a hook stopping the watcher).
    time_->stop();
    time_.release()->deleteLater();
}

void Clipboard::startListening()
{
    changeCount_ = pasteboard.changeCount();
    hooks_.clear();
    retireTimer();
    time_ = std::make_unique<QTimer>();
    time_->setInterval(timerInterval);
    QObject::connect(time_.get(), &QTimer::timeout, time_.get(), [this] { checkForChangesInPasteboard(); });
    time_->start();
}

void Clipboard::stopListening()
{
    retireTimer();
    hooks_.clear();
}

void Clipboard::onNewCopy(Hook hook)
{
    hooks_.push_back(std::move(hook));
}

void Clipboard::copy(const QString& text)
{
    pasteboard.setString(text);
}

void Clipboard::checkForChangesInPasteboard()
{
    if (pasteboard.changeCount() == changeCount_)
        return;
    if (const std::optional<QString> text = pasteboard.string()) {
        // A hook may add hooks or stop the watcher; call the ones there were.
        const std::vector<Hook> hooks = hooks_;
        for (const Hook& hook : hooks)
            hook(*text);
    }
    changeCount_ = pasteboard.changeCount();
}

}  // namespace lexicorn
