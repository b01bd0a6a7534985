#include "lexicorn/services/sound_player.h"

#include "lexicorn/services/qt_sound_player.h"

#include <QGuiApplication>

#include <atomic>
#include <mutex>

namespace lexicorn {

namespace {

std::mutex factoryMutex;
SoundPlayerFactory installedFactory;

}  // namespace

std::unique_ptr<SoundPlayer> makeSoundPlayer(const QUrl& item)
{
    SoundPlayerFactory factory;
    {
        std::lock_guard lock(factoryMutex);
        factory = installedFactory;
    }
    if (factory)
        return factory(item);
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return std::make_unique<QtSoundPlayer>(item);
    return std::make_unique<RecordingSoundPlayer>(item);
}

void setSoundPlayerFactory(SoundPlayerFactory factory)
{
    std::lock_guard lock(factoryMutex);
    installedFactory = std::move(factory);
}

RecordingSoundPlayer::RecordingSoundPlayer(const QUrl& item) : items_{item}
{
    static std::atomic<int> made{0};
    serial_ = ++made;
}

void RecordingSoundPlayer::replaceCurrentItem(const QUrl& item)
{
    items_.push_back(item);
}

void RecordingSoundPlayer::play()
{
    played_.push_back(currentItem());
}

}  // namespace lexicorn
