#pragma once

// Books set by a real typesetter for the tests: groff's -ms macros write a
// two-column page with hyphenated line ends, optionally with line numbers
// in the margins, as papers and review copies are printed.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace lexicorn::testing {

// The prose of the two-column page, one sentence per entry. Its long words
// and compounds ("second-hand", "well-known") fall at line ends here and
// there, so the typesetter breaks some of them, and a sentence runs on from
// the foot of the first column to the top of the second.
inline QStringList twoColumnProse()
{
    const QStringList sentences{
        "Every learner keeps a notebook of new words and phrases.",
        "The document itself describes how a learner reads a paper that was typeset in two columns.",
        "Every sentence runs down the first column before it continues at the top of the second one.",
        "Hyphenation breaks long words such as understanding, international and communication at the ends of lines.",
        "A careful reader joins them again without thinking about it.",
        "My grandmother bought a second-hand dictionary from a well-known bookseller at the market.",
        "The committee expects each submission to follow the template exactly.",
        "Reviewers comment on the clarity of the argument, the quality of the experiments and the relevance of the related work.",
        "Nobody enjoys reading a paper whose sentences have been cut into fragments.",
        "The extraordinary circumstances of the experiment demanded considerable patience.",
        "Afterwards the results were compared with earlier observations from neighbouring laboratories.",
    };
    // Nine paragraphs of five sentences, each starting one sentence later, so
    // the text fills both columns of a letter-size page.
    QStringList prose;
    for (int paragraph = 0; paragraph < 9; ++paragraph) {
        for (int k = 0; k < 5; ++k)
            prose.append(sentences[(paragraph + k) % sentences.size()]);
    }
    return prose;
}

inline const QString twoColumnTitle = QStringLiteral("Reading in Two Columns");

// The groff source of the page: a title across both columns, then the prose
// in two justified, hyphenated columns; with numbers, every line numbered
// in the margin left of its column.
inline QString twoColumnSource(bool numbered)
{
    QStringList source{".nr PO 0.9i", ".nr LL 6.7i", ".nr HM 0.75i", ".nr FM 0.75i", ".hy 14", ".TL", twoColumnTitle,
                       ".2C"};
    if (numbered)
        source.append(QStringLiteral(".nm 1 1 2"));
    const QStringList prose = twoColumnProse();
    for (qsizetype i = 0; i < prose.size(); i += 5) {
        source.append(QStringLiteral(".PP"));
        source.append(prose.mid(i, 5).join(u' '));
    }
    return source.join(u'\n') + u'\n';
}

// Sets the groff -ms source as a PDF in the folder and returns its path, or
// an empty string when groff failed.
inline QString typesetPdf(const QString& folder, const QString& name, const QString& source)
{
    const QString path = QDir(folder).filePath(name + QStringLiteral(".pdf"));
    QProcess groff;
    groff.setStandardOutputFile(path);
    groff.start(QStringLiteral("groff"), {QStringLiteral("-ms"), QStringLiteral("-Tpdf")});
    groff.write(source.toUtf8());
    groff.closeWriteChannel();
    const bool done = groff.waitForFinished(60000) && groff.exitStatus() == QProcess::NormalExit && groff.exitCode() == 0;
    return done ? path : QString();
}

// A scan of the PDF's first page, as a book scanner makes one: a grey
// 300 dpi picture (pdftoppm) bound into a PDF without text (img2pdf). With
// sideways, the picture lies on its side and the page's /Rotate 90 (qpdf)
// turns it upright for reading, as scanners store landscape-fed pages.
// Empty when a tool failed.
inline QString scanOf(const QString& pdf, const QString& name, bool sideways)
{
    const QString picture = QDir(QFileInfo(pdf).absolutePath()).filePath(name);
    const QString source = picture + QStringLiteral("-source.pdf");
    const QString bound = picture + QStringLiteral("-bound.pdf");
    const QString scan = picture + QStringLiteral(".pdf");
    const auto run = [](const QString& program, const QStringList& arguments) {
        return QProcess::execute(program, arguments) == 0;
    };
    const bool made = (sideways ? run(QStringLiteral("qpdf"), {"--rotate=-90", pdf, source}) : QFile::copy(pdf, source))
        && run(QStringLiteral("pdftoppm"), {"-r", "300", "-gray", "-png", "-singlefile", "-f", "1", "-l", "1", source, picture})
        && run(QStringLiteral("img2pdf"), {picture + QStringLiteral(".png"), "-o", sideways ? bound : scan})
        && (!sideways || run(QStringLiteral("qpdf"), {"--rotate=+90", bound, scan}));
    return made ? scan : QString();
}

// Only the letters, in lower case: how a reader compares two sentences
// whatever the line breaks, hyphens and blanks between them.
inline QString lettersOf(const QString& text)
{
    QString letters;
    for (const QChar c : text) {
        if (c.isLetter())
            letters.append(c.toLower());
    }
    return letters;
}

}  // namespace lexicorn::testing
