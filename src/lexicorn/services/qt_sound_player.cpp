#include "lexicorn/services/qt_sound_player.h"

#include "foundation/log.h"

#include <QAudioDevice>
#include <QAudioOutput>
#include <QMediaDevices>
#include <QMediaPlayer>

#include <utility>

namespace lexicorn {

QtSoundPlayer::QtSoundPlayer(const QUrl& item)
{
    // Qt 6.4's media back ends crash when there is nothing to play on (no
    // sound card or sound server), so without one no media player is made.
    if (QMediaDevices::defaultAudioOutput().isNull()) {
        static bool told = false;
        if (!std::exchange(told, true))
            logLine(QStringLiteral("sound: no audio output device; pronunciations stay silent"));
        failed_ = true;
        return;
    }
    player_ = std::make_unique<QMediaPlayer>();
    output_ = std::make_unique<QAudioOutput>();
    player_->setAudioOutput(output_.get());
    QObject::connect(player_.get(), &QMediaPlayer::mediaStatusChanged, player_.get(), [this](QMediaPlayer::MediaStatus status) {
        switch (status) {
        case QMediaPlayer::LoadedMedia:
        case QMediaPlayer::BufferingMedia:
        case QMediaPlayer::BufferedMedia:
            loadedOnce_ = true;
            break;
        case QMediaPlayer::EndOfMedia:
            loadedOnce_ = true;
            if (finished_)
                finished_(QString());
            break;
        case QMediaPlayer::InvalidMedia:
            failed_ = true;
            break;
        default:
            break;
        }
    });
    QObject::connect(player_.get(), &QMediaPlayer::errorOccurred, player_.get(), [this](QMediaPlayer::Error, const QString& message) {
        failed_ = true;
        if (finished_)
            finished_(message.isEmpty() ? QStringLiteral("the audio could not be played") : message);
    });
    player_->setSource(item);
}

QtSoundPlayer::~QtSoundPlayer()
{
    if (!player_)
        return;
    // The player reports to this object while it stops; silence it first.
    QObject::disconnect(player_.get(), nullptr, player_.get(), nullptr);
    player_->stop();
}

SoundPlayerStatus QtSoundPlayer::status() const
{
    if (failed_)
        return SoundPlayerStatus::failed;
    return loadedOnce_ ? SoundPlayerStatus::readyToPlay : SoundPlayerStatus::unknown;
}

bool QtSoundPlayer::hasAudioOutput()
{
    return !QMediaDevices::defaultAudioOutput().isNull();
}

void QtSoundPlayer::replaceCurrentItem(const QUrl& item)
{
    if (!player_)
        return;
    player_->stop();
    player_->setSource(item);
}

void QtSoundPlayer::play()
{
    if (!player_) {
        if (finished_)
            finished_(QStringLiteral("there is no audio output device"));
        return;
    }
    player_->play();
}

}  // namespace lexicorn
