#include "host/app/host_classes.h"

#include "host/app/event_classes.h"

#include "foundation/log.h"

#include <string>

namespace lexicorn::host {

using runtime::makeImp;
using runtime::Object;

void registerHostClasses(runtime::Runtime& runtime)
{
    if (runtime.classNamed(appDelegateClassName))
        return;
    runtime.registerClass(rootClassName);
    runtime.registerClass(responderClassName, rootClassName);
    runtime::Class& delegate = runtime.registerClass(appDelegateClassName, responderClassName);
    runtime::Class& controller = runtime.registerClass(viewControllerClassName, responderClassName);
    runtime.addMethod(controller, "viewDidLoad", makeImp([](ViewControllerObject& self) { self.viewLoaded = true; }));
    runtime.addMethod(controller, "viewWillAppear:", makeImp([](ViewControllerObject& self, bool /*animated*/) { ++self.appearances; }));

    // The responder chain's default for a finished launch: nothing to do.
    runtime.addMethod(*runtime.classNamed(responderClassName), "applicationDidFinishLaunching:",
                      makeImp([](Object&, std::string /*notification*/) {}));

    runtime.addMethod(delegate, "applicationDidFinishLaunching:", makeImp([](AppDelegate& self, std::string) {
        self.launched = true;
    }));
    runtime.addMethod(delegate, "showHUD:onView:withDuration:",
                      makeImp([](AppDelegate& self, std::string text, std::string /*view*/, double seconds) {
                          self.headsUps.append(QString::fromStdString(text));
                          logLine(QStringLiteral("heads-up (%1 s): %2").arg(seconds).arg(QString::fromStdString(text)));
                          if (self.presentHUD)
                              self.presentHUD(QString::fromStdString(text), seconds);
                      }));
    // The colour of links in note titles, as a system colour name.
    runtime.addMethod(delegate, "defaultTitleLinkColor0", makeImp([](AppDelegate&) { return std::string("systemBlue"); }));
    runtime.addMethod(delegate, "cmdPressed", makeImp([](AppDelegate& self) { return self.commandHeld; }));
    runtime.addMethod(delegate, "setSpacePressed:", makeImp([](AppDelegate& self, bool pressed) { self.spacePressed = pressed; }));
    runtime.addMethod(delegate, "chameleonNSView", makeImp([](AppDelegate& self) { return self.view; }));
}

std::shared_ptr<AppDelegate> makeAppDelegate(runtime::Runtime& runtime)
{
    registerHostClasses(runtime);
    registerEventClasses(runtime);
    auto delegate = std::make_shared<AppDelegate>(*runtime.classNamed(appDelegateClassName));
    delegate->view = std::make_shared<HostViewObject>(*runtime.classNamed(hostViewClassName));
    return delegate;
}

}  // namespace lexicorn::host
