#pragma once

// The reader's books, found by the MD5 of their PDF files.

#include "host/notebook/notebook.h"

#include <QString>
#include <QVariantList>

#include <optional>
#include <vector>

namespace lexicorn::host {

struct MbBook {
    QString bookMd5;    // lower-case hex MD5 of the PDF file's bytes
    QString bookTitle;
    QString path;       // where the PDF was when it was added
    int lastPage = 0;   // where the reader left it, from 1; 0: never opened
    friend bool operator==(const MbBook&, const MbBook&) = default;
};

// The book records of a notebook; they live in the notebook's file.
class MbModelTool {
public:
    // The notebook must be open and outlive this object.
    explicit MbModelTool(Notebook& notebook) : notebook_(notebook) {}

    // The lower-case hex MD5 of the file's bytes; nothing when it cannot be read.
    static std::optional<QString> md5OfFile(const QString& path);

    // Adds the book, or gives a known one its new title and path. False (with
    // the notebook's errorString()) when the write fails.
    bool addBook(const QString& md5, const QString& title, const QString& path);
    std::optional<MbBook> getBookFromMd5_(const QString& md5);
    // Ordered by title.
    std::vector<MbBook> books();
    // Remembers the page the reader shows and that the book was opened now.
    bool setLastPage(const QString& md5, int pageNo);
    // The books opened most recently first, at most `limit`.
    std::vector<MbBook> recentBooks(int limit);

private:
    // The books of "SELECT ... FROM books " + rest, with rest's values bound.
    std::vector<MbBook> selectBooks(const QString& rest, const QVariantList& values);

    Notebook& notebook_;
};

}  // namespace lexicorn::host
