#include "host/kit/kit_classes.h"

#include "host/app/host_classes.h"
#include "host/kit/kit_controls.h"
#include "host/kit/kit_images.h"
#include "host/kit/kit_table_view.h"
#include "host/kit/kit_text_view.h"
#include "host/kit/kit_toggles.h"
#include "host/kit/view_kit.h"

namespace lexicorn::host::ui {

void registerViewKitClasses(runtime::Runtime& runtime)
{
    registerHostClasses(runtime);
    if (runtime.classNamed(viewClassName))
        return;
    registerViewClass(runtime);
    registerTableViewClasses(runtime);
    registerTextViewClass(runtime);
    registerControlClasses(runtime);
    registerToggleClasses(runtime);
    registerImageClass(runtime);
}

}  // namespace lexicorn::host::ui
