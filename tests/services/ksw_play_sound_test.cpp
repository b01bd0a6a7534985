#include "sound_test_support.h"

#include "lexicorn/services/ksw_play_sound.h"
#include "lexicorn/services/voice_endpoint.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtCore/qtestsupport_core.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace lexicorn {
namespace {

using testing::TempHome;

RecordingSoundPlayer* recording(const KSWPlaySound& sound)
{
    return dynamic_cast<RecordingSoundPlayer*>(sound.avPlayer());
}

QStringList strings(const std::vector<QUrl>& urls)
{
    QStringList out;
    for (const QUrl& url : urls)
        out << url.toString(QUrl::FullyEncoded);
    return out;
}

TEST(KSWPlaySoundLocalPath, FindsOnlyExistingFilesInsideDict)
{
    // Every reference is tried with Dict a real folder and with Dict a symbolic
    // link to a folder elsewhere ("library"), where the user may keep the files.
    for (const bool dictIsLink : {false, true}) {
        SCOPED_TRACE(dictIsLink ? "Dict is a link" : "Dict is a folder");
        TempHome home;
        const QString root = QFileInfo(home.path()).canonicalFilePath();
        QDir rootDir(root);
        if (dictIsLink) {
            ASSERT_TRUE(rootDir.rmdir(QStringLiteral("Dict")));
            ASSERT_TRUE(rootDir.mkdir(QStringLiteral("library")));
            ASSERT_TRUE(QFile::link(root + QStringLiteral("/library"), root + QStringLiteral("/Dict")));
        }
        const QString realDict = root + (dictIsLink ? QStringLiteral("/library/") : QStringLiteral("/Dict/"));
        home.writeDict(QStringLiteral("a.mp3"), "a");
        ASSERT_TRUE(rootDir.mkpath(QStringLiteral("Dict/voices")));
        home.writeDict(QStringLiteral("voices/b.mp3"), "b");
        // A file outside Dict, where a crafted reference or a link could point.
        QFile secret(root + QStringLiteral("/secret"));
        ASSERT_TRUE(secret.open(QIODevice::WriteOnly));
        secret.close();
        // Links inside Dict: out of it, and (relative) to a file within it.
        ASSERT_TRUE(QFile::link(root + QStringLiteral("/secret"), home.dictPath(QStringLiteral("secret.mp3"))));
        ASSERT_TRUE(QFile::link(QStringLiteral("a.mp3"), home.dictPath(QStringLiteral("alias.mp3"))));

        struct Case {
            QString reference;
            std::optional<QString> expected;  // relative to Dict's real folder
        };
        const Case cases[] = {
            {QStringLiteral("sound://"), std::nullopt},
            {QStringLiteral("sound://a.mp3"), QStringLiteral("a.mp3")},
            {QStringLiteral("sound://voices/b.mp3"), QStringLiteral("voices/b.mp3")},
            {QStringLiteral("sound://missing.mp3"), std::nullopt},
            {QStringLiteral("sound://voices"), std::nullopt},
            {QStringLiteral("SOUND://a.mp3"), std::nullopt},
            {QStringLiteral("a.mp3"), std::nullopt},
            {QStringLiteral("sound://../secret"), std::nullopt},
            {QStringLiteral("sound://") + home.path() + QStringLiteral("/secret"), std::nullopt},
            {QStringLiteral("sound://secret.mp3"), std::nullopt},
            {QStringLiteral("sound://alias.mp3"), QStringLiteral("a.mp3")},
        };
        // Compared as text, so that a failure shows readable paths.
        const QString none = QStringLiteral("(nothing)");
        for (const Case& c : cases) {
            EXPECT_EQ(KSWPlaySound::localSoundPathWith_(c.reference).value_or(none).toStdString(),
                      (c.expected ? realDict + *c.expected : none).toStdString())
                << c.reference.toStdString();
        }
    }
}

TEST(KSWPlaySoundPlayer, ReusesThePlayerOnlyWhenItIsReady)
{
    const QString first = QStringLiteral("https://voice.test/first.mp3");
    const QString second = QStringLiteral("https://voice.test/second.mp3");
    struct Case {
        SoundPlayerStatus status;
        bool reused;
        QStringList itemsAfter;  // also what the player has played by then
    };
    const Case cases[] = {
        {SoundPlayerStatus::readyToPlay, true, {first, second}},
        {SoundPlayerStatus::failed, false, {second}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(int(c.status));
        KSWPlaySound sound;
        EXPECT_EQ(sound.playState, 0);
        sound.playSoundWithURLString_(first);
        RecordingSoundPlayer* player = recording(sound);
        ASSERT_NE(player, nullptr);
        EXPECT_EQ(sound.playState, 1);
        EXPECT_EQ(strings(player->played()), QStringList{first});
        const int firstSerial = player->serial();
        player->setStatus(c.status);

        sound.playSoundWithURLString_(second);
        player = recording(sound);
        ASSERT_NE(player, nullptr);
        EXPECT_EQ(sound.playState, 1);
        EXPECT_EQ(player->serial() == firstSerial, c.reused);
        EXPECT_EQ(strings(player->items()), c.itemsAfter);
        EXPECT_EQ(strings(player->played()), c.itemsAfter);
    }
}

TEST(KSWPlaySoundPlayer, PlaysAFileWhenOneExistsThereElseTheAddressAsGiven)
{
    TempHome home;
    home.writeDict(QStringLiteral("a.mp3"), "a");
    const QString existing = home.dictPath(QStringLiteral("a.mp3"));
    const QString missing = home.dictPath(QStringLiteral("gone.mp3"));
    struct Case {
        QString given;
        QString played;
    };
    const Case cases[] = {
        {existing, QStringLiteral("file://") + existing},
        {missing, missing},
        // An address that is already percent-encoded is neither decoded nor encoded twice.
        {QStringLiteral("https://voice.test/dictvoice?audio=ice%20cream&type=2"),
         QStringLiteral("https://voice.test/dictvoice?audio=ice%20cream&type=2")},
    };
    for (const Case& c : cases) {
        KSWPlaySound sound;
        sound.playSoundWithURLString_(c.given);
        ASSERT_NE(recording(sound), nullptr);
        EXPECT_EQ(strings(recording(sound)->played()), QStringList{c.played}) << c.given.toStdString();
    }
}

TEST(KSWPlaySoundWord, SpeaksOfflineExactlyWhenTheVoiceServiceHasNoFile)
{
    const auto voiceServer = testing::startVoiceServer();
    ASSERT_TRUE(voiceServer->started());
    struct Case {
        QString word;
        bool offline;
    };
    const Case cases[] = {{QStringLiteral("hello"), false}, {QStringLiteral("missing"), true}};  // "missing": a 404
    for (const Case& c : cases) {
        SCOPED_TRACE(c.word.toStdString());
        TempHome home;
        testing::useVoiceService(voiceServer->url());
        const QString voice = voiceURL(c.word).toString(QUrl::FullyEncoded);
        ASSERT_TRUE(voice.startsWith(voiceServer->url() + QStringLiteral("/dictvoice?audio=")));

        KSWPlaySound sound;
        std::optional<bool> spokenOffline;
        sound.onVoiceChecked = [&](const QString& word, bool offline) {
            EXPECT_EQ(word, c.word);
            spokenOffline = offline;
        };
        sound.playSoundWithWord_(c.word);
        // The service's file is started at once, before anything is known about it.
        ASSERT_NE(recording(sound), nullptr);
        EXPECT_EQ(strings(recording(sound)->played()), QStringList{voice});
        EXPECT_EQ(sound.playState, 1);
        // Ready, so a fallback goes to this same player and its record shows both.
        recording(sound)->setStatus(SoundPlayerStatus::readyToPlay);

        ASSERT_TRUE(QTest::qWaitFor([&] { return spokenOffline.has_value(); }, 30000));
        EXPECT_EQ(*spokenOffline, c.offline);
        const QList<QUrl> played(recording(sound)->played().begin(), recording(sound)->played().end());
        if (!c.offline) {
            EXPECT_EQ(played.size(), 1);
            continue;
        }
        ASSERT_EQ(played.size(), 2);
        ASSERT_TRUE(played.last().isLocalFile()) << played.last().toString().toStdString();
        QFile wav(played.last().toLocalFile());
        ASSERT_TRUE(wav.open(QIODevice::ReadOnly));
        const testing::WavCheck check = testing::checkWav(wav.readAll());
        EXPECT_TRUE(check.problem.isEmpty()) << check.problem.toStdString();
        EXPECT_FALSE(check.silent);
    }
}

TEST(KSWPlaySoundWord, LeavesALaterSoundAloneWhenTheServiceFails)
{
    TempHome home;
    testing::useVoiceService(QStringLiteral("http://127.0.0.1:%1").arg(testing::closedPort()));
    KSWPlaySound sound;
    std::optional<bool> spokenOffline;
    sound.onVoiceChecked = [&](const QString&, bool offline) { spokenOffline = offline; };
    sound.playSoundWithWord_(QStringLiteral("hello"));
    const QString later = QStringLiteral("https://voice.test/later.mp3");
    sound.playSoundWithURLString_(later);

    ASSERT_TRUE(QTest::qWaitFor([&] { return spokenOffline.has_value(); }, 30000));
    EXPECT_FALSE(*spokenOffline);
    EXPECT_EQ(strings(recording(sound)->played()).last(), later);
}

}  // namespace
}  // namespace lexicorn
