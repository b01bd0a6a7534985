// lexicorn rows: the dictionary popup's sections for a lookup, as JSON.
//
//   lexicorn rows [--home DIR] [--dict collins|LDOCE5] [--sentence S] --json WORD
//
// Prints one JSON document: a list of sections, each a list of lines
// {"text": ..., "runs": [{"start", "length", "attrs"}]}, offsets and lengths
// in UTF-16 units. Only styled stretches have a run, so the field markers
// between fields have none. "attrs" holds the attributes a run has:
// "color" and "background" as [red, green, blue, alpha] (0-255, alpha 0-1),
// "fontSize" in points (system font unless "fontName"), "bold", "italic".
// --json is required: the rows are styled text and there is no readable form
// of them; `lexicorn lookup` shows a lookup for reading.
//
// The translation line comes from the configured engine (SPECIAL_ENGINE),
// which may ask a web service; an engine of 5 or more gives an empty line.

#include "cli/commands.h"
#include "cli/dict_home.h"
#include "cli/output.h"

#include "lexicorn/dictionary/en_word_server.h"
#include "lexicorn/render/dict_data_rows.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace lexicorn::cli {

namespace {

QJsonArray colourJson(const Rgba& colour)
{
    return {colour.red, colour.green, colour.blue, colour.alpha};
}

QJsonObject attributesJson(const TextAttributes& attributes)
{
    QJsonObject object;
    if (attributes.foreground)
        object.insert(QStringLiteral("color"), colourJson(*attributes.foreground));
    if (attributes.fontSize)
        object.insert(QStringLiteral("fontSize"), *attributes.fontSize);
    if (attributes.fontName)
        object.insert(QStringLiteral("fontName"), *attributes.fontName);
    if (attributes.bold)
        object.insert(QStringLiteral("bold"), true);
    if (attributes.italic)
        object.insert(QStringLiteral("italic"), true);
    if (attributes.background)
        object.insert(QStringLiteral("background"), colourJson(*attributes.background));
    return object;
}

QJsonObject lineJson(const StyledText& line)
{
    QJsonArray runs;
    for (const StyledText::Run& run : line.runs()) {
        runs.append(QJsonObject{{QStringLiteral("start"), run.start},
                                {QStringLiteral("length"), run.length},
                                {QStringLiteral("attrs"), attributesJson(run.attributes)}});
    }
    return {{QStringLiteral("text"), line.string()}, {QStringLiteral("runs"), runs}};
}

}  // namespace

int runRows(Arguments& arguments)
{
    applyHomeOption(arguments);
    const int dict = dictNumberFromName(arguments.option(QStringLiteral("dict")).value_or(QStringLiteral("collins")));
    const QString sentence = arguments.option(QStringLiteral("sentence")).value_or(QString());
    const bool asJson = arguments.flag(QStringLiteral("json"));
    const QStringList words = arguments.positionals();
    if (words.size() != 1)
        throw UsageError(QStringLiteral("rows needs exactly one WORD (quote a phrase)"));
    if (!asJson)
        throw UsageError(QStringLiteral("rows prints JSON only: add --json (use lookup for a readable form)"));

    EnWordServer& server = EnWordServer::shared();
    loadDictionary(server, dict);
    const DictDataPtr lookup = server.query(words.front(), sentence);
    QJsonArray sections;
    for (const std::vector<StyledText>& section : attrStrings(*lookup)) {
        QJsonArray lines;
        for (const StyledText& line : section)
            lines.append(lineJson(line));
        sections.append(lines);
    }
    print(QString::fromUtf8(QJsonDocument(sections).toJson(QJsonDocument::Compact)) + u'\n');
    return 0;
}

}  // namespace lexicorn::cli
