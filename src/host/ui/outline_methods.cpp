// The book's table of contents as a table whose data source and delegate is
// the book view controller: one row per outline entry, indented by its
// depth, with its page number; a click opens that page.

#include "host/ui/outline_methods.h"

#include "host/app/reader_classes.h"
#include "host/kit/kit_table_view.h"
#include "host/kit/view_kit.h"

#include <QHBoxLayout>
#include <QLabel>

namespace lexicorn::host::ui {

namespace {

using runtime::makeImp;
using runtime::send;
using ObjectRef = std::shared_ptr<runtime::Object>;
using Entries = std::vector<PdfObjCAPI::OutlineEntry>;

constexpr double rowHeight = 28;
constexpr int indentPerLevel = 16;
inline constexpr const char* outlineCellIdentifier = "OutlineCell";

const Entries& entriesOf(const BookViewObject& book)
{
    static const Entries none;
    return book.book ? book.book->pdf().outline() : none;
}

const PdfObjCAPI::OutlineEntry* entryAt(const BookViewObject& book, IndexPath path)
{
    const Entries& entries = entriesOf(book);
    if (path.section != 0 || path.row < 0 || path.row >= static_cast<int>(entries.size()))
        return nullptr;
    return &entries[static_cast<std::size_t>(path.row)];
}

// A cell's title and page labels, made once per cell and found again by name.
void showEntry(runtime::Object& cell, const PdfObjCAPI::OutlineEntry& entry)
{
    QWidget* content = widgetOf(send<ObjectRef>(cell, "contentView"));
    auto* title = content->findChild<QLabel*>(QStringLiteral("outlineTitle"));
    auto* page = content->findChild<QLabel*>(QStringLiteral("outlinePage"));
    if (!title) {
        auto* layout = new QHBoxLayout(content);
        layout->setContentsMargins(8, 0, 8, 0);
        title = new QLabel(content);
        title->setObjectName(QStringLiteral("outlineTitle"));
        page = new QLabel(content);
        page->setObjectName(QStringLiteral("outlinePage"));
        page->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        page->setStyleSheet(QStringLiteral("color: #808080;"));
        layout->addWidget(title, 1);
        layout->addWidget(page);
        // Clicks go through the labels to the table, which selects the row.
        title->setAttribute(Qt::WA_TransparentForMouseEvents);
        page->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    title->setIndent(indentPerLevel * entry.level);
    title->setText(entry.title);
    title->setToolTip(entry.title);
    page->setText(entry.pageNo > 0 ? QString::number(entry.pageNo) : QString());
}

}  // namespace

void registerOutlineMethods(runtime::Runtime& runtime)
{
    runtime::Class& book = *runtime.classNamed(bookViewClassName);
    runtime.addMethod(book, "numberOfSectionsInTableView:", makeImp([](BookViewObject&, ObjectRef) { return 1; }));
    runtime.addMethod(book, "tableView:numberOfRowsInSection:", makeImp([](BookViewObject& self, ObjectRef, int section) {
        return section == 0 ? static_cast<int>(entriesOf(self).size()) : 0;
    }));
    runtime.addMethod(book, "tableView:heightForRowAtIndexPath:", makeImp([](BookViewObject&, ObjectRef, IndexPath) { return rowHeight; }));
    runtime.addMethod(book, "tableView:cellForRowAtIndexPath:", makeImp([](BookViewObject& self, ObjectRef table, IndexPath path) {
        const QString identifier = QString::fromLatin1(outlineCellIdentifier);
        ObjectRef cell = send<ObjectRef>(*table, "dequeueReusableCellWithIdentifier:", identifier);
        if (!cell)
            cell = runtime::sendClass<ObjectRef>(*runtime::Runtime::shared().classNamed(tableViewCellClassName),
                                                 "newWithStyle:reuseIdentifier:", 0, identifier);
        if (const PdfObjCAPI::OutlineEntry* entry = entryAt(self, path))
            showEntry(*cell, *entry);
        return cell;
    }));
    runtime.addMethod(book, "tableView:didSelectRowAtIndexPath:", makeImp([](BookViewObject& self, ObjectRef, IndexPath path) {
        const PdfObjCAPI::OutlineEntry* entry = entryAt(self, path);
        if (entry && entry->pageNo > 0)
            send<void>(self, "openLinkWithPdfPageNo:rect:", entry->pageNo, QRectF());
    }));
}

ObjectRef makeOutlineTable(BookViewObject& book)
{
    runtime::Class& tableClass = *runtime::Runtime::shared().classNamed(tableViewClassName);
    const ObjectRef table = runtime::sendClass<ObjectRef>(tableClass, "tableViewWithFrame:style:", QRectF(0, 0, 240, 600), 0);
    send<void>(*table, "setRowHeight:", rowHeight);
    send<void>(*table, "setDataSource:", book.shared_from_this());
    send<void>(*table, "setDelegate:", book.shared_from_this());
    return table;
}

int outlineSize(const BookViewObject& book)
{
    return static_cast<int>(entriesOf(book).size());
}

}  // namespace lexicorn::host::ui
