#pragma once

// What the study board offers add-ons besides its model: its clip bar, its
// detail controller (which holds the book view), the reader's tint colour
// and its popover.
//
// MbUIStudyboardController:
//   clipBar            ObjectRef, an "MbClipBar": addSubview: puts a view at
//                      the end of the tool bar for add-on buttons
//   detailController   ObjectRef, an "MbUIDetailViewController", whose
//                      fBookViewController is the reader's book view
//   defaultTintColor   QColor
//   presentPopover:fromView:preferredSize:
//                      (ObjectRef "CommandTableController", ObjectRef anchor
//                      view or null, QSizeF) shows the table as the board's
//                      popover, closing the one that was open
//   dismissPopover     closes the open popover, if any
//   popover            the open popover's controller, or null

#include "runtime/runtime.h"

namespace lexicorn::host::ui {

// Called by registerWindowClasses, after the study board's own methods.
void registerStudyboardAddonMethods(runtime::Runtime& runtime);

}  // namespace lexicorn::host::ui
