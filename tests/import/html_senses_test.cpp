#include "lexicorn/dictionary/import/html_senses.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace lexicorn::dictimport {
namespace {

// Each sense as "pos|english|chinese|example;example".
QStringList described(const std::vector<SourceSense>& senses)
{
    QStringList out;
    for (const SourceSense& sense : senses) {
        QStringList examples(sense.examples.begin(), sense.examples.end());
        out.append(QStringList{sense.pos, sense.defEn, sense.defCn, examples.join(u';')}.join(u'|'));
    }
    return out;
}

TEST(HtmlSenses, EntryBodiesBecomeSensesWithoutMarkup)
{
    struct Case {
        const char* name;
        Markup markup;
        const char* body;
        QStringList senses;
    };
    const Case cases[] = {
        {"paragraphs and list items, part of speech carried on, numbers dropped", Markup::Html,
         "<div class=\"entry\"><p>n.</p><ol><li>1. a written work &amp; its pages 书；书籍</li><li>2) 书卷</li></ol>"
         "<p><b>v.</b> to reserve a seat<br>预订</p></div>",
         {"n.|a written work & its pages|书；书籍|", "n.||书卷|", "v.|to reserve a seat||", "v.||预订|"}},
        {"scripts, styles, comments and images leave nothing; entities decode to text, not tags", Markup::Html,
         "<style>p{color:red}</style><script>alert('x')</script><!-- note --><img src=\"a.png\">"
         "<p>&lt;script&gt; &#x41;&#66; &quot;q&quot; &nbsp;x &unknown; a < b</p>",
         {"|<script> AB \"q\" x &unknown; a < b||"}},
        {"Chinese first, English after", Markup::Html, "<p>跑步 a run</p>", {"|a run|跑步|"}},
        {"interleaved languages stay one Chinese text", Markup::Html, "<p>abc 中 def 文</p>", {"||abc 中 def 文|"}},
        {"Pango lines", Markup::Pango, "<b>run</b>\n<i>v.</i> to move fast  快跑\n\n<span foreground=\"blue\">a trip</span>",
         {"|run||", "v.|to move fast|快跑|", "v.|a trip||"}},
        {"XDXF: the key and transcription are not senses; examples join their sense", Markup::Xdxf,
         "<k>run</k> <tr>rʌn</tr><def>to move fast<ex>He runs home.</ex></def><def>to manage</def>",
         {"|to move fast||He runs home.", "|to manage||"}},
        {"plain text keeps tags as text and loses the card's field markers", Markup::PlainText,
         "a <b>bold</b> claim🔚;📌\tagain\n第二行",
         {"|a <b>bold</b> claim again||", "||第二行|"}},
        {"an unclosed tag and a tag cut off at the end", Markup::Html, "<p>text<b", {"|text<b||"}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(described(sensesFromMarkup(QString::fromUtf8(c.body), c.markup)), c.senses) << c.name;
}

}  // namespace
}  // namespace lexicorn::dictimport
