#include "host/notebook/mb_model_tool.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace lexicorn::host {

std::optional<QString> MbModelTool::md5OfFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QCryptographicHash hash(QCryptographicHash::Md5);
    if (!hash.addData(&file))
        return std::nullopt;
    return QString::fromLatin1(hash.result().toHex());
}

bool MbModelTool::addBook(const QString& md5, const QString& title, const QString& path)
{
    if (md5.isEmpty())
        return notebook_.fail(QStringLiteral("addBook: a book needs its MD5"));
    return notebook_.change(u"addBook", [&] {
        QSqlQuery query(QSqlDatabase::database(notebook_.connection_, false));
        query.prepare(QStringLiteral("INSERT INTO books (md5, title, path) VALUES (?, ?, ?)"
                                     " ON CONFLICT (md5) DO UPDATE SET title = excluded.title, path = excluded.path"));
        query.addBindValue(md5);
        query.addBindValue(title.isNull() ? QStringLiteral("") : title);
        query.addBindValue(path.isNull() ? QStringLiteral("") : path);
        if (!query.exec())
            return notebook_.fail(QStringLiteral("addBook: %1").arg(query.lastError().text()));
        return true;
    });
}

std::vector<MbBook> MbModelTool::selectBooks(const QString& rest, const QVariantList& values)
{
    std::vector<MbBook> result;
    if (!notebook_.isOpen()) {
        notebook_.fail(QStringLiteral("the notebook %1 is not open").arg(notebook_.path()));
        return result;
    }
    QSqlQuery query(QSqlDatabase::database(notebook_.connection_, false));
    query.prepare(QStringLiteral("SELECT md5, title, path, last_page FROM books ") + rest);
    for (const QVariant& value : values)
        query.addBindValue(value);
    if (!query.exec()) {
        notebook_.fail(QStringLiteral("reading books: %1").arg(query.lastError().text()));
        return result;
    }
    while (query.next())
        result.push_back({query.value(0).toString(), query.value(1).toString(), query.value(2).toString(), query.value(3).toInt()});
    notebook_.error_.clear();
    return result;
}

std::vector<MbBook> MbModelTool::books()
{
    return selectBooks(QStringLiteral("ORDER BY title, md5"), {});
}

std::vector<MbBook> MbModelTool::recentBooks(int limit)
{
    return selectBooks(QStringLiteral("WHERE last_opened > 0 ORDER BY last_opened DESC LIMIT ?"), {limit});
}

std::optional<MbBook> MbModelTool::getBookFromMd5_(const QString& md5)
{
    std::vector<MbBook> found = selectBooks(QStringLiteral("WHERE md5 = ?"), {md5.isNull() ? QStringLiteral("") : md5});
    if (found.empty())
        return std::nullopt;
    return std::move(found.front());
}

bool MbModelTool::setLastPage(const QString& md5, int pageNo)
{
    return notebook_.change(u"setLastPage", [&] {
        QSqlQuery query(QSqlDatabase::database(notebook_.connection_, false));
        query.prepare(QStringLiteral("UPDATE books SET last_page = ?, last_opened = ? WHERE md5 = ?"));
        query.addBindValue(pageNo);
        query.addBindValue(QDateTime::currentMSecsSinceEpoch() / 1000.0);
        query.addBindValue(md5);
        if (!query.exec())
            return notebook_.fail(QStringLiteral("setLastPage: %1").arg(query.lastError().text()));
        return true;
    });
}

}  // namespace lexicorn::host
