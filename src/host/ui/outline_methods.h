#pragma once

// The contents pane's table: the book view controller answers it as data
// source and delegate (numberOfSectionsInTableView:,
// tableView:numberOfRowsInSection:, tableView:heightForRowAtIndexPath:,
// tableView:cellForRowAtIndexPath:, tableView:didSelectRowAtIndexPath:), so
// a plug-in that takes over these methods for its own tables must hand the
// contents table back to them.

#include "runtime/runtime.h"

#include <memory>

namespace lexicorn::host {
class BookViewObject;
}

namespace lexicorn::host::ui {

void registerOutlineMethods(runtime::Runtime& runtime);

// A "UITableView" whose rows are the open book's outline entries.
std::shared_ptr<runtime::Object> makeOutlineTable(BookViewObject& book);

// How many entries the open book's outline has.
int outlineSize(const BookViewObject& book);

}  // namespace lexicorn::host::ui
