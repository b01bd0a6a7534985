// A tap on a popup row: the sentence row toggles correcting mode; a sense
// row highlights the quote sentence in the page and turns the highlight
// into a dictionary card, sent on to Anki when the reader asks for that.

#include "lexicorn/reader/popup/popup_methods.h"
#include "lexicorn/reader/popup/popup_support.h"

#include "lexicorn/anki/ksw_ankiconnect.h"
#include "lexicorn/clipboard/ksw_hdebug.h"
#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/settings/debug_flag.h"
#include "lexicorn/render/anki_fields.h"
#include "lexicorn/render/html_text.h"
#include "lexicorn/render/ksw_text_attr.h"
#include "lexicorn/render/markup.h"
#include "lexicorn/services/ksw_play_sound.h"

#include "foundation/dispatch.h"
#include "foundation/notification_center.h"
#include "foundation/pasteboard.h"

#include "foundation/log.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTimer>

#include <string>

namespace lexicorn::popup {

namespace {

using runtime::Object;
using runtime::send;

const QString translationStyle = QStringLiteral("mbooks-annotation10");

QJsonObject textRecord(const QString& text, const QString& group)
{
    return {{QStringLiteral("text"), text}, {QStringLiteral("type"), QStringLiteral("TextNote")}, {QStringLiteral("group"), group}};
}

// A rich record of a popup line on the popup's background.
QJsonObject htmlRecord(const StyledText& line)
{
    StyledText shown = line;
    shown.addAttributes(0, shown.length(), KSWTextAttr::shareInstance().bgAttr());
    QString html;
    for (const StyledText::Run& run : shown.runs()) {
        const QString piece = htmlEscape(shown.string().mid(run.start, run.length));
        html += run.attributes.bold ? QStringLiteral("<b>%1</b>").arg(piece) : piece;
    }
    return {{QStringLiteral("html"), html},
            {QStringLiteral("text"), shown.string()},
            {QStringLiteral("type"), QStringLiteral("HtmlNote")},
            {QStringLiteral("rtf"), QJsonValue::Null}};
}

// The translation row's text with its bold runs as <b> tags.
QString taggedTranslation(Object& table, const StyledSections& texts)
{
    const ObjectRef cell = send<ObjectRef>(table, "cellForRowAtIndexPath:", IndexPath{0, 1});
    const ObjectRef textView = cell ? send<ObjectRef>(*cell, "textView") : nullptr;
    QString tagged = textView ? highlighTextWithFormat(send<StyledText>(*textView, "attributedText"), QStringLiteral("<b>%@</b>"))
                              : QString();
    if (tagged.isEmpty() && !texts.empty() && texts[0].size() > 2)
        tagged = highlighTextWithFormat(texts[0][2], QStringLiteral("<b>%@</b>"));
    return tagged;
}

void toggleCorrecting(Object& self, Object& table, const DictData& data)
{
    const ObjectRef cell = send<ObjectRef>(table, "cellForRowAtIndexPath:", IndexPath{0, 0});
    const ObjectRef textView = cell ? send<ObjectRef>(*cell, "textView") : nullptr;
    if (flag(self, "isCorrecting")) {
        if (textView)
            send<void>(*textView, "setBackgroundColor:", QColor(Qt::black));
    } else {
        if (flag(self, "autoAudio"))
            KSWPlaySound::shareInstance().playSoundWithWord_(data.word());
        if (textView)
            send<void>(*textView, "setBackgroundColor:", QColor(Qt::red));
        Pasteboard::general().setString(data.quoteSentence());
    }
    setFlag(self, "isCorrecting", !flag(self, "isCorrecting"));
}

// The reader that gets the card: the registered dictionary view for word
// cards, else this one. Another reader is taken to the same place first.
ObjectRef targetReader(Object& self)
{
    ObjectRef target = self.shared_from_this();
    const ObjectRef dictView = dictionaryView().lock();
    if (dictView && !flag(self, "translationCard") && !flag(self, "sentenceOnly"))
        target = dictView;
    if (target.get() == &self)
        return target;
    const QPointF start = send<QPointF>(self, "selectionStartPoint");
    const QPointF end = send<QPointF>(self, "selectionEndPoint");
    send<void>(*target, "setSelectionStartPoint:", start);
    send<void>(*target, "setSelectionEndPoint:", end);
    send<void>(*target, "setSelectionPageNo:", send<int>(self, "selectionPageNo"));
    send<void>(*target, "setSelectionMode:", send<int>(self, "selectionMode"));
    send<void>(*target, "openLinkWithPdfPageNo:rect:", selectionPage(self), QRectF(start, end).normalized());
    return target;
}

QString cardTitle(Object& self, const DictData& data, const StyledSections& texts, IndexPath path)
{
    if (flag(self, "sentenceCard"))
        return data.word();
    if (flag(self, "translationCard") || flag(self, "sentenceOnly"))
        return QString();
    QString title = texts[path.section][0].string();
    const EnWordPtr& entry = data.enWords().at(path.section - 1);
    if (data.word() != entry->title)
        title = QStringLiteral("%1; %2").arg(data.word(), title);
    const int dictType = EnWordServer::shared().dictTypeNumber();
    if (dictType < 1)
        return QStringLiteral("%1%2%3-%4%5").arg(title, DictData::SEPA_Index).arg(path.section).arg(path.row).arg(DictData::SEPA_End);
    return QStringLiteral("%1%2%3-%4-%5%6")
        .arg(title, DictData::SEPA_Index)
        .arg(path.section)
        .arg(path.row)
        .arg(dictType)
        .arg(DictData::SEPA_End);
}

void postCancelEdit(Object& target)
{
    NotificationCenter::defaultCenter().postNotificationName(QStringLiteral("CancelEditNote"), target.shared_from_this());
}

// Writes the card's body; false when the card is only a highlight.
bool writeBody(Object& self, Object& target, const ObjectRef& note, const QString& tagged, const StyledSections& texts,
               IndexPath path)
{
    const auto setStyle = [&note] {
        if (note)
            send<void>(*note, "setHighlight_style:", translationStyle);
    };
    if (flag(self, "sentenceCard")) {
        if (note)
            send<void>(*note, "setNotes:", QJsonArray{textRecord(tagged, QStringLiteral("sentenceCN"))});
        postCancelEdit(target);
        return false;
    }
    if (flag(self, "translationCard")) {
        if (note)
            send<void>(*note, "setNotes:", QJsonArray{textRecord(tagged, QStringLiteral("translationCard"))});
        setStyle();
        postCancelEdit(target);
        std::weak_ptr<Object> weakTarget = target.weak_from_this();
        QTimer::singleShot(100, [weakTarget] {
            if (const ObjectRef alive = weakTarget.lock())
                send<void>(*alive, "RefreshHighlights:", std::string());
        });
        return false;
    }
    if (flag(self, "sentenceOnly")) {
        setStyle();
        postCancelEdit(target);
        return false;
    }
    if (!note)
        return false;
    const ObjectRef delegate = applicationDelegate();
    const bool shield = !delegate || !runtime::respondsTo(*delegate, "shieldDictCard") || send<bool>(*delegate, "shieldDictCard");
    const StyledText& sense = texts[path.section][path.row + 1];
    if (shield)
        send<void>(*note, "setNotes:",
                   QJsonArray{textRecord(tagged, QStringLiteral("sentenceCN")), textRecord(sense.string(), QStringLiteral("exts"))});
    else
        send<void>(*note, "setNotes:", QJsonArray{htmlRecord(texts[0][2]), htmlRecord(sense)});
    return true;
}

// Builds the card's Anki note off the main thread (sounds are stored on the
// way), then adds the card: the add sends its parameters to AnkiConnect as
// they are, so the note goes under "note".
void sendToAnki(Object& self, const ObjectRef& note, const DictDataPtr& data, IndexPath path, const QString& tagged)
{
    const QString noteId = send<QString>(*note, "noteid");
    QString bookTitle;
    if (runtime::Class* tool = runtime::Runtime::shared().classNamed("MbModelTool")) {
        const ObjectRef shared = runtime::sendClass<ObjectRef>(*tool, "sharedInstance");
        const ObjectRef book = shared ? send<ObjectRef>(*shared, "getBookFromMd5:", send<QString>(self, "currentBookMd5")) : nullptr;
        bookTitle = book ? send<QString>(*book, "bookTitle") : QString();
    }
    globalQueue().async([note, data, path, tagged, noteId, bookTitle] {
        const SenseIndex sense{path.section - 1, path.row};
        CardResult<QJsonObject> fields =
            wordDictForAnki(*data, data->word(), bookTitle, sense, tagged, std::nullopt, std::nullopt, noteId);
        mainQueue().async([note, fields = std::move(fields), bookTitle] {
            if (!fields) {
                KSWAnkiconnect::showeAlertWithMessage_(fields.error().message());
                return;
            }
            const QJsonObject params{{QStringLiteral("note"), fields.value()}};
            send<void>(*note, "asyncAddToAnkiWithTitle:wordDict:showHUD:", bookTitle, params,
                       std::function<void(bool, QString)>([](bool, QString message) {
                           if (!message.isEmpty())
                               showHUD(message, 2.0);
                       }));
        });
    });
}

}  // namespace

std::weak_ptr<runtime::Object>& dictionaryView()
{
    static std::weak_ptr<runtime::Object> reader;
    return reader;
}

void tapOnRow(Object& self, Object& table, IndexPath path)
{
    const StyledSections texts = textsOf(table);
    const DictDataPtr data = dictDataOf(table);
    if (!data || path.section >= static_cast<int>(texts.size()))
        return;
    const QString tagged = taggedTranslation(table, texts);
    if (tagged.contains(QStringLiteral("</b>")) || !IS_DEBUG) {
        setFlag(self, "translationCard", false);
        setFlag(self, "sentenceOnly", false);
    } else {
        setFlag(self, "translationCard", path == IndexPath{1, 0});
        setFlag(self, "sentenceOnly", path == IndexPath{1, 1} || path == IndexPath{2, 0});
    }
    if (path == IndexPath{0, 1})
        return;
    if (path == IndexPath{0, 0}) {
        toggleCorrecting(self, table, *data);
        return;
    }

    if (const ObjectRef container = popupContainer(self))
        send<void>(*container, "setHidden:", true);
    KSWHDebug::pasteboardChangedStop_(self.weak_from_this());
    const ObjectRef target = targetReader(self);
    if (flag(self, "isCorrecting")) {
        send<void>(*target, "setPDFSelection:texSelMode:wholeWord:", true, true, true);
    } else {
        const int page = selectionPage(self);
        const std::optional<Sentence> sentence = sentenceAt(pageSentences(self, page, false), selectionAnchor(self));
        if (!sentence)
            return;
        selectLines(*target, sentenceLineRects(*sentence), page);
    }
    const QRectF selected = send<QRectF>(*target, "selectionRect");

    if (runtime::respondsTo(self, "becomeFirstResponder"))
        send<void>(self, "becomeFirstResponder");
    send<void>(*target, "highlight:", std::string());
    if (runtime::Class* menuClass = runtime::Runtime::shared().classNamed("QBPopupMenu")) {
        if (const ObjectRef menu = runtime::sendClass<ObjectRef>(*menuClass, "currentMenu"))
            send<void>(*menu, "dismissAnimated:", false);
    }
    send<void>(*target, "noteHighlight:", std::string());
    send<void>(*target, "setTitleHighlight:", cardTitle(self, *data, texts, path));

    const ObjectRef editor = send<ObjectRef>(*target, "noteEditor");
    const ObjectRef note = editor ? send<ObjectRef>(*editor, "noteForSection:", 0) : nullptr;
    if (!writeBody(self, *target, note, tagged, texts, path))
        return;

    postCancelEdit(*target);
    if (send<ObjectRef>(self, "webDownloadController"))
        NotificationCenter::defaultCenter().postNotificationName(QStringLiteral("StopWebDownload"), target->shared_from_this());
    if (const ObjectRef pageView = send<ObjectRef>(*target, "currPageView")) {
        const ObjectRef imageView = send<ObjectRef>(*pageView, "imageView");
        send<void>(*target, "tapHotWord:", send<QRectF>(*imageView, "cvtRectToView:", selected).center());
    }
    if (flag(self, "autoAddToAnki"))
        sendToAnki(self, note, data, path, tagged);
    send<void>(*target, "refreshSelection");
    setFlag(self, "isCorrecting", false);
}

}  // namespace lexicorn::popup
