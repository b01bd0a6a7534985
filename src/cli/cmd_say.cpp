#include "cli/commands.h"
#include "cli/output.h"

#include "lexicorn/services/qt_sound_player.h"
#include "lexicorn/services/voice_endpoint.h"
#include "lexicorn/services/word_audio.h"

#include <QDir>
#include <QEventLoop>
#include <QSaveFile>
#include <QTemporaryFile>
#include <QTimer>

#include <chrono>

namespace lexicorn::cli {

namespace {

// A word's pronunciation lasts a second or two; a player still busy after
// this has hung.
constexpr std::chrono::seconds playbackLimit{30};

QString describeSource(const WordAudio& audio)
{
    if (audio.source == WordAudio::Source::voiceService)
        return QStringLiteral("MP3 from the voice service");
    return QStringLiteral("WAV from the offline voice (eSpeak NG; the voice service failed: %1)").arg(audio.voiceServiceProblem);
}

void writeAudio(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        throw CommandError(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
}

void play(const WordAudio& audio)
{
    // The player reads from a file; the temporary one goes when playback is over.
    QTemporaryFile file(QDir::tempPath() + QStringLiteral("/lexicorn-say-XXXXXX.") + audio.suffix);
    if (!file.open() || file.write(audio.bytes) != audio.bytes.size() || !file.flush())
        throw CommandError(QStringLiteral("cannot write a temporary audio file: %1").arg(file.errorString()));
    file.close();

    QEventLoop loop;
    QString error;
    bool finished = false;
    QtSoundPlayer player(QUrl::fromLocalFile(file.fileName()));
    player.setFinishedHandler([&](const QString& message) {
        error = message;
        finished = true;
        loop.quit();
    });
    QTimer::singleShot(playbackLimit, &loop, &QEventLoop::quit);
    player.play();
    if (!finished)
        loop.exec();
    if (!finished)
        throw CommandError(QStringLiteral("playback did not end within %1 seconds").arg(playbackLimit.count()));
    if (!error.isEmpty())
        throw CommandError(QStringLiteral("cannot play the pronunciation: %1").arg(error));
}

}  // namespace

int runSay(Arguments& arguments)
{
    const std::optional<QString> out = arguments.option(QStringLiteral("out"));
    const QStringList words = arguments.positionals();
    if (words.size() != 1 || words.front().trimmed().isEmpty())
        throw UsageError(QStringLiteral("say needs exactly one WORD"));
    if (out && out->isEmpty())
        throw UsageError(QStringLiteral("--out needs a file name"));
    const QString& word = words.front();
    if (!out && !QtSoundPlayer::hasAudioOutput())
        throw CommandError(QStringLiteral("there is no audio output device to play on (use --out FILE to save the pronunciation)"));

    const WordAudio audio = wordAudio(word);
    if (!audio.found())
        throw CommandError(QStringLiteral("no pronunciation of \"%1\": the voice service failed (%2) and so did the offline voice")
                               .arg(word, audio.voiceServiceProblem));
    if (out) {
        writeAudio(*out, audio.bytes);
        print(QStringLiteral("wrote %1: %2 bytes of %3\n").arg(*out).arg(audio.bytes.size()).arg(describeSource(audio)));
        return 0;
    }
    print(QStringLiteral("playing \"%1\": %2\n").arg(word, describeSource(audio)));
    std::fflush(stdout);
    play(audio);
    return 0;
}

}  // namespace lexicorn::cli
