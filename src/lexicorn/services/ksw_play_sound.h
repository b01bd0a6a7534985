#pragma once

#include "lexicorn/services/sound_player.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QTemporaryFile;

namespace lexicorn {

// Pronunciation playback for the popup: plays sound files from the Dict
// folder and words from the online voice service through one reused player.
// Used on the main thread; every call returns at once.
//
// The voice service may be out of reach (no network, blocked host). After
// starting a word's voice file, a background job downloads that file with a
// short time-out; when no file comes, eSpeak NG says the word instead, unless
// another sound has been started meanwhile. The download costs one small extra
// request when the service is up, and never holds the popup: the streamed file
// starts at once and the offline voice replaces it only when the service failed.
class KSWPlaySound {
public:
    // The reader uses the one shared instance; tests make their own.
    KSWPlaySound();
    ~KSWPlaySound();
    KSWPlaySound(const KSWPlaySound&) = delete;
    KSWPlaySound& operator=(const KSWPlaySound&) = delete;

    static KSWPlaySound& shareInstance();

    // Set to 1 whenever a playback starts; nothing sets it back.
    int playState = 0;

    // The player, made by the first playback and reused while it is ready.
    SoundPlayer* avPlayer() const { return avPlayer_.get(); }

    // Plays a file when one exists at the given path, else the given web
    // address. A ready player gets the new item; otherwise (no player yet,
    // still loading, or failed) a new player is made for it and kept.
    void playSoundWithURLString_(const QString& urlString);

    // Plays the word's file from the voice service, falling back to the
    // offline voice as described above.
    void playSoundWithWord_(const QString& word);

    // The file a "sound://NAME" reference of a dictionary entry points to:
    // Dict/NAME under the home folder, when that is a regular file, given as
    // its real path (symbolic links resolved). Nothing for any other
    // reference, including one that would lead out of the Dict folder by its
    // name or through a symbolic link; Dict itself may be a link.
    static std::optional<QString> localSoundPathWith_(const QString& reference);

    // Called on the main thread when the check after playSoundWithWord_ ends;
    // spokenOffline tells whether the offline voice took over.
    std::function<void(const QString& word, bool spokenOffline)> onVoiceChecked;

private:
    struct Handle {
        KSWPlaySound* self;
    };

    void voiceChecked(const QString& word, quint64 playback, const QByteArray& offlineWav);

    std::unique_ptr<SoundPlayer> avPlayer_;
    quint64 playbacks_ = 0;  // counts started playbacks, so a late fallback knows it is stale
    std::unique_ptr<QTemporaryFile> offlineFile_;
    // Background jobs hold this weakly and come back only while it lives.
    std::shared_ptr<Handle> handle_;
};

}  // namespace lexicorn
