// Words broken at a line end made whole in a sentence's text, decided by the
// dictionary first and by the case of the next line after.

#include "page_lines.h"

#include "lexicorn/reader/sentences/broken_words.h"

#include <QSet>

#include <gtest/gtest.h>

namespace {

using namespace lexicorn;
using namespace lexicorn::testing;

struct Case {
    const char* name;
    QStringList lines;  // printed lines of one sentence
    QString text;       // its text, a blank after each line end kept
};

// The sentence's text as the popup makes it: a blank after every line end.
QString popupText(const Sentence& sentence)
{
    QString text;
    for (const CharRecord& record : sentence) {
        text.append(QChar(record.ch));
        if (record.lineEnd)
            text.append(u' ');
    }
    return text.trimmed();
}

TEST(BrokenWords, AreJoinedByTheDictionaryThenByTheNextLinesCase)
{
    const QSet<QString> dictionary{"itself", "camera-ready", "re-enter"};
    const KnownWord known = [&dictionary](const QString& word) { return dictionary.contains(word); };
    const std::vector<Case> cases{
        {"joined word known", {"The document it-", "self was long."}, "The document itself was long."},
        {"hyphenated word known", {"A camera-", "ready copy."}, "A camera-ready copy."},
        {"two breaks in one sentence", {"They re-", "enter it and it-", "self."}, "They re-enter it and itself."},
        {"unknown, next line in lower case", {"The com-", "mittee met."}, "The committee met."},
        {"unknown, next line in upper case", {"The Anglo-", "Saxon kings."}, "The Anglo-Saxon kings."},
        {"a dash after a blank is not a break", {"Wait -", "then go."}, "Wait - then go."},
        {"a hyphen inside a line stays", {"A well-known", "fact."}, "A well-known fact."},
        {"known in another case", {"The Document IT-", "SELF."}, "The Document ITSELF."},
    };
    for (const Case& c : cases) {
        Sentence sentence;
        for (qsizetype i = 0; i < c.lines.size(); ++i) {
            CharLine line = makeLine({c.lines[i], 50.0 + linePitch * double(i)});
            line.back().lineEnd = true;
            sentence.insert(sentence.end(), line.begin(), line.end());
        }
        const Sentence joined = withBrokenWordsJoined(sentence, known);
        EXPECT_EQ(popupText(joined), c.text) << c.name;
        // Every character kept is the page's own, rectangle and all.
        for (const CharRecord& record : joined) {
            EXPECT_TRUE(std::any_of(sentence.begin(), sentence.end(), [&record](const CharRecord& page) {
                return page.ch == record.ch && page.rect == record.rect;
            })) << c.name;
        }
    }
    // Without a dictionary the next line's case decides alone.
    Sentence soft = makeLine({QStringLiteral("co\u00ADoperate"), 50.0});
    soft[2].lineEnd = true;
    EXPECT_EQ(popupText(withBrokenWordsJoined(soft, {})), QStringLiteral("cooperate"));
}

}  // namespace
