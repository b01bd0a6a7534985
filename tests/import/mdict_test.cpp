// MDict files written by PyPI's mdict-utils (its MDictWriter) at test time,
// read back by our reader and imported through the real lexicorn tool.

#include "import_fixtures.h"

#include "support/temp_home.h"

#include "lexicorn/dictionary/import/mdict_reader.h"

#include <QFile>
#include <QMap>
#include <QProcess>

#include <gtest/gtest.h>

namespace lexicorn {
namespace {

using dictimport::Markup;
using dictimport::SourceEntry;

// Writes one .mdx per (name, version, encoding, compression[, enciphered]) given on the command line, all with the
// same entries in small blocks, so that keys and records spread over many, and an .mdd holding the sound. "enciphered"
// is the writer's key-index encryption (Encrypted="2"); python-lzo's compressor stands in for the tool's LZO module.
const char* const fixtureScript = R"py(
import os, struct, sys, zlib
import lzo
sys.modules["mdict_utils.base.lzo"] = lzo
from mdict_utils.base.writemdict import MDictWriter
out, sound_path = sys.argv[1], sys.argv[2]
words = {
    "apple": '<p>a round fruit <a href="sound://apple.mp3">play</a></p>',
    "apples": "@@@LINK=apple",
    "café": "<p>coffee 咖啡</p>",
}
for i in range(300):
    words["word%03d" % i] = "<p>meaning number %d</p>" % i
def write(path, entries, **options):
    with open(path, "wb") as f:
        MDictWriter(entries, title="Test", description="Made by the tests", **options).write(f)
# The writer always leaves StyleSheet empty and only writes the encryption
# values it implements, so a header attribute it cannot set is put in
# afterwards: the header text is changed, and its length and checksum
# written again. Everything after the header stays as the writer made it.
def set_attribute(path, name, value):
    with open(path, "rb") as f:
        data = f.read()
    size = struct.unpack(">L", data[:4])[0]
    header = data[4:4 + size].decode("utf_16_le")
    start = header.index(' %s="' % name) + len(name) + 3
    header = header[:start] + value + header[header.index('"', start):]
    encoded = header.encode("utf_16_le")
    with open(path, "wb") as f:
        f.write(struct.pack(">L", len(encoded)) + encoded + struct.pack("<L", zlib.adler32(encoded) & 0xffffffff))
        f.write(data[4 + size + 4:])
for layout in sys.argv[3:]:
    name, version, encoding, compression, *flags = layout.split(":")
    write(os.path.join(out, name + ".mdx"), words, block_size=512, version=version,
          encoding=encoding, compression_type=int(compression), encrypt_index="enciphered" in flags)
with open(sound_path, "rb") as f:
    sound = f.read()
write(os.path.join(out, "resources.mdd"), {"\\apple.mp3": sound}, is_mdd=True)
# Records enciphered with a registration key (Encrypted="1").
write(os.path.join(out, "locked.mdx"), words, encrypt_key=b"the buyer's key", register_by="email")
unknown = os.path.join(out, "unknown-encryption.mdx")
write(unknown, words, encrypt_index=True)
set_attribute(unknown, "Encrypted", "6")
# Entries that call up styles of the header's style sheet.
styled = os.path.join(out, "styled.mdx")
write(styled, {
    "water": "`1`water`2` uisce",
    "fire": "`3`fire`1`tine`9`dóiteán `2`",
    "plain": "no marks, a `backtick` and `x` and ``",
}, version="1.2")
set_attribute(styled, "StyleSheet", "1\r\n&lt;b&gt;\r\n&lt;/b&gt;\r\n2\r\n&lt;i&gt;\r\n&lt;/i&gt;\r\n3\r\n&lt;p&gt;\r\n")
)py";

// Bytes of every value a byte can take, and NULs, as a sound file would have.
QByteArray soundBytes()
{
    QByteArray bytes;
    for (int round = 0; round < 5; ++round)
        for (int b = 0; b < 256; ++b)
            bytes.append(char(b ^ round));
    return bytes;
}

void makeFixtures(const QString& dir, const QStringList& layouts)
{
    const QString sound = dir + QStringLiteral("/apple.mp3");
    testing::writeFile(sound, soundBytes());
    const QString venv = qEnvironmentVariable("LEXICORN_ANKI_VENV", QStringLiteral("/opt/lexicorn/anki-peer-venv"));
    QProcess python;
    python.start(venv + QStringLiteral("/bin/python"),
                 QStringList{QStringLiteral("-c"), QString::fromUtf8(fixtureScript), dir, sound} + layouts);
    ASSERT_TRUE(python.waitForFinished(120000));
    ASSERT_EQ(python.exitCode(), 0) << python.readAllStandardError().toStdString();
}

using testing::CollectingSink;

TEST(MdictReader, ToolMadeFilesReadBackWhole)
{
    QTemporaryDir dir;
    const QStringList layouts{
        QStringLiteral("v2-utf8-zlib:2.0:utf8:2"),   QStringLiteral("v2-utf8-lzo:2.0:utf8:1"),
        QStringLiteral("v2-utf8-stored:2.0:utf8:0"), QStringLiteral("v2-utf16-zlib:2.0:utf16:2"),
        QStringLiteral("v12-utf8-zlib:1.2:utf8:2"),  QStringLiteral("v12-utf16-lzo:1.2:utf16:1"),
        // The key index enciphered by the writer, as most downloaded files are.
        QStringLiteral("v2-utf8-zlib-enciphered:2.0:utf8:2:enciphered"),
        QStringLiteral("v2-gbk-lzo-enciphered:2.0:gbk:1:enciphered"),
        QStringLiteral("v2-utf16-stored-enciphered:2.0:utf16:0:enciphered"),
    };
    makeFixtures(dir.path(), layouts);

    for (const QString& layout : layouts) {
        const QString name = layout.section(u':', 0, 0);
        const QString mdx = dir.path() + u'/' + name + QStringLiteral(".mdx");
        QFile::copy(dir.path() + QStringLiteral("/resources.mdd"), dir.path() + u'/' + name + QStringLiteral(".mdd"));
        SCOPED_TRACE(name.toStdString());

        CollectingSink sink;
        dictimport::readMdict(mdx, sink);
        ASSERT_EQ(sink.entries.size(), 303u);
        // Each entry as "text|sound|link". Every record is its own, not its neighbour's: entries spread over many blocks.
        QMap<QString, QString> expected{{"apple", R"(<p>a round fruit <a href="sound://apple.mp3">play</a></p>|apple.mp3|)"},
                                        {"apples", "||apple"},
                                        {"café", "<p>coffee 咖啡</p>||"}};
        for (int i = 0; i < 300; ++i)
            expected.insert(QStringLiteral("word%1").arg(i, 3, 10, QChar(u'0')), QStringLiteral("<p>meaning number %1</p>||").arg(i));
        QMap<QString, QString> read;
        for (const SourceEntry& e : sink.entries)
            read.insert(e.headword, e.text + u'|' + e.sound + u'|' + e.linkTo);
        ASSERT_EQ(sink.entries.size(), 303u);
        EXPECT_EQ(read, expected);
        EXPECT_EQ(sink.byHeadword().value(QStringLiteral("apple"))->markup, Markup::Html);

        EXPECT_EQ(sink.resources.keys(), QStringList{QStringLiteral("apple.mp3")});
        EXPECT_EQ(sink.resources.value(QStringLiteral("apple.mp3")), soundBytes());
        EXPECT_EQ(sink.done, 303);
        EXPECT_EQ(sink.total, 303);
    }
}

TEST(MdictReader, DamagedOrLockedFilesAreReportedWithFileAndPlace)
{
    testing::TempHome home;
    makeFixtures(home.path(), {QStringLiteral("stored:2.0:utf8:0"), QStringLiteral("zlib:2.0:utf8:2"),
                               QStringLiteral("enciphered:2.0:utf8:2:enciphered")});
    const QByteArray stored = testing::readFile(home.path() + QStringLiteral("/stored.mdx"));
    const QByteArray zlib = testing::readFile(home.path() + QStringLiteral("/zlib.mdx"));
    const QByteArray enciphered = testing::readFile(home.path() + QStringLiteral("/enciphered.mdx"));
    const auto flip = [](QByteArray bytes, qsizetype at) {
        bytes[at] = char(bytes.at(at) ^ 0x01);
        return bytes;
    };

    // After the header come the key section's five numbers and their
    // checksum (44 bytes), then the key-info block: its type word, its
    // checksum (which the cipher key is made from), then its payload.
    const auto headerEnd = [](const QByteArray& file) { return 4 + ((uchar(file[2]) << 8) | uchar(file[3])) + 4; };
    const qsizetype keyInfo = headerEnd(enciphered) + 44;

    struct Case {
        const char* file;
        QByteArray bytes;
        QString place;  // what the message names besides the file
    };
    const Case cases[] = {
        {"flipped.mdx", flip(stored, stored.size() - 3), QStringLiteral(": record block")},  // the last block's data
        {"flipped-key-section.mdx", flip(zlib, headerEnd(zlib) + 10), QStringLiteral(": key section")},
        {"truncated.mdx", zlib.left(zlib.size() * 2 / 3), QStringLiteral("truncated or a size past the end")},
        {"header-only.mdx", zlib.left(40), QStringLiteral(": header")},
        {"enciphered-payload.mdx", flip(enciphered, keyInfo + 12), QStringLiteral(": key-info block (enciphered")},
        {"locked.mdx", testing::readFile(home.path() + QStringLiteral("/locked.mdx")),
         QStringLiteral("(Encrypted=\"1\"): reading it needs the registration key")},
        {"unknown.mdx", testing::readFile(home.path() + QStringLiteral("/unknown-encryption.mdx")),
         QStringLiteral("unknown encryption Encrypted=\"6\"")},
    };
    for (const Case& c : cases) {
        const QString path = home.path() + QStringLiteral("/case-") + QString::fromLatin1(c.file);
        testing::writeFile(path, c.bytes);
        CollectingSink sink;
        testing::expectImportError([&] { dictimport::readMdict(path, sink); }, path, c.place);
    }
}

TEST(MdictReader, StyleSheetMarksBecomeTheirHtml)
{
    testing::TempHome home;
    makeFixtures(home.path(), {});
    const QString styled = home.path() + QStringLiteral("/styled.mdx");

    CollectingSink sink;
    dictimport::readMdict(styled, sink);
    QMap<QString, QString> texts;
    for (const SourceEntry& e : sink.entries)
        texts.insert(e.headword, e.text);
    // Each style closes where the next mark starts, or at the end. Style 3 has no closing line; style 9 does not
    // exist, so its mark goes and the text after it is in no style. Backticks around anything but a number are text.
    const QMap<QString, QString> expected{{"water", "<b>water</b><i> uisce</i>"},
                                          {"fire", "<p>fire<b>tine</b>dóiteán <i></i>"},
                                          {"plain", "no marks, a `backtick` and `x` and ``"}};
    EXPECT_EQ(texts, expected);
}

TEST(MdictReader, ImportedIntoDictFolderWithItsSoundAndNoStyleMarks)
{
    testing::TempHome home;
    makeFixtures(home.path(), {QStringLiteral("oxford:2.0:utf8:2")});
    QFile::rename(home.path() + QStringLiteral("/resources.mdd"), home.path() + QStringLiteral("/oxford.mdd"));

    const testing::CliRun run = testing::runLexicorn({"import", "--home", home.path(), "--into", "LDOCE5", home.path() + "/oxford.mdx",
                                                      home.path() + "/styled.mdx"});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const testing::CardBack card = testing::cardBack(home.path(), QStringLiteral("LDOCE5"), QStringLiteral("water"), 0);
    EXPECT_TRUE(card.defEn.contains(QStringLiteral("water"))) << card.defEn.toStdString();
    EXPECT_FALSE(card.defEn.contains(u'`') || card.defCn.contains(u'`')) << card.defEn.toStdString();

    EXPECT_EQ(testing::titleFound(home.path(), QStringLiteral("LDOCE5"), QStringLiteral("apple")), QStringLiteral("apple"));
    // The cross-reference leads to its target.
    EXPECT_EQ(testing::titleFound(home.path(), QStringLiteral("LDOCE5"), QStringLiteral("apples")), QStringLiteral("apple"));
    // The sound sits in the Dict folder under the name the entry gives it.
    EXPECT_EQ(home.readDict(QStringLiteral("apple.mp3")), soundBytes());
}

}  // namespace
}  // namespace lexicorn
