#pragma once

// Splits CSV bytes into rows of fields without copying them: a field is a
// view of the file's bytes, and only one whose quotes were doubled needs
// unquoting. Fields follow the usual CSV quoting; a row ends at "\n", "\r\n"
// or "\r" outside quotes.

#include <QString>

#include <string>
#include <string_view>
#include <vector>

namespace lexicorn::dictimport {

struct CsvField {
    std::string_view raw;        // for a quoted field, what is between its quotes
    bool doubledQuotes = false;  // "" in raw stands for one quote

    // The field's text; `scratch` holds it when quotes had to be undoubled.
    std::string_view text(std::string& scratch) const;
};

class CsvRows {
public:
    // `name` stands for the file in error messages.
    CsvRows(std::string_view bytes, QString name);

    // Fills fields with the next row; false at the end of the bytes. Throws
    // ImportError naming the file and line of a field it cannot read.
    bool next(std::vector<CsvField>& fields);

    qint64 rowLine() const { return rowLine_; }  // where the row last read starts
    size_t offset() const { return pos_; }       // just after it

private:
    CsvField quoted();
    CsvField unquoted(size_t column);

    std::string_view bytes_;
    QString name_;
    size_t pos_ = 0;
    qint64 line_ = 1;
    qint64 rowLine_ = 1;
};

}  // namespace lexicorn::dictimport
