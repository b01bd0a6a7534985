#include "foundation/notification_center.h"

#include <algorithm>

namespace lexicorn {

NotificationCenter& NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

NotificationCenter::Token NotificationCenter::addObserverForName(const QString& name, Observer observer)
{
    std::lock_guard lock(mutex_);
    const Token token = nextToken_++;
    entries_.push_back({token, name, std::make_shared<Observer>(std::move(observer))});
    return token;
}

void NotificationCenter::removeObserver(Token token)
{
    std::lock_guard lock(mutex_);
    const auto found = std::find_if(entries_.begin(), entries_.end(), [token](const Entry& e) { return e.token == token; });
    if (found == entries_.end())
        return;
    // A delivery in progress holds a copy of the entry list; emptying the
    // shared function makes it skip this observer too.
    *found->observer = nullptr;
    entries_.erase(found);
}

void NotificationCenter::postNotificationName(const QString& name, std::shared_ptr<void> object, QVariantMap userInfo)
{
    std::vector<std::shared_ptr<Observer>> receivers;
    {
        std::lock_guard lock(mutex_);
        for (const Entry& entry : entries_) {
            if (entry.name.isEmpty() || entry.name == name)
                receivers.push_back(entry.observer);
        }
    }
    const Notification notification{name, std::move(object), std::move(userInfo)};
    // Observers run without the lock so they may add, remove and post.
    for (const std::shared_ptr<Observer>& receiver : receivers) {
        Observer observer;
        {
            std::lock_guard lock(mutex_);
            observer = *receiver;
        }
        if (observer)
            observer(notification);
    }
}

}  // namespace lexicorn
