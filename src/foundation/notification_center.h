#pragma once

#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace lexicorn {

// A notification: its name, the object that posted it (may be null) and
// what it carries.
struct Notification {
    QString name;
    std::shared_ptr<void> object;
    QVariantMap userInfo;
};

// Named notifications delivered to observers on the posting thread, in the
// order the observers were added. An observer added while a notification is
// being delivered first hears the next one; one removed during delivery is
// not called again, not even for the notification being delivered.
class NotificationCenter {
public:
    using Observer = std::function<void(const Notification&)>;
    using Token = std::uint64_t;

    static NotificationCenter& defaultCenter();

    // Observes notifications of that name; an empty name observes all.
    Token addObserverForName(const QString& name, Observer observer);
    void removeObserver(Token token);
    void postNotificationName(const QString& name, std::shared_ptr<void> object = {}, QVariantMap userInfo = {});

private:
    struct Entry {
        Token token;
        QString name;
        std::shared_ptr<Observer> observer;  // reset when removed
    };
    std::mutex mutex_;
    std::vector<Entry> entries_;
    Token nextToken_ = 1;
};

}  // namespace lexicorn
