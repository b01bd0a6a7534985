#pragma once

#include "lexicorn/services/sound_player.h"

#include <QString>

#include <functional>
#include <memory>

class QAudioOutput;
class QMediaPlayer;

namespace lexicorn {

// Plays through Qt Multimedia on the default audio output. Lives on the main
// thread (or the thread whose event loop runs it). Without an audio output
// it plays nothing and its status is failed.
class QtSoundPlayer : public SoundPlayer {
public:
    explicit QtSoundPlayer(const QUrl& item);
    ~QtSoundPlayer() override;

    SoundPlayerStatus status() const override;
    void replaceCurrentItem(const QUrl& item) override;
    void play() override;

    // Called once the current item has played to its end (with an empty
    // message) or failed (with the reason). For the command line, which waits.
    // Whether the system has an audio output to play on; without one the
    // player fails at once.
    static bool hasAudioOutput();

    void setFinishedHandler(std::function<void(const QString& error)> handler) { finished_ = std::move(handler); }

private:
    std::unique_ptr<QMediaPlayer> player_;
    std::unique_ptr<QAudioOutput> output_;
    bool loadedOnce_ = false;
    bool failed_ = false;
    std::function<void(const QString&)> finished_;
};

}  // namespace lexicorn
