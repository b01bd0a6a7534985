#pragma once

// A PDF written object by object, for what the PDF writers at hand cannot
// make (outlines, encryption). Object n is objects[n - 1]; the catalog is 1.

#include <QByteArray>
#include <QList>
#include <QString>

namespace lexicorn::test {

inline QByteArray rawPdf(const QList<QByteArray>& objects, const QByteArray& trailer = {})
{
    QByteArray out = "%PDF-1.4\n";
    QList<qsizetype> offsets;
    for (qsizetype i = 0; i < objects.size(); ++i) {
        offsets << out.size();
        out += QByteArray::number(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const qsizetype xref = out.size();
    out += "xref\n0 " + QByteArray::number(objects.size() + 1) + "\n0000000000 65535 f \n";
    for (const qsizetype offset : offsets)
        out += QStringLiteral("%1 00000 n \n").arg(offset, 10, 10, QLatin1Char('0')).toLatin1();
    out += "trailer\n<< /Size " + QByteArray::number(objects.size() + 1) + " /Root 1 0 R " + trailer + ">>\nstartxref\n"
        + QByteArray::number(xref) + "\n%%EOF\n";
    return out;
}

}  // namespace lexicorn::test
