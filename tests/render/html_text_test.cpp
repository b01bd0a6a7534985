#include "lexicorn/render/html_text.h"

#include <gtest/gtest.h>

#include <functional>

namespace lexicorn {
namespace {

struct Case {
    const char* name;
    std::function<QString()> call;
    const char* expected;
};

void check(const std::vector<Case>& cases)
{
    for (const Case& c : cases)
        EXPECT_EQ(c.call(), QString::fromUtf8(c.expected)) << c.name;
}

TEST(HtmlText, EscapingLeavesOnlyBoldTagsLive)
{
    check({
        {"all five", [] { return htmlEscape("<a href=\"x\">it's & more</a>"); },
         "&lt;a href=&quot;x&quot;&gt;it&#39;s &amp; more&lt;/a&gt;"},
        {"an entity is escaped, not kept", [] { return htmlEscape("&lt;"); }, "&amp;lt;"},
        {"bold tags too", [] { return htmlEscape("<b>x</b>"); }, "&lt;b&gt;x&lt;/b&gt;"},
        {"non-ASCII untouched", [] { return htmlEscape("拿；带走 /teɪk/"); }, "拿；带走 /teɪk/"},
        {"dictionary bold stays", [] { return htmlEscapeEliminateB("<b>take</b> <i>it</i>"); },
         "<b>take</b> &lt;i&gt;it&lt;/i&gt;"},
        {"only the exact tags", [] { return htmlEscapeEliminateB("<B>x</B><b class='a'>y</b >"); },
         "&lt;B&gt;x&lt;/B&gt;&lt;b class=&#39;a&#39;&gt;y&lt;/b &gt;"},
        {"a spelt-out tag stays text", [] { return htmlEscapeEliminateB("&lt;b&gt;"); }, "&amp;lt;b&amp;gt;"},
        {"script", [] { return htmlEscapeEliminateB("<script>alert('x')</script>"); },
         "&lt;script&gt;alert(&#39;x&#39;)&lt;/script&gt;"},
    });
}

TEST(HtmlText, WordsAreMarkedWholeIgnoringCase)
{
    check({
        {"every occurrence", [] { return markBold("Take it, take two.", "take"); }, "**Take** it, **take** two."},
        {"not inside a word", [] { return markBold("retake the takeover", "take"); }, "retake the takeover"},
        {"digits and _ join words", [] { return markBold("take2 take_ take", "take"); }, "take2 take_ **take**"},
        {"a word ending in a full stop", [] { return markBold("Ask Mr. Lee.", "Mr."); }, "Ask **Mr.** Lee."},
        {"other mark", [] { return markBold("She took it.", "took", "__"); }, "She __took__ it."},
        {"hyphen dropped", [] { return markBold("Send an email.", "e-mail"); }, "Send an **email**."},
        {"blank dropped", [] { return markBold("I like icecream.", "ice cream"); }, "I like **icecream**."},
        {"as written first", [] { return markBold("ice cream, icecream", "ice cream"); }, "**ice cream**, icecream"},
        {"not found", [] { return markBold("Nothing here.", "take"); }, "Nothing here."},
        {"empty word", [] { return markBold("a b", ""); }, "a b"},
        {"pairs become tags", [] { return markTohtmlBold("**a** b **c**"); }, "<b>a</b> b <b>c</b>"},
        {"an unpaired mark stays", [] { return markTohtmlBold("**a** b **c"); }, "<b>a</b> b **c"},
        {"marks only", [] { return markTohtmlBold("****"); }, "<b></b>"},
        {"no marks", [] { return markTohtmlBold("a * b"); }, "a * b"},
    });
}

TEST(HtmlText, BoldWordNeverLandsInsideAnEntityOrATag)
{
    check({
        {"entity names", [] { return htmlBoldWord("lt <gt> & lt", "lt"); }, "<b>lt</b> &lt;gt&gt; &amp; <b>lt</b>"},
        {"amp", [] { return htmlBoldWord("R&B and amp", "amp"); }, "R&amp;B and <b>amp</b>"},
        {"word with a special character", [] { return htmlBoldWord("I like R&B.", "R&B"); }, "I like <b>R&amp;B</b>."},
        {"inside dictionary bold", [] { return htmlBoldWord("<b>Take</b> it.", "take"); }, "<b><b>Take</b></b> it."},
        {"class name", [] { return htmlBoldWord("<b>b</b>", "b"); }, "<b><b>b</b></b>"},
        {"apostrophe", [] { return htmlBoldWord("Don't take it.", "take"); }, "Don&#39;t <b>take</b> it."},
    });
}

}  // namespace
}  // namespace lexicorn
