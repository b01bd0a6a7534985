// The lookup on a selection: the popup with the word's entries, the quote
// sentence cut from the page and its translation.

#include "lexicorn/reader/popup/popup_methods.h"
#include "lexicorn/reader/popup/popup_support.h"

#include "lexicorn/anki/sync/card_sync.h"
#include "lexicorn/reader/sentences/broken_words.h"
#include "lexicorn/clipboard/ksw_hdebug.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/markup.h"
#include "lexicorn/services/ksw_play_sound.h"

#include "foundation/notification_center.h"
#include "foundation/pasteboard.h"

#include <QRegularExpression>

#include <string>

namespace lexicorn::popup {

namespace {

using runtime::makeImp;
using runtime::Object;
using runtime::send;

// The copy step: with "selectingCopy" the repaired selection goes to the pasteboard.
void copySelection(Object& self)
{
    if (!flag(self, "selectingCopy"))
        return;
    QString text = send<QString>(self, "selectionText");
    if (text.contains(QStringLiteral("   "))) {
        text = send<QString>(self, "rawLineFormatForSelected");
        Pasteboard::general().setString(text);
    } else if (text.isEmpty()) {
        send<void>(self, "copy:", std::string());
    } else {
        Pasteboard::general().setString(pdfRepair(text));
    }
}

// Makes the popup: a container in the study board's view holding the table.
ObjectRef buildContainer(Object& self, bool mapOnRight, const QPointF& point)
{
    runtime::Runtime& runtime = runtime::Runtime::shared();
    const QRectF frame = send<QRectF>(self, "enDictFrameWithMap:withPoint:", mapOnRight, point);
    const ObjectRef container = runtime::sendClass<ObjectRef>(*runtime.classNamed("UIView"), "viewWithFrame:", frame);
    send<void>(*container, "setBackgroundColor:", QColor(Qt::red));
    const ObjectRef table = runtime::sendClass<ObjectRef>(*runtime.classNamed(tableClassName), "tableViewWithFrame:style:",
                                                          QRectF(0, 0, frame.width(), frame.height()), 0);
    const ObjectRef controller = self.shared_from_this();
    send<void>(*table, "setDelegate:", controller);
    send<void>(*table, "setDataSource:", controller);
    send<void>(*table, "setRowHeight:", 30.0);
    send<void>(*table, "setBackgroundColor:", popupGrey);
    send<void>(*table, "setAllowsSelection:", true);
    send<void>(*table, "setAutoresizingMask:", 18);
    send<void>(*container, "addSubview:", table);
    if (const ObjectRef board = studyboard()) {
        const ObjectRef boardView = send<ObjectRef>(*board, "view");
        const bool reading = send<int>(*board, "studyMode") < 2;
        const ObjectRef below = send<ObjectRef>(*board, reading ? "toolBarBorderLine" : "resizeBtn");
        send<void>(*boardView, "insertSubview:aboveSubview:", container, below);
        setFrameInWindow(*container, frame);
    }
    send<void>(self, "setEnDictContainer:", container);
    return container;
}

void showTop(Object& table, Object& container)
{
    send<void>(table, "reloadData");
    send<void>(container, "setHidden:", false);
    send<void>(table, "scrollToRowAtIndexPath:atScrollPosition:animated:", IndexPath{0, 0}, 1, false);
}

void speak(Object& self, const DictData& data)
{
    if (!flag(self, "autoAudio"))
        return;
    const QString pron = data.enWords().empty() ? QString() : data.enWords().front()->amePron;
    KSWPlaySound& player = KSWPlaySound::shareInstance();
    if (const std::optional<QString> path = KSWPlaySound::localSoundPathWith_(pron))
        player.playSoundWithURLString_(*path);
    else
        player.playSoundWithWord_(data.word());
}

void popDict(Object& self, const Notification& notification)
{
    if (!send<bool>(self, "checkNotifyObject:", notification.object))
        return;
    copySelection(self);
    if (!flag(self, "enableDict"))
        return;
    const QString selected = send<QString>(self, "selectionText").trimmed();
    send<void>(self, "setSelectedText:", selected);
    EnWordServer& server = EnWordServer::shared();
    if (server.isCaching() || server.cacheDictNull()) {
        showHUD(syncmessage::dictNotLoaded, 2.0);
        return;
    }

    const QPointF anchor = selectionAnchor(self);
    const QPointF windowPoint = anchorInWindow(self, anchor);
    const ObjectRef board = studyboard();
    const bool mapOnRight = board && send<bool>(*board, "rightMapMode");
    ObjectRef container = popupContainer(self);
    if (container)
        send<void>(self, "moveEnDictPositionWithMap:withPoint:", mapOnRight, windowPoint);
    else
        container = buildContainer(self, mapOnRight, windowPoint);
    const ObjectRef table = popupTable(self);

    if (flag(self, "isCorrecting")) {
        const DictDataPtr data = dictDataOf(*table);
        if (data) {
            data->setQuoteSentence(selected);
            setTexts(*table, attrStrings(*data));
        }
        showTop(*table, *container);
        return;
    }

    static const QRegularExpression notLetters(QStringLiteral("^[^\\p{L}]+|[^\\p{L}]+$"));
    const QString word = pdfRepair(selected).remove(notLetters);
    if (word.isEmpty() || word.split(u' ').size() >= 6) {
        send<void>(*container, "setHidden:", true);
        send<void>(self, "setSelectedText:", QString());
        return;
    }

    const std::optional<Sentence> found = sentenceAt(pageSentences(self, selectionPage(self), false), anchor);
    if (!found)
        return;
    // The quote reads as the book does: words broken at a line end are whole.
    const Sentence whole = withBrokenWordsJoined(*found, [&server](const QString& w) { return server.knows(w); });
    const QString sentence = pdfRepair(send<QString>(self, "sentenceWithDict:", whole));

    const DictDataPtr data = server.query(word, sentence);
    send<void>(*table, "setDictData:", data);
    send<void>(*table, "setWord:", word);
    setTexts(*table, attrStrings(*data));
    speak(self, *data);

    const StyledSections texts = textsOf(*table);
    if (texts.empty() || texts[0].size() < 3 || texts[0][2].isEmpty()) {
        NotificationCenter::defaultCenter().postNotificationName(
            QStringLiteral("ResearchOnWeb"), self.shared_from_this(),
            {{QStringLiteral("browserMode"), 2}, {QStringLiteral("lan"), QStringLiteral("en")}, {QStringLiteral("text"), sentence}});
        std::weak_ptr<Object> weakSelf = self.weak_from_this();
        KSWHDebug::pasteboardChangedListen_(weakSelf, [weakSelf](const QString& copied) {
            if (const ObjectRef alive = weakSelf.lock())
                send<void>(*alive, "updateDict:", copied);
        });
    }
    showTop(*table, *container);
}

// A translation arriving for the open popup: it fills an empty translation
// row. An empty text stands for what the pasteboard holds.
void updateDict(Object& self, const QString& sent)
{
    if (!send<ObjectRef>(self, "webDownloadController"))
        return;
    const ObjectRef container = popupContainer(self);
    if (!container || send<bool>(*container, "isHidden"))
        return;
    const ObjectRef table = popupTable(self);
    const ObjectRef cell = send<ObjectRef>(*table, "cellForRowAtIndexPath:", IndexPath{0, 1});
    const ObjectRef textView = cell ? send<ObjectRef>(*cell, "textView") : nullptr;
    if (!textView || !send<QString>(*textView, "text").isEmpty())
        return;
    const QString text = sent.isEmpty() ? Pasteboard::general().string().value_or(QString()) : sent;
    const StyledSections texts = textsOf(*table);
    if (text.isEmpty() || (!texts.empty() && texts[0].size() > 1 && texts[0][1].string() == text))
        return;
    send<void>(*textView, "setText:", text);
    setTexts(*table, modify(texts, send<StyledText>(*textView, "attributedText"), send<int>(*textView, "tag")));
}

}  // namespace

void installLookupMethods()
{
    install<void(Notification)>("popDict:", popDict);
    install<void(QString)>("updateDict:", updateDict);
    install<void(Notification)>("openHotWord:", [](Object& self, Notification notification) {
        if (send<bool>(self, "checkNotifyObject:", notification.object) && flag(self, "autoAudio"))
            KSWPlaySound::shareInstance().playSoundWithWord_(notification.userInfo.value(QStringLiteral("string")).toString());
    });
}

}  // namespace lexicorn::popup
