#include "lexicorn/services/ksw_play_sound.h"

#include "lexicorn/services/offline_voice.h"
#include "lexicorn/services/voice_endpoint.h"
#include "lexicorn/services/word_audio.h"

#include "foundation/dispatch.h"
#include "foundation/log.h"
#include "foundation/paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

namespace lexicorn {

KSWPlaySound::KSWPlaySound() : handle_(std::make_shared<Handle>(Handle{this})) {}

KSWPlaySound::~KSWPlaySound() = default;

KSWPlaySound& KSWPlaySound::shareInstance()
{
    // Never destroyed: a Qt player must not outlive the application object.
    static KSWPlaySound* instance = new KSWPlaySound;
    return *instance;
}

void KSWPlaySound::playSoundWithURLString_(const QString& urlString)
{
    if (urlString.isEmpty())
        return;
    const QFileInfo file(urlString);
    const QUrl item = file.exists() ? QUrl::fromLocalFile(file.absoluteFilePath()) : QUrl(urlString);
    ++playbacks_;
    playState = 1;
    if (avPlayer_ && avPlayer_->status() == SoundPlayerStatus::readyToPlay)
        avPlayer_->replaceCurrentItem(item);
    else
        avPlayer_ = makeSoundPlayer(item);
    avPlayer_->play();
}

void KSWPlaySound::playSoundWithWord_(const QString& word)
{
    const QUrl url = voiceURL(word);
    playSoundWithURLString_(url.toString(QUrl::FullyEncoded));
    // The fallback comes back through the main queue, which needs the application object.
    if (!QCoreApplication::instance())
        return;
    const quint64 playback = playbacks_;
    globalQueue().async([word, url, playback, handle = std::weak_ptr<Handle>(handle_)] {
        const VoiceDownload download = downloadVoice(url, voiceServiceTimeout);
        QByteArray offlineWav;
        if (!download.succeeded()) {
            logLine(QStringLiteral("voice: %1; speaking \"%2\" offline").arg(download.problem, word));
            offlineWav = offlinePronunciation(word);
        }
        mainQueue().async([word, playback, handle, offlineWav] {
            // On the main thread, where instances are destroyed too, so the lock cannot race that.
            if (const std::shared_ptr<Handle> alive = handle.lock())
                alive->self->voiceChecked(word, playback, offlineWav);
        });
    });
}

void KSWPlaySound::voiceChecked(const QString& word, quint64 playback, const QByteArray& offlineWav)
{
    bool spokenOffline = false;
    // Only while the word's voice is still the last thing started.
    if (!offlineWav.isEmpty() && playback == playbacks_) {
        auto file = std::make_unique<QTemporaryFile>(QDir::tempPath() + QStringLiteral("/lexicorn-voice-XXXXXX.wav"));
        if (file->open() && file->write(offlineWav) == offlineWav.size() && file->flush()) {
            file->close();
            playSoundWithURLString_(file->fileName());
            // The previous offline file goes only now that the player has let it go.
            offlineFile_ = std::move(file);
            spokenOffline = true;
        } else {
            logLine(QStringLiteral("voice: cannot write the offline voice to a temporary file: %1").arg(file->errorString()));
        }
    }
    if (onVoiceChecked)
        onVoiceChecked(word, spokenOffline);
}

std::optional<QString> KSWPlaySound::localSoundPathWith_(const QString& reference)
{
    static const QString scheme = QStringLiteral("sound://");
    if (reference.size() < 9 || !reference.startsWith(scheme))
        return std::nullopt;
    const QString name = reference.mid(scheme.size());
    if (QDir::isAbsolutePath(name))
        return std::nullopt;
    // A reference comes from a dictionary file; it must not reach files outside Dict,
    // whose file is then sent to Anki. The name alone must stay inside ...
    const QString dict = QDir::cleanPath(homeDirectory() + QStringLiteral("/Dict"));
    const QString path = QDir::cleanPath(dict + u'/' + name);
    if (!path.startsWith(dict + u'/'))
        return std::nullopt;
    // ... and so must the file it really leads to, since a symbolic link inside Dict
    // (the file's own, or a folder's on the way) may point anywhere. Dict itself may
    // be a link to wherever the user keeps the files: compared is its real place.
    const QString realDict = QFileInfo(dict).canonicalFilePath();
    const QString realPath = QFileInfo(path).canonicalFilePath();
    if (realDict.isEmpty() || realPath.isEmpty())
        return std::nullopt;
    const QString inside = realDict.endsWith(u'/') ? realDict : realDict + u'/';
    if (!realPath.startsWith(inside) || !QFileInfo(realPath).isFile())
        return std::nullopt;
    // The real path, so that what is opened is the file checked here.
    return realPath;
}

}  // namespace lexicorn
