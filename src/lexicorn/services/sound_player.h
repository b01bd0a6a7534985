#pragma once

#include <QUrl>

#include <functional>
#include <memory>
#include <vector>

namespace lexicorn {

// Whether a player can play what it is given. A player that has loaded one
// item stays ready while later items load; one that hit an error has failed.
enum class SoundPlayerStatus { unknown = 0, readyToPlay = 1, failed = 2 };

// Plays one item (a file or web address) at a time. Used on the main thread.
class SoundPlayer {
public:
    virtual ~SoundPlayer() = default;

    virtual SoundPlayerStatus status() const = 0;
    // Makes item the one to play next, dropping the current one.
    virtual void replaceCurrentItem(const QUrl& item) = 0;
    // Starts (or resumes) playing the current item.
    virtual void play() = 0;
};

// Makes a player whose current item is the given one.
using SoundPlayerFactory = std::function<std::unique_ptr<SoundPlayer>(const QUrl& item)>;

// A new player from the installed factory. Without one, a Qt Multimedia player
// when a QGuiApplication runs (the reader), else a recording player (command
// line tools and tests have no one to listen).
std::unique_ptr<SoundPlayer> makeSoundPlayer(const QUrl& item);

// Installs the factory makeSoundPlayer uses; an empty one restores the default.
void setSoundPlayerFactory(SoundPlayerFactory factory);

// A player that plays nothing and remembers what it was asked to play. Its
// status stays where setStatus put it (unknown at first).
class RecordingSoundPlayer : public SoundPlayer {
public:
    explicit RecordingSoundPlayer(const QUrl& item);

    SoundPlayerStatus status() const override { return status_; }
    void replaceCurrentItem(const QUrl& item) override;
    void play() override;

    void setStatus(SoundPlayerStatus status) { status_ = status; }
    QUrl currentItem() const { return items_.back(); }
    // Every item it has held, the one it was made with first.
    const std::vector<QUrl>& items() const { return items_; }
    // The item current at each call of play(), in order.
    const std::vector<QUrl>& played() const { return played_; }
    // Tells players apart even when one takes the memory of a deleted one.
    int serial() const { return serial_; }

private:
    SoundPlayerStatus status_ = SoundPlayerStatus::unknown;
    std::vector<QUrl> items_;
    std::vector<QUrl> played_;
    int serial_;
};

}  // namespace lexicorn
