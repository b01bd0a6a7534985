#include "foundation/pasteboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <atomic>
#include <mutex>

namespace lexicorn {

namespace {

class MemoryPasteboard : public Pasteboard {
public:
    long changeCount() const override { return count_.load(); }
    std::optional<QString> string() const override
    {
        std::lock_guard lock(mutex_);
        return text_;
    }
    void setString(const QString& text) override { replace(text); }
    void setNonText() override { replace(std::nullopt); }

private:
    void replace(std::optional<QString> text)
    {
        std::lock_guard lock(mutex_);
        text_ = std::move(text);
        ++count_;
    }
    mutable std::mutex mutex_;
    std::optional<QString> text_;
    std::atomic<long> count_{0};
};

// The system clipboard; the count goes up on each change it reports. Used on
// the main thread, where the clipboard lives.
class SystemPasteboard : public Pasteboard {
public:
    SystemPasteboard()
    {
        QObject::connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, [this] { ++count_; });
    }
    long changeCount() const override { return count_.load(); }
    std::optional<QString> string() const override
    {
        const QMimeData* data = QGuiApplication::clipboard()->mimeData();
        if (!data || !data->hasText())
            return std::nullopt;
        return data->text();
    }
    void setString(const QString& text) override { QGuiApplication::clipboard()->setText(text); }
    void setNonText() override
    {
        auto* data = new QMimeData;
        data->setData(QStringLiteral("application/octet-stream"), QByteArray(1, '\0'));
        QGuiApplication::clipboard()->setMimeData(data);
    }

private:
    std::atomic<long> count_{0};
};

}  // namespace

Pasteboard& Pasteboard::general()
{
    static Pasteboard* pasteboard = qobject_cast<QGuiApplication*>(QCoreApplication::instance())
        ? static_cast<Pasteboard*>(new SystemPasteboard)
        : static_cast<Pasteboard*>(new MemoryPasteboard);
    return *pasteboard;
}

}  // namespace lexicorn
